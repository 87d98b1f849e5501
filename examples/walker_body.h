#pragma once

#include "walker_skeleton.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/image/image.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <vector>

/// The skin of the sample's walker: closed tubes around the bones, put into one another as a doll's parts are, with one
/// texture whose bands are the cloths. A band goes once around a tube, and along it from one end of the band to the
/// other.
namespace walker
{
/// The bands of the texture, from its top.
enum class Cloth
{
    Jumper,
    Sleeve,
    Trousers,
    Skin,
    Hair,
    Shoe,
    Scarf,
    Eye
};
inline constexpr unsigned int clothCount = 8;
inline constexpr unsigned int bandHeight = 64;
inline constexpr unsigned int textureWidth = 64;
inline constexpr unsigned int textureHeight = clothCount * bandHeight;

inline void writeTexture(const char* fileName)
{
    struct Color
    {
        int red, green, blue;
    };
    const auto colorAt = [](Cloth cloth, unsigned int u, unsigned int v) -> Color
    {
        constexpr Color cream{244, 228, 196};
        constexpr Color teal{38, 124, 132};
        constexpr Color orange{226, 112, 54};
        constexpr Color denim{62, 78, 128};
        switch (cloth)
        {
            case Cloth::Jumper:
                return v < 10 ? orange : v >= 34 && v < 48 ? (v >= 39 && v < 43 ? teal : cream) : teal;
            case Cloth::Sleeve:
                return v >= 26 && v < 34 ? cream : v >= 54 ? orange : teal;
            case Cloth::Trousers:
                return u % 32 == 16 || v >= 58 ? Color{94, 112, 168} : denim;
            case Cloth::Skin:
                return {240, 190, 152};
            case Cloth::Hair:
                return u % 8 == 0 ? Color{116, 66, 34} : Color{98, 54, 28};
            case Cloth::Shoe:
                return v < 20 ? cream : Color{176, 60, 52};
            case Cloth::Scarf:
                return u % 16 < 4 ? cream : Color{204, 62, 58};
            case Cloth::Eye:
                break;
        }
        return {36, 30, 40};
    };
    G_Image image(textureWidth, textureHeight);
    for (unsigned int y = 0; y < textureHeight; ++y)
    {
        for (unsigned int x = 0; x < textureWidth; ++x)
        {
            const Color color = colorAt(static_cast<Cloth>(y / bandHeight), x, y % bandHeight);
            // The weave.
            const int shade = (x + y / 2) % 2 == 0 ? 3 : -3;
            unsigned char* pixel = image.accessPixel(x, y);
            pixel[0] = static_cast<unsigned char>(color.red + shade);
            pixel[1] = static_cast<unsigned char>(color.green + shade);
            pixel[2] = static_cast<unsigned char>(color.blue + shade);
        }
    }
    image.writePNG(fileName);
}

/// A cross-section of a tube: where its middle is along the way, and its half widths.
struct Ring
{
    double along;
    double across;
    double deep;
    double shift = 0.0;  ///< of the middle, in the direction in which it is deep
};

/// A tube goes along `forth` from `origin`. Its axes are of length 1 and at right angles.
struct Tube
{
    Cloth cloth;
    Vector origin;
    Vector forth;
    Vector across;
    Vector deep;
    std::vector<Ring> rings;
    unsigned int sides = 16;
    double floor = -1.0;  ///< nothing is below that height: soles are flat
};

/// From one bone to the next along a tube, half of each at `along`, blended over `soft` to either side.
struct Joint
{
    std::size_t bone;
    double along;
    double soft;
};

class Body
{
public:
    /// A coarse one, to be seen from afar, has a third of the sides and half of the rings.
    explicit Body(bool coarse = false) : m_bCoarse(coarse)
    {
        m_mesh.name = "skin";
        m_mesh.editChannel(0);
        for (const Bone& bone : bones)
        {
            m_binding.boneNames.emplace_back(bone.name);
        }
        addTrunk();
        addHead();
        for (const bool left : {true, false})
        {
            addArm(left);
            addLeg(left);
        }
        finish();
    }
    [[nodiscard]] const TW2::MeshChunk& getMesh() const { return m_mesh; }
    [[nodiscard]] const TW2::SkinChunk& getBinding() const { return m_binding; }

private:
    static constexpr Vector right{1, 0, 0};
    static constexpr Vector up{0, 1, 0};
    static constexpr Vector ahead{0, 0, 1};

