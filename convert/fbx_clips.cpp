#include "convert/fbx_clips.h"

#include "convert/fbx_properties.h"
#include "convert/fbx_tangents.h"
#include "convert/node_motion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <set>
#include <string>

namespace TW2::convert
{
namespace
{
/// A node's motion in one stack.
class FbxNodeMotion : public NodeMotion
{
public:
    FbxNodeMotion(std::shared_ptr<const FbxPose> pose, std::size_t place, double start, double duration)
        : m_pPose(std::move(pose)), m_uiPlace(place), m_dStart(start), m_dDuration(duration)
    {
    }

    [[nodiscard]] Matrixd at(double seconds) const override { return m_pPose->getLocal(m_uiPlace, m_dStart + seconds); }

    void addTimes(std::vector<double>& times) const override
    {
        forEachKey([&](const FbxCurve::Key& key, const FbxCurve::Key*) { add(key.m_dTime, times); });
    }

    void addJumps(std::vector<double>& jumps) const override
    {
        forEachKey(
            [&](const FbxCurve::Key& key, const FbxCurve::Key* next)
            {
                if (!next || key.m_dValue == next->m_dValue)
                {
                    return;
                }
                constexpr double atOnce = 1e-5;
                if (key.m_eKind == FbxCurve::Kind::Step || next->m_dTime - key.m_dTime < atOnce)
                {
                    add(next->m_dTime, jumps);
                }
                else if (key.m_eKind == FbxCurve::Kind::StepNext)
                {
                    add(key.m_dTime, jumps);
                }
            });
    }

private:
    template <typename Visit>
    void forEachKey(Visit visit) const
    {
        m_pPose->forEachCurve(m_uiPlace,
                              [&visit](const FbxCurve& curve)
                              {
                                  const std::vector<FbxCurve::Key>& keys = curve.m_vecKeys;
                                  for (std::size_t i = 0; i < keys.size(); ++i)
                                  {
                                      visit(keys[i], i + 1 < keys.size() ? &keys[i + 1] : nullptr);
                                  }
                              });
    }

    void add(double time, std::vector<double>& times) const
    {
        if (time >= m_dStart && time <= m_dStart + m_dDuration)
        {
            times.push_back(time - m_dStart);
        }
    }

