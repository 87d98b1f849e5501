#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/motion/animation_clock.h>
#include <tw2/motion/bone_mask.h>
#include <tw2/motion/root_motion.h>
#include <tw2/motion/rotation.h>
#include <tw2/object/bone_group_handle.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>

namespace TW2
{
class TW_ObjectAnimation;
class TW_VirtualObject;

/// How an animation is played; see TW_AnimationMixer::play.
struct TW_PlayOptions
{
    float fade = 0.0F;        ///< seconds from nothing to its weight, and of what it takes over from to nothing
    float speed = 1.0F;       ///< times as fast; negative: backwards
    float start = 0.0F;       ///< seconds into the animation
    int loops = 0;            ///< rounds after which a looping animation stops; 0: none
    int layer = 0;            ///< 0, or what `addLayer` returned
    int mask = -1;            ///< what `addMask` returned; -1: all bones of the layer
    int sync = 0;             ///< looping animations of one number above 0 keep their phases together
    float fadeOut = -1.0F;    ///< seconds before its end from which it fades out; below 0: it holds its last frame
    float weight = 1.0F;      ///< that it fades to
    bool keepOthers = false;  ///< what plays in the layer goes on, for blends by `setWeight`
};

/// How a layer meets the pose below it; see TW_AnimationMixer::addLayer.
struct TW_LayerOptions
{
    bool additive = false;            ///< adds differences, instead of taking the pose's place
    float weight = 1.0F;              ///< 0 to 1
    int mask = -1;                    ///< what `addMask` returned; -1: all bones
    const char* reference = nullptr;  ///< animation that additive ones are told from; null: each from itself
    float referenceTime = 0.0F;       ///< seconds into that
};

/// An event of something that a mixer plays.
struct TW_MixerEvent
{
    const TW_AnimationEvent* event = nullptr;  ///< name and place of the event; the animation's
    int animation = 0;                         ///< index of the animation
    unsigned int play = 0;                     ///< what `play` returned for it
    float weight = 0.0F;                       ///< that its animation has in the pose, 0 to 1
    double seconds = 0.0;                      ///< from the beginning of the step
};

/// Plays any number of animations of one object at a time: clocks, fades, layers, events and travel.
///
///     TW_AnimationMixer mixer(soldier);
///     mixer.play("walk", {.sync = 1});
///     ... later: mixer.play("run", {.fade = 0.2F, .sync = 1});
///     ... every frame:
///     mixer.update(seconds);
///     place = mixer.getTravel() * place;
///     for (TW_MixerEvent e; mixer.nextEvent(e);) { ... }
///
/// **The pose.** Layer 0 blends what it plays by weight, as `crossAnimateObject` does, with the object's cross mode:
/// with one, two or three animations the bits are those of that operation at the frames of `getFrame` and the weights
/// of `getWeight`. Each further layer, in the order added, takes the place of the pose below it or adds to it, by its
/// weight and mask. While layer 0 plays nothing the object is not touched.
///
/// **Additive layers** add, bone by bone, what an animation differs from its reference by: the turn in the bone's own
/// axes, of which the weight takes a part of the angle; the translation, times the weight; of rows that are scaled the
/// ratio of their lengths, 1 + (ratio - 1) x weight. An animation added to itself changes nothing.
///
/// **Bones without a track** take animation 0 at frame 0, or stay, as everywhere; TW_BoneMask::movedBy keeps a layer to
/// the bones that its animation moves.
///
/// **Memory.** All is reserved by the constructor, `addMask`, `addLayer`; playing allocates nothing. When all places
/// are taken, the lightest of what fades out gives way, else the lightest.
///
/// **Numbers.** A weight that is not a number is 0, an infinite one the largest float; a speed that is not finite is 0.
///
/// **The same steps give the same bits**, also after `saveState` and `restoreState` on another machine.
///
/// It refers to the object, which must outlive it and keep its bones. One object is on one thread at a time.
class TW2_API TW_AnimationMixer : public S_Allocated
{
public:
    /// Identifies something that plays; never used again by the same mixer. 0 is none.
    using PlayId = unsigned int;

    /// @name Life
    /// @{

    /// `places`: how many animations can play or fade out at a time, at least 1.
    explicit TW_AnimationMixer(TW_VirtualObject& object, unsigned int places = 12);
    /// Leaves the object in the pose that it has.
    ~TW_AnimationMixer();
    TW_AnimationMixer(const TW_AnimationMixer&) = delete;
    TW_AnimationMixer& operator=(const TW_AnimationMixer&) = delete;
    /// @}

    /// @name Layers
    /// @{

    /// Copies a mask and returns its number. Throws TW_Exception_BoneMaskMismatch for a mask of another skeleton.
    int addMask(const TW_BoneMask& mask);
    /// Adds a layer on top and returns its number. Throws TW_Exception_AnimationNotFound for the reference,
    /// TW_Exception_InvalidMotion for a mask number that there is not.
    int addLayer(const TW_LayerOptions& options);
    /// Weight of a layer from 1 on, 0 to 1; other numbers change nothing.
    void setLayerWeight(int layer, float weight) noexcept;
    [[nodiscard]] float getLayerWeight(int layer) const noexcept;
    /// @}

    /// @name Playing
    /// @{

