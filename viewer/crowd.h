#pragma once

#include "render/view.h"

#include <cstddef>
#include <memory>
#include <vector>

class P_Scene;

namespace TW2
{
class TW_VirtualObject;
}

namespace TW2::viewer
{
class LoadedObject;
class Playback;

/// Copies of one object in rows, each a little later in its animation than the one before, and what they cost.
class Crowd
{
public:
    /// Costs, averaged over the last pictures.
    struct Cost
    {
        double m_dPoseNanosecondsPerBone = 0.0;   ///< playing and blending
        double m_dFrameNanosecondsPerBone = 0.0;  ///< the scene's frame: matrices of world and bones, culling
        double m_dMilliseconds = 0.0;             ///< both, for everybody
        std::size_t m_uiBytesPerCopy = 0;         ///< heap of one more copy; 0 where the system does not tell
    };

    ~Crowd();
    Crowd() = default;
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    /// Makes `count` copies besides the object itself, `spacing` scene units apart, in `scene`.
    void build(const LoadedObject& object, P_Scene& scene, std::size_t count, float spacing);
    void clear() noexcept;

    [[nodiscard]] std::size_t getCount() const noexcept { return m_vecCopies.size(); }
    [[nodiscard]] const std::vector<std::unique_ptr<TW_VirtualObject>>& getCopies() const noexcept
    {
        return m_vecCopies;
    }
    /// Puts every copy onto the ground where it stands.
    void standOn(const render::GroundPlane& ground) const;
    /// Poses every copy, and shows and hides its meshes as the visibility tracks of an animation say; -1 shows all.
    void pose(Playback& playback, int visibilityAnimation) const;

    /// Takes in what one picture cost, in seconds.
    void addCost(double poseSeconds, double frameSeconds, std::size_t bones) noexcept;
    [[nodiscard]] const Cost& getCost() const noexcept { return m_cost; }

private:
    std::vector<std::unique_ptr<TW_VirtualObject>> m_vecCopies;
    Cost m_cost;
};
}  // namespace TW2::viewer
