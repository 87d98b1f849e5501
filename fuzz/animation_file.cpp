#include "fuzz/input_file.h"

#include <tw2/core/static_data.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/loader.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace
{
using namespace TW2;

/// Takes every kind of chunk. What a reader accepts can be written, and the reader accepts that too.
class Listener : public TW_CameraCallback,
                 public TW_LightCallback,
                 public TW_HelperCallback,
                 public TW_EnvironmentCallback,
                 public TW_MeshCallback,
                 public TW_MaterialListCallback,
                 public TW_KeyframeAnimationCallback,
                 public TW_UnknownChunkCallback
{
public:
    void operator()(const M_Matrix4x3Template<float>&, float, float, float) override {}
    void operator()(const SpotLightAnimationChunk& animation) override { writeAndRead(animation); }
    void operator()(const DirectionalLightAnimationChunk& animation) override { writeAndRead(animation); }
    void operator()(const PointLightAnimationChunk& animation) override { writeAndRead(animation); }
    void operator()(const SpotLightChunk& light) override { writeAndRead(light); }
    void operator()(const DirectionalLightChunk& light) override { writeAndRead(light); }
    void operator()(const PointLightChunk& light) override { writeAndRead(light); }
    void operator()(const HelperChunk& helper) override { writeAndRead(helper); }
    void operator()(const EnvironmentChunk& environment) override { writeAndRead(environment); }
    void operator()(MeshChunk&) override {}  // fuzz_mesh looks into these
    P_TriangleMesh* createTriangleMesh(P_VirtualObject*, int, int, int, int, const S_Vector<int>&) override
    {
        std::abort();
    }
    void operator()(MaterialListChunk& materials) override { writeAndRead(materials); }
    void operator()(KeyframeAnimationChunk& animation) override { writeAndRead(animation); }
    void operator()(S_MemoryFile& file) override
    {
        S_MemoryFile::Chunk chunk;
        file.peekChunk(chunk);
        if (chunk.getID() == CHUNK_SKIN)
        {
            SkinChunk skin;
            file >> skin;
        }
        else if (chunk.getID() == CHUNK_NODE)
        {
            NodeChunk node;
            file >> node;
            writeAndRead(node);
        }
    }

private:
    template <typename R>
    static void writeAndRead(const R& record)
    {
        const auto write = [](const R& r)
        {
            S_MemoryFileWriter writer;
            writer << r;
            return writer;
        };
        const S_MemoryFileWriter first = write(record);
        S_MemoryFile file;
        file.constructFromMemory("written", first.getBytes().data(), first.getBytes().size());
        R again;
        file >> again;
        // Bytes, not records: what is not a number differs from itself.
        if (write(again).getBytes() != first.getBytes())
        {
            std::abort();
        }
    }
};
}  // namespace

// Any bytes as an animation file with a callback for every kind: refused with an exception or walked to its end, and
// callbacks and memory are afterwards as before.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::InputFile s_file;
    static Listener s_listener;
    s_file.write(data, size);
    TW_Loader::setCameraCallback(&s_listener);
    TW_Loader::setLightCallback(&s_listener);
    TW_Loader::setHelperCallback(&s_listener);
    TW_Loader::setEnvironmentCallback(&s_listener);
    TW_Loader::setMeshCallback(&s_listener);
    TW_Loader::setMaterialListCallback(&s_listener);
    TW_Loader::setKeyframeAnimationCallback(&s_listener);
    TW_Loader::setUnknownChunkCallback(&s_listener);
    try
    {
        TW_Loader::load(s_file.getName(), true);
    }
    catch (const S_Exception&)
    {
    }
    catch (const std::length_error&)  // a negative count
    {
    }
    TW_Loader::freeCachedFile();
    if (TW_Loader::getMeshCallback() != &s_listener)
    {
        std::abort();
    }
    return 0;
}
