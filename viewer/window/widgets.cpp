#include "viewer/window/widgets.h"

#include "viewer/viewer.h"

#include <imgui.h>

namespace TW2::viewer
{
std::string quote(const std::string& word)
{
    return "\"" + word + "\"";
}

std::string toWord(float number)
{
    return std::to_string(number);
}

float unit()
{
    return ImGui::GetFontSize();
}

const char* getClipName(const Viewer& viewer, int animation)
{
    const Clip* clip = viewer.getPlayback().findClip(animation);
    return clip ? clip->m_strName.c_str() : "(none)";
}

bool beginChoice(const char* label, const char* now)
{
    const std::string name = label;
    const bool hidden = name.starts_with("##");
    const std::string text = hidden ? now : name + ": " + now;
    if (!hidden)
    {
        ImGui::SetNextItemWidth(-1.0F);
    }
    const bool open = ImGui::BeginCombo(hidden ? label : ("##" + name).c_str(), text.c_str());
    if (!open && ImGui::IsItemHovered())
    {
        ImGui::SetTooltip("%s", text.c_str());
    }
    return open;
}

int chooseClip(const char* label, const Viewer& viewer, int now, bool withNone)
{
    int chosen = noChoice;
    if (beginChoice(label, getClipName(viewer, now)))
    {
        if (withNone && ImGui::Selectable("(none)", now == -1))
        {
            chosen = -1;
        }
        for (const Clip& clip : viewer.getPlayback().getClips())
        {
            ImGui::PushID(clip.m_iIndex);
            if (ImGui::Selectable(clip.m_strName.c_str(), clip.m_iIndex == now))
            {
                chosen = clip.m_iIndex;
            }
            ImGui::PopID();
        }
        ImGui::EndCombo();
    }
    return chosen;
}

void checkbox(const char* label, const std::string& command, bool now, Requests& requests)
{
    bool value = now;
    if (ImGui::Checkbox(label, &value))
    {
        requests.ask(command + (value ? " on" : " off"));
    }
}

void chooseWord(const char* label, const char* command, std::span<const char* const> words, std::size_t now,
                Requests& requests)
{
    if (beginChoice(label, words[now]))
    {
        for (std::size_t i = 0; i < words.size(); ++i)
        {
            if (ImGui::Selectable(words[i], i == now))
            {
                requests.ask(std::string(command) + " " + words[i]);
            }
        }
        ImGui::EndCombo();
    }
}

void button(const char* label, const std::string& command, Requests& requests)
{
    if (ImGui::Button(label))
    {
        requests.ask(command);
    }
}
}  // namespace TW2::viewer
