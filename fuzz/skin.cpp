#include "fuzz/records.h"

#include <tw2/skin/skin_chunk.h>
#include <tw2/skin/vertex_animation.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

using namespace TW2;
using fuzz::require;

namespace
{
/// Every vertex of every primitive leads to influences and bones that exist; the sanitizers watch the rest.
void followEveryInfluence(const TW_VertexAnimation::Skin& skin)
{
    const SkinChunk& chunk = skin.getSkinChunk();
    // Primitives may overlap, so a small file can hold many vertices.
    std::size_t left = 100000;
    for (int p = 0; p < static_cast<int>(chunk.primitiveVertexCounts.size()); ++p)
    {
        const int* const counts = skin.getVertexBoneCountList(p);
        for (int v = 0; v < skin.getPrimitiveVertexCount(p) && left > 0; ++v, --left)
        {
            require(counts[v] == skin.getVertexBoneCount(p, v));
            for (int k = 0; k < counts[v] && left > 0; ++k, --left)
            {
                require(static_cast<std::size_t>(skin.getVertexBone(p, v, k)) < chunk.boneNames.size());
                require(std::isfinite(skin.getVertexWeight(p, v, k)));
            }
        }
    }
    for (const S_String& name : chunk.boneNames)
    {
        if (left-- == 0)
        {
            break;
        }
        static_cast<void>(skin.boneHasVerticesWeighted(name.c_str()));
    }
}

void checkRecord(const SkinChunk& chunk)
{
    require(chunk.findInvalidValue().empty());
    const S_Bytes file = fuzz::toBytes(chunk);
    SkinChunk again;
    fuzz::read(again, file.data(), file.size());
    again.sortedByPrimitive = chunk.sortedByPrimitive;
    require(again == chunk);
    followEveryInfluence(TW_VertexAnimation::Skin(chunk));
}
}  // namespace

// Any bytes as a skin data file: they are refused, or give a record that is sound, keeps its value through the writer
// and can be followed everywhere; nothing stays allocated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const long long live = S_Memory::getLiveCount();
    {
        SkinChunk chunk;
        if (fuzz::completes([&] { fuzz::read(chunk, data, size); }))
        {
            checkRecord(chunk);
        }
    }
    require(S_Memory::getLiveCount() == live);
    return 0;
}
