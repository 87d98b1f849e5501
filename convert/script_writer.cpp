#include "convert/script_writer.h"

#include <sstream>

namespace TW2::convert
{
namespace
{
/// Text between quotation marks, with what scripts escape.
std::string quote(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
        {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

void writeComment(std::ostream& out, const std::string& indent, const std::string& comment)
{
    std::istringstream lines(comment);
    for (std::string line; std::getline(lines, line);)
    {
        out << indent << "// " << line << '\n';
    }
}
}  // namespace

std::string makeScript(const std::string& comment, const std::vector<ScriptBlock>& blocks)
{
    std::ostringstream out;
    writeComment(out, "", comment);
    for (const ScriptBlock& block : blocks)
    {
        out << '\n';
        writeComment(out, "", block.m_strComment);
        out << block.m_strName << "\n{\n    geometry\n    {\n        exportdata " << quote(block.m_strGeometryFile)
            << '\n';
        if (!block.m_strSkinFile.empty())
        {
            out << "        skindata   " << quote(block.m_strSkinFile) << '\n';
        }
        if (!block.m_strCrossMode.empty())
        {
            out << "        crossmode  " << block.m_strCrossMode << '\n';
        }
        out << "    }\n";
        for (const ScriptBlock::Animation& animation : block.m_vecAnimations)
        {
            out << "    animation { index " << animation.m_iIndex << "  filename " << quote(animation.m_strFile)
                << " }  // " << animation.m_strComment << '\n';
        }
        out << "}\n";
    }
    return out.str();
}
}  // namespace TW2::convert
