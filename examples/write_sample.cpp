// An exporter in one file: writes a skinned character with two animations, its skin data, a texture and a script.
//
//     example_write_sample [folder]           without arguments: into the current directory
//
// The sprout in the folder sample/ of this project was made by it.

#include "sample_files.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/image/image.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numbers>
#include <string>

namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

// A stalk that stands on the ground, a bone every unit, thinner towards its top.
constexpr int boneCount = 8;
constexpr int ringsPerBone = 4;
constexpr int ringCount = boneCount * ringsPerBone + 1;
constexpr int sides = 20;  // one more column of vertices closes the texture's seam
constexpr unsigned int frameRate = 30;
constexpr float fullTurn = 2.0F * std::numbers::pi_v<float>;

std::string nameBone(int bone)
{
    return "stalk" + std::to_string(bone);
}

/// Stands on the bone below, bent by an angle (radians) about x and one about z.
Matrix makePose(int bone, float aboutX, float aboutZ)
{
    Matrix x;
    x.setRow(1, {0.0F, std::cos(aboutX), std::sin(aboutX)});
    x.setRow(2, {0.0F, -std::sin(aboutX), std::cos(aboutX)});
    Matrix z = Matrix::translation({0.0F, bone > 0 ? 1.0F : 0.0F, 0.0F});
    z.setRow(0, {std::cos(aboutZ), std::sin(aboutZ), 0.0F});
    z.setRow(1, {-std::sin(aboutZ), std::cos(aboutZ), 0.0F});
    return x * z;
}

float radiusAt(float height)
{
    const float t = height / static_cast<float>(boneCount);
    return t < 1.0F ? 0.9F - 0.55F * t + 0.12F * std::sin(t * 3.0F * fullTurn) : 0.05F;
}

void writeSkeleton(const char* fileName)
{
    S_MemoryFileWriter file;
    for (int bone = 0; bone < boneCount; ++bone)
    {
        TW2::MeshChunk mesh;  // without geometry: a bone
        mesh.name = nameBone(bone).c_str();
        mesh.hasParent = bone > 0;
        mesh.parentName = bone > 0 ? nameBone(bone - 1).c_str() : "";
        mesh.transform = makePose(bone, 0.0F, 0.0F);
        file << mesh;
    }
    file.save(fileName);
}

/// The tube around the bones; influences go into `binding` vertex by vertex.
TW2::MeshChunk makeTube(TW2::SkinChunk& binding)
{
    TW2::MeshChunk mesh;
    mesh.name = "skin";
    TW2::MeshVertexChunk& vertices = mesh.editVertices();
    TW2::MeshFaceChunk& faces = mesh.editFaces();
    TW2::TextureChannelChunk& channel = mesh.editChannel(0);
    for (int ring = 0; ring < ringCount; ++ring)
    {
        const float height = static_cast<float>(ring) / ringsPerBone;
        // Half way up a bone it pulls alone; towards its ends its neighbour pulls as well.
        const float place = std::fmax(height - 0.5F, 0.0F);
        const int lower = std::min(static_cast<int>(place), boneCount - 1);
        const int upper = std::min(lower + 1, boneCount - 1);
        const float weight = lower == upper ? 0.0F : place - static_cast<float>(lower);
        for (int side = 0; side <= sides; ++side)
        {
            const float angle = fullTurn * static_cast<float>(side) / sides;
            const Vector outwards{std::cos(angle), 0.0F, std::sin(angle)};
            vertices.positions.push_back(outwards * radiusAt(height) + Vector(0.0F, height, 0.0F));
            vertices.normals.push_back((outwards + Vector(0.0F, 0.15F, 0.0F)).normalized());
            channel.coordinates.push_back({static_cast<float>(side) / sides * 4.0F, height * 0.5F, 0.0F});
            binding.vertexInfluenceStarts.push_back(static_cast<int>(binding.influenceBones.size()));
            binding.vertexBoneCounts.push_back(weight > 0.0F ? 2 : 1);
            binding.influenceBones.push_back(lower);
            binding.influenceWeights.push_back(1.0F - weight);
            if (weight > 0.0F)
            {
                binding.influenceBones.push_back(upper);
                binding.influenceWeights.push_back(weight);
            }
        }
    }
    for (int ring = 0; ring + 1 < ringCount; ++ring)
    {
        for (int side = 0; side < sides; ++side)
        {
            const auto a = static_cast<std::uint16_t>(ring * (sides + 1) + side);
            const auto b = static_cast<std::uint16_t>(a + sides + 1);
            const auto next = [](std::uint16_t vertex) { return static_cast<std::uint16_t>(vertex + 1); };
            for (const std::uint16_t index : {a, b, next(a), next(a), b, next(b)})
            {
                faces.indices.push_back(index);
            }
        }
    }
    const auto vertexCount = static_cast<unsigned int>(vertices.positions.size());
    vertices.groupOffsets.push_back(0);
    vertices.groupCounts.push_back(vertexCount);
    faces.groupOffsets.push_back(0);
    faces.groupCounts.push_back(static_cast<unsigned int>(faces.indices.size() / 3));
    channel.groupOffsets.push_back(0);
    channel.groupCounts.push_back(static_cast<int>(vertexCount));
    mesh.editMaterials().names.push_back("leaf");
    return mesh;
}

