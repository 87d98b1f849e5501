#pragma once

#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace convert_test
{
/// The same reading of a file that the converter does, so that both see the same nodes and vertices.
constexpr unsigned int importFlags =
    aiProcess_Triangulate | aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices | aiProcess_SortByPType |
    aiProcess_TransformUVCoords | aiProcess_GenUVCoords | aiProcess_ConvertToLeftHanded;

/// 4x4 matrix for column vectors, as Assimp means its own, in double precision.
struct Matrix
{
    std::array<std::array<double, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

    Matrix() = default;
    explicit Matrix(const aiMatrix4x4& a)
    {
        for (unsigned int r = 0; r < 4; ++r)
        {
            for (unsigned int c = 0; c < 4; ++c)
            {
                m[r][c] = static_cast<double>(a[r][c]);
            }
        }
    }
    friend Matrix operator*(const Matrix& a, const Matrix& b)
    {
        Matrix result;
        for (std::size_t r = 0; r < 4; ++r)
        {
            for (std::size_t c = 0; c < 4; ++c)
            {
                result.m[r][c] = 0.0;
                for (std::size_t k = 0; k < 4; ++k)
                {
                    result.m[r][c] += a.m[r][k] * b.m[k][c];
                }
            }
        }
        return result;
    }
    [[nodiscard]] std::array<double, 3> transform(const aiVector3D& v) const
    {
        std::array<double, 3> result{};
        for (std::size_t r = 0; r < 3; ++r)
        {
            result[r] = m[r][0] * static_cast<double>(v.x) + m[r][1] * static_cast<double>(v.y) +
                        m[r][2] * static_cast<double>(v.z) + m[r][3];
        }
        return result;
    }
};

/// Evaluates an imported scene's own channels: what a converted model is compared with.
class SceneOracle
{
public:
    explicit SceneOracle(const aiScene& scene) : m_scene(scene)
    {
        m_nodes.push_back({scene.mRootNode, -1});
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
        {
            const aiNode* node = m_nodes[i].m_pNode;
            for (unsigned int c = 0; c < node->mNumChildren; ++c)
            {
                m_nodes.push_back({node->mChildren[c], static_cast<int>(i)});
            }
        }
    }

    [[nodiscard]] std::size_t getNodeCount() const { return m_nodes.size(); }
    [[nodiscard]] const aiNode& getNode(std::size_t i) const { return *m_nodes[i].m_pNode; }

    /// World matrices of all nodes, breadth first, `ticks` into a clip.
    [[nodiscard]] std::vector<Matrix> getWorld(const aiAnimation& clip, double ticks) const
    {
        std::map<std::string, const aiNodeAnim*> channels;
        for (unsigned int i = 0; i < clip.mNumChannels; ++i)
        {
            channels[clip.mChannels[i]->mNodeName.C_Str()] = clip.mChannels[i];
        }
        std::vector<Matrix> world;
        std::map<std::string, bool> seen;
        for (const Place& place : m_nodes)
        {
            const std::string name = place.m_pNode->mName.C_Str();
            const auto channel = channels.find(name);
            // Of nodes with one name the first is meant.
            const bool moved = channel != channels.end() && !seen[name];
            seen[name] = true;
            const Matrix local = moved ? evaluate(*channel->second, ticks) : Matrix(place.m_pNode->mTransformation);
            world.push_back(place.m_iParent < 0 ? local : world[static_cast<std::size_t>(place.m_iParent)] * local);
        }
        return world;
    }

    /// Calls `visit` with the position of every vertex that a triangle uses.
    template <typename Visit>
    void forEachVertex(const std::vector<Matrix>& world, Visit visit) const
    {
        std::map<std::string, std::size_t> byName;
        for (std::size_t i = m_nodes.size(); i-- > 0;)
        {
            byName[m_nodes[i].m_pNode->mName.C_Str()] = i;
        }
        std::vector<bool> shown(m_scene.mNumMeshes, false);
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
        {
            for (unsigned int k = 0; k < m_nodes[i].m_pNode->mNumMeshes; ++k)
            {
                const unsigned int index = m_nodes[i].m_pNode->mMeshes[k];
                const aiMesh& mesh = *m_scene.mMeshes[index];
                if (mesh.mNumBones > 0 && shown[index])
                {
                    continue;
                }
                shown[index] = true;
                visitMesh(mesh, world, world[i], byName, visit);
            }
        }
    }

private:
    struct Place
    {
        const aiNode* m_pNode;
        int m_iParent;
    };

    template <typename Key>
    static std::size_t findKey(const Key* keys, unsigned int count, double ticks, double& fraction)
    {
        std::size_t i = 0;
        while (i + 1 < count && keys[i + 1].mTime <= ticks)
        {
            ++i;
        }
        fraction = 0.0;
        if (i + 1 < count && ticks > keys[i].mTime)
        {
            fraction = (ticks - keys[i].mTime) / (keys[i + 1].mTime - keys[i].mTime);
        }
        return i;
    }

    static std::array<double, 3> evaluate(const aiVectorKey* keys, unsigned int count, double ticks)
    {
        double f = 0.0;
        const std::size_t i = findKey(keys, count, ticks, f);
        const aiVector3D a = keys[i].mValue;
        const aiVector3D b = keys[f > 0.0 ? i + 1 : i].mValue;
        const auto mix = [f](float x, float y)
        { return static_cast<double>(x) * (1 - f) + static_cast<double>(y) * f; };
        return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z)};
    }

    static std::array<double, 4> evaluate(const aiQuatKey* keys, unsigned int count, double ticks)
    {
        double f = 0.0;
        const std::size_t i = findKey(keys, count, ticks, f);
        const auto unit = [](const aiQuaternion& q)
        {
            std::array<double, 4> r{static_cast<double>(q.w), static_cast<double>(q.x), static_cast<double>(q.y),
                                    static_cast<double>(q.z)};
            const double length = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2] + r[3] * r[3]);
            for (double& value : r)
            {
                value /= length;
            }
            return r;
        };
        const auto a = unit(keys[i].mValue);
        auto b = unit(keys[f > 0.0 ? i + 1 : i].mValue);
        double cosine = 0.0;
        for (std::size_t k = 0; k < 4; ++k)
        {
            cosine += a[k] * b[k];
        }
        if (cosine < 0.0)
        {
            cosine = -cosine;
            for (double& value : b)
            {
                value = -value;
            }
        }
        const double angle = std::acos(std::fmin(cosine, 1.0));
        const double s = std::sin(angle);
        const double wa = s > 1e-9 ? std::sin((1 - f) * angle) / s : 1 - f;
        const double wb = s > 1e-9 ? std::sin(f * angle) / s : f;
        std::array<double, 4> result{};
        for (std::size_t k = 0; k < 4; ++k)
        {
            result[k] = wa * a[k] + wb * b[k];
        }
        return result;
    }

    static Matrix evaluate(const aiNodeAnim& channel, double ticks)
    {
        const auto t = evaluate(channel.mPositionKeys, channel.mNumPositionKeys, ticks);
        const auto q = evaluate(channel.mRotationKeys, channel.mNumRotationKeys, ticks);
        const auto s = evaluate(channel.mScalingKeys, channel.mNumScalingKeys, ticks);
        const auto [w, x, y, z] = q;
        Matrix r;
        r.m = {{{(1 - 2 * (y * y + z * z)) * s[0], 2 * (x * y - z * w) * s[1], 2 * (x * z + y * w) * s[2], t[0]},
                {2 * (x * y + z * w) * s[0], (1 - 2 * (x * x + z * z)) * s[1], 2 * (y * z - x * w) * s[2], t[1]},
                {2 * (x * z - y * w) * s[0], 2 * (y * z + x * w) * s[1], (1 - 2 * (x * x + y * y)) * s[2], t[2]},
                {0, 0, 0, 1}}};
        return r;
    }

    template <typename Visit>
    static void visitMesh(const aiMesh& mesh, const std::vector<Matrix>& world, const Matrix& holder,
                          const std::map<std::string, std::size_t>& byName, Visit visit)
    {
        std::vector<std::array<double, 3>> positions(mesh.mNumVertices, {0.0, 0.0, 0.0});
        std::vector<double> weights(mesh.mNumVertices, 0.0);
        for (unsigned int b = 0; b < mesh.mNumBones; ++b)
        {
            const aiBone& bone = *mesh.mBones[b];
            const auto node = byName.find(bone.mName.C_Str());
            if (node == byName.end())
            {
                continue;  // damaged: the others pull alone
            }
            const Matrix move = world[node->second] * Matrix(bone.mOffsetMatrix);
            for (unsigned int i = 0; i < bone.mNumWeights; ++i)
            {
                const unsigned int v = bone.mWeights[i].mVertexId;
                const auto weight = static_cast<double>(bone.mWeights[i].mWeight);
                const auto moved = move.transform(mesh.mVertices[v]);
                for (std::size_t k = 0; k < 3; ++k)
                {
                    positions[v][k] += weight * moved[k];
                }
                weights[v] += weight;
            }
        }
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f)
        {
            for (unsigned int k = 0; k < mesh.mFaces[f].mNumIndices; ++k)
            {
                const unsigned int v = mesh.mFaces[f].mIndices[k];
                if (weights[v] > 0.0)
                {
                    visit(std::array<double, 3>{positions[v][0] / weights[v], positions[v][1] / weights[v],
                                                positions[v][2] / weights[v]});
                }
                else
                {
                    visit(holder.transform(mesh.mVertices[v]));
                }
            }
        }
    }

    const aiScene& m_scene;
    std::vector<Place> m_nodes;
};
}  // namespace convert_test
