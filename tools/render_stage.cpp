#include "tools/render_stage.h"

#include "tools/render_cameras.h"
#include "viewer/scene_view.h"
#include "viewer/visibility.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/file.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tools
{
namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

Matrix turnAround(const Vector& middle, double angle)
{
    Matrix turn;
    const auto cosine = static_cast<float>(std::cos(angle));
    const auto sine = static_cast<float>(std::sin(angle));
    turn.setRow(0, {cosine, 0.0F, -sine});
    turn.setRow(2, {sine, 0.0F, cosine});
    return Matrix::translation(middle * -1.0F) * turn * Matrix::translation(middle);
}
}  // namespace

Stage::Stage(const StageArguments& arguments, const std::string& scriptFile, TW2::viewer::AnimatedScript& script,
             const Motion& motion)
    : m_arguments(arguments),
      m_script(script),
      m_motion(motion),
      m_scene(&m_context),
      m_target(arguments.size.width, arguments.size.height)
{
    m_script.getObject().addTo(&m_scene);
    m_extent = TW2::viewer::Extent(m_script, m_scene, m_context);
    frame(scriptFile);
    m_context.setCurrentCamera(&m_camera);
    placeLights();
    if (arguments.fileLights)
    {
        loadFileLights(scriptFile);
    }
    if (!arguments.bone.empty())
    {
        m_iPickedBone = script.findBone(arguments.bone);
    }
}

Stage::~Stage()
{
    m_script.getObject().remove();
}

G_Image Stage::draw(double time)
{
    if (m_arguments.turntable)
    {
        turn(m_motion.getProgress(time));
    }
    pose(time);
    m_target.bind();
    TW2::viewer::Shown shown = TW2::viewer::makeShown(m_script.getObject(), m_script.getSkeleton(), m_script.getDrawn(),
                                                      m_extent, std::array{m_motion.first, m_motion.second});
    shown.m_iPickedBone = m_iPickedBone;
    m_renderer.draw(m_scene, m_camera, TW2::viewer::makeView(m_arguments.show, shown));
    return m_target.read(m_arguments.show.m_bTransparent);
}

void Stage::pose(double seconds)
{
    const auto time = static_cast<float>(seconds);
    if (m_motion.second >= 0)
    {
        m_script.getObject().crossAnimateObject(m_motion.first, time,
                                                static_cast<float>(1.0 - m_motion.getWeight(seconds)), m_motion.second,
                                                time, nullptr);
    }
    else if (m_motion.first >= 0)
    {
        m_script.getObject().animateObject(m_motion.first, time, nullptr);
    }
    TW2::viewer::followVisibility(m_script.getObject(), m_motion.first, time);
    m_fileLights.animate(time);
    m_scene.executeFrame();
}

void Stage::loadFileLights(const std::string& scriptFile)
{
    std::vector<std::string> files;
    for (const TW2::viewer::ScriptEntry& entry : TW2::viewer::readScript(scriptFile))
    {
        files.push_back(entry.geometryFile);
    }
    const S_DirectoryGuard guard;
    File.changeDirectory(File.getPath(File.getFullPathName(scriptFile)));
    m_fileLights.load(files, m_script.getDrawn(), m_scene);
}

void Stage::frame(const std::string& scriptFile)
{
    constexpr unsigned int samples = 40;
    const Moments moments = Moments::spread(m_motion, samples);
    for (unsigned int i = 0; i < moments.count; ++i)
    {
        pose(moments.get(i));
        collect();
    }
    if (m_bounds.isEmpty() || (!m_extent.hasVertices() && m_bounds.getSize() == 0.0F))
    {
        throw Failure("there is nothing to see: the object has no visible vertices");
    }
    if (m_arguments.turntable)
    {
        // What is to be in the picture from all sides.
        constexpr unsigned int sides = 8;
        const std::size_t count = m_vecPoints.size();
        for (unsigned int side = 1; side < sides; ++side)
        {
            const Matrix turn = turnAround(m_bounds.getCenter(), 2.0 * std::numbers::pi * side / sides);
            for (std::size_t i = 0; i < count; ++i)
            {
                m_vecPoints.push_back(turn.transformPoint(m_vecPoints[i]));
            }
        }
    }
    const float aspect = static_cast<float>(m_arguments.size.width) / static_cast<float>(m_arguments.size.height);
    TW2::render::frameCamera(m_camera, m_vecPoints, m_arguments.viewpoint, aspect);
    if (!m_arguments.camera.empty())
    {
        lookThrough(scriptFile, aspect);
    }
    else if (!m_arguments.eye.empty())
    {
        lookFrom(m_arguments.eye, m_arguments.target, aspect);
    }
    m_cameraStart = m_camera.getObjectToWorldMatrix();
}

