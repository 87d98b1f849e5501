#pragma once

#include "convert/clip_sampler.h"
#include "convert/model.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace TW2::convert
{
/// Which motion of which node is the travel of the whole object.
struct TravelChoice
{
    std::size_t m_uiNode = 0;
    bool m_bX = false;  ///< along the scene's axes
    bool m_bY = false;
    bool m_bZ = false;
    bool m_bYaw = false;  ///< the turn about the scene's y axis
};

/// "NODE" (along x and z, and the turn) or "NODE:PARTS", parts being axes and "yaw" with commas between them: "xz,yaw",
/// "xyz". What a node is called as a whole is its name, also with such signs in it; names that are spelled otherwise
/// are found when none is equal. Throws ConvertException with `fileName` for a node that is not there and for other
/// parts.
[[nodiscard]] TravelChoice chooseTravel(const Model& model, const std::string& text, const std::string& fileName);

/// How an object travels while a clip plays: where it stands, seen from where it stood at the clip's beginning. Turns
/// go about the place where the chosen node stood then. Immutable.
class Travel
{
public:
    /// The model must outlive the travel.
    Travel(const Model& model, const Clip& clip, const TravelChoice& choice);
    Travel(const Travel&) = delete;
    Travel& operator=(const Travel&) = delete;

    /// Rigid; the identity at 0 seconds of the clip.
    [[nodiscard]] Matrixd at(double seconds) const;
    /// The same; behind the end it goes on as within the last `step` seconds before it.
    [[nodiscard]] Matrixd at(double seconds, double step) const;
    [[nodiscard]] const Clip& getClip() const noexcept { return m_clip; }
    /// World matrix of a node in the clip as it was; the identity for -1.
    [[nodiscard]] Matrixd getWorld(int node, double seconds) const;
    [[nodiscard]] const ClipSampler& getSampler() const noexcept { return m_sampler; }
    [[nodiscard]] const Model& getModel() const noexcept { return m_model; }
    /// The chosen node and all above it, from there upwards.
    [[nodiscard]] const std::vector<int>& getPath() const noexcept { return m_vecPath; }
    /// Whether the object comes further than `distance`, or turns further than `degrees`, from where it stood.
    [[nodiscard]] bool isFartherThan(double distance, double degrees) const;

private:
    const Model& m_model;
    Clip m_clip;
    ClipSampler m_sampler;
    TravelChoice m_choice;
    std::vector<int> m_vecPath;
    Matrixd m_first;  // world matrix of the node at the beginning
};

/// The clip without its travel: the chosen node, and whatever moves or is shown beside the nodes above it, stand in the
/// space of the object that travels. The nodes above it stay as they are. Keeps the travel alive.
[[nodiscard]] Clip makeStandingClip(const std::shared_ptr<const Travel>& travel);
}  // namespace TW2::convert
