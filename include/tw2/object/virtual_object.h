#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/object/bone_handle.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/base_object.h>

#include <span>
#include <string_view>

class P_VirtualObject;

namespace TW2
{
class TW_BoneGroupHandle;
class TW_KeyframeAnimation;
class TW_ObjectAnimation;
class TW_ObjectAnimationState;
struct TW_AnimationCourse;
struct TW_AnimationEvent;

/// The one interface through which a host drives every animated object, whatever its kind: a hierarchy of meshes
/// (TW_ObjectAnimation), a skinned character (TW_VertexAnimation) or either with levels of detail.
///
/// An animated object is a scene object: `addTo` puts it into the scene, and its meshes hang below it. A host then
/// picks, every frame, an animation index and a time and calls `animateObject`, or blends with `crossAnimateObject`.
///
/// **Indices.** An animation index is the whole number that the script gave the animation, not a position. A mesh
/// index (bone index) is a mesh's position in load order. Operations that are given an animation index that does not
/// exist return false or 0; nothing is thrown. Playing changes nothing then; blending runs its steps up to the one that
/// fails and corrects the matrices by the cross mode.
///
/// **Units.** Times are seconds, frames are floats whose whole numbers are the keys' frames; a time becomes a frame by
/// the animation's frame rate.
///
/// **Groups.** A null group means all meshes; a group restricts the operation to the meshes that it holds and must be
/// attached to this object.
///
/// **Nothing.** An object that is not constructed has no meshes (but those that a host adds), animations and textures:
/// what is asked of these is answered with null, false and 0, moving it changes nothing, and no bone is found. A null
/// name is an empty one; a null state, object or manager changes nothing, and the answer is false. Only building from a
/// null script or object is an error: TW_Exception_InvalidScriptParameter or TW_Exception_InvalidGeometry, and the
/// object is not constructed.
///
/// One thread at a time per object; which objects may be used on several is told in docs/threads.md.
class TW2_API TW_VirtualObject : public P_BaseObject
{
public:
    /// @name Life
    /// When the last animated object goes, the work lists of the conversion of old mesh files go with it; they come
    /// back when they are needed.
    /// @{

    /// Counts the object as alive.
    TW_VirtualObject();
    /// The last one takes the work lists of old mesh files along.
    ~TW_VirtualObject() override;
    TW_VirtualObject(const TW_VirtualObject&) = delete;
    TW_VirtualObject& operator=(const TW_VirtualObject&) = delete;
    /// Number of animated objects alive.
    [[nodiscard]] static int getLiveCount() noexcept { return sm_iLiveCount; }
    /// @}

    /// The context whose current camera `executeAlways` tests the object against.
    [[nodiscard]] P_Context* getContext() const override { return getStoredContext(); }

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
    /// Largest animation index ever added, also by a load that failed; -1 when there was none or all were negative.
    [[nodiscard]] virtual int getMaximumAnimationIndex() const = 0;
    /// Whether an animation of that index was loaded and not deleted.
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
    /// The same with a string of the host's.
    template <TW_String Name>
    [[nodiscard]] TW_BoneHandle getBoneHandle(const Name& name)
    {
        return getBoneHandle(name.c_str());
    }
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
    /// Two animations without a weight: with 0 as the first index it would be taken for a state that is null.
    bool crossAnimateObject(int, float, int, float, TW_BoneGroupHandle*) = delete;
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
    bool crossAnimateObjectFrame(int, float, int, float, TW_BoneGroupHandle*) = delete;
    /// @}

    /// @name Texture animation
    /// Sets of animated textures by name, each with numbered animations.
    /// @{

    /// Whether a texture of the object's materials is animated under that name.
    [[nodiscard]] virtual bool isValidTextureAnimationSet(const S_String& set) const = 0;
    /// Whether that set has so many animated textures; they are numbered from 0.
    [[nodiscard]] virtual bool isValidTextureAnimation(const S_String& set, int index) const = 0;
    /// Number of sets, each of one name.
    [[nodiscard]] virtual unsigned int getTotalTextureAnimationSets() const = 0;
    /// Animated textures of a set; 0 when there is no such set.
    [[nodiscard]] virtual unsigned int getTotalTextureAnimations(const S_String& set) const = 0;
    /// Entries in playing order; 0 when there is no such texture.
    [[nodiscard]] virtual unsigned int getTextureAnimationFrames(const S_String& set, int index) const = 0;
    /// Seconds; infinite at a rate of 0, 0 when there is no such texture.
    [[nodiscard]] virtual float getTextureAnimationLength(const S_String& set, int index) const = 0;
    /// Frames per second; 0 when there is no such texture.
    [[nodiscard]] virtual float getTextureAnimationFPS(const S_String& set, int index) const = 0;
    /// Rounds to whole frames per second; nothing happens when there is no such texture.
    virtual void setTextureAnimationFPS(const S_String& set, int index, float fps) = 0;
    /// Shows the frames of all textures of a set for a time in seconds. False when there is no such set.
    virtual bool animateTexture(const S_String& set, float time) = 0;
    /// The same for a frame, rounded to a whole one.
    virtual bool animateTextureFrame(const S_String& set, float frame) = 0;

