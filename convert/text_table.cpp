#include "convert/text_table.h"

#include "convert/convert_exception.h"

#include <platform/runtime/file.h>

#include <algorithm>
#include <sstream>

namespace TW2::convert
{
namespace
{
bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// Takes the line apart; returns whether a quotation mark is missing.
bool split(const std::string& text, std::vector<std::string>& fields)
{
    for (std::size_t i = 0; i < text.size();)
    {
        if (isSpace(text[i]))
        {
            ++i;
            continue;
        }
        if (text[i] == '#')
        {
            break;
        }
        std::string& field = fields.emplace_back();
        if (text[i] != '"')
        {
            for (; i < text.size() && !isSpace(text[i]); ++i)
            {
                field += text[i];
            }
            continue;
        }
        for (++i; i < text.size() && text[i] != '"'; ++i)
        {
            i += text[i] == '\\' && i + 1 < text.size() ? 1 : 0;
            field += text[i];
        }
        if (i >= text.size())
        {
            return true;
        }
        ++i;
    }
    return false;
}
}  // namespace

std::vector<TextLine> readTextTable(const std::string& fileName, const std::string& expected)
{
    const S_Bytes bytes = File.read(fileName);
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    std::vector<TextLine> lines;
    const auto fields = static_cast<std::size_t>(std::count(expected.begin(), expected.end(), ' ')) + 1;
    TextLine line;
    for (std::string content; std::getline(text, content);)
    {
        ++line.m_uiNumber;
        line.m_vecFields.clear();
        if (split(content, line.m_vecFields))
        {
            failAt(fileName, line.m_uiNumber, "a quotation mark is missing at the end of the text");
        }
        if (line.m_vecFields.empty())
        {
            continue;
        }
        if (line.m_vecFields.size() != fields)
        {
            failAt(fileName, line.m_uiNumber,
                   "expected " + expected + ", found " + std::to_string(line.m_vecFields.size()) +
                       " words; names with spaces stand between quotation marks");
        }
        lines.push_back(line);
    }
    return lines;
}

void failAt(const std::string& fileName, unsigned int line, const std::string& reason)
{
    throw ConvertException((fileName + ":" + std::to_string(line)).c_str(), reason.c_str());
}
}  // namespace TW2::convert
