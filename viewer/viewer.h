#pragma once

#include "render/bounds.h"
#include "render/view.h"
#include "viewer/crowd.h"
#include "viewer/extent.h"
#include "viewer/loaded_object.h"
#include "viewer/mixer_playback.h"
#include "viewer/orbit_camera.h"
#include "viewer/planting.h"
#include "viewer/playback.h"
#include "viewer/reaching.h"
#include "viewer/scene_lights.h"
#include "viewer/scene_view.h"
#include "viewer/show.h"
#include "viewer/slope.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TW2::render
{
class SceneRenderer;
class StudioLights;
}  // namespace TW2::render

namespace TW2::viewer
{
/// Everything that a window or a page shows and does, without either: what is loaded, the camera, what is playing and
/// how it is blended, what is shown, a crowd, the picked bone.
///
///     Viewer viewer;
///     viewer.open("character.script");
///     while (running)
///     {
///         viewer.update(secondsSinceLastPicture);
///         viewer.draw(renderer, width, height);  // into the bound target
///     }
///
/// A face changes the parts directly or by text commands (`execute` in commands.h), which scripts, tests and the page
/// use too. One thread. Only `draw` needs an OpenGL context.
class Viewer
{
public:
    /// A name at a place of the picture.
    struct Label
    {
        float m_fX = 0.0F;  ///< pixels from the left
        float m_fY = 0.0F;  ///< pixels from the top
        int m_iBone = 0;
    };
    /// What the last pictures cost, in milliseconds.
    struct Timing
    {
        double m_dUpdate = 0.0;   ///< posing everybody and the scene's frame
        double m_dDraw = 0.0;     ///< drawing, as far as this program waits for it
        double m_dPicture = 0.0;  ///< from one picture to the next, whatever took the time
    };

    Viewer();
    ~Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    /// @name What is loaded
    /// A failure throws and leaves everything as it was: the old object goes on playing.
    /// @{

    /// Loads a script and looks at the object; `choice`: one of `LoadedObject::getChoices`, empty for the best one.
    void open(const std::string& scriptFile, const std::string& choice = {});
    /// Loads the present script again, from the disk, and keeps camera, clip, time, what is shown and what the
    /// mixer does, as far as the new object has the bones and animations for it, the ground and feet on it; a bone that
    /// reaches lets go.
    void reload();
    /// Null while nothing is loaded.
    [[nodiscard]] LoadedObject* getObject() noexcept { return m_pObject.get(); }
    [[nodiscard]] const LoadedObject* getObject() const noexcept { return m_pObject.get(); }
    /// How often something was loaded: with the next number everything may have changed.
    [[nodiscard]] unsigned int getLoadCount() const noexcept { return m_uiLoads; }
    /// Where the object stands, once it is loaded: mixers let it travel.
    [[nodiscard]] const M_Matrix4x3Template<float>& getPlace() const { return m_pObject->getObject().getMatrix(); }
    /// @}

    /// @name Parts
    /// @{
    [[nodiscard]] Playback& getPlayback() noexcept { return m_playback; }
    [[nodiscard]] const Playback& getPlayback() const noexcept { return m_playback; }
    [[nodiscard]] OrbitCamera& getCamera() noexcept { return m_orbit; }
    [[nodiscard]] const OrbitCamera& getCamera() const noexcept { return m_orbit; }
    [[nodiscard]] Show& getShow() noexcept { return m_show; }
    [[nodiscard]] const Show& getShow() const noexcept { return m_show; }
    [[nodiscard]] const SceneLights& getFileLights() const noexcept { return m_fileLights; }
    [[nodiscard]] const Crowd& getCrowd() const noexcept { return m_crowd; }
    [[nodiscard]] MixerPlayback& getMixer() noexcept { return m_mixer; }
    [[nodiscard]] const MixerPlayback& getMixer() const noexcept { return m_mixer; }
    [[nodiscard]] Reaching& getReaching() noexcept { return m_reaching; }
    [[nodiscard]] const Reaching& getReaching() const noexcept { return m_reaching; }
    [[nodiscard]] Planting& getPlanting() noexcept { return m_planting; }
    [[nodiscard]] const Planting& getPlanting() const noexcept { return m_planting; }
    /// @}

    /// @name Playing, by the playback alone or by the mixer
    /// @{