    /// In the object, which is turned.
    static M_Vector3Template<float> toObject(const Vector& v)
    {
        return {static_cast<float>(-v.x), static_cast<float>(v.y), static_cast<float>(-v.z)};
    }

    /// The rings of an egg with its middle at `along`.
    static std::vector<Ring> makeEgg(double along, double length, double across, double deep)
    {
        std::vector<Ring> rings;
        constexpr int count = 9;
        for (int i = 0; i <= count; ++i)
        {
            const double angle = std::numbers::pi * i / count;
            const double wide = i % count == 0 ? 0.0 : std::sin(angle);
            rings.push_back({along - length * std::cos(angle), across * wide, deep * wide});
        }
        return rings;
    }

    /// Rings between those given, along a smooth curve, and round ends, the first less when `flat` is below 1.
    static std::vector<Ring> smooth(const std::vector<Ring>& rings, double flat = 1.0)
    {
        const auto end = [](const Ring& last, double high)
        {
            std::vector<Ring> cap;
            for (const double part : {0.5, 0.85, 1.0})
            {
                const double wide = part < 1.0 ? std::sqrt(1.0 - part * part) : 0.0;
                cap.push_back({last.along + high * part * std::min(last.across, last.deep), last.across * wide,
                               last.deep * wide, last.shift});
            }
            return cap;
        };
        std::vector<Ring> result = end(rings.front(), -flat);
        std::reverse(result.begin(), result.end());
        const auto at = [&rings](std::size_t i, double t, double Ring::*member)
        {
            const double a = rings[i > 0 ? i - 1 : 0].*member;
            const double b = rings[i].*member;
            const double c = rings[i + 1].*member;
            const double d = rings[std::min(i + 2, rings.size() - 1)].*member;
            return b + 0.5 * t * (c - a + t * (2.0 * a - 5.0 * b + 4.0 * c - d + t * (3.0 * (b - c) + d - a)));
        };
        for (std::size_t i = 0; i + 1 < rings.size(); ++i)
        {
            for (const double t : {0.0, 0.5})
            {
                result.push_back(
                    {at(i, t, &Ring::along), at(i, t, &Ring::across), at(i, t, &Ring::deep), at(i, t, &Ring::shift)});
            }
        }
        result.push_back(rings.back());
        const std::vector<Ring> last = end(rings.back(), 1.0);
        result.insert(result.end(), last.begin(), last.end());
        return result;
    }

    void addTrunk()
    {
        const std::size_t hips = findBone("hips");
        const double waist = placeOf(hips).y;
        const std::vector<Joint> spine = {{hips, 0, 0},
                                          {hips + 1, placeOf(hips + 1).y - waist, 0.05},
                                          {hips + 2, placeOf(hips + 2).y - waist, 0.06},
                                          {hips + 3, placeOf(hips + 3).y - waist + 0.02, 0.03}};
        const Vector middle{0, waist, 0};
        add({Cloth::Trousers, middle, up, right, ahead,
             smooth({{-0.09, 0.118, 0.100, -0.006},
                     {-0.04, 0.152, 0.118, -0.008},
                     {0.02, 0.154, 0.116, -0.004},
                     {0.07, 0.138, 0.106, 0}}),
             24},
            spine);
        add({Cloth::Jumper, middle, up, right, ahead,
             smooth({{0.0, 0.166, 0.130, -0.004},
                     {0.03, 0.159, 0.123, -0.002},
                     {0.10, 0.140, 0.110, 0.004},
                     {0.20, 0.150, 0.112, 0.004},
                     {0.31, 0.160, 0.108, 0},
                     {0.38, 0.142, 0.088, -0.004},
                     {0.43, 0.062, 0.060, 0}},
                    0.1),
             24},
            spine);
        add({Cloth::Skin, middle, up, right, ahead, smooth({{0.40, 0.046, 0.046, 0}, {0.53, 0.050, 0.050, 0.006}})},
            {{findBone("chest"), 0, 0}, {findBone("neck"), 0.42, 0.03}, {findBone("head"), 0.50, 0.03}});
        add({Cloth::Scarf, middle, up, right, ahead,
             smooth({{0.425, 0.074, 0.070, 0.004}, {0.445, 0.086, 0.082, 0.006}, {0.468, 0.074, 0.070, 0.006}}), 24},
            {{findBone("chest"), 0, 0}, {findBone("neck"), 0.43, 0.05}});
    }