void writeTexture(const std::string& fileName)
{
    constexpr unsigned int size = 64;
    G_Image image(size, size);
    for (unsigned int y = 0; y < size; ++y)
    {
        for (unsigned int x = 0; x < size; ++x)
        {
            const bool light = (x / 16 + y / 16) % 2 == 0;
            unsigned char* pixel = image.accessPixel(x, y);
            pixel[0] = light ? 150 : 96;
            pixel[1] = light ? 190 : 150;
            pixel[2] = light ? 90 : 62;
        }
    }
    image.writePNG(fileName.c_str());
}

void writeSkin(const char* meshFile, const char* skinFile)
{
    TW2::SkinChunk binding;
    const TW2::MeshChunk mesh = makeTube(binding);
    binding.objectNames.push_back(mesh.name);
    for (int bone = 0; bone < boneCount; ++bone)
    {
        binding.boneNames.emplace_back(nameBone(bone).c_str());
    }
    binding.primitiveFirstVertices.push_back(0);
    binding.primitiveVertexCounts.push_back(static_cast<unsigned int>(binding.vertexBoneCounts.size()));
    writeSkinFiles(meshFile, skinFile, mesh, binding, "stripes", "stripes.png");
}

/// One animation: `bend` gives the angles of a bone at a moment from 0 to 1.
template <typename Bend>
void writeAnimation(const char* fileName, unsigned int frames, unsigned int step, Bend bend)
{
    S_MemoryFileWriter file;
    for (int bone = 0; bone < boneCount; ++bone)
    {
        TW2::KeyframeAnimationChunk track;
        track.header.targetName = nameBone(bone).c_str();
        track.header.frameRate = static_cast<int>(frameRate);
        track.header.looping = frames > 1;
        track.totalFrameCount = frames;
        track.interpolationMode = static_cast<int>(TW2::InterpolationMode::Orthonormalized);
        for (unsigned int frame = 0; frame < frames; frame += step)
        {
            const float moment = frames > 1 ? static_cast<float>(frame) / static_cast<float>(frames - 1) : 0.0F;
            const auto [aboutX, aboutZ] = bend(bone, moment);
            track.keys.push_back({frame, makePose(bone, aboutX, aboutZ)});
        }
        file << track;
    }
    file.save(fileName);
}

void writeAnimations()
{
    using Angles = std::pair<float, float>;
    writeAnimation("sprout_rest.tw", 1, 1, [](int, float) { return Angles(0.0F, 0.0F); });
    writeAnimation("sprout_sway.tw", 61, 3,
                   [](int bone, float moment)
                   {
                       const float phase = fullTurn * (moment - 0.06F * static_cast<float>(bone));
                       return Angles(0.05F * std::cos(phase), 0.16F * std::sin(phase));
                   });
    writeAnimation("sprout_dance.tw", 41, 2,
                   [](int bone, float moment)
                   {
                       const float phase = fullTurn * moment;
                       const float twist = 0.35F * static_cast<float>(bone);
                       return Angles(0.22F * std::sin(phase + twist), 0.22F * std::cos(phase + twist));
                   });
}

void writeScript(const char* fileName)
{
    const std::string script = R"(// A small character of the project's own making; see examples/write_sample.cpp.

skeleton
{
    geometry { exportdata "sprout_skeleton.tw"  crossmode orthonormalized }
    animation { index 0  filename "sprout_rest.tw" }   // the pose the skin was bound in
    animation { index 1  filename "sprout_sway.tw" }   // 61 frames at 30 per second, looping
    animation { index 2  filename "sprout_dance.tw" }  // 41 frames at 30 per second, looping
}

skin
{
    geometry { exportdata "sprout_skin.tw"  skindata "sprout.skd" }
}
)";
    File.write(fileName, script.data(), script.size());
}
}  // namespace

int main(int argc, char** argv)
{
    try
    {
        std::filesystem::create_directories(argc > 1 ? std::string(argv[1]) + "/textures" : "textures");
        File.changeDirectory(argc > 1 ? argv[1] : ".");
        writeTexture("textures/stripes.png");
        writeSkeleton("sprout_skeleton.tw");
        writeSkin("sprout_skin.tw", "sprout.skd");
        writeAnimations();
        writeScript("sprout.script");
        std::printf("%ssprout.script\n", File.getCurrentDirectory().c_str());
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
