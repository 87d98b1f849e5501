#include "convert/track_reduction.h"

#include "convert/clip_sampler.h"
#include "convert/joint_course.h"
#include "convert/timeline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>

namespace TW2::convert
{
namespace
{
constexpr int fastestRate = 960;
constexpr int mostFactor = 8;                               // from one rate to the next that is tried
constexpr unsigned int mostFrames = 32768;                  // frame numbers have 16 bits, of which one is the sign
constexpr std::size_t mostMatrices = std::size_t{1} << 19;  // held at once

/// The longest way from a joint without parent to a joint without children.
std::size_t measureDepth(const Skeleton& skeleton)
{
    std::size_t deepest = 1;
    std::vector<std::size_t> depth;
    for (const Joint& joint : skeleton.m_vecJoints)
    {
        depth.push_back(joint.m_iParent < 0 ? 1 : depth[static_cast<std::size_t>(joint.m_iParent)] + 1);
        deepest = std::max(deepest, depth.back());
    }
    return deepest;
}

/// How often a frame is looked at in which straight pieces are off by `bend` of what is wanted: often enough that the
/// largest difference is missed by an eighth part of that, at most.
unsigned int chooseSamples(double bend)
{
    return bend <= 1.0 / 32.0 ? 1 : bend <= 1.0 / 2.0 ? 2 : Timeline::finest;
}

/// Chooses the keys of one joint.
class JointReducer
{
public:
    /// `parent`: what the parent has become, per sample; null for a joint without parent.
    JointReducer(const Timeline& timeline, const Course& course, const Matrices* parent, double reach,
                 const Tolerance& tolerance)
        : m_timeline(timeline), m_course(course), m_pParent(parent), m_dReach(reach), m_limit(tolerance)
    {
    }

    /// The fewest keys found among the values `locals` (one per sample) that keep the joint within the tolerance; any
    /// `most` keys or more when so many are needed.
    [[nodiscard]] Track reduce(const Matrices& locals, std::size_t most) const
    {
        Track track;
        track.m_eForm = findForm(locals, m_course.m_vecJumps);
        track.m_vecKeys.push_back({m_timeline.getFrame(0), locals[0]});
        const std::size_t last = m_timeline.getFrameCount() - 1;
        const Piece whole{track.m_eForm, 0, locals[0], last, locals[0], false};
        if (m_course.m_vecJumps.empty() && fits(whole))
        {
            return track;
        }
        std::size_t frame = 0;
        for (const Jump& jump : m_course.m_vecJumps)
        {
            addPieces(track, locals, frame, jump.m_uiFrame, &jump.m_before, most);
            frame = jump.m_uiFrame;
            track.m_vecKeys.push_back({m_timeline.getFrame(frame), locals[m_timeline.at(frame)]});
        }
        addPieces(track, locals, frame, last, nullptr, most);
        return track;
    }

    /// The joint's world matrices as the track plays, per sample, and how far they are off.
    [[nodiscard]] Matrices play(const Track& track, PoseError& error) const
    {
        const bool still = track.m_vecKeys.size() == 1 && isAroundStill();
        std::vector<Matrixd> world(still ? 1 : m_timeline.getCount());
        const Matrixd& end = track.m_vecKeys.back().m_matrix;
        const Matrixd held = KeyBlend(end, end, track.m_eForm).at(0.0);
        PoseDifference difference;
        std::size_t key = 0;
        std::optional<KeyBlend> blend;  // from that key on
        for (std::size_t i = 0; i < world.size(); ++i)
        {
            while (key + 1 < track.m_vecKeys.size() && m_timeline.isFrom(i, track.m_vecKeys[key + 1].m_uiFrame))
            {
                ++key;
                blend.reset();
            }
            if (key + 1 == track.m_vecKeys.size())
            {
                world[i] = toWorld(held, i);
            }
            else
            {
                const TrackKey& from = track.m_vecKeys[key];
                const TrackKey& to = track.m_vecKeys[key + 1];
                if (!blend)
                {
                    blend.emplace(from.m_matrix, to.m_matrix, track.m_eForm);
                }
                world[i] = toWorld(blend->at(m_timeline.getFraction(i, from.m_uiFrame, to.m_uiFrame)), i);
            }
            difference.add(world[i], m_course.m_world[i], m_dReach);
        }
        error.add(difference.get());
        return still ? Matrices(world.front()) : Matrices(std::move(world));
    }

