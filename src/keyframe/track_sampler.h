#pragma once

#include <tw2/export.h>

#include <platform/math/matrix4x3.h>

#include <cstddef>

namespace TW2
{
class TW_KeyframeAnimation;

/// How a sampled matrix M meets the matrix D that is already there. All act on all twelve elements.
enum class TrackWrite
{
    Replace,  ///< D = M
    Scale,    ///< D = M · weight
    Add,      ///< D = M · weight + D
    Blend     ///< D = D + (M − D) · weight
};

/// The tracks of one animation and the matrices that they move: place i of each list belongs to the same scene object.
struct TrackBatch
{
    const TW_KeyframeAnimation* const* m_ppTracks;  ///< a null leaves its place as it is
    int* m_piHints;                                 ///< key hint of each track, read and written; any value is safe
    M_Matrix4x3Template<float>* m_pMatrices;        ///< on a 16-byte boundary
    std::size_t m_uiCount;                          ///< places, or entries of the list of places
    const unsigned int* m_puiPlaces = nullptr;      ///< the places to sample, each once; null: 0 to m_uiCount - 1
};

/// Samples every track of a batch at one frame (any value) and writes the matrices.
///
/// The bits are those of `animateFrameWithLastFrame` followed by the arithmetic of `write`, track by track. Four tracks
/// are worked on at a time; allocates nothing. Exported for the tests and benchmarks only.
TW2_API void sampleTracks(const TrackBatch& batch, float frame, TrackWrite write = TrackWrite::Replace,
                          float weight = 1.0F) noexcept;
}  // namespace TW2
