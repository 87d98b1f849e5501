#include "core/memory_scope.h"
#include "core/unit_init.h"
#include "keyframe/key_search.h"
#include "keyframe/track_access.h"
#include "keyframe/track_evaluation.h"
#include "keyframe/track_value.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/inverse_sqrt.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/rollback.h>
#include <platform/runtime/system.h>

#include <algorithm>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

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

/// How the transform track runs that is in use; without any, like an animation without frames.
TrackLoop findLoop(const TW_KeyframeAnimation::SharedData* data) noexcept
{
    if (!data)
    {
        return {};
    }
    return data->m_pMatrices ? getLoop(*data->m_pMatrices) : getLoop(data->m_keyframes);
}
}  // namespace

TW_KeyframeAnimation::SharedData::~SharedData()
{
    delete m_pVisibility;
    delete m_pMatrices;
}

TW_KeyframeAnimation& TW_KeyframeAnimation::operator=(const TW_KeyframeAnimation& other)
{
    construct(other);
    return *this;
}

TW_KeyframeAnimation::~TW_KeyframeAnimation()
{
    destruct();
    TrackTable::animationDestroyed(m_pUses);
}

void TW_KeyframeAnimation::tracksChanged() noexcept
{
    TrackTable::tracksChanged(m_pUses);
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
    const MemoryScope scope;
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_bConstructed = true;
    m_pSharedData = new SharedData;
    m_pSharedData->m_keyframes.construct(0);
    m_pSharedData->m_pVisibility = new LinearlyOptimizedContainer<float>;
    m_pSharedData->m_pVisibility->construct(0);
    tracksChanged();
    rollback.keep();
}

void TW_KeyframeAnimation::construct(const KeyframeAnimationChunk& chunk, bool withVisibility)
{
    const MemoryScope scope;
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_bConstructed = true;
    m_pSharedData = new SharedData;
    m_strAnimationTargetName = chunk.header.targetName;
    m_iFrameRate = chunk.header.frameRate;
    m_bKeepScale = chunk.keepScale;
    if (chunk.interpolationMode >= static_cast<int>(InterpolationMode::Linear) &&
        chunk.interpolationMode <= static_cast<int>(InterpolationMode::Orthonormalized))
    {
        m_eInterpolationMode = static_cast<InterpolationMode>(chunk.interpolationMode);
    }
    const unsigned int endFrame = chunk.totalFrameCount;
    if (m_bKeepScale || hasScale(chunk))
    {
        auto* const matrices = new LinearlyOptimizedContainer<Matrix>;
        m_pSharedData->m_pMatrices = matrices;
        fillTrack(*matrices, chunk, endFrame, chunk.keys, [](const MatrixKey& key) { return key.matrix; });
    }
    else
    {
        fillTrack(m_pSharedData->m_keyframes, chunk, endFrame, chunk.keys,
                  [](const MatrixKey& key) { return TW_KeyframeMatrix(key.matrix); });
    }
    if (withVisibility)
    {
        m_pSharedData->m_pVisibility = new LinearlyOptimizedContainer<float>;
        fillTrack(*m_pSharedData->m_pVisibility, chunk, endFrame, chunk.visibilityKeys,
                  [](const VisibilityKey& key) { return key.visibility; });
    }
    tracksChanged();
    rollback.keep();
}

void TW_KeyframeAnimation::construct(const S_String& fileName)
{
    const MemoryScope scope;
    // The name may be this animation's own, which the first chunk replaces.
    const S_String name(fileName.data(), fileName.size());
    S_MemoryFile file(name, S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    file.peekChunk(chunk);
    if (!chunk.isValid())
    {
        throw TW_Exception_NoAnimation(name.c_str());
    }
    const bool isAnimation = chunk.getID() == CHUNK_KEYFRAME_ANIMATION;
    if (isAnimation)
    {
        KeyframeAnimationChunk record;
        file >> record;
        construct(record, false);
        file.skipChunk();
        file.peekChunk(chunk);
    }
    if (!isAnimation || chunk.isValid())
    {
        throw TW_Exception_InvalidAnimationChunk(name.c_str());
    }
}

void TW_KeyframeAnimation::construct(const TW_KeyframeAnimation& other)
{
    if (this == &other)
    {
        return;
    }
    const MemoryScope scope;
    destruct();
    if (!other.m_bConstructed)
    {
        return;
    }
    m_strAnimationTargetName = other.m_strAnimationTargetName;
    m_bConstructed = true;
    m_iFrameRate = other.m_iFrameRate;
    m_eInterpolationMode = other.m_eInterpolationMode;
    m_bKeepScale = other.m_bKeepScale;
    m_pSharedData = other.m_pSharedData;
    increaseDataReferenceCount();
    tracksChanged();
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
    tracksChanged();
}

void TW_KeyframeAnimation::animateFrame(Matrix& matrix, float frame) const
{
    m_iLastFrame = animateFrameWithLastFrame(matrix, frame, m_iLastFrame);
}

int TW_KeyframeAnimation::animateFrameWithLastFrame(Matrix& matrix, float frame, int lastFrame) const
{
    const TrackEntry track = TrackAccess::describe(*this);
    const TrackPosition position = locateFrame(track.m_loop, frame);
    const KeyPair keys = findKeys(position, track.m_pFrames, track.m_iKeyCount, lastFrame);
    evaluateTrack(matrix, track, keys, position.m_fFrame);
    return keys.m_iUpper;
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
    return findLoop(m_pSharedData).m_bLooping;
}

bool TW_KeyframeAnimation::isLoopInterpolating() const noexcept
{
    const TrackLoop loop = findLoop(m_pSharedData);
    return loop.m_bLooping && loop.m_bLoopInterpolation;
}

unsigned int TW_KeyframeAnimation::getLoopToFrame() const noexcept
{
    return findLoop(m_pSharedData).m_uLoopToFrame;
}

unsigned int TW_KeyframeAnimation::getTotalFrameCount() const noexcept
{
    return findLoop(m_pSharedData).m_uTotalFrameCount;
}

S_Vector<int> TW_KeyframeAnimation::getKeyFrames() const
{
    if (!m_pSharedData)
    {
        return {};
    }
    const S_Vector<std::int16_t>& frames =
        m_pSharedData->m_pMatrices ? m_pSharedData->m_pMatrices->m_vecFrames : m_pSharedData->m_keyframes.m_vecFrames;
    return {frames.begin(), frames.end()};
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

int TW_KeyframeAnimation::getDataReferenceCount() const noexcept
{
    return m_pSharedData ? m_pSharedData->m_iDataReferenceCount : 0;
}
}  // namespace TW2
