#include "convert/collada_document.h"

#include "convert/convert_exception.h"

#include <platform/runtime/file.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <string_view>

namespace TW2::convert
{
namespace
{
bool isSpace(char c)
{
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Where in a file an offset lies.
std::string describeLine(const std::string& fileName, std::ptrdiff_t offset)
{
    const S_Bytes bytes = File.read(fileName.c_str());
    const auto end = bytes.begin() + std::clamp<std::ptrdiff_t>(offset, 0, static_cast<std::ptrdiff_t>(bytes.size()));
    return "line " + std::to_string(1 + std::count(bytes.begin(), end, '\n'));
}

/// A whole word as a number; false when it is none. Programs of some countries write commas for points.
bool parseNumber(std::string_view word, double& number)
{
    word.remove_prefix(word.starts_with('+') ? 1 : 0);
    const char* const end = word.data() + word.size();
    const auto [next, error] = std::from_chars(word.data(), end, number);
    if (error == std::errc::invalid_argument)
    {
        return false;
    }
    if (next == end)
    {
        return true;
    }
    std::string pointed(word);
    const std::size_t comma = pointed.find(',');
    if (comma == std::string::npos || pointed.find('.') != std::string::npos)
    {
        return false;
    }
    pointed[comma] = '.';
    return parseNumber(pointed, number);
}
}  // namespace

ColladaDocument::ColladaDocument(const std::string& fileName) : m_strFileName(fileName)
{
    const S_Bytes bytes = File.read(fileName.c_str());
    const pugi::xml_parse_result result = m_document.load_buffer(bytes.data(), bytes.size());
    if (!result)
    {
        const std::string reason = describeLine(fileName, result.offset) + ": is no XML: " + result.description();
        throw ConvertException(fileName.c_str(), reason.c_str());
    }
    m_root = m_document.child("COLLADA");
    if (!m_root)
    {
        throw ConvertException(fileName.c_str(), "is no COLLADA: the outermost element has another name");
    }
    struct Collector : pugi::xml_tree_walker
    {
        bool for_each(pugi::xml_node& node) override
        {
            if (const pugi::xml_attribute id = node.attribute("id"))
            {
                const auto [known, fresh] = m_pIds->try_emplace(id.value(), node);
                if (!fresh && !known->second.first_child())
                {
                    known->second = node;  // some programs announce what they say later
                }
            }
            return true;
        }
        std::unordered_map<std::string, pugi::xml_node>* m_pIds = nullptr;
    } collector;
    collector.m_pIds = &m_mapIds;
    m_document.traverse(collector);
}

pugi::xml_node ColladaDocument::findId(const std::string& id) const
{
    const auto found = m_mapIds.find(id);
    return found == m_mapIds.end() ? pugi::xml_node() : found->second;
}

pugi::xml_node ColladaDocument::follow(const pugi::xml_node& element, const char* attribute) const
{
    return findId(decode(element.attribute(attribute).value()));
}

std::string ColladaDocument::decode(const char* reference)
{
    std::string text;
    for (const char* at = *reference == '#' ? reference + 1 : reference; *at != '\0'; ++at)
    {
        unsigned int code = 0;
        if (*at == '%' && std::isxdigit(static_cast<unsigned char>(at[1])) != 0 &&
            std::from_chars(at + 1, at + 3, code, 16).ptr == at + 3)
        {
            text += static_cast<char>(code);
            at += 2;
        }
        else
        {
            text += *at;
        }
    }
    return text;
}

std::vector<std::string> ColladaDocument::split(const char* text)
{
    std::vector<std::string> words;
    while (*text != '\0')
    {
        const char* const begin = std::find_if_not(text, text + std::strlen(text), isSpace);
        text = std::find_if(begin, begin + std::strlen(begin), isSpace);
        if (text != begin)
        {
            words.emplace_back(begin, text);
        }
    }
    return words;
}

std::vector<double> ColladaDocument::readNumbers(const pugi::xml_node& element) const
{
    std::vector<double> numbers;
    for (const pugi::xml_node& part : element.children())
    {
        const char* at = part.value();
        const char* const end = at + std::strlen(at);
        while ((at = std::find_if_not(at, end, isSpace)) != end)
        {
            const std::string_view word(at, static_cast<std::size_t>(std::find_if(at, end, isSpace) - at));
            double number = 0.0;
            if (!parseNumber(word, number))
            {
                fail(element, "numbers, found \"" + std::string(word) + "\"");
            }
            numbers.push_back(number);
            at += word.size();
        }
    }
    return numbers;
}

ColladaDocument::Source ColladaDocument::readSource(const pugi::xml_node& element) const
{
    Source source;
    for (const pugi::xml_node& list : element.children())
    {
        const std::string_view name = list.name();
        if (name == "float_array" || name == "int_array")
        {
            source.m_vecNumbers = readNumbers(list);
        }
        else if (name == "Name_array" || name == "IDREF_array")
        {
            source.m_vecWords = split(list.text().get());
            source.m_bIds = name == "IDREF_array";
        }
    }
    const pugi::xml_node accessor = element.child("technique_common").child("accessor");
    source.m_uiStride = std::max(accessor.attribute("stride").as_uint(1), 1U);
    const std::size_t offset = accessor.attribute("offset").as_uint(0);
    source.m_vecNumbers.erase(
        source.m_vecNumbers.begin(),
        source.m_vecNumbers.begin() + static_cast<std::ptrdiff_t>(std::min(offset, source.m_vecNumbers.size())));
    return source;
}

std::vector<ColladaDocument::Input> ColladaDocument::readInputs(const pugi::xml_node& element) const
{
    std::vector<Input> inputs;
    for (const pugi::xml_node& input : element.children("input"))
    {
        inputs.push_back({input.attribute("semantic").value(), follow(input, "source"),
                          input.attribute("offset").as_uint(0), input.attribute("set").as_int(0)});
    }
    return inputs;
}

void ColladaDocument::fail(const pugi::xml_node& element, const std::string& expected) const
{
    const std::string reason = describeLine(m_strFileName, element.offset_debug()) + ", element \"" + element.name() +
                               "\": expected " + expected;
    throw ConvertException(m_strFileName.c_str(), reason.c_str());
}
}  // namespace TW2::convert
