#include "convert/gltf_clip.h"

#include "convert/gltf_accessor.h"
#include "convert/gltf_value.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace TW2::convert
{
namespace
{
/// Left-handed: z points the other way, and so do the axes that turn from or to it.
Vector3d toPosition(const float* n)
{
    return {static_cast<double>(n[0]), static_cast<double>(n[1]), -static_cast<double>(n[2])};
}
Vector3d toScale(const float* n)
{
    return {static_cast<double>(n[0]), static_cast<double>(n[1]), static_cast<double>(n[2])};
}
Quaternion toRotation(const float* n)
{
    return {static_cast<double>(n[3]), -static_cast<double>(n[0]), -static_cast<double>(n[1]),
            static_cast<double>(n[2])};
}

class Importer
{
public:
    Importer(const GltfFile& file, std::size_t index)
        : m_file(file),
          m_source(file.getModel().animations[index]),
          m_strPlace("animations[" + std::to_string(index) + "]")
    {
    }

    Clip import(const std::vector<int>& nodes, Warnings& warnings)
    {
        m_clip.m_strName = m_source.name;
        for (const tinygltf::AnimationChannel& channel : m_source.channels)
        {
            if (channel.target_path == "weights")
            {
                warnings.addLeftOut("clip \"" + m_source.name + "\"", "the motion of morph targets");
                continue;
            }
            if (channel.target_node < 0)
            {
                continue;  // nothing is moved
            }
            const int node = m_file.at(nodes, channel.target_node, "nodes", m_strPlace);
            if (node < 0)
            {
                warnings.addLeftOut("clip \"" + m_source.name + "\"", "the motion of nodes that are in no scene");
                continue;
            }
            importChannel(channel, accessChannel(node));
            keepMirror(m_file.getModel().nodes[static_cast<std::size_t>(channel.target_node)], accessChannel(node));
        }
        importEvents(warnings);
        return std::move(m_clip);
    }

private:
    /// "events" in the animation's extras: a list of objects with "time" (seconds) and "name". Extras are anybody's:
    /// what is something else is none of this program's business, what looks like it but is damaged is told.
    void importEvents(Warnings& warnings)
    {
        if (!m_source.extras.IsObject() || !m_source.extras.Has("events"))
        {
            return;
        }
        const tinygltf::Value& list = m_source.extras.Get("events");
        for (std::size_t i = 0; i < list.ArrayLen(); ++i)
        {
            const tinygltf::Value& entry = list.Get(static_cast<int>(i));
            const double time = getNumber(entry, "time", -1.0);
            const std::string name = getWord(entry, "name", "");
            if (time < 0.0 || time > m_clip.m_dDuration + 1e-3 || name.empty())
            {
                warnings.addLeftOut("clip \"" + m_source.name + "\"",
                                    "events without a name, or without a time within the clip");
                continue;
            }
            m_clip.m_vecEvents.push_back({std::min(time, m_clip.m_dDuration), name});
        }
    }

    Channel& accessChannel(int node)
    {
        const auto [known, isNew] = m_mapChannels.try_emplace(node, m_clip.m_vecChannels.size());
        if (isNew)
        {
            m_clip.m_vecChannels.emplace_back().m_iNode = node;
        }
        return m_clip.m_vecChannels[known->second];
    }

    void importChannel(const tinygltf::AnimationChannel& channel, Channel& target)
    {
        const tinygltf::AnimationSampler& sampler =
            m_file.at(m_source.samplers, channel.sampler, "samplers", m_strPlace);
        if (channel.target_path == "translation")
        {
            target.m_positions = importCurve<Vector3d>(sampler, 3, toPosition, channel.sampler);
        }
        else if (channel.target_path == "scale")
        {
            target.m_scales = importCurve<Vector3d>(sampler, 3, toScale, channel.sampler);
        }
        else if (channel.target_path == "rotation")
        {
            target.m_rotations = importCurve<Quaternion>(sampler, 4, toRotation, channel.sampler);
        }
    }

    /// A matrix that mirrors or has no size comes from many scales and rotations: which are meant, only the node says.
    /// What the file does not move gets a key of its own.
    static void keepMirror(const tinygltf::Node& node, Channel& channel)
    {
        if (std::none_of(node.scale.begin(), node.scale.end(), [](double scale) { return scale <= 0.0; }) ||
            node.scale.size() != 3)
        {
            return;
        }
        if (channel.m_scales.isEmpty())
        {
            channel.m_scales.m_vecTimes = {0.0};
            channel.m_scales.m_vecValues = {{node.scale[0], node.scale[1], node.scale[2]}};
        }
        if (channel.m_rotations.isEmpty())
        {
            const auto& q = node.rotation;
            channel.m_rotations.m_vecTimes = {0.0};
            channel.m_rotations.m_vecValues = {q.size() == 4 ? Quaternion{q[3], -q[0], -q[1], q[2]} : Quaternion()};
        }
    }

    template <typename T, typename Make>
    Curve<T> importCurve(const tinygltf::AnimationSampler& sampler, std::size_t components, Make make, int number)
    {
        const std::string place = m_strPlace + ".samplers[" + std::to_string(number) + "]";
        Curve<T> curve;
        curve.m_eInterpolation = sampler.interpolation == "STEP"          ? Interpolation::Step
                                 : sampler.interpolation == "CUBICSPLINE" ? Interpolation::Cubic
                                                                          : Interpolation::Linear;
        const bool cubic = curve.m_eInterpolation == Interpolation::Cubic;
        const std::size_t perKey = cubic ? 3 : 1;
        const std::vector<float> times = readNumbers(m_file, sampler.input, 1, place + ".input");
        const std::vector<float> numbers = readNumbers(m_file, sampler.output, components, place + ".output");
        if (numbers.size() != times.size() * perKey * components)
        {
            m_file.fail(place, "has " + std::to_string(numbers.size() / components) + " values for " +
                                   std::to_string(times.size()) + " times, " + std::to_string(times.size() * perKey) +
                                   " are needed");
        }
        const auto isFinite = [](float value) { return std::isfinite(value); };
        if (!std::all_of(times.begin(), times.end(), isFinite) ||
            !std::all_of(numbers.begin(), numbers.end(), isFinite))
        {
            m_file.fail(place, "has a number that is not finite");
        }
        if (!std::is_sorted(times.begin(), times.end()))
        {
            m_file.fail(place + ".input", "its times do not ascend");
        }
        for (std::size_t key = 0; key < times.size(); ++key)
        {
            const float* values = numbers.data() + key * perKey * components;
            curve.m_vecTimes.push_back(static_cast<double>(times[key]));
            curve.m_vecValues.push_back(make(values + (cubic ? components : 0)));
            if (cubic)
            {
                curve.m_vecArriving.push_back(make(values));
                curve.m_vecLeaving.push_back(make(values + 2 * components));
            }
            m_clip.m_dDuration = std::max(m_clip.m_dDuration, curve.m_vecTimes.back());
        }
        return curve;
    }

    const GltfFile& m_file;
    const tinygltf::Animation& m_source;
    std::string m_strPlace;
    Clip m_clip;
    std::map<int, std::size_t> m_mapChannels;  // by node
};
}  // namespace

Clip importClip(const GltfFile& file, std::size_t index, const std::vector<int>& nodes, Warnings& warnings)
{
    return Importer(file, index).import(nodes, warnings);
}
}  // namespace TW2::convert
