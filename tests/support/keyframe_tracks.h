#pragma once

#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/memory_file_writer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace support
{
/// A rotation about an axis of any length but 0, by an angle in radians.
inline M_Matrix4x3Template<float> rotation(double x, double y, double z, double angle)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    const double a[3] = {x / length, y / length, z / length};
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double turn[3][3] = {{0, a[2], -a[1]}, {-a[2], 0, a[0]}, {a[1], -a[0], 0}};
    M_Matrix4x3Template<float> result;
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            const double diagonal = row == column ? c : 0.0;
            result.m[row][column] =
                static_cast<float>(diagonal + (1.0 - c) * a[row] * a[column] + s * turn[row][column]);
        }
    }
    return result;
}

/// What a made-up track is like.
struct TrackShape
{
    unsigned int frames = 40;  ///< frames of the animation; at least 2
    unsigned int keys = 10;    ///< at most one per frame; at least 1
    bool looping = false;
    bool loopInterpolation = false;
    unsigned int loopToFrame = 0;
    int interpolationMode = 0;
    bool scaled = false;  ///< keys have basis rows of other lengths than 1, so that the track is held as matrices
    bool keepScale = false;
    unsigned int visibilityKeys = 0;
};

/// A made-up track: keys at frames in ascending order with the first at 0 and the last at the last frame, each turned
/// by at most a quarter from the one before and moved by a few units.
inline TW2::KeyframeAnimationChunk makeTrack(std::mt19937& random, const TrackShape& shape, const char* target = "bone")
{
    const auto uniform = [&random](double low, double high)
    { return std::uniform_real_distribution<double>(low, high)(random); };
    const auto pickFrames = [&](unsigned int count)
    {
        std::vector<unsigned int> all(shape.frames);
        for (unsigned int f = 0; f < shape.frames; ++f)
        {
            all[f] = f;
        }
        if (count > 1)
        {
            std::shuffle(all.begin() + 1, all.end() - 1, random);
            std::swap(all[1], all.back());
        }
        all.resize(std::min(count, shape.frames));
        std::sort(all.begin(), all.end());
        return all;
    };
    TW2::KeyframeAnimationChunk chunk;
    chunk.header.targetName = target;
    chunk.header.frameRate = 30;
    chunk.header.looping = shape.looping;
    chunk.totalFrameCount = shape.frames;
    chunk.loopToFrame = shape.loopToFrame;
    chunk.loopInterpolation = shape.loopInterpolation;
    chunk.interpolationMode = shape.interpolationMode;
    chunk.keepScale = shape.keepScale;
    // One draw to a statement: arguments are evaluated in any order, and tracks should be the same with every compiler.
    const auto draw = [&uniform](double most)
    {
        std::array<double, 4> values;
        for (double& value : values)
        {
            value = uniform(-1.0, 1.0);
        }
        return rotation(values[0], values[1], 1.5 + 0.1 * values[2], most * values[3]);
    };
    M_Matrix4x3Template<float> pose = draw(3.0);
    for (const unsigned int frame : pickFrames(shape.keys))
    {
        std::array<float, 3> position;
        for (std::size_t c = 0; c < 3; ++c)
        {
            position[c] = pose.m[3][c] + static_cast<float>(uniform(-3.0, 3.0));
        }
        pose = pose * draw(1.5);
        pose.setTranslation({position[0], position[1], position[2]});
        TW2::MatrixKey& key = chunk.keys.emplace_back(TW2::MatrixKey{frame, pose});
        for (int r = 0; r < 3 && shape.scaled; ++r)
        {
            key.matrix.setRow(r, key.matrix.getRow(r) * static_cast<float>(uniform(0.5, 2.0)));
        }
    }
    for (const unsigned int frame : pickFrames(shape.visibilityKeys))
    {
        chunk.visibilityKeys.push_back({frame, static_cast<float>(uniform(-1, 1))});
    }
    return chunk;
}

/// Writes a keyframe animation chunk in the layout of an older version (0 to 5; a higher one as 5).
inline void writeTrack(S_MemoryFileWriter& writer, const TW2::KeyframeAnimationChunk& chunk, unsigned int version)
{
    const S_MemoryFileWriter::Chunk open(writer, TW2::CHUNK_KEYFRAME_ANIMATION, version);
    writer << chunk.header << chunk.objectName << chunk.loopInterpolation;
    writer << (version < 5 ? chunk.totalFrameCount - 1 : chunk.totalFrameCount);
    writer.writeCount(chunk.keys.size());
    for (const TW2::MatrixKey& key : chunk.keys)
    {
        writer << key.frame << key.matrix;
    }
    if (version > 0)
    {
        writer.writeCount(chunk.visibilityKeys.size());
        for (const TW2::VisibilityKey& key : chunk.visibilityKeys)
        {
            writer << key.frame << key.visibility;
        }
    }
    if (version > 1)
    {
        writer << chunk.loopToFrame;
    }
    if (version > 2)
    {
        writer << chunk.interpolationMode;
    }
    if (version > 3)
    {
        writer << chunk.keepScale;
    }
}
}  // namespace support