    /// Whether there is a parent that may have become something else.
    [[nodiscard]] bool hasMovedParent() const { return m_pParent && !m_pParent->isStill(); }

    /// Local matrices that put the joint where it should be, whatever its parent has become.
    [[nodiscard]] Matrices correct(const Matrices& locals) const
    {
        std::vector<Matrixd> corrected(m_timeline.getCount());
        for (std::size_t i = 0; i < corrected.size(); ++i)
        {
            const Matrixd& parent = (*m_pParent)[i];
            const bool flat = std::abs(parent.determinant()) <= std::numeric_limits<double>::min();
            corrected[i] = flat ? locals[i] : m_course.m_world[i] * parent.inverse();
        }
        return Matrices(std::move(corrected));
    }

private:
    /// Two keys, and whether the second one's frame already belongs to what follows it.
    struct Piece
    {
        TrackForm m_eForm;
        std::size_t m_uiFrom;
        const Matrixd& m_from;
        std::size_t m_uiTo;
        const Matrixd& m_to;
        bool m_bJumps;
    };

    /// Whether neither where the joint should be nor what its parent has become changes.
    [[nodiscard]] bool isAroundStill() const
    {
        return m_course.m_world.isStill() && (!m_pParent || m_pParent->isStill());
    }

    [[nodiscard]] Matrixd toWorld(const Matrixd& local, std::size_t sample) const
    {
        return m_pParent ? local * (*m_pParent)[sample] : local;
    }

    /// Whether two keys alone bring every sample between them within the tolerance.
    [[nodiscard]] bool fits(const Piece& piece) const
    {
        const std::size_t begin = m_timeline.at(piece.m_uiFrom);
        const std::size_t last = m_timeline.at(piece.m_uiTo);
        const bool stays = &piece.m_from == &piece.m_to;
        const KeyBlend blend(piece.m_from, piece.m_to, piece.m_eForm);
        const Matrixd held = stays ? blend.at(0.0) : Matrixd();
        const unsigned int from = m_timeline.getFrame(piece.m_uiFrom);
        const unsigned int to = m_timeline.getFrame(piece.m_uiTo);
        const auto fitsAt = [&](std::size_t sample)
        {
            const Matrixd local = stays ? held : blend.at(m_timeline.getFraction(sample, from, to));
            return m_limit.allows(toWorld(local, sample), m_course.m_world[sample], m_dReach);
        };
        const std::size_t end = stays && isAroundStill() ? begin + 1 : piece.m_bJumps ? last : last + 1;
        // What does not fit mostly shows it in the middle.
        const std::size_t count = end - begin;
        for (std::size_t eighth = 1; count > 16 && eighth < 8; ++eighth)
        {
            if (!fitsAt(begin + count * eighth / 8))
            {
                return false;
            }
        }
        for (std::size_t i = begin; i < end; ++i)
        {
            if (!fitsAt(i))
            {
                return false;
            }
        }
        return true;
    }

    /// Adds the keys that follow on the track's last one, from one frame up to another, while they are fewer than
    /// `most`. `before`: what its value is before it jumps there; null when it does not.
    void addPieces(Track& track, const Matrices& locals, std::size_t frame, std::size_t end, const Matrixd* before,
                   std::size_t most) const
    {
        while (frame < end && track.m_vecKeys.size() < most)
        {
            frame = findNext(track.m_eForm, locals, frame, end, before);
            const Matrixd& value = frame == end && before ? *before : locals[m_timeline.at(frame)];
            track.m_vecKeys.push_back({m_timeline.getFrame(frame), value});
        }
    }

