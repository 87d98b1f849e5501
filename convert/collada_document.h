#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace TW2::convert
{
/// The elements of a COLLADA file, by their ids.
class ColladaDocument
{
public:
    /// A list of values and how it is cut into pieces.
    struct Source
    {
        std::vector<double> m_vecNumbers;
        std::vector<std::string> m_vecWords;  ///< of lists of names
        bool m_bIds = false;                  ///< the names are ids
        std::size_t m_uiStride = 1;

        /// The numbers of one piece; null when there is none.
        [[nodiscard]] const double* find(std::size_t index) const
        {
            return index < m_vecNumbers.size() / m_uiStride ? m_vecNumbers.data() + index * m_uiStride : nullptr;
        }
    };
    /// What an element takes from elsewhere, under a name of its own.
    struct Input
    {
        std::string m_strSemantic;
        pugi::xml_node m_source;
        std::size_t m_uiOffset = 0;
        int m_iSet = 0;
    };

    /// Throws ConvertException with the file's name and the place for a file that is no COLLADA.
    explicit ColladaDocument(const std::string& fileName);
    ColladaDocument(const ColladaDocument&) = delete;
    ColladaDocument& operator=(const ColladaDocument&) = delete;

    [[nodiscard]] pugi::xml_node getRoot() const { return m_root; }
    /// The element of an id; empty when there is none.
    [[nodiscard]] pugi::xml_node findId(const std::string& id) const;
    /// The element that an attribute names as "#id"; empty when there is none in this file.
    [[nodiscard]] pugi::xml_node follow(const pugi::xml_node& element, const char* attribute) const;
    [[nodiscard]] Source readSource(const pugi::xml_node& element) const;
    [[nodiscard]] std::vector<Input> readInputs(const pugi::xml_node& element) const;
    /// The numbers of a list. Throws ConvertException for what is none.
    [[nodiscard]] std::vector<double> readNumbers(const pugi::xml_node& element) const;
    /// Throws ConvertException: something else was `expected` in an element.
    [[noreturn]] void fail(const pugi::xml_node& element, const std::string& expected) const;

    /// The words of a text.
    [[nodiscard]] static std::vector<std::string> split(const char* text);
    /// A reference without "#" and with its %XX as the letters that they stand for.
    [[nodiscard]] static std::string decode(const char* reference);

private:
    std::string m_strFileName;
    pugi::xml_document m_document;
    pugi::xml_node m_root;
    std::unordered_map<std::string, pugi::xml_node> m_mapIds;
};
}  // namespace TW2::convert
