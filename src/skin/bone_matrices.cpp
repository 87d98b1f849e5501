#include "skin/bone_kernel.h"
#include "skin/transform_rows.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/scene/context.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>

// Bone matrices: from the rest position of a vertex to the present one, both in the space of the skin's first mesh.
//
//     bone matrix = reference x bone's world matrix x (world to mesh)
//
// The reference is the inverse of the last two factors at rest. Their product, the bone in skin space, does not depend
// on where the character stands, so it is multiplied out from the local matrices down the skeleton, beginning with the
// skeleton's place relative to the mesh:
//
//     bone in skin space = local x parent in skin space,    bone matrix = reference x bone in skin space
//
// That is two products per bone, whoever else needs world matrices or not. Against the formula above, results differ by
// rounding only: by a few units in the last place of the largest translation on the way from a bone to the mesh. The
// formula itself loses as many units of the distance between character and world origin, which this way does not.

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

/// Skeletons of more bones go the way of the world matrices.
constexpr std::size_t maxBonesOnStack = 512;

/// What bone matrices are relative to: the skin's first mesh; a skin without meshes stands for it itself.
P_BaseObject& getSkinSpace(TW_ObjectAnimation& skin)
{
    P_VirtualObject* const mesh = skin.getMesh(0);
    return mesh ? static_cast<P_BaseObject&>(*mesh) : skin;
}

/// From the skeleton's space to skin space: down from their common container where the skin hangs below it, else by way
/// of the world.
Matrix getSkeletonInSkinSpace(const TW_ObjectAnimation& skeleton, const P_BaseObject& skinSpace)
{
    const P_BaseObject* const top = skeleton.getParent();
    const P_BaseObject* ancestor = skinSpace.getParent();
    Matrix toTop = skinSpace.getMatrix();
    while (ancestor && ancestor != top)
    {
        toTop = toTop * ancestor->getMatrix();
        ancestor = ancestor->getParent();
    }
    return ancestor == top ? skeleton.getMatrix() * toTop.inverse()
                           : skeleton.getObjectToWorldMatrix() * skinSpace.getWorldToObjectMatrix();
}

/// Multiplies out the bones of a skeleton into skin space.
class BonesInSkinSpace
{
public:
    BonesInSkinSpace(const TW_ObjectAnimation& skeleton, const P_BaseObject& skinSpace)
        : m_skeleton(skeleton), m_skinSpace(skinSpace), m_block(skeleton.getMeshTransforms())
    {
    }

    /// Calls `take(i, rows)` with every bone's transform, in order.
    template <typename Take>
    void forEach(const Take& take) const
    {
        const std::size_t count = m_skeleton.getTotalMeshes();
        if (!canWalkHierarchy())
        {
            for (std::size_t i = 0; i < count; ++i)
            {
                take(i, getByWorld(i));
            }
            return;
        }
        Bones bones;
        placeTops(bones);
        const int* const parents = m_block.getParents();
        for (std::size_t i = 0; i < count; ++i)
        {
            float* const place = bones.at(i);
            if (parents[i] >= 0)
            {
                const float* const parent = bones.at(static_cast<std::size_t>(parents[i]));
                (m_block.getLocalMatrices()[i] * TransformRows::load(parent)).store(place);
            }
            take(i, TransformRows::load(place));
        }
    }

    /// results[i] = references[i] x bone i, for `count` bones or as many as there are.
    void multiply(const Matrix* references, Matrix* results, std::size_t count) const
    {
        if (!canWalkHierarchy())
        {
            forEach(
                [=](std::size_t i, const TransformRows& bone)
                {
                    if (i < count)
                    {
                        (references[i] * bone).write(results[i]);
                    }
                });
            return;
        }
        Bones bones;
        placeTops(bones);
        multiplyBones({m_block.getLocalMatrices(), m_block.getParents(), references, bones.m_floats, results,
                       std::min<std::size_t>(m_block.getCount(), count)});
    }

private:
    struct Bones
    {
        [[nodiscard]] float* at(std::size_t bone) noexcept { return m_floats + bone * BoneBatch::boneFloats; }