    std::shared_ptr<const FbxPose> m_pPose;
    std::size_t m_uiPlace;
    double m_dStart;
    double m_dDuration;
};

/// Text files write these numbers as whole ones that have the same bits, for some are no numbers in truth.
std::vector<double> takeFloats(std::vector<double> numbers)
{
    constexpr double least = 65536.0;  // no float of any size has bits below
    constexpr double most = 4294967296.0;
    for (double& number : numbers)
    {
        if (number == std::floor(number) && std::abs(number) >= least && std::abs(number) < most)
        {
            number = static_cast<double>(
                std::bit_cast<float>(static_cast<std::uint32_t>(static_cast<std::int64_t>(number))));
        }
    }
    return numbers;
}

FbxCurve readCurve(const FbxDocument& document, const FbxElement& element)
{
    const auto numbers = [&](std::string_view name)
    {
        const FbxElement* child = element.find(name);
        return child ? document.getNumbers(*child) : std::vector<double>();
    };
    const std::vector<double> times = numbers("KeyTime");
    const std::vector<double> values = numbers("KeyValueFloat");
    const std::vector<double> flags = numbers("KeyAttrFlags");
    const std::vector<double> data = takeFloats(numbers("KeyAttrDataFloat"));
    const std::vector<double> counts = numbers("KeyAttrRefCount");
    FbxCurve curve;
    std::vector<FbxTangents> tangents;
    std::size_t set = 0;  // keys of one kind share their attributes
    double left = counts.empty() ? 0.0 : counts[0];
    for (std::size_t i = 0; i < std::min(times.size(), values.size()); ++i)
    {
        constexpr unsigned int step = 2;
        constexpr unsigned int cubic = 8;
        constexpr unsigned int stepNext = 0x100;
        constexpr unsigned int weightedLeaving = 0x1000000;
        constexpr unsigned int weightedArriving = 0x2000000;
        while (left < 1.0 && set + 1 < counts.size())
        {
            left += counts[++set];
        }
        left -= 1.0;
        FbxCurve::Key key;
        FbxTangents slopes;
        key.m_dTime = times[i] / fbxTicksPerSecond;
        key.m_dValue = values[i];
        const auto flag = set < flags.size() ? static_cast<unsigned int>(toWhole(flags[set])) : 0U;
        if ((flag & step) != 0)
        {
            key.m_eKind = (flag & stepNext) != 0 ? FbxCurve::Kind::StepNext : FbxCurve::Kind::Step;
        }
        else if ((flag & cubic) != 0 && set * 4 + 3 < data.size())
        {
            key.m_eKind = FbxCurve::Kind::Cubic;
            slopes = {flag, {data[set * 4], data[set * 4 + 1], data[set * 4 + 2]}};
            // Both weights stand in the bits of one float, in ten-thousandths.
            const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(data[set * 4 + 2]));
            constexpr double unit = 1e-4;
            if ((flag & weightedLeaving) != 0)
            {
                key.m_dLeavingPart = (bits & 0xFFFFU) * unit;
            }
            if ((flag & weightedArriving) != 0)
            {
                key.m_dArrivingPart = (bits >> 16U) * unit;
            }
        }
        curve.m_vecKeys.push_back(key);
        tangents.push_back(slopes);
    }
    setFbxSlopes(curve.m_vecKeys, tangents);
    std::ranges::stable_sort(curve.m_vecKeys, {}, &FbxCurve::Key::m_dTime);
    readFbxExtrapolation(element, curve);
    return curve;
}

/// The three numbers of a curve node; what it does not say is as in `otherwise`.
FbxPose::Track readTrack(const FbxScene& scene, const FbxObject& node, const Vector3d& otherwise)
{
    const FbxProperties properties(node.m_pElement);
    FbxPose::Track track;
    track.m_values = {properties.getNumber("d|X", otherwise.x), properties.getNumber("d|Y", otherwise.y),
                      properties.getNumber("d|Z", otherwise.z)};
    for (const FbxObjects::Link& link : scene.getObjects().getChildren(node.m_iId))
    {
        if (link.m_pObject->m_kind == "AnimationCurve" && link.m_property.size() == 3 &&
            link.m_property.starts_with("d|") && link.m_property[2] >= 'X' && link.m_property[2] <= 'Z')
        {
            track.m_curves[static_cast<std::size_t>(link.m_property[2] - 'X')] =
                readCurve(scene.getDocument(), *link.m_pObject->m_pElement);
        }
    }
    return track;
}

/// The one curve of a layer's weight; one without keys when there is none.
FbxCurve readWeight(const FbxScene& scene, const FbxObject& node)
{
    for (const FbxObjects::Link& link : scene.getObjects().getChildren(node.m_iId))
    {
        if (link.m_pObject->m_kind == "AnimationCurve")
        {
            return readCurve(scene.getDocument(), *link.m_pObject->m_pElement);
        }
    }
    return {};
}

/// Adds what one curve node of a layer moves. `layer`: the further layer that it belongs to; null for the first one.
void addTrack(const FbxScene& scene, const FbxObject& node, FbxPose::Layer* layer, FbxTakeMotion& motion)
{
    const FbxObjects& objects = scene.getObjects();
    for (const FbxObjects::Link& target : objects.getParents(node.m_iId))
    {
        if (target.m_property.empty() || target.m_pObject->m_kind == "AnimationLayer")
        {
            continue;  // the layer, of which it is a part or which it blends
        }
        const int place = scene.findPlace(target.m_pObject->m_iId);
        FbxPose::Tracks none;
        if (place < 0 || !findFbxTrack(none, target.m_property))
        {
            motion.m_vecOthers.push_back(target.m_property);
            continue;
        }
        const auto index = static_cast<std::size_t>(place);
        const Vector3d& rest = getFbxRest(scene.getPlaces()[index], target.m_property);
        const bool scales = target.m_property == "Lcl Scaling" && layer && layer->m_bScalesByFactors;
        const Vector3d nothing = scales ? Vector3d(1.0, 1.0, 1.0) : Vector3d();
        FbxPose::Tracks& tracks = (layer ? layer->m_mapTracks : motion.m_pose.m_mapTracks)[index];
        *findFbxTrack(tracks, target.m_property) = readTrack(scene, node, layer && layer->m_bAdds ? nothing : rest);
    }
}

/// Whether a switch of a layer is on.
bool isOn(const FbxObject& layer, std::string_view name)
{
    return FbxProperties(layer.m_pElement).getInteger(name, 0) != 0;
}

/// Adds a layer to a stack: the first is what the others are blended with.
void addLayer(const FbxScene& scene, const FbxObject& object, bool first, FbxTakeMotion& take)
{
    constexpr int adds = 0;
    constexpr int covers = 1;      // whatever its weight; 2 covers by its weight
    constexpr int vectorBit = 14;  // of the kinds of properties that are not blended, that of a node's three parts
    const FbxProperties properties(object.m_pElement);
    const bool unblended = (toWhole(properties.getNumber("BlendModeBypass", 0.0)) >> vectorBit & 1) != 0;
    const int mode = unblended ? covers : properties.getInteger("BlendMode", adds);
    FbxPose::Layer layer;
    layer.m_bAdds = mode == adds;
    layer.m_bTurnsAsWhole = properties.getInteger("RotationAccumulationMode", 0) == 0;
    layer.m_bScalesByFactors = properties.getInteger("ScaleAccumulationMode", 0) == 0;
    if (mode != covers)
    {
        layer.m_dWeight = properties.getNumber("Weight", layer.m_dWeight);
        for (const FbxObjects::Link& link : scene.getObjects().getChildren(object.m_iId))
        {
            if (link.m_pObject->m_kind == "AnimationCurveNode" && link.m_property == "Weight")
            {
                layer.m_weight = readWeight(scene, *link.m_pObject);
            }
        }
    }
    for (const FbxObject* node : scene.getObjects().getChildren(object.m_iId, "AnimationCurveNode"))
    {
        addTrack(scene, *node, first ? nullptr : &layer, take);
    }
    if (!layer.m_mapTracks.empty())
    {
        take.m_pose.m_vecLayers.push_back(std::move(layer));
    }
}

std::vector<FbxTakeMotion> readStacks(const FbxScene& scene)
{
    std::vector<FbxTakeMotion> takes;
    for (const FbxObject& stack : scene.getObjects().getAll())
    {
        if (stack.m_kind != "AnimationStack")
        {
            continue;
        }
        FbxTakeMotion& take = takes.emplace_back();
        take.m_name = stack.m_name;
        take.m_pose = scene.getPose();
        const std::vector<const FbxObject*> layers = scene.getObjects().getChildren(stack.m_iId, "AnimationLayer");
        const auto isAlone = [](const FbxObject* layer) { return isOn(*layer, "Solo") && !isOn(*layer, "Mute"); };
        const bool some = std::ranges::any_of(layers, isAlone);
        for (const FbxObject* layer : layers)
        {
            if (some ? isAlone(layer) : !isOn(*layer, "Mute"))
            {
                addLayer(scene, *layer, layer == layers.front(), take);
            }
        }
        const FbxProperties properties(stack.m_pElement);
        for (const auto& [name, time] : {std::pair("LocalStart", &take.m_start), {"LocalStop", &take.m_stop}})
        {
            if (properties.has(name))
            {
                *time = properties.getNumber(name, 0.0) / fbxTicksPerSecond;
            }
        }
    }
    return takes;
}

/// From the first key to the last; from 0 to 0 without any.
std::pair<double, double> findExtent(const FbxPose& pose)
{
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    for (std::size_t place = 0; place < pose.m_vecPlaces.size(); ++place)
    {
        pose.forEachCurve(place,
                          [&](const FbxCurve& curve)
                          {
                              if (!curve.m_vecKeys.empty())
                              {
                                  first = std::min(first, curve.m_vecKeys.front().m_dTime);
                                  last = std::max(last, curve.m_vecKeys.back().m_dTime);
                              }
                          });
    }
    return std::isfinite(first) ? std::pair(first, last) : std::pair(0.0, 0.0);
}

void warnOfOthers(const FbxTakeMotion& take, Warnings& warnings)
{
    if (const std::set<std::string_view> left(take.m_vecOthers.begin(), take.m_vecOthers.end()); !left.empty())
    {
        const bool morphs = left.contains("DeformPercent");
        warnings.add(
            "clip \"" + std::string(take.m_name) + "\": " +
            (morphs ? "morph animation is left out"
                    : "the animation of \"" + std::string(*left.begin()) + "\" is left out: nodes alone are moved"));
    }
}
}  // namespace

