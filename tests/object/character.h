#pragma once

#include "tests/object/pose_model.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/object_files.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// An animated object with tracks of every kind, and the model of its poses.
///
/// Animation 0 moves meshes 0 to 7, animation 1 meshes 4 to 9, animation 2 all of meshes 0 to 9, animation -3 none but
/// mesh 3 and animation 4 none at all; nothing moves mesh 10. Mesh 4 hangs under 3, 3 under 2 and so on; 8, 9 and 10
/// hang under 0.
class Character
{
public:
    using Matrix = M_Matrix4x3Template<float>;
    static constexpr std::size_t MESHES = 11;

    explicit Character(const std::string& crossMode = "linear", bool withVisibility = false)
    {
        for (std::size_t mesh = 0; mesh < MESHES; ++mesh)
        {
            m_files.addMesh(name(mesh), mesh == 0 ? "" : name(mesh < 8 ? mesh - 1 : 0),
                            Matrix::translation({0.0F, 1.0F, static_cast<float>(mesh)}));
        }
        addAnimation(0, 0, 8);
        addAnimation(1, 4, 10);
        addAnimation(2, 0, 10);
        addAnimation(-3, 3, 4);
        addAnimation(4, 0, 0);
        m_pObject = m_files.build(crossMode, withVisibility);
        model.mode = m_pObject->getCrossMode();
        takePose();
    }

    /// Mixed case, so that name lookups can be told apart.
    static std::string name(std::size_t mesh) { return "Bone" + std::to_string(mesh); }

    TW2::TW_ObjectAnimation& operator*() { return *m_pObject; }
    TW2::TW_ObjectAnimation* operator->() { return m_pObject.get(); }
    [[nodiscard]] TW2::TW_ObjectAnimation* get() const { return m_pObject.get(); }
    [[nodiscard]] const support::ObjectFiles& getFiles() const { return m_files; }
    [[nodiscard]] const Matrix& getMatrix(std::size_t mesh) const
    {
        return m_pObject->getMesh(static_cast<unsigned int>(mesh))->getMatrix();
    }
    [[nodiscard]] std::vector<Matrix> getPose() const { return support::takePose(*m_pObject); }
    /// A group of some meshes, attached to the object.
    [[nodiscard]] std::unique_ptr<TW2::TW_BoneGroupHandle> group(const std::vector<std::size_t>& meshes) const
    {
        return support::makeGroup(*m_pObject, meshes);
    }

    /// Lets the model begin at the object's present pose.
    void takePose()
    {
        model.pose.clear();
        for (const Matrix& matrix : getPose())
        {
            model.pose.push_back(support::toDouble(matrix));
        }
    }
    /// Compares the local matrices with the model, and the world matrices with products of them.
    void expectModelPose(const std::string& what) const
    {
        std::vector<PoseModel::Matrix> worlds;
        for (std::size_t mesh = 0; mesh < MESHES; ++mesh)
        {
            const P_VirtualObject& object = *m_pObject->getMesh(static_cast<unsigned int>(mesh));
            expectNear(model.pose[mesh], object.getMatrix(), what + ", local matrix of " + name(mesh));
            const PoseModel::Matrix local = support::toDouble(object.getMatrix());
            worlds.push_back(mesh == 0 ? local : local * worlds[mesh < 8 ? mesh - 1 : 0]);
            expectNear(worlds.back(), object.getObjectToWorldMatrix(), what + ", world matrix of " + name(mesh));
        }
    }
    static void expectNear(const PoseModel::Matrix& expected, const Matrix& actual, const std::string& what)
    {
        EXPECT_LE(support::relativeError(actual, expected), 1e-5) << what;
    }

    PoseModel model;

private:
    void addAnimation(int index, std::size_t first, std::size_t end)
    {
        std::vector<TW2::KeyframeAnimationChunk> tracks;
        model.animations[index].assign(MESHES, nullptr);
        for (std::size_t mesh = first; mesh < end; ++mesh)
        {
            tracks.push_back(makeTrack(mesh));
            m_tracks.push_back(tracks.back());
            model.animations[index][mesh] = &m_tracks.back();
        }
        m_files.addAnimation(index, tracks);
    }

    // A motion with moderate turns, so that blends are well conditioned. Every third has scale; loops and modes vary.
    TW2::KeyframeAnimationChunk makeTrack(std::size_t mesh)
    {
        std::uniform_real_distribution<float> unit(-1.0F, 1.0F);
        const auto kind = static_cast<unsigned int>(m_tracks.size());
        TW2::KeyframeAnimationChunk track;
        track.header.targetName = name(mesh).c_str();
        track.header.frameRate = 25;
        track.header.looping = kind % 2 == 0;
        track.loopInterpolation = kind % 4 == 0;
        track.loopToFrame = kind % 5;
        track.totalFrameCount = 31;
        track.interpolationMode = static_cast<int>(kind % 3);
        for (unsigned int frame = 0; frame <= 30; frame += 5 + kind % 6)
        {
            const auto coordinate = [&] { return static_cast<double>(unit(m_random)); };
            TW2::MatrixKey key{frame, support::rotation(coordinate(), coordinate(), 1.0, 0.9 * coordinate())};
            key.matrix *= kind % 3 == 0 ? 1.5F + 0.3F * unit(m_random) : 1.0F;
            key.matrix.setTranslation({5.0F * unit(m_random), unit(m_random), 2.0F});
            track.keys.push_back(key);
            track.visibilityKeys.push_back({frame, unit(m_random)});
        }
        return track;
    }

    std::mt19937 m_random{20};
    std::deque<TW2::KeyframeAnimationChunk> m_tracks;
    support::ObjectFiles m_files;
    std::unique_ptr<TW2::TW_ObjectAnimation> m_pObject;
};
