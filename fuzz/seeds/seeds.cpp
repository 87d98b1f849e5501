// Valid files from which the fuzz targets start: `fuzz_seeds FOLDER` fills FOLDER/<target>/ for each target.
#include "tests/support/every_kind.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/mesh_builder.h"
#include "tests/support/records.h"

#include <tw2/io/chunk_id.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/image/image.h>
#include <platform/math/vector3.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <type_traits>

namespace
{
using namespace TW2;
using namespace std::string_literals;
/// Where the files of one target go.
class Seeds
{
public:
    Seeds(const std::filesystem::path& folder, const char* target) : m_folder(folder / target)
    {
        std::filesystem::create_directories(m_folder);
    }

    template <typename Bytes>
    void addBytes(const std::string& name, const Bytes& bytes) const
    {
        File.write((m_folder / name).string(), bytes.data(), bytes.size());
    }
    /// A file of records, one after the other.
    template <typename... Records>
    void add(const std::string& name, const Records&... records) const
    {
        S_MemoryFileWriter writer;
        const auto write = [&writer](const auto& record)
        {
            if constexpr (std::is_same_v<decltype(record), const support::LegacyMesh&>)
            {
                support::write(writer, record);
            }
            else
            {
                writer << record;
            }
        };
        (write(records), ...);
        addBytes(name, writer.getBytes());
    }

private:
    std::filesystem::path m_folder;
};

void addAnimationFiles(const Seeds& seeds)
{
    S_MemoryFileWriter all;
    support::writeEveryKind(all);
    seeds.addBytes("every_kind", all.getBytes());
    seeds.add("camera", CameraChunk());
    seeds.add("point_light", PointLightChunk());
    seeds.add("directional_light", DirectionalLightChunk());
    seeds.add("spot_light", SpotLightChunk());
    seeds.add("helper", HelperChunk());
    seeds.add("environment", EnvironmentChunk());
    seeds.add("mesh", support::makeStripMesh("m", 1));
    seeds.add("point_light_animation", PointLightAnimationChunk());
    seeds.add("directional_light_animation", DirectionalLightAnimationChunk());
    seeds.add("spot_light_animation", SpotLightAnimationChunk());
}

/// An uncompressed picture of blue, green, red values with this header.
std::string makeRawPicture(std::string header, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels * 3; ++i)
    {
        header += static_cast<char>(i * 11);
    }
    return header;
}

void addImages(const Seeds& seeds)
{
    G_Image picture(9, 5);
    for (std::size_t i = 0; i < picture.getSize(); ++i)
    {
        picture.accessPixels()[i] = static_cast<unsigned char>(i * 7);
    }
    seeds.addBytes("picture.png", picture.encodePNG());
    seeds.addBytes("plain.png", G_Image(16, 16).encodePNG());
    seeds.addBytes("picture.tga", makeRawPicture("\0\0\2\0\0\0\0\0\0\0\0\0\4\0\2\0\30\0"s, 8));
    seeds.addBytes("runs.tga", "\0\0\12\0\0\0\0\0\0\0\0\0\4\0\2\0\30\0\205abc\1defghi"s);
    const std::string header = "BM\116\0\0\0\0\0\0\0\66\0\0\0\50\0\0\0\4\0\0\0\2\0\0\0\1\0\30\0"s;
    seeds.addBytes("picture.bmp", makeRawPicture(header + std::string(24, '\0'), 8));
}

void addTracks(const Seeds& seeds)
{
    std::mt19937 random(1);
    const auto add = [&](const char* name, const support::TrackShape& shape, unsigned int version)
    {
        S_MemoryFileWriter writer;
        support::writeTrack(writer, support::makeTrack(random, shape), version);
        seeds.addBytes(name, writer.getBytes());
    };
    add("oldest", {.frames = 10, .keys = 3}, 0);
    add("compact", {.frames = 10, .keys = 3, .looping = true, .visibilityKeys = 2}, 5);
    support::TrackShape loop{.frames = 10, .keys = 3, .looping = true, .loopInterpolation = true};
    loop.loopToFrame = 3;
    loop.interpolationMode = 1;
    add("loop_frame", loop, 5);
    add("scaled", {.frames = 10, .keys = 3, .interpolationMode = 2, .scaled = true}, 4);
    add("keep_scale", {.frames = 10, .keys = 3, .scaled = true, .keepScale = true}, 5);
    add("no_keys", {.frames = 2, .keys = 0}, 3);
}

void addMaterials(const Seeds& seeds)
{
    for (int shading = 0; shading < 3; ++shading)
    {
        MaterialListChunk list;
        list.texturePath = "textures;more\\textures";
        list.materials.resize(3);
        list.materials[0].name = "plain";
        list.materials[0].shading = shading;
        list.materials[1].specular = 1;
        list.materials[1].alphaTest = true;
        MaterialTextureChunk& texture = list.materials[2].accessDiffuseTexture();
        texture.name = "wave";
        texture.framesPerSecond = 12;
        texture.frameFiles = {"wave.png"};
        list.materials[2].accessGlossTexture() = texture;
        list.materials[2].accessGlossTexture().frameFiles.assign(3, "wave.png");
        seeds.add("materials_" + std::to_string(shading), list);
    }
}

