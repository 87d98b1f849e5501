#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>

namespace
{
using namespace convert_test;

/// Writes binary FBX: with offsets of 32 bits, or of 64 from version 7.5 on, the lowest byte of a number first or last.
class BinaryFbx
{
public:
    BinaryFbx(std::uint32_t version, bool lowestLast) : m_bWide(version >= 7500), m_bLowestLast(lowestLast)
    {
        m_content = std::string("Kaydara FBX Binary  \0\x1a", 22) + static_cast<char>(lowestLast);
        addNumber(version);
    }

    /// An element with values and what `addInside` puts inside it.
    BinaryFbx& add(
        const std::string& name, const std::vector<std::function<void()>>& values,
        const std::function<void()>& addInside = [] {})
    {
        const std::size_t begin = m_content.size();
        for (int i = 0; i < 3; ++i)
        {
            addOffset(0);
        }
        m_content += static_cast<char>(name.size());
        m_content += name;
        const std::size_t first = m_content.size();
        for (const auto& addValue : values)
        {
            addValue();
        }
        const std::size_t valuesEnd = m_content.size();
        addInside();
        m_content.append(3 * offsetSize() + 1, '\0');
        const std::string rest = m_content.substr(begin + 3 * offsetSize());
        const std::size_t end = m_content.size();
        m_content.resize(begin);
        addOffset(end);
        addOffset(values.size());
        addOffset(valuesEnd - first);
        m_content += rest;
        return *this;
    }

    template <typename T>
    std::function<void()> value(char type, T number)
    {
        return [this, type, number]
        {
            m_content += type;
            addNumber(number);
        };
    }
    std::function<void()> text(const std::string& words)
    {
        return [this, words]
        {
            m_content += 'S';
            addNumber(static_cast<std::uint32_t>(words.size()));
            m_content += words;
        };
    }
    /// Packed where `packs` says so.
    template <typename T>
    std::function<void()> list(char type, const std::vector<T>& numbers, bool packs = false)
    {
        return [this, type, numbers, packs]
        {
            const std::size_t begin = m_content.size();
            std::ranges::for_each(numbers, [this](T number) { addNumber(number); });
            const std::string bytes = packs ? pack(m_content.substr(begin)) : m_content.substr(begin);
            m_content.resize(begin);
            m_content += type;
            for (const std::size_t head : {numbers.size(), std::size_t{packs}, bytes.size()})
            {
                addNumber(static_cast<std::uint32_t>(head));
            }
            m_content += bytes;
        };
    }

    [[nodiscard]] const std::string& getContent() const { return m_content; }

private:
    /// As one piece that deflate stores as it is.
    static std::string pack(const std::string& bytes)
    {
        const auto size = static_cast<char>(bytes.size());
        std::uint32_t low = 1;
        std::uint32_t high = 0;
        for (const char byte : bytes)
        {
            low = (low + static_cast<unsigned char>(byte)) % 65521;
            high = (high + low) % 65521;
        }
        std::string packed = std::string("\x78\x01\x01", 3) + size + '\0' + static_cast<char>(~size) + '\xFF' + bytes;
        for (const std::uint32_t sum : {high >> 8U, high, low >> 8U, low})
        {
            packed += static_cast<char>(sum);
        }
        return packed;
    }

    [[nodiscard]] std::size_t offsetSize() const { return m_bWide ? 8 : 4; }

    void addOffset(std::size_t offset)
    {
        m_bWide ? addNumber(static_cast<std::uint64_t>(offset)) : addNumber(static_cast<std::uint32_t>(offset));
    }

    template <typename T>
    void addNumber(T number)
    {
        std::array<char, sizeof(T)> bytes;
        std::memcpy(bytes.data(), &number, sizeof(T));
        m_bLowestLast ? m_content.append(bytes.rbegin(), bytes.rend()) : m_content.append(bytes.begin(), bytes.end());
    }

    std::string m_content;
    bool m_bWide;
    bool m_bLowestLast;
};
}  // namespace

TEST(BinaryFbx, NumbersOfEverySizeAndByteOrderAreRead)
{
    for (const std::uint32_t version : {7400U, 7500U})
    {
        for (const auto& [lowestLast, packs] : {std::pair(false, false), {true, false}, {false, true}, {true, true}})
        {
            BinaryFbx file(version, lowestLast);
            const auto link = [&file](std::int64_t from, std::int64_t to) {
                file.add("C", {file.text("OO"), file.value('L', from), file.value('L', to)});
            };
            file.add("FBXHeaderExtension", {},
                     [&] { file.add("FBXVersion", {file.value('I', static_cast<std::int32_t>(version))}); });
            file.add(
                "Objects", {},
                [&, packs = packs]
                {
                    file.add("Geometry", {file.value('L', std::int64_t{20}), file.text(""), file.text("Mesh")},
                             [&]
                             {
                                 file.add("Vertices", {file.list<double>('d', {0, 0, 0, 1, 0, 0, 0, 2.5, 0}, packs)});
                                 file.add("PolygonVertexIndex", {file.list<std::int32_t>('i', {0, 1, -3}, packs)});
                             });
                    const auto property = [&]
                    {
                        const std::string name = "Lcl Translation";
                        file.add("P",
                                 {file.text(name), file.text(name), file.text(""), file.text("A"),
                                  file.value('D', 1.25), file.value('F', -2.5F), file.value('Y', std::int16_t{-300})});
                    };
                    file.add("Model", {file.value('L', std::int64_t{1} << 40), file.text("shown"), file.text("Mesh")},
                             [&] { file.add("Properties70", {}, property); });
                });
            file.add("Connections", {},
                     [&]
                     {
                         link(std::int64_t{1} << 40, 0);
                         link(20, std::int64_t{1} << 40);
                     });
            const support::TemporaryDirectory directory;
            const Model model = TW2::convert::readModel(directory.write("shown.fbx", file.getContent()), {});
            SCOPED_TRACE(std::to_string(version) + (lowestLast ? ", lowest byte last" : ""));
            ASSERT_EQ(model.m_vecNodes.size(), 1U);
            EXPECT_LT(largestDifference(model.m_vecNodes[0].m_local, move(1.25, -2.5, 300.0)), 1e-12);
            ASSERT_EQ(model.m_vecMeshes.size(), 1U);
            EXPECT_EQ(model.m_vecMeshes[0].m_vecIndices.size(), 3U);
            EXPECT_TRUE(std::ranges::any_of(model.m_vecMeshes[0].m_vecPositions,
                                            [](const auto& position) { return position.y == 2.5F; }));
        }
    }
}
