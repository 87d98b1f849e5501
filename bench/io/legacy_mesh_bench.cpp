#include "bench/yardstick.h"
#include "tests/support/mesh_builder.h"

#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/memory_file.h>

#include <random>

namespace
{
using support::LegacyMesh;

/// Reads one mesh of the old layout again and again; the time is per triangle.
void convert(benchmark::State& state, const LegacyMesh& legacy)
{
    S_MemoryFileWriter writer;
    write(writer, legacy);
    S_MemoryFile file;
    file.constructFromMemory(legacy.name, writer.getBytes().data(), writer.getBytes().size());
    TW2::MeshChunk mesh;
    for (auto _ : state)
    {
        file.seek(0, S_MemoryFile::seekBegin);
        mesh.reset();
        file >> mesh;
        benchmark::DoNotOptimize(mesh.vertices.positions.data());
    }
    TW2::bench::report(state, {.items = legacy.polygons.size(), .bytes = writer.getBytes().size()});
}

/// Smooth, one material, texture seams along every row.
void convertField(benchmark::State& state)
{
    convert(state, support::makeLegacyField(100, static_cast<int>(state.range(0)) / 200));
}
BENCHMARK(convertField)->Name("io/convert old mesh, field")->Arg(1'000)->Arg(10'000)->Arg(60'000);

/// All triangles around one vertex, every mask different from all others.
void convertFan(benchmark::State& state)
{
    std::mt19937 random(1);
    convert(state, support::makeLegacyFan(static_cast<int>(state.range(0)),
                                          [&random](int) { return static_cast<unsigned int>(random()); }));
}
BENCHMARK(convertFan)->Name("io/convert old mesh, fan of masks")->Arg(1'000)->Arg(10'000)->Arg(20'000)->Arg(60'000);

/// All triangles around one vertex, which has another texture coordinate in each.
void convertTexturedFan(benchmark::State& state)
{
    LegacyMesh fan = support::makeLegacyFan(static_cast<int>(state.range(0)), [](int) { return 1U; });
    fan.materials = {"a", "b", "c"};
    LegacyMesh::Channel channel;
    for (int i = 0; i < static_cast<int>(fan.polygons.size()); ++i)
    {
        channel.coordinates.push_back({static_cast<float>(i), 0, 0});
        channel.polygons.push_back({i, 0, 0});
        fan.faceMaterials.push_back(i % 3);
    }
    fan.channels = {channel, channel};
    convert(state, fan);
}
BENCHMARK(convertTexturedFan)->Name("io/convert old mesh, fan of coordinates")->Arg(1'000)->Arg(10'000)->Arg(60'000);
}  // namespace
