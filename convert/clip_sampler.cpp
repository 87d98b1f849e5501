#include "convert/clip_sampler.h"

#include "convert/key_search.h"
#include "convert/node_motion.h"
#include "convert/rotation.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
/// The keys around a time, and how far the time lies between them.
struct Span
{
    std::size_t m_uiFrom;
    std::size_t m_uiTo;
    double m_dSeconds;  ///< from one key to the other
    double m_dFraction;
};

/// `times` is not empty.
Span findSpan(const std::vector<double>& times, double seconds)
{
    const std::size_t above = findKeyBehind(times, seconds);
    if (above == 0 || above == times.size())
    {
        const std::size_t only = above == 0 ? 0 : above - 1;
        return {only, only, 0.0, 0.0};
    }
    const double length = times[above] - times[above - 1];
    return {above - 1, above, length, (seconds - times[above - 1]) / length};
}

Quaternion operator+(const Quaternion& a, const Quaternion& b)
{
    return {a.w + b.w, a.x + b.x, a.y + b.y, a.z + b.z};
}

Quaternion operator*(const Quaternion& q, double factor)
{
    return {q.w * factor, q.x * factor, q.y * factor, q.z * factor};
}

/// The cubic of Hermite through two keys with their slopes.
template <typename T>
T sampleCubic(const Curve<T>& curve, const Span& span)
{
    const double u = span.m_dFraction;
    const double u2 = u * u;
    const double u3 = u2 * u;
    return curve.m_vecValues[span.m_uiFrom] * (2.0 * u3 - 3.0 * u2 + 1.0) +
           curve.m_vecLeaving[span.m_uiFrom] * ((u3 - 2.0 * u2 + u) * span.m_dSeconds) +
           curve.m_vecValues[span.m_uiTo] * (3.0 * u2 - 2.0 * u3) +
           curve.m_vecArriving[span.m_uiTo] * ((u3 - u2) * span.m_dSeconds);
}

Vector3d sampleLinear(const Vector3d& from, const Vector3d& to, double fraction)
{
    return from + (to - from) * fraction;
}

/// Spherical, the shorter way round.
Quaternion sampleLinear(const Quaternion& unitFrom, const Quaternion& unitTo, double fraction)
{
    const Quaternion from = normalized(unitFrom);
    const Quaternion to = normalized(unitTo);
    double cosine = from.w * to.w + from.x * to.x + from.y * to.y + from.z * to.z;
    const double sign = cosine < 0.0 ? -1.0 : 1.0;
    cosine = std::min(cosine * sign, 1.0);
    double a = 1.0 - fraction;
    double b = fraction;
    if (cosine < 1.0 - 1e-9)
    {
        const double angle = std::acos(cosine);
        a = std::sin(a * angle) / std::sin(angle);
        b = std::sin(b * angle) / std::sin(angle);
    }
    return from * a + to * (b * sign);
}

template <typename T>
T sampleCurve(const Curve<T>& curve, double seconds)
{
    const Span span = findSpan(curve.m_vecTimes, seconds);
    if (span.m_uiFrom == span.m_uiTo || curve.m_eInterpolation == Interpolation::Step)
    {
        return curve.m_vecValues[span.m_uiFrom];
    }
    return curve.m_eInterpolation == Interpolation::Cubic
               ? sampleCubic(curve, span)
               : sampleLinear(curve.m_vecValues[span.m_uiFrom], curve.m_vecValues[span.m_uiTo], span.m_dFraction);
}

/// Scale, rotation and translation of a matrix without shear.
struct Parts
{
    Vector3d m_vScale;
    Matrixd m_rotation;
};

Parts decompose(const Matrixd& matrix)
{
    Parts parts;
    parts.m_vScale = {matrix.getRow(0).length(), matrix.getRow(1).length(), matrix.getRow(2).length()};
    if (matrix.determinant() < 0.0)
    {
        parts.m_vScale.x = -parts.m_vScale.x;
    }
    const double scales[3]{parts.m_vScale.x, parts.m_vScale.y, parts.m_vScale.z};
    for (int row = 0; row < 3; ++row)
    {
        if (scales[row] != 0.0)  // where nothing is left of an axis, it is the one of a node that is not turned
        {
            parts.m_rotation.setRow(row, matrix.getRow(row) * (1.0 / scales[row]));
        }
    }
    return parts;
}

bool isSame(const Vector3d& a, const Vector3d& b)
{
    return a == b;
}

bool isSame(const Quaternion& a, const Quaternion& b)
{
    return a.w == b.w && a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Steps to another value, and keys of one time.
template <typename T>
void addJumps(const Curve<T>& curve, std::vector<double>& jumps)
{
    for (std::size_t i = 1; i < curve.m_vecTimes.size(); ++i)
    {
        const bool atOnce = curve.m_eInterpolation == Interpolation::Step ||
                            curve.m_vecTimes[i] - curve.m_vecTimes[i - 1] < ClipSampler::jumpTime;
        if (atOnce && !isSame(curve.m_vecValues[i], curve.m_vecValues[i - 1]))
        {
            jumps.push_back(curve.m_vecTimes[i]);
        }
    }
}
}  // namespace