    void addHead()
    {
        const std::size_t head = findBone("head");
        const std::vector<Joint> alone = {{head, 0, 0}};
        const Vector middle = placeOf(head) + Vector(0, 0.125, 0.0);
        add({Cloth::Skin, middle, up, right, ahead, makeEgg(0.0, 0.155, 0.135, 0.138), 24}, alone);
        // The hair is a cap that is tilted backwards.
        const Vector tilted{0, 0.80, -0.60};
        add({Cloth::Hair,
             middle + Vector(0, 0.012, -0.008),
             tilted,
             right,
             {0, 0.60, 0.80},
             {{-0.03, 0.0, 0.0},
              {-0.03, 0.125, 0.128},
              {-0.02, 0.144, 0.152},
              {0.02, 0.148, 0.155},
              {0.07, 0.133, 0.139},
              {0.11, 0.102, 0.108},
              {0.135, 0.062, 0.066},
              {0.146, 0.0, 0.0}},
             24},
            alone);
        for (const double side : {-1.0, 1.0})
        {
            add({Cloth::Eye, middle + Vector(side * 0.050, 0.012, 0.122), ahead, right, up,
                 makeEgg(0.0, 0.012, 0.014, 0.021), 10},
                alone);
            add({Cloth::Skin, middle + Vector(side * 0.132, -0.005, -0.005), ahead, right, up,
                 makeEgg(0.0, 0.026, 0.018, 0.034), 10},
                alone);
        }
        add({Cloth::Eye, middle + Vector(0, -0.066, 0.121), ahead, right, up, makeEgg(0.0, 0.006, 0.026, 0.005), 10},
            alone);
        add({Cloth::Skin, middle + Vector(0, -0.022, 0.137), ahead, right, up, makeEgg(0.0, 0.024, 0.019, 0.018), 10},
            alone);
    }

    void addArm(bool left)
    {
        const std::size_t arm = findBone(left ? "upper_arm_left" : "upper_arm_right");
        const Vector shoulder = placeOf(arm);
        const Vector down = (placeOf(arm + 2) - shoulder).normalized();
        const Vector across{-down.y, down.x, 0};
        const double elbow = (placeOf(arm + 1) - shoulder).length();
        const double wrist = (placeOf(arm + 2) - shoulder).length();
        const std::vector<Joint> joints = {{arm, 0, 0}, {arm + 1, elbow, 0.05}, {arm + 2, wrist, 0.02}};
        add({Cloth::Sleeve, shoulder, down, across, ahead,
             smooth({{-0.005, 0.062, 0.064},
                     {0.06, 0.056, 0.058},
                     {0.14, 0.050, 0.051},
                     {elbow - 0.03, 0.047, 0.048},
                     {elbow, 0.046, 0.047},
                     {elbow + 0.03, 0.046, 0.046},
                     {wrist - 0.08, 0.045, 0.045},
                     {wrist - 0.04, 0.047, 0.047},
                     {wrist - 0.015, 0.045, 0.045}})},
            joints);
        add({Cloth::Skin, shoulder, down, across, ahead,
             smooth({{wrist - 0.02, 0.028, 0.030}, {wrist + 0.02, 0.034, 0.042}, {wrist + 0.06, 0.032, 0.046}}), 12},
            joints);
        add({Cloth::Skin, placeOf(arm + 2) + down * 0.03 + Vector(0, 0, 0.044), down, across, ahead,
             makeEgg(0.0, 0.030, 0.016, 0.017), 10},
            {{arm + 2, 0, 0}});
    }

