#pragma once

#include "convert/model.h"
#include "convert/node_match.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TW2::convert
{
/// What became of the clips that one file gives to a character of another.
struct MotionSource
{
    /// How far a foot that stands goes, at most; both in the character's size.
    struct FootSlide
    {
        double m_dDistance = 0.0;  ///< scene units
        double m_dBefore = 0.0;    ///< of the file's own skeleton
    };
    std::string m_strName;
    MatchCounts m_counts{};
    std::vector<std::string> m_vecLost;  ///< nodes that are moved and have no counterpart
    bool m_bFitted = false;              ///< to another skeleton; otherwise nodes move as in the file
    double m_dRatio = 1.0;               ///< the character's size, by the file's; 1 unless fitted
    std::optional<FootSlide> m_slide;    ///< only when fitted, and when a foot stands
};

/// The clips of another file for the nodes of `body`; `source` tells what was done.
///
/// Of the same skeleton (bones are as long and point the same way in their parents) nodes move as in the file, and what
/// a clip does not move stands in it as the other file has it. To another skeleton clips are fitted: each node turns
/// from the pose at rest as its counterpart does, after limbs were brought from one pose at rest to the other; bones
/// keep their lengths, or are stretched by the same ratio; the topmost nodes go as far as the ratio of the heights of
/// the hips says. Characters that look another way, by quarters of a turn, are turned. Both models must outlive the
/// clips.
[[nodiscard]] std::vector<Clip> fitClips(const Model& body, const Model& other, const NodeMap& map,
                                         MotionSource& source);
}  // namespace TW2::convert
