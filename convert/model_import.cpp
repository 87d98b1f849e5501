#include "convert/model_import.h"

#include "convert/assimp_types.h"
#include "convert/clip_selection.h"
#include "convert/convert_exception.h"
#include "convert/file_ending.h"
#include "convert/light_range.h"
#include "convert/model_space.h"
#include "convert/normals.h"
#include "convert/precision.h"
#include "convert/surface_import.h"
#include "convert/unique_names.h"

#include <platform/runtime/file.h>

#include <assimp/config.h>
#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <filesystem>
#include <numbers>
#include <unordered_map>

namespace TW2::convert
{
namespace
{
constexpr double defaultTicksPerSecond = 25.0;  // what importers mean when a file does not say
constexpr float degrees = 180.0F / std::numbers::pi_v<float>;

/// Builds a Model from an imported scene.
class Builder
{
public:
    Builder(const aiScene& scene, const std::string& fileName, const std::vector<std::string>& textureFolders)
        : m_scene(scene), m_strFileName(fileName), m_pictures(fileName, textureFolders)
    {
    }

    Model build(const Matrixd& root)
    {
        m_model.m_strName = std::filesystem::path(m_strFileName).stem().string();
        m_model.m_root = root;
        addNodes();
        addSurfaces();
        addMeshes();
        addClips();
        if (hasEnding(m_strFileName, ".dae"))
        {
            joinClips();
        }
        addCameras();
        addLights();
        const std::vector<std::string> lines = m_warnings.makeLines();
        m_model.m_vecWarnings.insert(m_model.m_vecWarnings.end(), lines.begin(), lines.end());
        return std::move(m_model);
    }

private:
    void addNodes()
    {
        std::vector<std::pair<const aiNode*, int>> pending{{m_scene.mRootNode, -1}};
        for (std::size_t next = 0; next < pending.size(); ++next)
        {
            const auto [source, parent] = pending[next];
            Node node;
            node.m_strName = source->mName.C_Str();
            node.m_iParent = parent;
            node.m_local =
                parent < 0 ? toMatrix(source->mTransformation) * m_model.m_root : toMatrix(source->mTransformation);
            const int index = static_cast<int>(m_model.m_vecNodes.size());
            for (unsigned int i = 0; i < source->mNumMeshes; ++i)
            {
                node.m_vecMeshes.push_back(static_cast<int>(source->mMeshes[i]));
            }
            for (unsigned int i = 0; i < source->mNumChildren; ++i)
            {
                pending.emplace_back(source->mChildren[i], index);
            }
            node.m_strNotes = collectNotes(*source);
            m_mapNodes.try_emplace(source->mName.C_Str(), index);
            m_model.m_vecNodes.push_back(std::move(node));
        }
    }

    /// The text values that the model keeps with a node.
    static std::string collectNotes(const aiNode& source)
    {
        std::string notes;
        for (unsigned int i = 0; source.mMetaData && i < source.mMetaData->mNumProperties; ++i)
        {
            aiString value;
            if (source.mMetaData->Get(i, value) && value.length > 0)
            {
                notes += std::string(source.mMetaData->mKeys[i].C_Str()) + "=" + value.C_Str() + "\n";
            }
        }
        return notes;
    }

    /// Index of the node that bones, channels, cameras and lights call by name; -1 when there is none.
    [[nodiscard]] int findNode(const aiString& name) const
    {
        const auto found = m_mapNodes.find(name.C_Str());
        return found == m_mapNodes.end() ? -1 : found->second;
    }

    void addSurfaces()
    {
        UniqueNames names("material");
        for (unsigned int i = 0; i < m_scene.mNumMaterials; ++i)
        {
            Surface surface = importSurface(m_scene, *m_scene.mMaterials[i], m_pictures, m_warnings);
            surface.m_strName = names.make(surface.m_strName);
            m_model.m_vecSurfaces.push_back(std::move(surface));
        }
        m_model.m_vecPictures = m_pictures.take();
    }

    void addMeshes()
    {
        for (unsigned int i = 0; i < m_scene.mNumMeshes; ++i)
        {
            m_model.m_vecMeshes.push_back(importMesh(*m_scene.mMeshes[i]));
        }
    }

