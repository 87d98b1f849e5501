#include "convert/loop_seam.h"

#include "convert/box.h"
#include "convert/clip_sampler.h"
#include "convert/pose_error.h"

#include <algorithm>
#include <vector>

namespace TW2::convert
{
namespace
{
/// Finds how a clip's end joins its beginning: its poses are looked at as they are, before anything is reduced.
class SeamFinder
{
public:
    SeamFinder(const Model& model, const Skeleton& skeleton, const Clip& clip)
        : m_skeleton(skeleton), m_sampler(model, clip), m_reach(measureReach(model, skeleton))
    {
    }

    /// A clip runs in a circle when its last frame is its first one again, or when the step from its last frame to its
    /// first one is no larger than the steps beside it.
    [[nodiscard]] Seam find(unsigned int frames, int rate, double smallest) const
    {
        // Looser than the tolerance: a step of this size at the seam is not seen.
        constexpr double distanceOfSize = 0.01;
        constexpr double degrees = 3.0;
        constexpr double stepsBeside = 1.25;
        if (frames < 3)
        {
            return Seam::Open;
        }
        const std::vector<Matrixd> first = pose(0.0);
        const std::vector<Matrixd> last = pose(static_cast<double>(frames - 1) / rate);
        const PoseError seam = compareAll(last, first);
        if (seam.isWithin({distanceOfSize * std::max(measureSize(first), smallest), degrees}))
        {
            return Seam::SameFrame;
        }
        PoseError beside = compareAll(first, pose(1.0 / rate));
        beside.add(compareAll(pose(static_cast<double>(frames - 2) / rate), last));
        return seam.isWithin({stepsBeside * beside.m_dDistance, stepsBeside * beside.m_dDegrees}) ? Seam::NextFrame
                                                                                                  : Seam::Open;
    }

private:
    [[nodiscard]] std::vector<Matrixd> pose(double seconds) const
    {
        std::vector<Matrixd> local(m_skeleton.m_vecJoints.size());
        for (std::size_t i = 0; i < local.size(); ++i)
        {
            local[i] = m_sampler.sample(i, seconds);
        }
        std::vector<Matrixd> world;
        composeWorld(m_skeleton, local, world);
        return world;
    }

    [[nodiscard]] PoseError compareAll(const std::vector<Matrixd>& a, const std::vector<Matrixd>& b) const
    {
        PoseDifference difference;
        for (std::size_t i = 0; i < a.size(); ++i)
        {
            difference.add(a[i], b[i], m_reach[i]);
        }
        return difference.get();
    }

    /// Diagonal of the box around all joints.
    static double measureSize(const std::vector<Matrixd>& world)
    {
        Box box;
        for (const Matrixd& matrix : world)
        {
            box.add(matrix.getTranslation());
        }
        return box.getDiagonal();
    }

    const Skeleton& m_skeleton;
    ClipSampler m_sampler;
    std::vector<double> m_reach;
};
}  // namespace

Seam findSeam(const Model& model, const Skeleton& skeleton, const Clip& clip, unsigned int frames, int frameRate,
              double smallest)
{
    return SeamFinder(model, skeleton, clip).find(frames, frameRate, smallest);
}
}  // namespace TW2::convert
