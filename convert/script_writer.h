#pragma once

#include "convert/box.h"
#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// One block of a script: an animated object.
struct ScriptBlock
{
    struct Animation
    {
        int m_iIndex = 0;
        std::string m_strFile;
        std::string m_strComment;
        std::string m_strName;           ///< by which a host finds it; empty: the file's name
        std::string m_strTravelFile;     ///< empty for none
        std::vector<Event> m_vecEvents;  ///< seconds from the animation's beginning
    };
    std::string m_strName;
    std::string m_strComment;
    std::string m_strGeometryFile;
    std::string m_strSkinFile;   ///< empty for none
    std::string m_strCrossMode;  ///< empty: left to the library
    /// What the object's bounding volumes have to contain; an empty box leaves them to the library.
    Box m_bounds;
    double m_dRadius = 0.0;
    std::vector<Animation> m_vecAnimations;
};

/// The lines of one animation block, as they stand inside an object's block.
[[nodiscard]] std::string makeAnimationBlock(const ScriptBlock::Animation& animation);

/// A script's text, under a comment of one or several lines.
[[nodiscard]] std::string makeScript(const std::string& comment, const std::vector<ScriptBlock>& blocks);
}  // namespace TW2::convert
