#pragma once

#include "render/bounds.h"
#include "viewer/commands.h"
#include "viewer/orbit_camera.h"
#include "viewer/viewer.h"

#include <platform/scene/camera.h>

#include <string>
#include <vector>

namespace support
{
inline const std::string s_sprout = TW2_SAMPLE "/sprout.script";

/// A viewer of the sample that stands still, after some commands.
struct Showing : TW2::viewer::Viewer
{
    explicit Showing(const std::vector<std::string>& lines = {}, const std::string& script = s_sprout,
                     const std::string& choice = {})
    {
        open(script, choice);
        getPlayback().setPlaying(false);
        run(lines);
    }
    void run(const std::vector<std::string>& lines)
    {
        for (const std::string& line : lines)
        {
            TW2::viewer::execute(*this, line);
        }
        update(0.0);
    }
};

/// Where a point is in a picture, from -1 to 1.
inline M_Vector3Template<float> project(const TW2::viewer::OrbitCamera& orbit, const M_Vector3Template<float>& point,
                                        float aspect = 4.0F / 3.0F)
{
    P_Camera camera;
    orbit.apply(camera, aspect);
    return (M_Matrix4Template<float>(camera.getViewMatrix()) * camera.getProjectionMatrix()).projectPoint(point);
}

/// Around the vertices of what a viewer shows.
inline TW2::render::Bounds boxOf(TW2::viewer::Viewer& viewer)
{
    std::vector<M_Vector3Template<float>> points;
    TW2::render::collectVertices(viewer.getObject()->getObject(), points);
    TW2::render::Bounds box;
    for (const auto& point : points)
    {
        box.add(point);
    }
    return box;
}
}  // namespace support
