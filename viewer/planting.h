#pragma once

#include "render/view.h"

#include <memory>
#include <string>
#include <vector>

namespace TW2
{
class TW_FootPlanter;
}

namespace TW2::viewer
{
class LoadedObject;

/// Feet that stand on the ground, wherever it is, after the pose is taken.
class Planting
{
public:
    /// Names of its first and its last bone.
    struct Leg
    {
        std::string m_strThigh;
        std::string m_strFoot;

        friend bool operator==(const Leg&, const Leg&) = default;
    };

    Planting();
    ~Planting();
    Planting(const Planting&) = delete;
    Planting& operator=(const Planting&) = delete;

    /// The legs of what is called foot or ankle, each up to what is called thigh, upper leg or femur, else two bones
    /// further up; empty when no bone is called so.
    [[nodiscard]] static std::vector<Leg> findLegs(const LoadedObject& object);
    /// The leg of a foot (mesh index) that begins at a thigh, or two bones above the foot for -1. Throws Failure when
    /// that is no leg: a thigh hangs under a pelvis, and a bone lies between it and the foot.
    [[nodiscard]] static Leg makeLeg(const LoadedObject& object, int foot, int thigh = -1);

    /// Plants these legs from now on; what they hang under goes with the lowest foot. How high the feet lie above their
    /// soles is taken from the lowest that the object's first animation has them: that poses the object. Throws Failure
    /// for no legs, and leaves everything as it was. `object` must stay until `stop`.
    void start(LoadedObject& object, const std::vector<Leg>& legs);
    void stop() noexcept;
    [[nodiscard]] bool isOn() const noexcept { return m_pPlanter != nullptr; }
    /// Empty while it is off.
    [[nodiscard]] const std::vector<Leg>& getLegs() const noexcept { return m_vecLegs; }
    /// Name of the bone that the legs hang under.
    [[nodiscard]] const std::string& getPelvis() const noexcept { return m_strPelvis; }

    /// Part of the correction that is made, 0 to 1.
    void setWeight(float weight) noexcept;
    [[nodiscard]] float getWeight() const noexcept { return m_fWeight; }

    /// Puts the feet on the ground, when it is on; the flat ground of the animation is at the object's height.
    void apply(const render::GroundPlane& ground);
    /// How far the pelvis was moved upwards.
    [[nodiscard]] float getPelvisShift() const noexcept { return m_fPelvisShift; }
    /// How far the foot of a leg is from where it was to be.
    [[nodiscard]] float getLeft(std::size_t leg) const noexcept;

private:
    std::unique_ptr<TW_FootPlanter> m_pPlanter;
    std::vector<Leg> m_vecLegs;
    std::string m_strPelvis;
    float m_fWeight = 1.0F;
    float m_fPelvisShift = 0.0F;
};
}  // namespace TW2::viewer
