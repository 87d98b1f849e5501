#include "viewer/render_command.h"

#include "viewer/viewer.h"

#include <array>
#include <locale>
#include <sstream>

namespace TW2::viewer
{
namespace
{
using Vector = M_Vector3Template<float>;

/// A word for a shell, in quotes where it needs them.
std::string quote(const std::string& word)
{
    constexpr const char* plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/+:=,@%";
    if (!word.empty() && word.find_first_not_of(plain) == std::string::npos)
    {
        return word;
    }
    std::string quoted = "'";
    for (const char letter : word)
    {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return quoted + "'";
}

void writeObject(std::ostream& command, const LoadedObject& object, int level)
{
    const LoadedObject::Choice& choice = object.getChoice();
    command << quote(object.getScriptFile());
    if (choice.m_vecLevels.empty() || level >= 0)
    {
        command << " --block "
                << quote(level >= 0 && !choice.m_vecLevels.empty() ? choice.m_vecLevels[static_cast<std::size_t>(level)]
                                                                   : choice.m_strName);
        return;
    }
    for (std::size_t i = 0; i < choice.m_vecLevels.size(); ++i)
    {
        command << (i == 0 ? " --levels " : ",") << quote(choice.m_vecLevels[i]);
    }
}

void writeMotion(std::ostream& command, const Playback& playback)
{
    const auto& slots = playback.getSlots();
    const float both = slots[0].m_fWeight + slots[1].m_fWeight;
    if (slots[1].m_iAnimation >= 0 && slots[1].m_fWeight > 0.0F)
    {
        command << " --blend " << slots[0].m_iAnimation << ":" << slots[1].m_iAnimation << " --weight "
                << slots[1].m_fWeight / both;
    }
    else if (slots[0].m_iAnimation >= 0)
    {
        command << " --animation " << slots[0].m_iAnimation;
    }
    command << " --time " << playback.getTime();
}

void writeLook(std::ostream& command, const Show& show, const LoadedObject& object, int pickedBone)
{
    constexpr std::array<const char*, 4> surfaces{"", " --unlit", " --normals", " --weights"};
    constexpr std::array<const char*, 3> wireframes{"", " --wireframe", " --wireframe-only"};
    command << surfaces[static_cast<std::size_t>(show.m_eSurface)]
            << wireframes[static_cast<std::size_t>(show.m_eWireframe)];
    if (pickedBone >= 0)
    {
        command << " --bone " << quote(object.getBones()[static_cast<std::size_t>(pickedBone)].m_strName);
    }
    command << (show.m_bMesh ? "" : " --no-mesh") << (show.m_bSkeleton ? " --skeleton" : "")
            << (show.m_bAxes ? " --axes" : "") << (show.m_bBounds ? " --bounds" : "") << (show.m_bDark ? " --dark" : "")
            << (show.m_bGrid ? "" : " --no-grid") << (show.m_bShadow ? "" : " --no-shadow")
            << (show.m_bStudioLights ? "" : " --no-lights");
}
}  // namespace

std::string makeRenderCommand(const Viewer& viewer, unsigned int width, unsigned int height)
{
    const LoadedObject* object = viewer.getObject();
    if (!object)
    {
        return {};
    }
    std::ostringstream command;
    command.imbue(std::locale::classic());
    command << "tw2 render ";
    writeObject(command, *object, viewer.getLevel());
    writeMotion(command, viewer.getPlayback());
    const OrbitCamera& orbit = viewer.getCamera();
    // The object may have travelled; the command draws it where it began.
    const M_Matrix4x3Template<float> place = viewer.getPlace().inverse();
    const Vector eye = place.transformPoint(orbit.getEye());
    const Vector target = place.transformPoint(orbit.m_vTarget);
    command << " --size " << width << "x" << height << " --angle " << orbit.m_fVerticalAngle << " --eye " << eye.x
            << " " << eye.y << " " << eye.z << " --target " << target.x << " " << target.y << " " << target.z;
    writeLook(command, viewer.getShow(), *object, viewer.getPickedBone());
    const SceneLights& lights = viewer.getFileLights();
    command << (viewer.getShow().m_bFileLights && lights.getCount() > 0 ? " --file-lights" : "")
            << " --png picture.png";
    return command.str();
}

std::string listWhatRenderLeavesOut(const Viewer& viewer)
{
    std::string words;
    const auto add = [&words](bool there, const char* what)
    {
        if (there)
        {
            words += (words.empty() ? "" : ", ") + std::string(what);
        }
    };
    const Playback& playback = viewer.getPlayback();
    add(playback.getSlots()[2].m_iAnimation >= 0 && playback.getSlots()[2].m_fWeight > 0.0F, "the third animation");
    add(playback.getFrozenWeight() > 0.0F, "the frozen pose");
    add(playback.getGroupBone() >= 0, "what the group of bones plays");
    add(viewer.getMixer().isOn(), "what the mixer plays");
    add(viewer.getReaching().getKind() != Reaching::Kind::None, "what reaches");
    add(viewer.getPlanting().isOn(), "the feet on the ground");
    add(viewer.getSlope().m_fDegrees != 0.0F, "the slope of the ground");
    add(viewer.getCrowd().getCount() > 0, "the crowd");
    add(viewer.getShow().m_bBoneNames, "the names of the bones");
    add(!viewer.getShow().m_bVisibility, "what the visibility tracks hide");
    return words;
}
}  // namespace TW2::viewer
