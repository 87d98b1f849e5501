#include "core/unit_init.h"
#include "keyframe/key_search.h"
#include "keyframe/rigid_key.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/inverse_sqrt.h>
#include <platform/math/matrix_rows.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_scope.h>
#include <platform/runtime/system.h>

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

constexpr const char* memoryScopeName = "TW Memory Container";

// Basis rows between these lengths count as unscaled.
constexpr float leastUnitLength = 0.9999F;
constexpr float greatestUnitLength = 1.0001F;

bool hasScale(const Matrix& matrix)
{
    for (int r = 0; r < 3; ++r)
    {
        const float length = M_fastLength(matrix.getRow(r));
        if (length < leastUnitLength || length > greatestUnitLength)
        {
            return true;
        }
    }
    return false;
}

bool hasScale(const KeyframeAnimationChunk& chunk)
{
    return std::any_of(chunk.keys.begin(), chunk.keys.end(), [](const MatrixKey& key) { return hasScale(key.matrix); });
}

// A track holds the low 16 bits of a frame.
std::int16_t toTrackFrame(unsigned int frame)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(frame));
}

// Makes `track` that of `keys`, which have a frame and whatever `getValue` takes out of them.
template <typename T, typename Key, typename GetValue>
void fill(LinearlyOptimizedContainer<T>& track, const KeyframeAnimationChunk& chunk, const S_Vector<Key>& keys,
          GetValue getValue)
{
    track.construct(static_cast<unsigned int>(keys.size()));
    track.m_bLooping = chunk.header.looping;
    track.m_bLoopInterpolation = chunk.loopInterpolation;
    track.m_uTotalFrameCount = chunk.totalFrameCount;
    const bool endsAtFrameCount = !chunk.header.looping && chunk.totalFrameCount != 0;
    track.m_uLoopToFrame = endsAtFrameCount ? chunk.totalFrameCount : chunk.loopToFrame;
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        track.m_vecFrames[i] = toTrackFrame(keys[i].frame);
        track.m_vecValues[i] = getValue(keys[i]);
    }
}

void applyMode(Matrix& matrix, InterpolationMode mode)
{
    if (mode == InterpolationMode::Linear)
    {
        return;
    }
    M_Rows<float> rows{{matrix.getRow(0), matrix.getRow(1), matrix.getRow(2)}};
    if (mode == InterpolationMode::Normalized)
    {
        rows.normalize();
    }
    else
    {
        rows.orthonormalize();
    }
    for (int r = 0; r < 3; ++r)
    {
        matrix.setRow(r, rows.m_rows[r]);
    }
}

// Multiplies each basis row by the length that the keys of the last lookup give it at `frame`. A length that is not
// finite leaves its row alone.
void restoreScale(Matrix& matrix, const LinearlyOptimizedContainer<Matrix>& track, float frame)
{
    const auto a = static_cast<std::size_t>(track.m_fLastLowerKey);
    const auto b = static_cast<std::size_t>(track.m_fLastUpperKey);
    if (std::max(a, b) >= track.m_vecValues.size())
    {
        return;
    }
    const auto frameA = static_cast<float>(track.m_vecFrames[a]);
    const auto frameB = static_cast<float>(track.m_vecFrames[b]);
    const float wrapped = track.wrapFrame(frame);
    for (int r = 0; r < 3; ++r)
    {
        float length = M_fastLength(track.m_vecValues[a].getRow(r));
        if (frameA != frameB)
        {
            const float lengthB = M_fastLength(track.m_vecValues[b].getRow(r));
            length = (lengthB * (wrapped - frameA) + length * (frameB - wrapped)) / (frameB - frameA);
        }
        if (std::isfinite(length))
        {
            matrix.setRow(r, matrix.getRow(r) * length);
        }
    }
}

int evaluateCompact(Matrix& matrix, const LinearlyOptimizedContainer<TW_KeyframeMatrix>& track, InterpolationMode mode,
                    float frame, int hint)
{
    if (track.m_vecFrames.empty())
    {
        matrix = Matrix();
        return 0;
    }
    const KeyPair keys = findKeys(track, locateFrame(getLoop(track), frame), hint);
    const TW_KeyframeMatrix* const lower = &track.m_vecValues[static_cast<std::size_t>(keys.m_iLower)];
    const TW_KeyframeMatrix* const upper = &track.m_vecValues[static_cast<std::size_t>(keys.m_iUpper)];
    // Both keys become matrices at once, side by side.
    const TW_KeyframeMatrix* const pair[LANES] = {lower, upper, lower, upper};
    const RigidKeys rigid = loadKeys(pair);
    const M_FourMatrices matrices = toMatrices(rigid.getRows(), rigid.m_translation);
    const M_Float4 fraction(keys.getFraction());
    for (std::size_t e = 0; e < 12; e += LANES)
    {
        M_Float4 run[LANES];
        matrices.getRun(e, run);
        between(run[0], run[1], fraction).store(matrix.data() + e);
    }
    applyMode(matrix, mode);
    return keys.m_iUpper;
}
}  // namespace

