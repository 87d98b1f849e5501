#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/linearly_optimized_container.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

namespace TW2
{
class TrackTable;
struct KeyframeAnimationChunk;
struct TrackUse;

/// Motion of one scene object: a transform track and, optionally, a visibility track.
///
/// Copies share the tracks; the last copy frees them. Frames are floats, keys sit on whole frames; a time in seconds
/// becomes a frame by the animation's frame rate. A track whose keys have no scale is kept as quaternions (28 bytes a
/// key), any other as matrices (48 bytes). An object is either constructed or empty; only a constructed one is
/// evaluated.
///
/// Tracks do not change once they are built, and evaluating with hints of one's own writes nothing but the result: any
/// number of threads may do so at once. The other evaluations write hints of the object; one thread at a time.
class TW2_API TW_KeyframeAnimation : public S_Allocated
{
public:
    /// The tracks that all copies of an animation share.
    struct SharedData : S_Allocated
    {
        LinearlyOptimizedContainer<TW_KeyframeMatrix> m_keyframes;  ///< compact track, in use while m_pMatrices is null
        /// full track or null; owned
        const LinearlyOptimizedContainer<M_Matrix4x3Template<float>>* m_pMatrices = nullptr;
        LinearlyOptimizedContainer<float>* m_pVisibility = nullptr;  ///< visibility track or null; owned
        S_Counter<int> m_iDataReferenceCount{1};                     ///< animations that share these tracks

        SharedData() = default;
        ~SharedData();
        SharedData(const SharedData&) = delete;
        SharedData& operator=(const SharedData&) = delete;
    };

    /// @name Life
    /// @{

    /// An empty animation.
    TW_KeyframeAnimation() { initializeMembers(); }
    /// Builds the tracks of a record; see `construct`.
    TW_KeyframeAnimation(const KeyframeAnimationChunk& chunk, bool withVisibility) : TW_KeyframeAnimation()
    {
        construct(chunk, withVisibility);
    }
    /// Reads a file; see `construct`.
    explicit TW_KeyframeAnimation(const S_String& fileName) : TW_KeyframeAnimation() { construct(fileName); }
    /// The same with a string of the host's.
    template <TW_ForeignString File>
    explicit TW_KeyframeAnimation(const File& fileName) : TW_KeyframeAnimation(asString(fileName))
    {
    }
    /// Shares the tracks; the copy begins with one holder.
    TW_KeyframeAnimation(const TW_KeyframeAnimation& other) : TW_KeyframeAnimation() { construct(other); }
    /// The same; an animation assigned to itself stays as it is.
    TW_KeyframeAnimation& operator=(const TW_KeyframeAnimation& other);
    /// Takes itself out of all track lists; the last of the animations that share tracks deletes them.
    ~TW_KeyframeAnimation();

    /// Empty tracks: a compact transform track and a visibility track without keys. An animation in this state
    /// evaluates to the identity and is visible.
    void construct();
    /// Builds the tracks from a chunk, the visibility track only when asked. An exception leaves the animation empty.
    void construct(const KeyframeAnimationChunk& chunk, bool withVisibility);
    /// Reads a file that holds one keyframe animation and nothing else; there is no visibility track. Throws
    /// TW_Exception_NoAnimation, TW_Exception_InvalidAnimationChunk and what the file operations throw. The animation
    /// then keeps what it had, or has the tracks of the file's first chunk when a later one is wrong.
    void construct(const S_String& fileName);
    /// The same with a string of the host's.
    template <TW_ForeignString File>
    void construct(const File& fileName)
    {
        construct(asString(fileName));
    }
    /// Shares the tracks of `other`. Nothing happens when `other` is this object.
    void construct(const TW_KeyframeAnimation& other);
    /// Gives the tracks up, unless the object has further holders, and leaves an empty animation.
    void destruct() noexcept;
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Evaluation
    /// @{

    /// Writes the transform at `time` (seconds, any value) into `matrix`. Keeps the key found for the next call, so
    /// that playing forward costs a step or two per call.
    void animate(M_Matrix4x3Template<float>& matrix, float time) const { animateFrame(matrix, toFrame(time)); }
    /// The same at a frame.
    void animateFrame(M_Matrix4x3Template<float>& matrix, float frame) const;
    /// The same with a hint that the caller keeps: the value that the previous call returned, 0 at first.
    int animateWithLastFrame(M_Matrix4x3Template<float>& matrix, float time, int lastFrame) const
    {
        return animateFrameWithLastFrame(matrix, toFrame(time), lastFrame);
    }
    /// The same at a frame.
    int animateFrameWithLastFrame(M_Matrix4x3Template<float>& matrix, float frame, int lastFrame) const;

