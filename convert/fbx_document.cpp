#include "convert/fbx_document.h"

#include "convert/convert_exception.h"

#include <platform/runtime/file.h>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <charconv>
#include <cstring>

namespace TW2::convert
{
namespace
{
constexpr std::string_view binaryMark("Kaydara FBX Binary  \0", 21);
constexpr std::size_t binaryHeader = 27;
constexpr unsigned int deepest = 64;

/// A number of a file: its lowest byte first, or last.
template <typename T>
T readAt(const char* data, bool lowestLast)
{
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), data, sizeof(T));
    if (lowestLast != (std::endian::native == std::endian::big))
    {
        std::ranges::reverse(bytes);
    }
    return std::bit_cast<T>(bytes);
}

template <typename T>
void appendNumbers(std::string_view data, bool lowestLast, std::vector<double>& numbers)
{
    for (std::size_t i = 0; i + sizeof(T) <= data.size(); i += sizeof(T))
    {
        numbers.push_back(static_cast<double>(readAt<T>(data.data() + i, lowestLast)));
    }
}

std::size_t getSize(char type)
{
    return type == 'd' || type == 'l' ? 8 : type == 'b' || type == 'c' ? 1 : 4;
}
}  // namespace

const FbxElement* FbxElement::find(std::string_view name) const noexcept
{
    const auto found = std::ranges::find(m_vecChildren, name, &FbxElement::m_name);
    return found == m_vecChildren.end() ? nullptr : &*found;
}

std::string_view FbxElement::getText(std::size_t index) const noexcept
{
    const auto* text = index < m_vecValues.size() ? std::get_if<std::string_view>(&m_vecValues[index]) : nullptr;
    return text ? *text : std::string_view();
}

std::int64_t FbxElement::getInteger(std::size_t index) const noexcept
{
    const auto* value = index < m_vecValues.size() ? std::get_if<std::int64_t>(&m_vecValues[index]) : nullptr;
    return value ? *value : toWhole(getNumber(index, 0.0));
}

std::int64_t toWhole(double number) noexcept
{
    constexpr double most = 9e18;  // below 2^63
    return number > -most && number < most ? static_cast<std::int64_t>(number) : 0;
}

double FbxElement::getNumber(std::size_t index, double otherwise) const noexcept
{
    if (index >= m_vecValues.size())
    {
        return otherwise;
    }
    if (const auto* number = std::get_if<double>(&m_vecValues[index]))
    {
        return *number;
    }
    const auto* whole = std::get_if<std::int64_t>(&m_vecValues[index]);
    return whole ? static_cast<double>(*whole) : otherwise;
}

/// Binary: an element is a header with the place of its end, its values, and its children up to an empty header.
class FbxDocument::BinaryParser
{
public:
    explicit BinaryParser(FbxDocument& document) : m_document(document), m_bytes(document.m_vecBytes) {}

    void parse()
    {
        const char* const head = m_bytes.data() + binaryMark.size();
        m_document.m_bLowestLast = head[1] == 1;
        const auto version = readAt<std::uint32_t>(head + 2, m_document.m_bLowestLast);
        m_document.m_bWide = version >= 7500;
        std::size_t position = binaryHeader;
        parseChildren(m_document.m_root, position, m_bytes.size(), 0);
    }

private:
    [[nodiscard]] std::size_t wordSize() const { return m_document.m_bWide ? 8 : 4; }

    void need(std::size_t position, std::uint64_t count, std::size_t end, const char* expected) const
    {
        if (position > end || count > end - position)
        {
            m_document.fail(position, expected);
        }
    }

    std::uint64_t readWord(std::size_t position) const
    {
        const char* const data = m_bytes.data() + position;
        return m_document.m_bWide ? readAt<std::uint64_t>(data, m_document.m_bLowestLast)
                                  : readAt<std::uint32_t>(data, m_document.m_bLowestLast);
    }

