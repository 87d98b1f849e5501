#include "convert/track_reduction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace TW2::convert
{
namespace
{
constexpr int fastestRate = 960;
constexpr unsigned int mostFrames = 32768;                 // frame numbers have 16 bits, of which one is the sign
constexpr std::size_t mostSamples = std::size_t{3} << 20;  // matrices held at once
constexpr unsigned int finest = 4;                         // samples per frame

/// A clip sampled at its frames and between them: `m_uiPerFrame` samples from one frame to the next.
struct Samples
{
    unsigned int m_uiFrames = 0;
    unsigned int m_uiPerFrame = finest;
    std::size_t m_uiCount = 0;
    std::vector<std::vector<Matrixd>> m_vecLocal;  ///< per node, per sample
    std::vector<std::vector<Matrixd>> m_vecWorld;

    [[nodiscard]] std::size_t at(std::size_t frame) const { return frame * m_uiPerFrame; }
};

Samples sampleClip(const Model& model, const Clip& clip, int rate)
{
    const ClipSampler sampler(model, clip);
    const std::size_t nodes = model.m_vecNodes.size();
    Samples samples;
    samples.m_uiFrames = static_cast<unsigned int>(std::ceil(clip.m_dDuration * rate - 1e-3)) + 1;
    while (samples.m_uiPerFrame > 1 && samples.m_uiFrames * samples.m_uiPerFrame * nodes > mostSamples)
    {
        samples.m_uiPerFrame /= 2;
    }
    samples.m_uiCount = samples.at(samples.m_uiFrames - 1) + 1;
    samples.m_vecLocal.assign(nodes, std::vector<Matrixd>(samples.m_uiCount));
    samples.m_vecWorld = samples.m_vecLocal;
    std::vector<Matrixd> local;
    std::vector<Matrixd> world;
    for (std::size_t i = 0; i < samples.m_uiCount; ++i)
    {
        const double seconds = static_cast<double>(i) / (static_cast<double>(samples.m_uiPerFrame) * rate);
        sampler.sampleLocal(seconds, local);
        ClipSampler::composeWorld(model, local, world);
        for (std::size_t node = 0; node < nodes; ++node)
        {
            samples.m_vecLocal[node][i] = local[node];
            samples.m_vecWorld[node][i] = world[node];
        }
    }
    return samples;
}

TrackForm classify(const std::vector<Matrixd>& matrices)
{
    // What counts as unit length and as a right angle is finer than what playback tells apart.
    constexpr double unitTolerance = 5e-5;
    constexpr double angleTolerance = 1e-4;
    TrackForm form = TrackForm::Rigid;
    for (const Matrixd& matrix : matrices)
    {
        double lengths[3];
        for (int row = 0; row < 3; ++row)
        {
            lengths[row] = matrix.getRow(row).length();
            if (std::abs(lengths[row] - 1.0) > unitTolerance)
            {
                form = TrackForm::Scaled;
            }
        }
        if (matrix.determinant() < 0.0)
        {
            form = TrackForm::Scaled;  // a mirrored frame is no rotation
        }
        for (int row = 0; row < 3; ++row)
        {
            const int next = (row + 1) % 3;
            const double product = lengths[row] * lengths[next];
            if (product == 0.0 || std::abs(matrix.getRow(row).dot(matrix.getRow(next))) > angleTolerance * product)
            {
                return TrackForm::General;
            }
        }
    }
    return form;
}

void orthonormalize(Matrixd& m)
{
    const Vector3d x = m.getRow(0).normalized();
    const Vector3d y = (m.getRow(1) - x * m.getRow(1).dot(x)).normalized();
    const Vector3d z = m.getRow(2) - x * m.getRow(2).dot(x);
    m.setRow(0, x);
    m.setRow(1, y);
    m.setRow(2, (z - y * z.dot(y)).normalized());
}

/// Chooses the keys of one node.
class NodeReducer
{
public:
    /// `parent`: what the parent has become, per sample; null for a node without parent.
    NodeReducer(const Samples& samples, std::size_t node, const std::vector<Matrixd>* parent, double reach,
                const Tolerance& tolerance)
        : m_samples(samples),
          m_shouldBe(samples.m_vecWorld[node]),
          m_pParent(parent),
          m_dReach(reach),
          m_limit(tolerance)
    {
    }

    /// The fewest keys found among the values `locals` (one per sample) that keep the node within the tolerance.
    [[nodiscard]] Track reduce(const std::vector<Matrixd>& locals) const
    {
        Track track;
        track.m_eForm = classify(locals);
        track.m_vecKeys.push_back({0, locals[0]});
        if (fits(track.m_eForm, locals, 0, 0, samplesEnd()))
        {
            return track;
        }
        for (std::size_t frame = 0; frame + 1 < m_samples.m_uiFrames;)
        {
            frame = findNext(track.m_eForm, locals, frame);
            track.m_vecKeys.push_back({static_cast<unsigned int>(frame), locals[m_samples.at(frame)]});
        }
        return track;
    }

    /// The node's world matrices as the track plays, per sample, and how far they are off.
    [[nodiscard]] std::vector<Matrixd> play(const Track& track, PoseError& error) const
    {
        std::vector<Matrixd> world(m_samples.m_uiCount);
        std::size_t key = 0;
        for (std::size_t i = 0; i < world.size(); ++i)
        {
            while (key + 1 < track.m_vecKeys.size() && m_samples.at(track.m_vecKeys[key + 1].m_uiFrame) <= i)
            {
                ++key;
            }
            const TrackKey& from = track.m_vecKeys[key];
            const TrackKey& to = track.m_vecKeys[std::min(key + 1, track.m_vecKeys.size() - 1)];
            const std::size_t begin = m_samples.at(from.m_uiFrame);
            const std::size_t end = m_samples.at(to.m_uiFrame);
            const double fraction =
                end > begin ? static_cast<double>(i - begin) / static_cast<double>(end - begin) : 0.0;
            world[i] = toWorld(blendKeys(from.m_matrix, to.m_matrix, fraction, track.m_eForm), i);
            error.add(compare(world[i], m_shouldBe[i], m_dReach));
        }
        return world;
    }

    /// Local matrices that put the node where it should be, whatever its parent has become.
    [[nodiscard]] std::vector<Matrixd> correct(const std::vector<Matrixd>& locals) const
    {
        std::vector<Matrixd> corrected(locals);
        for (std::size_t i = 0; i < corrected.size(); ++i)
        {
            const Matrixd& parent = (*m_pParent)[i];
            if (std::abs(parent.determinant()) > std::numeric_limits<double>::min())
            {
                corrected[i] = m_shouldBe[i] * parent.inverse();
            }
        }
        return corrected;
    }

private:
    [[nodiscard]] std::size_t samplesEnd() const { return m_samples.m_uiCount; }

    [[nodiscard]] Matrixd toWorld(const Matrixd& local, std::size_t sample) const
    {
        return m_pParent ? local * (*m_pParent)[sample] : local;
    }

    /// Whether keys at samples `a` and `b` alone bring every sample from `a` up to `end` within the tolerance.
    [[nodiscard]] bool fits(TrackForm form, const std::vector<Matrixd>& locals, std::size_t a, std::size_t b,
                            std::size_t end) const
    {
        const double length = static_cast<double>(b - a);
        for (std::size_t i = a; i < end; ++i)
        {
            const double fraction = b > a ? static_cast<double>(i - a) / length : 0.0;
            const Matrixd world = toWorld(blendKeys(locals[a], locals[b], fraction, form), i);
            if (!m_limit.allows(world, m_shouldBe[i], m_dReach))
            {
                return false;
            }
        }
        return true;
    }

    /// The last frame to which one straight piece from `frame` reaches; at least the next one.
    [[nodiscard]] std::size_t findNext(TrackForm form, const std::vector<Matrixd>& locals, std::size_t frame) const
    {
        const std::size_t last = m_samples.m_uiFrames - 1;
        const std::size_t from = m_samples.at(frame);
        std::size_t good = frame + 1;
        std::size_t step = 2;
        std::size_t bad = last + 1;
        while (good < last)
        {
            const std::size_t candidate = std::min(frame + step, last);
            if (!fits(form, locals, from, m_samples.at(candidate), m_samples.at(candidate) + 1))
            {
                bad = candidate;
                break;
            }
            good = candidate;
            step *= 2;
        }
        while (good + 1 < bad)
        {
            const std::size_t middle = good + (bad - good) / 2;
            if (fits(form, locals, from, m_samples.at(middle), m_samples.at(middle) + 1))
            {
                good = middle;
            }
            else
            {
                bad = middle;
            }
        }
        return good;
    }

    const Samples& m_samples;
    const std::vector<Matrixd>& m_shouldBe;
    const std::vector<Matrixd>* m_pParent;
    double m_dReach;
    ErrorLimit m_limit;
};

/// The largest difference of the whole pose at two samples.
PoseError comparePoses(const Samples& samples, const std::vector<double>& reach, std::size_t a, std::size_t b)
{
    PoseError error;
    for (std::size_t node = 0; node < reach.size(); ++node)
    {
        error.add(compare(samples.m_vecWorld[node][a], samples.m_vecWorld[node][b], reach[node]));
    }
    return error;
}

/// A clip runs in a circle when its last frame is its first one again, or when the step from its last frame to its
/// first one is no larger than the steps beside it.
Seam findSeam(const Samples& samples, const std::vector<double>& reach, double size)
{
    // Looser than the tolerance: a step of this size at the seam is not seen.
    constexpr double distanceOfSize = 0.01;
    constexpr double degrees = 3.0;
    constexpr double stepsBeside = 1.25;
    if (samples.m_uiFrames < 3)
    {
        return Seam::Open;
    }
    const std::size_t last = samples.at(samples.m_uiFrames - 1);
    const PoseError seam = comparePoses(samples, reach, last, 0);
    if (seam.isWithin({distanceOfSize * size, degrees}))
    {
        return Seam::SameFrame;
    }
    PoseError beside = comparePoses(samples, reach, 0, samples.at(1));
    beside.add(comparePoses(samples, reach, samples.at(samples.m_uiFrames - 2), last));
    return seam.isWithin({stepsBeside * beside.m_dDistance, stepsBeside * beside.m_dDegrees}) ? Seam::NextFrame
                                                                                              : Seam::Open;
}

double measureSize(const Samples& samples)
{
    Vector3d low = samples.m_vecWorld[0][0].getTranslation();
    Vector3d high = low;
    for (const auto& world : samples.m_vecWorld)
    {
        const Vector3d t = world.front().getTranslation();
        low = {std::min(low.x, t.x), std::min(low.y, t.y), std::min(low.z, t.z)};
        high = {std::max(high.x, t.x), std::max(high.y, t.y), std::max(high.z, t.z)};
    }
    return (high - low).length();
}

/// How far the composed pose is off between the frames when every frame has its keys.
PoseError measureFrames(const Model& model, const Samples& samples, const std::vector<double>& reach)
{
    PoseError error;
    std::vector<std::vector<Matrixd>> played(reach.size());
    for (std::size_t node = 0; node < reach.size(); ++node)
    {
        const std::vector<Matrixd>& locals = samples.m_vecLocal[node];
        const TrackForm form = classify(locals);
        const int parent = model.m_vecNodes[node].m_iParent;
        played[node].resize(samples.m_uiCount);
        for (std::size_t i = 0; i < samples.m_uiCount; ++i)
        {
            const std::size_t frame = i / samples.m_uiPerFrame;
            const std::size_t next = std::min<std::size_t>(frame + 1, samples.m_uiFrames - 1);
            const double fraction =
                static_cast<double>(i % samples.m_uiPerFrame) / static_cast<double>(samples.m_uiPerFrame);
            const Matrixd local = blendKeys(locals[samples.at(frame)], locals[samples.at(next)], fraction, form);
            played[node][i] = parent < 0 ? local : local * played[static_cast<std::size_t>(parent)][i];
            error.add(compare(played[node][i], samples.m_vecWorld[node][i], reach[node]));
        }
    }
    return error;
}

ReducedClip reduceSamples(const Model& model, const ClipSampler& sampler, const Samples& samples,
                          const Tolerance& tolerance, const std::vector<double>& reach, int rate)
{
    const std::size_t nodes = model.m_vecNodes.size();
    std::vector<bool> hasChildren(nodes, false);
    for (const Node& node : model.m_vecNodes)
    {
        if (node.m_iParent >= 0)
        {
            hasChildren[static_cast<std::size_t>(node.m_iParent)] = true;
        }
    }

    ReducedClip reduced;
    reduced.m_iFrameRate = rate;
    reduced.m_uiFrames = samples.m_uiFrames;
    reduced.m_eSeam = findSeam(samples, reach, std::max(measureSize(samples), tolerance.m_dDistance));
    std::vector<std::vector<Matrixd>> played(nodes);
    for (std::size_t node = 0; node < nodes; ++node)
    {
        // A node leaves half of what is allowed to those below it.
        const double share = hasChildren[node] ? 0.5 : 0.95;
        const int parent = model.m_vecNodes[node].m_iParent;
        const std::vector<Matrixd>* parentWorld = parent < 0 ? nullptr : &played[static_cast<std::size_t>(parent)];
        const NodeReducer reducer(samples, node, parentWorld, reach[node],
                                  {share * tolerance.m_dDistance, share * tolerance.m_dDegrees});
        const std::vector<Matrixd>& locals = samples.m_vecLocal[node];
        Track track = reducer.reduce(locals);
        PoseError error;
        std::vector<Matrixd> world = reducer.play(track, error);
        if (parentWorld && track.m_vecKeys.size() > 1)
        {
            Track corrected = reducer.reduce(reducer.correct(locals));
            PoseError correctedError;
            std::vector<Matrixd> correctedWorld = reducer.play(corrected, correctedError);
            const bool better = error.isWithin(tolerance) == correctedError.isWithin(tolerance)
                                    ? corrected.m_vecKeys.size() < track.m_vecKeys.size()
                                    : correctedError.isWithin(tolerance);
            if (better)
            {
                track = std::move(corrected);
                error = correctedError;
                world = std::move(correctedWorld);
            }
        }
        played[node] = std::move(world);
        reduced.m_error.add(error);
        reduced.m_uiSampledKeys += sampler.isMoved(node) ? samples.m_uiFrames : 0;
        reduced.m_vecTracks.push_back(std::move(track));
    }
    return reduced;
}
}  // namespace

Matrixd blendKeys(const Matrixd& a, const Matrixd& b, double fraction, TrackForm form)
{
    Matrixd result = b;
    result -= a;
    result *= fraction;
    result += a;
    if (form == TrackForm::General)
    {
        return result;
    }
    orthonormalize(result);
    if (form == TrackForm::Scaled)
    {
        for (int row = 0; row < 3; ++row)
        {
            const double length = a.getRow(row).length() * (1.0 - fraction) + b.getRow(row).length() * fraction;
            result.setRow(row, result.getRow(row) * length);
        }
    }
    return result;
}

ReducedClip reduceClip(const Model& model, const Clip& clip, const Tolerance& tolerance, int frameRate)
{
    const std::vector<double> reach = measureReach(model);
    const int wanted = frameRate == 0 ? chooseFrameRate(clip) : frameRate;
    const int fastest = clip.m_dDuration > 0.0
                            ? std::min(fastestRate, static_cast<int>((mostFrames - 1) / clip.m_dDuration))
                            : fastestRate;
    const int rate = std::clamp(wanted, 1, std::max(fastest, 1));
    // Inner nodes may use half of what is allowed: that much has to be reached with all keys in place.
    const Tolerance half{tolerance.m_dDistance * 0.5, tolerance.m_dDegrees * 0.5};
    const ClipSampler sampler(model, clip);
    Samples samples = sampleClip(model, clip, rate);
    int factor = 1;
    const int largest = fastest / rate;
    while (frameRate == 0 && factor < largest && !measureFrames(model, samples, reach).isWithin(half))
    {
        factor = std::min(factor * 2, largest);
        samples = sampleClip(model, clip, rate * factor);
    }
    ReducedClip reduced = reduceSamples(model, sampler, samples, tolerance, reach, rate * factor);
    reduced.m_uiSampledKeys /= static_cast<std::size_t>(factor);
    return reduced;
}
}  // namespace TW2::convert