    /// The last frame to which one straight piece from `frame` reaches; at least the next one.
    [[nodiscard]] std::size_t findNext(TrackForm form, const Matrices& locals, std::size_t frame, std::size_t last,
                                       const Matrixd* before) const
    {
        const auto reaches = [&](std::size_t to)
        {
            const bool jumps = to == last && before;
            return fits(
                {form, frame, locals[m_timeline.at(frame)], to, jumps ? *before : locals[m_timeline.at(to)], jumps});
        };
        std::size_t good = frame + 1;
        std::size_t step = 2;
        std::size_t bad = last + 1;
        while (good < last)
        {
            const std::size_t candidate = std::min(frame + step, last);
            if (!reaches(candidate))
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
            (reaches(middle) ? good : bad) = middle;
        }
        return good;
    }

    const Timeline& m_timeline;
    const Course& m_course;
    const Matrices* m_pParent;
    double m_dReach;
    ErrorLimit m_limit;
};

/// Goes through a skeleton, a limb at a time, so that only the courses from the root to one joint are in memory, for
/// each thread that helps.
class Reduction
{
public:
    Reduction(const Model& model, const Skeleton& skeleton, const Clip& clip, SpareThreads& threads)
        : m_clip(clip),
          m_threads(threads),
          m_sampler(model, clip),
          m_reach(measureReach(model, skeleton)),
          m_uiDepth(measureDepth(skeleton)),
          m_vecChildren(skeleton.m_vecJoints.size())
    {
        for (std::size_t i = 0; i < skeleton.m_vecJoints.size(); ++i)
        {
            const int parent = skeleton.m_vecJoints[i].m_iParent;
            (parent < 0 ? m_vecRoots : m_vecChildren[static_cast<std::size_t>(parent)]).push_back(i);
            m_vecJumps.push_back(m_sampler.findJumps(i));
        }
    }

    /// How far the composed pose is off between the frames of a rate when every frame has its keys.
    ///
    /// What had no jumps and was within half of `wanted` at a lower rate is left out: parts of a piece are at most
    /// twice as far off as the whole. `rate` is a multiple of that of the call before.
    ///
    /// What no frame of the rate can say, as something jumps between two, is not part of the result.
    [[nodiscard]] PoseError measureFrames(int rate, const Tolerance& wanted)
    {
        const Stretch whole{0, getLastFrame(rate), rate, 0};
        const std::vector<Measured> before =
            m_vecStretches.empty() ? split(whole, rate) : std::exchange(m_vecStretches, {});
        std::vector<Measurement> measured(before.size());
        m_threads.share(before.size(),
                        [&](std::size_t i)
                        {
                            if (before[i].m_dBend > settled)
                            {
                                measureParts(before[i].m_stretch, chooseFiner(before[i], rate), rate, wanted,
                                             measured[i]);
                            }
                            else
                            {
                                measured[i].m_vecStretches = {before[i]};
                            }
                        });
        m_bJumpsBetween = false;
        PoseError error;
        for (const Measurement& one : measured)
        {
            error.add(one.m_error);
            m_bJumpsBetween = m_bJumpsBetween || one.m_bJumpsBetween;
            m_vecStretches.insert(m_vecStretches.end(), one.m_vecStretches.begin(), one.m_vecStretches.end());
        }
        return error;
    }

    /// Whether something jumps between two frames of the rate that was measured last.
    [[nodiscard]] bool jumpsBetweenFrames() const noexcept { return m_bJumpsBetween; }

