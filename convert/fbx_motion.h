#pragma once

#include "convert/model.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace TW2::convert
{
/// One number over time, as FBX has it: each key says how the value goes on to the next, and the curve itself what it
/// is before its first key and behind its last.
struct FbxCurve
{
    enum class Kind : std::uint8_t
    {
        Step,      ///< stays until the next key
        StepNext,  ///< is at once the next key's
        Linear,
        Cubic
    };
    struct Key
    {
        double m_dTime = 0.0;  ///< seconds of the file
        double m_dValue = 0.0;
        Kind m_eKind = Kind::Linear;
        double m_dLeaving = 0.0;   ///< slope behind this key, per second
        double m_dArriving = 0.0;  ///< slope before the next key, per second
        // How much of the time to the next key the slopes' handles take.
        double m_dLeavingPart = 1.0 / 3.0;
        double m_dArrivingPart = 1.0 / 3.0;
    };
    /// What lies beyond the keys.
    struct Beyond
    {
        enum class Kind : std::uint8_t
        {
            Stay,          ///< the value of the nearest key
            Slope,         ///< straight on
            Repeat,        ///< the keys again
            Mirror,        ///< the keys again, forwards and backwards in turn
            RepeatOnward,  ///< the keys again, each time from where the last time ended
        };
        Kind m_eKind = Kind::Stay;
        std::int64_t m_iTimes = -1;  ///< how often; negative: always
    };
    std::vector<Key> m_vecKeys;  ///< by time
    Beyond m_before;
    Beyond m_after;

    [[nodiscard]] double at(double seconds) const;

private:
    [[nodiscard]] double between(double seconds) const;
    [[nodiscard]] double beyond(const Beyond& how, bool before, double seconds) const;
};

/// A node in the parts that FBX makes its matrix of. Angles in degrees.
struct FbxPlace
{
    /// What a node has of its parent.
    enum class Inherit
    {
        RotationsFirst,  ///< all, but all rotations come before all scales
        All,
        NoParentScale  ///< all but the parent's own scale
    };
    std::int64_t m_iId = 0;
    std::string m_strName;
    int m_iParent = -1;
    int m_iRotationOrder = 0;
    Inherit m_eInherit = Inherit::All;
    Vector3d m_vTranslation;
    Vector3d m_vRotation;
    Vector3d m_vScaling{1.0, 1.0, 1.0};
    Vector3d m_vRotationOffset;
    Vector3d m_vRotationPivot;
    Vector3d m_vScalingOffset;
    Vector3d m_vScalingPivot;
    Vector3d m_vPreRotation;
    Vector3d m_vPostRotation;
    Matrixd m_geometric;  ///< of what the node shows; its children do not have it
};

/// The rotation of three angles, of which the first of `order` (FBX's numbers) is applied first.
[[nodiscard]] Matrixd rotateFbx(const Vector3d& degrees, int order);

/// Nodes, and what an animation stack does to them.
///
/// Matrices are in the file's space, mirrored at z: that makes FBX's right-handed space left-handed.
class FbxPose
{
public:
    /// The three numbers of one part of a node; those without keys have a value that stays.
    struct Track
    {
        std::array<FbxCurve, 3> m_curves;
        std::array<double, 3> m_values{};
    };
    struct Tracks
    {
        std::optional<Track> m_translation;
        std::optional<Track> m_rotation;
        std::optional<Track> m_scaling;
    };

    /// What a further layer of a stack makes of the layers below it.
    struct Layer
    {
        bool m_bAdds = true;             ///< its values are added; else they take the place of what is below
        bool m_bTurnsAsWhole = true;     ///< rotations are combined as such; else angle by angle
        bool m_bScalesByFactors = true;  ///< scales that are added are multiplied
        FbxCurve m_weight;               ///< percent; may have no keys
        double m_dWeight = 100.0;        ///< without keys
        std::unordered_map<std::size_t, Tracks> m_mapTracks;

        /// 0 to 1.
        [[nodiscard]] double getWeight(double seconds) const;
    };

    std::vector<FbxPlace> m_vecPlaces;  ///< parents before their children
    std::unordered_map<std::size_t, Tracks> m_mapTracks;
    std::vector<Layer> m_vecLayers;  ///< on top of those tracks, from the lowest

    /// Whether any layer has a track of a place.
    [[nodiscard]] bool hasTracks(std::size_t place) const;
    /// Calls `visit` with each track of a place, of all layers, and with each layer's weight that has keys.
    template <typename Visit>
    void forEachCurve(std::size_t place, const Visit& visit) const
    {
        forEachCurve(m_mapTracks, place, visit);
        for (const Layer& layer : m_vecLayers)
        {
            if (forEachCurve(layer.m_mapTracks, place, visit))
            {
                visit(layer.m_weight);
            }
        }
    }

    /// To be called when all places and tracks are there.
    void prepare();
    /// The local matrix of a node at `seconds` of the file.
    [[nodiscard]] Matrixd getLocal(std::size_t place, double seconds) const;
    /// The same relative to the scene.
    [[nodiscard]] Matrixd getWorld(std::size_t place, double seconds) const;
    /// Whether anything moves a node relative to its parent.
    [[nodiscard]] bool isMoved(std::size_t place) const;

private:
    /// A node's matrix in the making, as its file has it: not mirrored.
    struct Parts
    {
        Vector3d m_vTranslation;
        Matrixd m_rotation;  ///< with pre- and post-rotation
        Matrixd m_scaling;
        Matrixd m_rest;  ///< all but the translation
    };
    struct World
    {
        Matrixd m_matrix;
        Matrixd m_rotation;
    };
    /// What does not move of a node's matrix.
    struct Still
    {
        Matrixd m_postRotation;  ///< undone
        Matrixd m_preRotation;
        bool m_bTurned;  ///< by either
    };
    template <typename Visit>
    static bool forEachCurve(const std::unordered_map<std::size_t, Tracks>& tracks, std::size_t place,
                             const Visit& visit)
    {
        const auto found = tracks.find(place);
        if (found == tracks.end())
        {
            return false;
        }
        for (const auto* track : {&found->second.m_translation, &found->second.m_rotation, &found->second.m_scaling})
        {
            for (std::size_t axis = 0; *track && axis < 3; ++axis)
            {
                visit((*track)->m_curves[axis]);
            }
        }
        return true;
    }
    [[nodiscard]] bool isScaled(std::size_t place) const;
    using TrackOf = std::optional<Track> Tracks::*;
    /// What all layers make of one part of a place; `rest` is what it is without them.
    [[nodiscard]] Vector3d blendLayers(std::size_t place, TrackOf part, const Vector3d& rest, double seconds) const;
    [[nodiscard]] Matrixd blendRotations(std::size_t place, double seconds) const;
    [[nodiscard]] Parts makeParts(std::size_t place, double seconds) const;
    [[nodiscard]] Matrixd makeLocal(std::size_t place, double seconds) const;
    [[nodiscard]] Matrixd makeLocalIn(std::size_t place, double seconds, const World* around) const;

    /// Two times of the file between which angles are written another way: see `findFlips`.
    struct Flip
    {
        double m_dFrom;
        double m_dTo;
    };
    static std::vector<Flip> findFlips(const Track& rotation);
    [[nodiscard]] Matrixd makeRotation(std::size_t place, double seconds) const;

    std::unordered_map<std::size_t, std::vector<Flip>> m_mapFlips;  ///< per place, ascending
    std::vector<Still> m_vecStill;                                  ///< per place
    std::vector<bool> m_vecUnevenAbove;  ///< per place: whether any above it is ever scaled unlike on its axes
};
}  // namespace TW2::convert