std::optional<FbxPose::Track>* findFbxTrack(FbxPose::Tracks& tracks, std::string_view name)
{
    return name == "Lcl Translation" ? &tracks.m_translation
           : name == "Lcl Rotation"  ? &tracks.m_rotation
           : name == "Lcl Scaling"   ? &tracks.m_scaling
                                     : nullptr;
}

void readFbxExtrapolation(const FbxElement& element, FbxCurve& curve)
{
    for (const auto& [name, beyond] :
         {std::pair("Pre-Extrapolation", &curve.m_before), {"Post-Extrapolation", &curve.m_after}})
    {
        const FbxElement* found = element.find(name);
        const FbxElement* type = found ? found->find("Type") : nullptr;
        if (!type)
        {
            continue;
        }
        // A letter: a number in binary files.
        const std::string_view text = type->getText(0);
        const char letter = text.empty() ? static_cast<char>(type->getInteger(0)) : text.front();
        beyond->m_eKind = letter == 'R'   ? FbxCurve::Beyond::Kind::Repeat
                          : letter == 'M' ? FbxCurve::Beyond::Kind::Mirror
                          : letter == 'A' ? FbxCurve::Beyond::Kind::RepeatOnward
                          : letter == 'K' ? FbxCurve::Beyond::Kind::Slope
                                          : FbxCurve::Beyond::Kind::Stay;
        const FbxElement* repetition = found->find("Repetition");
        beyond->m_iTimes = repetition ? repetition->getInteger(0) : -1;
    }
}

