#include "fuzz/input_file.h"
#include "fuzz/records.h"
#include "tests/support/every_kind.h"

#include <tw2/core/static_data.h>
#include <tw2/io/chunk_id.h>

#include <platform/runtime/exception.h>

#include <cstdint>
#include <cstdlib>

namespace
{
using namespace TW2;

/// Takes every kind of chunk. What a reader accepts can be written, and the reader accepts that too.
class Listener : public support::EveryCallback
{
public:
    void operator()(const M_Matrix4x3Template<float>&, float, float, float) override {}
    void operator()(const SpotLightAnimationChunk& animation) override { fuzz::requireRoundTrip(animation); }
    void operator()(const DirectionalLightAnimationChunk& animation) override { fuzz::requireRoundTrip(animation); }
    void operator()(const PointLightAnimationChunk& animation) override { fuzz::requireRoundTrip(animation); }
    void operator()(const SpotLightChunk& light) override { fuzz::requireRoundTrip(light); }
    void operator()(const DirectionalLightChunk& light) override { fuzz::requireRoundTrip(light); }
    void operator()(const PointLightChunk& light) override { fuzz::requireRoundTrip(light); }
    void operator()(const HelperChunk& helper) override { fuzz::requireRoundTrip(helper); }
    void operator()(const EnvironmentChunk& environment) override { fuzz::requireRoundTrip(environment); }
    void operator()(MeshChunk&) override {}  // fuzz_mesh looks into these
    P_TriangleMesh* createTriangleMesh(P_VirtualObject*, int, int, int, int, const S_Vector<int>&) override
    {
        std::abort();
    }
    void operator()(MaterialListChunk& materials) override { fuzz::requireRoundTrip(materials); }
    void operator()(KeyframeAnimationChunk& animation) override { fuzz::requireRoundTrip(animation); }
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
            fuzz::requireRoundTrip(node);
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
    s_listener.listen();
    static_cast<void>(fuzz::completes<S_Exception>([] { TW_Loader::load(s_file.getName(), true); }));
    TW_Loader::freeCachedFile();
    fuzz::require(TW_Loader::getMeshCallback() == &s_listener);
    return 0;
}
