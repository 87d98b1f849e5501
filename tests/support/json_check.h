#pragma once

#include <cctype>
#include <cstddef>
#include <string_view>

namespace support
{
/// Whether a text is one JSON value and nothing else.
class JsonCheck
{
public:
    static bool isValid(std::string_view text)
    {
        JsonCheck check(text);
        return check.takeValue() && (check.skipSpace(), check.m_text.empty());
    }

private:
    explicit JsonCheck(std::string_view text) : m_text(text) {}

    void skipSpace()
    {
        while (!m_text.empty() && std::string_view(" \n\r\t").find(m_text[0]) != std::string_view::npos)
        {
            m_text.remove_prefix(1);
        }
    }
    bool take(std::string_view expected)
    {
        skipSpace();
        if (m_text.substr(0, expected.size()) != expected)
        {
            return false;
        }
        m_text.remove_prefix(expected.size());
        return true;
    }
    bool takeValue()
    {
        if (take("{"))
        {
            return takeElements("}", [this] { return takeString() && take(":") && takeValue(); });
        }
        if (take("["))
        {
            return takeElements("]", [this] { return takeValue(); });
        }
        return take("true") || take("false") || take("null") || takeString() || takeNumber();
    }
    template <typename TakeElement>
    bool takeElements(std::string_view end, TakeElement&& takeElement)
    {
        if (take(end))
        {
            return true;
        }
        do
        {
            if (!takeElement())
            {
                return false;
            }
        } while (take(","));
        return take(end);
    }
    bool takeString()
    {
        if (!take("\""))
        {
            return false;
        }
        while (!m_text.empty() && m_text[0] != '"')
        {
            if (static_cast<unsigned char>(m_text[0]) < ' ')
            {
                return false;
            }
            if (m_text[0] == '\\' && !takeEscape())
            {
                return false;
            }
            m_text.remove_prefix(m_text.empty() ? 0 : 1);
        }
        return take("\"");
    }
    /// Leaves the last letter of the escape.
    bool takeEscape()
    {
        m_text.remove_prefix(1);
        if (m_text.empty() || std::string_view("\"\\/bfnrtu").find(m_text[0]) == std::string_view::npos)
        {
            return false;
        }
        if (m_text[0] != 'u')
        {
            return true;
        }
        for (int i = 0; i < 4; ++i)
        {
            m_text.remove_prefix(1);
            if (m_text.empty() || std::isxdigit(static_cast<unsigned char>(m_text[0])) == 0)
            {
                return false;
            }
        }
        return true;
    }
    std::size_t takeDigits()
    {
        std::size_t count = 0;
        while (count < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[count])) != 0)
        {
            ++count;
        }
        m_text.remove_prefix(count);
        return count;
    }
    bool takeNumber()
    {
        (void)take("-");
        const bool startsWithZero = !m_text.empty() && m_text[0] == '0';
        const std::size_t digits = takeDigits();
        if (digits == 0 || (startsWithZero && digits > 1) || (take(".") && takeDigits() == 0))
        {
            return false;
        }
        if (take("e") || take("E"))
        {
            (void)(take("+") || take("-"));
            return takeDigits() > 0;
        }
        return true;
    }

    std::string_view m_text;
};
}  // namespace support