    void addLeg(bool left)
    {
        const std::size_t leg = findBone(left ? "thigh_left" : "thigh_right");
        const Vector hip = placeOf(leg);
        const double knee = hip.y - placeOf(leg + 1).y;
        const double ankle = hip.y - placeOf(leg + 2).y;
        add({Cloth::Trousers, hip, up * -1.0, right, ahead,
             smooth({{0.0, 0.074, 0.086, -0.002},
                     {0.10, 0.076, 0.084, 0},
                     {0.22, 0.070, 0.074, 0.004},
                     {knee - 0.05, 0.064, 0.067, 0.010},
                     {knee, 0.062, 0.065, 0.012},
                     {knee + 0.05, 0.061, 0.064, 0.010},
                     {knee + 0.16, 0.060, 0.063, -0.002},
                     {ankle - 0.08, 0.058, 0.061, -0.008},
                     {ankle - 0.03, 0.060, 0.064, -0.010}})},
            {{leg, 0, 0}, {leg + 1, knee, 0.07}});
        const Vector foot = placeOf(leg + 2);
        const Vector sole{foot.x, 0, foot.z};
        // Of height 0 at the ground: the lower half of each ring is the flat sole.
        add({Cloth::Shoe, sole, ahead, right, up,
             smooth({{-0.045, 0.045, 0.070, 0.015},
                     {0.0, 0.052, 0.086, 0.020},
                     {0.05, 0.054, 0.072, 0.015},
                     {ballFromAnkle, 0.056, 0.050, 0.012},
                     {0.145, 0.052, 0.042, 0.010}}),
             20, 0.0},
            {{leg + 2, 0, 0}, {leg + 3, ballFromAnkle, 0.025}});
    }

    /// Every second ring, and the last one.
    static Tube makeCoarse(const Tube& tube)
    {
        Tube coarse = tube;
        coarse.sides = std::max(4U, tube.sides / 3);
        coarse.rings.clear();
        for (std::size_t ring = 0; ring + 1 < tube.rings.size(); ring += 2)
        {
            coarse.rings.push_back(tube.rings[ring]);
        }
        coarse.rings.push_back(tube.rings.back());
        return coarse;
    }

    void add(const Tube& whole, const std::vector<Joint>& joints)
    {
        const Tube tube = m_bCoarse ? makeCoarse(whole) : whole;
        const std::size_t first = m_vecPositions.size();
        const unsigned int columns = tube.sides + 1;  // one more than there are sides closes the texture's seam
        const double begin = tube.rings.front().along;
        const double length = tube.rings.back().along - begin;
        for (const Ring& ring : tube.rings)
        {
            for (unsigned int side = 0; side < columns; ++side)
            {
                const double angle = 2.0 * std::numbers::pi * (side % tube.sides) / tube.sides;
                Vector place = tube.origin + tube.forth * ring.along + tube.across * (std::sin(angle) * ring.across) +
                               tube.deep * (ring.shift - std::cos(angle) * ring.deep);
                place.y = std::max(place.y, tube.floor);
                m_vecPositions.push_back(place);
                addCoordinates(tube, place, static_cast<double>(side) / tube.sides, (ring.along - begin) / length);
                bind(joints, ring.along);
            }
        }
        const bool leftHanded = tube.across.cross(tube.deep).dot(tube.forth) > 0.0;
        for (std::size_t ring = 0; ring + 1 < tube.rings.size(); ++ring)
        {
            for (unsigned int side = 0; side < tube.sides; ++side)
            {
                const std::size_t a = first + ring * columns + side;
                const std::size_t b = a + columns;
                addFace(a, b, a + 1, leftHanded);
                addFace(a + 1, b, b + 1, leftHanded);
            }
        }
        weld(first, tube);
    }

    /// Some pixels are left free at both sides of a band, for the filter.
    void addCoordinates(const Tube& tube, const Vector& place, double around, double along)
    {
        const double part = tube.cloth == Cloth::Shoe ? std::clamp(place.y / 0.06, 0.0, 1.0) : along;
        constexpr double margin = 2.0;
        const double row = static_cast<double>(tube.cloth) * bandHeight + margin + part * (bandHeight - 2.0 * margin);
        m_mesh.editChannel(0).coordinates.push_back(
            {static_cast<float>(around), static_cast<float>(row / textureHeight), 0.0F});
    }

