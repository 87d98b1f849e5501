#include "convert/fbx_import.h"

#include "convert/fbx_clips.h"
#include "convert/fbx_geometry.h"
#include "convert/fbx_properties.h"
#include "convert/fbx_scene.h"
#include "convert/fbx_surface.h"
#include "convert/file_ending.h"
#include "convert/model_space.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace TW2::convert
{
namespace
{
/// Text values that the user added to a node, and what programs let him write there.
std::string collectNotes(const FbxObject& object)
{
    std::string notes;
    FbxProperties(object.m_pElement)
        .forEachText(
            [&notes](std::string_view name, std::string_view flags, std::string_view text)
            {
                if (!text.empty() && flags.find('U') != std::string_view::npos)
                {
                    notes.append(name).append("=").append(text).append("\n");
                }
            });
    return notes;
}

class Builder
{
public:
    Builder(const std::string& fileName, const ImportOptions& options)
        : m_scene(fileName),
          m_pictures(fileName, options.m_vecTextureFolders),
          m_surfaces(m_scene, m_pictures, m_warnings)
    {
        m_model.m_strName = std::filesystem::path(fileName).stem().string();
        const bool automatic = options.m_eUp == ImportOptions::UpAxis::Automatic;
        const Matrixd root = makeRoot(automatic ? ImportOptions::UpAxis::Y : options.m_eUp, options.m_dScale);
        m_model.m_root = automatic ? m_scene.getRoot() * root : root;
    }

    Model build()
    {
        for (std::size_t i = 0; i < m_scene.getPlaces().size(); ++i)
        {
            addNode(i);
        }
        m_model.m_vecSurfaces = m_surfaces.take();
        m_model.m_vecPictures = m_pictures.take();
        m_model.m_vecClips = readFbxClips(m_scene, m_warnings);
        m_model.m_vecWarnings = m_warnings.makeLines();
        return std::move(m_model);
    }

private:
    void addNode(std::size_t index)
    {
        const FbxPlace& place = m_scene.getPlaces()[index];
        Node node;
        node.m_strName = place.m_strName;
        node.m_iParent = place.m_iParent;
        node.m_local = place.m_iParent < 0 ? m_scene.getLocal(index) * m_model.m_root : m_scene.getLocal(index);
        node.m_strNotes = collectNotes(*m_scene.getObjects().find(place.m_iId));
        for (const FbxObject* geometry : m_scene.getGeometries(index))
        {
            if (!geometry->m_pElement->find("Vertices"))
            {
                m_warnings.addLeftOut("node \"" + place.m_strName + "\"", "its " + std::string(geometry->m_type));
                continue;
            }
            for (Mesh& mesh : readFbxMeshes(m_scene, index, *geometry, m_surfaces.getSurfaces(index), m_warnings))
            {
                node.m_vecMeshes.push_back(static_cast<int>(m_model.m_vecMeshes.size()));
                m_model.m_vecMeshes.push_back(std::move(mesh));
            }
        }
        if (const FbxElement* camera = m_scene.findAttribute(index, "Camera"))
        {
            addCamera(index, *camera);
        }
        if (const FbxElement* light = m_scene.findAttribute(index, "Light"))
        {
            addLight(index, *light);
        }
        m_model.m_vecNodes.push_back(std::move(node));
    }

    void addCamera(std::size_t node, const FbxElement& element)
    {
        const FbxProperties properties(&element);
        if (properties.getInteger("CameraProjectionType", 0) != 0)
        {
            m_warnings.addLeftOut("camera \"" + m_scene.getPlaces()[node].m_strName + "\"",
                                  "what sees without perspective");
            return;
        }
        constexpr double usualAngle = 40.0;
        Camera camera;
        camera.m_iNode = static_cast<int>(node);
        camera.m_vForward = {1.0, 0.0, 0.0};  // FBX's cameras look along x
        camera.m_fHorizontalAngle = static_cast<float>(properties.getNumber("FieldOfView", usualAngle));
        camera.m_fNear = static_cast<float>(properties.getNumber("NearPlane", 0.0));
        camera.m_fFar = static_cast<float>(properties.getNumber("FarPlane", 0.0));
        m_model.m_vecCameras.push_back(camera);
    }

    void addLight(std::size_t node, const FbxElement& element)
    {
        const FbxProperties properties(&element);
        enum class Type
        {
            Point,
            Directional,
            Spot
        };
        enum class Decay
        {
            None,
            Linear,
            Quadratic
        };
        Light light;
        light.m_iNode = static_cast<int>(node);
        light.m_vForward = {0.0, -1.0, 0.0};  // FBX's lights shine along -y
        const auto type = static_cast<Type>(properties.getInteger("LightType", 0));
        light.m_eKind = type == Type::Directional ? Light::Kind::Directional
                        : type == Type::Spot      ? Light::Kind::Spot
                                                  : Light::Kind::Point;
        const Vector3d color =
            properties.getVector("Color", {1.0, 1.0, 1.0}) * (properties.getNumber("Intensity", 100.0) / 100.0);
        constexpr double least = 1e-6;
        const double strongest = std::max({color.x, color.y, color.z, least});
        light.m_fBrightness = static_cast<float>(std::max(strongest, 1.0));
        const double scale = 255.0 / std::max(strongest, 1.0);
        light.m_color = G_FColor(static_cast<float>(color.x * scale), static_cast<float>(color.y * scale),
                                 static_cast<float>(color.z * scale));
        // The distance at which it has fallen to a hundredth; half of it is left where the decay starts.
        constexpr double far = 1e6;
        const double start = properties.getNumber("DecayStart", 0.0);
        const auto decay = static_cast<Decay>(properties.getInteger("DecayType", 0));
        const double range = decay == Decay::None     ? far
                             : decay == Decay::Linear ? 50.0 * start
                                                      : std::sqrt(50.0) * start;
        light.m_fRange = static_cast<float>(range > 0.0 ? std::min(range, far) : far);
        light.m_fInnerAngle = static_cast<float>(properties.getNumber("InnerAngle", 0.0));
        light.m_fOuterAngle =
            static_cast<float>(properties.getNumber("OuterAngle", properties.getNumber("Cone angle", 45.0)));
        m_model.m_vecLights.push_back(light);
    }

    FbxScene m_scene;
    PictureCollector m_pictures;
    Warnings m_warnings;
    FbxSurfaces m_surfaces;
    Model m_model;
};
}  // namespace

bool isFbx(const std::string& fileName)
{
    return hasEnding(fileName, ".fbx");
}

Model importFbx(const std::string& fileName, const ImportOptions& options)
{
    return Builder(fileName, options).build();
}
}  // namespace TW2::convert
