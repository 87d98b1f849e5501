#pragma once

#include <memory>
#include <string>
#include <vector>

class P_Scene;

namespace TW2
{
class TW_ObjectAnimation;
}

namespace TW2::viewer
{
/// The lights that a geometry file brings, with their animations.
class SceneLights
{
public:
    SceneLights();
    ~SceneLights();
    SceneLights(const SceneLights&) = delete;
    SceneLights& operator=(const SceneLights&) = delete;

    /// Reads the lights of the files, in the place of those that there are, and hangs each below the mesh of `object`
    /// that it names as its parent, else into `scene`. They have to be cleared before the object goes. Throws what the
    /// loader throws; the lights are then none.
    void load(const std::vector<std::string>& geometryFiles, TW_ObjectAnimation& object, P_Scene& scene);
    void clear() noexcept;
    [[nodiscard]] std::size_t getCount() const noexcept;
    /// Whether any of them is animated.
    [[nodiscard]] bool isAnimated() const noexcept;
    void enable(bool enabled);
    /// Gives the animated ones their values at `seconds`.
    void animate(float seconds);

private:
    class Reader;
    struct Lamp;
    std::vector<std::unique_ptr<Lamp>> m_vecLamps;
};
}  // namespace TW2::viewer
