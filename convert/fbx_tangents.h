#pragma once

#include "convert/fbx_motion.h"

#include <array>
#include <vector>

namespace TW2::convert
{
/// How a cubic key of a file says its slopes: FBX's flags and the numbers that go with them.
struct FbxTangents
{
    /// Of flags, those about slopes. A key with none of the first three has slopes of its own.
    enum Flag : unsigned int
    {
        Auto = 0x100,              ///< from the keys around it
        Parameters = 0x200,        ///< from these and tension, continuity and bias
        User = 0x400,              ///< as the file has them
        Level = 0x1000,            ///< of automatic ones: level where the value stays
        TimeIndependent = 0x2000,  ///< of automatic ones: straight from the key before to the key behind
        Progressive = 0x4000       ///< of automatic ones: not beyond the values of the keys around it
    };
    unsigned int m_uiFlags = 0;
    /// The slope behind this key and the one before the next; of automatic slopes, their bias in percent: towards the
    /// next key when positive. Of a key with parameters, these three.
    std::array<double, 3> m_numbers{};
};

/// Gives every cubic key the slopes that its file means. `keys` have times, values, kinds and parts; `tangents` belong
/// to them one by one.
void setFbxSlopes(std::vector<FbxCurve::Key>& keys, const std::vector<FbxTangents>& tangents);
}  // namespace TW2::convert
