#pragma once

#include "convert/fbx_scene.h"
#include "convert/warnings.h"

#include <optional>
#include <string_view>
#include <vector>

namespace TW2::convert
{
/// A clip per animation stack (in files of version 6: per take) that moves anything; channels are numbered as the
/// scene's places. What is left out is told.
[[nodiscard]] std::vector<Clip> readFbxClips(const FbxScene& scene, Warnings& warnings);

/// FBX counts time in these.
constexpr double fbxTicksPerSecond = 46186158000.0;

/// What one take moves, and of what else it tells that it is animated.
struct FbxTakeMotion
{
    std::string_view m_name;
    FbxPose m_pose;
    /// From when to when it plays, in seconds of the file; none: from its first key, to its last.
    std::optional<double> m_start;
    std::optional<double> m_stop;
    std::vector<std::string_view> m_vecOthers;  ///< properties that are left out
};

/// The takes of a file of version 6. Throws ConvertException for keys of a kind that is not known.
[[nodiscard]] std::vector<FbxTakeMotion> readFbxTakes(const FbxScene& scene);
/// The part of a node that animations call by this name, of its tracks; null for another name.
[[nodiscard]] std::optional<FbxPose::Track>* findFbxTrack(FbxPose::Tracks& tracks, std::string_view name);
/// How a curve goes on beyond its keys, as its element says.
void readFbxExtrapolation(const FbxElement& element, FbxCurve& curve);
/// The value at rest of the same part.
[[nodiscard]] const Vector3d& getFbxRest(const FbxPlace& place, std::string_view name);
}  // namespace TW2::convert
