#include "viewer/viewer.h"

#include "render/scene_renderer.h"
#include "render/studio.h"
#include "viewer/failure.h"
#include "viewer/find_by.h"
#include "viewer/picking.h"
#include "viewer/text.h"
#include "viewer/visibility.h"

#include <tw2/io/loader.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>

namespace TW2::viewer
{
namespace
{
using Vector = M_Vector3Template<float>;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

void addCross(render::View& view, const Vector& place, float size)
{
    const G_FColor color(250.0F, 60.0F, 160.0F);
    for (const Vector& side : {Vector{size, 0.0F, 0.0F}, Vector{0.0F, size, 0.0F}, Vector{0.0F, 0.0F, size}})
    {
        view.m_vecOverlayLines.push_back({place - side, place + side, color});
    }
}

void smooth(double& mean, double value)
{
    constexpr double share = 0.05;
    mean = mean > 0.0 ? mean + (value - mean) * share : value;
}
}  // namespace

Viewer::Viewer() : m_scene(&m_context)
{
    m_context.setCurrentCamera(&m_camera);
}

Viewer::~Viewer()
{
    clear();
}

void Viewer::open(const std::string& scriptFile, const std::string& choice)
{
    TW_Loader::freeCachedFile();
    start(std::make_unique<LoadedObject>(scriptFile, choice));
    m_bFrameWanted = true;
}

void Viewer::reload()
{
    if (!m_pObject)
    {
        throw Failure("nothing is loaded that could be loaded again");
    }
    const std::string file = m_pObject->getScriptFile();
    const std::string choice = m_pObject->getChoice().m_strName;
    TW_Loader::freeCachedFile();
    // Textures are shared by name while anybody uses them: only when the old object has gone do new ones come. What
    // does not load now would not load then, and the old object stays.
    {
        const LoadedObject proof(file, choice);
    }
    const int clip = m_playback.getMainAnimation();
    const double time = m_playback.getTime();
    const std::size_t copies = m_crowd.getCount();
    const int level = m_iLevel;
    const std::string bone =
        m_iPickedBone >= 0 ? m_pObject->getBones()[static_cast<std::size_t>(m_iPickedBone)].m_strName : std::string();
    const Slope slope = m_slope;
    const std::vector<Planting::Leg> legs = m_planting.getLegs();
    const std::shared_ptr<const MixerPlayback::Kept> mixed = m_mixer.interrupt();
    const float size = m_extent.getRest().getSize();
    clear();
    start(std::make_unique<LoadedObject>(file, choice));
    // Made again in another unit, or of another model: where the eye is says nothing any more.
    constexpr float other = 2.0F;
    const float now = m_extent.getRest().getSize();
    m_bFrameWanted = m_bFrameWanted || now > size * other || size > now * other;
    if (m_playback.findClip(clip))
    {
        m_playback.setClip(clip);
        m_playback.seek(time);
    }
    const auto& bones = m_pObject->getBones();
    const auto found = findBy(bones, bone, &LoadedObject::Bone::m_strName);
    m_iPickedBone = bone.empty() || found == bones.end() ? -1 : static_cast<int>(found - bones.begin());
    if (mixed)
    {
        m_mixer.resume(*m_pObject, *mixed, m_playback.getMainAnimation(), m_playback.getTime());
    }
    setLevel(level < m_pObject->getLevelCount() ? level : -1);
    m_slope = slope;
    setCrowd(copies);
    plantAgain(legs);
}

/// As far as the new object has the bones for it.
void Viewer::plantAgain(const std::vector<Planting::Leg>& legs)
{
    const auto& bones = m_pObject->getBones();
    const auto isThere = [&bones](const std::string& name)
    { return findBy(bones, name, &LoadedObject::Bone::m_strName) != bones.end(); };
    if (!legs.empty() &&
        std::all_of(legs.begin(), legs.end(),
                    [&isThere](const Planting::Leg& leg) { return isThere(leg.m_strThigh) && isThere(leg.m_strFoot); }))
    {
        plant(legs);
    }
}

void Viewer::start(std::unique_ptr<LoadedObject> object)
{
    clear();
    m_pObject = std::move(object);
    ++m_uiLoads;
    m_pObject->getObject().addTo(&m_scene);
    m_playback.reset(m_pObject->getClips());
    m_fileLights.load(m_pObject->getGeometryFiles(), m_pObject->getDrawn(), m_scene);
    for (const LoadedObject::TextureSet& set : m_pObject->getTextureSets())
    {
        m_vecTextureSets.push_back(set.m_strName);
    }
    m_extent = Extent(m_pObject->getScript(), m_scene, m_context);
    pose(0.0);
}

void Viewer::clear() noexcept
{
    m_mixer.stop();
    m_reaching.stop();
    m_planting.stop();
    m_slope = {};
    m_playback.forgetObjects();
    m_playback.reset({});
    m_crowd.clear();
    m_fileLights.clear();
    m_vecTextureSets.clear();
    m_iPickedBone = -1;
    m_iLevel = -1;
    m_pObject.reset();
}

/// Everything that is in the picture at some moment of what plays now.
void Viewer::frame(float aspect)
{
    constexpr int moments = 12;
    std::vector<Vector> points;
    for (int i = 1; m_pObject && i < moments; ++i)
    {
        m_playback.apply(m_pObject->getObject(), m_playback.getPeriod() * i / moments);
        m_scene.executeFrame();
        collectPoints(points);
    }
    if (m_pObject)
    {
        pose(0.0);
        m_scene.executeFrame();
    }
    collectPoints(points);
    for (const std::unique_ptr<TW_VirtualObject>& copy : m_crowd.getCopies())
    {
        for (unsigned int corner = 0; corner < 8; ++corner)
        {
            const Vector& low = m_extent.getRest().m_vMinimum;
            const Vector& high = m_extent.getRest().m_vMaximum;
            points.push_back(copy->getPosition() + Vector{(corner & 1U) ? high.x : low.x,
                                                          (corner & 2U) ? high.y : low.y,
                                                          (corner & 4U) ? high.z : low.z});
        }
    }
    if (!points.empty())
    {
        m_orbit.frame(points, aspect);
    }
}

void Viewer::settleFrame()
{
    if (m_bFrameWanted)
    {
        m_scene.executeFrame();
        frame(m_fAspect);
        m_framedOrbit = m_orbit;
        m_bFrameWanted = false;
    }
}

void Viewer::collectPoints(std::vector<Vector>& points)
{
    if (!m_pObject)
    {
        return;
    }
    const std::size_t before = points.size();
    render::collectVertices(m_pObject->getObject(), points);
    const bool bare = points.size() == before;
    for (unsigned int i = 0; bare && i < m_pObject->getSkeleton().getTotalMeshes(); ++i)
    {
        points.push_back(m_pObject->getSkeleton().getMesh(i)->getObjectToWorldMatrix().getTranslation());
    }
    std::erase_if(points, [](const Vector& point) { return !std::isfinite(point.x + point.y + point.z); });
}

void Viewer::setCrowd(std::size_t copies)
{
    constexpr std::size_t most = 10000;
    if (copies > most)
    {
        throw Failure("a crowd has 0 to " + std::to_string(most) + " copies, not " + std::to_string(copies));
    }
    m_playback.forgetObjects();
    m_crowd.clear();
    if (m_pObject && copies > 0)
    {
        const Vector size = m_extent.getRest().m_vMaximum - m_extent.getRest().m_vMinimum;
        m_bFrameWanted = true;
        m_crowd.build(*m_pObject, m_scene, copies, 1.2F * std::max({size.x, size.z, 0.25F * size.y, 1e-3F}));
        m_crowd.standOn(m_slope.getPlane());
    }
}

void Viewer::pick(float x, float y)
{
    m_iPickedBone = m_pObject ? pickBone(m_pObject->getDrawn(), m_pObject->getSkeleton(), m_camera, x, y) : -1;
}

void Viewer::setTextureAnimation(const std::string& set, bool on)
{
    if (!m_pObject || findBy(m_pObject->getTextureSets(), set, &LoadedObject::TextureSet::m_strName) ==
                          m_pObject->getTextureSets().end())
    {
        throw Failure("there is no animated texture \"" + set + "\"");
    }
    std::erase(m_vecTextureSets, set);
    if (on)
    {
        m_vecTextureSets.push_back(set);
    }
}

bool Viewer::isTextureAnimationOn(const std::string& set) const
{
    return std::find(m_vecTextureSets.begin(), m_vecTextureSets.end(), set) != m_vecTextureSets.end();
}

void Viewer::setCrossMode(InterpolationMode mode)
{
    if (m_pObject)
    {
        m_pObject->getSkeleton().setCrossMode(mode);
        setCrowd(m_crowd.getCount());  // copies take over the mode when they are made
    }
}

InterpolationMode Viewer::getCrossMode() const
{
    return m_pObject ? m_pObject->getSkeleton().getCrossMode() : InterpolationMode::Linear;
}

void Viewer::freeze()
{
    if (m_pObject)
    {
        m_playback.freeze(m_pObject->getObject());
    }
}

void Viewer::playClip(int animation)
{
    if (m_mixer.isOn())
    {
        m_mixer.play(animation);
    }
    m_playback.setClip(animation);
}

void Viewer::seek(double seconds)
{
    m_playback.seek(seconds);
    if (m_mixer.isOn())
    {
        m_mixer.seek(m_playback.getTime());
    }
}

void Viewer::step(int frames)
{
    m_playback.step(frames);
    if (m_mixer.isOn())
    {
        m_mixer.seek(m_playback.getTime());
    }
}

void Viewer::setMixing(bool on)
{
    if (!m_pObject || !on)
    {
        const Vector place = m_pObject ? m_pObject->getObject().getPosition() : Vector{};
        m_mixer.stop();
        if (m_pObject)
        {
            m_pObject->getObject().setMatrix({});
            m_orbit.m_vTarget = m_orbit.m_vTarget - place;
            m_framedOrbit.m_vTarget = m_framedOrbit.m_vTarget - place;
        }
        return;
    }
    m_playback.forgetExtras();
    m_mixer.start(*m_pObject, m_playback.getMainAnimation(), m_playback.getTime());
}

void Viewer::setSlope(const Slope& slope)
{
    if (std::abs(slope.m_fDegrees) > Slope::steepest)
    {
        throw Failure("ground rises or falls by 0 to " + std::to_string(static_cast<int>(Slope::steepest)) +
                      " degrees");
    }
    m_slope = slope;
    m_crowd.standOn(m_slope.getPlane());
    pose(0.0);
}

void Viewer::plant(const std::vector<Planting::Leg>& legs)
{
    if (m_pObject)
    {
        m_planting.start(*m_pObject, legs);
        pose(0.0);
    }
}

void Viewer::moveTarget(float right, float up)
{
    if (m_reaching.getKind() == Reaching::Kind::None)
    {
        throw Failure("nothing reaches for a point that could be moved");
    }
    // Where the eye is, or beside it, nothing is seen to move.
    constexpr float nearest = 0.25F;
    const M_Matrix4x3Template<float>& world = m_camera.getObjectToWorldMatrix();
    const Vector before = world.getTranslation() + world.getRow(2) * (0.5F * m_orbit.m_fDistance);
    const Vector target = m_reaching.getTarget().value_or(before);
    const float depth = std::max((target - world.getTranslation()).dot(world.getRow(2)), nearest * m_orbit.m_fDistance);
    const float height = 2.0F * depth * std::tan(m_camera.getVerticalAngle() * std::numbers::pi_v<float> / 360.0F);
    m_reaching.setTarget(target + world.getRow(0) * (right * height) + world.getRow(1) * (up * height));
}

void Viewer::setLevel(int level)
{
    if (m_pObject)
    {
        m_pObject->setLevel(level);
        m_iLevel = level;
    }
}

void Viewer::pose(double seconds)
{
    if (!m_pObject)
    {
        return;
    }
    if (m_mixer.isOn())
    {
        m_mixer.update(seconds);
        m_playback.seek(m_mixer.getTime());
    }
    else
    {
        m_playback.apply(m_pObject->getObject());
    }
    standOnGround();
    m_reaching.apply(m_orbit.getEye());
    const int visibilityAnimation = m_show.m_bVisibility ? m_playback.getMainAnimation() : -1;
    m_crowd.pose(m_playback, visibilityAnimation);
    const auto time = static_cast<float>(m_playback.getTime());
    followVisibility(m_pObject->getObject(), visibilityAnimation, time);
    for (const std::string& set : m_vecTextureSets)
    {
        m_pObject->getObject().animateTexture(toEngineText(set), time);
    }
    m_fileLights.animate(time);
}

/// Puts the object, which travels as if the ground was level, onto the slope, and its feet onto the ground.
void Viewer::standOnGround()
{
    TW_VirtualObject& object = m_pObject->getObject();
    const auto level = m_mixer.isOn() ? static_cast<float>(m_mixer.getPlace().m_vTranslation.y) : 0.0F;
    const Vector place = object.getPosition();
    render::GroundPlane ground = m_slope.getPlane();
    ground.m_fHeight = level;
    object.setPosition(place.x, ground.getHeight(place), place.z);
    m_planting.apply(ground);
}

void Viewer::update(double seconds)
{
    // While it plays, the mixer moves the clock.
    const bool mixed = m_mixer.isOn();
    const double passed = mixed && m_playback.isPlaying() ? seconds * m_playback.getSpeed() : 0.0;
    if (!mixed)
    {
        m_playback.update(seconds);
    }
    const Clock::time_point begin = Clock::now();
    if (m_lastUpdate)
    {
        smooth(m_timing.m_dPicture, std::chrono::duration<double>(begin - *m_lastUpdate).count() * 1e3);
    }
    m_lastUpdate = begin;
    const Vector before = m_pObject ? m_pObject->getObject().getPosition() : Vector{};
    pose(passed);
    const double posed = secondsSince(begin);
    if (m_pObject)
    {
        // The eye goes along with what travels.
        const Vector travelled = m_pObject->getObject().getPosition() - before;
        m_orbit.m_vTarget = m_orbit.m_vTarget + travelled;
        m_framedOrbit.m_vTarget = m_framedOrbit.m_vTarget + travelled;
    }
    prepare(m_fAspect);
    if (m_pObject)
    {
        m_crowd.addCost(posed, m_dFrameSeconds, m_pObject->getBones().size() * (m_crowd.getCount() + 1));
    }
    smooth(m_timing.m_dUpdate, secondsSince(begin) * 1e3);
}

/// Brings camera and lights where the eye is and runs the scene's frame.
void Viewer::prepare(float aspect)
{
    // Who has not moved the camera since wants to see the whole object in the new shape of the picture, too.
    m_bFrameWanted = m_bFrameWanted || (aspect != m_fAspect && m_orbit == m_framedOrbit);
    m_fAspect = aspect;
    settleFrame();
    m_orbit.apply(m_camera, aspect);
    m_fileLights.enable(m_show.m_bFileLights);
    m_pStudioLights.reset();
    if (m_show.m_bStudioLights && m_pObject)
    {
        m_pStudioLights = std::make_unique<render::StudioLights>(m_scene, m_camera,
                                                                 render::chooseLightStrength(m_pObject->getDrawn()));
    }
    const Clock::time_point begin = Clock::now();
    m_scene.executeFrame();
    m_dFrameSeconds = secondsSince(begin);
    m_preparedOrbit = m_orbit;
}

Shown Viewer::getShown() const
{
    std::vector<int> animations;
    for (const Playback::Slot& slot : m_playback.getSlots())
    {
        if (slot.m_iAnimation >= 0 && (slot.m_fWeight > 0.0F || animations.empty()))
        {
            animations.push_back(slot.m_iAnimation);
        }
    }
    animations.push_back(m_playback.getGroupAnimation());
    for (const MixerPlayback::Part& part : m_mixer.getParts())
    {
        animations.push_back(part.m_iAnimation);
    }
    Shown shown =
        makeShown(m_pObject->getObject(), m_pObject->getSkeleton(), m_pObject->getDrawn(), m_extent, animations);
    shown.m_iPickedBone = m_iPickedBone;
    const render::GroundPlane rise = m_slope.getPlane();
    shown.m_ground.m_fRiseX = rise.m_fRiseX;
    shown.m_ground.m_fRiseZ = rise.m_fRiseZ;
    const render::Bounds room = m_extent.getRoom(animations);
    for (const std::unique_ptr<TW_VirtualObject>& copy : m_crowd.getCopies())
    {
        shown.add(room, copy->getPosition());
    }
    if (m_reaching.getTarget())
    {
        shown.m_casters.add(*m_reaching.getTarget());
    }
    return shown;
}

render::View Viewer::makeView() const
{
    if (!m_pObject)
    {
        return viewer::makeView(m_show);
    }
    render::View view = viewer::makeView(m_show, getShown());
    if (m_reaching.getTarget())
    {
        addCross(view, *m_reaching.getTarget(), 0.03F * m_extent.getRest().getSize());
    }
    return view;
}

void Viewer::draw(render::SceneRenderer& renderer, unsigned int width, unsigned int height)
{
    const float aspect = static_cast<float>(std::max(width, 1U)) / static_cast<float>(std::max(height, 1U));
    if (m_bFrameWanted || aspect != m_fAspect || m_orbit != m_preparedOrbit)
    {
        prepare(aspect);
    }
    const Clock::time_point begin = Clock::now();
    renderer.draw(m_scene, m_camera, makeView());
    smooth(m_timing.m_dDraw, secondsSince(begin) * 1e3);
}

std::vector<Viewer::Label> Viewer::getLabels(unsigned int width, unsigned int height) const
{
    std::vector<Label> labels;
    const float half = std::tan(m_camera.getVerticalAngle() * 3.14159265F / 360.0F);
    for (std::size_t i = 0; m_pObject && i < m_pObject->getBones().size(); ++i)
    {
        const P_VirtualObject* mesh = m_pObject->getSkeleton().getMesh(static_cast<unsigned int>(i));
        const Vector place = m_camera.getViewMatrix().transformPoint(mesh->getObjectToWorldMatrix().getTranslation());
        if (place.z <= m_camera.getNearDistance())
        {
            continue;
        }
        const float x = place.x / (place.z * half * m_camera.getAspect());
        const float y = place.y / (place.z * half);
        labels.push_back({(x + 1.0F) * 0.5F * static_cast<float>(width), (1.0F - y) * 0.5F * static_cast<float>(height),
                          static_cast<int>(i)});
    }
    return labels;
}
}  // namespace TW2::viewer
