#pragma once

#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// A node as it is written.
struct Joint
{
    std::string m_strName;  ///< no two joints of a skeleton have the same, also when letter case does not count
    int m_iParent = -1;     ///< index of a joint before this one; -1: none
    Matrixd m_local;        ///< relative to the parent, in the pose at rest
    Matrixd m_world;        ///< in the scene, in the pose at rest
};

/// The tree that is written for a model, in its pose at rest: the pose in which every skin stands as it was bound.
/// Joint i is node i of the model; behind them come companions.
///
/// Where two meshes bound one bone in different poses, the bone gets a companion: a joint below it that moves with it
/// in every clip and stands where the second mesh needs it in the pose at rest; the second mesh then hangs on the
/// companion.
struct Skeleton
{
    std::vector<Joint> m_vecJoints;
    std::vector<Matrixd> m_vecMeshToSkin;      ///< per mesh: where its vertices stand in the pose at rest
    std::vector<std::vector<int>> m_vecBones;  ///< per mesh, per bone of it: the joint that it hangs on
    std::vector<int> m_vecHolders;             ///< per mesh: the first joint that shows it; -1: none
};

/// The pose at rest is the file's own where the skins were bound in that one. Where they were bound in another, they
/// stand in it where, and as large as, the file's rest pose has most of their bones; what no skin hangs on keeps its
/// place relative to its parent. Tells of names that had to be changed in `warnings`.
[[nodiscard]] Skeleton makeSkeleton(const Model& model, std::vector<std::string>& warnings);

/// World matrices from local ones, both one per joint.
void composeWorld(const Skeleton& skeleton, const std::vector<Matrixd>& local, std::vector<Matrixd>& world);
}  // namespace TW2::convert
