#pragma once

#include "tests/support/double_matrix.h"

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/matrix4x3.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace support
{
/// What a mode makes of the basis rows. Rows of length 0 stay as they are.
inline void applyMode(DoubleMatrix& matrix, TW2::InterpolationMode mode)
{
    for (int r = 0; r < 3 && mode != TW2::InterpolationMode::Linear; ++r)
    {
        DoubleVector row = matrix.getRow(r);
        for (int before = 0; before < r && mode == TW2::InterpolationMode::Orthonormalized; ++before)
        {
            row -= matrix.getRow(before) * row.dot(matrix.getRow(before));  // rows before are of length 1 or 0
        }
        const double length = row.length();
        matrix.setRow(r, length > 0.0 ? row * (1.0 / length) : row);
    }
}

/// How an animation ought to move, in doubles and without any of the library's formulas: keys are found by looking at
/// all of them and blended as the matrices of the file. The keys of unscaled tracks must be rotations.
class TrackOracle
{
public:
    explicit TrackOracle(TW2::KeyframeAnimationChunk chunk) : m_chunk(std::move(chunk)) {}

    [[nodiscard]] DoubleMatrix getTransform(double frame) const
    {
        const Place place = find(m_chunk.keys, frame);
        const DoubleMatrix a = toDouble(m_chunk.keys[place.lower].matrix);
        const DoubleMatrix b = toDouble(m_chunk.keys[place.upper].matrix);
        DoubleMatrix result;
        for (std::size_t e = 0; e < 12; ++e)
        {
            result.data()[e] = a.data()[e] * (1.0 - place.fraction) + b.data()[e] * place.fraction;
        }
        applyMode(result, getMode());
        for (int r = 0; r < 3 && m_chunk.keepScale; ++r)
        {
            const double lengthA = a.getRow(r).length();
            const double lengthB = b.getRow(r).length();
            result.setRow(r, result.getRow(r) * (lengthA + (lengthB - lengthA) * place.scaleFraction));
        }
        return result;
    }

    [[nodiscard]] double getVisibility(double frame) const
    {
        const Place place = find(m_chunk.visibilityKeys, frame);
        const auto a = static_cast<double>(m_chunk.visibilityKeys[place.lower].visibility);
        const auto b = static_cast<double>(m_chunk.visibilityKeys[place.upper].visibility);
        return a * (1.0 - place.fraction) + b * place.fraction;
    }

    [[nodiscard]] TW2::InterpolationMode getMode() const
    {
        return m_chunk.interpolationMode == 1   ? TW2::InterpolationMode::Normalized
               : m_chunk.interpolationMode == 2 ? TW2::InterpolationMode::Orthonormalized
                                                : TW2::InterpolationMode::Linear;
    }

private:
    struct Place
    {
        std::size_t lower;
        std::size_t upper;
        double fraction;
        double scaleFraction;  ///< for row lengths, which are spread over the frame numbers of the two keys
    };

    [[nodiscard]] double wrap(double frame, double end) const
    {
        if (frame >= 0.0 && frame < end)
        {
            return frame;
        }
        // Frames before the track repeat all of it, frames past it only what follows the loop-to frame.
        const double start = frame > end ? static_cast<double>(m_chunk.loopToFrame) : 0.0;
        return frame - (end - start) * std::floor((frame - start) / (end - start));
    }

    template <typename Keys>
    [[nodiscard]] Place find(const Keys& keys, double frame) const
    {
        const std::size_t last = keys.size() - 1;
        const double lastFrame = static_cast<double>(m_chunk.totalFrameCount) - 1.0;
        const bool loopFrame = m_chunk.header.looping && m_chunk.loopInterpolation;
        if (!m_chunk.header.looping && frame >= lastFrame)
        {
            return {last, last, 0.0, 0.0};
        }
        const double wrapped = wrap(frame, loopFrame ? lastFrame + 1.0 : lastFrame);
        const auto at = [&keys](std::size_t k) { return static_cast<double>(keys[k].frame); };
        if (loopFrame && wrapped >= lastFrame)
        {
            std::size_t loopTo = 0;
            while (loopTo < last && keys[loopTo].frame < m_chunk.loopToFrame)
            {
                ++loopTo;
            }
            const double between = loopTo == last ? 0.0 : (wrapped - at(last)) / (at(loopTo) - at(last));
            return {last, loopTo, wrapped - lastFrame, between};
        }
        if (wrapped <= at(0) || wrapped >= at(last))
        {
            const std::size_t key = wrapped <= at(0) ? 0 : last;
            return {key, key, 0.0, 0.0};
        }
        std::size_t upper = 1;
        while (at(upper) <= wrapped)
        {
            ++upper;
        }
        const double fraction = (wrapped - at(upper - 1)) / (at(upper) - at(upper - 1));
        return {upper - 1, upper, fraction, fraction};
    }

    TW2::KeyframeAnimationChunk m_chunk;
};

/// How far `actual` is from `expected`, relative to the larger of 1 and the greatest element of the same block (basis
/// rows or translation).
inline double relativeError(const M_Matrix4x3Template<float>& actual, const DoubleMatrix& expected)
{
    double worst = 0.0;
    for (const auto& [first, end] : {std::pair(0, 9), std::pair(9, 12)})
    {
        double size = 1.0;
        double error = 0.0;
        for (int e = first; e < end; ++e)
        {
            size = std::max(size, std::fabs(expected.data()[e]));
            const double difference = std::fabs(static_cast<double>(actual.data()[e]) - expected.data()[e]);
            error = difference <= error ? error : difference;  // a NaN stays
        }
        worst = error / size <= worst ? worst : error / size;
    }
    return worst;
}
}  // namespace support
