#include "fuzz/seeds/seeds.h"

#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/memory_file_writer.h>

namespace
{
void fillTexture(TW2::MaterialTextureChunk& texture, int frames)
{
    texture.name = "wave";
    texture.framesPerSecond = 12;
    for (int i = 0; i < frames; ++i)
    {
        texture.frameFiles.emplace_back("wave.png");
    }
}

const fuzz::SeedSource s_materials("material_list",
                                   [](fuzz::SeedFolder& seeds)
                                   {
                                       for (int shading = 0; shading < 3; ++shading)
                                       {
                                           TW2::MaterialListChunk list;
                                           list.texturePath = "textures;more\\textures";
                                           list.materials.resize(3);
                                           list.materials[0].name = "plain";
                                           list.materials[0].shading = shading;
                                           list.materials[1].specular = 1;
                                           list.materials[1].alphaTest = true;
                                           fillTexture(list.materials[2].accessDiffuseTexture(), 1);
                                           fillTexture(list.materials[2].accessGlossTexture(), 3);
                                           S_MemoryFileWriter writer;
                                           writer << list;
                                           seeds.add("materials_" + std::to_string(shading), writer.getBytes());
                                       }
                                   });
}  // namespace
