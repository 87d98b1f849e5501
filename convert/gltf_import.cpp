#include "convert/gltf_import.h"

#include "convert/color_space.h"
#include "convert/convert_exception.h"
#include "convert/gltf_accessor.h"
#include "convert/gltf_clip.h"
#include "convert/gltf_file.h"
#include "convert/gltf_geometry.h"
#include "convert/gltf_surface.h"
#include "convert/gltf_value.h"
#include "convert/model_space.h"
#include "convert/rotation.h"
#include "convert/unique_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <numbers>
#include <set>
#include <tuple>

namespace TW2::convert
{
namespace
{
constexpr double degrees = 180.0 / std::numbers::pi;

Matrixd makeMatrix(const double* columns)
{
    return mirrorZ(takeRows(columns));
}

Matrixd makeLocal(const tinygltf::Node& source)
{
    if (source.matrix.size() == 16)
    {
        return makeMatrix(source.matrix.data());
    }
    const auto get = [](const std::vector<double>& list, std::size_t i, double otherwise)
    { return i < list.size() ? list[i] : otherwise; };
    const auto& s = source.scale;
    const auto& q = source.rotation;
    const auto& t = source.translation;
    const double scales[3]{get(s, 0, 1.0), get(s, 1, 1.0), get(s, 2, 1.0)};
    Matrixd local = toMatrix(normalized({get(q, 3, 1.0), -get(q, 0, 0.0), -get(q, 1, 0.0), get(q, 2, 0.0)}));
    for (int row = 0; row < 3; ++row)
    {
        local.setRow(row, local.getRow(row) * scales[row]);
    }
    local.setTranslation({get(t, 0, 0.0), get(t, 1, 0.0), -get(t, 2, 0.0)});
    return local;
}

std::string describeExtras(const tinygltf::Value& extras)
{
    std::string notes;
    if (!extras.IsObject())
    {
        return notes;
    }
    for (const std::string& key : extras.Keys())
    {
        const tinygltf::Value& value = extras.Get(key);
        if (value.IsString() && !value.Get<std::string>().empty())
        {
            notes += key + "=" + value.Get<std::string>() + "\n";
        }
    }
    return notes;
}

class Builder
{
public:
    Builder(const std::string& fileName, const ImportOptions& options)
        : m_file(fileName, m_warnings), m_source(m_file.getModel()), m_pictures(fileName, options.m_vecTextureFolders)
    {
        m_model.m_strName = std::filesystem::path(fileName).stem().string();
        const bool automatic = options.m_eUp == ImportOptions::UpAxis::Automatic;
        m_model.m_root = makeRoot(automatic ? ImportOptions::UpAxis::Y : options.m_eUp, options.m_dScale);
    }

    Model build()
    {
        findParents();
        addNodes();
        m_model.m_vecSurfaces = importSurfaces(m_file, m_pictures, m_warnings);
        findMorphing();
        addMeshes();
        finishSurfaces();
        for (std::size_t i = 0; i < m_source.animations.size(); ++i)
        {
            Clip clip = importClip(m_file, i, m_vecNodes, m_warnings);
            if (!clip.m_vecChannels.empty())
            {
                m_model.m_vecClips.push_back(std::move(clip));
            }
        }
        addStage();
        m_model.m_vecSources = m_file.getSources();
        m_model.m_vecWarnings = m_warnings.makeLines();
        return std::move(m_model);
    }

private:
    static std::string name(const char* list, std::size_t index) { return list + ("[" + std::to_string(index) + "]"); }

    void findParents()
    {
        m_vecParents.assign(m_source.nodes.size(), -1);
        for (std::size_t i = 0; i < m_source.nodes.size(); ++i)
        {
            for (const int child : m_source.nodes[i].children)
            {
                static_cast<void>(m_file.at(m_source.nodes, child, "nodes", name("nodes", i)));
                int& parent = m_vecParents[static_cast<std::size_t>(child)];
                if (parent >= 0)
                {
                    m_file.fail(name("nodes", static_cast<std::size_t>(child)),
                                "hangs below nodes[" + std::to_string(parent) + "] and " + name("nodes", i));
                }
                parent = static_cast<int>(i);
            }
        }
    }

