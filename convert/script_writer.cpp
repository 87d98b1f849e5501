#include "convert/script_writer.h"

#include <algorithm>
#include <locale>
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
/// The bounding volumes, a little larger than what they contain.
void writeBounds(std::ostream& out, const ScriptBlock& block)
{
    if (block.m_bounds.isEmpty())
    {
        return;
    }
    constexpr double slack = 0.01;
    const double margin = std::max(slack * block.m_bounds.getDiagonal(), 1e-6);
    const Vector3d around(margin, margin, margin);
    const Vector3d low = block.m_bounds.getLow() - around;
    const Vector3d high = block.m_bounds.getHigh() + around;
    out << "        boundingBoxMin (" << low.x << ", " << low.y << ", " << low.z << ")\n"
        << "        boundingBoxMax (" << high.x << ", " << high.y << ", " << high.z << ")\n"
        << "        boundingSphereRadius " << block.m_dRadius + margin << '\n';
}
}  // namespace

std::string makeAnimationBlock(const ScriptBlock::Animation& animation)
{
    // Tools that look for animations in the text alone know the form without a name.
    const std::string plain =
        "index " + std::to_string(animation.m_iIndex) + "  filename " + quote(animation.m_strFile);
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.precision(9);
    out << "    // animation { " << plain << " }  // " << animation.m_strComment << '\n';
    std::string rest;
    if (!animation.m_strName.empty())
    {
        rest += "  name " + quote(animation.m_strName);
    }
    if (!animation.m_strTravelFile.empty())
    {
        rest += "  rootmotion " + quote(animation.m_strTravelFile);
    }
    if (animation.m_vecEvents.empty())
    {
        out << "    animation { " << plain << rest << " }\n";
        return out.str();
    }
    out << "    animation\n    {\n        " << plain << rest << '\n';
    for (const Event& event : animation.m_vecEvents)
    {
        out << "        event { time " << event.m_dTime << "  name " << quote(event.m_strName) << " }\n";
    }
    out << "    }\n";
    return out.str();
}

std::string makeScript(const std::string& comment, const std::vector<ScriptBlock>& blocks)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
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
        writeBounds(out, block);
        out << "    }\n";
        for (const ScriptBlock::Animation& animation : block.m_vecAnimations)
        {
            out << makeAnimationBlock(animation);
        }
        out << "}\n";
    }
    return out.str();
}
}  // namespace TW2::convert
