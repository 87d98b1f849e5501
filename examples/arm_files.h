#pragma once

#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/memory_file_writer.h>

#include <cmath>
#include <fstream>

/// Writes what the examples play, into the current directory: an arm of three bones, "arm.tw", its animations
/// "wave.tw" (index 0) and "reach.tw" (index 1), and the script "arm.txt" with the block "arm". Real files come from an
/// exporter.
class ArmFiles
{
public:
    static constexpr const char* const bones[] = {"shoulder", "elbow", "hand"};
    static constexpr unsigned int lastFrame = 20;

    static void write()
    {
        S_MemoryFileWriter arm;
        for (int bone = 0; bone < 3; ++bone)
        {
            TW2::MeshChunk mesh;
            mesh.name = bones[bone];
            mesh.hasParent = bone > 0;
            mesh.parentName = bone > 0 ? bones[bone - 1] : "";
            mesh.transform = makePose(bone, 0.0f);
            arm << mesh;
        }
        arm.save("arm.tw");
        writeAnimation("wave.tw", {0.3f, 0.6f, 0.9f});
        writeAnimation("reach.tw", {-0.8f, 0.4f, 0.4f});
        std::ofstream("arm.txt") << "arm\n"
                                    "{\n"
                                    "    geometry { exportdata \"arm.tw\"  crossmode orthonormalized }\n"
                                    "    animation { index 0  filename \"wave.tw\" }\n"
                                    "    animation { index 1  filename \"reach.tw\" }\n"
                                    "}\n";
    }

private:
    using Matrix = M_Matrix4x3Template<float>;

    /// A bone one unit along its parent, turned about z by `angle` radians.
    static Matrix makePose(int bone, float angle)
    {
        Matrix pose = Matrix::translation({bone > 0 ? 1.0f : 0.0f, 0.0f, 0.0f});
        pose.setRow(0, {std::cos(angle), std::sin(angle), 0.0f});
        pose.setRow(1, {-std::sin(angle), std::cos(angle), 0.0f});
        return pose;
    }

    /// One second at 20 frames per second, over and over: to these angles and back.
    static void writeAnimation(const char* fileName, const float (&angles)[3])
    {
        S_MemoryFileWriter file;
        for (int bone = 0; bone < 3; ++bone)
        {
            TW2::KeyframeAnimationChunk track;
            track.header.targetName = bones[bone];
            track.header.frameRate = 20;
            track.header.looping = true;
            track.totalFrameCount = lastFrame + 1;
            track.keys = {{0, makePose(bone, 0.0f)},
                          {lastFrame / 2, makePose(bone, angles[bone])},
                          {lastFrame, makePose(bone, 0.0f)}};
            file << track;
        }
        file.save(fileName);
    }
};