TW_KeyframeAnimation::SharedData::~SharedData()
{
    delete m_pVisibility;
    delete m_pMatrices;
}

TW_KeyframeAnimation::TW_KeyframeAnimation()
{
    initializeMembers();
}

// The others delegate, so that the destructor cleans up when their construction fails.
TW_KeyframeAnimation::TW_KeyframeAnimation(const KeyframeAnimationChunk& chunk, bool withVisibility)
    : TW_KeyframeAnimation()
{
    construct(chunk, withVisibility);
}

TW_KeyframeAnimation::TW_KeyframeAnimation(const S_String& fileName) : TW_KeyframeAnimation()
{
    construct(fileName);
}

TW_KeyframeAnimation::TW_KeyframeAnimation(const TW_KeyframeAnimation& other) : TW_KeyframeAnimation()
{
    construct(other);
}

TW_KeyframeAnimation& TW_KeyframeAnimation::operator=(const TW_KeyframeAnimation& other)
{
    construct(other);
    return *this;
}

TW_KeyframeAnimation::~TW_KeyframeAnimation()
{
    destruct();
}

void TW_KeyframeAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_strAnimationTargetName.clear();
    m_iFrameRate = 0;
    m_eInterpolationMode = InterpolationMode::Linear;
    m_bKeepScale = false;
    m_iLastFrame = 0;
    m_iLastVisibilityFrame = 0;
    m_iObjectReferenceCount = 1;
    m_pSharedData = nullptr;
}