const Vector3d& getFbxRest(const FbxPlace& place, std::string_view name)
{
    return name == "Lcl Translation" ? place.m_vTranslation
           : name == "Lcl Rotation"  ? place.m_vRotation
                                     : place.m_vScaling;
}

std::vector<Clip> readFbxClips(const FbxScene& scene, Warnings& warnings)
{
    std::vector<Clip> clips;
    for (FbxTakeMotion& take : scene.getObjects().isOld() ? readFbxTakes(scene) : readStacks(scene))
    {
        warnOfOthers(take, warnings);
        if (take.m_pose.m_mapTracks.empty() && take.m_pose.m_vecLayers.empty())
        {
            continue;
        }
        take.m_pose.prepare();
        const auto [first, last] = findExtent(take.m_pose);
        const double start = take.m_start.value_or(first);
        Clip clip;
        clip.m_strName = take.m_name;
        clip.m_dDuration = std::max(take.m_stop.value_or(last) - start, 0.0);
        const auto pose = std::make_shared<const FbxPose>(std::move(take.m_pose));
        for (std::size_t place = 0; place < scene.getPlaces().size(); ++place)
        {
            if (pose->isMoved(place))
            {
                Channel channel;
                channel.m_iNode = static_cast<int>(place);
                channel.m_pMotion = std::make_shared<FbxNodeMotion>(pose, place, start, clip.m_dDuration);
                clip.m_vecChannels.push_back(std::move(channel));
            }
        }
        clips.push_back(std::move(clip));
    }
    return clips;
}
}  // namespace TW2::convert
