#pragma once

#include "render/picture_target.h"
#include "render/scene_renderer.h"
#include "render/studio.h"
#include "tools/commands.h"
#include "tools/render_motion.h"
#include "viewer/animated_script.h"
#include "viewer/extent.h"
#include "viewer/scene_lights.h"
#include "viewer/show.h"

#include <platform/image/image.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <optional>
#include <string>
#include <vector>

namespace tools
{
/// How an object is shown, as the arguments say it.
struct StageArguments
{
    Size size;                  ///< of the picture
    std::vector<float> eye;     ///< three floats, or none
    std::vector<float> target;  ///< three floats, or none
    std::string camera;         ///< one of the files' own; empty: none
    TW2::render::Viewpoint viewpoint;
    bool turntable = false;   ///< the camera goes around once in the time range
    TW2::viewer::Show show;   ///< what is shown, and how
    bool fileLights = false;  ///< lights that the files bring
    std::string bone;         ///< picked: highlighted, or its weights shown; empty: none
};

/// A scene with one animated object, its lights and its camera, and what draws it. Needs a current context.
class Stage
{
public:
    /// `script` is in the scene as long as the stage lives. Throws Failure when there is nothing to see, or no such
    /// camera.
    Stage(const StageArguments& arguments, const std::string& scriptFile, TW2::viewer::AnimatedScript& script,
          const Motion& motion);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// The picture at a time in seconds.
    [[nodiscard]] G_Image draw(double time);

private:
    void pose(double time);
    /// Looks at the whole motion, or from where the arguments say.
    void frame(const std::string& scriptFile);
    void collect();
    void lookFrom(const std::vector<float>& eye, const std::vector<float>& target, float aspect);
    void lookThrough(const std::string& scriptFile, float aspect);
    void placeLights();
    void loadFileLights(const std::string& scriptFile);
    /// Takes the camera around the middle of what is seen.
    void turn(double progress);

    const StageArguments& m_arguments;
    TW2::viewer::AnimatedScript& m_script;
    const Motion& m_motion;
    std::vector<M_Vector3Template<float>> m_vecVertices;
    std::vector<M_Vector3Template<float>> m_vecPoints;
    P_Context m_context;
    P_Scene m_scene;
    P_Camera m_camera;
    M_Matrix4x3Template<float> m_cameraStart;
    TW2::viewer::Extent m_extent;
    TW2::render::Bounds m_bounds;
    int m_iPickedBone = -1;
    TW2::viewer::SceneLights m_fileLights;
    std::optional<TW2::render::StudioLights> m_lights;
    TW2::render::SceneRenderer m_renderer;
    TW2::render::PictureTarget m_target;
};
}  // namespace tools
