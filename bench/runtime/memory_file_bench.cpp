#include "bench/yardstick.h"

#include <platform/math/vector3.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace
{
using Vector = M_Vector3Template<float>;

constexpr unsigned int s_chunkId = 0x10006;
constexpr std::size_t s_values = 100'000;

/// A chunk file on disk with one block of vectors, removed at the end.
class BlockFile
{
public:
    explicit BlockFile(std::size_t bytes)
    {
        S_MemoryFileWriter writer;
        {
            const S_MemoryFileWriter::Chunk chunk(writer, s_chunkId, 1);
            writer << true;  // what follows is not aligned, as in most files
            const S_Vector<Vector> block(bytes / sizeof(Vector), Vector(1.0F, 2.0F, 3.0F));
            writer.writeBlock(block);
        }
        m_uSize = writer.getBytes().size();
        writer.save(m_strName);
    }
    ~BlockFile() { std::filesystem::remove(m_strName); }
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    [[nodiscard]] const std::string& getName() const { return m_strName; }
    [[nodiscard]] std::size_t getSize() const { return m_uSize; }

private:
    std::string m_strName = (std::filesystem::temp_directory_path() / "tw2_memory_file_bench.tw").string();
    std::size_t m_uSize = 0;
};

// What opening a file is compared with: the system's read into fresh memory.
void readPlainly(benchmark::State& state)
{
    const BlockFile file(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        const std::unique_ptr<unsigned char[]> bytes(new unsigned char[file.getSize()]);
        std::FILE* stream = std::fopen(file.getName().c_str(), "rb");
        if (std::fread(bytes.get(), 1, file.getSize(), stream) != file.getSize())
        {
            state.SkipWithError("short read");
        }
        std::fclose(stream);
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = 1, .bytes = file.getSize(), .showThroughput = true});
}
BENCHMARK(readPlainly)->Name("runtime/plain_read")->Arg(1'000'000)->Arg(50'000'000);

void openFile(benchmark::State& state)
{
    const BlockFile file(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        const S_MemoryFile opened(file.getName(), S_MemoryFile::accessRead);
        benchmark::DoNotOptimize(opened.getFileSize());
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = 1, .bytes = file.getSize(), .showThroughput = true});
}
BENCHMARK(openFile)->Name("runtime/open_file")->Arg(1'000'000)->Arg(50'000'000);

// A block becomes a list of vectors whose storage is there already.
void readBlock(benchmark::State& state)
{
    const BlockFile file(static_cast<std::size_t>(state.range(0)));
    S_MemoryFile opened(file.getName(), S_MemoryFile::accessRead);
    S_Vector<Vector> list;
    for (auto _ : state)
    {
        opened.seek(0, S_MemoryFile::seekBegin);
        S_MemoryFile::Chunk chunk;
        opened.openChunk(chunk, s_chunkId);
        bool flag = false;
        opened >> flag;
        opened.readBlock(list, opened.getRemaining() / sizeof(Vector));
        benchmark::DoNotOptimize(list.data());
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = list.size(), .bytes = list.size() * sizeof(Vector), .showThroughput = true});
}
BENCHMARK(readBlock)->Name("runtime/read_block")->Arg(1'000'000)->Arg(50'000'000);

// Values one by one, as keys are read.
void readValues(benchmark::State& state)
{
    S_MemoryFileWriter writer;
    {
        const S_MemoryFileWriter::Chunk chunk(writer, s_chunkId, 1);
        for (std::size_t i = 0; i < s_values; ++i)
        {
            writer << static_cast<float>(i);
        }
    }
    S_MemoryFile file;
    file.constructFromMemory("values", writer.getBytes().data(), writer.getBytes().size());
    for (auto _ : state)
    {
        file.seek(0, S_MemoryFile::seekBegin);
        S_MemoryFile::Chunk chunk;
        file.openChunk(chunk, s_chunkId);
        float value = 0.0F;
        for (std::size_t i = 0; i < s_values; ++i)
        {
            file >> value;
            benchmark::DoNotOptimize(value);
        }
    }
    TW2::bench::report(state, {.items = s_values, .bytes = s_values * sizeof(float), .showThroughput = true});
}
BENCHMARK(readValues)->Name("runtime/read_floats");
}  // namespace