void TW_KeyframeAnimation::construct()
{
    const S_MemoryScope scope(memoryScopeName);
    destruct();
    m_bConstructed = true;
    try
    {
        m_pSharedData = new SharedData;
        m_pSharedData->m_keyframes.construct(0);
        m_pSharedData->m_pVisibility = new LinearlyOptimizedContainer<float>;
        m_pSharedData->m_pVisibility->construct(0);
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

void TW_KeyframeAnimation::construct(const KeyframeAnimationChunk& chunk, bool withVisibility)
{
    const S_MemoryScope scope(memoryScopeName);
    destruct();
    m_bConstructed = true;
    try
    {
        m_pSharedData = new SharedData;
        m_strAnimationTargetName = chunk.header.targetName;
        m_iFrameRate = chunk.header.frameRate;
        m_bKeepScale = chunk.keepScale;
        if (chunk.interpolationMode >= static_cast<int>(InterpolationMode::Linear) &&
            chunk.interpolationMode <= static_cast<int>(InterpolationMode::Orthonormalized))
        {
            m_eInterpolationMode = static_cast<InterpolationMode>(chunk.interpolationMode);
        }
        if (m_bKeepScale || hasScale(chunk))
        {
            m_pSharedData->m_pMatrices = new LinearlyOptimizedContainer<Matrix>;
            fill(*m_pSharedData->m_pMatrices, chunk, chunk.keys, [](const MatrixKey& key) { return key.matrix; });
        }
        else
        {
            fill(m_pSharedData->m_keyframes, chunk, chunk.keys,
                 [](const MatrixKey& key) { return TW_KeyframeMatrix(key.matrix); });
        }
        if (withVisibility)
        {
            m_pSharedData->m_pVisibility = new LinearlyOptimizedContainer<float>;
            fill(*m_pSharedData->m_pVisibility, chunk, chunk.visibilityKeys,
                 [](const VisibilityKey& key) { return key.visibility; });
        }
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

void TW_KeyframeAnimation::construct(const S_String& fileName)
{
    const S_MemoryScope scope(memoryScopeName);
    // The name may be this animation's own, which the first chunk replaces.
    const S_String name(fileName.data(), fileName.size());
    S_MemoryFile file(name, S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    file.peekChunk(chunk);
    if (!chunk.isValid())
    {
        throw TW_Exception_NoAnimation(name.c_str());
    }
    bool hasAnimation = false;
    KeyframeAnimationChunk record;
    do
    {
        if (chunk.getID() != CHUNK_KEYFRAME_ANIMATION || hasAnimation)
        {
            throw TW_Exception_InvalidAnimationChunk(name.c_str());
        }
        file >> record;
        construct(record, false);
        hasAnimation = true;
        file.skipChunk();
        file.peekChunk(chunk);
    } while (chunk.isValid());
}

void TW_KeyframeAnimation::construct(const TW_KeyframeAnimation& other)
{
    if (this == &other)
    {
        return;
    }
    const S_MemoryScope scope(memoryScopeName);
    destruct();
    m_bConstructed = true;
    try
    {
        m_strAnimationTargetName = other.m_strAnimationTargetName;
    }
    catch (...)
    {
        destruct();
        throw;
    }
    m_iFrameRate = other.m_iFrameRate;
    m_eInterpolationMode = other.m_eInterpolationMode;
    m_bKeepScale = other.m_bKeepScale;
    m_pSharedData = other.m_pSharedData;
    increaseDataReferenceCount();
}

void TW_KeyframeAnimation::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    if (m_iObjectReferenceCount == 1 && m_pSharedData && decreaseDataReferenceCount() == 0)
    {
        delete m_pSharedData;
    }
    initializeMembers();
}

void TW_KeyframeAnimation::animate(Matrix& matrix, float time) const
{
    animateFrame(matrix, static_cast<float>(m_iFrameRate) * time);
}

void TW_KeyframeAnimation::animateFrame(Matrix& matrix, float frame) const
{
    m_iLastFrame = animateFrameWithLastFrame(matrix, frame, m_iLastFrame);
}

int TW_KeyframeAnimation::animateWithLastFrame(Matrix& matrix, float time, int lastFrame) const
{
    return animateFrameWithLastFrame(matrix, static_cast<float>(m_iFrameRate) * time, lastFrame);
}

int TW_KeyframeAnimation::animateFrameWithLastFrame(Matrix& matrix, float frame, int lastFrame) const
{
    if (!m_pSharedData)
    {
        matrix = Matrix();
        return 0;
    }
    if (!m_pSharedData->m_pMatrices)
    {
        return evaluateCompact(matrix, m_pSharedData->m_keyframes, m_eInterpolationMode, frame, lastFrame);
    }
    const int key = m_pSharedData->m_pMatrices->getValue(matrix, frame, lastFrame);
    applyMode(matrix, m_eInterpolationMode);
    if (m_bKeepScale)
    {
        restoreScale(matrix, *m_pSharedData->m_pMatrices, frame);
    }
    return key;
}

float TW_KeyframeAnimation::getVisibility(float time) const
{
    return getVisibilityFrame(static_cast<float>(m_iFrameRate) * time);
}

float TW_KeyframeAnimation::getVisibilityFrame(float frame) const
{
    const auto* const track = getVisibilityContainer();
    if (!track || track->m_vecFrames.empty())
    {
        return 1.0F;
    }
    float visibility = 0.0F;
    m_iLastVisibilityFrame = track->getValue(visibility, frame, m_iLastVisibilityFrame);
    return visibility;
}

bool TW_KeyframeAnimation::isLooping() const noexcept
{
    if (!m_pSharedData)
    {
        return false;
    }
    return m_pSharedData->m_pMatrices ? m_pSharedData->m_pMatrices->m_bLooping : m_pSharedData->m_keyframes.m_bLooping;
}

unsigned int TW_KeyframeAnimation::getLoopToFrame() const noexcept
{
    if (!m_pSharedData)
    {
        return 0;
    }
    return m_pSharedData->m_pMatrices ? m_pSharedData->m_pMatrices->m_uLoopToFrame
                                      : m_pSharedData->m_keyframes.m_uLoopToFrame;
}

unsigned int TW_KeyframeAnimation::getTotalFrameCount() const noexcept
{
    if (!m_pSharedData)
    {
        return 0;
    }
    return m_pSharedData->m_pMatrices ? m_pSharedData->m_pMatrices->m_uTotalFrameCount
                                      : m_pSharedData->m_keyframes.m_uTotalFrameCount;
}

LinearlyOptimizedContainer<float>* TW_KeyframeAnimation::getVisibilityContainer() const noexcept
{
    return m_pSharedData ? m_pSharedData->m_pVisibility : nullptr;
}

void TW_KeyframeAnimation::dump() const
{
    Sys.verbose("Keyframe animation for object: \"%s\"\n", m_strAnimationTargetName.c_str());
    Sys.verbose("Frame rate: %i\n", m_iFrameRate);
}

int TW_KeyframeAnimation::increaseDataReferenceCount() const noexcept
{
    return m_pSharedData ? ++m_pSharedData->m_iDataReferenceCount : 0;
}

int TW_KeyframeAnimation::decreaseDataReferenceCount() const noexcept
{
    return m_pSharedData ? --m_pSharedData->m_iDataReferenceCount : 0;
}

int TW_KeyframeAnimation::getDataReferenceCount() const noexcept
{
    return m_pSharedData ? m_pSharedData->m_iDataReferenceCount : 0;
}
}  // namespace TW2
