#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/linearly_optimized_container.h>

#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

class P_Light;

namespace TW2
{
/// What the animations of all kinds of light have in common: whose they are, their frame rate, and the tracks of colour
/// and brightness. Hosts use the class of a kind.
///
/// Copies share the tracks; the last copy deletes them. A track without keys changes nothing: the light keeps its own
/// value, and brightness counts as 1. Evaluating is for one thread at a time, for all copies together.
class TW2_API TW_LightAnimation : public S_Allocated
{
public:
    /// Drops the tracks; the object is as default-constructed.
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }

    /// @name Target
    /// @{
    [[nodiscard]] const S_String& getAnimationTargetName() const noexcept { return m_strAnimationTargetName; }
    void setAnimationTargetName(const S_String& name) { m_strAnimationTargetName = name; }
    /// Frames per second; each copy has its own.
    [[nodiscard]] int getFrameRate() const noexcept { return m_iFrameRate; }
    void setFrameRate(int frameRate) noexcept { m_iFrameRate = frameRate; }
    /// @}

    /// @name Tracks
    /// They belong to the animation and its copies; null while it is not constructed.
    /// @{

    /// Components 0 to 255.
    [[nodiscard]] LinearlyOptimizedContainer<G_FColor>* getColorContainer() const noexcept;
    /// Factor of the colour.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getBrightnessContainer() const noexcept
    {
        return getTrack(TRACK_BRIGHTNESS);
    }
    /// @}

protected:
    /// Tracks of numbers, as far as a kind of light has them.
    enum Track : unsigned int
    {
        TRACK_BRIGHTNESS,
        TRACK_FALL_OFF,
        TRACK_HOT_SPOT,
        TRACK_FALL_OFF_ANGLE,
        TRACK_HOT_SPOT_ANGLE,
        TRACK_COUNT
    };

    TW_LightAnimation() noexcept { initializeMembers(); }
    TW_LightAnimation(const TW_LightAnimation& other);
    TW_LightAnimation& operator=(const TW_LightAnimation& other);
    ~TW_LightAnimation() { destruct(); }

    /// Builds the tracks of a record of any kind; one that it lacks has no keys.
    template <typename Record>
    void constructFromRecord(const Record& record);
    /// Shares the tracks of `other`; copying an object onto itself does nothing.
    void constructFromCopy(const TW_LightAnimation& other);

    [[nodiscard]] LinearlyOptimizedContainer<float>* getTrack(Track track) const noexcept;
    [[nodiscard]] float toFrame(float time) const noexcept { return static_cast<float>(m_iFrameRate) * time; }
    /// Gives the light colour x brightness at `frame`; nothing happens without colour keys.
    void applyColor(P_Light& light, float frame) const;
    /// The value of a track at `frame`; false when it has no keys.
    bool evaluate(Track track, float& value, float frame) const;
    void dumpAs(const char* kind) const;

private:
    struct Tracks;

    void initializeMembers() noexcept;
    int increaseReferenceCount() const noexcept;
    int decreaseReferenceCount() const noexcept;

    bool m_bConstructed;
    S_String m_strAnimationTargetName;
    int m_iFrameRate;
    Tracks* m_pTracks;  // shared
    /// Where the next lookup in each track begins.
    mutable int m_iColorFrame;
    mutable int m_aiFrames[TRACK_COUNT];
};
}  // namespace TW2
