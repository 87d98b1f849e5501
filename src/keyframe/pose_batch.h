#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/interpolation_mode.h>

#include <cstddef>

namespace TW2
{
/// How a pose M meets the matrix D that is already there. All act on all twelve elements.
enum class PoseWrite
{
    Replace,  ///< D = M
    Scale,    ///< D = M · weight
    Add,      ///< D = M · weight + D
    Blend     ///< D = D + (M − D) · weight
};

/// Most matrices of a batch. Its lists go on with valid entries up to a multiple of poseLanes.
constexpr std::size_t poseBatchSize = 32;
constexpr std::size_t poseLanes = 8;

/// What one step of a batch does with each of its matrices. Entry i of a list belongs to matrix i.
///
/// A pose is what lies between two keys: a + (b − a) · distance / span on all twelve elements, exactly a at distance 0.
/// Keys are rigid (a quaternion w x y z and a translation, which become a matrix first) or full matrices. The rows of
/// the pose are then corrected by the track's mode.
struct PoseStep
{
    enum class Form
    {
        Packed,   ///< all keys are rigid and lie side by side for each poseLanes matrices
        Uniform,  ///< all keys are rigid
        Mixed
    };

    /// Rigid keys of poseLanes matrices: all w, then all x and so on.
    struct Packed
    {
        const float* m_lowerRotations;
        const float* m_upperRotations;
        const float* m_lowerTranslations;
        const float* m_upperTranslations;
        float m_fFraction;
    };
    /// Rigid keys, four floats each; the fourth of a translation means nothing.
    struct Rigid
    {
        float m_distance[poseBatchSize];
        float m_span[poseBatchSize];  ///< never 0
        const float* m_lowerRotation[poseBatchSize];
        const float* m_upperRotation[poseBatchSize];
        const float* m_lowerTranslation[poseBatchSize];
        const float* m_upperTranslation[poseBatchSize];
    };
    /// Where an entry is not full its full keys are read and ignored, and the other way round. Flags are 1 or 0.
    struct Mixed
    {
        const float* m_lower[poseBatchSize];  ///< full keys, twelve floats each
        const float* m_upper[poseBatchSize];
        float m_isFull[poseBatchSize];
        float m_isNormalized[poseBatchSize];
        float m_isOrthonormalized[poseBatchSize];
        float m_isAbsent[poseBatchSize];  ///< the step leaves the matrix as it is
    };

    PoseWrite m_write;
    float m_fWeight;
    Form m_form;
    InterpolationMode m_mode;                    ///< of all tracks of a step that is not mixed
    Packed m_packed[poseBatchSize / poseLanes];  ///< of a packed step
    Rigid m_rigid;                               ///< of other steps
    Mixed m_mixed;                               ///< of a mixed step
};

/// Some matrices and what is done with each: up to three steps one after the other, then a correction of the rows. Each
/// matrix is read at most once and written once.
struct PoseBatch
{
    static constexpr std::size_t maximumSteps = 3;

    std::size_t m_uiCount;  ///< matrices, at least 1
    std::size_t m_uiSteps;
    bool m_bReadsMatrices;  ///< the steps do not determine every matrix alone
    InterpolationMode m_correction;
    float* m_matrices[poseBatchSize];
    PoseStep m_steps[maximumSteps];
};

/// Works on a batch. The bits do not depend on how many matrices are worked on at a time, nor on the processor.
using PoseKernel = void (*)(const PoseBatch& batch) noexcept;

/// How many matrices are worked on at a time.
enum class PoseWidth
{
    One,   ///< plain code
    Four,  ///< with the four-float registers that the compiler's target has
    Eight  ///< with AVX2
};

/// The kernel in use: the widest that the processor has.
[[nodiscard]] PoseKernel getPoseKernel() noexcept;

/// Takes another kernel from now on; false, and nothing changes, where the build or the processor does not have it. For
/// tests and benchmarks only: nothing may play meanwhile.
TW2_API bool setPoseWidth(PoseWidth width) noexcept;
TW2_API PoseWidth getPoseWidth() noexcept;
}  // namespace TW2
