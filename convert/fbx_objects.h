#pragma once

#include "convert/fbx_document.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace TW2::convert
{
/// A node, mesh, skin, material, curve or whatever else an FBX file holds.
struct FbxObject
{
    std::int64_t m_iId = 0;
    std::string_view m_kind;  ///< "Model", "Geometry", ...
    std::string m_name;       ///< as people gave it, without the class that the file adds
    std::string_view m_type;  ///< "LimbNode", "Mesh", "Skin", ...
    const FbxElement* m_pElement = nullptr;
};

/// The objects of an FBX file and what hangs on what. Files of version 6 call their objects by name, newer ones by
/// number; here all have numbers, and what has none around it hangs on 0.
class FbxObjects
{
public:
    struct Link
    {
        const FbxObject* m_pObject;
        std::string_view m_property;  ///< of the one that is hung upon; empty: on the whole
    };

    /// The document has to stay. Throws ConvertException for a file without objects and one of another version.
    explicit FbxObjects(const FbxDocument& document);
    FbxObjects(const FbxObjects&) = delete;
    FbxObjects& operator=(const FbxObjects&) = delete;

    [[nodiscard]] bool isOld() const noexcept { return m_bOld; }
    [[nodiscard]] const std::vector<FbxObject>& getAll() const noexcept { return m_vecObjects; }
    /// Null when there is none.
    [[nodiscard]] const FbxObject* find(std::int64_t id) const noexcept;
    /// The object that a file of version 6 calls by that name; null when there is none.
    [[nodiscard]] const FbxObject* find(std::string_view fullName) const noexcept;
    /// What hangs on an object, in the file's order.
    [[nodiscard]] const std::vector<Link>& getChildren(std::int64_t id) const noexcept;
    /// What an object hangs on; without 0.
    [[nodiscard]] const std::vector<Link>& getParents(std::int64_t id) const noexcept;
    /// The objects of one kind that hang on another.
    [[nodiscard]] std::vector<const FbxObject*> getChildren(std::int64_t id, std::string_view kind) const;
    /// What says how the file's space lies, and where it is played; null when the file does not.
    [[nodiscard]] const FbxElement* getSettings() const noexcept { return m_pSettings; }
    /// What objects of a kind have when they do not say anything else; null when the file does not tell.
    [[nodiscard]] const FbxElement* getTemplate(std::string_view kind) const noexcept;

private:
    void addObjects(const FbxElement& objects);
    void addLinks(const FbxElement& connections);
    [[nodiscard]] std::int64_t getId(const FbxElement& element, std::size_t index) const;

    const FbxDocument& m_document;
    bool m_bOld = false;
    const FbxElement* m_pSettings = nullptr;
    std::vector<FbxObject> m_vecObjects;
    std::unordered_map<std::int64_t, std::size_t> m_mapIds;
    std::unordered_map<std::string_view, std::int64_t> m_mapNames;  ///< of an old file
    std::unordered_map<std::int64_t, std::vector<Link>> m_mapChildren;
    std::unordered_map<std::int64_t, std::vector<Link>> m_mapParents;
};
}  // namespace TW2::convert
