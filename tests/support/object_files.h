#pragma once

#include "tests/support/mesh_builder.h"
#include "tests/support/records.h"
#include "tests/support/temporary_directory.h"

#include <tw2/io/helper_chunk.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/memory_file_writer.h>

#include <memory>
#include <string>
#include <vector>

namespace support
{
/// Writes what an animated object is built from (a geometry file of one-triangle meshes, animation files, the script)
/// into a folder of its own, and builds objects from it.
///
///     ObjectFiles files;
///     files.addMesh("hip");
///     files.addMesh("leg", "hip", M_Matrix4x3Template<float>::translation({0, 0, -1}));
///     files.addAnimation(0, {tracks...});
///     const auto object = files.build("orthonormalized");
class ObjectFiles
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    /// A mesh below another (empty: below the object), which must have been added before.
    void addMesh(const std::string& name, const std::string& parent = "", const Matrix& transform = {})
    {
        TW2::MeshChunk mesh = makeMesh(name, parent);
        mesh.transform = transform;
        m_geometry << mesh;
    }
    void addMesh(const TW2::MeshChunk& mesh) { m_geometry << mesh; }
    /// A mesh of the old layout.
    void addLegacyMesh(const LegacyMesh& mesh) { write(m_geometry, mesh); }
    void addHelper(const TW2::HelperChunk& helper) { m_geometry << helper; }
    /// Materials, wherever in the file they stand.
    void addMaterials(const TW2::MaterialListChunk& materials) { m_geometry << materials; }

    /// An animation file with these tracks, and its block in the script; `more` are further keys and blocks of that.
    void addAnimation(int index, const std::vector<TW2::KeyframeAnimationChunk>& tracks, const std::string& more = "")
    {
        m_script += "    animation { index " + std::to_string(index) + "  filename \"" +
                    writeAnimation("animation" + std::to_string(++m_iAnimationFiles) + ".tw", tracks) + "\" " + more +
                    " }\n";
    }

    /// An animation file only; returns its full name.
    std::string writeAnimation(const std::string& name, const std::vector<TW2::KeyframeAnimationChunk>& tracks) const
    {
        S_MemoryFileWriter writer;
        for (const TW2::KeyframeAnimationChunk& track : tracks)
        {
            writer << track;
        }
        return m_directory.write(name, writer.getBytes());
    }

    /// Writes geometry and script, with a block "object"; `geometryKeys` are further lines of its "geometry" block.
    /// Returns the script's full name.
    std::string writeScript(const std::string& crossMode = "linear", const std::string& geometryKeys = "") const
    {
        const std::string geometry = m_directory.write("geometry.tw", m_geometry.getBytes());
        return m_directory.write("object.txt", "object\n{\n    geometry\n    {\n        exportdata \"" + geometry +
                                                   "\"\n        crossmode \"" + crossMode + "\"\n" + geometryKeys +
                                                   "    }\n" + m_script + "}\n");
    }

    std::unique_ptr<TW2::TW_ObjectAnimation> build(const std::string& crossMode = "linear",
                                                   bool withVisibility = false) const
    {
        return std::make_unique<TW2::TW_ObjectAnimation>(writeScript(crossMode).c_str(), "object", nullptr,
                                                         withVisibility);
    }

    [[nodiscard]] const TemporaryDirectory& getDirectory() const { return m_directory; }

private:
    TemporaryDirectory m_directory;
    S_MemoryFileWriter m_geometry;
    std::string m_script;
    int m_iAnimationFiles = 0;
};

/// The local matrices of all meshes.
inline std::vector<M_Matrix4x3Template<float>> takePose(const TW2::TW_VirtualObject& object)
{
    std::vector<M_Matrix4x3Template<float>> pose;
    for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
    {
        pose.push_back(object.getMesh(i)->getMatrix());
    }
    return pose;
}

/// A group of the meshes with these numbers, attached to the object.
inline std::unique_ptr<TW2::TW_BoneGroupHandle> makeGroup(TW2::TW_ObjectAnimation& object,
                                                          const std::vector<std::size_t>& meshes)
{
    std::vector<TW2::TW_BoneHandle> handles;
    for (const std::size_t mesh : meshes)
    {
        handles.push_back(object.getBoneHandle(object.getMesh(static_cast<unsigned int>(mesh))->getName()));
    }
    auto group = std::make_unique<TW2::TW_BoneGroupHandle>(static_cast<int>(handles.size()), handles.data());
    group->attach(&object);
    return group;
}
}  // namespace support
