#pragma once

#include <tw2/io/mesh_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/runtime/memory_file_writer.h>

/// Writes a skin's geometry with one material, whose texture lies in textures/, and its skin data. The material is
/// named as the mesh says.
inline void writeSkinFiles(const char* meshFile, const char* skinFile, const TW2::MeshChunk& mesh,
                           const TW2::SkinChunk& binding, const char* texture, const char* picture)
{
    TW2::TWMaterialChunk cloth;
    cloth.name = mesh.materials.names.front();
    cloth.shading = TW2::TWMaterialChunk::SHADING_GOURAUD;
    cloth.ambientColor = {255.0F, 255.0F, 255.0F};
    TW2::MaterialTextureChunk& diffuse = cloth.accessDiffuseTexture();
    diffuse.name = texture;
    diffuse.frameFiles.push_back(picture);
    diffuse.filter = 3;  // trilinear
    TW2::MaterialListChunk materials;
    materials.texturePath = "textures";
    materials.materials.push_back(cloth);
    S_MemoryFileWriter meshes;
    meshes << materials << mesh;
    meshes.save(meshFile);
    S_MemoryFileWriter skinData;
    skinData << binding;
    skinData.save(skinFile);
}
