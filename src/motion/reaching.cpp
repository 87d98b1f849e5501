#include "motion/bone_tree.h"
#include "motion/reach_solver.h"
#include "motion/vectors.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/reaching.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;
using Vector = M_Vector3Template<double>;

void turnRows(Matrix& matrix, const TW_Rotation& turn) noexcept
{
    for (int r = 0; r < 3; ++r)
    {
        matrix.setRow(r, toFloat(turn.turn(toDouble(matrix.getRow(r)))));
    }
}

void setBase(ReachJoints& joints, const Matrix& base) noexcept
{
    for (int r = 0; r < 3; ++r)
    {
        joints.m_side[r] = toDouble(base.getRow(r)).normalized();
    }
}

void setMatrices(ReachJoints& joints, const Matrix* const* bones, std::size_t count) noexcept
{
    joints.m_uiCount = count;
    for (std::size_t i = 0; i < count; ++i)
    {
        joints.m_positions[i] = toDouble(bones[i]->getTranslation());
    }
    setBase(joints, *bones[0]);
}

void getMatrices(const ReachJoints& joints, Matrix* const* bones) noexcept
{
    for (std::size_t i = 0; i < joints.m_uiCount; ++i)
    {
        bones[i]->setTranslation(toFloat(joints.getTurned(i)));
        turnRows(*bones[i], joints.m_turns[i]);
    }
}

// Solves a chain of matrices that lie side by side.
template <typename Solve>
float changeMatrices(Matrix* bones, std::size_t count, const Solve& solve) noexcept
{
    if (count == 0 || count > chainLimit)
    {
        return 0.0F;
    }
    Matrix* list[chainLimit];
    for (std::size_t i = 0; i < count; ++i)
    {
        list[i] = bones + i;
    }
    ReachJoints joints;
    setMatrices(joints, list, count);
    const float left = solve(joints);
    getMatrices(joints, list);
    return left;
}

// A direction of a bone's own axes, and a point of its space, seen from outside.
Vector fromBone(const Matrix& bone, const M_Vector3Template<float>& v) noexcept
{
    return toDouble(bone.transformDirection(v));
}
}  // namespace

float reachTwoBones(Matrix& upper, Matrix& middle, Matrix& end, const TW_TwoBoneReach& reach) noexcept
{
    Matrix* const bones[] = {&upper, &middle, &end};
    ReachJoints joints;
    setMatrices(joints, bones, 3);
    const float left = solveTwoBones(joints, reach, toDouble(reach.target), toDouble(reach.pole));
    getMatrices(joints, bones);
    return left;
}

float aimChain(Matrix* bones, std::size_t count, const TW_Aim& aim) noexcept
{
    return changeMatrices(bones, count,
                          [&](ReachJoints& joints)
                          {
                              const Matrix& tip = bones[count - 1];
                              return solveAim(joints, aim, toDouble(aim.target), fromBone(tip, aim.forward),
                                              fromBone(tip, aim.eye));
                          });
}

