// An exporter of a whole character: writes a walker of nineteen bones with its skin, a texture, five animations, how
// two of them travel, and the script with the walker's steps.
//
//     example_write_walker [folder]           without arguments: into the current directory
//
// The walker in the folder sample/ of this project was made by it.

#include "sample_files.h"
#include "walker_body.h"
#include "walker_gait.h"
#include "walker_skeleton.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace
{
constexpr unsigned int frameRate = 60;

void writeSkeleton(const char* fileName)
{
    S_MemoryFileWriter file;
    for (std::size_t bone = 0; bone < walker::boneCount; ++bone)
    {
        const int parent = walker::bones[bone].parent;
        TW2::MeshChunk mesh;  // without geometry: a bone
        mesh.name = walker::bones[bone].name;
        mesh.hasParent = parent >= 0;
        mesh.parentName = parent >= 0 ? walker::bones[parent].name : "";
        mesh.transform = walker::Pose().getTurned(bone).toMatrix();
        file << mesh;
    }
    file.save(fileName);
}

TW2::KeyframeAnimationChunk makeTrack(const char* target, unsigned int frames)
{
    TW2::KeyframeAnimationChunk track;
    track.header.targetName = target;
    track.header.frameRate = static_cast<int>(frameRate);
    track.totalFrameCount = frames;
    track.interpolationMode = static_cast<int>(TW2::InterpolationMode::Orthonormalized);
    return track;
}

/// A key every `step` frames for the bones from `first` on to the one before `last`; the last frame of a round is its
/// first again.
void writeAnimation(const char* fileName, unsigned int frames, unsigned int step, walker::Pose (*poseAt)(double),
                    std::size_t first = 0, std::size_t last = walker::boneCount)
{
    S_MemoryFileWriter file;
    for (std::size_t bone = first; bone < last; ++bone)
    {
        TW2::KeyframeAnimationChunk track = makeTrack(walker::bones[bone].name, frames);
        track.header.looping = frames > 1;
        for (unsigned int frame = 0; frame < frames; frame += step)
        {
            const double round = frame + 1 < frames ? static_cast<double>(frame) / (frames - 1) : 0.0;
            track.keys.push_back({frame, poseAt(round).getTurned(bone).toMatrix()});
        }
        file << track;
    }
    file.save(fileName);
}

/// Straight ahead: where the object stands at the first frame and at the last.
void writeTravel(const char* fileName, unsigned int frames, double distance)
{
    TW2::KeyframeAnimationChunk track = makeTrack("travel", frames);
    track.keys.push_back({0, {}});
    track.keys.push_back(
        {frames - 1, M_Matrix4x3Template<float>::translation({0.0F, 0.0F, -static_cast<float>(distance)})});
    S_MemoryFileWriter file;
    file << track;
    file.save(fileName);
}

void writeScript(const char* fileName)
{
    const std::string script =
        R"(// A small character of the project's own making; see examples/write_walker.cpp. Metres; it looks along -z.

skeleton
{
    geometry { exportdata "walker_skeleton.tw"  crossmode orthonormalized }
    animation { index 0  name rest  filename "walker_rest.anim.tw" }  // the pose the skin was bound in
    animation
    {
        index 1  name walk  filename "walker_walk.anim.tw"  rootmotion "walker_walk.travel.tw"
        event { time 0.25  name step_left }
        event { time 0.75  name step_right }
    }
    animation
    {
        index 2  name run  filename "walker_run.anim.tw"  rootmotion "walker_run.travel.tw"
        event { time 0.1666667  name step_left }
        event { time 0.5  name step_right }
    }
    animation { index 3  name wave  filename "walker_wave.anim.tw" }  // from the spine upwards, for a layer
    animation { index 4  name idle  filename "walker_idle.anim.tw" }
}

skin
{
    geometry
    {
        exportdata "walker_skin.tw"  skindata "walker.skd"
        boundingBoxMin (-0.8, -0.1, -0.8)  boundingBoxMax (0.8, 1.8, 0.8)  boundingSphereRadius 1.9
    }
}
)";
    File.write(fileName, script.data(), script.size());
}

void writeLevels(const char* fileName)
{
    const std::string script =
        R"(// The walker's skin in two levels of detail, for the skeleton in walker.script; distances in metres.

near { geometry { exportdata "walker_skin.tw"  skindata "walker.skd"  distance 8 } }
far  { geometry { exportdata "walker_far.tw"  skindata "walker_far.skd"  distance 60 } }
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
        walker::writeTexture("textures/walker.png");
        writeSkeleton("walker_skeleton.tw");
        const walker::Body body;
        writeSkinFiles("walker_skin.tw", "walker.skd", body.getMesh(), body.getBinding(), "walker", "walker.png");
        const walker::Body far(true);
        writeSkinFiles("walker_far.tw", "walker_far.skd", far.getMesh(), far.getBinding(), "walker", "walker.png");
        writeAnimation("walker_rest.anim.tw", 1, 1, [](double) { return walker::Pose(); });
        writeAnimation("walker_idle.anim.tw", 241, 6, walker::idle);
        writeAnimation("walker_walk.anim.tw", 61, 1, walker::walk);
        writeAnimation("walker_run.anim.tw", 41, 1, walker::run);
        writeAnimation("walker_wave.anim.tw", 91, 3, walker::wave, walker::findBone("spine"),
                       walker::findBone("thigh_left"));
        writeTravel("walker_walk.travel.tw", 61, walker::walkLength);
        writeTravel("walker_run.travel.tw", 41, walker::runLength);
        writeScript("walker.script");
        writeLevels("walker_levels.script");
        std::printf("%swalker.script\n", File.getCurrentDirectory().c_str());
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
