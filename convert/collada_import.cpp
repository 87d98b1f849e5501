#include "convert/collada_import.h"

#include "convert/collada_clips.h"
#include "convert/collada_geometry.h"
#include "convert/collada_scene.h"
#include "convert/collada_surface.h"
#include "convert/file_ending.h"
#include "convert/light_range.h"
#include "convert/model_space.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <string_view>

namespace TW2::convert
{
namespace
{
class Builder
{
public:
    Builder(const std::string& fileName, const ImportOptions& options)
        : m_strFileName(fileName),
          m_document(fileName),
          m_scene(m_document),
          m_pictures(fileName, options.m_vecTextureFolders),
          m_surfaces(m_document, m_pictures, m_warnings)
    {
        m_model.m_strName = std::filesystem::path(fileName).stem().string();
        const bool automatic = options.m_eUp == ImportOptions::UpAxis::Automatic;
        const Matrixd root =
            makeRoot(automatic ? ImportOptions::UpAxis::Y : options.m_eUp, options.m_dScale * m_scene.getUnit());
        m_model.m_root = automatic ? m_scene.getRoot() * root : root;
    }

    Model build()
    {
        for (std::size_t i = 0; i < m_scene.getPlaces().size(); ++i)
        {
            addNode(i);
        }
        for (const pugi::xml_node& controller :
             m_document.getRoot().child("library_controllers").children("controller"))
        {
            if (const pugi::xml_node morph = controller.child("morph"))
            {
                m_warnings.addLeftOut("mesh \"" + ColladaDocument::decode(morph.attribute("source").value()) + "\"",
                                      "morph targets");
            }
        }
        m_model.m_vecSurfaces = m_surfaces.take();
        m_model.m_vecPictures = m_pictures.take();
        m_model.m_vecClips = readColladaClips(m_scene, m_strFileName, m_warnings);
        m_model.m_vecWarnings = m_warnings.makeLines();
        return std::move(m_model);
    }

private:
    void addNode(std::size_t index)
    {
        const ColladaPlace& place = m_scene.getPlaces()[index];
        Node node;
        node.m_strName = place.m_strName;
        node.m_iParent = place.m_iParent;
        node.m_local = ColladaScene::makeLocal(place.m_vecTransforms);
        if (place.m_iParent < 0)
        {
            node.m_local = node.m_local * m_model.m_root;
        }
        for (const pugi::xml_node& child : place.m_element.children())
        {
            const std::string_view name = child.name();
            if (name == "instance_geometry" || name == "instance_controller")
            {
                for (Mesh& mesh : readColladaMeshes(m_scene, child, m_surfaces, m_warnings))
                {
                    node.m_vecMeshes.push_back(static_cast<int>(m_model.m_vecMeshes.size()));
                    m_model.m_vecMeshes.push_back(std::move(mesh));
                }
            }
            else if (name == "instance_camera")
            {
                addCamera(static_cast<int>(index), m_document.follow(child, "url"));
            }
            else if (name == "instance_light")
            {
                addLight(static_cast<int>(index), m_document.follow(child, "url"));
            }
        }
        m_model.m_vecNodes.push_back(std::move(node));
    }

    void addCamera(int node, const pugi::xml_node& element)
    {
        const pugi::xml_node lens = element.child("optics").child("technique_common").child("perspective");
        if (!lens)
        {
            m_warnings.addLeftOut("camera \"" + std::string(element.attribute("id").value()) + "\"",
                                  "what is not seen in perspective");
            return;
        }
        constexpr double degrees = 180.0 / std::numbers::pi;
        constexpr double usualAngle = 45.0;
        Camera camera;
        camera.m_iNode = node;
        double angle = lens.child("xfov").text().as_double(0.0);
        if (!(angle > 0.0))
        {
            const double height = std::tan(lens.child("yfov").text().as_double(usualAngle) / degrees / 2.0);
            angle = 2.0 * degrees * std::atan(height * lens.child("aspect_ratio").text().as_double(1.0));
        }
        camera.m_fHorizontalAngle = static_cast<float>(angle);
        camera.m_fNear = lens.child("znear").text().as_float(0.0F);
        camera.m_fFar = lens.child("zfar").text().as_float(0.0F);
        m_model.m_vecCameras.push_back(camera);
    }

    void addLight(int node, const pugi::xml_node& element)
    {
        const pugi::xml_node source = element.child("technique_common").first_child();
        const std::string_view kind = source.name();
        if (kind != "point" && kind != "directional" && kind != "spot")
        {
            return;  // light from everywhere, which the scene has of its own
        }
        Light light;
        light.m_iNode = node;
        light.m_eKind = kind == "directional" ? Light::Kind::Directional
                        : kind == "spot"      ? Light::Kind::Spot
                                              : Light::Kind::Point;
        std::vector<double> color = m_document.readNumbers(source.child("color"));
        color.resize(3, 1.0);
        const double strongest = std::max({color[0], color[1], color[2], 1.0});
        light.m_fBrightness = static_cast<float>(strongest);
        light.m_color =
            G_FColor(static_cast<float>(color[0]), static_cast<float>(color[1]), static_cast<float>(color[2])) *
            static_cast<float>(255.0 / strongest);
        light.m_fRange = findRange(source.child("linear_attenuation").text().as_float(0.0F),
                                   source.child("quadratic_attenuation").text().as_float(0.0F));
        constexpr float usualAngle = 180.0F;
        light.m_fOuterAngle = source.child("falloff_angle").text().as_float(usualAngle);
        light.m_fInnerAngle =
            source.child("falloff_exponent").text().as_float(0.0F) > 0.0F ? 0.0F : light.m_fOuterAngle;
        m_model.m_vecLights.push_back(light);
    }

    const std::string& m_strFileName;
    ColladaDocument m_document;
    ColladaScene m_scene;
    PictureCollector m_pictures;
    Warnings m_warnings;
    ColladaSurfaces m_surfaces;
    Model m_model;
};
}  // namespace

bool isCollada(const std::string& fileName)
{
    return hasEnding(fileName, ".dae");
}

Model importCollada(const std::string& fileName, const ImportOptions& options)
{
    return Builder(fileName, options).build();
}
}  // namespace TW2::convert