    void parseChildren(FbxElement& parent, std::size_t& position, std::size_t end, unsigned int depth)
    {
        if (depth > deepest)
        {
            m_document.fail(position, "elements that are nested less deeply");
        }
        const std::size_t header = 3 * wordSize() + 1;
        while (position < end)
        {
            need(position, header, end, "the header of an element");
            const std::uint64_t elementEnd = readWord(position);
            if (elementEnd == 0)
            {
                position += header;
                return;
            }
            const std::uint64_t count = readWord(position + wordSize());
            const std::uint64_t size = readWord(position + 2 * wordSize());
            const std::size_t nameLength = static_cast<unsigned char>(m_bytes[position + header - 1]);
            if (elementEnd > end || elementEnd < position + header + nameLength ||
                size > elementEnd - position - header - nameLength)
            {
                m_document.fail(position, "an element that ends inside the one around it");
            }
            FbxElement element;
            element.m_name = {m_bytes.data() + position + header, nameLength};
            std::size_t at = position + header + nameLength;
            const std::size_t valuesEnd = at + static_cast<std::size_t>(size);
            for (std::uint64_t i = 0; i < count; ++i)
            {
                element.m_vecValues.push_back(parseValue(at, valuesEnd));
            }
            at = valuesEnd;
            parseChildren(element, at, static_cast<std::size_t>(elementEnd), depth + 1);
            position = static_cast<std::size_t>(elementEnd);
            parent.m_vecChildren.push_back(std::move(element));
        }
    }

    template <typename T>
    T take(std::size_t& position, std::size_t end) const
    {
        need(position, sizeof(T), end, "a value");
        position += sizeof(T);
        return readAt<T>(m_bytes.data() + position - sizeof(T), m_document.m_bLowestLast);
    }

    std::string_view takeBytes(std::size_t& position, std::uint64_t size, std::size_t end) const
    {
        need(position, size, end, "as many bytes as a value says it has");
        position += static_cast<std::size_t>(size);
        return {m_bytes.data() + position - size, static_cast<std::size_t>(size)};
    }

    FbxValue parseValue(std::size_t& position, std::size_t end)
    {
        const char type = take<char>(position, end);
        switch (type)
        {
            case 'Y':
                return std::int64_t{take<std::int16_t>(position, end)};
            case 'C':
            case 'B':
            case 'Z':
                return std::int64_t{take<std::int8_t>(position, end)};
            case 'I':
                return std::int64_t{take<std::int32_t>(position, end)};
            case 'L':
                return take<std::int64_t>(position, end);
            case 'F':
                return static_cast<double>(take<float>(position, end));
            case 'D':
                return take<double>(position, end);
            case 'S':
            case 'R':
            {
                const auto size = take<std::uint32_t>(position, end);
                return takeBytes(position, size, end);
            }
            case 'f':
            case 'd':
            case 'i':
            case 'l':
            case 'b':
            case 'c':
            {
                FbxArray array;
                array.m_cType = type;
                array.m_uiCount = take<std::uint32_t>(position, end);
                array.m_bCompressed = take<std::uint32_t>(position, end) == 1;
                const std::uint64_t size = take<std::uint32_t>(position, end);
                array.m_data = takeBytes(position, array.m_bCompressed ? size : array.m_uiCount * getSize(type), end);
                return array;
            }
            default:
                m_document.fail(position - 1, "a kind of value that FBX has");
        }
    }

    FbxDocument& m_document;
    const std::vector<char>& m_bytes;
};

/// Text: `Name: value, value { elements }`, with `;` before comments and `*count { a: numbers }` for long lists.
class FbxDocument::TextParser
{
public:
    explicit TextParser(FbxDocument& document)
        : m_document(document), m_text(document.m_vecBytes.data(), document.m_vecBytes.size())
    {
    }

    void parse()
    {
        parseElements(m_document.m_root, 0);
        if (m_uiAt < m_text.size())
        {
            m_document.fail(m_uiAt, "an element");
        }
    }

private:
    /// Line ends separate elements; they are only passed where one may begin.
    void skip(bool lineEnds)
    {
        while (m_uiAt < m_text.size())
        {
            const char c = m_text[m_uiAt];
            if (c == ';')
            {
                m_uiAt = std::min(m_text.find('\n', m_uiAt), m_text.size());
            }
            else if (c == ' ' || c == '\t' || c == '\r' || (lineEnds && c == '\n'))
            {
                ++m_uiAt;
            }
            else
            {
                return;
            }
        }
    }

