#include "convert/model_reader.h"

#include "convert/convert_exception.h"

#include <algorithm>
#include <filesystem>

#ifdef TW2_HAS_TINYGLTF
#include "convert/gltf_import.h"
#endif
#ifdef TW2_HAS_ZLIB
#include "convert/fbx_import.h"
#endif
#ifdef TW2_HAS_PUGIXML
#include "convert/collada_import.h"
#endif

namespace TW2::convert
{
namespace
{
Model read(const std::string& fileName, const ImportOptions& options)
{
#ifdef TW2_HAS_TINYGLTF
    if (isGltf(fileName))
    {
        return importGltf(fileName, options);
    }
#endif
#ifdef TW2_HAS_ZLIB
    if (isFbx(fileName))
    {
        return importFbx(fileName, options);
    }
#endif
#ifdef TW2_HAS_PUGIXML
    if (isCollada(fileName))
    {
        return importCollada(fileName, options);
    }
#endif
#ifdef TW2_HAS_ASSIMP
    return importModel(fileName, options);
#else
    throw ConvertException(fileName.c_str(),
                           "this program was built without Assimp and reads " TW2_OWN_READERS " only");
#endif
}

/// What no bone of a skin moves hangs on the node that shows it: that becomes a bone of the mesh.
void hangOnHolder(Mesh& mesh, int holder)
{
    std::vector<bool> moved(mesh.m_vecPositions.size(), false);
    for (const Bone& bone : mesh.m_vecBones)
    {
        for (const auto& [vertex, weight] : bone.m_vecWeights)
        {
            moved[vertex] = true;
        }
    }
    Bone bone;
    bone.m_iNode = holder;
    bone.m_bHolder = true;
    for (const unsigned int vertex : mesh.m_vecIndices)
    {
        if (!moved[vertex])
        {
            moved[vertex] = true;
            bone.m_vecWeights.emplace_back(vertex, 1.0F);
        }
    }
    if (!bone.m_vecWeights.empty())
    {
        mesh.m_vecBones.push_back(std::move(bone));
    }
}

void hangOnHolders(Model& model)
{
    for (std::size_t node = model.m_vecNodes.size(); node-- > 0;)
    {
        for (const int index : model.m_vecNodes[node].m_vecMeshes)
        {
            Mesh& mesh = model.m_vecMeshes[static_cast<std::size_t>(index)];
            const bool hangs = !mesh.m_vecBones.empty() && !mesh.m_vecBones.back().m_bHolder;
            if (hangs)
            {
                hangOnHolder(mesh, static_cast<int>(node));
            }
        }
    }
}
}  // namespace

Model readModel(const std::string& fileName, const ImportOptions& options)
{
    if (std::filesystem::is_directory(fileName))
    {
        throw ConvertException(fileName.c_str(), "is a folder, not a model");
    }
    if (!std::filesystem::is_regular_file(fileName))
    {
        throw ConvertException(fileName.c_str(), "there is no such file");
    }
    const std::filesystem::path extension = std::filesystem::path(fileName).extension();
    if (extension == ".script" || extension == ".tw" || extension == ".skd")
    {
        throw ConvertException(fileName.c_str(), "is what the library loads, and needs no conversion");
    }
    Model model = read(fileName, options);
    hangOnHolders(model);
    for (Clip& clip : model.m_vecClips)
    {
        if (clip.m_strName.empty())
        {
            clip.m_strName = "clip";  // what scripts call it, summaries and options may as well
        }
    }
    const bool anyTriangles = std::any_of(model.m_vecMeshes.begin(), model.m_vecMeshes.end(),
                                          [](const Mesh& mesh) { return !mesh.m_vecIndices.empty(); });
    if (!anyTriangles && model.m_vecClips.empty())
    {
        throw ConvertException(fileName.c_str(), "holds neither triangles nor motion");
    }
    return model;
}
}  // namespace TW2::convert