    /// The top of a node's tree. A tree that bites its own tail has none.
    [[nodiscard]] int findTop(int node) const
    {
        std::size_t steps = 0;
        for (; m_vecParents[static_cast<std::size_t>(node)] >= 0; node = m_vecParents[static_cast<std::size_t>(node)])
        {
            if (++steps > m_source.nodes.size())
            {
                m_file.fail(name("nodes", static_cast<std::size_t>(node)), "hangs below itself");
            }
        }
        return node;
    }

    /// Tops of the trees that are shown, and of those whose nodes are joints.
    [[nodiscard]] std::vector<int> findTops()
    {
        std::vector<int> tops;
        const auto add = [this, &tops](int node, const std::string& place)
        {
            static_cast<void>(m_file.at(m_source.nodes, node, "nodes", place));
            if (const int top = findTop(node); std::find(tops.begin(), tops.end(), top) == tops.end())
            {
                tops.push_back(top);
            }
        };
        if (m_source.scenes.empty())
        {
            for (std::size_t i = 0; i < m_source.nodes.size(); ++i)
            {
                add(static_cast<int>(i), "nodes");
            }
            return tops;
        }
        const int shown = std::max(m_source.defaultScene, 0);
        for (const int node : m_file.at(m_source.scenes, shown, "scenes", "scene").nodes)
        {
            add(node, name("scenes", static_cast<std::size_t>(shown)));
        }
        for (std::size_t i = 0; i < m_source.skins.size(); ++i)
        {
            for (const int joint : m_source.skins[i].joints)
            {
                add(joint, name("skins", i));
            }
        }
        for (std::size_t i = 0; i < m_source.scenes.size(); ++i)
        {
            if (static_cast<int>(i) != shown)
            {
                m_warnings.addLeftOut("scene \"" + m_source.scenes[i].name + "\"", "what no other scene shows");
            }
        }
        return tops;
    }

    void addNodes()
    {
        m_vecNodes.assign(m_source.nodes.size(), -1);
        std::vector<int> pending = findTops();
        for (std::size_t next = 0; next < pending.size(); ++next)
        {
            const auto index = static_cast<std::size_t>(pending[next]);
            const tinygltf::Node& source = m_source.nodes[index];
            m_vecNodes[index] = static_cast<int>(m_model.m_vecNodes.size());
            Node node;
            node.m_strName = source.name.empty() ? name("nodes", index) : source.name;
            const int parent = m_vecParents[index];
            node.m_iParent = parent < 0 ? -1 : m_vecNodes[static_cast<std::size_t>(parent)];
            node.m_local = parent < 0 ? makeLocal(source) * m_model.m_root : makeLocal(source);
            node.m_strNotes = describeExtras(source.extras);
            m_model.m_vecNodes.push_back(std::move(node));
            pending.insert(pending.end(), source.children.begin(), source.children.end());
        }
    }

    const GltfSkin* importSkin(int index, const std::string& place)
    {
        if (index < 0)
        {
            return nullptr;
        }
        const tinygltf::Skin& source = m_file.at(m_source.skins, index, "skins", place);
        const auto [known, isNew] = m_mapSkins.try_emplace(index);
        GltfSkin& skin = known->second;
        if (!isNew)
        {
            return &skin;
        }
        const std::string own = name("skins", static_cast<std::size_t>(index));
        std::vector<double> numbers;
        if (source.inverseBindMatrices >= 0)
        {
            const auto read = readNumbers(m_file, source.inverseBindMatrices, 16, own + ".inverseBindMatrices");
            numbers.assign(read.begin(), read.end());
        }
        for (std::size_t i = 0; i < source.joints.size(); ++i)
        {
            skin.m_vecNodes.push_back(m_file.at(m_vecNodes, source.joints[i], "nodes", own));
            skin.m_vecOffsets.emplace_back();
            if (!numbers.empty())
            {
                if (numbers.size() < (i + 1) * 16)
                {
                    m_file.fail(own, "has " + std::to_string(numbers.size() / 16) + " inverse bind matrices for " +
                                         std::to_string(source.joints.size()) + " joints");
                }
                skin.m_vecOffsets.back() = makeMatrix(numbers.data() + i * 16);
            }
        }
        return &skin;
    }

