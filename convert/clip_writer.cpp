#include "convert/clip_writer.h"

#include "convert/clip_sampler.h"
#include "convert/node_motion.h"
#include "convert/precision.h"

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <span>

namespace TW2::convert
{
namespace
{
/// The object as a node that travels; in seconds from the clip's beginning.
class Carrying : public NodeMotion
{
public:
    Carrying(const Travel& travel, double frame) : m_travel(travel), m_dFrame(frame) {}
    [[nodiscard]] Matrixd at(double seconds) const override { return m_travel.at(seconds, m_dFrame); }
    void addTimes(std::vector<double>&) const override {}
    void addJumps(std::vector<double>& jumps) const override
    {
        for (const int node : m_travel.getPath())
        {
            const std::vector<double> own = m_travel.getSampler().findJumps(static_cast<std::size_t>(node));
            jumps.insert(jumps.end(), own.begin(), own.end());
        }
    }

private:
    const Travel& m_travel;
    double m_dFrame;
};

/// The times at which any joint jumps.
std::set<double> findJumps(const ClipSampler& sampler, std::size_t joints)
{
    std::set<double> times;
    for (std::size_t joint = 0; joint < joints; ++joint)
    {
        for (const double time : sampler.findJumps(joint))
        {
            times.insert(time);
        }
    }
    return times;
}

/// Files round times: whether a jump has just happened, or is about to, cannot be told at this one.
bool isAtJump(const std::set<double>& times, double seconds)
{
    constexpr double near = 1e-4;
    const auto next = times.lower_bound(seconds - near);
    return next != times.end() && *next <= seconds + near;
}

/// World matrices: all when there are none yet, else those of the joints that move.
void composeMoved(const Skeleton& skeleton, const std::vector<Matrixd>& local, const std::vector<bool>& moving,
                  std::vector<Matrixd>& world)
{
    if (world.empty())
    {
        composeWorld(skeleton, local, world);
        return;
    }
    for (std::size_t joint = 0; joint < local.size(); ++joint)
    {
        if (moving[joint])
        {
            const int parent = skeleton.m_vecJoints[joint].m_iParent;
            world[joint] = parent < 0 ? local[joint] : local[joint] * world[static_cast<std::size_t>(parent)];
        }
    }
}
}  // namespace

/// Plays records as the library does. Players are made and go one at a time, as the library demands, and play on all
/// threads at once.
class PlaybackMeter::Player
{
public:
    /// Both must outlive the player; null: the object does not travel.
    Player(const Skeleton& skeleton, const std::vector<KeyframeAnimationChunk>& records,
           const KeyframeAnimationChunk* travel)
        : m_skeleton(skeleton)
    {
        build(records, travel);
        for (std::size_t joint = 0; joint < records.size(); ++joint)
        {
            const int parent = skeleton.m_vecJoints[joint].m_iParent;
            m_vecPlaying.push_back(records[joint].keys.size() > 1);
            m_vecMoving.push_back(travel || m_vecPlaying.back() ||
                                  (parent >= 0 && m_vecMoving[static_cast<std::size_t>(parent)]));
        }
        if (!records.empty())
        {
            m_uiFrames = records.front().totalFrameCount;
            m_bAgain = records.front().header.looping && !records.front().loopInterpolation && m_uiFrames > 1;
            m_uiFrames -= m_bAgain ? 1 : 0;
        }
    }
    ~Player()
    {
        const std::lock_guard lock(s_building);
        m_vecTracks.clear();
        m_pTravel.reset();
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// The frames from 0 that are shown.
    [[nodiscard]] unsigned int getFrameCount() const noexcept { return m_uiFrames; }
    /// Whether the first frame is shown in the place of the last one.
    [[nodiscard]] bool beginsAgain() const noexcept { return m_bAgain; }

    /// Whether the object, or a record above or at a joint, moves it, per joint.
    [[nodiscard]] const std::vector<bool>& getMoving() const noexcept { return m_vecMoving; }

    /// The pose at `frame`, in the parents' spaces and in the world: a matrix per record. Both lists are empty before
    /// the first frame that they take; in later ones what does not move stays as it is.
    void play(double frame, std::vector<Matrixd>& local, std::vector<Matrixd>& world) const
    {
        const bool first = world.empty();
        local.resize(m_vecTracks.size());
        for (std::size_t joint = 0; joint < m_vecTracks.size(); ++joint)
        {
            if (first || m_vecPlaying[joint])
            {
                M_Matrix4x3Template<float> matrix;
                m_vecTracks[joint]->animateFrame(matrix, static_cast<float>(frame));
                local[joint] = toDouble(matrix);
            }
        }
        composeMoved(m_skeleton, local, m_vecMoving, world);
        if (m_pTravel)
        {
            M_Matrix4x3Template<float> place;
            m_pTravel->animateFrame(place, static_cast<float>(frame));
            const Matrixd travel = toDouble(place);
            for (Matrixd& matrix : world)
            {
                matrix = matrix * travel;
            }
        }
    }

private:
    using Tracks = std::vector<std::unique_ptr<TW_KeyframeAnimation>>;

    void build(const std::vector<KeyframeAnimationChunk>& records, const KeyframeAnimationChunk* travel)
    {
        const std::lock_guard lock(s_building);
        Tracks tracks;
        for (const KeyframeAnimationChunk& record : records)
        {
            tracks.push_back(std::make_unique<TW_KeyframeAnimation>(record, false));
        }
        if (travel)
        {
            m_pTravel = std::make_unique<TW_KeyframeAnimation>(*travel, false);
        }
        m_vecTracks = std::move(tracks);
    }

    static std::mutex s_building;

    const Skeleton& m_skeleton;
    std::unique_ptr<TW_KeyframeAnimation> m_pTravel;
    Tracks m_vecTracks;
    unsigned int m_uiFrames = 0;
    bool m_bAgain = false;
    std::vector<bool> m_vecPlaying;  // the records that have more than one key
    std::vector<bool> m_vecMoving;
};

std::mutex PlaybackMeter::Player::s_building;

std::vector<KeyframeAnimationChunk> makeRecords(const Skeleton& skeleton, const ReducedClip& clip, Seam seam)
{
    std::vector<KeyframeAnimationChunk> records;
    for (std::size_t joint = 0; joint < clip.m_vecTracks.size(); ++joint)
    {
        const Track& track = clip.m_vecTracks[joint];
        KeyframeAnimationChunk record;
        record.header.targetName = skeleton.m_vecJoints[joint].m_strName.c_str();
        record.header.frameRate = clip.m_iFrameRate;
        record.header.looping = seam != Seam::Open;
        record.loopInterpolation = seam == Seam::NextFrame;
        record.objectName = record.header.targetName;
        record.totalFrameCount = clip.m_uiFrames;
        record.interpolationMode = static_cast<int>(
            track.m_eForm == TrackForm::General ? InterpolationMode::Linear : InterpolationMode::Orthonormalized);
        record.keepScale = track.m_eForm == TrackForm::Scaled;
        for (const TrackKey& key : track.m_vecKeys)
        {
            record.keys.push_back({key.m_uiFrame, toFloat(key.m_matrix)});
        }
        records.push_back(std::move(record));
    }
    return records;
}

std::vector<KeyframeAnimationChunk> makeRestRecords(const Skeleton& skeleton)
{
    std::vector<KeyframeAnimationChunk> records;
    for (const Joint& joint : skeleton.m_vecJoints)
    {
        KeyframeAnimationChunk record;
        record.header.targetName = joint.m_strName.c_str();
        record.header.frameRate = 1;
        record.objectName = record.header.targetName;
        record.totalFrameCount = 1;
        // Without it, a matrix whose rows have unit length would be taken for a rotation.
        record.keepScale = joint.m_local.determinant() < 0.0;
        record.keys.push_back({0, toFloat(joint.m_local)});
        records.push_back(std::move(record));
    }
    return records;
}

KeyframeAnimationChunk makeTravelRecord(const Travel& travel, const ReducedClip& clip, Seam seam,
                                        const Tolerance& tolerance, double reach, SpareThreads& threads)
{
    Model model;
    model.m_vecNodes.push_back({"travel", -1, Matrixd(), {}, {}});
    model.m_vecNodes.push_back({"reach", 0, Matrixd::translation({reach, 0.0, 0.0}), {}, {}});
    Clip carried;
    // Where the first frame follows on the last one, the way between them is travelled as well.
    const unsigned int last = clip.m_uiFrames - (seam == Seam::NextFrame ? 0 : 1);
    carried.m_dDuration = static_cast<double>(last) / clip.m_iFrameRate;
    Channel& channel = carried.m_vecChannels.emplace_back();
    channel.m_pMotion = std::make_shared<Carrying>(travel, 1.0 / clip.m_iFrameRate);
    std::vector<std::string> warnings;
    const Skeleton skeleton = makeSkeleton(model, warnings);
    const ReducedClip reduced = reduceClip(model, skeleton, carried, tolerance, clip.m_iFrameRate, threads);
    return makeRecords(skeleton, reduced, Seam::Open).front();
}

PlaybackMeter::PlaybackMeter(const Model& model, const Skeleton& skeleton)
    : m_model(model), m_skeleton(skeleton), m_drawn(model, skeleton), m_reach(measureReach(model, skeleton))
{
}

/// A clip beside the records that were made of it.
class PlaybackMeter::Comparison
{
public:
    /// All must outlive the comparison. `measured`: the joints that count.
    Comparison(const PlaybackMeter& meter, const Clip& clip, const Player& player, const std::vector<bool>& measured)
        : m_meter(meter),
          m_sampler(meter.m_model, clip),
          m_player(player),
          m_measured(measured),
          m_jumps(findJumps(m_sampler, measured.size())),
          m_vecMoving(player.getMoving())
    {
        for (std::size_t joint = 0; joint < m_vecMoving.size(); ++joint)
        {
            const int parent = meter.m_skeleton.m_vecJoints[joint].m_iParent;
            m_vecMoving[joint] = m_vecMoving[joint] || m_sampler.isMoved(joint) ||
                                 (parent >= 0 && m_vecMoving[static_cast<std::size_t>(parent)]);
        }
    }

