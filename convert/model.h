#pragma once

#include <platform/image/fcolor.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TW2::convert
{
using Vector3 = M_Vector3Template<float>;
using Vector3d = M_Vector3Template<double>;
/// Affine transform of row vectors; sampled motion is kept in double precision until it is written.
using Matrixd = M_Matrix4x3Template<double>;

/// Rotation as a quaternion.
struct Quaternion
{
    double w = 1.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// Red, green, blue and alpha as pictures store them.
using Color = std::array<unsigned char, 4>;
constexpr Color plainColor{255, 255, 255, 255};

/// A place in the model's tree. Everything else calls it by its index: names are for people and for matching files.
struct Node
{
    std::string m_strName;  ///< as the file says, in UTF-8; may be empty, and several nodes may have the same
    int m_iParent = -1;     ///< index of a node before this one; -1: none
    Matrixd m_local;        ///< relative to the parent, in the file's rest pose: without any animation
    std::vector<int> m_vecMeshes;
    std::string m_strNotes;  ///< what the model says about the node, "key=value" lines
};

/// How one bone pulls at the vertices of one mesh. Where the bone's node stands with world matrix W, it wants a vertex
/// at vertex * m_offset * W, whatever node shows the mesh.
struct Bone
{
    int m_iNode = 0;
    Matrixd m_offset;  ///< mesh space to bone space, when the mesh was bound: the inverse bind matrix
    std::vector<std::pair<unsigned int, float>> m_vecWeights;  ///< vertex and weight
    bool m_bHolder = false;  ///< no bone of the file: the mesh's node, on which vertices hang that no bone moves
};

/// Triangles with one material.
struct Mesh
{
    std::string m_strName;
    int m_iMaterial = 0;
    std::vector<Vector3> m_vecPositions;
    std::vector<Vector3> m_vecNormals;  ///< one per position
    /// A list per set of texture coordinates, of one per position or none. (0, 0) is the upper left corner of a
    /// picture.
    std::vector<std::vector<Vector3>> m_vecCoordinates;
    std::vector<Color> m_vecColors;          ///< multiply what the surface shows; one per position, or none
    std::vector<unsigned int> m_vecIndices;  ///< three per triangle, clockwise from the front (left-handed)
    std::vector<Bone> m_vecBones;
};

/// A picture: a file, or bytes that the model carried.
struct Picture
{
    std::string m_strName;                  ///< as the model names it
    std::string m_strFile;                  ///< full path; empty when the model carried it
    std::vector<unsigned char> m_vecBytes;  ///< content of a picture file, when the model carried it
    unsigned int m_uiWidth = 0;             ///< pixels
    unsigned int m_uiHeight = 0;            ///< pixels
    bool m_bAlpha = false;                  ///< any pixel is not opaque
    bool m_bClear = false;                  ///< any pixel is more clear than opaque
};

/// What a texture shows beyond its picture's edges.
enum class Wrap
{
    Repeat,
    Mirror,
    Clamp
};

/// A picture on a surface, and where it lies. Its coordinates are (u, v, 1) * m_transform of the mesh's coordinates
/// (u, v) in a set.
struct Texture
{
    int m_iPicture = -1;  ///< index of a picture of the model; -1: no texture
    int m_iSet = 0;
    Wrap m_eWrapU = Wrap::Repeat;
    Wrap m_eWrapV = Wrap::Repeat;
    bool m_bCoarse = false;  ///< shows its pixels as they are, close by
    std::array<std::array<double, 2>, 3> m_transform{{{1.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}}};

    [[nodiscard]] bool isUsed() const noexcept { return m_iPicture >= 0; }
};

/// A surface as modelling tools describe it. Colours on the scale 0 to 255, as pictures store them.
struct Surface
{
    /// What its alpha means: opacity x alpha of the textures x alpha of the vertices.
    enum class Alpha
    {
        Opaque,  ///< nothing
        Mask,    ///< what is below the cut-off is not there, all else is opaque
        Blend    ///< how much it covers what is behind it
    };
    std::string m_strName;                       ///< no two surfaces of a model have the same
    G_FColor m_diffuse{204.0F, 204.0F, 204.0F};  ///< multiplies the texture
    G_FColor m_specular{0.0F, 0.0F, 0.0F};
    float m_fShininess = 0.0F;
    G_FColor m_emissive{0.0F, 0.0F, 0.0F};  ///< light of its own; multiplies the emissive texture
    float m_fOpacity = 1.0F;                ///< 0 to 1
    Alpha m_eAlpha = Alpha::Opaque;
    float m_fCutOff = 0.5F;  ///< of Alpha::Mask, 0 to 1
    bool m_bTwoSided = false;
    bool m_bUnlit = false;  ///< shows its colour whatever the light
    Texture m_diffuseTexture;
    Texture m_opacityTexture;  ///< its alpha, or its brightness where its alpha is opaque everywhere
    Texture m_emissiveTexture;
};

/// How a value goes from one key to the next.
enum class Interpolation
{
    Step,    ///< it stays as it is until the next key
    Linear,  ///< straight; rotations the shorter way round at even speed
    Cubic    ///< along a cubic through both keys with their slopes; of rotations each component, then made unit length
};

/// A value over time. Before the first key it is the first key's, after the last key the last one's.
template <typename T>
struct Curve
{
    Interpolation m_eInterpolation = Interpolation::Linear;
    std::vector<double> m_vecTimes;  ///< seconds, ascending
    std::vector<T> m_vecValues;      ///< one per time
    std::vector<T> m_vecArriving;    ///< Cubic only: slope with which each key is reached, per second; one per time
    std::vector<T> m_vecLeaving;     ///< Cubic only: slope with which each key is left, per second; one per time

    [[nodiscard]] bool isEmpty() const noexcept { return m_vecTimes.empty(); }
};

class NodeMotion;

/// Motion of one node, relative to its parent. What has no keys stays as in the node's rest pose.
struct Channel
{
    int m_iNode = 0;
    std::shared_ptr<const NodeMotion> m_pMotion;  ///< when there is one, it says all and the curves are empty
    Curve<Vector3d> m_positions;
    Curve<Quaternion> m_rotations;
    Curve<Vector3d> m_scales;
};

/// A mark in a clip, such as a step.
struct Event
{
    double m_dTime = 0.0;  ///< seconds, as in the clip's curves
    std::string m_strName;
};

/// One named motion of the whole model, from its start to its duration later. At most one channel per node.
struct Clip
{
    std::string m_strName;     ///< as the file says; may be empty, and several clips may have the same
    double m_dDuration = 0.0;  ///< seconds
    double m_dStart = 0.0;     ///< the time of its curves with which it begins
    std::vector<Channel> m_vecChannels;
    std::vector<Event> m_vecEvents;  ///< in any order; those outside of the clip do not count
    std::optional<Matrixd> m_root;   ///< for the model's when the clip comes from a file with another space
};

struct Camera
{
    int m_iNode = 0;
    Vector3d m_vPosition;                ///< in the node's space
    Vector3d m_vForward{0.0, 0.0, 1.0};  ///< line of sight, in the node's space
    Vector3d m_vUp{0.0, 1.0, 0.0};
    float m_fHorizontalAngle = 0.0F;  ///< degrees, whole angle
    float m_fNear = 0.0F;
    float m_fFar = 0.0F;
};

struct Light
{
    enum class Kind
    {
        Point,
        Directional,
        Spot
    };
    int m_iNode = 0;
    Kind m_eKind = Kind::Point;
    Vector3d m_vPosition;                ///< in the node's space
    Vector3d m_vForward{0.0, 0.0, 1.0};  ///< direction of the light, in the node's space
    G_FColor m_color;
    float m_fBrightness = 1.0F;
    float m_fRange = 0.0F;       ///< where it has faded out
    float m_fInnerAngle = 0.0F;  ///< degrees, whole angle
    float m_fOuterAngle = 0.0F;  ///< degrees, whole angle
};

/// A model as it was read: left-handed, y up, triangles only.
struct Model
{
    std::string m_strName;
    /// The file's space to the scene's: part of `m_local` of every node without parent, and to be multiplied onto what
    /// a channel says about such a node.
    Matrixd m_root;
    std::vector<Node> m_vecNodes;  ///< parents before their children
    std::vector<Mesh> m_vecMeshes;
    std::vector<Picture> m_vecPictures;
    std::vector<Surface> m_vecSurfaces;
    std::vector<Clip> m_vecClips;
    std::vector<Camera> m_vecCameras;
    std::vector<Light> m_vecLights;
    std::vector<std::string> m_vecWarnings;
    std::vector<std::string> m_vecSources;  ///< the files that were read, as far as is known; pictures apart

    /// A node's local matrix in the file's rest pose, in the file's own space: without `m_root`.
    [[nodiscard]] Matrixd getRestInFile(std::size_t node) const
    {
        const Node& place = m_vecNodes[node];
        return place.m_iParent < 0 ? place.m_local * m_root.inverse() : place.m_local;
    }
    /// Whether any mesh hangs on bones.
    [[nodiscard]] bool isSkinned() const noexcept
    {
        for (const Mesh& mesh : m_vecMeshes)
        {
            if (!mesh.m_vecBones.empty())
            {
                return true;
            }
        }
        return false;
    }
};
}  // namespace TW2::convert
