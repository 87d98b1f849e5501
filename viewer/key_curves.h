#pragma once

#include <array>
#include <string_view>
#include <vector>

namespace TW2::viewer
{
class LoadedObject;

/// How one bone moves in one animation, relative to its parent: a value per whole frame, and where the keys are.
struct KeyCurves
{
    /// Translation in scene units, then rotation about x, y and z in degrees without jumps by whole turns.
    static constexpr std::array<std::string_view, 6> curveNames{"x", "y", "z", "turn x", "turn y", "turn z"};

    std::array<std::vector<float>, 6> m_aValues;
    std::vector<int> m_vecKeyFrames;

    [[nodiscard]] bool isEmpty() const noexcept { return m_aValues[0].empty(); }
};

/// The curves of a bone (mesh index); empty when the animation does not move it or either does not exist.
[[nodiscard]] KeyCurves sampleCurves(LoadedObject& object, int bone, int animation);
}  // namespace TW2::viewer