    /// Starts an animation from the beginning, even when it plays already. In layer 0 and in layers that replace, what
    /// plays with the same mask fades out meanwhile; weights add up at every moment. Throws
    /// TW_Exception_AnimationNotFound, TW_Exception_InvalidMotion for a layer or mask that there is not.
    PlayId play(const char* name, const TW_PlayOptions& options = {});
    /// The same by index; 0, and nothing changes, for an index that does not exist.
    PlayId play(int index, const TW_PlayOptions& options = {});
    /// Like `play`, but when the animation plays in that layer already it is faded back to its weight, where it is.
    PlayId crossFade(const char* name, const TW_PlayOptions& options);
    /// The same with a string of the host's.
    template <TW_String Name>
    PlayId play(const Name& name, const TW_PlayOptions& options = {})
    {
        return play(name.c_str(), options);
    }
    /// The same with a string of the host's.
    template <TW_String Name>
    PlayId crossFade(const Name& name, const TW_PlayOptions& options)
    {
        return crossFade(name.c_str(), options);
    }
    /// Fades out over so many seconds; nothing happens for something that does not play.
    void stop(PlayId play, float fade = 0.0F) noexcept;
    /// The same for all that plays in a layer.
    void stopLayer(int layer, float fade = 0.0F) noexcept;
    /// Changes a weight, 0 and up, over so many seconds. One of 0 plays on and costs next to nothing; one above 0 takes
    /// back that it is stopped, or fades out for something that was played after it.
    void setWeight(PlayId play, float weight, float fade = 0.0F) noexcept;
    /// 1 is the animation's own speed; negative plays backwards. Nothing happens for something that does not play.
    void setSpeed(PlayId play, float speed) noexcept;
    /// Goes to a time in seconds; without events on the way, and without travel.
    void seek(PlayId play, float seconds) noexcept;

    /// Moves all clocks and fades by `seconds` (not below 0; what is not a number is 0) and takes the pose.
    void update(double seconds);
    /// The next event of the last `update`, in the order of time; false when there is none left. Things may be played
    /// and stopped meanwhile.
    bool nextEvent(TW_MixerEvent& event) noexcept;
    /// How the object travelled in the last `update`, in its own space: the travels of what layer 0 plays for all
    /// bones, by weight. What does not travel counts as standing still.
    [[nodiscard]] const TW_Travel& getTravel() const noexcept { return m_travel; }
    /// @}

    /// @name Asking
    /// @{

    /// The object that the mixer plays.
    [[nodiscard]] TW_VirtualObject& getObject() const noexcept { return *m_pObject; }
    /// Whether it plays or fades out.
    [[nodiscard]] bool isPlaying(PlayId play) const noexcept { return find(play) != nullptr; }
    /// Whether it stands at its end.
    [[nodiscard]] bool isFinished(PlayId play) const noexcept;
    /// Share of the pose that it has, the weight of its layer included: 0 to 1. Those of layer 0 add up to 1.
    [[nodiscard]] float getWeight(PlayId play) const noexcept;
    /// The frame that it stands at.
    [[nodiscard]] float getFrame(PlayId play) const noexcept;
    /// Frame and round that it stands at; zeros for something that does not play.
    [[nodiscard]] TW_ClockMoment getMoment(PlayId play) const noexcept;
    /// The newest of an animation in a layer that is not fading out; 0 when there is none.
    [[nodiscard]] PlayId findPlay(const char* name, int layer = 0) const;
    /// The same with a string of the host's.
    template <TW_String Name>
    [[nodiscard]] PlayId findPlay(const Name& name, int layer = 0) const
    {
        return findPlay(name.c_str(), layer);
    }
    /// How many play or fade out.
    [[nodiscard]] unsigned int getPlayCount() const noexcept;
    /// @}

    /// @name State
    /// Plain bytes, the same on every machine: all that plays, its clocks and fades, the weights of the layers. Not in
    /// it are layers and masks themselves, and what the last `update` found.
    /// @{

    /// Storage that `state` has is used again.
    void saveState(S_Bytes& state) const;
    /// Throws TW_Exception_InvalidMotion, and changes nothing, when the bytes are no state or one of a mixer with more
    /// or fewer layers or masks, or when an animation that played has another name or last frame here.
    void restoreState(const S_Bytes& state);
    /// @}

private:
    struct Play;
    struct Layer;
    class Mask;

    [[nodiscard]] const Play* find(PlayId play) const noexcept;
    [[nodiscard]] Play* find(PlayId play) noexcept;
    [[nodiscard]] std::size_t countBones() const;
    [[nodiscard]] bool hasLayer(int layer) const noexcept;
    void check(const TW_PlayOptions& options) const;
    void checkMask(int mask) const;
    Play& takePlace() noexcept;
    void look(Play& play) const;
    void startInPhase(Play& play) const noexcept;
    void fadeOthers(const Play& play, float fade) noexcept;
    void dropWhatIsOver();
    void fadeAll(double seconds) noexcept;
    void moveClocks(double seconds) noexcept;
    [[nodiscard]] double getRate(const Play& play) const noexcept;
    void fadeOutAtEnds() noexcept;
    void share() noexcept;
    void findTravel();
    void pose();
    void blend(TW_ObjectAnimation& part, const TW_BoneGroupHandle* group, int layer, int mask);
    void poseLayer(TW_ObjectAnimation& part, unsigned int partNumber, int layer);
    void replace(TW_ObjectAnimation& part, unsigned int partNumber, int layer, int mask);
    void add(TW_ObjectAnimation& part, unsigned int partNumber, const Play& play);
    [[nodiscard]] float getReferenceFrame(const Play& play, const Layer& layer) const noexcept;

    TW_VirtualObject* m_pObject;
    S_Vector<Play> m_vecPlays;  // in the order of starting
    S_Vector<Layer> m_vecLayers;
    S_Vector<Mask> m_vecMasks;
    /// Per bone, of the largest part: the pose below a layer, and that of an additive animation.
    S_Vector<M_Matrix4x3Template<float>> m_vecBelow;
    S_Vector<M_Matrix4x3Template<float>> m_vecAdded;
    TW_Travel m_travel;
    PlayId m_uiNextId = 1;
};
}  // namespace TW2
