#include "viewer/window/clock_panel.h"

#include "viewer/viewer.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <algorithm>
#include <string>

namespace TW2::viewer
{
void drawClock(Viewer& viewer, Requests& requests)
{
    const Playback& playback = viewer.getPlayback();
    const auto period = static_cast<float>(playback.getPeriod());
    auto time = static_cast<float>(playback.getTime());
    ImGui::SetNextItemWidth(-1.0F);
    if (ImGui::SliderFloat("##time", &time, 0.0F, std::max(period, 1e-3F), "%.3F s"))
    {
        requests.ask("play off");
        requests.ask("seek " + std::to_string(time));
    }
    if (ImGui::Button("|<"))
    {
        requests.ask("seek 0");
    }
    ImGui::SameLine();
    if (ImGui::Button("<"))
    {
        requests.ask("back");
    }
    ImGui::SameLine();
    if (ImGui::Button(playback.isPlaying() ? "Pause###play" : "Play###play", {4.5F * unit(), 0.0F}))
    {
        requests.ask("play");
    }
    ImGui::SameLine();
    if (ImGui::Button(">"))
    {
        requests.ask("step 1");
    }
    ImGui::SameLine();
    bool looping = playback.isLooping();
    if (ImGui::Checkbox("loop", &looping))
    {
        requests.ask(std::string("loop ") + (looping ? "on" : "off"));
    }
    ImGui::SameLine();
    auto speed = static_cast<float>(playback.getSpeed());
    ImGui::SetNextItemWidth(7.0F * unit());
    if (ImGui::SliderFloat("##speed", &speed, -2.0F, 2.0F, "speed %.2F"))
    {
        requests.ask("speed " + std::to_string(speed));
    }
    ImGui::SameLine();
    ImGui::Text("frame %.1F  %s", playback.getFrame(), getClipName(viewer, playback.getMainAnimation()));
}
}  // namespace TW2::viewer
