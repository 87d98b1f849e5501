#include "convert/bind_pose.h"

#include "convert/clip_sampler.h"
#include "convert/unique_names.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace TW2::convert
{
namespace
{
class Finder
{
public:
    explicit Finder(Model& model) : m_model(model), m_vecKnown(model.m_vecNodes.size())
    {
        std::vector<Matrixd> local;
        for (const Node& node : model.m_vecNodes)
        {
            local.push_back(node.m_local);
            m_names.make(node.m_strName);
        }
        ClipSampler::composeWorld(model, local, m_vecUnanimated);
        m_meshNodes.assign(model.m_vecMeshes.size(), -1);
        for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
        {
            for (const int mesh : model.m_vecNodes[node].m_vecMeshes)
            {
                int& place = m_meshNodes[static_cast<std::size_t>(mesh)];
                place = place < 0 ? static_cast<int>(node) : place;
            }
        }
    }

    BindPose find()
    {
        BindPose pose;
        pose.m_vecMeshToSkin.resize(m_model.m_vecMeshes.size());
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            if (!m_model.m_vecMeshes[i].m_vecBones.empty())
            {
                pose.m_vecMeshToSkin[i] = bind(i);
            }
        }
        finish(pose);
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            if (m_model.m_vecMeshes[i].m_vecBones.empty() && m_meshNodes[i] >= 0)
            {
                pose.m_vecMeshToSkin[i] = pose.m_vecWorld[static_cast<std::size_t>(m_meshNodes[i])];
            }
        }
        return pose;
    }

private:
    /// Settles where a mesh's bones stand, and where the mesh stands then.
    Matrixd bind(std::size_t meshIndex)
    {
        Mesh& mesh = m_model.m_vecMeshes[meshIndex];
        const int holder = m_meshNodes[meshIndex];
        Matrixd place = holder < 0 ? Matrixd() : m_vecUnanimated[static_cast<std::size_t>(holder)];
        const auto known =
            std::ranges::find_if(mesh.m_vecBones, [this](const Bone& bone)
                                 { return m_vecKnown[static_cast<std::size_t>(bone.m_iNode)].has_value(); });
        if (known != mesh.m_vecBones.end())
        {
            place = known->m_offset * *m_vecKnown[static_cast<std::size_t>(known->m_iNode)];
        }
        for (Bone& bone : mesh.m_vecBones)
        {
            const Matrixd world = bone.m_offset.inverse() * place;
            std::optional<Matrixd>& settled = m_vecKnown[static_cast<std::size_t>(bone.m_iNode)];
            if (!settled)
            {
                settled = world;
            }
            else if (!isSame(*settled, world))
            {
                bone.m_iNode = findCompanion(bone.m_iNode, world);
            }
        }
        return place;
    }

    static bool isSame(const Matrixd& a, const Matrixd& b)
    {
        const double scale = 1.0 + a.getTranslation().length();
        for (int row = 0; row < 4; ++row)
        {
            const double allowed = row == 3 ? 1e-4 * scale : 1e-4 * (1.0 + a.getRow(row).length());
            if ((a.getRow(row) - b.getRow(row)).length() > allowed)
            {
                return false;
            }
        }
        return true;
    }

    int findCompanion(int bone, const Matrixd& world)
    {
        for (std::size_t i = 0; i < m_vecKnown.size(); ++i)
        {
            if (m_vecCompanionOf.size() > i && m_vecCompanionOf[i] == bone && isSame(*m_vecKnown[i], world))
            {
                return static_cast<int>(i);
            }
        }
        Node companion;
        companion.m_strName = m_names.make(m_model.m_vecNodes[static_cast<std::size_t>(bone)].m_strName + "_bind");
        companion.m_iParent = bone;
        m_model.m_vecNodes.push_back(companion);
        m_vecKnown.emplace_back(world);
        m_vecCompanionOf.resize(m_vecKnown.size(), -1);
        m_vecCompanionOf.back() = bone;
        return static_cast<int>(m_vecKnown.size() - 1);
    }

    void finish(BindPose& pose) const
    {
        const std::size_t count = m_model.m_vecNodes.size();
        pose.m_vecLocal.resize(count);
        pose.m_vecWorld.resize(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            const Node& node = m_model.m_vecNodes[i];
            const Matrixd parent =
                node.m_iParent < 0 ? Matrixd() : pose.m_vecWorld[static_cast<std::size_t>(node.m_iParent)];
            pose.m_vecLocal[i] = m_vecKnown[i] ? *m_vecKnown[i] * parent.inverse() : node.m_local;
            pose.m_vecWorld[i] = m_vecKnown[i] ? *m_vecKnown[i] : node.m_local * parent;
        }
    }

    Model& m_model;
    UniqueNames m_names{"bone"};
    std::vector<std::optional<Matrixd>> m_vecKnown;  // world matrices in the bind pose
    std::vector<int> m_vecCompanionOf;
    std::vector<Matrixd> m_vecUnanimated;
    std::vector<int> m_meshNodes;
};
}  // namespace

BindPose findBindPose(Model& model)
{
    return Finder(model).find();
}
}  // namespace TW2::convert