    /// The same with other strings and C strings, of which an S_String is made; `animateTextureSet` makes none.
    template <TW_ForeignText Name>
    [[nodiscard]] bool isValidTextureAnimationSet(const Name& set) const
    {
        return isValidTextureAnimationSet(asString(set));
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] bool isValidTextureAnimation(const Name& set, int index) const
    {
        return isValidTextureAnimation(asString(set), index);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] unsigned int getTotalTextureAnimations(const Name& set) const
    {
        return getTotalTextureAnimations(asString(set));
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] unsigned int getTextureAnimationFrames(const Name& set, int index) const
    {
        return getTextureAnimationFrames(asString(set), index);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] float getTextureAnimationLength(const Name& set, int index) const
    {
        return getTextureAnimationLength(asString(set), index);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] float getTextureAnimationFPS(const Name& set, int index) const
    {
        return getTextureAnimationFPS(asString(set), index);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    void setTextureAnimationFPS(const Name& set, int index, float fps)
    {
        setTextureAnimationFPS(asString(set), index, fps);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    bool animateTexture(const Name& set, float time)
    {
        return animateTexture(asString(set), time);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    bool animateTextureFrame(const Name& set, float frame)
    {
        return animateTextureFrame(asString(set), frame);
    }
    /// @}

    /// @name Looping
    /// @{

    /// Frame at which a looping animation goes on after its last one; 0 for an index that does not exist.
    [[nodiscard]] virtual unsigned int getAnimationLoopToFrame(int index) const = 0;
    /// The same in seconds.
    [[nodiscard]] virtual float getAnimationLoopToTime(int index) const = 0;
    /// @}

    /// @name Names, clocks and events of animations
    /// Answers are those of the first object animation that is played: of levels of detail that of level 0.
    /// @{

    /// The object animations that playing moves: this object, a skinned character's skeleton, or the levels of detail.
    /// `i` from 0 on; null where there is none.
    [[nodiscard]] virtual TW_ObjectAnimation* getPlayedObject([[maybe_unused]] unsigned int i) const { return nullptr; }

    /// Index of the animation of that name, whatever the case of its letters; of several it is the smallest. Throws
    /// TW_Exception_AnimationNotFound, with the names that there are, when there is none.
    [[nodiscard]] int findAnimation(const char* name) const;
    /// Whether `findAnimation` would find it.
    [[nodiscard]] bool hasAnimation(const char* name) const { return findAnimationIndex(name) != nullptr; }
    /// The script's `name` of an animation, by default its file's name without folders and the part from the last dot
    /// on; empty for an index that does not exist. Valid until animations are added or deleted.
    [[nodiscard]] const char* getAnimationName(int index) const;
    /// False for an index that does not exist.
    [[nodiscard]] bool isAnimationLooping(int index) const;
    /// Seconds after which a looping animation repeats: 31 frames at 30 per second that end as they begin take 1 s,
    /// though `getAnimationLength` is 1.033 s. Of one that does not loop the seconds to its last frame, after which it
    /// stands still. 0 for an index that does not exist, and when the frame rate is not above 0.
    [[nodiscard]] float getAnimationPeriod(int index) const;
    /// How the animation runs through its frames; nothing but zeros for an index that does not exist.
    [[nodiscard]] TW_AnimationCourse getAnimationCourse(int index) const;
    /// The events of an animation, in the order of their frames; none for an index that does not exist. Valid until
    /// animations are added or deleted.
    [[nodiscard]] std::span<const TW_AnimationEvent> getAnimationEvents(int index) const;
    /// What the script's `rootmotion` file holds: where the object stands at each frame of the animation, seen from
    /// where it stood at frame 0; see TW_RootMotion. Null when there is none. Valid until animations are added or
    /// deleted.
    [[nodiscard]] const TW_KeyframeAnimation* getRootMotionTrack(int index) const;
    /// The same with a string of the host's.
    template <TW_String Name>
    [[nodiscard]] int findAnimation(const Name& name) const
    {
        return findAnimation(name.c_str());
    }
    /// The same with a string of the host's.
    template <TW_String Name>
    [[nodiscard]] bool hasAnimation(const Name& name) const
    {
        return hasAnimation(name.c_str());
    }
    /// @}

    /// @name Sets of animated textures by number and without copies
    /// @{

    /// Name of set 0 to `getTotalTextureAnimationSets()` - 1; empty for any other number. Valid until the object's
    /// materials change. Levels of detail have numbers of their own each: the answer is that of the level that
    /// `getTotalTextureAnimationSets` answers for.
    [[nodiscard]] virtual const char* getTextureAnimationSetName([[maybe_unused]] int set) const { return ""; }
    /// What `animateTexture` and `animateTextureFrame` do, for a name of any kind and length without a copy.
    virtual bool animateTextureSet(std::string_view set, float time) { return animateTexture(S_String(set), time); }
    /// The same at a frame.
    virtual bool animateTextureSetFrame(std::string_view set, float frame);
    /// @}

private:
    [[nodiscard]] const int* findAnimationIndex(const char* name) const noexcept;

    static S_Counter<int> sm_iLiveCount;
};
}  // namespace TW2
