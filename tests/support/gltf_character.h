#pragma once

#include "tests/support/gltf_text.h"

#include <platform/math/vector3.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace support
{
/// Points and turns of glTF's own space, in double precision, by the formulas of textbooks.
using Vec = M_Vector3Template<double>;
struct Quat
{
    double w = 1.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};
inline double length(const Vec& a)
{
    return a.length();
}
/// First `b`, then `a`.
inline Quat operator*(const Quat& a, const Quat& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}
inline Vec turn(const Quat& q, const Vec& v)
{
    const Quat r = q * Quat{0.0, v.x, v.y, v.z} * Quat{q.w, -q.x, -q.y, -q.z};
    return {r.x, r.y, r.z};
}
inline Quat about(const Vec& axis, double degrees)
{
    const double half = degrees * 3.14159265358979323846 / 360.0;
    const Vec a = axis * (std::sin(half) / length(axis));
    return {std::cos(half), a.x, a.y, a.z};
}

/// Characters as glTF files, and where their bones are by a model of the test's own.
struct GltfCharacter
{
    struct Bone
    {
        std::string m_strName;
        int m_iParent = -1;
        Vec m_vOffset;
        Quat m_turn;
    };
    /// Changes a bone's place and turn, which come as at rest, to those at a time.
    using Motion = std::function<void(std::size_t bone, double seconds, Vec& offset, Quat& turn)>;
    struct Clip
    {
        std::string m_strName;
        double m_dSeconds = 1.0;
        Motion m_motion;
        std::string m_strMore;  ///< further members, each with a comma before it
    };

    std::vector<Bone> m_vecBones;
    std::vector<Clip> m_vecClips;
    bool m_bSkinned = true;  ///< a triangle at each bone, on a skin; otherwise a triangle on each node
    bool m_bShown = true;    ///< without: bones alone

    /// Where a point of a bone's space stands at a time of a clip; -1: at rest.
    [[nodiscard]] Vec getPoint(int clip, std::size_t bone, double seconds, Vec point = {}) const
    {
        for (int at = static_cast<int>(bone); at >= 0; at = m_vecBones[static_cast<std::size_t>(at)].m_iParent)
        {
            const auto place = static_cast<std::size_t>(at);
            Vec offset = m_vecBones[place].m_vOffset;
            Quat q = m_vecBones[place].m_turn;
            if (clip >= 0)
            {
                m_vecClips[static_cast<std::size_t>(clip)].m_motion(place, seconds, offset, q);
            }
            point = turn(q, point) + offset;
        }
        return point;
    }

    /// The file, with a key for every bone thirty times a second.
    [[nodiscard]] std::string make() const
    {
        GltfText text;
        text.set("animations", "[" + makeAnimations(text) + "]");
        std::string nodes;
        for (std::size_t i = 0; i < m_vecBones.size(); ++i)
        {
            const Bone& bone = m_vecBones[i];
            nodes += (i > 0 ? "," : "") + (R"({"name":")" + bone.m_strName) + R"(","translation":[)" +
                     numbers({bone.m_vOffset.x, bone.m_vOffset.y, bone.m_vOffset.z}) + R"(],"rotation":[)" +
                     numbers({bone.m_turn.x, bone.m_turn.y, bone.m_turn.z, bone.m_turn.w}) + "]";
            std::string children;
            for (std::size_t c = 0; c < m_vecBones.size(); ++c)
            {
                children += m_vecBones[c].m_iParent == static_cast<int>(i)
                                ? (children.empty() ? "" : ",") + std::to_string(c)
                                : "";
            }
            nodes += children.empty() ? "" : R"(,"children":[)" + children + "]";
            nodes += m_bShown && !m_bSkinned ? R"(,"mesh":0})" : "}";
        }
        if (m_bShown)
        {
            addMesh(text);
        }
        text.set("nodes", "[" + nodes + (m_bShown && m_bSkinned ? R"(,{"name":"body","mesh":0,"skin":0})" : "") + "]");
        return text.make();
    }

private:
    static std::string numbers(const std::vector<double>& values)
    {
        std::string list;
        for (const double value : values)
        {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%.17g", value);
            list += (list.empty() ? "" : ",") + std::string(digits.data());
        }
        return list;
    }

    [[nodiscard]] std::string makeAnimations(GltfText& text) const
    {
        std::string animations;
        for (const Clip& clip : m_vecClips)
        {
            const int frames = static_cast<int>(std::lround(clip.m_dSeconds * 30.0)) + 1;
            std::vector<float> times;
            for (int f = 0; f < frames; ++f)
            {
                times.push_back(static_cast<float>(f / 30.0));
            }
            const std::string input = R"({"input":)" + number(text.addFloats(times, "SCALAR"));
            std::string samplers;
            std::string channels;
            for (std::size_t bone = 0; bone < m_vecBones.size(); ++bone)
            {
                std::vector<float> places;
                std::vector<float> turns;
                for (int f = 0; f < frames; ++f)
                {
                    Vec offset = m_vecBones[bone].m_vOffset;
                    Quat q = m_vecBones[bone].m_turn;
                    clip.m_motion(bone, f / 30.0, offset, q);
                    for (const double value : {offset.x, offset.y, offset.z})
                    {
                        places.push_back(static_cast<float>(value));
                    }
                    for (const double value : {q.x, q.y, q.z, q.w})
                    {
                        turns.push_back(static_cast<float>(value));
                    }
                }
                const std::string comma = bone > 0 ? "," : "";
                samplers += comma + input + R"(,"output":)" + number(text.addFloats(places, "VEC3")) + "}," + input +
                            R"(,"output":)" + number(text.addFloats(turns, "VEC4")) + "}";
                const std::string target = R"(,"target":{"node":)" + std::to_string(bone);
                channels += comma + R"({"sampler":)" + std::to_string(2 * bone) + target +
                            R"(,"path":"translation"}},{"sampler":)" + std::to_string(2 * bone + 1) + target +
                            R"(,"path":"rotation"}})";
            }
            animations += (animations.empty() ? R"({"name":")" : R"(,{"name":")") + clip.m_strName +
                          R"(","samplers":[)" + samplers + R"(],"channels":[)" + channels + "]" + clip.m_strMore + "}";
        }
        return animations;
    }

    void addMesh(GltfText& text) const
    {
        std::vector<float> positions;
        std::vector<std::uint16_t> joints;
        std::vector<float> weights;
        std::vector<float> binds;
        std::string list;
        for (std::size_t bone = 0; bone < (m_bSkinned ? m_vecBones.size() : 1); ++bone)
        {
            for (const Vec& corner : {Vec{0, 0, 0}, Vec{0.1, 0, 0}, Vec{0, 0.1, 0}})
            {
                const Vec p = m_bSkinned ? getPoint(-1, bone, 0.0, corner) : corner;
                positions.insert(positions.end(),
                                 {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)});
                joints.insert(joints.end(), {static_cast<std::uint16_t>(bone), 0, 0, 0});
                weights.insert(weights.end(), {1, 0, 0, 0});
            }
            // Columns of the inverse: where the scene's origin and axes stand in the bone's space.
            const Vec origin = getPoint(-1, bone, 0.0);
            const std::array<Vec, 3> axes{getPoint(-1, bone, 0.0, {1, 0, 0}) - origin,
                                          getPoint(-1, bone, 0.0, {0, 1, 0}) - origin,
                                          getPoint(-1, bone, 0.0, {0, 0, 1}) - origin};
            for (const Vec& axis : {Vec{1, 0, 0}, Vec{0, 1, 0}, Vec{0, 0, 1}, origin * -1.0})
            {
                for (const Vec& own : axes)
                {
                    binds.push_back(static_cast<float>(axis.dot(own)));
                }
                binds.push_back(0);
            }
            binds.back() = 1;
            list += (bone > 0 ? "," : "") + std::to_string(bone);
        }
        const std::string skin = R"(,"JOINTS_0":)" + number(text.add(joints, GltfText::UNSIGNED_SHORT, "VEC4")) +
                                 R"(,"WEIGHTS_0":)" + number(text.addFloats(weights, "VEC4"));
        text.set("meshes", R"([{"primitives":[{"attributes":{"POSITION":)" + number(text.addFloats(positions, "VEC3")) +
                               (m_bSkinned ? skin : "") + "}}]}]");
        if (m_bSkinned)
        {
            text.set("skins", R"([{"joints":[)" + list + R"(],"inverseBindMatrices":)" +
                                  number(text.addFloats(binds, "MAT4")) + "}]");
        }
    }
};
}  // namespace support
