#pragma once

#include "convert/model.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// Models for the tests of the converter's steps, put together by hand.
namespace convert_test
{
using TW2::convert::Bone;
using TW2::convert::Channel;
using TW2::convert::Clip;
using TW2::convert::Curve;
using TW2::convert::Interpolation;
using TW2::convert::Matrixd;
using TW2::convert::Mesh;
using TW2::convert::Model;
using TW2::convert::Node;
using TW2::convert::Quaternion;
using TW2::convert::Vector3d;

inline Matrixd move(double x, double y, double z)
{
    return Matrixd::translation({x, y, z});
}

/// Turns the x axis towards the y axis.
inline Matrixd turnZ(double degrees)
{
    const double angle = degrees * std::numbers::pi / 180.0;
    Matrixd result;
    result.setRow(0, {std::cos(angle), std::sin(angle), 0.0});
    result.setRow(1, {-std::sin(angle), std::cos(angle), 0.0});
    return result;
}

inline Matrixd scale(double factor)
{
    Matrixd result;
    for (int row = 0; row < 3; ++row)
    {
        result.setRow(row, result.getRow(row) * factor);
    }
    return result;
}

/// The same rotation as `turnZ`.
inline Quaternion spinZ(double degrees)
{
    const double half = degrees * std::numbers::pi / 360.0;
    return {std::cos(half), 0.0, 0.0, std::sin(half)};
}

inline void addNode(Model& model, const std::string& name, int parent, const Matrixd& local)
{
    model.m_vecNodes.push_back({name, parent, local, {}, {}});
}

/// `count` nodes, each one unit along x from the one before.
inline Model makeChain(int count)
{
    Model model;
    for (int i = 0; i < count; ++i)
    {
        addNode(model, "node" + std::to_string(i), i - 1, move(i == 0 ? 0.0 : 1.0, 0.0, 0.0));
    }
    return model;
}

/// A triangle that hangs on bones: vertex i on bone i % bones.
inline Mesh makeSkin(const std::vector<std::pair<int, Matrixd>>& bones)
{
    Mesh mesh;
    mesh.m_strName = "skin";
    mesh.m_vecPositions = {{0.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}};
    mesh.m_vecNormals.assign(3, {0.0F, 0.0F, -1.0F});
    mesh.m_vecIndices = {0, 2, 1};
    for (const auto& [node, offset] : bones)
    {
        Bone bone;
        bone.m_iNode = node;
        bone.m_offset = offset;
        for (unsigned int vertex = static_cast<unsigned int>(mesh.m_vecBones.size()); vertex < 3;
             vertex += static_cast<unsigned int>(bones.size()))
        {
            bone.m_vecWeights.emplace_back(vertex, 1.0F);
        }
        mesh.m_vecBones.push_back(bone);
    }
    return mesh;
}

template <typename T>
Curve<T> makeCurve(Interpolation interpolation, const std::vector<std::pair<double, T>>& keys)
{
    Curve<T> curve;
    curve.m_eInterpolation = interpolation;
    for (const auto& [time, value] : keys)
    {
        curve.m_vecTimes.push_back(time);
        curve.m_vecValues.push_back(value);
    }
    return curve;
}

/// A clip that moves node 0 by one curve of places.
inline Clip moving(const Curve<Vector3d>& positions)
{
    Clip clip;
    clip.m_dDuration = positions.m_vecTimes.back();
    clip.m_vecChannels.emplace_back().m_positions = positions;
    return clip;
}

/// The cameras and lights of a model, with colours from 0 to 255.
inline std::string describeStage(const Model& model)
{
    std::ostringstream text;
    text << std::setprecision(5);
    const auto add = [&](const char* what, int node, const Vector3d& forward)
    {
        text << (text.str().empty() ? "" : "; ") << what << " of " << node << " along " << forward.x << ' ' << forward.y
             << ' ' << forward.z;
    };
    for (const TW2::convert::Camera& camera : model.m_vecCameras)
    {
        add("camera", camera.m_iNode, camera.m_vForward);
        text << ": " << camera.m_fHorizontalAngle << " from " << camera.m_fNear << " to " << camera.m_fFar;
    }
    for (const TW2::convert::Light& light : model.m_vecLights)
    {
        constexpr const char* kinds[]{"point", "directional", "spot"};
        add(kinds[static_cast<int>(light.m_eKind)], light.m_iNode, light.m_vForward);
        text << ": " << light.m_color.red << ' ' << light.m_color.green << ' ' << light.m_color.blue << " times "
             << light.m_fBrightness << " up to " << light.m_fRange;
        if (light.m_eKind == TW2::convert::Light::Kind::Spot)
        {
            text << " in " << light.m_fInnerAngle << " to " << light.m_fOuterAngle;
        }
    }
    return text.str();
}

/// A surface of a model, with colours from 0 to 255, and what it is seen without.
inline std::string describeSurface(const Model& model, std::size_t index = 0)
{
    const TW2::convert::Surface& surface = model.m_vecSurfaces.at(index);
    std::ostringstream text;
    text << std::setprecision(4);
    for (const auto& [name, color] : {std::pair("diffuse", surface.m_diffuse),
                                      {", specular", surface.m_specular},
                                      {", emissive", surface.m_emissive}})
    {
        text << name << ' ' << color.red << ' ' << color.green << ' ' << color.blue;
    }
    text << ", shininess " << surface.m_fShininess << ", opacity " << surface.m_fOpacity
         << (surface.m_bUnlit ? ", unlit" : "") << (surface.m_bTwoSided ? ", of two sides" : "");
    for (const auto& [name, texture] : {std::pair("diffuse", &surface.m_diffuseTexture),
                                        {"opacity", &surface.m_opacityTexture},
                                        {"emissive", &surface.m_emissiveTexture}})
    {
        text << (texture->isUsed() ? std::string(", ") + name + " map" : "");
    }
    for (const std::string& warning : model.m_vecWarnings)
    {
        text << "; " << warning.substr(warning.rfind(": ") + 2);
    }
    return text.str();
}

/// Infinite where a number is none.
inline double largestDifference(const Matrixd& a, const Matrixd& b)
{
    double largest = 0.0;
    for (int row = 0; row < 4; ++row)
    {
        const double length = (a.getRow(row) - b.getRow(row)).length();
        largest = std::max(largest, std::isnan(length) ? std::numeric_limits<double>::infinity() : length);
    }
    return largest;
}
}  // namespace convert_test
