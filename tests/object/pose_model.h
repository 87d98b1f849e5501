#pragma once

#include "tests/support/track_oracle.h"

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <vector>

/// What the poses of an animated object must be, in double precision and without regard to speed.
class PoseModel
{
public:
    using Matrix = support::DoubleMatrix;
    /// For each mesh the chunk of its track, or null.
    using Tracks = std::vector<const TW2::KeyframeAnimationChunk*>;

    static Matrix getTrackPose(const TW2::KeyframeAnimationChunk& track, float frame)
    {
        return support::TrackOracle(track).getTransform(static_cast<double>(frame));
    }

    std::map<int, Tracks> animations;
    std::vector<Matrix> pose;
    /// The mesh indices that operations are restricted to.
    std::optional<std::set<std::size_t>> group;
    TW2::InterpolationMode mode = TW2::InterpolationMode::Linear;

    bool evaluate(int index, float frame, double weight, bool add)
    {
        const auto animation = animations.find(index);
        if (animation == animations.end())
        {
            return false;
        }
        for (const std::size_t mesh : selected())
        {
            if (animation->second[mesh])
            {
                put(mesh, getTrackPose(*animation->second[mesh], frame), weight, add);
            }
            else if (animations.count(0) && animations.at(0)[mesh])
            {
                put(mesh, getTrackPose(*animations.at(0)[mesh], 0.0F), weight, add);
            }
        }
        return true;
    }

    bool approach(int index, float frame, double weight)
    {
        const auto animation = animations.find(index);
        for (std::size_t mesh = 0; animation != animations.end() && mesh < pose.size(); ++mesh)
        {
            if (animation->second[mesh])
            {
                Matrix step = getTrackPose(*animation->second[mesh], frame);
                step -= pose[mesh];
                put(mesh, step, std::min(weight, 1.0), true);
            }
        }
        correct();
        return animation != animations.end();
    }

    void restore(const S_Vector<M_Matrix4x3Template<float>>& matrices, const S_Vector<bool>& frozen, double weight,
                 bool add)
    {
        for (const std::size_t mesh : selected())
        {
            if (frozen[mesh])
            {
                put(mesh, support::toDouble(matrices[mesh]), weight, add);
            }
        }
    }

    void correct()
    {
        for (const std::size_t mesh : selected())
        {
            support::applyMode(pose[mesh], mode);
        }
    }

private:
    [[nodiscard]] std::set<std::size_t> selected() const
    {
        std::set<std::size_t> meshes;
        for (std::size_t mesh = 0; mesh < pose.size(); ++mesh)
        {
            meshes.insert(mesh);
        }
        return group ? *group : meshes;
    }

    void put(std::size_t mesh, Matrix matrix, double weight, bool add)
    {
        matrix *= weight;
        pose[mesh] = add ? pose[mesh] += matrix : matrix;
    }
};
