#include "tests/support/expectations.h"
#include "tests/support/records.h"

#include <tw2/io/chunk_id.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>
#include <platform/runtime/memory_scope.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace TW2;

namespace
{
/// Two primitives of two vertices and one; bones Hip and Knee.
SkinChunk makeSkin()
{
    return support::makeSkin({"Hip", "Knee", "Toe"}, {{{{0, 1.0f}}, {{0, 0.25f}, {1, 0.75f}}}, {{{1, 1.0f}}}});
}

using Triples = std::vector<std::tuple<int, int, float>>;  // vertex, bone, weight

/// A skin data file of version 0 with these three influence lists.
S_Bytes writeVersion0(const Triples& first, const Triples& second, const Triples& third)
{
    const auto lists = [&](S_MemoryFileWriter& w)
    {
        for (const Triples* list : {&first, &second, &third})
        {
            w.writeCount(list->size());
            for (const auto& [vertex, bone, weight] : *list)
            {
                w << vertex << bone << weight;
            }
        }
    };
    S_MemoryFileWriter writer;  // the last two values: what nothing uses
    support::writeChunk(writer, CHUNK_SKIN, 0, lists, 1, "body", 2, "Hip", "Knee", 1,
                        M_Vector3Template<float>(1, 2, 3));
    return writer.getBytes();
}

SkinChunk read(const S_Bytes& bytes)
{
    S_MemoryFile file;
    file.constructFromMemory("body.skd", bytes.data(), bytes.size());
    SkinChunk chunk;
    file >> chunk;
    EXPECT_EQ(file.getPosition(), file.getFileSize());
    return chunk;
}

SkinChunk rewrite(const SkinChunk& chunk)
{
    return read(support::toBytes(chunk));
}
}  // namespace

TEST(SkinChunks, WhatIsWrittenIsReadAgain)
{
    EXPECT_EQ(rewrite(makeSkin()), makeSkin());
    EXPECT_EQ(rewrite(SkinChunk()), SkinChunk());
}

TEST(SkinChunks, OldDataBecomeOnePrimitiveWithTheInfluencesOfAVertexInListOrder)
{
    const SkinChunk chunk = read(writeVersion0({{2, 1, 0.5f}, {0, 0, 1.0f}}, {{2, 0, 0.25f}}, {{2, 1, 0.25f}}));
    EXPECT_FALSE(chunk.sortedByPrimitive);
    EXPECT_EQ(chunk.vertexBoneCounts, (S_Vector<int>{1, 0, 3}));
    EXPECT_EQ(chunk.vertexInfluenceStarts, (S_Vector<int>{0, 1, 1}));
    EXPECT_EQ(chunk.influenceBones, (S_Vector<int>{0, 1, 0, 1}));
    EXPECT_EQ(chunk.influenceWeights, (S_Vector<float>{1, 0.5f, 0.25f, 0.25f}));
    EXPECT_EQ(chunk.primitiveVertexCounts, (S_Vector<unsigned int>{3}));
    EXPECT_EQ(chunk.primitiveFirstVertices, (S_Vector<unsigned int>{0}));
    EXPECT_EQ(chunk.boneNames, (S_Vector<S_String>{"Hip", "Knee"}));
}

TEST(SkinChunks, AnOldVertexIndexThatCannotBeIsNamedAndNotAllocated)
{
    for (const int vertex : {-1, INT_MIN, INT_MAX, 1 << 21})
    {
        const S_MemoryScope::Usage before = S_MemoryScope::getUsage("skin test");
        std::string message;
        {
            const S_MemoryScope scope("skin test");
            message = support::messageOf([&] { read(writeVersion0({{0, 0, 1}}, {{vertex, 0, 1}}, {})); });
        }
        // Two influences, and a million vertices that may be without.
        EXPECT_THAT(message, testing::HasSubstr("vertex indices from 0 to 1048577, not " + std::to_string(vertex)));
        EXPECT_THAT(message, testing::HasSubstr("body.skd"));
        EXPECT_LT(S_MemoryScope::getUsage("skin test").m_iBytes - before.m_iBytes, 4096);
    }
    EXPECT_EQ(read(writeVersion0({{70000, 0, 1}}, {}, {})).vertexBoneCounts.size(), 70001u);
    EXPECT_THAT(support::messageOf(
                    [] {
                        read(writeVersion0({{0, 2, 1}}, {}, {}));
                    }),
                testing::HasSubstr("bone 2 of 2"));
}

TEST(SkinChunks, AnIndexThatPointsOutsideItsListIsNamed)
{
    const std::pair<const char*, std::function<void(SkinChunk&)>> faults[] = {
        {"vertex 1: first influence -1", [](SkinChunk& c) { c.vertexInfluenceStarts[1] = -1; }},
        {"vertex 2: first influence 4", [](SkinChunk& c) { c.vertexInfluenceStarts[2] = 4; }},
        {"first influence 2147483647", [](SkinChunk& c) { c.vertexInfluenceStarts[0] = INT_MAX; }},
        {"bone count -2", [](SkinChunk& c) { c.vertexBoneCounts[1] = -2; }},
        {"bone count 2147483647", [](SkinChunk& c) { c.vertexBoneCounts[0] = INT_MAX; }},
        {"3 first influences and 2 bone counts", [](SkinChunk& c) { c.vertexBoneCounts.pop_back(); }},
        {"4 bones and 3 weights", [](SkinChunk& c) { c.influenceWeights.pop_back(); }},
        {"influence 3: bone 3 of 3", [](SkinChunk& c) { c.influenceBones[3] = 3; }},
        {"influence 0: bone -1 of 3", [](SkinChunk& c) { c.influenceBones[0] = -1; }},
        {"influence 2: weight nan",
         [](SkinChunk& c) { c.influenceWeights[2] = std::numeric_limits<float>::quiet_NaN(); }},
        {"primitive 1: 2 vertices from 2 on, of 3", [](SkinChunk& c) { c.primitiveVertexCounts[1] = 2; }},
        {"primitive 0: 2 vertices from 4294967295 on", [](SkinChunk& c) { c.primitiveFirstVertices[0] = 0xFFFFFFFFu; }},
        {"2 vertex counts and 3 first vertices", [](SkinChunk& c) { c.primitiveFirstVertices.push_back(0); }},
    };
    for (const auto& [expected, damage] : faults)
    {
        SkinChunk chunk = makeSkin();
        damage(chunk);
        EXPECT_NE(chunk.findInvalidValue().find(expected), S_String::npos) << chunk.findInvalidValue();
        const std::string message = support::messageOf([&] { rewrite(chunk); });
        EXPECT_THAT(message, testing::HasSubstr(expected));
    }
}
