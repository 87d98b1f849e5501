#include "web/state.h"

#include "json/writer.h"
#include "viewer/commands.h"
#include "viewer/key_curves.h"
#include "viewer/viewer.h"

#include <sstream>
#include <string_view>
#include <vector>

namespace TW2::viewer
{
namespace
{
void writeClips(json::Writer& json, const LoadedObject& object)
{
    json.key("clips");
    json.beginArray();
    for (const Clip& clip : object.getClips())
    {
        json.beginObject();
        json.member("index", clip.m_iIndex);
        json.member("name", clip.m_strName);
        json.member("frames", clip.m_uiFrames);
        json.member("rate", clip.m_fFrameRate);
        json.member("period", clip.m_dPeriod);
        json.endObject();
    }
    json.endArray();
}

void writeBones(json::Writer& json, const LoadedObject& object)
{
    json.key("bones");
    json.beginArray();
    for (const LoadedObject::Bone& bone : object.getBones())
    {
        json.beginObject();
        json.member("name", bone.m_strName);
        json.member("parent", bone.m_iParent);
        json.endObject();
    }
    json.endArray();
}

void writeMaterials(json::Writer& json, const LoadedObject& object)
{
    json.key("materials");
    json.beginArray();
    for (const LoadedObject::Material& material : object.getMaterials())
    {
        json.beginObject();
        json.member("name", material.m_strName);
        json.member("setUp", material.m_szSetUp);
        json.endObject();
    }
    json.endArray();
}

void writeMixer(json::Writer& json, const MixerPlayback& mixer)
{
    json.member("mixing", mixer.isOn());
    json.member("fade", mixer.getFade());
    json.member("inStep", mixer.isInStep());
    json.member("travelling", mixer.isTravelling());
    json.key("parts");
    json.beginArray();
    for (const MixerPlayback::Part& part : mixer.getParts())
    {
        json.beginObject();
        json.member("animation", part.m_iAnimation);
        json.member("layer", part.m_iLayer);
        json.member("weight", part.m_fWeight);
        json.endObject();
    }
    json.endArray();
    json.key("layers");
    json.beginArray();
    for (const MixerPlayback::Layer& layer : mixer.getLayers())
    {
        json.beginObject();
        json.member("additive", layer.m_bAdditive);
        json.member("bone", layer.m_iBone);
        json.member("falloff", layer.m_uiFalloff);
        json.member("weight", layer.m_fWeight);
        json.endObject();
    }
    json.endArray();
    json.key("events");
    json.beginArray();
    for (const MixerPlayback::PassedEvent& event : mixer.getEvents())
    {
        json.beginObject();
        json.member("name", event.m_strName);
        json.member("animation", event.m_strAnimation);
        json.member("seconds", event.m_dSeconds);
        json.endObject();
    }
    json.endArray();
}
void writePoint(json::Writer& json, std::string_view key, const M_Vector3Template<float>& point)
{
    json.key(key);
    json.beginArray();
    for (const float value : {point.x, point.y, point.z})
    {
        json.value(value);
    }
    json.endArray();
}

void writeReaching(json::Writer& json, const Viewer& viewer)
{
    const Reaching& reaching = viewer.getReaching();
    json.member("reachKind", static_cast<int>(reaching.getKind()));
    json.member("reachBone", reaching.getBone());
    writePoint(json, "target", reaching.getTarget().value_or(viewer.getCamera().getEye()));
    writePoint(json, "forward", reaching.getForward());
}

void writePlanting(json::Writer& json, const Viewer& viewer)
{
    const Planting& planting = viewer.getPlanting();
    json.member("slope", viewer.getSlope().m_fDegrees);
    json.member("towards", viewer.getSlope().m_fTowards);
    json.member("planting", planting.isOn());
    json.member("plantWeight", planting.getWeight());
    json.member("pelvis", planting.getPelvis());
    json.member("pelvisShift", planting.getPelvisShift());
    json.key("legs");
    json.beginArray();
    for (std::size_t i = 0; i < planting.getLegs().size(); ++i)
    {
        json.beginObject();
        json.member("thigh", planting.getLegs()[i].m_strThigh);
        json.member("foot", planting.getLegs()[i].m_strFoot);
        json.member("left", planting.getLeft(i));
        json.endObject();
    }
    json.endArray();
}

template <typename Value>
void writeArray(json::Writer& json, const std::vector<Value>& values)
{
    json.beginArray();
    for (const Value& value : values)
    {
        json.value(value);
    }
    json.endArray();
}
}  // namespace

std::string describeCurves(Viewer& viewer)
{
    std::ostringstream stream;
    json::Writer json(stream);
    json.beginObject();
    if (LoadedObject* object = viewer.getObject())
    {
        const KeyCurves curves = sampleCurves(*object, viewer.getPickedBone(), viewer.getPlayback().getMainAnimation());
        json.key("values");
        json.beginArray();
        for (const std::vector<float>& values : curves.m_aValues)
        {
            writeArray(json, values);
        }
        json.endArray();
        json.key("keys");
        writeArray(json, curves.m_vecKeyFrames);
    }
    json.endObject();
    return stream.str();
}

std::string describeObject(const Viewer& viewer)
{
    std::ostringstream stream;
    json::Writer json(stream);
    json.beginObject();
    if (const LoadedObject* object = viewer.getObject())
    {
        json.member("script", object->getScriptFile());
        json.member("choice", object->getChoice().m_strName);
        json.key("choices");
        json.beginArray();
        for (const LoadedObject::Choice& choice : object->getChoices())
        {
            json.value(choice.m_strName);
        }
        json.endArray();
        json.member("levels", object->getLevelCount());
        json.member("skinned", object->isSkinned());
        json.member("lights", viewer.getFileLights().getCount());
        writeClips(json, *object);
        writeBones(json, *object);
        writeMaterials(json, *object);
        json.key("textures");
        json.beginArray();
        for (const LoadedObject::TextureSet& set : object->getTextureSets())
        {
            json.value(set.m_strName);
        }
        json.endArray();
    }
    json.endObject();
    return stream.str();
}

std::string describeState(const Viewer& viewer)
{
    const Playback& playback = viewer.getPlayback();
    const Crowd::Cost& cost = viewer.getCrowd().getCost();
    std::ostringstream stream;
    json::Writer json(stream);
    json.beginObject();
    json.member("time", playback.getTime());
    json.member("period", playback.getPeriod());
    json.member("frame", playback.getFrame());
    json.member("playing", playback.isPlaying());
    json.key("slots");
    json.beginArray();
    for (const Playback::Slot& slot : playback.getSlots())
    {
        json.beginObject();
        json.member("animation", slot.m_iAnimation);
        json.member("weight", slot.m_fWeight);
        json.endObject();
    }
    json.endArray();
    json.member("frozen", playback.getFrozenWeight());
    json.member("crossMode", static_cast<int>(viewer.getCrossMode()));
    json.member("level", viewer.getLevel());
    json.member("groupBone", playback.getGroupBone());
    json.member("groupAnimation", playback.getGroupAnimation());
    json.member("bone", viewer.getPickedBone());
    json.member("azimuth", viewer.getCamera().m_fAzimuth);
    json.member("distance", viewer.getCamera().m_fDistance);
    json.member("crowd", viewer.getCrowd().getCount());
    json.member("poseNanoseconds", cost.m_dPoseNanosecondsPerBone);
    json.member("frameNanoseconds", cost.m_dFrameNanosecondsPerBone);
    json.member("milliseconds", cost.m_dMilliseconds);
    json.member("drawMilliseconds", viewer.getTiming().m_dDraw);
    writeMixer(json, viewer.getMixer());
    writeReaching(json, viewer);
    writePlanting(json, viewer);
    json.key("settings");
    json.beginArray();
    for (const std::string& line : describeSettings(viewer))
    {
        json.value(line);
    }
    json.endArray();
    json.endObject();
    return stream.str();
}

std::string describeCommands()
{
    std::ostringstream stream;
    json::Writer json(stream);
    json.beginArray();
    for (const Command& command : listCommands())
    {
        json.beginObject();
        json.member("name", command.m_strName);
        json.member("arguments", command.m_strArguments);
        json.member("help", command.m_strHelp);
        json.member("key", command.m_strKey);
        json.endObject();
    }
    json.endArray();
    return stream.str();
}
}  // namespace TW2::viewer