void Stage::lookFrom(const std::vector<float>& eye, const std::vector<float>& target, float aspect)
{
    const Vector from{eye[0], eye[1], eye[2]};
    const Vector at = target.empty() ? m_bounds.getCenter() : Vector{target[0], target[1], target[2]};
    m_camera.lookAt(from, at, {0.0F, 1.0F, 0.0F});
    const float distance = (at - from).length() + m_bounds.getSize();
    m_camera.setPerspective(m_arguments.viewpoint.m_fVerticalAngle, aspect, distance * 0.001F, distance * 20.0F);
}

void Stage::lookThrough(const std::string& scriptFile, float aspect)
{
    const SceneCamera camera = findSceneCamera(scriptFile, m_arguments.camera);
    if (!camera.parent.empty())
    {
        P_VirtualObject* parent = m_script.getSkeleton().getMeshByNameCaseSensitive(camera.parent.c_str());
        if (!parent)
        {
            throw Failure("camera \"" + camera.name + "\" hangs under \"" + camera.parent + "\", which is not there");
        }
        m_camera.addTo(parent);
    }
    m_camera.setMatrix(camera.place);
    // Its horizontal angle is kept; the picture's shape decides how much is seen above and below.
    const float half = std::tan(std::clamp(camera.horizontalAngle, 1.0F, 170.0F) * std::numbers::pi_v<float> / 360.0F);
    const float vertical = 2.0F * std::atan(half / aspect) * 180.0F / std::numbers::pi_v<float>;
    const float size = m_bounds.getSize();
    const bool planes = camera.nearDistance > 0.0F && camera.farDistance > camera.nearDistance;
    m_camera.setPerspective(vertical, aspect, planes ? camera.nearDistance : 0.001F * size,
                            planes ? camera.farDistance : 1000.0F * size);
}

void Stage::collect()
{
    constexpr std::size_t enough = 4000;
    m_vecVertices.clear();
    TW2::render::collectVertices(m_script.getObject(), m_vecVertices);
    for (unsigned int i = 0; !m_extent.hasVertices() && i < m_script.getSkeleton().getTotalMeshes(); ++i)
    {
        m_vecVertices.push_back(m_script.getSkeleton().getMesh(i)->getObjectToWorldMatrix().getTranslation());
    }
    if (m_arguments.show.m_bBounds)
    {
        TW2::render::View volumes;
        TW2::viewer::addVolumes(volumes, m_script.getObject(), m_script.getDrawn());
        for (const TW2::render::View::Line& line : volumes.m_vecLines)
        {
            m_vecPoints.push_back(line.m_vFrom);
        }
    }
    const std::size_t step = m_vecVertices.size() / enough + 1;
    for (std::size_t i = 0; i < m_vecVertices.size(); ++i)
    {
        const Vector& point = m_vecVertices[i];
        m_bounds.add(point);
        if (i % step == 0 && std::isfinite(point.x + point.y + point.z))
        {
            m_vecPoints.push_back(point);
        }
    }
}

void Stage::placeLights()
{
    if (m_arguments.show.m_bStudioLights)
    {
        m_lights.emplace(m_scene, m_camera, TW2::render::chooseLightStrength(m_script.getDrawn()));
    }
}

void Stage::turn(double progress)
{
    m_camera.setMatrix(m_cameraStart * turnAround(m_bounds.getCenter(), 2.0 * std::numbers::pi * progress));
    // As if the object turned: the light comes from where it came.
    placeLights();
}
}  // namespace tools
