#include "convert/scene_writer.h"

#include "convert/precision.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/mesh_chunk.h>

#include <cmath>
#include <map>
#include <string>

namespace TW2::convert
{
namespace
{
void fillNode(NodeChunk& record, const Skeleton& skeleton, std::size_t index)
{
    const Joint& joint = skeleton.m_vecJoints[index];
    record.name = joint.m_strName.c_str();
    record.transform = toFloat(joint.m_local);
    record.hasParent = joint.m_iParent >= 0;
    if (record.hasParent)
    {
        record.parentName = skeleton.m_vecJoints[static_cast<std::size_t>(joint.m_iParent)].m_strName.c_str();
    }
}

/// Looks along `forward` (its z axis) from `position`.
Matrixd lookAlong(const Vector3d& position, const Vector3d& forward, const Vector3d& up)
{
    Matrixd result = Matrixd::translation(position);
    const Vector3d z = forward.normalized();
    Vector3d x = up.cross(z).normalized();
    if (x == Vector3d())
    {
        x = (std::abs(z.x) < 0.9 ? Vector3d(1.0, 0.0, 0.0) : Vector3d(0.0, 1.0, 0.0)).cross(z).normalized();
    }
    if (z != Vector3d())
    {
        result.setRow(0, x);
        result.setRow(1, z.cross(x));
        result.setRow(2, z);
    }
    return result;
}

template <typename Record>
void fillLight(Record& record, const Light& light, const Skeleton& skeleton)
{
    const std::string& holder = skeleton.m_vecJoints[static_cast<std::size_t>(light.m_iNode)].m_strName;
    record.name = (holder + "_light").c_str();
    record.parentName = holder.c_str();
    record.hasParent = true;
    record.transform = toFloat(lookAlong(light.m_vPosition, light.m_vForward, {0.0, 1.0, 0.0}));
    record.color = light.m_color;
    record.brightness = light.m_fBrightness;
}

void writeLight(S_MemoryFileWriter& writer, const Light& light, const Skeleton& skeleton)
{
    if (light.m_eKind == Light::Kind::Directional)
    {
        DirectionalLightChunk record;
        fillLight(record, light, skeleton);
        writer << record;
        return;
    }
    if (light.m_eKind == Light::Kind::Point)
    {
        PointLightChunk record;
        fillLight(record, light, skeleton);
        record.fallOff = light.m_fRange;
        writer << record;
        return;
    }
    SpotLightChunk record;
    fillLight(record, light, skeleton);
    record.fallOff = light.m_fRange;
    record.hotSpotAngle = light.m_fInnerAngle;
    record.fallOffAngle = light.m_fOuterAngle;
    writer << record;
}
}  // namespace

void writeSkeleton(S_MemoryFileWriter& writer, const Skeleton& skeleton)
{
    for (std::size_t joint = 0; joint < skeleton.m_vecJoints.size(); ++joint)
    {
        MeshChunk record;
        fillNode(record, skeleton, joint);
        writer << record;
    }
}

GeometrySize writeGeometry(S_MemoryFileWriter& writer, const Model& model, const std::vector<SurfacePlan>& plans,
                           const Skeleton& skeleton)
{
    GeometrySize size;
    std::map<std::vector<int>, std::string> written;  // by the meshes that a node shows
    for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
    {
        const Node& source = model.m_vecNodes[node];
        MeshChunk record;
        fillNode(record, skeleton, node);
        if (const auto same = written.find(source.m_vecMeshes); same != written.end())
        {
            record.editInstanceName() = same->second.c_str();
        }
        else if (!source.m_vecMeshes.empty())
        {
            GeometryBuilder geometry;
            for (const int index : source.m_vecMeshes)
            {
                const Mesh& mesh = model.m_vecMeshes[static_cast<std::size_t>(index)];
                geometry.add(arrangeMesh(mesh, plans[static_cast<std::size_t>(mesh.m_iMaterial)].m_vecLayers),
                             Matrixd(), {});
            }
            if (!geometry.isEmpty())
            {
                geometry.fill(record, model.m_vecSurfaces);
                written.emplace(source.m_vecMeshes, skeleton.m_vecJoints[node].m_strName);
            }
            size.m_uiVertices += geometry.getVertexCount();
            size.m_uiTriangles += geometry.getTriangleCount();
            size.m_uiGroups += geometry.getGroupCount();
        }
        writer << record;
    }
    return size;
}

void writeStage(S_MemoryFileWriter& writer, const Model& model, const Skeleton& skeleton)
{
    for (const Camera& camera : model.m_vecCameras)
    {
        // Hosts are handed a camera's transform without its parent, so it is the one in the scene.
        const auto node = static_cast<std::size_t>(camera.m_iNode);
        CameraChunk record;
        record.name = skeleton.m_vecJoints[node].m_strName.c_str();
        record.transform = toFloat(lookAlong(camera.m_vPosition, camera.m_vForward, camera.m_vUp) *
                                   skeleton.m_vecJoints[node].m_world);
        record.value0 = camera.m_fHorizontalAngle;
        record.value1 = camera.m_fNear;
        record.value2 = camera.m_fFar;
        writer << record;
    }
    for (const Light& light : model.m_vecLights)
    {
        writeLight(writer, light, skeleton);
    }
    for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
    {
        if (!model.m_vecNodes[node].m_strNotes.empty())
        {
            HelperChunk record;
            fillNode(record, skeleton, node);
            record.helperString = model.m_vecNodes[node].m_strNotes.c_str();
            writer << record;
        }
    }
}
}  // namespace TW2::convert
