#pragma once

#include <tw2/core/text.h>
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
/// value, and brightness counts as 1. One thread at a time per object; copies may be evaluated on several threads at
/// once; the last keys that their tracks remember are then those of one of them.
class TW2_API TW_LightAnimation : public S_Allocated
{
public:
    /// Drops the tracks; the object is as default-constructed.
    void destruct() noexcept;
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }

    /// @name Target
    /// @{

    /// Name of the light that it is made for; the library attaches nothing by it.
    [[nodiscard]] const S_String& getAnimationTargetName() const noexcept { return m_strAnimationTargetName; }
    void setAnimationTargetName(const S_String& name) { m_strAnimationTargetName = name; }
    /// The same with a string of the host's.
    template <TW_ForeignString Name>
    void setAnimationTargetName(const Name& name)
    {
        setAnimationTargetName(asString(name));
    }
    /// Frames per second; each copy has its own.
    [[nodiscard]] int getFrameRate() const noexcept { return m_iFrameRate; }
    void setFrameRate(int frameRate) noexcept { m_iFrameRate = frameRate; }
    /// @}

    /// @name Tracks
    /// They belong to the animation and its copies; null while it is not constructed.
    /// @{

    /// Components 0 to 255.
    [[nodiscard]] LinearlyOptimizedContainer<G_FColor>* getColorContainer() const noexcept { return m_pColor; }
    /// Factor of the colour.
    [[nodiscard]] LinearlyOptimizedContainer<float>* getBrightnessContainer() const noexcept { return m_pBrightness; }
    /// @}

protected:
    TW_LightAnimation() noexcept { initializeMembers(); }
    /// Shares the tracks.
    TW_LightAnimation(const TW_LightAnimation& other) : TW_LightAnimation() { constructFromCopy(other); }
    /// Shares the tracks; assigning an animation to itself changes nothing.
    TW_LightAnimation& operator=(const TW_LightAnimation& other);
    ~TW_LightAnimation() { destruct(); }

    /// Builds the tracks of a record of any kind; those that it lacks stay null.
    template <typename Record>
    void constructFromRecord(const Record& record);
    /// Shares the tracks of `other`; copying an object onto itself does nothing.
    void constructFromCopy(const TW_LightAnimation& other);

    /// Frames from the animation's start at a time in seconds.
    [[nodiscard]] float toFrame(float time) const noexcept { return static_cast<float>(m_iFrameRate) * time; }
    /// Gives the light colour x brightness at `frame`; nothing happens without colour keys.
    void applyColor(P_Light& light, float frame) const;
    /// Hands the value of a track at `frame` to `apply`, unless it has no keys.
    template <typename Apply>
    void applyTrack(const LinearlyOptimizedContainer<float>* track, int& hint, float frame, const Apply& apply) const;
    /// Writes the light's kind, target and frame rate to the verbose log.
    void dumpAs(const char* kind) const;

private:
    void initializeMembers() noexcept;
    int increaseReferenceCount() const noexcept { return ++*m_piReferenceCount; }
    int decreaseReferenceCount() const noexcept { return --*m_piReferenceCount; }

    bool m_bConstructed;
    S_String m_strAnimationTargetName;
    int m_iFrameRate;

protected:
    /// @name Tracks, shared by all copies, each with the key at which this copy's next look-up begins
    /// @{

    /// Components 0 to 255.
    LinearlyOptimizedContainer<G_FColor>* m_pColor;
    /// Key of this copy's last look-up.
    mutable int m_iColorFrame;
    /// Factor of the colour.
    LinearlyOptimizedContainer<float>* m_pBrightness;
    /// Key of this copy's last look-up.
    mutable int m_iBrightnessFrame;
    /// Distance at which the light has faded to nothing, in scene units.
    LinearlyOptimizedContainer<float>* m_pFallOff;
    /// Key of this copy's last look-up.
    mutable int m_iFallOffFrame;
    /// Distance up to which the light is at full strength, in scene units.
    LinearlyOptimizedContainer<float>* m_pHotSpot;
    /// Key of this copy's last look-up.
    mutable int m_iHotSpotFrame;
    /// Angle outside of which there is no light, in degrees.
    LinearlyOptimizedContainer<float>* m_pFallOffAngle;
    /// Key of this copy's last look-up.
    mutable int m_iFallOffAngleFrame;
    /// Angle of full strength, in degrees.
    LinearlyOptimizedContainer<float>* m_pHotSpotAngle;
    /// Key of this copy's last look-up.
    mutable int m_iHotSpotAngleFrame;
    /// @}

private:
    S_OwnCounter* m_piReferenceCount;  // of the copies that share the tracks
};
}  // namespace TW2