    [[nodiscard]] bool isAt(char c) const { return m_uiAt < m_text.size() && m_text[m_uiAt] == c; }

    std::string_view takeWord()
    {
        const std::size_t begin = m_uiAt;
        while (m_uiAt < m_text.size() && !std::strchr(" \t\r\n,:{}\";", m_text[m_uiAt]))
        {
            ++m_uiAt;
        }
        return m_text.substr(begin, m_uiAt - begin);
    }

    void parseElements(FbxElement& parent, unsigned int depth)
    {
        if (depth > deepest)
        {
            m_document.fail(m_uiAt, "elements that are nested less deeply");
        }
        for (skip(true); m_uiAt < m_text.size() && !isAt('}'); skip(true))
        {
            FbxElement element;
            element.m_name = takeWord();
            skip(false);
            if (element.m_name.empty() || !isAt(':'))
            {
                m_document.fail(m_uiAt, "a name and a colon");
            }
            ++m_uiAt;
            parseValues(element);
            if (isAt('{'))
            {
                ++m_uiAt;
                parseElements(element, depth + 1);
                if (!isAt('}'))
                {
                    m_document.fail(m_uiAt, "a closing brace");
                }
                ++m_uiAt;
            }
            parent.m_vecChildren.push_back(std::move(element));
        }
    }

    /// A list goes on in the next line behind a comma, before one, and where its first value stands there.
    bool goesOnBelow(bool begun)
    {
        const std::size_t lineEnd = m_uiAt;
        skip(true);
        const bool number = m_uiAt < m_text.size() && std::strchr("0123456789+-.", m_text[m_uiAt]);
        if (isAt(',') || (!begun && (number || isAt('"'))))
        {
            return true;
        }
        m_uiAt = lineEnd;
        return false;
    }

    void parseValues(FbxElement& element)
    {
        bool wanted = false;  // behind a comma
        for (skip(false); m_uiAt < m_text.size() && !isAt('{') && !isAt('}'); skip(false))
        {
            if (isAt('\n') && !goesOnBelow(wanted ? false : !element.m_vecValues.empty()))
            {
                return;
            }
            if (isAt(','))
            {
                ++m_uiAt;
                wanted = true;
                continue;
            }
            if (isAt('*'))
            {
                element.m_vecValues.emplace_back(parseArray());
                return;
            }
            element.m_vecValues.push_back(parseValue());
            wanted = false;
        }
    }

    FbxValue parseValue()
    {
        if (isAt('"'))
        {
            const std::size_t begin = ++m_uiAt;
            const std::size_t end = m_text.find('"', begin);
            if (end == std::string_view::npos)
            {
                m_document.fail(begin, "a closing quotation mark");
            }
            m_uiAt = end + 1;
            return m_text.substr(begin, end - begin);
        }
        const std::string_view word = takeWord();
        if (word.empty())
        {
            m_document.fail(m_uiAt, "a value");
        }
        std::int64_t whole = 0;
        if (const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), whole);
            error == std::errc() && end == word.data() + word.size())
        {
            return whole;
        }
        double number = 0.0;
        if (const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
            error == std::errc() && end == word.data() + word.size())
        {
            return number;
        }
        return word;
    }

    FbxArray parseArray()
    {
        const std::size_t open = m_text.find('{', m_uiAt);
        const std::size_t colon = m_text.find(':', m_uiAt);
        const std::size_t close = m_text.find('}', m_uiAt);
        if (open == std::string_view::npos || colon == std::string_view::npos || close == std::string_view::npos ||
            open > colon || colon > close)
        {
            m_document.fail(m_uiAt, "a list of numbers in braces");
        }
        m_uiAt = close + 1;
        FbxArray array;
        array.m_data = m_text.substr(colon + 1, close - colon - 1);
        return array;
    }

    FbxDocument& m_document;
    std::string_view m_text;
    std::size_t m_uiAt = 0;
};

FbxDocument::FbxDocument(const std::string& fileName) : m_strFileName(fileName)
{
    const S_Bytes bytes = File.read(fileName);
    m_vecBytes.assign(bytes.begin(), bytes.end());
    const std::string_view text(m_vecBytes.data(), m_vecBytes.size());
    m_bBinary = text.starts_with(binaryMark) && text.size() > binaryHeader;
    if (m_bBinary)
    {
        BinaryParser(*this).parse();
    }
    else
    {
        TextParser(*this).parse();
    }
}

