#pragma once

#include "convert/fbx_document.h"
#include "convert/fbx_motion.h"
#include "convert/fbx_objects.h"
#include "convert/model.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace TW2::convert
{
/// The nodes of an FBX file and what binds meshes to them.
///
/// Matrices are in the file's space, mirrored at z: that makes FBX's right-handed space left-handed.
class FbxScene
{
public:
    /// Throws ConvertException for a file that is no FBX of version 6 or newer, or damaged.
    explicit FbxScene(const std::string& fileName);

    [[nodiscard]] const FbxDocument& getDocument() const noexcept { return m_document; }
    [[nodiscard]] const FbxObjects& getObjects() const noexcept { return m_objects; }
    /// What turns the file's space so that y points up.
    [[nodiscard]] Matrixd getRoot() const;
    /// The nodes without any motion.
    [[nodiscard]] const FbxPose& getPose() const noexcept { return m_pose; }
    [[nodiscard]] const std::vector<FbxPlace>& getPlaces() const noexcept { return m_pose.m_vecPlaces; }
    /// The local matrix of a node without any motion.
    [[nodiscard]] Matrixd getLocal(std::size_t place) const { return m_pose.getLocal(place, 0.0); }
    /// The node that an object is; -1 for none.
    [[nodiscard]] int findPlace(std::int64_t object) const noexcept;
    /// The geometries that a node shows. In files of version 6 a node is its geometry itself.
    [[nodiscard]] std::vector<const FbxObject*> getGeometries(std::size_t place) const;
    /// The object that says more about a node (a light, a camera); in files of version 6 the node itself. Null when
    /// there is none.
    [[nodiscard]] const FbxElement* findAttribute(std::size_t place, std::string_view type) const;

private:
    void addPlaces(std::int64_t id, int parent, unsigned int depth);

    FbxDocument m_document;
    FbxObjects m_objects;
    FbxPose m_pose;
    std::unordered_map<std::int64_t, std::size_t> m_mapPlaces;
};
}  // namespace TW2::convert
