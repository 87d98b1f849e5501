#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support
{
/// Writes glTF files for tests: the lists of numbers are made here, everything else is text that a test gives.
class GltfText
{
public:
    /// glTF's numbers for kinds of numbers.
    enum ComponentType : int
    {
        BYTE = 5120,
        UNSIGNED_BYTE = 5121,
        SHORT = 5122,
        UNSIGNED_SHORT = 5123,
        UNSIGNED_INT = 5125,
        FLOAT = 5126
    };

    /// A buffer view; `more` is further members, each with a comma before it. Returns its number.
    int addView(const void* data, std::size_t size, const std::string& more = "")
    {
        m_bytes.resize((m_bytes.size() + 3) / 4 * 4);
        const std::size_t offset = m_bytes.size();
        const auto* bytes = static_cast<const unsigned char*>(data);
        m_bytes.insert(m_bytes.end(), bytes, bytes + size);
        m_views.push_back("{\"buffer\":0,\"byteOffset\":" + std::to_string(offset) +
                          ",\"byteLength\":" + std::to_string(size) + more + "}");
        return static_cast<int>(m_views.size()) - 1;
    }

    /// A list of `count` elements of a type such as VEC3. Returns its number.
    int addAccessor(int view, int componentType, std::size_t count, const std::string& type,
                    const std::string& more = "")
    {
        const std::string source = view < 0 ? "" : "\"bufferView\":" + std::to_string(view) + ",";
        m_accessors.push_back("{" + source + "\"componentType\":" + std::to_string(componentType) +
                              ",\"count\":" + std::to_string(count) + ",\"type\":\"" + type + "\"" + more + "}");
        return static_cast<int>(m_accessors.size()) - 1;
    }

    /// @name Lists of numbers of one kind, side by side
    /// @{
    int addFloats(const std::vector<float>& numbers, const std::string& type) { return add(numbers, FLOAT, type); }
    int addIndices(const std::vector<std::uint16_t>& numbers) { return add(numbers, UNSIGNED_SHORT, "SCALAR"); }
    template <typename T>
    int add(const std::vector<T>& numbers, int componentType, const std::string& type, const std::string& more = "")
    {
        return addAccessor(addView(numbers.data(), numbers.size() * sizeof(T)), componentType,
                           numbers.size() / getComponents(type), type, more);
    }
    /// @}

    /// A member of the file, such as `"nodes"` and `[{"mesh":0}]`.
    void set(const std::string& name, const std::string& value) { m_members.emplace_back(name, value); }

    /// The file, with its numbers in it.
    [[nodiscard]] std::string make() const
    {
        return make(R"("uri":"data:application/octet-stream;base64,)" + encode(m_bytes) + "\",");
    }
    /// A binary file.
    [[nodiscard]] std::string makeBinary() const
    {
        std::string text = make("");
        text.resize((text.size() + 3) / 4 * 4, ' ');
        std::string bytes(m_bytes.begin(), m_bytes.end());
        bytes.resize((bytes.size() + 3) / 4 * 4);
        return "glTF" + word(2) + word(28 + text.size() + bytes.size()) + word(text.size()) + "JSON" + text +
               word(bytes.size()) + std::string("BIN\0", 4) + bytes;
    }
    [[nodiscard]] const std::vector<unsigned char>& getBytes() const { return m_bytes; }

    static std::string encode(const std::vector<unsigned char>& bytes)
    {
        constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); i += 3)
        {
            std::uint32_t group = 0;
            for (std::size_t j = 0; j < 3; ++j)
            {
                group = group << 8U | (i + j < bytes.size() ? bytes[i + j] : 0U);
            }
            for (std::size_t j = 0; j < 4; ++j)
            {
                text += i + j > bytes.size() ? '=' : digits[group >> (18 - 6 * j) & 63U];
            }
        }
        return text;
    }

private:
    static std::size_t getComponents(const std::string& type)
    {
        return type == "SCALAR" ? 1 : type == "MAT4" ? 16 : static_cast<std::size_t>(type.back() - '0');
    }

    static std::string join(const std::vector<std::string>& parts)
    {
        std::string text;
        for (const std::string& part : parts)
        {
            text += (text.empty() ? "" : ",") + part;
        }
        return text;
    }

    static std::string word(std::size_t value)
    {
        std::string bytes(4, '\0');
        for (std::size_t i = 0; i < 4; ++i)
        {
            bytes[i] = static_cast<char>(value >> 8 * i & 255U);
        }
        return bytes;
    }

    [[nodiscard]] std::string make(const std::string& source) const
    {
        std::string text = R"({"asset":{"version":"2.0"})";
        if (!m_bytes.empty())
        {
            text += ",\"buffers\":[{" + source + "\"byteLength\":" + std::to_string(m_bytes.size()) + "}]";
        }
        text += ",\"bufferViews\":[" + join(m_views) + "],\"accessors\":[" + join(m_accessors) + "]";
        for (const auto& [name, value] : m_members)
        {
            text += ",\"" + name + "\":" + value;
        }
        return text + "}";
    }

    std::vector<unsigned char> m_bytes;
    std::vector<std::string> m_views;
    std::vector<std::string> m_accessors;
    std::vector<std::pair<std::string, std::string>> m_members;
};

/// A square of side 2 around the origin that looks along +z of glTF, its texture upright: vertices from the lower left
/// one on, against the clock.
inline const std::vector<float> squarePositions{-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
inline const std::vector<float> squareCoordinates{0, 1, 1, 1, 1, 0, 0, 0};
inline const std::vector<std::uint16_t> squareIndices{0, 1, 2, 0, 2, 3};

inline std::string number(int value)
{
    return std::to_string(value);
}

/// Members of a primitive that is the square. `more`: further attributes, each with a comma before it.
inline std::string addSquare(GltfText& text, const std::string& more = "")
{
    const int positions = text.addFloats(squarePositions, "VEC3");
    return R"("attributes":{"POSITION":)" + number(positions) + more + R"(},"indices":)" +
           number(text.addIndices(squareIndices));
}
}  // namespace support
