#include "convert/fbx_clips.h"
#include "convert/fbx_properties.h"
#include "convert/fbx_tangents.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TW2::convert
{
namespace
{
/// Reads the keys of one curve: a list in which numbers and letters follow each other.
///
/// Each key is time, value and how it goes on: L straight, C a step (behind the key, or n: before the next), U a cubic.
/// A cubic says how its slopes are given (s and b: both are; others leave them to the program, with numbers of their
/// own), and then how the weights of its handles are.
class KeyReader
{
public:
    KeyReader(const FbxDocument& document, const FbxElement& keys, std::int64_t version)
        : m_document(document), m_keys(keys), m_iVersion(version)
    {
    }

    std::vector<FbxCurve::Key> read()
    {
        std::vector<FbxCurve::Key> keys;
        while (m_uiAt < m_keys.m_vecValues.size())
        {
            m_vecTangents.emplace_back();
            keys.push_back(readKey());
        }
        for (std::size_t i = 1; i < keys.size(); ++i)
        {
            // What arrives is said with the key before; an automatic one says nothing, so nothing breaks off here.
            if (m_vecTangents[i - 1].m_uiFlags != 0 && m_vecTangents[i].m_uiFlags == 0)
            {
                m_vecTangents[i - 1].m_numbers[1] = m_vecTangents[i].m_numbers[0];
            }
        }
        setFbxSlopes(keys, m_vecTangents);
        return keys;
    }

private:
    double takeNumber()
    {
        constexpr double none = std::numeric_limits<double>::quiet_NaN();
        const double number = m_keys.getNumber(m_uiAt, none);
        if (!std::isfinite(number))
        {
            m_document.fail(m_keys, "keys with a number here");
        }
        ++m_uiAt;
        return number;
    }

    /// A word of one letter in text, the letter's number in binary files.
    char takeLetter()
    {
        const std::string_view word = m_keys.getText(m_uiAt);
        const std::int64_t number = m_keys.getInteger(m_uiAt);
        ++m_uiAt;
        return !word.empty() ? word.front() : static_cast<char>(number);
    }

    FbxCurve::Key readKey()
    {
        FbxCurve::Key key;
        key.m_dTime = takeNumber() / fbxTicksPerSecond;
        key.m_dValue = takeNumber();
        constexpr std::int64_t withKindOfStep = 4004;
        switch (takeLetter())
        {
            case 'L':
                key.m_eKind = FbxCurve::Kind::Linear;
                break;
            case 'C':
                key.m_eKind = m_iVersion >= withKindOfStep && takeLetter() == 'n' ? FbxCurve::Kind::StepNext
                                                                                  : FbxCurve::Kind::Step;
                break;
            case 'U':
                key.m_eKind = FbxCurve::Kind::Cubic;
                readSlopes(key);
                break;
            default:
                m_document.fail(m_keys, "keys with L, C or U behind their values");
        }
        return key;
    }

    void readSlopes(FbxCurve::Key& key)
    {
        constexpr std::int64_t withoutWeights = 4003;
        constexpr std::int64_t newer = 4005;
        unsigned int weights = 1;
        const char kind = takeLetter();
        FbxTangents& tangents = m_vecTangents.back();
        if (kind != 's' && kind != 'b')
        {
            // Left to the program: so that the curve does not leave the range of its keys.
            tangents.m_uiFlags = FbxTangents::Auto | FbxTangents::TimeIndependent | FbxTangents::Progressive;
        }
        switch (kind)
        {
            case 's':
            case 'b':
                tangents.m_numbers[0] = takeNumber();
                tangents.m_numbers[1] = takeNumber();
                weights = m_iVersion == withoutWeights ? 0 : 1;
                break;
            case 'a':
                weights = m_iVersion < newer ? 0 : 1;
                break;
            case 'p':
            case 'q':
                m_uiAt += 2;
                weights = m_iVersion < newer ? 1 : 2;
                break;
            case 't':
                m_uiAt += 3;
                weights = 0;
                break;
            case 'd':
                ++m_uiAt;
                break;
            default:
                m_document.fail(m_keys, "keys with a kind of slope that FBX has");
        }
        for (; weights > 0; --weights)
        {
            readWeights(key);
        }
    }

    void readWeights(FbxCurve::Key& key)
    {
        switch (takeLetter())
        {
            case 'n':
            case 'c':
                break;
            case 'a':
                key.m_dLeavingPart = takeNumber();
                key.m_dArrivingPart = takeNumber();
                break;
            case 'r':
                key.m_dLeavingPart = takeNumber();
                break;
            case 'l':
                key.m_dArrivingPart = takeNumber();
                break;
            default:
                m_document.fail(m_keys, "keys with a kind of weights that FBX has");
        }
    }

    const FbxDocument& m_document;
    const FbxElement& m_keys;
    std::int64_t m_iVersion;
    std::size_t m_uiAt = 0;
    std::vector<FbxTangents> m_vecTangents;  ///< per key
};

FbxCurve readCurve(const FbxDocument& document, const FbxElement& channel)
{
    FbxCurve curve;
    if (const FbxElement* keys = channel.find("Key"))
    {
        constexpr std::int64_t usual = 4005;
        const FbxElement* version = channel.find("KeyVer");
        curve.m_vecKeys = KeyReader(document, *keys, version ? version->getInteger(0) : usual).read();
        readFbxExtrapolation(channel, curve);
    }
    return curve;
}

/// Adds what a channel with a channel per axis says.
void addTrack(const FbxScene& scene, const FbxElement& channel, std::size_t place, std::string_view name,
              FbxTakeMotion& take)
{
    const Vector3d& rest = getFbxRest(scene.getPlaces()[place], name);
    FbxPose::Track track;
    track.m_values = {rest.x, rest.y, rest.z};
    for (const FbxElement& axis : channel.m_vecChildren)
    {
        const std::string_view letter = axis.m_name == "Channel" ? axis.getText(0) : std::string_view();
        if (letter.size() == 1 && letter[0] >= 'X' && letter[0] <= 'Z')
        {
            const auto index = static_cast<std::size_t>(letter[0] - 'X');
            const FbxElement* value = axis.find("Default");
            track.m_values[index] = value ? value->getNumber(0, track.m_values[index]) : track.m_values[index];
            track.m_curves[index] = readCurve(scene.getDocument(), axis);
        }
    }
    *findFbxTrack(take.m_pose.m_mapTracks[place], name) = std::move(track);
}

/// Whether any curve of a channel, however deep, has more than one key.
bool isMoved(const FbxElement& channel)
{
    const FbxElement* count = channel.find("KeyCount");
    return (count && count->getInteger(0) > 1) ||
           std::ranges::any_of(channel.m_vecChildren,
                               [](const FbxElement& child) { return child.m_name == "Channel" && isMoved(child); });
}

void addModel(const FbxScene& scene, const FbxElement& model, FbxTakeMotion& take)
{
    const FbxObject* object = scene.getObjects().find(model.getText(0));
    const int place = object ? scene.findPlace(object->m_iId) : -1;
    for (const FbxElement& channel : model.m_vecChildren)
    {
        if (channel.m_name != "Channel")
        {
            continue;
        }
        if (place < 0 || channel.getText(0) != "Transform")
        {
            if (isMoved(channel))
            {
                take.m_vecOthers.push_back(channel.getText(0));
            }
            continue;
        }
        for (const FbxElement& part : channel.m_vecChildren)
        {
            static constexpr std::pair<std::string_view, std::string_view> parts[]{
                {"T", "Lcl Translation"}, {"R", "Lcl Rotation"}, {"S", "Lcl Scaling"}};
            for (const auto& [letter, name] : parts)
            {
                if (part.m_name == "Channel" && part.getText(0) == letter)
                {
                    addTrack(scene, part, static_cast<std::size_t>(place), name, take);
                }
            }
        }
    }
}
}  // namespace

std::vector<FbxTakeMotion> readFbxTakes(const FbxScene& scene)
{
    std::vector<FbxTakeMotion> result;
    const FbxElement* takes = scene.getDocument().getRoot().find("Takes");
    if (!takes)
    {
        return result;
    }
    for (const FbxElement& element : takes->m_vecChildren)
    {
        if (element.m_name != "Take")
        {
            continue;
        }
        FbxTakeMotion& take = result.emplace_back();
        take.m_name = element.getText(0);
        take.m_pose = scene.getPose();
        for (const FbxElement& model : element.m_vecChildren)
        {
            if (model.m_name == "Model")
            {
                addModel(scene, model, take);
            }
        }
        if (const FbxElement* times = element.find("LocalTime"); times && times->m_vecValues.size() > 1)
        {
            take.m_start = times->getNumber(0, 0.0) / fbxTicksPerSecond;
            take.m_stop = times->getNumber(1, 0.0) / fbxTicksPerSecond;
        }
    }
    return result;
}
}  // namespace TW2::convert
