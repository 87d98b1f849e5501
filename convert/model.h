#pragma once

#include <platform/image/fcolor.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

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

/// A place in the model's tree.
struct Node
{
    std::string m_strName;  ///< no two nodes of a model have the same
    int m_iParent = -1;     ///< index of a node before this one; -1: none
    Matrixd m_local;        ///< relative to the parent, without any animation
    std::vector<int> m_vecMeshes;
    std::string m_strNotes;  ///< what the model says about the node, "key=value" lines
};

/// How one bone pulls at the vertices of one mesh.
struct Bone
{
    int m_iNode = 0;
    Matrixd m_offset;                                          ///< mesh space to bone space, when the mesh was bound
    std::vector<std::pair<unsigned int, float>> m_vecWeights;  ///< vertex and weight
};

/// Triangles with one material.
struct Mesh
{
    std::string m_strName;
    int m_iMaterial = 0;
    std::vector<Vector3> m_vecPositions;
    std::vector<Vector3> m_vecNormals;       ///< one per position
    std::vector<Vector3> m_vecCoordinates;   ///< one per position, or none
    std::vector<unsigned int> m_vecIndices;  ///< three per triangle, clockwise from the front (left-handed)
    std::vector<Bone> m_vecBones;
};

/// Where a texture's picture comes from: a file, or bytes that the model carried.
struct TextureSource
{
    std::string m_strName;                  ///< as the model names it; empty: no texture
    std::string m_strFile;                  ///< full path; empty when embedded or not found
    std::vector<unsigned char> m_vecBytes;  ///< content of a picture file, when embedded
};

/// A surface as modelling tools describe it. Colours on the scale 0 to 255.
struct Surface
{
    std::string m_strName;  ///< no two surfaces of a model have the same
    G_FColor m_diffuse{204.0F, 204.0F, 204.0F};
    G_FColor m_ambient{255.0F, 255.0F, 255.0F};
    G_FColor m_specular{0.0F, 0.0F, 0.0F};
    float m_fShininess = 0.0F;
    float m_fOpacity = 1.0F;  ///< 0 to 1
    bool m_bTwoSided = false;
    bool m_bCutOut = false;  ///< parts of the texture are transparent
    TextureSource m_diffuseTexture;
    TextureSource m_opacityTexture;
};

/// Motion of one node. Times in seconds, ascending.
struct Channel
{
    template <typename T>
    using Keys = std::vector<std::pair<double, T>>;

    int m_iNode = 0;
    Keys<Vector3d> m_vecPositions;
    Keys<Quaternion> m_vecRotations;
    Keys<Vector3d> m_vecScales;
};

/// One named motion of the whole model.
struct Clip
{
    std::string m_strName;
    double m_dDuration = 0.0;  ///< seconds
    std::vector<Channel> m_vecChannels;
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
    Matrixd m_root;                ///< the file's space to the scene's; part of every matrix of the root node
    std::vector<Node> m_vecNodes;  ///< parents before their children
    std::vector<Mesh> m_vecMeshes;
    std::vector<Surface> m_vecSurfaces;
    std::vector<Clip> m_vecClips;
    std::vector<Camera> m_vecCameras;
    std::vector<Light> m_vecLights;
    std::vector<std::string> m_vecWarnings;

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