    Mesh importMesh(const aiMesh& source)
    {
        Mesh mesh;
        mesh.m_strName = source.mName.C_Str();
        mesh.m_iMaterial = static_cast<int>(source.mMaterialIndex);
        constexpr auto triangles =
            static_cast<unsigned int>(aiPrimitiveType_TRIANGLE | aiPrimitiveType_NGONEncodingFlag);
        if ((source.mPrimitiveTypes & ~triangles) != 0)
        {
            m_warnings.addLeftOut("mesh \"" + mesh.m_strName + "\"", "what consists of points and lines");
            return mesh;
        }
        const std::size_t count = source.mNumVertices;
        for (std::size_t v = 0; v < count; ++v)
        {
            mesh.m_vecPositions.push_back(toVector(source.mVertices[v]));
            if (source.HasNormals())
            {
                mesh.m_vecNormals.push_back(toVector(source.mNormals[v]));
            }
            if (source.HasVertexColors(0))
            {
                mesh.m_vecColors.push_back(toColor(source.mColors[0][v]));
            }
        }
        for (unsigned int set = 0; source.HasTextureCoords(set); ++set)
        {
            std::vector<Vector3>& coordinates = mesh.m_vecCoordinates.emplace_back();
            std::transform(source.mTextureCoords[set], source.mTextureCoords[set] + count,
                           std::back_inserter(coordinates), toVector);
        }
        for (unsigned int f = 0; f < source.mNumFaces; ++f)
        {
            const aiFace& face = source.mFaces[f];
            if (face.mNumIndices == 3 &&
                std::all_of(face.mIndices, face.mIndices + 3, [count](unsigned int index) { return index < count; }))
            {
                mesh.m_vecIndices.insert(mesh.m_vecIndices.end(), face.mIndices, face.mIndices + 3);
            }
        }
        if (!source.HasNormals())
        {
            addSmoothNormals(mesh);
        }
        for (unsigned int b = 0; b < source.mNumBones; ++b)
        {
            importBone(*source.mBones[b], count, mesh);
        }
        if (source.mNumAnimMeshes > 0)
        {
            m_warnings.addLeftOut("mesh \"" + mesh.m_strName + "\"", "morph targets");
        }
        return mesh;
    }

    void importBone(const aiBone& source, std::size_t vertexCount, Mesh& mesh)
    {
        Bone bone;
        bone.m_iNode = findNode(source.mName);
        if (bone.m_iNode < 0)
        {
            m_model.m_vecWarnings.push_back("mesh \"" + mesh.m_strName + "\": bone \"" + source.mName.C_Str() +
                                            "\" is no node of the model and left out");
            return;
        }
        bone.m_offset = toMatrix(source.mOffsetMatrix);
        for (unsigned int i = 0; i < source.mNumWeights; ++i)
        {
            const aiVertexWeight& weight = source.mWeights[i];
            if (weight.mVertexId < vertexCount && weight.mWeight > 0.0F && std::isfinite(weight.mWeight))
            {
                bone.m_vecWeights.emplace_back(weight.mVertexId, weight.mWeight);
            }
        }
        mesh.m_vecBones.push_back(std::move(bone));
    }

    void addClips()
    {
        for (unsigned int i = 0; i < m_scene.mNumAnimations; ++i)
        {
            const aiAnimation& source = *m_scene.mAnimations[i];
            Clip clip;
            clip.m_strName = source.mName.C_Str();
            const double ticks = source.mTicksPerSecond > 0.0 ? source.mTicksPerSecond : defaultTicksPerSecond;
            clip.m_dDuration = std::max(source.mDuration, 0.0) / ticks;
            for (unsigned int c = 0; c < source.mNumChannels; ++c)
            {
                importChannel(*source.mChannels[c], ticks, clip);
            }
            if (source.mNumMorphMeshChannels > 0 || source.mNumMeshChannels > 0)
            {
                m_model.m_vecWarnings.push_back("clip \"" + clip.m_strName + "\": morph animation is left out");
            }
            m_model.m_vecClips.push_back(std::move(clip));
        }
    }

    /// The format says that all animations play together: those that the importer took apart are one again.
    void joinClips()
    {
        if (areParts(m_model.m_vecClips))
        {
            m_model.m_vecClips = {
                mergeClips(m_model, std::move(m_model.m_vecClips), m_model.m_strName, m_model.m_vecWarnings)};
        }
    }

    void importChannel(const aiNodeAnim& source, double ticks, Clip& clip)
    {
        Channel channel;
        channel.m_iNode = findNode(source.mNodeName);
        if (channel.m_iNode < 0)
        {
            m_model.m_vecWarnings.push_back("clip \"" + clip.m_strName + "\": moves \"" + source.mNodeName.C_Str() +
                                            "\", which the model does not have");
            return;
        }
        importKeys(source.mPositionKeys, source.mNumPositionKeys, ticks, toVectord, channel.m_positions);
        importKeys(source.mRotationKeys, source.mNumRotationKeys, ticks, toQuaternion, channel.m_rotations);
        importKeys(source.mScalingKeys, source.mNumScalingKeys, ticks, toVectord, channel.m_scales);
        clip.m_vecChannels.push_back(std::move(channel));
    }

    template <typename Key, typename Convert, typename T>
    static void importKeys(const Key* keys, unsigned int count, double ticks, Convert convert, Curve<T>& curve)
    {
        for (const Key* key = keys; key != keys + count; ++key)
        {
            curve.m_vecTimes.push_back(key->mTime / ticks);
            curve.m_vecValues.push_back(convert(key->mValue));
        }
    }