    /// What has been measured and was good enough at a lower rate gets keys on frames of that rate only.
    [[nodiscard]] ReducedClip reduce(int rate, const Tolerance& tolerance)
    {
        std::vector<Stretch> stretches;
        for (const Measured& stretch : m_vecStretches)
        {
            stretches.push_back(stretch.m_stretch);
        }
        const unsigned int last = getLastFrame(rate);
        if (stretches.empty())
        {
            stretches.push_back({0, last, rate, chooseSamplesPerFrame(rate)});
        }
        // What a joint should be and what it has become of all above one joint, and what is tried for that one.
        const std::size_t courses = 2 * m_uiDepth + 4;
        const Timeline timeline = makeTimeline(rate, last, stretches, mostMatrices / courses);
        ReducedClip reduced;
        reduced.m_iFrameRate = rate;
        reduced.m_uiFrames = last + 1;
        reduced.m_vecLookedAt = timeline.getFrames();
        reduced.m_vecTracks.resize(m_vecChildren.size());
        std::mutex adding;
        const auto reduceJoint = [&](std::size_t joint, const Course& course, const Matrices* parent)
        {
            // A joint leaves half of what is allowed to those below it, the last ones what is missed between samples.
            const double share = m_vecChildren[joint].empty() ? 0.93 : 0.5;
            const JointReducer reducer(timeline, course, parent, m_reach[joint],
                                       {share * tolerance.m_dDistance, share * tolerance.m_dDegrees});
            Track& track = reduced.m_vecTracks[joint];
            PoseError error;
            Matrices world = chooseTrack(reducer, course, tolerance, track, error);
            const std::lock_guard lock(adding);
            reduced.m_error.add(error);
            reduced.m_uiSampledKeys += course.m_bMoved ? reduced.m_uiFrames + course.m_vecJumps.size() : 1;
            return world;
        };
        visit(timeline, m_vecRoots, nullptr, nullptr, reduceJoint);
        return reduced;
    }

private:
    static constexpr double settled = 0.5;

    struct Measured
    {
        Stretch m_stretch;
        double m_dBend;  ///< how far its straight pieces are off, in parts of what is wanted; infinite where it jumps
    };

    /// The lowest multiple of a stretch's rate that is likely to settle it: twice as many frames make what bends a
    /// quarter as wrong. At most `fastest`.
    [[nodiscard]] static int chooseFiner(const Measured& measured, int fastest)
    {
        int factor = 2;
        while (measured.m_stretch.m_iRate * factor < fastest &&
               measured.m_dBend > settled * static_cast<double>(factor) * static_cast<double>(factor))
        {
            factor *= 2;
        }
        return std::min(measured.m_stretch.m_iRate * factor, fastest);
    }

    /// What comes of measuring a stretch.
    struct Measurement
    {
        PoseError m_error;
        bool m_bJumpsBetween = false;
        std::vector<Measured> m_vecStretches;
    };

    /// The parts of a stretch that are measured at once, not measured yet.
    [[nodiscard]] std::vector<Measured> split(const Stretch& stretch, int rate) const
    {
        constexpr unsigned int framesAtOnce = 16;
        const auto factor = static_cast<unsigned int>(rate / stretch.m_iRate);
        const unsigned int end = std::min(stretch.m_uiEnd * factor, getLastFrame(rate));
        std::vector<Measured> parts;
        for (unsigned int first = stretch.m_uiFirst * factor; first < end; first += framesAtOnce)
        {
            parts.push_back({{first, std::min(first + framesAtOnce, end), rate, chooseSamplesPerFrame(rate)},
                             std::numeric_limits<double>::infinity()});
        }
        return parts;
    }

    /// Measures a stretch at `rate`, and what is not settled by that at higher ones up to `fastest`.
    void measureParts(const Stretch& stretch, int rate, int fastest, const Tolerance& wanted,
                      Measurement& measurement) const
    {
        for (Measured& part : split(stretch, rate))
        {
            Course::Jumps jumps;
            const PoseError own = measureStretch(part.m_stretch, jumps);
            part.m_dBend = jumps.m_bOnFrames || jumps.m_bBetween
                               ? std::numeric_limits<double>::infinity()
                               : std::max(own.m_dDistance / wanted.m_dDistance, own.m_dDegrees / wanted.m_dDegrees);
            if (part.m_dBend > settled && rate < fastest)
            {
                measureParts(part.m_stretch, chooseFiner(part, fastest), fastest, wanted, measurement);
                continue;
            }
            measurement.m_bJumpsBetween = measurement.m_bJumpsBetween || jumps.m_bBetween;
            measurement.m_error.add(jumps.m_bBetween ? PoseError() : own);
            part.m_stretch.m_uiPerFrame = std::min(part.m_stretch.m_uiPerFrame, chooseSamples(part.m_dBend));
            measurement.m_vecStretches.push_back(part);
        }
    }

