#pragma once

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
    };
    std::string m_strName;
    std::string m_strComment;
    std::string m_strGeometryFile;
    std::string m_strSkinFile;   ///< empty for none
    std::string m_strCrossMode;  ///< empty: left to the library
    std::vector<Animation> m_vecAnimations;
};

/// A script's text, under a comment of one or several lines.
[[nodiscard]] std::string makeScript(const std::string& comment, const std::vector<ScriptBlock>& blocks);
}  // namespace TW2::convert
