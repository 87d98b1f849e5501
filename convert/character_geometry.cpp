#include "convert/character_geometry.h"

#include "convert/convert_exception.h"
#include "convert/precision.h"

#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/runtime/memory_file.h>

#include <functional>
#include <map>

namespace TW2::convert
{
namespace
{
/// Goes through the records of one kind.
template <typename Record>
void forEach(const std::string& fileName, unsigned int kind, const std::function<void(const Record&)>& take)
{
    S_MemoryFile file(fileName, S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    for (file.peekChunk(chunk); chunk.isValid(); file.peekChunk(chunk))
    {
        if (chunk.getID() == kind)
        {
            Record record;
            file >> record;
            take(record);
        }
        file.skipChunk();
    }
}

std::map<std::string, int> listNodes(const Model& model)
{
    std::map<std::string, int> nodes;
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        nodes.emplace(model.m_vecNodes[i].m_strName, static_cast<int>(i));
    }
    return nodes;
}

/// Vertices and triangles; those of all groups as one.
Mesh makeMesh(const MeshChunk& record)
{
    Mesh mesh;
    for (std::size_t group = 0; group < record.getGroupCount(); ++group)
    {
        const auto first = static_cast<unsigned int>(mesh.m_vecPositions.size());
        for (unsigned int vertex = 0; vertex < record.getVertexCount(group); ++vertex)
        {
            mesh.m_vecPositions.push_back(record.getPosition(group, vertex));
        }
        for (unsigned int triangle = 0; triangle < record.getTriangleCount(group); ++triangle)
        {
            for (std::size_t corner = 0; corner < 3; ++corner)
            {
                mesh.m_vecIndices.push_back(first + record.getIndex(group, triangle, corner));
            }
        }
    }
    return mesh;
}

/// Makes the vertices hang on the bones that skin data name; they stand in the scene, in the pose at rest.
void hangOnBones(Mesh& mesh, const SkinChunk& skin, const std::vector<int>& nodes, const std::vector<Matrixd>& world)
{
    for (const int node : nodes)
    {
        Bone& bone = mesh.m_vecBones.emplace_back();
        bone.m_iNode = node;
        bone.m_offset = world[static_cast<std::size_t>(node)].inverse();
    }
    unsigned int vertex = 0;
    for (std::size_t primitive = 0; primitive < skin.primitiveVertexCounts.size(); ++primitive)
    {
        for (unsigned int v = 0; v < skin.primitiveVertexCounts[primitive]; ++v, ++vertex)
        {
            const std::size_t entry = skin.primitiveFirstVertices[primitive] + v;
            for (int k = 0; k < skin.vertexBoneCounts[entry]; ++k)
            {
                const auto influence = static_cast<std::size_t>(skin.vertexInfluenceStarts[entry] + k);
                const auto bone = static_cast<std::size_t>(skin.influenceBones[influence]);
                mesh.m_vecBones[bone].m_vecWeights.emplace_back(vertex, skin.influenceWeights[influence]);
            }
        }
    }
}

bool isInStep(const MeshChunk& mesh, const SkinChunk& skin)
{
    bool same = skin.primitiveVertexCounts.size() == mesh.getGroupCount();
    for (std::size_t group = 0; same && group < mesh.getGroupCount(); ++group)
    {
        same = skin.primitiveVertexCounts[group] == mesh.getVertexCount(group);
    }
    return same && !mesh.hasVertexMap();
}
}  // namespace

void readBones(Model& model, const std::string& geometryFile)
{
    std::map<std::string, int> nodes;
    std::map<std::string, int> shown;
    forEach<MeshChunk>(geometryFile, CHUNK_MESH,
                       [&](const MeshChunk& record)
                       {
                           Node node;
                           node.m_strName = record.name.c_str();
                           node.m_local = toDouble(record.transform);
                           if (record.hasParent)
                           {
                               const auto parent = nodes.find(record.parentName.c_str());
                               if (parent == nodes.end())
                               {
                                   const std::string reason = "mesh \"" + node.m_strName + "\" hangs on \"" +
                                                              record.parentName.c_str() +
                                                              "\", which is not there before it";
                                   throw ConvertException(geometryFile.c_str(), reason.c_str());
                               }
                               node.m_iParent = parent->second;
                           }
                           const auto same = record.hasInstance ? shown.find(record.instanceOf.c_str()) : shown.end();
                           if (same != shown.end())
                           {
                               node.m_vecMeshes.push_back(same->second);
                           }
                           else if (Mesh mesh = makeMesh(record); !mesh.m_vecIndices.empty())
                           {
                               node.m_vecMeshes.push_back(static_cast<int>(model.m_vecMeshes.size()));
                               shown.emplace(node.m_strName, node.m_vecMeshes.back());
                               model.m_vecMeshes.push_back(std::move(mesh));
                           }
                           nodes.emplace(node.m_strName, static_cast<int>(model.m_vecNodes.size()));
                           model.m_vecNodes.push_back(std::move(node));
                       });
    if (model.m_vecNodes.empty())
    {
        throw ConvertException(geometryFile.c_str(), "has no meshes that could be moved");
    }
}

void readSkin(Model& model, const std::string& geometryFile, const std::string& skinFile)
{
    std::vector<Mesh> meshes;
    std::vector<Matrixd> world;
    for (const Node& node : model.m_vecNodes)
    {
        world.push_back(node.m_iParent < 0 ? node.m_local
                                           : node.m_local * world[static_cast<std::size_t>(node.m_iParent)]);
    }
    const std::map<std::string, int> nodes = listNodes(model);
    forEach<SkinChunk>(skinFile, CHUNK_SKIN,
                       [&](const SkinChunk& skin)
                       {
                           std::vector<int> bones;
                           for (const S_String& name : skin.boneNames)
                           {
                               const auto found = nodes.find(name.c_str());
                               if (found == nodes.end())
                               {
                                   const std::string reason =
                                       "bone \"" + std::string(name.c_str()) + "\" is not in the skeleton";
                                   throw ConvertException(skinFile.c_str(), reason.c_str());
                               }
                               bones.push_back(found->second);
                           }
                           forEach<MeshChunk>(geometryFile, CHUNK_MESH,
                                              [&](const MeshChunk& record)
                                              {
                                                  if (skin.objectNames.size() == 1 && isInStep(record, skin))
                                                  {
                                                      Mesh& mesh = meshes.emplace_back(makeMesh(record));
                                                      hangOnBones(mesh, skin, bones, world);
                                                  }
                                              });
                       });
    for (Mesh& mesh : meshes)
    {
        model.m_vecMeshes.push_back(std::move(mesh));
    }
}
}  // namespace TW2::convert