    [[nodiscard]] unsigned int getLastFrame(int rate) const
    {
        return static_cast<unsigned int>(std::ceil(m_clip.m_dDuration * rate - 1e-3));
    }

    /// `jumps`: where any joint does.
    [[nodiscard]] PoseError measureStretch(const Stretch& stretch, Course::Jumps& jumps) const
    {
        Timeline timeline(stretch.m_iRate);
        timeline.add(stretch.m_uiFirst, stretch.m_uiEnd, 1, stretch.m_uiPerFrame);
        PoseError error;
        std::mutex adding;
        const auto playEveryFrame = [&](std::size_t joint, const Course& course, const Matrices* parent)
        {
            Track track;
            track.m_eForm = findForm(course.m_local, course.m_vecJumps);
            auto jump = course.m_vecJumps.begin();
            for (std::size_t frame = 0; frame < (course.m_local.isStill() ? 1 : timeline.getFrameCount()); ++frame)
            {
                const unsigned int number = timeline.getFrame(frame);
                if (jump != course.m_vecJumps.end() && jump->m_uiFrame == frame)
                {
                    track.m_vecKeys.push_back({number, jump->m_before});
                    ++jump;
                }
                track.m_vecKeys.push_back({number, course.m_local[timeline.at(frame)]});
            }
            PoseError own;
            Matrices world = JointReducer(timeline, course, parent, m_reach[joint], {}).play(track, own);
            const std::lock_guard lock(adding);
            error.add(own);
            jumps.m_bOnFrames |= course.m_jumps.m_bOnFrames;
            jumps.m_bBetween |= course.m_jumps.m_bBetween;
            return world;
        };
        visit(timeline, m_vecRoots, nullptr, nullptr, playEveryFrame);
        return error;
    }

    /// Calls `play`(joint, course, what the parent has become) for each joint, parents first; it returns what the joint
    /// has become. Limbs are visited side by side where there are threads.
    template <typename Play>
    void visit(const Timeline& timeline, const std::vector<std::size_t>& joints, const Matrices* parentWorld,
               const Matrices* parentPlayed, const Play& play) const
    {
        m_threads.share(joints.size(),
                        [&](std::size_t i)
                        {
                            const std::size_t joint = joints[i];
                            Course course = sampleCourse(m_sampler, timeline, joint, m_vecJumps[joint], parentWorld);
                            const Matrices played = play(joint, course, parentPlayed);
                            course.m_local = {};
                            visit(timeline, m_vecChildren[joint], &course.m_world, &played, play);
                        });
    }

    /// Of the joint's own values, and of values that make up for what its parents are off, those that need fewer keys.
    static Matrices chooseTrack(const JointReducer& reducer, const Course& course, const Tolerance& tolerance,
                                Track& track, PoseError& error)
    {
        if (!course.m_bMoved)
        {
            track.m_eForm = findForm(course.m_local, {});
            track.m_vecKeys = {{0, course.m_local[0]}};
            return reducer.play(track, error);
        }
        track = reducer.reduce(course.m_local, std::numeric_limits<std::size_t>::max());
        Matrices world = reducer.play(track, error);
        if (!reducer.hasMovedParent() || track.m_vecKeys.size() == 1 || !course.m_vecJumps.empty())
        {
            return world;
        }
        const bool within = error.isWithin(tolerance);
        const std::size_t most = within ? track.m_vecKeys.size() : std::numeric_limits<std::size_t>::max();
        Track corrected = reducer.reduce(reducer.correct(course.m_local), most);
        if (corrected.m_vecKeys.size() >= most)
        {
            return world;
        }
        PoseError correctedError;
        Matrices correctedWorld = reducer.play(corrected, correctedError);
        const bool better = within == correctedError.isWithin(tolerance)
                                ? corrected.m_vecKeys.size() < track.m_vecKeys.size()
                                : !within;
        if (better)
        {
            track = std::move(corrected);
            error = correctedError;
            world = std::move(correctedWorld);
        }
        return world;
    }