void FbxDocument::fail(std::size_t position, const char* expected) const
{
    const auto end = m_vecBytes.begin() + static_cast<std::ptrdiff_t>(std::min(position, m_vecBytes.size()));
    const std::string place = m_bBinary ? "byte " + std::to_string(position)
                                        : "line " + std::to_string(1 + std::count(m_vecBytes.begin(), end, '\n'));
    const std::string reason = place + ": expected " + expected;
    throw ConvertException(m_strFileName.c_str(), reason.c_str());
}

void FbxDocument::fail(const FbxElement& element, const char* expected) const
{
    fail(static_cast<std::size_t>(element.m_name.data() - m_vecBytes.data()), expected);
}

std::vector<double> FbxDocument::getNumbers(const FbxElement& element) const
{
    std::vector<double> numbers;
    const auto* array = element.m_vecValues.empty() ? nullptr : std::get_if<FbxArray>(&element.m_vecValues.front());
    if (!array)
    {
        for (std::size_t i = 0; i < element.m_vecValues.size(); ++i)
        {
            numbers.push_back(element.getNumber(i, 0.0));
        }
        return numbers;
    }
    if (array->m_cType == 0)
    {
        const char* at = array->m_data.data();
        const char* const end = at + array->m_data.size();
        while (at != end)
        {
            double number = 0.0;
            const auto [next, error] = std::from_chars(at, end, number);
            if (next != at && error == std::errc())
            {
                numbers.push_back(number);
                at = next;
            }
            else
            {
                ++at;
            }
        }
        return numbers;
    }
    std::string unpacked;
    std::string_view data = array->m_data;
    if (array->m_bCompressed)
    {
        constexpr std::uint64_t mostInOne = 1032;  // deflate makes nothing out of less
        uLongf size = static_cast<uLongf>(array->m_uiCount) * getSize(array->m_cType);
        const auto place = static_cast<std::size_t>(data.data() - m_vecBytes.data());
        if (size > mostInOne * (data.size() + 1))
        {
            fail(place, "fewer numbers in so few bytes");
        }
        unpacked.resize(size);
        if (uncompress(reinterpret_cast<Bytef*>(unpacked.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                       static_cast<uLong>(data.size())) != Z_OK ||
            size != unpacked.size())
        {
            fail(place, "numbers that can be unpacked");
        }
        data = unpacked;
    }
    switch (array->m_cType)
    {
        case 'f':
            appendNumbers<float>(data, m_bLowestLast, numbers);
            break;
        case 'd':
            appendNumbers<double>(data, m_bLowestLast, numbers);
            break;
        case 'l':
            appendNumbers<std::int64_t>(data, m_bLowestLast, numbers);
            break;
        case 'b':
        case 'c':
            appendNumbers<std::uint8_t>(data, m_bLowestLast, numbers);
            break;
        default:
            appendNumbers<std::int32_t>(data, m_bLowestLast, numbers);
    }
    return numbers;
}

std::vector<unsigned char> FbxDocument::getBytes(const FbxElement& element) const
{
    std::vector<unsigned char> bytes;
    std::uint32_t bits = 0;
    unsigned int count = 0;
    for (std::size_t i = 0; i < element.m_vecValues.size(); ++i)
    {
        const std::string_view text = element.getText(i);
        if (m_bBinary)
        {
            bytes.insert(bytes.end(), text.begin(), text.end());
            continue;
        }
        static constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (const char c : text)
        {
            const std::size_t digit = digits.find(c);
            if (digit == std::string_view::npos)
            {
                continue;  // line ends, and what fills up the last group
            }
            bits = bits << 6U | static_cast<std::uint32_t>(digit);
            count += 6;
            if (count >= 8)
            {
                count -= 8;
                bytes.push_back(static_cast<unsigned char>(bits >> count & 0xFFU));
            }
        }
        bits = 0;
        count = 0;
    }
    return bytes;
}
}  // namespace TW2::convert
