#include "fuzz/seeds/seeds.h"
#include "tests/support/mesh_builder.h"
#include "tests/support/records.h"

#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/memory_file_writer.h>

#include <string>

namespace
{
void writeCharacter(S_MemoryFileWriter& writer)
{
    TW2::MaterialListChunk materials;
    materials.materials = {support::makeSolidMaterial("skin"), support::makeSolidMaterial("cloth")};
    materials.materials[1].vertexAlpha = true;
    writer << materials;
    TW2::MeshChunk body = support::makeMesh("body", "", {{3, 1}, {4, 2}});
    support::setMaterials(body, {"skin", "cloth"});
    support::setChannel(body, 0, 1.0F, {false, true});
    writer << body << support::makeMesh("head", "body");
    TW2::MeshChunk twin;
    twin.name = "twin";
    twin.hasInstance = true;
    twin.instanceOf = "head";
    writer << twin;
}

const fuzz::SeedSource s_objectAnimation("object_animation",
                                         [](fuzz::SeedFolder& seeds)
                                         {
                                             S_MemoryFileWriter character;
                                             writeCharacter(character);
                                             seeds.add("geometry", character.getBytes());
                                             TW2::KeyframeAnimationChunk track = support::makeTrack("head", 3.0F);
                                             track.visibilityKeys = {{0, 1.0F}, {5, -1.0F}};
                                             character << track << support::makeTrack("body", 2.0F);
                                             seeds.add("geometry_and_tracks", character.getBytes());
                                             S_MemoryFileWriter legacy;
                                             support::write(legacy, support::makeLegacyCube());
                                             support::write(legacy, support::makeLegacyField(3, 2));
                                             seeds.add("old_layout", legacy.getBytes());
                                         });
}  // namespace
