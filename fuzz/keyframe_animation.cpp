#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

bool isFinite(const Matrix& matrix)
{
    for (std::size_t e = 0; e < 12; ++e)
    {
        if (!std::isfinite(matrix.data()[e]))
        {
            return false;
        }
    }
    return true;
}

bool hasNaN(const Matrix& matrix)
{
    for (std::size_t e = 0; e < 12; ++e)
    {
        if (std::isnan(matrix.data()[e]))
        {
            return true;
        }
    }
    return false;
}

void evaluate(const TW2::KeyframeAnimationChunk& chunk)
{
    bool finiteKeys = true;
    for (const TW2::MatrixKey& key : chunk.keys)
    {
        finiteKeys = finiteKeys && isFinite(key.matrix);
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
        if (finiteKeys && hasNaN(matrix))
        {
            std::abort();
        }
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
    if (S_Memory::getLiveCount() != live)
    {
        std::abort();
    }
    return 0;
}
