#pragma once

#include <platform/math/vector3.h>

#include <memory>
#include <optional>

namespace TW2
{
class TW_BoneChain;
}

namespace TW2::viewer
{
class LoadedObject;

/// A bone that looks at a point or reaches for it, after the pose is taken.
class Reaching
{
public:
    using Vector = M_Vector3Template<float>;
    enum class Kind
    {
        None,
        Look,      ///< it and the bones above it turn towards the point
        TwoBones,  ///< the two bones above it bend as an arm or a leg
        Chain      ///< all bones of the chain bend
    };

    Reaching();
    ~Reaching();
    Reaching(const Reaching&) = delete;
    Reaching& operator=(const Reaching&) = delete;

    /// A bone (mesh index) begins to reach for where it is, or to look at where the eye is. `bones`: how many bones the
    /// chain has, itself included, 0 for what is usual. Throws Failure when there are too few above it. `object` must
    /// stay until `stop`.
    void start(LoadedObject& object, Kind kind, int bone, int bones);
    void stop() noexcept;
    [[nodiscard]] Kind getKind() const noexcept { return m_eKind; }
    /// Mesh index of the bone; -1: none.
    [[nodiscard]] int getBone() const noexcept { return m_iBone; }

    /// A point in the world; nothing: the eye, wherever it goes.
    void setTarget(const std::optional<Vector>& target) noexcept { m_target = target; }
    [[nodiscard]] const std::optional<Vector>& getTarget() const noexcept { return m_target; }
    /// Direction of view of a bone that looks, in its own axes.
    void setForward(const Vector& forward) noexcept { m_vForward = forward; }
    [[nodiscard]] const Vector& getForward() const noexcept { return m_vForward; }

    /// Turns the bones, when there is anything to do.
    void apply(const Vector& eye);

private:
    Kind m_eKind = Kind::None;
    int m_iBone = -1;
    std::unique_ptr<TW_BoneChain> m_pChain;
    std::optional<Vector> m_target;
    Vector m_vForward{0.0F, 0.0F, 1.0F};
};
}  // namespace TW2::viewer
