#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/base_object.h>

class P_VirtualObject;

namespace TW2
{
class TW_BoneGroupHandle;
class TW_BoneHandle;
class TW_ObjectAnimationState;

/// The one interface through which a host drives every animated object, whatever its kind: a hierarchy of meshes
/// (TW_ObjectAnimation), a skinned character (TW_VertexAnimation) or either with levels of detail.
///
/// An animated object is a scene object: `addTo` puts it into the scene, and its meshes hang below it. A host then
/// picks, every frame, an animation index and a time and calls `animateObject`, or blends with `crossAnimateObject`.
///
/// **Indices.** An animation index is the whole number that the script gave the animation, not a position. A mesh
/// index (bone index) is a mesh's position in load order. Operations that are given an animation index that does not
/// exist return false or 0 and change nothing; nothing is thrown.
///
/// **Units.** Times are seconds, frames are floats whose whole numbers are the keys' frames; a time becomes a frame by
/// the animation's frame rate.
///
/// **Groups.** A null group means all meshes; a group restricts the operation to the meshes that it holds and must be
/// attached to this object.
///
/// One thread at a time, for all objects together.
class TW2_API TW_VirtualObject : public P_BaseObject
{
public:
    /// @name Life
    /// When the last animated object goes, the work lists of the conversion of old mesh files go with it; they come
    /// back when they are needed.
    /// @{
    TW_VirtualObject();
    ~TW_VirtualObject() override;
    TW_VirtualObject(const TW_VirtualObject&) = delete;
    TW_VirtualObject& operator=(const TW_VirtualObject&) = delete;
    /// Number of animated objects alive.
    [[nodiscard]] static int getLiveCount() noexcept { return sm_iLiveCount; }
    /// @}

    /// The context whose current camera `executeAlways` tests the object against.
    [[nodiscard]] P_Context* getContext() const override;

    /// Loads the object's textures into texture memory.
    virtual void uploadTextures() = 0;

    /// @name Meshes
    /// @{

    /// Number of meshes (bones).
    [[nodiscard]] virtual unsigned int getTotalMeshes() const = 0;
    /// The mesh at a mesh index; null when there is none.
    [[nodiscard]] virtual P_VirtualObject* getMesh(unsigned int mesh) const = 0;
    /// @}

    /// @name Animations
    /// @{

    /// Number of animation records, deleted ones included.
    [[nodiscard]] virtual unsigned int getTotalAnimations() const = 0;
    /// Largest animation index ever added; -1 when there was none or all were negative.
    [[nodiscard]] virtual int getMaximumAnimationIndex() const = 0;
    [[nodiscard]] virtual bool isValidAnimation(int index) const = 0;
    /// Number of frames; 0 for an index that does not exist.
    [[nodiscard]] virtual unsigned int getAnimationFrames(int index) const = 0;
    /// Length in seconds; 0 when the frame rate is 0.
    [[nodiscard]] virtual float getAnimationLength(int index) const = 0;
    /// Frames per second; 0 for an index that does not exist.
    [[nodiscard]] virtual float getAnimationFPS(int index) const = 0;
    /// Changes the frame rate, rounded to a whole number, also for everyone who shares the animation's tracks.
    virtual void setAnimationFPS(int index, float fps) = 0;
    /// @}

    /// @name Playing
    /// @{

    /// Takes the pose of an animation at a time in seconds. False when there is no such animation.
    virtual bool animateObject(int index, float time, TW_BoneGroupHandle* group) = 0;
    /// The same at a frame, which may lie between two keys.
    virtual bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group) = 0;
    /// Copies the meshes' present local matrices into `state`.
    virtual void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group) = 0;
    /// Writes the frozen matrices of `state` back.
    virtual void restoreAnimationState(TW_ObjectAnimationState* state) = 0;
    /// A handle, not attached, of the first mesh of that name, whatever the case of its letters. Throws
    /// TW_Exception_BoneNotFound when there is none.
    [[nodiscard]] virtual TW_BoneHandle getBoneHandle(const char* name) = 0;
    /// @}

    /// @name Blending
    /// Weighted sums of poses; the object's cross mode then corrects the matrices. With one weight the other pose gets
    /// what is missing to 1. False when an animation does not exist.
    /// @{

    /// A state and two animations, with three weights.
    virtual bool crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1,
                                    float weight1, int index2, float time2, float weight2,
                                    TW_BoneGroupHandle* group) = 0;
    /// Two states, the second moved so that its `reference` bone stands where the first one's does.
    virtual bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                                    const TW_BoneHandle& reference, TW_BoneGroupHandle* group) = 0;
    /// Two states.
    virtual bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                                    TW_BoneGroupHandle* group) = 0;
    /// A state and an animation.
    virtual bool crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                    TW_BoneGroupHandle* group) = 0;
    /// Three animations.
    virtual bool crossAnimateObject(int index1, float time1, float weight1, int index2, float time2, float weight2,
                                    int index3, float time3, TW_BoneGroupHandle* group) = 0;
    /// Two animations.
    virtual bool crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                    TW_BoneGroupHandle* group) = 0;
    /// The same operations at frames.
    virtual bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1, float frame1,
                                         float weight1, int index2, float frame2, float weight2,
                                         TW_BoneGroupHandle* group) = 0;
    virtual bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                         TW_BoneGroupHandle* group) = 0;
    virtual bool crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                         float weight2, int index3, float frame3, TW_BoneGroupHandle* group) = 0;
    virtual bool crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                         TW_BoneGroupHandle* group) = 0;
    /// @}

    /// @name Texture animation
    /// Sets of animated textures by name, each with numbered animations.
    /// @{
    [[nodiscard]] virtual bool isValidTextureAnimationSet(const S_String& set) const = 0;
    [[nodiscard]] virtual bool isValidTextureAnimation(const S_String& set, int index) const = 0;
    [[nodiscard]] virtual unsigned int getTotalTextureAnimationSets() const = 0;
    [[nodiscard]] virtual unsigned int getTotalTextureAnimations(const S_String& set) const = 0;
    [[nodiscard]] virtual unsigned int getTextureAnimationFrames(const S_String& set, int index) const = 0;
    [[nodiscard]] virtual float getTextureAnimationLength(const S_String& set, int index) const = 0;
    [[nodiscard]] virtual float getTextureAnimationFPS(const S_String& set, int index) const = 0;
    virtual void setTextureAnimationFPS(const S_String& set, int index, float fps) = 0;
    virtual bool animateTexture(const S_String& set, float time) = 0;
    virtual bool animateTextureFrame(const S_String& set, float frame) = 0;
    /// @}

    /// @name Looping
    /// @{

    /// Frame at which a looping animation goes on after its last one; 0 for an index that does not exist.
    [[nodiscard]] virtual unsigned int getAnimationLoopToFrame(int index) const = 0;
    /// The same in seconds.
    [[nodiscard]] virtual float getAnimationLoopToTime(int index) const = 0;
    /// @}

private:
    static int sm_iLiveCount;
};
}  // namespace TW2
