#pragma once

#include <platform/math/matrix4x3.h>

#include <string>

namespace tools
{
/// A camera that stands in an object's geometry file.
struct SceneCamera
{
    std::string name;
    std::string parent;  ///< name of the mesh it hangs under; empty: the object itself
    M_Matrix4x3Template<float> place;
    float horizontalAngle = 0.0F;  ///< degrees
    float nearDistance = 0.0F;
    float farDistance = 0.0F;
};

/// The camera of that name (any letter case) in the geometry files of a script's blocks. Throws Failure, with the names
/// there are, when there is none.
[[nodiscard]] SceneCamera findSceneCamera(const std::string& scriptFile, const std::string& name);
}  // namespace tools