        alignas(32) float m_floats[maxBonesOnStack * BoneBatch::boneFloats];
    };

    [[nodiscard]] bool canWalkHierarchy() const noexcept
    {
        const std::size_t count = m_skeleton.getTotalMeshes();
        return m_block.getCount() == count && m_block.areParentsFirst() && count <= maxBonesOnStack;
    }

    /// The bones whose parent is no bone.
    void placeTops(Bones& bones) const
    {
        const TransformRows skeletonRows(getSkeletonInSkinSpace(m_skeleton, m_skinSpace));
        const int* const parents = m_block.getParents();
        for (std::size_t i = 0; i < m_block.getCount(); ++i)
        {
            if (parents[i] < 0)
            {
                const TransformRows bone =
                    hangsBelowSkeleton(i) ? m_block.getLocalMatrices()[i] * skeletonRows : getByWorld(i);
                bone.store(bones.at(i));
            }
        }
    }

    [[nodiscard]] bool hangsBelowSkeleton(std::size_t bone) const noexcept
    {
        const P_BaseObject* const object = m_block.getObject(static_cast<unsigned int>(bone));
        return object && object->getParent() == &m_skeleton;
    }

    [[nodiscard]] TransformRows getByWorld(std::size_t bone) const
    {
        return m_skeleton.getMesh(static_cast<unsigned int>(bone))->getObjectToWorldMatrix() *
               TransformRows(m_skinSpace.getWorldToObjectMatrix());
    }

    const TW_ObjectAnimation& m_skeleton;
    const P_BaseObject& m_skinSpace;
    const P_TransformBlock& m_block;
};

void putInRestPose(TW_ObjectAnimation& object)
{
    object.animateObjectFrame(0, 0.0F, nullptr);
    object.setMatrix(Matrix::identity());
}

/// Whether the change count of a block tells of every bone.
bool holdsAllBones(const P_TransformBlock& block, const TW_ObjectAnimation& skeleton)
{
    bool all = block.getCount() == skeleton.getTotalMeshes();
    for (unsigned int i = 0; all && i < block.getCount(); ++i)
    {
        all = block.getObject(i) != nullptr;
    }
    return all;
}

/// In double precision, so that reference x bone is as near to the identity as floats allow.
Matrix invert(const Matrix& matrix)
{
    M_Matrix4x3Template<double> wide;
    std::copy_n(matrix.data(), 12, wide.data());
    wide = wide.inverse();
    Matrix result;
    std::transform(wide.data(), wide.data() + 12, result.data(),
                   [](double value) { return static_cast<float>(value); });
    return result;
}
}  // namespace

void TW_VertexAnimation::complete()
{
    m_vecBoneMatrices.assign(getSkeleton()->getTotalMeshes(), Matrix::identity());
    handOutBoneMatrices();
    putInRestPose(*getSkeleton());
    putInRestPose(*m_pSkin);

    BonesInSkinSpace(*getSkeleton(), getSkinSpace(*m_pSkin))
        .forEach([this](std::size_t i, const TransformRows& bone) { bone.write(m_vecBoneMatrices[i]); });
    takeReferencePose();
}

/// The bone matrices hold the bones in skin space at rest: makes their inverses the references. Those of a copy are its
/// source's, unless something differs after all.
void TW_VertexAnimation::takeReferencePose()
{
    S_Vector<Matrix> references(m_vecBoneMatrices.size());
    std::transform(m_vecBoneMatrices.begin(), m_vecBoneMatrices.end(), references.begin(), invert);
    if (m_pReferencePose && m_pReferencePose->m_vecReferenceMatrices == references)
    {
        return;
    }
    m_pReferencePose = S_Handle(new ReferencePose);
    m_pReferencePose->m_vecReferenceMatrices.swap(references);
}