    void addCameras()
    {
        for (unsigned int i = 0; i < m_scene.mNumCameras; ++i)
        {
            const aiCamera& source = *m_scene.mCameras[i];
            if (const int node = findNode(source.mName); node >= 0)
            {
                m_model.m_vecCameras.push_back({node, toVectord(source.mPosition), toVectord(source.mLookAt),
                                                toVectord(source.mUp), source.mHorizontalFOV * degrees,
                                                source.mClipPlaneNear, source.mClipPlaneFar});
            }
        }
    }

    void addLights()
    {
        for (unsigned int i = 0; i < m_scene.mNumLights; ++i)
        {
            const aiLight& source = *m_scene.mLights[i];
            const int node = findNode(source.mName);
            if (node < 0 || source.mType == aiLightSource_AMBIENT || source.mType == aiLightSource_UNDEFINED)
            {
                continue;
            }
            Light light;
            light.m_iNode = node;
            light.m_vPosition = toVectord(source.mPosition);
            light.m_vForward = toVectord(source.mDirection);
            light.m_eKind = source.mType == aiLightSource_DIRECTIONAL ? Light::Kind::Directional
                            : source.mType == aiLightSource_SPOT      ? Light::Kind::Spot
                                                                      : Light::Kind::Point;
            const aiColor3D& color = source.mColorDiffuse;
            const float strongest = std::max({color.r, color.g, color.b, 1e-6F});
            light.m_fBrightness = std::max(strongest, 1.0F);
            light.m_color = G_FColor(color.r, color.g, color.b, 1.0F) * (255.0F / light.m_fBrightness);
            light.m_fRange = findRange(source.mAttenuationLinear, source.mAttenuationQuadratic);
            light.m_fInnerAngle = source.mAngleInnerCone * degrees;
            light.m_fOuterAngle = source.mAngleOuterCone * degrees;
            m_model.m_vecLights.push_back(light);
        }
    }

    const aiScene& m_scene;
    const std::string& m_strFileName;
    PictureCollector m_pictures;
    Warnings m_warnings;
    std::unordered_map<std::string, int> m_mapNodes;
    Model m_model;
};

/// The axis of the imported scene that points up. Importers turn most formats so that it is y; what some do not turn
/// has to be known.
ImportOptions::UpAxis findUp(const aiScene& scene, const std::string& fileName)
{
    if (hasEnding(fileName, ".smd") || hasEnding(fileName, ".vta") || hasEnding(fileName, ".csm"))
    {
        return ImportOptions::UpAxis::Z;
    }
    int axis = 1;
    if (scene.mMetaData && scene.mMetaData->Get("UpAxis", axis) && axis != 1)
    {
        return axis == 0 ? ImportOptions::UpAxis::X : ImportOptions::UpAxis::Z;
    }
    return ImportOptions::UpAxis::Y;
}

std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '\r'))
    {
        text.pop_back();
    }
    return text;
}
/// What an importer throws of its own comes out as this room's exception.
const aiScene* read(Assimp::Importer& importer, const std::string& fileName)
{
    constexpr unsigned int steps = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_SortByPType |
                                   aiProcess_TransformUVCoords | aiProcess_GenUVCoords | aiProcess_ConvertToLeftHanded;
    try
    {
        return importer.ReadFile(fileName, steps);
    }
    catch (const std::exception& exception)
    {
        const std::string reason = "the importer failed on it: " + oneLine(exception.what());
        throw ConvertException(fileName.c_str(), reason.c_str());
    }
}

/// Files as they are, and which of them were read: a model may name others, such as its materials.
class ReadFiles : public Assimp::DefaultIOSystem
{
public:
    /// The list must outlive the object.
    explicit ReadFiles(std::vector<std::string>& names) : m_vecNames(names) {}
    Assimp::IOStream* Open(const char* name, const char* mode) override
    {
        Assimp::IOStream* const stream = DefaultIOSystem::Open(name, mode);
        if (stream && std::find(m_vecNames.begin(), m_vecNames.end(), name) == m_vecNames.end())
        {
            m_vecNames.emplace_back(name);
        }
        return stream;
    }

private:
    std::vector<std::string>& m_vecNames;
};
}  // namespace

Model importModel(const std::string& fileName, const ImportOptions& options)
{
    std::vector<std::string> sources;
    Assimp::Importer importer;
    importer.SetIOHandler(new ReadFiles(sources));  // the importer deletes it
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    const aiScene* scene = read(importer, fileName);
    if (!scene || !scene->mRootNode)
    {
        const std::string reason = oneLine(importer.GetErrorString());
        throw ConvertException(fileName.c_str(), reason.empty() ? "cannot be read" : reason.c_str());
    }
    const bool automatic = options.m_eUp == ImportOptions::UpAxis::Automatic;
    const ImportOptions::UpAxis up = !automatic ? options.m_eUp : findUp(*scene, fileName);
    const Matrixd root = makeRoot(up, options.m_dScale);
    Model model = Builder(*scene, fileName, options.m_vecTextureFolders).build(root);
    std::erase(sources, fileName);
    model.m_vecSources.insert(model.m_vecSources.end(), sources.begin(), sources.end());
    return model;
}
}  // namespace TW2::convert