float reachChain(Matrix* bones, std::size_t count, const TW_ChainReach& reach) noexcept
{
    return changeMatrices(bones, count,
                          [&](ReachJoints& joints) { return solveChain(joints, reach, toDouble(reach.target)); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Bones of an object
// ---------------------------------------------------------------------------------------------------------------------

/// The chain of one part in the part's own space, in double precision: far from the world's origin nothing is lost.
class TW_BoneChain::Pose
{
public:
    Pose(TW_ObjectAnimation& object, const S_Vector<unsigned int>& bones) noexcept : m_object(object), m_bones(bones)
    {
        m_joints.m_uiCount = bones.size();
        for (std::size_t i = 0; i < bones.size(); ++i)
        {
            m_places[i] =
                i == 0 ? findPlace(bones[0]) : multiply(object.getMesh(bones[i])->getMatrix(), m_places[i - 1]);
            m_joints.m_positions[i] = m_places[i].getTranslation();
        }
        for (int r = 0; r < 3; ++r)
        {
            m_joints.m_side[r] = m_places[0].getRow(r).normalized();
        }
        m_toWorld = toDoubles(object.getObjectToWorldMatrix());
        m_toObject = m_toWorld.inverse();
    }

    ReachJoints& accessJoints() noexcept { return m_joints; }
    [[nodiscard]] Vector pointFromWorld(const Vector& p) const noexcept { return m_toObject.transformPoint(p); }
    [[nodiscard]] Vector directionFromWorld(const Vector& d) const noexcept { return m_toObject.transformDirection(d); }
    [[nodiscard]] Vector pointToWorld(const Vector& p) const noexcept { return m_toWorld.transformPoint(p); }
    [[nodiscard]] Vector directionOfTip(const M_Vector3Template<float>& v) const noexcept
    {
        return m_places[m_joints.m_uiCount - 1].transformDirection(toDouble(v));
    }
    [[nodiscard]] TW_Rotation rotationFromWorld(const TW_Rotation& rotation) const noexcept
    {
        return conjugate(m_toWorld, rotation);
    }

    /// Turns the bones in their parents' axes; where they hang on those stays.
    void write() noexcept
    {
        TW_Rotation above;
        for (std::size_t i = 0; i < m_joints.m_uiCount; ++i)
        {
            const TW_Rotation own = m_joints.m_turns[i] * above.inverse();
            above = m_joints.m_turns[i];
            P_VirtualObject& mesh = *m_object.getMesh(m_bones[i]);
            const int parent = findParent(m_object, m_bones[i]);
            const DoubleMatrix place = i > 0        ? m_places[i - 1]
                                       : parent < 0 ? DoubleMatrix()
                                                    : findPlace(static_cast<unsigned int>(parent));
            Matrix local = mesh.getMatrix();
            turnRows(local, conjugate(place, own));
            mesh.setMatrix(local);
        }
    }

private:
    using DoubleMatrix = M_Matrix4x3Template<double>;

    static DoubleMatrix toDoubles(const Matrix& matrix) noexcept
    {
        DoubleMatrix result;
        for (int r = 0; r < 4; ++r)
        {
            result.setRow(r, toDouble(matrix.getRow(r)));
        }
        return result;
    }
    static DoubleMatrix multiply(const Matrix& a, const DoubleMatrix& b) noexcept { return toDoubles(a) * b; }

    DoubleMatrix findPlace(unsigned int bone) const noexcept
    {
        DoubleMatrix place = toDoubles(m_object.getMesh(bone)->getMatrix());
        for (int above = findParent(m_object, bone); above >= 0;
             above = findParent(m_object, static_cast<unsigned int>(above)))
        {
            place = place * toDoubles(m_object.getMesh(static_cast<unsigned int>(above))->getMatrix());
        }
        return place;
    }

    // A rotation of the space that `space` leads to, in the axes of the space that it comes from. In a mirrored space
    // it turns the other way.
    static TW_Rotation conjugate(const DoubleMatrix& space, const TW_Rotation& rotation) noexcept
    {
        const Vector axis = rotation.m_vAxis;
        const Vector unit[3] = {space.getRow(0).normalized(), space.getRow(1).normalized(),
                                space.getRow(2).normalized()};
        const double hand = unit[0].dot(unit[1].cross(unit[2])) < 0.0 ? -1.0 : 1.0;
        return TW_Rotation{rotation.m_dW, Vector{unit[0].dot(axis), unit[1].dot(axis), unit[2].dot(axis)} * hand}
            .normalized();
    }

    TW_ObjectAnimation& m_object;
    const S_Vector<unsigned int>& m_bones;
    ReachJoints m_joints;
    std::array<DoubleMatrix, chainLimit> m_places;
    DoubleMatrix m_toWorld;
    DoubleMatrix m_toObject;
};

TW_BoneChain::TW_BoneChain(TW_VirtualObject& object, const char* base, const char* tip) : m_pObject(&object)
{
    for (unsigned int i = 0; const TW_ObjectAnimation* played = object.getPlayedObject(i); ++i)
    {
        if (i > 0 && (!hasBone(*played, base) || !hasBone(*played, tip)))
        {
            continue;  // a level of detail without them
        }
        Part part{i, {}};
        const unsigned int top = findBone(*played, base);
        const unsigned int last = findBone(*played, tip);
        const int depth = getDepthBelow(*played, last, top);
        if (depth < 0 || static_cast<std::size_t>(depth) >= chainLimit)
        {
            throw TW_Exception_InvalidMotion(
                object.getName().c_str(),
                S_STR("expected bone \"%s\" at most %zu bones below bone \"%s\"", tip, chainLimit - 1, base));
        }
        for (int bone = static_cast<int>(last); depth >= 0; bone = findParent(*played, static_cast<unsigned int>(bone)))
        {
            part.m_vecBones.push_back(static_cast<unsigned int>(bone));
            if (bone == static_cast<int>(top))
            {
                break;
            }
        }
        std::reverse(part.m_vecBones.begin(), part.m_vecBones.end());
        m_vecParts.push_back(std::move(part));
    }
    if (m_vecParts.empty())
    {
        throw TW_Exception_BoneNotFound(base, object.getName().c_str());
    }
}

// What the first part's solution leaves counts.
template <typename Solve>
float TW_BoneChain::change(const Solve& solve) noexcept
{
    float left = 0.0F;
    for (std::size_t i = 0; i < m_vecParts.size(); ++i)
    {
        Pose pose(*m_pObject->getPlayedObject(m_vecParts[i].m_uiPart), m_vecParts[i].m_vecBones);
        const float result = solve(pose);
        pose.write();
        left = i == 0 ? result : left;
    }
    return left;
}

float TW_BoneChain::reachTwoBones(const TW_TwoBoneReach& reach) noexcept
{
    return change(
        [&](Pose& pose)
        {
            const Vector target = pose.pointFromWorld(toDouble(reach.target));
            ReachJoints& joints = pose.accessJoints();
            const std::size_t last = joints.m_uiCount - 1;
            if (last < 2)
            {
                return static_cast<float>((joints.m_positions[last] - target).length());
            }
            // Bones between the second and the last move with the second.
            ReachJoints three = joints;
            three.m_uiCount = 3;
            three.m_positions[2] = joints.m_positions[last];
            const float left = solveTwoBones(three, reach, target, pose.directionFromWorld(toDouble(reach.pole)));
            joints.m_turns[0] = three.m_turns[0];
            std::fill(joints.m_turns.begin() + 1, joints.m_turns.begin() + static_cast<std::ptrdiff_t>(last),
                      three.m_turns[1]);
            joints.m_turns[last] = three.m_turns[2];
            return left;
        });
}

float TW_BoneChain::aim(const TW_Aim& aim) noexcept
{
    return change(
        [&](Pose& pose)
        {
            return solveAim(pose.accessJoints(), aim, pose.pointFromWorld(toDouble(aim.target)),
                            pose.directionOfTip(aim.forward), pose.directionOfTip(aim.eye));
        });
}

float TW_BoneChain::reach(const TW_ChainReach& reach) noexcept
{
    return change([&](Pose& pose)
                  { return solveChain(pose.accessJoints(), reach, pose.pointFromWorld(toDouble(reach.target))); });
}

void TW_BoneChain::turnTip(const TW_Rotation& rotation) noexcept
{
    change(
        [&](Pose& pose)
        {
            ReachJoints& joints = pose.accessJoints();
            joints.m_turns[joints.m_uiCount - 1] = pose.rotationFromWorld(rotation);
            return 0.0F;
        });
}

void TW_BoneChain::moveBase(const M_Vector3Template<double>& offset) noexcept
{
    for (const Part& part : m_vecParts)
    {
        TW_ObjectAnimation& object = *m_pObject->getPlayedObject(part.m_uiPart);
        P_VirtualObject& base = *object.getMesh(part.m_vecBones.front());
        const P_BaseObject* const parent = base.getParent();
        const Matrix above = parent ? parent->getObjectToWorldMatrix() : Matrix();
        Matrix local = base.getMatrix();
        local.setTranslation(local.getTranslation() + above.inverse().transformDirection(toFloat(offset)));
        base.setMatrix(local);
    }
}

M_Vector3Template<double> TW_BoneChain::getTipPosition() const noexcept
{
    Pose pose(*m_pObject->getPlayedObject(m_vecParts.front().m_uiPart), m_vecParts.front().m_vecBones);
    const ReachJoints& joints = pose.accessJoints();
    return pose.pointToWorld(joints.m_positions[joints.m_uiCount - 1]);
}
}  // namespace TW2
