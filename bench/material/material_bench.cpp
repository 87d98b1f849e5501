#include "bench/yardstick.h"

#include <tw2/material/material.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>

#include <platform/image/image.h>
#include <platform/scene/material.h>

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{
using namespace TW2;

constexpr std::size_t s_materialCount = 100;

/// A folder of small pictures on the texture search path.
class Pictures
{
public:
    Pictures() : m_path(std::filesystem::temp_directory_path() / "tw2-bench-material")
    {
        std::filesystem::create_directories(m_path);
        for (std::size_t i = 0; i < s_materialCount; ++i)
        {
            G_Image(16, 16).writePNG((m_path / getName(i)).c_str());
        }
        TW_Texture::clearTexturePathList();
        TW_Texture::addTexturePath(m_path.c_str());
    }
    ~Pictures()
    {
        TW_Texture::clearTexturePathList();
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;

    static std::string getName(std::size_t index) { return "picture" + std::to_string(index) + ".png"; }

private:
    std::filesystem::path m_path;
};

/// Records that differ in colours and files only: a texture, a plain colour, a reflection and highlights.
std::vector<TWMaterialChunk> makeRecords()
{
    std::vector<TWMaterialChunk> records(s_materialCount);
    for (std::size_t i = 0; i < s_materialCount; ++i)
    {
        TWMaterialChunk& record = records[i];
        record.name = "material";
        record.diffuseColor = {static_cast<float>(i), 128, 128};
        record.specular = 1;
        record.accessDiffuseTexture().frameFiles.emplace_back(Pictures::getName(i).c_str());
        record.accessReflectionTexture().frameFiles.emplace_back(Pictures::getName(0).c_str());
    }
    return records;
}

/// Builds all materials in every iteration; `templates` as copies of one template, else each from scratch. The maps
/// stay loaded, so that neither the disk nor the decoder is measured.
void buildMaterials(benchmark::State& state, bool templates)
{
    const Pictures pictures;
    const std::vector<TWMaterialChunk> records = makeRecords();
    std::vector<TW_Texture> loaded(s_materialCount);
    for (std::size_t i = 0; i < s_materialCount; ++i)
    {
        TW_Texture::CreateInfo info;
        info.filename = Pictures::getName(i).c_str();
        loaded[i].construct(info);
    }
    std::optional<TW_Material> keeper;  // of the template
    TW_MaterialCallback callback;       // while one is installed there are no copies
    if (templates)
    {
        keeper.emplace(records[0]);
    }
    else
    {
        TW_Material::setCallback(&callback);
    }
    for (auto _ : state)
    {
        std::array<std::optional<TW_Material>, s_materialCount> materials;
        for (std::size_t i = 0; i < s_materialCount; ++i)
        {
            materials[i].emplace(records[i]);
        }
        benchmark::DoNotOptimize(materials.data());
    }
    TW_Material::setCallback(nullptr);
    TW2::bench::report(state, {.items = s_materialCount, .bytes = s_materialCount * sizeof(P_Material)});
}
BENCHMARK_CAPTURE(buildMaterials, copies, true)->Name("material/build_from_template");
BENCHMARK_CAPTURE(buildMaterials, scratch, false)->Name("material/build_from_scratch");
}  // namespace
