#include "io/chunk_values.h"
#include "io/group_offsets.h"

#include <tw2/io/chunk_id.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/vector3.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace TW2
{
namespace
{
constexpr unsigned int versionWithPrimitives = 1;  // the newest
constexpr std::size_t smallestString = 4;          // its length alone

/// One influence of the oldest version, as the file stores it.
struct Triple
{
    int vertex;
    int bone;
    float weight;
};
static_assert(sizeof(Triple) == 12);

/// The oldest version stores no number of vertices: the largest index tells it. So many vertices more than there are
/// influences may be without any, which keeps a damaged index from asking for gigabytes.
constexpr std::size_t maxFreeVertices = std::size_t{1} << 20;

constexpr int influenceLists = 3;

/// All influences in file order. Every vertex index is checked.
S_Vector<Triple> readTriples(ChunkReader& chunk)
{
    S_Vector<Triple> all;
    S_Vector<Triple> list;
    for (int i = 0; i < influenceLists; ++i)
    {
        chunk.block(list);
        all.insert(all.end(), list.begin(), list.end());
    }
    const std::size_t limit = std::min<std::size_t>(all.size() + maxFreeVertices, INT32_MAX);
    for (const Triple& triple : all)
    {
        if (triple.vertex < 0 || static_cast<std::size_t>(triple.vertex) >= limit)
        {
            chunk.getBody().fail(S_STR("vertex indices from 0 to %zu, not %d", limit - 1, triple.vertex));
        }
    }
    return all;
}

/// Sorts the influences by vertex; those of one vertex stay in file order.
void distribute(const S_Vector<Triple>& triples, SkinChunk& chunk)
{
    std::size_t vertices = 0;
    for (const Triple& triple : triples)
    {
        vertices = std::max(vertices, static_cast<std::size_t>(triple.vertex) + 1);
    }
    chunk.vertexBoneCounts.assign(vertices, 0);
    for (const Triple& triple : triples)
    {
        ++chunk.vertexBoneCounts[static_cast<std::size_t>(triple.vertex)];
    }
    makeOffsets(chunk.vertexInfluenceStarts, chunk.vertexBoneCounts, 1);
    chunk.influenceBones.resize(triples.size());
    chunk.influenceWeights.resize(triples.size());
    S_Vector<int> next = chunk.vertexInfluenceStarts;
    for (const Triple& triple : triples)
    {
        const auto place = static_cast<std::size_t>(next[static_cast<std::size_t>(triple.vertex)]++);
        chunk.influenceBones[place] = triple.bone;
        chunk.influenceWeights[place] = triple.weight;
    }
    chunk.primitiveVertexCounts.assign(1, static_cast<unsigned int>(vertices));
    chunk.primitiveFirstVertices.assign(1, 0U);
}

constexpr auto describe = [](auto& chunk, auto& skin)
{
    chunk.arrays(skin.objectNames, skin.boneNames);
    chunk.arrays(skin.vertexInfluenceStarts, skin.vertexBoneCounts);
    chunk.arrays(skin.influenceBones, skin.influenceWeights);
    chunk.arrays(skin.primitiveVertexCounts, skin.primitiveFirstVertices);
};

void readOldVersion(ChunkReader& chunk, SkinChunk& skin)
{
    distribute(readTriples(chunk), skin);
    chunk.list(skin.objectNames, smallestString);
    chunk.list(skin.boneNames, smallestString);
    S_Vector<M_Vector3Template<float>> unused;
    chunk.block(unused);
}

void read(ChunkReader& chunk, SkinChunk& skin)
{
    skin.sortedByPrimitive = chunk.has(versionWithPrimitives);
    if (skin.sortedByPrimitive)
    {
        describe(chunk, skin);
    }
    else
    {
        readOldVersion(chunk, skin);
    }
    if (const S_String invalid = skin.findInvalidValue(); !invalid.empty())
    {
        chunk.getBody().fail(S_STR("skin data without contradiction, not %s", invalid.c_str()));
    }
}
}  // namespace

S_String SkinChunk::findInvalidValue() const
{
    const std::size_t vertices = vertexInfluenceStarts.size();
    const std::size_t influences = influenceBones.size();
    if (vertexBoneCounts.size() != vertices)
    {
        return S_STR("%zu first influences and %zu bone counts of vertices", vertices, vertexBoneCounts.size()).str();
    }
    if (influenceWeights.size() != influences)
    {
        return S_STR("%zu bones and %zu weights of influences", influences, influenceWeights.size()).str();
    }
    if (primitiveFirstVertices.size() != primitiveVertexCounts.size())
    {
        return S_STR("%zu vertex counts and %zu first vertices of primitives", primitiveVertexCounts.size(),
                     primitiveFirstVertices.size())
            .str();
    }
    for (std::size_t v = 0; v < vertices; ++v)
    {
        const std::int64_t start = vertexInfluenceStarts[v];
        const std::int64_t count = vertexBoneCounts[v];
        if (start < 0 || count < 0 || start + count > static_cast<std::int64_t>(influences))
        {
            return S_STR("vertex %zu: first influence %d, bone count %d, of %zu influences", v,
                         vertexInfluenceStarts[v], vertexBoneCounts[v], influences)
                .str();
        }
    }
    for (std::size_t i = 0; i < influences; ++i)
    {
        if (influenceBones[i] < 0 || static_cast<std::size_t>(influenceBones[i]) >= boneNames.size())
        {
            return S_STR("influence %zu: bone %d of %zu bones", i, influenceBones[i], boneNames.size()).str();
        }
        if (!std::isfinite(influenceWeights[i]))
        {
            return S_STR("influence %zu: weight %g", i, static_cast<double>(influenceWeights[i])).str();
        }
    }
    for (std::size_t p = 0; p < primitiveVertexCounts.size(); ++p)
    {
        if (std::uint64_t{primitiveFirstVertices[p]} + primitiveVertexCounts[p] > vertices)
        {
            return S_STR("primitive %zu: %u vertices from %u on, of %zu vertices", p, primitiveVertexCounts[p],
                         primitiveFirstVertices[p], vertices)
                .str();
        }
    }
    return {};
}

S_MemoryFile& operator>>(S_MemoryFile& file, SkinChunk& chunk)
{
    return readRecord(file, CHUNK_SKIN, chunk, read);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SkinChunk& chunk)
{
    return writeRecord(writer, CHUNK_SKIN, versionWithPrimitives, chunk, describe);
}
}  // namespace TW2
