#pragma once

#include <tw2/motion/rotation.h>

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace TW2
{
class TW_AnimationMixer;
}

namespace TW2::viewer
{
class LoadedObject;

/// What a game does with an animated object, to be looked at: animations that fade into each other, layers for a part
/// of the bones, events as they pass, the object's travel. Off until `start`.
class MixerPlayback
{
public:
    /// What plays above layer 0.
    struct Layer
    {
        bool m_bAdditive = false;      ///< adds to what is below, instead of taking its place
        int m_iBone = -1;              ///< for this bone (mesh index) and what is below it; -1: for all
        unsigned int m_uiFalloff = 0;  ///< bones over which its weight rises, from that one on
        float m_fWeight = 1.0F;        ///< 0 to 1
    };
    /// Something that plays or fades out.
    struct Part
    {
        int m_iAnimation = 0;
        int m_iLayer = 0;
        float m_fWeight = 0.0F;  ///< share of the pose, 0 to 1
        float m_fFrame = 0.0F;
    };
    struct PassedEvent
    {
        std::string m_strName;
        std::string m_strAnimation;
        double m_dSeconds = 0.0;  ///< since the mixer was started
    };

    /// All that it does, without the object that it does it with.
    struct Kept;

    MixerPlayback();
    ~MixerPlayback();
    MixerPlayback(const MixerPlayback&) = delete;
    MixerPlayback& operator=(const MixerPlayback&) = delete;

    /// @name Life
    /// @{

    /// Begins with one animation (an index) at a time in seconds. `object` must stay until `stop`.
    void start(LoadedObject& object, int animation, double seconds);
    void stop() noexcept;
    [[nodiscard]] bool isOn() const noexcept { return m_pMixer != nullptr; }
    /// Ends, and returns what there was for `resume`; empty while it is off.
    [[nodiscard]] std::shared_ptr<const Kept> interrupt();
    /// Goes on with an object that has taken the place of the one before. When that has other bones or animations than
    /// what is kept refers to, it begins anew with one animation, as `start` does, at the same place.
    void resume(LoadedObject& object, const Kept& kept, int animation, double seconds);
    /// @}

    /// @name Playing
    /// All but `setFade` and `setInStep` throw Failure while it is off, and for a layer that there is not.
    /// @{

    /// Fades into an animation from whatever plays in a layer; layer 0 is below all.
    void play(int animation, int layer = 0);
    /// Fades out what plays in a layer from 1 on.
    void fadeOut(int layer);
    /// Adds a layer on top; it plays nothing yet.
    void addLayer(const Layer& layer);
    void setLayerWeight(int layer, float weight);
    /// Takes all layers away but layer 0, which plays on.
    void clearLayers();
    [[nodiscard]] const std::vector<Layer>& getLayers() const noexcept { return m_vecLayers; }
    /// Seconds that fades take, 0 to 10.
    void setFade(float seconds);
    [[nodiscard]] float getFade() const noexcept { return m_fFade; }
    /// Whether what is played in layer 0 from now on keeps its steps together with what it fades from.
    void setInStep(bool inStep) noexcept { m_bInStep = inStep; }
    [[nodiscard]] bool isInStep() const noexcept { return m_bInStep; }
    /// @}

    /// @name Clock
    /// @{

    /// Lets seconds of the animations pass, negative ones backwards, and poses the object.
    void update(double seconds);
    /// Takes what plays in layer 0 to a time in seconds.
    void seek(double seconds);
    /// Of what layer 0 fades to: seconds within its loop.
    [[nodiscard]] double getTime() const;
    /// @}

    /// @name What happens
    /// @{
    [[nodiscard]] std::vector<Part> getParts() const;
    /// The last ones, the newest first.
    [[nodiscard]] const std::deque<PassedEvent>& getEvents() const noexcept { return m_events; }
    /// Whether the object goes where its animations carry it.
    void setTravelling(bool travelling) noexcept { m_bTravelling = travelling; }
    [[nodiscard]] bool isTravelling() const noexcept { return m_bTravelling; }
    /// Back to where it began.
    void goHome();
    [[nodiscard]] const TW_Travel& getPlace() const noexcept { return m_place; }
    /// @}

private:
    struct Play
    {
        unsigned int m_uiId;
        int m_iAnimation;
        int m_iLayer;
        int m_iStep;  ///< what has the same number keeps its steps together; 0: nothing does
    };
    [[nodiscard]] TW_AnimationMixer& needMixer() const;
    void checkLayer(int layer, int first) const;
    void build(int animation, double seconds);
    [[nodiscard]] const Play* findMain() const noexcept;
    [[nodiscard]] int chooseStep() const noexcept;
    void takeEvents();

    LoadedObject* m_pObject = nullptr;
    std::unique_ptr<TW_AnimationMixer> m_pMixer;
    std::vector<Layer> m_vecLayers;
    std::vector<Play> m_vecPlays;  ///< in the order of starting
    std::deque<PassedEvent> m_events;
    TW_Travel m_place;
    double m_dSeconds = 0.0;
    float m_fFade = 0.3F;
    bool m_bInStep = false;
    bool m_bBackward = false;
    bool m_bTravelling = true;
};
}  // namespace TW2::viewer
