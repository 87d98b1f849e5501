#pragma once

#include <string>
#include <vector>

namespace TW2::convert
{
/// A line of a text file that people write: words, or text between quotation marks, with spaces between them.
struct TextLine
{
    unsigned int m_uiNumber = 0;  ///< from 1
    std::vector<std::string> m_vecFields;
};

/// The lines of a file, each of as many fields as `expected` tells ("CLIP SECONDS NAME": three). Empty lines and what
/// follows a "#" outside of quotation marks do not count; between them \" and \\ stand for the signs themselves. Throws
/// ConvertException with file, line and what was expected, S_FileException when it cannot be read.
[[nodiscard]] std::vector<TextLine> readTextTable(const std::string& fileName, const std::string& expected);

/// Throws ConvertException: "file:line: reason".
[[noreturn]] void failAt(const std::string& fileName, unsigned int line, const std::string& reason);
}  // namespace TW2::convert