// Ids choose what the target reads: see fuzz/memory_file.cpp.
void writeValues(S_MemoryFileWriter& writer, unsigned int id)
{
    const auto lists = [](S_MemoryFileWriter& w)
    {
        w.writeList(S_Vector<S_String>{"hip", "knee"});
        w.writeList(S_Vector<int>{1, 2, 3});
    };
    support::writeChunk(writer, id, 1, 7, "a string", M_Vector3Template<float>(1, 2, 3), M_Matrix4x3Template<float>(),
                        true, lists);
}

void addMemoryFiles(const Seeds& seeds)
{
    for (unsigned int id = 0; id < 16; ++id)
    {
        S_MemoryFileWriter writer;
        writeValues(writer, id);
        seeds.addBytes("values_" + std::to_string(id), writer.getBytes());
    }
    const auto values = [](unsigned int id) { return [id](S_MemoryFileWriter& w) { writeValues(w, id); }; };
    const auto middle = [&](S_MemoryFileWriter& w) { support::writeChunk(w, 0, 2, values(1), values(6)); };
    S_MemoryFileWriter writer;
    support::writeChunk(writer, 0, 0, middle, values(9));
    writeValues(writer, 3);
    seeds.addBytes("nested", writer.getBytes());
}

void addMeshes(const Seeds& seeds)
{
    seeds.add("plain", support::makeStripMesh("a", 3));
    seeds.add("groups", support::makeStripMesh("b", 2, {"x", "y", "z"}));
    MeshChunk instance;
    instance.editInstanceName() = "a";
    instance.editSmoothingGroups().masks = {1, 2};
    seeds.add("instance", instance);
    support::LegacyMesh cube = support::makeLegacyCube();
    seeds.add("old_cube", cube);
    for (std::size_t i = 0; i < cube.masks.size(); ++i)
    {
        cube.masks[i] = static_cast<unsigned int>(5 * i);
    }
    seeds.add("old_cube_with_edges", cube);
    support::LegacyMesh field = support::makeLegacyField(3, 2);
    field.version = 1;
    seeds.add("old_field", field);
    field.materials = {"a", "b"};
    field.faceMaterials[3] = 1;
    field.channels.push_back(field.channels[0]);
    seeds.add("old_field_of_two_materials", field);
}

void addObjects(const Seeds& seeds)
{
    MaterialListChunk materials;
    materials.materials = {support::makeSolidMaterial("skin"), support::makeSolidMaterial("cloth")};
    materials.materials[1].vertexAlpha = true;
    MeshChunk body = support::makeMesh("body", "", {{3, 1}, {4, 2}});
    support::setMaterials(body, {"skin", "cloth"});
    support::setChannel(body, 0, 1.0F, {false, true});
    const MeshChunk head = support::makeMesh("head", "body");
    MeshChunk twin;
    twin.name = "twin";
    twin.editInstanceName() = "head";
    seeds.add("geometry", materials, body, head, twin);
    KeyframeAnimationChunk track = support::makeTrack("head", 3.0F);
    track.visibilityKeys = {{0, 1.0F}, {5, -1.0F}};
    seeds.add("geometry_and_tracks", materials, body, head, twin, track, support::makeTrack("body", 2.0F));
    seeds.add("old_layout", support::makeLegacyCube(), support::makeLegacyField(3, 2));
}

void addScripts(const Seeds& seeds)
{
    seeds.addBytes("object", R"(// An object.
soldier
{
    geometry { exportdata "men\\soldier \"A\".tw"  crossmode normalized  boundingBoxMin (-1, -2.5e1, .5) }
    animation { index -3  filename idle.tw } /* two
    lines */
    animation { index 1 filename "" }
}
)"s);
    seeds.addBytes("keys", "a { s word i 12 f 1e-3 v (1,2,3) }\nb { s \"x y\" i -1 f 2 }"s);
    seeds.addBytes("damaged", "a { b { \"x"s);
}

void addSkins(const Seeds& seeds)
{
    seeds.add("newest", support::makeSkin({"Hip", "Knee"}, {{{{0, 1.0F}}, {{0, 0.25F}, {1, 0.75F}}}, {{{1, 1.0F}}}}));
    seeds.add("empty", SkinChunk());
    S_MemoryFileWriter oldest;  // three lists of influences, names, and what nothing uses
    support::writeChunk(oldest, CHUNK_SKIN, 0, 2, 0, 0, 1.0F, 2, 1, 0.5F, 1, 2, 0, 0.5F, 0, 1, "body", 2, "Hip", "Knee",
                        1, M_Vector3Template<float>(1, 2, 3));
    seeds.addBytes("oldest", oldest.getBytes());
}
}  // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    try
    {
        const std::filesystem::path folder(arguments[1]);
        addAnimationFiles({folder, "animation_file"});
        addImages({folder, "image"});
        addTracks({folder, "keyframe_animation"});
        addMaterials({folder, "material_list"});
        addMemoryFiles({folder, "memory_file"});
        addMeshes({folder, "mesh"});
        addObjects({folder, "object_animation"});
        addScripts({folder, "script"});
        addSkins({folder, "skin"});
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "fuzz_seeds: %s\n", exception.what());
        return 1;
    }
    return 0;
}