    /// Plays one animation; the mixer fades into it.
    void playClip(int animation);
    /// Both as the playback does it.
    void seek(double seconds);
    void step(int frames);
    /// Lets the mixer play, from what plays now, or the playback again. A blend, a frozen pose and what a group of
    /// bones plays are given up; the object goes back to where it began.
    void setMixing(bool on);
    /// @}

    /// @name Doing
    /// @{

    /// Moves what a bone reaches for, in heights of the picture there; what looks at the eye looks at a point before it
    /// from then on. Throws Failure when nothing reaches.
    void moveTarget(float right, float up);

    /// Tilts the ground, and puts everybody onto it. Throws Failure when it would be too steep.
    void setSlope(const Slope& slope);
    [[nodiscard]] const Slope& getSlope() const noexcept { return m_slope; }
    /// Plants the feet of these legs from now on: see Planting::start.
    void plant(const std::vector<Planting::Leg>& legs);

    /// Lets the next picture show the whole object, and its crowd, from the present direction.
    void frameNext() noexcept { m_bFrameWanted = true; }
    /// The same at once, if it was asked for and has not happened yet.
    void settleFrame();
    /// `copies` besides the object itself, 0 to 10,000.
    void setCrowd(std::size_t copies);
    /// Picks the bone at a place from -1 (left, bottom) to 1 (right, top).
    void pick(float x, float y);
    /// A mesh index; -1 for none.
    void setPickedBone(int bone) noexcept { m_iPickedBone = bone; }
    [[nodiscard]] int getPickedBone() const noexcept { return m_iPickedBone; }
    /// Whether an animated texture set runs with the clock.
    void setTextureAnimation(const std::string& set, bool on);
    [[nodiscard]] bool isTextureAnimationOn(const std::string& set) const;
    void setCrossMode(InterpolationMode mode);
    [[nodiscard]] InterpolationMode getCrossMode() const;
    void freeze();
    /// -1: by distance.
    void setLevel(int level);
    [[nodiscard]] int getLevel() const noexcept { return m_iLevel; }
    /// @}

    /// @name Every picture
    /// @{

    /// Lets `seconds` of real time pass, poses everybody and runs the scene's frame.
    void update(double seconds);
    /// Draws into the bound target of width x height pixels.
    void draw(render::SceneRenderer& renderer, unsigned int width, unsigned int height);
    /// Where the bones' names belong in the picture drawn last; only bones before the camera.
    [[nodiscard]] std::vector<Label> getLabels(unsigned int width, unsigned int height) const;
    [[nodiscard]] const Timing& getTiming() const noexcept { return m_timing; }
    /// @}

private:
    void start(std::unique_ptr<LoadedObject> object);
    void clear() noexcept;
    void plantAgain(const std::vector<Planting::Leg>& legs);
    void pose(double seconds);
    void standOnGround();
    void frame(float aspect);
    void prepare(float aspect);
    [[nodiscard]] Shown getShown() const;
    [[nodiscard]] render::View makeView() const;
    void collectPoints(std::vector<M_Vector3Template<float>>& points);

    P_Context m_context;
    P_Scene m_scene;
    P_Camera m_camera;
    OrbitCamera m_orbit;
    Show m_show;
    std::unique_ptr<LoadedObject> m_pObject;
    Playback m_playback;
    MixerPlayback m_mixer;
    Reaching m_reaching;
    Planting m_planting;
    Slope m_slope;
    Crowd m_crowd;
    SceneLights m_fileLights;
    std::unique_ptr<render::StudioLights> m_pStudioLights;
    Extent m_extent;
    std::vector<std::string> m_vecTextureSets;  ///< those that run
    unsigned int m_uiLoads = 0;
    int m_iPickedBone = -1;
    int m_iLevel = -1;
    bool m_bFrameWanted = false;
    float m_fAspect = 4.0F / 3.0F;  ///< of the picture drawn last
    OrbitCamera m_framedOrbit;      ///< as the last framing left it
    OrbitCamera m_preparedOrbit;    ///< what the scene's last frame was run for
    double m_dFrameSeconds = 0.0;   ///< what the scene's last frame took
    Timing m_timing;
    std::optional<std::chrono::steady_clock::time_point> m_lastUpdate;
};
}  // namespace TW2::viewer
