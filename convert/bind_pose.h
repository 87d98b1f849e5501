#pragma once

#include "convert/model.h"

#include <vector>

namespace TW2::convert
{
/// The pose in which a skin was bound to its bones.
struct BindPose
{
    std::vector<Matrixd> m_vecLocal;       ///< per node, relative to its parent
    std::vector<Matrixd> m_vecWorld;       ///< per node
    std::vector<Matrixd> m_vecMeshToSkin;  ///< per mesh: where its vertices stand in the skin
};

/// Finds one pose of the whole tree in which every mesh stands as it was bound. Nodes that no mesh hangs on keep their
/// place relative to their parents.
///
/// Where two meshes bound one bone in different poses, the bone gets a companion in `model`: a node below it that
/// moves with it in every clip and stands where the second mesh needs it in the bind pose; the second mesh then hangs
/// on the companion.
[[nodiscard]] BindPose findBindPose(Model& model);
}  // namespace TW2::convert
