#include "bench/yardstick.h"
#include "tests/support/mesh_builder.h"
#include "tests/support/temporary_directory.h"

#include <tw2/io/loader.h>

#include <cstdio>
#include <memory>
#include <string>

namespace
{
constexpr std::size_t s_fileBytes = 50'000'000;

/// A file of 50 MB that holds meshes of `triangles` triangles in two groups.
class MeshFile
{
public:
    explicit MeshFile(unsigned int triangles)
    {
        const TW2::MeshChunk mesh = support::makeStripMesh("mesh", triangles / 2, {"brick", "plaster"});
        S_MemoryFileWriter writer;
        while (writer.getBytes().size() < s_fileBytes)
        {
            writer << mesh;
        }
        m_strName = m_directory.write("meshes.tw", writer.getBytes());
        m_uSize = writer.getBytes().size();
    }
    [[nodiscard]] const std::string& getName() const { return m_strName; }
    [[nodiscard]] std::size_t getSize() const { return m_uSize; }

private:
    support::TemporaryDirectory m_directory;
    std::string m_strName;
    std::size_t m_uSize = 0;
};

class Counter : public TW2::TW_MeshCallback
{
public:
    void operator()(TW2::MeshChunk& mesh) override { m_uTriangles += mesh.faces.indices.size() / 3; }
    P_TriangleMesh* createTriangleMesh(P_VirtualObject*, int, int, int, int, const S_Vector<int>&) override
    {
        return nullptr;
    }
    std::size_t m_uTriangles = 0;
};

void loadMeshes(benchmark::State& state)
{
    const MeshFile file(static_cast<unsigned int>(state.range(0)));
    Counter counter;
    TW2::TW_Loader::pushState();
    TW2::TW_Loader::clearAll();
    TW2::TW_Loader::setMeshCallback(&counter);
    for (auto _ : state)
    {
        TW2::TW_Loader::load(file.getName(), true);
    }
    TW2::TW_Loader::popState();
    TW2::bench::report(state, {.items = counter.m_uTriangles / static_cast<std::size_t>(state.iterations()),
                               .bytes = file.getSize(),
                               .showThroughput = true});
}
BENCHMARK(loadMeshes)->Name("io/load 50 MB of meshes")->Arg(100)->Arg(10'000);

/// What loading is measured by: the same file read into memory in one go.
void readPlainly(benchmark::State& state)
{
    const MeshFile file(10'000);
    for (auto _ : state)
    {
        const std::unique_ptr<char[]> bytes(new char[file.getSize()]);
        std::FILE* stream = std::fopen(file.getName().c_str(), "rb");
        const std::size_t size = stream ? std::fread(bytes.get(), 1, file.getSize(), stream) : 0;
        if (stream)
        {
            std::fclose(stream);
        }
        if (size != file.getSize())
        {
            state.SkipWithError("the file cannot be read");
            break;
        }
        benchmark::DoNotOptimize(bytes.get());
    }
    TW2::bench::report(state, {.items = 1, .bytes = file.getSize(), .showThroughput = true});
}
BENCHMARK(readPlainly)->Name("io/read 50 MB plainly");
}  // namespace
