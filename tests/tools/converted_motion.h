#pragma once

#include "tests/support/gltf_character.h"
#include "tests/support/run_command.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/file.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace support
{
constexpr double s_pi = 3.14159265358979323846;

/// An object of a converted script, whose files lie beside it.
inline std::unique_ptr<TW2::TW_ObjectAnimation> load(const std::string& script, const char* block)
{
    const S_DirectoryGuard restore;
    File.changeDirectory(File.getPath(script.c_str()));
    return std::make_unique<TW2::TW_ObjectAnimation>(script.c_str(), block, nullptr, false);
}

/// Where a point of a mesh's space stands, in glTF's space: z is turned around.
inline Vec getPoint(const TW2::TW_VirtualObject& object, const std::string& mesh, Vec point)
{
    M_Vector3Template<float> p{static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(-point.z)};
    const P_BaseObject* at = nullptr;
    for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
    {
        at = object.getMesh(i)->getName() == mesh.c_str() ? object.getMesh(i) : at;
    }
    EXPECT_TRUE(at) << mesh;
    for (; at; at = at->getParent())
    {
        p = at->getMatrix().transformPoint(p);
    }
    return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(-p.z)};
}
}  // namespace support