    void findMorphing()
    {
        for (const tinygltf::Animation& animation : m_source.animations)
        {
            for (const tinygltf::AnimationChannel& channel : animation.channels)
            {
                if (channel.target_path == "weights")
                {
                    m_setMorphing.insert(channel.target_node);
                }
            }
        }
    }

    void addMeshes()
    {
        for (std::size_t i = 0; i < m_source.nodes.size(); ++i)
        {
            const tinygltf::Node& node = m_source.nodes[i];
            if (node.mesh < 0 || m_vecNodes[i] < 0)
            {
                continue;
            }
            const tinygltf::Mesh& mesh = m_file.at(m_source.meshes, node.mesh, "meshes", name("nodes", i));
            // Where the targets move, all of what they do is left out.
            const bool moving = m_setMorphing.contains(static_cast<int>(i));
            const std::vector<double> weights = moving                 ? std::vector<double>()
                                                : node.weights.empty() ? mesh.weights
                                                                       : node.weights;
            // The meshes of a character become one: what two nodes show has to be in it twice.
            const bool shared = m_source.skins.empty() || node.skin >= 0;
            const auto [known, isNew] =
                m_mapMeshes.try_emplace(std::tuple(node.mesh, node.skin, weights, shared ? -1 : static_cast<int>(i)));
            if (isNew)
            {
                known->second = importMesh(mesh, weights, importSkin(node.skin, name("nodes", i)),
                                           name("meshes", static_cast<std::size_t>(node.mesh)));
            }
            m_model.m_vecNodes[static_cast<std::size_t>(m_vecNodes[i])].m_vecMeshes = known->second;
        }
    }

    /// Returns the model's meshes that it became.
    std::vector<int> importMesh(const tinygltf::Mesh& source, const std::vector<double>& weights, const GltfSkin* skin,
                                const std::string& place)
    {
        std::vector<int> meshes;
        for (std::size_t i = 0; i < source.primitives.size(); ++i)
        {
            const tinygltf::Primitive& primitive = source.primitives[i];
            const std::string own = place + ".primitives[" + std::to_string(i) + "]";
            std::optional<Mesh> mesh = importPrimitive(m_file, primitive, own, source.name, weights, skin, m_warnings);
            if (!mesh)
            {
                continue;
            }
            const int plain = static_cast<int>(m_source.materials.size());
            mesh->m_iMaterial = primitive.material < 0 ? plain : primitive.material;
            static_cast<void>(m_file.at(m_model.m_vecSurfaces, mesh->m_iMaterial, "materials", own));
            meshes.push_back(static_cast<int>(m_model.m_vecMeshes.size()));
            m_model.m_vecMeshes.push_back(std::move(*mesh));
        }
        return meshes;
    }

    /// Takes the plain surface away where nothing has it, and makes the names of all others differ.
    void finishSurfaces()
    {
        const int plain = static_cast<int>(m_source.materials.size());
        if (std::none_of(m_model.m_vecMeshes.begin(), m_model.m_vecMeshes.end(),
                         [plain](const Mesh& mesh) { return mesh.m_iMaterial == plain; }))
        {
            m_model.m_vecSurfaces.pop_back();
        }
        UniqueNames names("material");
        for (Surface& surface : m_model.m_vecSurfaces)
        {
            surface.m_strName = names.make(surface.m_strName);
        }
        m_model.m_vecPictures = m_pictures.take();
    }

    void addStage()
    {
        for (std::size_t i = 0; i < m_source.nodes.size(); ++i)
        {
            const tinygltf::Node& node = m_source.nodes[i];
            if (m_vecNodes[i] < 0)
            {
                continue;
            }
            if (node.camera >= 0)
            {
                addCamera(m_file.at(m_source.cameras, node.camera, "cameras", name("nodes", i)), m_vecNodes[i]);
            }
            if (const auto light = node.extensions.find("KHR_lights_punctual"); light != node.extensions.end())
            {
                addLight(m_file.at(m_source.lights, getIndex(light->second, "light"), "lights", name("nodes", i)),
                         m_vecNodes[i]);
            }
        }
    }

