#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace TW2::convert
{
/// Numbers of an FBX file, left as they are until somebody wants them.
struct FbxArray
{
    std::string_view m_data;  ///< in the file's bytes
    char m_cType = 0;         ///< f, d, i, l, b or c of a binary file; 0: text
    std::uint32_t m_uiCount = 0;
    bool m_bCompressed = false;
};

using FbxValue = std::variant<std::int64_t, double, std::string_view, FbxArray>;

/// An element of an FBX file: a name, values, and elements inside it.
struct FbxElement
{
    std::string_view m_name;
    std::vector<FbxValue> m_vecValues;
    std::vector<FbxElement> m_vecChildren;

    /// The first element of that name inside this one; null when there is none.
    [[nodiscard]] const FbxElement* find(std::string_view name) const noexcept;
    /// @name Values by position; what is not there, or of another kind, is the empty text, 0 or the default
    /// @{
    [[nodiscard]] std::string_view getText(std::size_t index) const noexcept;
    [[nodiscard]] std::int64_t getInteger(std::size_t index) const noexcept;
    [[nodiscard]] double getNumber(std::size_t index, double otherwise) const noexcept;
    /// @}
};

/// A number without what lies behind its point; 0 for one that no whole number of 64 bits is.
[[nodiscard]] std::int64_t toWhole(double number) noexcept;

/// The elements of an FBX file from version 6 on, binary or text.
class FbxDocument
{
public:
    /// Reads a file; the document owns its bytes. Throws ConvertException with the file's name, the place and what was
    /// expected there.
    explicit FbxDocument(const std::string& fileName);
    FbxDocument(const FbxDocument&) = delete;
    FbxDocument& operator=(const FbxDocument&) = delete;

    [[nodiscard]] const std::string& getFilename() const noexcept { return m_strFileName; }
    [[nodiscard]] bool isBinary() const noexcept { return m_bBinary; }
    [[nodiscard]] const FbxElement& getRoot() const noexcept { return m_root; }

    /// The numbers of the first array, or of all values, of an element. Throws ConvertException for damaged data.
    [[nodiscard]] std::vector<double> getNumbers(const FbxElement& element) const;

    /// Throws ConvertException: something else was `expected` in an element.
    [[noreturn]] void fail(const FbxElement& element, const char* expected) const;
    /// The bytes of an element's values: of a binary file those that stand there, of a text what they say in base 64.
    [[nodiscard]] std::vector<unsigned char> getBytes(const FbxElement& element) const;

private:
    class BinaryParser;
    class TextParser;

    [[noreturn]] void fail(std::size_t position, const char* expected) const;

    std::string m_strFileName;
    std::vector<char> m_vecBytes;
    FbxElement m_root;
    bool m_bBinary = false;
    bool m_bWide = false;        ///< binary: offsets have 64 bits
    bool m_bLowestLast = false;  ///< binary: the lowest byte of a number is its last
};
}  // namespace TW2::convert
