#pragma once

#include <platform/runtime/allocator.h>

#include <filesystem>
#include <string>
#include <string_view>

/// Valid inputs from which the fuzz targets start.
///
/// A target gets its seeds by one source file in this folder; the program that writes them all, fuzz_seeds, is built
/// from whatever files stand here:
///
///     #include "fuzz/seeds/seeds.h"
///
///     namespace
///     {
///     const fuzz::SeedSource s_skin("skin", [](fuzz::SeedFolder& seeds)
///     {
///         S_MemoryFileWriter writer;
///         writer << someSkinChunk();
///         seeds.add("two_bones", writer.getBytes());
///     });
///     }  // namespace
namespace fuzz
{
/// Where the seeds of one target go.
class SeedFolder
{
public:
    explicit SeedFolder(std::filesystem::path path) : m_path(std::move(path)) {}

    /// Writes one input; `name` is a file name, unique within the target.
    void add(std::string_view name, std::string_view bytes);
    void add(std::string_view name, const S_Bytes& bytes);

private:
    std::filesystem::path m_path;
};

/// Registers the function that makes the seeds of the target fuzz_<target>. Create it as a static object; a target may
/// have several.
class SeedSource
{
public:
    using Write = void (*)(SeedFolder& seeds);

    SeedSource(const char* target, Write write);
};
}  // namespace fuzz