Matrixd evaluate(const Channel& channel, const Matrixd& rest, double seconds)
{
    if (channel.m_pMotion)
    {
        return channel.m_pMotion->at(seconds);
    }
    Matrixd result = rest;
    if (!channel.m_rotations.isEmpty() || !channel.m_scales.isEmpty())
    {
        const bool partly = channel.m_rotations.isEmpty() || channel.m_scales.isEmpty();
        const Parts parts = partly ? decompose(rest) : Parts();
        const Vector3d scale = channel.m_scales.isEmpty() ? parts.m_vScale : sampleCurve(channel.m_scales, seconds);
        result = channel.m_rotations.isEmpty() ? parts.m_rotation
                                               : toMatrix(normalized(sampleCurve(channel.m_rotations, seconds)));
        result.setRow(0, result.getRow(0) * scale.x);
        result.setRow(1, result.getRow(1) * scale.y);
        result.setRow(2, result.getRow(2) * scale.z);
    }
    result.setTranslation(channel.m_positions.isEmpty() ? rest.getTranslation()
                                                        : sampleCurve(channel.m_positions, seconds));
    return result;
}

ClipSampler::ClipSampler(const Model& model, const Clip& clip)
    : m_model(model),
      m_root(clip.m_root.value_or(model.m_root)),
      m_dStart(clip.m_dStart),
      m_vecChannels(model.m_vecNodes.size(), nullptr)
{
    for (const Channel& channel : clip.m_vecChannels)
    {
        m_vecChannels[static_cast<std::size_t>(channel.m_iNode)] = &channel;
    }
}

Matrixd ClipSampler::sample(std::size_t node, double seconds) const
{
    if (!isMoved(node))
    {
        return node < m_model.m_vecNodes.size() ? m_model.m_vecNodes[node].m_local : Matrixd();
    }
    const Channel& channel = *m_vecChannels[node];
    const bool top = m_model.m_vecNodes[node].m_iParent < 0;
    const double time = m_dStart + seconds;
    const Matrixd local = evaluate(channel, m_model.getRestInFile(node), time);
    return top ? local * m_root : local;
}

void addJumps(const Channel& channel, std::vector<double>& jumps)
{
    addJumps(channel.m_positions, jumps);
    addJumps(channel.m_rotations, jumps);
    addJumps(channel.m_scales, jumps);
    if (channel.m_pMotion)
    {
        channel.m_pMotion->addJumps(jumps);
    }
}

std::vector<double> ClipSampler::findJumps(std::size_t node) const
{
    std::vector<double> jumps;
    if (isMoved(node))
    {
        addJumps(*m_vecChannels[node], jumps);
        for (double& jump : jumps)
        {
            jump -= m_dStart;
        }
        std::sort(jumps.begin(), jumps.end());
        jumps.erase(std::unique(jumps.begin(), jumps.end()), jumps.end());
    }
    return jumps;
}

void addKeyTimes(const Channel& channel, std::vector<double>& times)
{
    for (const std::vector<double>* keys :
         {&channel.m_positions.m_vecTimes, &channel.m_rotations.m_vecTimes, &channel.m_scales.m_vecTimes})
    {
        times.insert(times.end(), keys->begin(), keys->end());
    }
    if (channel.m_pMotion)
    {
        channel.m_pMotion->addTimes(times);
    }
}

double getFrameTolerance(double frame) noexcept
{
    // The length of a frame is rounded as well (0.0333333), which adds up.
    constexpr double tolerance = 2e-3;
    constexpr double drift = 1e-5;
    return tolerance + drift * frame;
}

int chooseFrameRate(const Clip& clip)
{
    constexpr int slowest = 10;
    constexpr int fastest = 120;
    constexpr int otherwise = 60;
    std::vector<double> times{clip.m_dStart + clip.m_dDuration};
    for (const Channel& channel : clip.m_vecChannels)
    {
        addKeyTimes(channel, times);
    }
    for (double& time : times)
    {
        time -= clip.m_dStart;
    }
    std::erase_if(times, [&clip](double time) { return time < 0.0 || time > clip.m_dDuration + 1e-6; });
    for (int rate = slowest; rate <= fastest; ++rate)
    {
        const bool fits = std::all_of(times.begin(), times.end(),
                                      [rate](double time)
                                      {
                                          const double frame = time * rate;
                                          return std::abs(frame - std::round(frame)) < getFrameTolerance(frame);
                                      });
        if (fits)
        {
            return rate;
        }
    }
    return otherwise;
}
}  // namespace TW2::convert