    /// Visibility at `time` (seconds); the object shows while it is above 0. 1 without a visibility track.
    [[nodiscard]] float getVisibility(float time) const { return getVisibilityFrame(toFrame(time)); }
    /// The same at a frame.
    [[nodiscard]] float getVisibilityFrame(float frame) const;
    /// @}

    /// @name Asking and changing
    /// @{

    /// Whether the animation goes on after its end.
    [[nodiscard]] bool isLooping() const noexcept;
    /// Whether a looping animation has one more frame, from its last one to the one at which it continues.
    [[nodiscard]] bool isLoopInterpolating() const noexcept;
    /// Where a looping animation continues after its end; the frame count of one that does not loop.
    [[nodiscard]] unsigned int getLoopToFrame() const noexcept;
    /// It has the frames 0 to this number - 1; 0 for an empty animation.
    [[nodiscard]] unsigned int getTotalFrameCount() const noexcept;
    /// The frames of the transform track's keys, ascending; none without keys.
    [[nodiscard]] S_Vector<int> getKeyFrames() const;
    /// Frames per second.
    [[nodiscard]] int getFrameRate() const noexcept { return m_iFrameRate; }
    void setFrameRate(int framesPerSecond) noexcept { m_iFrameRate = framesPerSecond; }
    /// Name of the scene object that the animation moves.
    [[nodiscard]] const S_String& getAnimationTargetName() const noexcept { return m_strAnimationTargetName; }
    /// Takes any name; that of no object is allowed.
    void setAnimationTargetName(const S_String& name) { m_strAnimationTargetName = name; }
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    void setAnimationTargetName(const Name& name)
    {
        setAnimationTargetName(asString(name));
    }
    /// The visibility track, owned by the animation; null when there is none.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getVisibilityContainer() const noexcept;
    /// Writes target and frame rate to the verbose log.
    void dump() const;
    /// @}

    /// @name Reference counts
    /// The data count is the number of animations that share the tracks; it is 0 for an empty animation. The object
    /// count is the number of holders of this object: whoever lets go either deletes it, when the count is 1, or
    /// decreases it.
    /// @{

    /// All return the count after the call.
    int increaseDataReferenceCount() const noexcept
    {
        return m_pSharedData ? ++m_pSharedData->m_iDataReferenceCount : 0;
    }
    /// The animation that brings the count to 0 deletes the tracks; done by `destruct`, so a host has no use for it.
    int decreaseDataReferenceCount() const noexcept
    {
        return m_pSharedData ? --m_pSharedData->m_iDataReferenceCount : 0;
    }
    /// How many animations share the tracks.
    [[nodiscard]] int getDataReferenceCount() const noexcept;
    /// A new holder of this object.
    int increaseObjectReferenceCount() const noexcept { return ++m_iObjectReferenceCount; }
    /// A holder has let go; it deletes nothing.
    int decreaseObjectReferenceCount() const noexcept { return --m_iObjectReferenceCount; }
    /// 1 for a new object: whoever made it.
    [[nodiscard]] int getObjectReferenceCount() const noexcept { return m_iObjectReferenceCount; }
    /// @}

protected:
    /// The tracks; null for an animation without any.
    [[nodiscard]] const SharedData* getSharedData() const noexcept { return m_pSharedData; }

private:
    friend class TrackTable;
    friend struct TrackAccess;

    void initializeMembers() noexcept;
    [[nodiscard]] float toFrame(float time) const noexcept { return static_cast<float>(m_iFrameRate) * time; }
    /// Tells the track lists that this animation stands in that its tracks are others now.
    void tracksChanged() noexcept;

    bool m_bConstructed;
    S_String m_strAnimationTargetName;
    int m_iFrameRate;
    InterpolationMode m_eInterpolationMode;
    bool m_bKeepScale;
    mutable int m_iLastFrame;
    mutable int m_iLastVisibilityFrame;
    mutable S_Counter<int> m_iObjectReferenceCount;
    SharedData* m_pSharedData;
    TrackUse* m_pUses = nullptr;  ///< the slots of track lists that the animation stands in
};
}  // namespace TW2