    const Clip& m_clip;
    SpareThreads& m_threads;
    ClipSampler m_sampler;
    std::vector<double> m_reach;
    std::size_t m_uiDepth;
    std::vector<std::size_t> m_vecRoots;
    std::vector<std::vector<std::size_t>> m_vecChildren;
    std::vector<std::vector<double>> m_vecJumps;  ///< per joint, seconds
    std::vector<Measured> m_vecStretches;         ///< of the whole clip, once it is measured
    bool m_bJumpsBetween = false;
};
/// How many times as many frames make what bends by so much less wrong, as a power of two: at least two.
int estimateFactor(const PoseError& error, const Tolerance& wanted)
{
    const double ratio = std::max(error.m_dDistance / wanted.m_dDistance, error.m_dDegrees / wanted.m_dDegrees);
    int factor = 2;
    for (; factor < mostFactor && factor * factor * 2 < ratio; factor *= 2)
    {
    }
    return factor;
}
}  // namespace

ReducedClip reduceClip(const Model& model, const Skeleton& skeleton, const Clip& clip, const Tolerance& tolerance,
                       int frameRate, SpareThreads& threads)
{
    // Twice as many frames make what bends a quarter as wrong, what has a corner half as wrong, and do not help where
    // the clip jumps beside a frame.
    constexpr double helps = 0.95;
    constexpr int mostFailures = 2;  // a corner may lie in the middle of a frame, and of a quarter of one
    const int wanted = frameRate == 0 ? chooseFrameRate(clip) : frameRate;
    const int fastest = clip.m_dDuration > 0.0
                            ? std::min(fastestRate, static_cast<int>((mostFrames - 1) / clip.m_dDuration))
                            : fastestRate;
    int rate = std::clamp(wanted, 1, std::max(fastest, 1));
    // Inner joints may use half of what is allowed: that much has to be reached with all keys in place.
    const Tolerance half{tolerance.m_dDistance * 0.5, tolerance.m_dDegrees * 0.5};
    Reduction reduction(model, skeleton, clip, threads);
    if (frameRate == 0)
    {
        PoseError error = reduction.measureFrames(rate, half);
        int failures = 0;
        for (int tried = rate; (!error.isWithin(half) || reduction.jumpsBetweenFrames()) && failures < mostFailures;)
        {
            // The shorter the frames, the sooner a jump between two is over.
            const bool jumps = reduction.jumpsBetweenFrames();
            int factor = failures > 0 ? 2 : jumps ? mostFactor : estimateFactor(error, half);
            for (; factor > 2 && tried * factor > fastest; factor /= 2)
            {
            }
            tried *= factor;
            if (tried > fastest)
            {
                break;
            }
            const PoseError finer = reduction.measureFrames(tried, half);
            const bool better =
                jumps || (error.m_dDistance > half.m_dDistance && finer.m_dDistance < helps * error.m_dDistance) ||
                (error.m_dDegrees > half.m_dDegrees && finer.m_dDegrees < helps * error.m_dDegrees);
            failures = better ? 0 : failures + 1;
            rate = better ? tried : rate;
            error = better ? finer : error;
        }
    }
    ReducedClip reduced = reduction.reduce(rate, tolerance);
    reduced.m_eSeam = findSeam(model, skeleton, clip, reduced.m_uiFrames, reduced.m_iFrameRate, tolerance.m_dDistance);
    return reduced;
}
}  // namespace TW2::convert
