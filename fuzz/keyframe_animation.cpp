#include "fuzz/records.h"
#include "tests/support/double_matrix.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

bool hasNaN(const Matrix& matrix)
{
    return std::any_of(matrix.data(), matrix.data() + 12, [](float value) { return std::isnan(value); });
}

void evaluate(const TW2::KeyframeAnimationChunk& chunk)
{
    bool finiteKeys = true;
    for (const TW2::MatrixKey& key : chunk.keys)
    {
        finiteKeys = finiteKeys && support::isFinite(key.matrix);
    }
    const TW2::TW_KeyframeAnimation animation(chunk, true);
    const float end = static_cast<float>(animation.getTotalFrameCount());
    const float infinity = std::numeric_limits<float>::infinity();
    const float frames[] = {0.0F,     0.5F,  end - 0.5F, end,      2.5F * end,   -1.25F,
                            32767.0F, 1e30F, -infinity,  infinity, std::nanf("")};
    int hint = 0;
    for (const float frame : frames)
    {
        Matrix matrix;
        hint = animation.animateFrameWithLastFrame(matrix, frame, hint);
        Matrix again;
        animation.animateFrameWithLastFrame(again, frame, -hint * 7919);
        fuzz::require(!finiteKeys || !hasNaN(matrix));
        static_cast<void>(animation.getVisibilityFrame(frame));
    }
}
}  // namespace

// Any bytes as a keyframe animation file, built and evaluated as TW_KeyframeAnimation does with a file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const long long live = S_Memory::getLiveCount();
    try
    {
        S_MemoryFile file;
        file.constructFromMemory("fuzz", data, size);
        S_MemoryFile::Chunk chunk;
        for (file.peekChunk(chunk); chunk.isValid(); file.peekChunk(chunk))
        {
            TW2::KeyframeAnimationChunk record;
            file >> record;
            evaluate(record);
            file.skipChunk();
        }
    }
    catch (const S_MemoryFileException&)
    {
        // The expected end of damaged input.
    }
    fuzz::require(S_Memory::getLiveCount() == live);
    return 0;
}