    /// The largest difference at some times, in frames. May be asked on several threads at once.
    [[nodiscard]] PoseError measure(std::span<const double> frames, int frameRate) const
    {
        const std::size_t joints = m_measured.size();
        std::vector<Matrixd> shouldLocal(joints);
        std::vector<Matrixd> shouldBe;
        std::vector<Matrixd> local;
        std::vector<Matrixd> world;
        PoseError error;
        PoseDifference difference;
        bool drawn = false;  // all that does not move
        const double end = m_player.beginsAgain() ? m_player.getFrameCount() : std::numeric_limits<double>::max();
        for (const double frame : frames)
        {
            const double seconds = frame / frameRate;
            if (frame >= end || isAtJump(m_jumps, seconds))
            {
                continue;
            }
            const bool first = world.empty();
            for (std::size_t joint = 0; joint < joints; ++joint)
            {
                if (first || m_sampler.isMoved(joint))
                {
                    shouldLocal[joint] = m_sampler.sample(joint, seconds);
                }
            }
            composeMoved(m_meter.m_skeleton, shouldLocal, m_vecMoving, shouldBe);
            m_player.play(frame, local, world);
            for (std::size_t joint = 0; joint < joints; ++joint)
            {
                if (!m_measured[joint])
                {
                    shouldBe[joint] = world[joint];
                }
                if (first || m_vecMoving[joint])
                {
                    difference.add(world[joint], shouldBe[joint], m_meter.m_reach[joint]);
                }
            }
            if (frame == std::floor(frame))
            {
                error.add({m_meter.m_drawn.measureDistance(world, shouldBe, drawn ? &m_vecMoving : nullptr), 0.0});
                drawn = true;
            }
        }
        error.add(difference.get());
        return error;
    }

private:
    const PlaybackMeter& m_meter;
    ClipSampler m_sampler;
    const Player& m_player;
    const std::vector<bool>& m_measured;
    std::set<double> m_jumps;
    std::vector<bool> m_vecMoving;
};

PoseError PlaybackMeter::measure(const Clip& clip, const std::vector<KeyframeAnimationChunk>& records, int frameRate,
                                 const std::vector<double>& times, SpareThreads& threads) const
{
    return measure(clip, Player(m_skeleton, records, nullptr), std::vector<bool>(records.size(), true), frameRate,
                   times, threads);
}

PoseError PlaybackMeter::measure(const Clip& clip, const std::vector<KeyframeAnimationChunk>& records,
                                 const Travel& travel, const KeyframeAnimationChunk& record, int frameRate,
                                 const std::vector<double>& times, SpareThreads& threads) const
{
    std::vector<bool> measured(records.size(), true);
    for (std::size_t i = 1; i < travel.getPath().size(); ++i)
    {
        measured[static_cast<std::size_t>(travel.getPath()[i])] = false;
    }
    return measure(clip, Player(m_skeleton, records, &record), measured, frameRate, times, threads);
}

PoseError PlaybackMeter::measure(const Clip& clip, const Player& player, const std::vector<bool>& measured,
                                 int frameRate, const std::vector<double>& times, SpareThreads& threads) const
{
    constexpr std::size_t timesAtOnce = 64;  // the first of them also costs what does not move
    const Comparison comparison(*this, clip, player, measured);
    std::vector<PoseError> errors((times.size() + timesAtOnce - 1) / timesAtOnce);
    threads.share(errors.size(),
                  [&](std::size_t part)
                  {
                      const std::span<const double> rest = std::span(times).subspan(part * timesAtOnce);
                      errors[part] = comparison.measure(rest.first(std::min(timesAtOnce, rest.size())), frameRate);
                  });
    PoseError error;
    for (const PoseError& part : errors)
    {
        error.add(part);
    }
    return error;
}

void PlaybackMeter::addBounds(const std::vector<KeyframeAnimationChunk>& records, DrawnBounds& bounds) const
{
    // Between times this close nothing goes further than the slack that bounding volumes have.
    constexpr int timesPerSecond = 60;
    const Player player(m_skeleton, records, nullptr);
    const auto step = static_cast<std::size_t>(std::max(records.front().header.frameRate / timesPerSecond, 1));
    std::vector<Matrixd> local;
    std::vector<Matrixd> world;
    for (std::size_t frame = 0; frame < player.getFrameCount(); frame += step)
    {
        player.play(static_cast<double>(frame), local, world);
        bounds.add(world);
    }
}

void write(S_MemoryFileWriter& writer, const std::vector<KeyframeAnimationChunk>& records)
{
    for (const KeyframeAnimationChunk& record : records)
    {
        writer << record;
    }
}
}  // namespace TW2::convert