    void addCamera(const tinygltf::Camera& source, int node)
    {
        // Where the file leaves it to the window, pictures have the shape that most screens have.
        constexpr double usualShape = 16.0 / 9.0;
        const tinygltf::PerspectiveCamera& perspective = source.perspective;
        if (source.type != "perspective")
        {
            m_warnings.addLeftOut("camera \"" + source.name + "\"", "what sees without perspective");
            return;
        }
        const double shape = perspective.aspectRatio > 0.0 ? perspective.aspectRatio : usualShape;
        Camera camera;
        camera.m_iNode = node;
        camera.m_fHorizontalAngle =
            static_cast<float>(2.0 * std::atan(std::tan(0.5 * perspective.yfov) * shape) * degrees);
        camera.m_fNear = static_cast<float>(perspective.znear);
        camera.m_fFar = static_cast<float>(perspective.zfar);
        m_model.m_vecCameras.push_back(camera);
    }

    void addLight(const tinygltf::Light& source, int node)
    {
        Light light;
        light.m_iNode = node;
        std::vector<double> color = source.color;
        color.resize(3, 1.0);
        light.m_color =
            G_FColor(static_cast<float>(255.0 * toStored(color[0])), static_cast<float>(255.0 * toStored(color[1])),
                     static_cast<float>(255.0 * toStored(color[2])));
        // A white surface that reflects to all sides shows a pi-th of the light that falls on it.
        const double shown = std::max(source.intensity, 0.0) / std::numbers::pi;
        if (source.type == "directional")
        {
            light.m_eKind = Light::Kind::Directional;
            light.m_fBrightness = static_cast<float>(shown);
        }
        else
        {
            setReach(light, shown, source.range);
        }
        if (source.type == "spot")
        {
            light.m_eKind = Light::Kind::Spot;
            light.m_fInnerAngle = static_cast<float>(2.0 * source.spot.innerConeAngle * degrees);
            light.m_fOuterAngle = static_cast<float>(2.0 * source.spot.outerConeAngle * degrees);
        }
        m_model.m_vecLights.push_back(light);
    }

    /// Light fades with the square of the distance in the file and evenly here: both are the same where a white surface
    /// is just fully lit, and the light ends where a hundredth of that is left.
    static void setReach(Light& light, double shown, double range)
    {
        constexpr double reach = 10.0;
        const double full = std::sqrt(shown);
        const double end = range > 0.0 ? std::min(range, reach * full) : reach * full;
        light.m_fRange = static_cast<float>(end);
        light.m_fBrightness = static_cast<float>(full > 0.0 ? 1.0 / std::max(1.0 - full / end, 0.1) : 0.0);
    }

    Warnings m_warnings;
    GltfFile m_file;
    const tinygltf::Model& m_source;
    PictureCollector m_pictures;
    Model m_model;
    std::vector<int> m_vecParents;  // per node of the file
    std::vector<int> m_vecNodes;    // of the model, per node of the file; -1 for those left out
    std::set<int> m_setMorphing;    // nodes of the file whose morph targets an animation moves
    std::map<int, GltfSkin> m_mapSkins;
    std::map<std::tuple<int, int, std::vector<double>, int>, std::vector<int>> m_mapMeshes;
};
}  // namespace

bool isGltf(const std::string& fileName)
{
    std::string ending = std::filesystem::path(fileName).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".gltf" || ending == ".glb")
    {
        return true;
    }
    std::array<char, 4> head{};
    std::ifstream(fileName, std::ios::binary).read(head.data(), head.size());
    return std::string_view(head.data(), head.size()) == "glTF";
}

Model importGltf(const std::string& fileName, const ImportOptions& options)
{
    Model model = Builder(fileName, options).build();
    if (model.m_vecMeshes.empty() && model.m_vecClips.empty())
    {
        throw ConvertException(fileName.c_str(), "holds neither triangles nor motion");
    }
    return model;
}
}  // namespace TW2::convert
