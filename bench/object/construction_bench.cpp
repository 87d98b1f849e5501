#include "bench/object/crowd.h"
#include "bench/yardstick.h"
#include "tests/support/object_files.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <cstddef>
#include <memory>
#include <string>

namespace TW2::bench
{
namespace
{
/// A geometry file of many meshes of some thousand triangles each, and its script.
class GeometryFiles
{
public:
    explicit GeometryFiles(unsigned int meshes) : m_uiMeshes(meshes)
    {
        for (unsigned int i = 0; i < meshes; ++i)
        {
            m_files.addMesh(support::makeMesh("mesh" + std::to_string(i), "", {{4000, 3998}}));
        }
        m_script = m_files.writeScript();
        m_uiBytes = m_files.getDirectory().read("geometry.tw").size();
    }

    support::ObjectFiles m_files;
    std::string m_script;
    std::size_t m_uiMeshes;
    std::size_t m_uiBytes = 0;
};

void loadGeometry(benchmark::State& state)
{
    const GeometryFiles files(static_cast<unsigned int>(state.range(0)));
    for (auto _ : state)
    {
        TW_ObjectAnimation object(files.m_script.c_str(), "object", nullptr, false);
        benchmark::DoNotOptimize(object.getTotalMeshes());
    }
    report(state, {.items = files.m_uiMeshes, .bytes = files.m_uiBytes, .showThroughput = true});
}
BENCHMARK(loadGeometry)->Name("object/load_geometry")->Arg(20);

void copyObject(benchmark::State& state)
{
    const Crowd crowd(1);
    for (auto _ : state)
    {
        const TW_ObjectAnimation copy(crowd.getObject(0));
        benchmark::DoNotOptimize(copy.getTotalMeshes());
    }
    report(state, {.items = Crowd::BONES, .bytes = Crowd::BONES * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(copyObject)->Name("object/copy");

/// Meshes that a host adds one by one.
void addMeshes(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    for (auto _ : state)
    {
        TW_ObjectAnimation object;
        for (std::size_t i = 0; i < count; ++i)
        {
            auto mesh = std::make_unique<P_VirtualObject>();
            mesh->setName(std::to_string(i).c_str());
            object.addMesh(mesh.get());
            (void)mesh.release();
        }
        benchmark::DoNotOptimize(object.getTotalMeshes());
    }
    report(state, {.items = count, .bytes = count * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(addMeshes)->Name("object/add_meshes")->Arg(4000);
}  // namespace
}  // namespace TW2::bench
