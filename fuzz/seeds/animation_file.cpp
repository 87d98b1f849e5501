#include "fuzz/seeds/seeds.h"
#include "tests/support/every_kind.h"

namespace
{
template <typename R>
void addOne(fuzz::SeedFolder& seeds, const char* name, const R& record)
{
    S_MemoryFileWriter writer;
    writer << record;
    seeds.add(name, writer.getBytes());
}

const fuzz::SeedSource s_source("animation_file",
                                [](fuzz::SeedFolder& seeds)
                                {
                                    S_MemoryFileWriter all;
                                    support::writeEveryKind(all);
                                    seeds.add("every_kind", all.getBytes());
                                    addOne(seeds, "camera", TW2::CameraChunk());
                                    addOne(seeds, "point_light", TW2::PointLightChunk());
                                    addOne(seeds, "directional_light", TW2::DirectionalLightChunk());
                                    addOne(seeds, "spot_light", TW2::SpotLightChunk());
                                    addOne(seeds, "helper", TW2::HelperChunk());
                                    addOne(seeds, "environment", TW2::EnvironmentChunk());
                                    addOne(seeds, "mesh", support::makeStripMesh("m", 1));
                                    addOne(seeds, "point_light_animation", TW2::PointLightAnimationChunk());
                                    addOne(seeds, "directional_light_animation", TW2::DirectionalLightAnimationChunk());
                                    addOne(seeds, "spot_light_animation", TW2::SpotLightAnimationChunk());
                                });
}  // namespace
