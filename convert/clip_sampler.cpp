#include "convert/clip_sampler.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
/// The keys around a time, and how far the time lies between them.
template <typename T>
struct Span
{
    const T& m_from;
    const T& m_to;
    double m_dFraction;
};

template <typename T>
Span<T> find(const Channel::Keys<T>& keys, double seconds)
{
    const auto above = std::ranges::upper_bound(keys, seconds, {}, [](const auto& key) { return key.first; });
    if (above == keys.begin())
    {
        return {keys.front().second, keys.front().second, 0.0};
    }
    if (above == keys.end())
    {
        return {keys.back().second, keys.back().second, 0.0};
    }
    const auto below = above - 1;
    return {below->second, above->second, (seconds - below->first) / (above->first - below->first)};
}

Vector3d sample(const Channel::Keys<Vector3d>& keys, double seconds, const Vector3d& otherwise)
{
    if (keys.empty())
    {
        return otherwise;
    }
    const Span<Vector3d> span = find(keys, seconds);
    return span.m_from + (span.m_to - span.m_from) * span.m_dFraction;
}

Quaternion normalized(const Quaternion& q)
{
    const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    return length > 0.0 ? Quaternion{q.w / length, q.x / length, q.y / length, q.z / length} : Quaternion();
}

Quaternion slerp(const Quaternion& from, const Quaternion& to, double fraction)
{
    double cosine = from.w * to.w + from.x * to.x + from.y * to.y + from.z * to.z;
    const double sign = cosine < 0.0 ? -1.0 : 1.0;  // the shorter way round
    cosine = std::min(cosine * sign, 1.0);
    double a = 1.0 - fraction;
    double b = fraction;
    if (cosine < 1.0 - 1e-9)
    {
        const double angle = std::acos(cosine);
        a = std::sin(a * angle) / std::sin(angle);
        b = std::sin(b * angle) / std::sin(angle);
    }
    b *= sign;
    return normalized({a * from.w + b * to.w, a * from.x + b * to.x, a * from.y + b * to.y, a * from.z + b * to.z});
}

Quaternion sample(const Channel::Keys<Quaternion>& keys, double seconds)
{
    if (keys.empty())
    {
        return {};
    }
    const Span<Quaternion> span = find(keys, seconds);
    return slerp(normalized(span.m_from), normalized(span.m_to), span.m_dFraction);
}

Matrixd compose(const Vector3d& scale, const Quaternion& q, const Vector3d& position)
{
    Matrixd result;
    result.setRow(
        0, Vector3d(1.0 - 2.0 * (q.y * q.y + q.z * q.z), 2.0 * (q.x * q.y + q.w * q.z), 2.0 * (q.x * q.z - q.w * q.y)) *
               scale.x);
    result.setRow(
        1, Vector3d(2.0 * (q.x * q.y - q.w * q.z), 1.0 - 2.0 * (q.x * q.x + q.z * q.z), 2.0 * (q.y * q.z + q.w * q.x)) *
               scale.y);
    result.setRow(
        2, Vector3d(2.0 * (q.x * q.z + q.w * q.y), 2.0 * (q.y * q.z - q.w * q.x), 1.0 - 2.0 * (q.x * q.x + q.y * q.y)) *
               scale.z);
    result.setTranslation(position);
    return result;
}

template <typename T>
void collectTimes(const Channel::Keys<T>& keys, std::vector<double>& times)
{
    for (const auto& key : keys)
    {
        times.push_back(key.first);
    }
}
}  // namespace

ClipSampler::ClipSampler(const Model& model, const Clip& clip)
    : m_model(model), m_vecChannels(model.m_vecNodes.size(), nullptr)
{
    for (const Channel& channel : clip.m_vecChannels)
    {
        m_vecChannels[static_cast<std::size_t>(channel.m_iNode)] = &channel;
    }
}

void ClipSampler::sampleLocal(double seconds, std::vector<Matrixd>& matrices) const
{
    matrices.resize(m_model.m_vecNodes.size());
    for (std::size_t node = 0; node < matrices.size(); ++node)
    {
        const Channel* channel = m_vecChannels[node];
        if (!channel)
        {
            matrices[node] = m_model.m_vecNodes[node].m_local;
            continue;
        }
        const Vector3d scale = sample(channel->m_vecScales, seconds, {1.0, 1.0, 1.0});
        const Vector3d position =
            sample(channel->m_vecPositions, seconds, m_model.m_vecNodes[node].m_local.getTranslation());
        matrices[node] = compose(scale, sample(channel->m_vecRotations, seconds), position);
        if (m_model.m_vecNodes[node].m_iParent < 0)
        {
            matrices[node] = matrices[node] * m_model.m_root;
        }
    }
}

void ClipSampler::composeWorld(const Model& model, const std::vector<Matrixd>& local, std::vector<Matrixd>& world)
{
    world.resize(local.size());
    for (std::size_t node = 0; node < local.size(); ++node)
    {
        const int parent = model.m_vecNodes[node].m_iParent;
        world[node] = parent < 0 ? local[node] : local[node] * world[static_cast<std::size_t>(parent)];
    }
}

int chooseFrameRate(const Clip& clip)
{
    constexpr int slowest = 10;
    constexpr int fastest = 120;
    constexpr int otherwise = 60;
    // Files round their times, and the length of a frame (0.0333333): the latter adds up.
    constexpr double tolerance = 2e-3;  // frames
    constexpr double drift = 1e-5;
    std::vector<double> times{clip.m_dDuration};
    for (const Channel& channel : clip.m_vecChannels)
    {
        collectTimes(channel.m_vecPositions, times);
        collectTimes(channel.m_vecRotations, times);
        collectTimes(channel.m_vecScales, times);
    }
    for (int rate = slowest; rate <= fastest; ++rate)
    {
        const bool fits =
            std::ranges::all_of(times,
                                [rate](double time)
                                {
                                    const double frame = time * rate;
                                    return std::abs(frame - std::round(frame)) < tolerance + drift * frame;
                                });
        if (fits)
        {
            return rate;
        }
    }
    return otherwise;
}
}  // namespace TW2::convert
