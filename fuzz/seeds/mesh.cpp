#include "fuzz/seeds/seeds.h"
#include "tests/support/mesh_builder.h"

namespace
{
using support::LegacyMesh;

void add(fuzz::SeedFolder& seeds, const char* name, const LegacyMesh& mesh)
{
    S_MemoryFileWriter writer;
    write(writer, mesh);
    seeds.add(name, writer.getBytes());
}

void add(fuzz::SeedFolder& seeds, const char* name, const TW2::MeshChunk& mesh)
{
    S_MemoryFileWriter writer;
    writer << mesh;
    seeds.add(name, writer.getBytes());
}

const fuzz::SeedSource s_current("mesh",
                                 [](fuzz::SeedFolder& seeds)
                                 {
                                     add(seeds, "plain", support::makeStripMesh("a", 3));
                                     add(seeds, "groups", support::makeStripMesh("b", 2, {"x", "y", "z"}));
                                     TW2::MeshChunk instance;
                                     instance.editInstanceName() = "a";
                                     instance.editSmoothingGroups().masks = {1, 2};
                                     add(seeds, "instance", instance);
                                 });

const fuzz::SeedSource s_old("mesh",
                             [](fuzz::SeedFolder& seeds)
                             {
                                 LegacyMesh cube = support::makeLegacyCube();
                                 add(seeds, "old_cube", cube);
                                 for (std::size_t i = 0; i < cube.masks.size(); ++i)
                                 {
                                     cube.masks[i] = static_cast<unsigned int>(5 * i);
                                 }
                                 add(seeds, "old_cube_with_edges", cube);
                                 LegacyMesh field = support::makeLegacyField(3, 2);
                                 field.version = 1;
                                 add(seeds, "old_field", field);
                                 field.materials = {"a", "b"};
                                 field.faceMaterials[3] = 1;
                                 field.channels.push_back(field.channels[0]);
                                 add(seeds, "old_field_of_two_materials", field);
                             });
}  // namespace
