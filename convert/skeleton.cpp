#include "convert/skeleton.h"

#include "convert/box.h"
#include "convert/precision.h"
#include "convert/unique_names.h"
#include "convert/warnings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace TW2::convert
{
namespace
{
constexpr std::size_t mostTried = 48;  // of a mesh's bones, where each is held against all others
constexpr double visible = 0.01;       // of a mesh's size: how far apart poses are that one tells apart

class Builder
{
public:
    explicit Builder(const Model& model) : m_model(model), m_vecKnown(model.m_vecNodes.size()) {}

    Skeleton build(std::vector<std::string>& warnings)
    {
        addJoints(warnings);
        findHolders();
        choosePlaces();
        m_skeleton.m_vecMeshToSkin.resize(m_model.m_vecMeshes.size());
        m_skeleton.m_vecBones.resize(m_model.m_vecMeshes.size());
        Warnings poses;
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            if (!m_model.m_vecMeshes[i].m_vecBones.empty())
            {
                m_skeleton.m_vecMeshToSkin[i] = bind(i, poses);
            }
        }
        for (std::string& line : poses.makeLines())
        {
            warnings.push_back(std::move(line));
        }
        place();
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            if (m_model.m_vecMeshes[i].m_vecBones.empty() && m_skeleton.m_vecHolders[i] >= 0)
            {
                m_skeleton.m_vecMeshToSkin[i] = joint(m_skeleton.m_vecHolders[i]).m_world;
            }
        }
        return std::move(m_skeleton);
    }

private:
    [[nodiscard]] Joint& joint(int index) { return m_skeleton.m_vecJoints[static_cast<std::size_t>(index)]; }
    [[nodiscard]] std::optional<Matrixd>& known(int index) { return m_vecKnown[static_cast<std::size_t>(index)]; }

    /// One joint per node, standing as the file has it. Written files call joints by name: of several nodes with one
    /// name all but the first get a number.
    void addJoints(std::vector<std::string>& warnings)
    {
        std::size_t renamed = 0;
        std::string example;
        for (const Node& node : m_model.m_vecNodes)
        {
            Joint joint;
            joint.m_strName = m_names.make(node.m_strName);
            joint.m_iParent = node.m_iParent;
            joint.m_local = node.m_local;
            joint.m_world = node.m_iParent < 0 ? node.m_local : node.m_local * this->joint(node.m_iParent).m_world;
            if (!node.m_strName.empty() && joint.m_strName != node.m_strName && renamed++ == 0)
            {
                example = "\"" + node.m_strName + "\" (a second one is written as \"" + joint.m_strName + "\")";
            }
            m_skeleton.m_vecJoints.push_back(std::move(joint));
        }
        if (renamed > 0)
        {
            warnings.push_back("several nodes have one name, among them " + example + ": " + std::to_string(renamed) +
                               (renamed == 1 ? " is" : " are") + " written with a number behind the name");
        }
    }

    void findHolders()
    {
        m_skeleton.m_vecHolders.assign(m_model.m_vecMeshes.size(), -1);
        for (std::size_t node = m_model.m_vecNodes.size(); node-- > 0;)
        {
            for (const int mesh : m_model.m_vecNodes[node].m_vecMeshes)
            {
                m_skeleton.m_vecHolders[static_cast<std::size_t>(mesh)] = static_cast<int>(node);
            }
        }
    }

    /// Settles where a mesh's bones stand, and where the mesh stands then.
    Matrixd bind(std::size_t meshIndex, Warnings& warnings)
    {
        const Mesh& mesh = m_model.m_vecMeshes[meshIndex];
        const Matrixd place = fitToKnown(meshIndex);
        const double size = measure(mesh, place);
        for (const Bone& bone : mesh.m_vecBones)
        {
            const Matrixd world = bone.m_offset.inverse() * place;
            if (!known(bone.m_iNode))
            {
                known(bone.m_iNode) = world;
            }
            const Matrixd& settled = *known(bone.m_iNode);
            if (!isSame(settled, world, size, visible))
            {
                warnings.addLeftOut("mesh \"" + mesh.m_strName + "\"",
                                    "the pose at rest of the other meshes on its bones: it stands as it was bound");
            }
            m_skeleton.m_vecBones[meshIndex].push_back(
                isSame(settled, world, size) ? bone.m_iNode : findCompanion(bone.m_iNode, world, size));
        }
        return place;
    }

    /// Where a mesh stands: as most of its bones want it that meshes before it have settled. Where most do not agree,
    /// the mesh was bound in another pose and stands where it would alone.
    [[nodiscard]] Matrixd fitToKnown(std::size_t meshIndex)
    {
        const Mesh& mesh = m_model.m_vecMeshes[meshIndex];
        std::vector<const Bone*> settled;
        for (const Bone& bone : mesh.m_vecBones)
        {
            if (known(bone.m_iNode))
            {
                settled.push_back(&bone);
            }
        }
        Matrixd best = m_vecPlaces[meshIndex];
        auto most = static_cast<std::ptrdiff_t>(settled.size() / 2);
        for (std::size_t i = 0; i < settled.size(); i += settled.size() / mostTried + 1)
        {
            const Matrixd place = settled[i]->m_offset * *known(settled[i]->m_iNode);
            const double size = measure(mesh, place);
            const auto agree = std::ranges::count_if(
                settled, [&](const Bone* bone)
                { return isSame(*known(bone->m_iNode), bone->m_offset.inverse() * place, size); });
            if (agree > most)
            {
                most = agree;
                best = place;
            }
            if (agree == static_cast<std::ptrdiff_t>(settled.size()))
            {
                break;
            }
        }
        return best;
    }

    /// Chooses where each skin stands when it is bound: if that is near enough to the file's rest pose, all of them by
    /// one rule, as they were modelled beside each other (each where its node is, or all in one space); else each for
    /// itself.
    void choosePlaces()
    {
        m_vecPlaces.resize(m_model.m_vecMeshes.size());
        std::vector<std::size_t> skins;
        for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
        {
            if (!m_model.m_vecMeshes[i].m_vecBones.empty())
            {
                m_vecPlaces[i] = choosePlace(i);
                skins.push_back(i);
            }
        }
        std::vector<std::vector<Matrixd>> rules{{}};
        for (const std::size_t skin : skins)
        {
            const int holder = m_skeleton.m_vecHolders[skin];
            rules[0].push_back(holder < 0 ? m_model.m_root : joint(holder).m_world);
        }
        constexpr std::size_t mostSpaces = 12;
        rules.emplace_back(skins.size(), m_model.m_root);
        for (std::size_t i = 0; i < std::min(mostSpaces, skins.size()); ++i)
        {
            rules.emplace_back(skins.size(), m_vecPlaces[skins[i]]);
        }
        const std::vector<Matrixd>* best = nullptr;
        double least = std::numeric_limits<double>::infinity();
        for (const std::vector<Matrixd>& rule : rules)
        {
            double apart = 0.0;
            bool near = true;
            for (std::size_t i = 0; i < skins.size(); ++i)
            {
                near = near && isNear(m_model.m_vecMeshes[skins[i]], rule[i], m_vecPlaces[skins[i]]);
                apart += measureDistance(m_model.m_vecMeshes[skins[i]], rule[i]);
            }
            if (near && apart < 0.999 * least)
            {
                least = apart;
                best = &rule;
            }
        }
        for (std::size_t i = 0; best && i < skins.size(); ++i)
        {
            m_vecPlaces[skins[i]] = (*best)[i];
        }
    }

    /// Whether a mesh at one place looks much as it does at another: about as large, upright and not far away.
    static bool isNear(const Mesh& mesh, const Matrixd& place, const Matrixd& other)
    {
        constexpr double farthest = 0.5;  // of the mesh's size, also of points one size away
        const double size = measureBox(mesh);
        const double allowed = farthest * measure(mesh, other);
        const Vector3d middle = toDouble(mesh.m_vecPositions.empty() ? Vector3() : mesh.m_vecPositions.front());
        for (const Vector3d& beside :
             {Vector3d(), Vector3d(size, 0.0, 0.0), Vector3d(0.0, size, 0.0), Vector3d(0.0, 0.0, size)})
        {
            if ((place.transformPoint(middle + beside) - other.transformPoint(middle + beside)).length() > allowed)
            {
                return false;
            }
        }
        return true;
    }

    /// Where one skin stands when it is bound: of all places that the file names (where its node is, where each of its
    /// bones wants it in the file's rest pose, where it was modelled) the one that leaves its bones closest to where
    /// the file has them.
    [[nodiscard]] Matrixd choosePlace(std::size_t meshIndex)
    {
        const Mesh& mesh = m_model.m_vecMeshes[meshIndex];
        const std::size_t stride = mesh.m_vecBones.size() / mostTried + 1;
        const int holder = m_skeleton.m_vecHolders[meshIndex];
        std::vector<Matrixd> candidates;
        if (holder >= 0)
        {
            candidates.push_back(joint(holder).m_world);
        }
        for (std::size_t i = 0; i < mesh.m_vecBones.size(); i += stride)
        {
            const Bone& bone = mesh.m_vecBones[i];
            candidates.push_back(bone.m_offset * joint(bone.m_iNode).m_world);
        }
        candidates.push_back(m_model.m_root);
        const Matrixd* best = &candidates.front();
        double least = std::numeric_limits<double>::infinity();
        for (const Matrixd& candidate : candidates)
        {
            const double apart = measureDistance(mesh, candidate);
            // What comes first is kept unless another place is clearly better.
            if (apart < 0.999 * least)
            {
                least = apart;
                best = &candidate;
            }
        }
        return *best;
    }

    /// How far a place puts the bones of a mesh from the file's rest pose: the sum of the distances of their origins
    /// and of points along their axes.
    [[nodiscard]] double measureDistance(const Mesh& mesh, const Matrixd& place)
    {
        const double reach = 0.1 * measureBox(mesh);
        double sum = 0.0;
        for (const Bone& bone : mesh.m_vecBones)
        {
            // Points of the mesh's space, a bone's origin and beside it, taken to the scene by both.
            const Matrixd toMesh = bone.m_offset.inverse();
            const Matrixd inFile = bone.m_offset * joint(bone.m_iNode).m_world;
            const Vector3d origin = toMesh.getTranslation();
            for (const Vector3d& beside :
                 {Vector3d(), Vector3d(reach, 0.0, 0.0), Vector3d(0.0, reach, 0.0), Vector3d(0.0, 0.0, reach)})
            {
                const Vector3d point = origin + beside;
                sum += (place.transformPoint(point) - inFile.transformPoint(point)).length();
            }
        }
        return std::isfinite(sum) ? sum : std::numeric_limits<double>::max();
    }

    static double measureBox(const Mesh& mesh)
    {
        if (mesh.m_vecPositions.empty())
        {
            return 1.0;
        }
        Box box;
        for (const Vector3& position : mesh.m_vecPositions)
        {
            box.add(toDouble(position));
        }
        return box.getDiagonal();
    }

    /// The size of a mesh in the scene.
    static double measure(const Mesh& mesh, const Matrixd& place)
    {
        return measureBox(mesh) * std::cbrt(std::abs(place.determinant()));
    }

    /// Whether two places of a bone of a mesh of this size can be taken for one.
    static bool isSame(const Matrixd& a, const Matrixd& b, double size, double allowed = 2e-4)
    {
        for (int row = 0; row < 3; ++row)
        {
            if ((a.getRow(row) - b.getRow(row)).length() > allowed * a.getRow(row).length())
            {
                return false;
            }
        }
        return (a.getTranslation() - b.getTranslation()).length() <= allowed * size;
    }

    int findCompanion(int bone, const Matrixd& world, double size)
    {
        const int nodes = static_cast<int>(m_model.m_vecNodes.size());
        for (int i = nodes; i < static_cast<int>(m_skeleton.m_vecJoints.size()); ++i)
        {
            if (joint(i).m_iParent == bone && isSame(*known(i), world, size))
            {
                return i;
            }
        }
        Joint companion;
        companion.m_strName = m_names.make(joint(bone).m_strName + "_bind");
        companion.m_iParent = bone;
        m_skeleton.m_vecJoints.push_back(companion);
        m_vecKnown.emplace_back(world);
        return static_cast<int>(m_vecKnown.size() - 1);
    }

    void place()
    {
        for (std::size_t i = 0; i < m_skeleton.m_vecJoints.size(); ++i)
        {
            Joint& joint = m_skeleton.m_vecJoints[i];
            const Matrixd parent = joint.m_iParent < 0 ? Matrixd() : this->joint(joint.m_iParent).m_world;
            joint.m_world = m_vecKnown[i] ? *m_vecKnown[i] : joint.m_local * parent;
            joint.m_local = m_vecKnown[i] ? *m_vecKnown[i] * parent.inverse() : joint.m_local;
        }
    }

    const Model& m_model;
    Skeleton m_skeleton;
    UniqueNames m_names{"node"};
    std::vector<Matrixd> m_vecPlaces;                // per mesh: where it stands when it is bound, if it is a skin
    std::vector<std::optional<Matrixd>> m_vecKnown;  // per joint: world matrix when its skins were bound
};
}  // namespace

Skeleton makeSkeleton(const Model& model, std::vector<std::string>& warnings)
{
    return Builder(model).build(warnings);
}

void composeWorld(const Skeleton& skeleton, const std::vector<Matrixd>& local, std::vector<Matrixd>& world)
{
    world.resize(local.size());
    for (std::size_t i = 0; i < local.size(); ++i)
    {
        const int parent = skeleton.m_vecJoints[i].m_iParent;
        world[i] = parent < 0 ? local[i] : local[i] * world[static_cast<std::size_t>(parent)];
    }
}
}  // namespace TW2::convert