/// The matrices are read in place from here on: their vector must not move any more.
void TW_VertexAnimation::handOutBoneMatrices()
{
    S_Vector<const Matrix*> pointers(m_vecBoneMatrices.size());
    std::transform(m_vecBoneMatrices.begin(), m_vecBoneMatrices.end(), pointers.begin(),
                   [](const Matrix& matrix) { return &matrix; });
    for (unsigned int i = 0; i < m_pSkin->getTotalMeshes(); ++i)
    {
        m_pSkin->getMesh(i)->setBoneMatrices(pointers);
    }
}

bool TW_VertexAnimation::executeAlways()
{
    if (!m_pSkinData)
    {
        return false;
    }
    P_VirtualObject* const mesh = m_pSkin->getMesh(0);
    if (!mesh)
    {
        return false;
    }
    // A volume that the engine computes is that of enabled meshes: one that was hidden would stay so for good.
    mesh->enable(true);
    if (!isSkinVisible())
    {
        mesh->enable(false);
    }
    else if (hasMovedSinceUpdate())
    {
        updateBoneMatrices();
    }
    return false;
}

void TW_VertexAnimation::updateBones()
{
    if (m_pSkinData && m_pSkin->getMesh(0) && hasMovedSinceUpdate())
    {
        updateBoneMatrices();
    }
}

/// With all world matrices up to date behind it, `executeAlways` can tell that nothing has moved since.
void TW_VertexAnimation::prepareFrame(unsigned long long frame) noexcept
{
    if (m_pSkinData && m_pSkin->getMesh(0) && m_pSharedSkeleton->takeFor(frame) && isSkinVisible() &&
        hasMovedSinceUpdate())
    {
        updateBoneMatrices();
        validateWorldMatrices();
    }
}

/// Only a skin with manual bounding volumes can be out of view.
bool TW_VertexAnimation::isSkinVisible() const
{
    if (!m_pSkin->getUseManualBoundingBox() && !m_pSkin->getUseManualBoundingSphere())
    {
        return true;
    }
    const P_Context* const context = getContext();
    return m_pSkin->isInsideViewVolume(context ? context->getCurrentCamera() : nullptr);
}

/// Whether the bone matrices may be out of date; notes what is compared next time.
///
/// An object that is out of date already is not marked again when it moves. So equal change counts mean that nothing
/// has moved only when every world matrix was up to date in between; the first frame in which the counts stay equal
/// sees to that, and as long as the skeleton plays nobody computes world matrices for it.
bool TW_VertexAnimation::hasMovedSinceUpdate()
{
    P_TransformBlock& bones = getSkeleton()->accessMeshTransforms();
    const P_BaseObject& skinSpace = getSkinSpace(*m_pSkin);
    const bool countsAreEqual =
        bones.getChangeCount() == m_uBoneChange && skinSpace.getMatrixChangeCount() == m_uSkinChange;
    if (countsAreEqual && m_bWorldsWereValid)
    {
        return false;
    }
    m_bWorldsWereValid = false;
    if (countsAreEqual)
    {
        validateWorldMatrices();
    }
    m_uBoneChange = bones.getChangeCount();
    m_uSkinChange = skinSpace.getMatrixChangeCount();
    return true;
}

/// Brings all world matrices between the bones and the skin up to date.
void TW_VertexAnimation::validateWorldMatrices()
{
    P_TransformBlock& bones = getSkeleton()->accessMeshTransforms();
    bones.updateWorldMatrices();
    getSkinSpace(*m_pSkin).calculateObjectToWorldMatrix();
    m_bWorldsWereValid = holdsAllBones(bones, *getSkeleton());
}

/// The bones are those that the object was built with; a host may have changed the skeleton since then.
void TW_VertexAnimation::updateBoneMatrices()
{
    if (m_pReferencePose)  // else it is being built
    {
        BonesInSkinSpace(*getSkeleton(), getSkinSpace(*m_pSkin))
            .multiply(m_pReferencePose->m_vecReferenceMatrices.data(), m_vecBoneMatrices.data(),
                      m_vecBoneMatrices.size());
    }
}
}  // namespace TW2