    void bind(const std::vector<Joint>& joints, double along)
    {
        std::size_t last = joints.size() - 1;
        while (last > 0 && along <= joints[last].along - joints[last].soft)
        {
            --last;
        }
        double weight = 1.0;
        if (last > 0 && along < joints[last].along + joints[last].soft)
        {
            const double t = 0.5 + 0.5 * (along - joints[last].along) / joints[last].soft;
            weight = t * t * (3.0 - 2.0 * t);
        }
        m_binding.vertexInfluenceStarts.push_back(static_cast<int>(m_binding.influenceBones.size()));
        m_binding.vertexBoneCounts.push_back(weight < 1.0 ? 2 : 1);
        m_binding.influenceBones.push_back(static_cast<int>(joints[last].bone));
        m_binding.influenceWeights.push_back(static_cast<float>(weight));
        if (weight < 1.0)
        {
            m_binding.influenceBones.push_back(static_cast<int>(joints[last - 1].bone));
            m_binding.influenceWeights.push_back(1.0F - static_cast<float>(weight));
        }
    }

    void addFace(std::size_t a, std::size_t b, std::size_t c, bool turned)
    {
        const Vector& p = m_vecPositions[a];
        const Vector normal = (m_vecPositions[b] - p).cross(m_vecPositions[c] - p) * (turned ? -1.0 : 1.0);
        m_vecNormals.resize(m_vecPositions.size());
        if (normal.length() < 1e-12)
        {
            return;  // at the tip of a tube
        }
        for (const std::size_t vertex : {a, b, c})
        {
            m_vecNormals[vertex] = m_vecNormals[vertex] + normal;
        }
        for (const std::size_t vertex : {a, turned ? c : b, turned ? b : c})
        {
            m_mesh.editFaces().indices.push_back(static_cast<std::uint16_t>(vertex));
        }
    }

    /// Vertices that stand in one place along a seam, or at a tip, have one normal.
    void weld(std::size_t first, const Tube& tube)
    {
        const std::size_t columns = tube.sides + 1;
        for (std::size_t ring = 0; ring < tube.rings.size(); ++ring)
        {
            const std::size_t begin = first + ring * columns;
            const bool isTip = tube.rings[ring].across == 0.0;
            Vector sum;
            for (std::size_t side = 0; side < columns; side += isTip ? 1 : tube.sides)
            {
                sum = sum + m_vecNormals[begin + side];
            }
            for (std::size_t side = 0; side < columns; side += isTip ? 1 : tube.sides)
            {
                m_vecNormals[begin + side] = sum;
            }
        }
    }

    void finish()
    {
        TW2::MeshVertexChunk& vertices = m_mesh.editVertices();
        for (std::size_t i = 0; i < m_vecPositions.size(); ++i)
        {
            vertices.positions.push_back(toObject(m_vecPositions[i]));
            vertices.normals.push_back(toObject(m_vecNormals[i].normalized()));
        }
        const auto count = static_cast<unsigned int>(m_vecPositions.size());
        vertices.groupOffsets.push_back(0);
        vertices.groupCounts.push_back(count);
        TW2::MeshFaceChunk& faces = m_mesh.editFaces();
        faces.groupOffsets.push_back(0);
        faces.groupCounts.push_back(static_cast<unsigned int>(faces.indices.size() / 3));
        m_mesh.editChannel(0).groupOffsets.push_back(0);
        m_mesh.editChannel(0).groupCounts.push_back(static_cast<int>(count));
        m_mesh.editMaterials().names.push_back("cloth");
        m_binding.objectNames.push_back(m_mesh.name);
        m_binding.primitiveFirstVertices.push_back(0);
        m_binding.primitiveVertexCounts.push_back(count);
    }

    bool m_bCoarse;
    TW2::MeshChunk m_mesh;
    TW2::SkinChunk m_binding;
    std::vector<Vector> m_vecPositions;
    std::vector<Vector> m_vecNormals;
};
}  // namespace walker
