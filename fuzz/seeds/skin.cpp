#include "fuzz/seeds/seeds.h"

#include <tw2/io/chunk_id.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/vector3.h>
#include <platform/runtime/memory_file_writer.h>

namespace
{
void writeVersion0(S_MemoryFileWriter& writer)
{
    const S_MemoryFileWriter::Chunk chunk(writer, TW2::CHUNK_SKIN, 0);
    writer << 2 << 0 << 0 << 1.0F << 2 << 1 << 0.5F;
    writer << 1 << 2 << 0 << 0.5F;
    writer << 0;
    writer << 1 << "body" << 2 << "Hip"
           << "Knee";
    writer << 1 << M_Vector3Template<float>(1, 2, 3);
}

const fuzz::SeedSource s_skins("skin",
                               [](fuzz::SeedFolder& seeds)
                               {
                                   TW2::SkinChunk chunk;
                                   chunk.objectNames = {"body"};
                                   chunk.boneNames = {"Hip", "Knee"};
                                   chunk.vertexInfluenceStarts = {0, 1, 3};
                                   chunk.vertexBoneCounts = {1, 2, 1};
                                   chunk.influenceBones = {0, 0, 1, 1};
                                   chunk.influenceWeights = {1, 0.25F, 0.75F, 1};
                                   chunk.primitiveVertexCounts = {2, 1};
                                   chunk.primitiveFirstVertices = {0, 2};
                                   S_MemoryFileWriter newest;
                                   newest << chunk;
                                   seeds.add("newest", newest.getBytes());
                                   S_MemoryFileWriter empty;
                                   empty << TW2::SkinChunk();
                                   seeds.add("empty", empty.getBytes());
                                   S_MemoryFileWriter oldest;
                                   writeVersion0(oldest);
                                   seeds.add("oldest", oldest.getBytes());
                               });
}  // namespace
