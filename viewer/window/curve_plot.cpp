#include "viewer/window/curve_plot.h"

#include "viewer/key_curves.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace TW2::viewer
{
void drawCurves(const KeyCurves& curves, double frame)
{
    constexpr std::array<ImU32, 3> colors{IM_COL32(235, 90, 80, 255), IM_COL32(110, 200, 90, 255),
                                          IM_COL32(90, 150, 240, 255)};
    for (std::size_t half = 0; half < 2; ++half)
    {
        ImGui::TextUnformatted(half == 0 ? "moves (units):" : "turns (degrees):");
        constexpr std::array<const char*, 3> axes{"x", "y", "z"};
        for (std::size_t i = 0; i < axes.size(); ++i)
        {
            ImGui::SameLine();
            ImGui::TextColored(ImGui::ColorConvertU32ToFloat4(colors[i]), "%s", axes[i]);
        }
        const ImVec2 origin = ImGui::GetCursorScreenPos();
        const ImVec2 size{ImGui::GetContentRegionAvail().x, 5.0F * unit()};
        ImGui::InvisibleButton(half == 0 ? "##moves" : "##turns", size);
        ImDrawList& list = *ImGui::GetWindowDrawList();
        list.AddRectFilled(origin, {origin.x + size.x, origin.y + size.y}, IM_COL32(20, 22, 26, 255), 3.0F);
        float lowest = curves.m_aValues[half * 3].front();
        float highest = lowest;
        for (std::size_t i = 0; i < 3; ++i)
        {
            const std::vector<float>& values = curves.m_aValues[half * 3 + i];
            const auto [low, high] = std::minmax_element(values.begin(), values.end());
            lowest = std::min(lowest, *low);
            highest = std::max(highest, *high);
        }
        const float range = std::max(highest - lowest, 1e-6F);
        const auto last = static_cast<float>(std::max<std::size_t>(curves.m_aValues[0].size(), 2) - 1);
        const auto toX = [&](float at) { return origin.x + at / last * size.x; };
        const auto toY = [&](float value)
        { return origin.y + size.y - 3.0F - (value - lowest) / range * (size.y - 6.0F); };
        for (std::size_t i = 0; i < 3; ++i)
        {
            const std::vector<float>& values = curves.m_aValues[half * 3 + i];
            for (std::size_t at = 1; at < values.size(); ++at)
            {
                list.AddLine({toX(static_cast<float>(at - 1)), toY(values[at - 1])},
                             {toX(static_cast<float>(at)), toY(values[at])}, colors[i], 1.5F);
            }
            for (const int key : curves.m_vecKeyFrames)
            {
                if (key >= 0 && static_cast<std::size_t>(key) < values.size())
                {
                    list.AddCircleFilled({toX(static_cast<float>(key)), toY(values[static_cast<std::size_t>(key)])},
                                         2.5F, colors[i]);
                }
            }
        }
        const float now = toX(std::clamp(static_cast<float>(frame), 0.0F, last));
        list.AddLine({now, origin.y}, {now, origin.y + size.y}, IM_COL32(255, 255, 255, 160));
        ImGui::Text("%.4g to %.4g", static_cast<double>(lowest), static_cast<double>(highest));
    }
    ImGui::Text("%zu keys in %zu frames", curves.m_vecKeyFrames.size(), curves.m_aValues[0].size());
}
}  // namespace TW2::viewer
