#include "json/writer.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace TW2::json
{
namespace
{
/// Length of the UTF-8 sequence at the start of `text`; 0 when there is none.
std::size_t getSequenceLength(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned int first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length == 0 || first > 0xF4 || length > text.size())
    {
        return 0;
    }
    // Overlong forms, surrogates and what lies past the last code point show in the second byte.
    unsigned int least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned int most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t i = 1; i < length; ++i, least = 0x80, most = 0xBF)
    {
        if (byte(i) < least || byte(i) > most)
        {
            return 0;
        }
    }
    return length;
}

void appendEscaped(std::string& out, char letter)
{
    switch (letter)
    {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(letter) < ' ' || letter == '\x7F')
            {
                char code[8];
                std::snprintf(code, sizeof code, "\\u%04X", static_cast<unsigned int>(letter));
                out += code;
                break;
            }
            out += letter;
    }
}
}  // namespace

std::string Writer::quote(std::string_view text)
{
    std::string out = "\"";
    while (!text.empty())
    {
        const std::size_t length = getSequenceLength(text);
        if (length == 0)
        {
            out += "\xEF\xBF\xBD";
        }
        else if (length == 1)
        {
            appendEscaped(out, text[0]);
        }
        else
        {
            out += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return out += '"';
}

void Writer::key(std::string_view name)
{
    separate();
    m_stream << quote(name) << ": ";
    m_bAfterKey = true;
}

void Writer::value(std::string_view text)
{
    separate();
    m_stream << quote(text);
    finish();
}

void Writer::value(bool truth)
{
    separate();
    m_stream << (truth ? "true" : "false");
    finish();
}

void Writer::value(double number)
{
    writeNumber(number, std::numeric_limits<double>::max_digits10);
}

void Writer::value(float number)
{
    writeNumber(static_cast<double>(number), std::numeric_limits<float>::max_digits10);
}

void Writer::writeNumber(double number, int digits)
{
    if (!std::isfinite(number))
    {
        null();
        return;
    }
    separate();
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    m_stream << text;
    finish();
}

void Writer::null()
{
    separate();
    m_stream << "null";
    finish();
}

void Writer::begin(char bracket)
{
    separate();
    m_stream << bracket;
    m_hasElements.push_back(false);
}

void Writer::end(char bracket)
{
    const bool hasElements = m_hasElements.back();
    m_hasElements.pop_back();
    if (hasElements)
    {
        breakLine();
    }
    m_stream << bracket;
    finish();
}

/// Goes to where the next key or value stands.
void Writer::separate()
{
    if (m_bAfterKey)
    {
        m_bAfterKey = false;
        return;
    }
    if (m_hasElements.empty())
    {
        return;
    }
    if (m_hasElements.back())
    {
        m_stream << ',';
    }
    m_hasElements.back() = true;
    breakLine();
}

void Writer::finish()
{
    if (m_hasElements.empty())
    {
        m_stream << '\n';
    }
}

void Writer::breakLine()
{
    m_stream << '\n' << std::string(2 * m_hasElements.size(), ' ');
}
}  // namespace TW2::json
