#include "convert/fbx_objects.h"

#include "convert/convert_exception.h"

namespace TW2::convert
{
namespace
{
/// Binary files write "name, 0, 1, class", text files "class::name".
std::string_view cleanName(std::string_view text)
{
    if (const std::size_t mark = text.find(std::string_view("\0\1", 2)); mark != std::string_view::npos)
    {
        return text.substr(0, mark);
    }
    const std::size_t mark = text.find("::");
    return mark == std::string_view::npos ? text : text.substr(mark + 2);
}

/// Text files cannot have quotation marks in their texts and write them so.
std::string replaceMarks(std::string text)
{
    constexpr std::string_view written = "&quot;";
    for (std::size_t at = 0; (at = text.find(written, at)) != std::string::npos; ++at)
    {
        text.replace(at, written.size(), 1, '"');
    }
    return text;
}

const std::vector<FbxObjects::Link> s_nothing;
}  // namespace

FbxObjects::FbxObjects(const FbxDocument& document) : m_document(document)
{
    const FbxElement& root = document.getRoot();
    const FbxElement* objects = root.find("Objects");
    const FbxElement* head = root.find("FBXHeaderExtension");
    const FbxElement* version = head ? head->find("FBXVersion") : nullptr;
    constexpr std::int64_t oldest = 6000;
    constexpr std::int64_t numbered = 7000;
    const std::int64_t number = version ? version->getInteger(0) : numbered;
    if (number < oldest)
    {
        throw ConvertException(
            document.getFilename().c_str(),
            ("is FBX of version " + std::to_string(number / 1000) + "." + std::to_string(number / 100 % 10) +
             ": version 6 and newer are read; write it anew with the program that it comes from, or "
             "with a converter of FBX files")
                .c_str());
    }
    if (!objects)
    {
        throw ConvertException(document.getFilename().c_str(), "is no FBX file: it has no objects");
    }
    m_bOld = number < numbered;
    m_pSettings = root.find("GlobalSettings");
    if (!m_pSettings)
    {
        m_pSettings = objects->find("GlobalSettings");
    }
    addObjects(*objects);
    if (const FbxElement* connections = root.find("Connections"))
    {
        addLinks(*connections);
    }
}

void FbxObjects::addObjects(const FbxElement& objects)
{
    const std::size_t nameAt = m_bOld ? 0 : 1;
    m_vecObjects.reserve(objects.m_vecChildren.size());
    for (const FbxElement& element : objects.m_vecChildren)
    {
        const std::string_view fullName = element.getText(nameAt);
        FbxObject object;
        object.m_iId = m_bOld ? static_cast<std::int64_t>(m_vecObjects.size()) + 1 : element.getInteger(0);
        object.m_kind = element.m_name;
        object.m_name = cleanName(fullName);
        if (!m_document.isBinary())
        {
            object.m_name = replaceMarks(std::move(object.m_name));
        }
        object.m_type = element.getText(nameAt + 1);
        object.m_pElement = &element;
        if (m_bOld)
        {
            m_mapNames.try_emplace(fullName, object.m_iId);
        }
        m_mapIds.try_emplace(object.m_iId, m_vecObjects.size());
        m_vecObjects.push_back(std::move(object));
    }
}

std::int64_t FbxObjects::getId(const FbxElement& element, std::size_t index) const
{
    if (!m_bOld)
    {
        return element.getInteger(index);
    }
    const auto found = m_mapNames.find(element.getText(index));
    return found == m_mapNames.end() ? 0 : found->second;  // "Model::Scene" is around everything
}

void FbxObjects::addLinks(const FbxElement& connections)
{
    for (const FbxElement& connection : connections.m_vecChildren)
    {
        const std::int64_t from = getId(connection, 1);
        const std::int64_t to = getId(connection, 2);
        const FbxObject* child = find(from);
        const FbxObject* parent = find(to);
        if (!child || (!parent && to != 0))
        {
            continue;
        }
        m_mapChildren[to].push_back({child, connection.getText(3)});
        if (parent)
        {
            m_mapParents[from].push_back({parent, connection.getText(3)});
        }
    }
}

const FbxObject* FbxObjects::find(std::int64_t id) const noexcept
{
    const auto found = m_mapIds.find(id);
    return found == m_mapIds.end() ? nullptr : &m_vecObjects[found->second];
}

const FbxObject* FbxObjects::find(std::string_view fullName) const noexcept
{
    const auto found = m_mapNames.find(fullName);
    return found == m_mapNames.end() ? nullptr : find(found->second);
}

const std::vector<FbxObjects::Link>& FbxObjects::getChildren(std::int64_t id) const noexcept
{
    const auto found = m_mapChildren.find(id);
    return found == m_mapChildren.end() ? s_nothing : found->second;
}

const std::vector<FbxObjects::Link>& FbxObjects::getParents(std::int64_t id) const noexcept
{
    const auto found = m_mapParents.find(id);
    return found == m_mapParents.end() ? s_nothing : found->second;
}

std::vector<const FbxObject*> FbxObjects::getChildren(std::int64_t id, std::string_view kind) const
{
    std::vector<const FbxObject*> children;
    for (const Link& link : getChildren(id))
    {
        if (link.m_pObject->m_kind == kind)
        {
            children.push_back(link.m_pObject);
        }
    }
    return children;
}

const FbxElement* FbxObjects::getTemplate(std::string_view kind) const noexcept
{
    const FbxElement* definitions = m_document.getRoot().find("Definitions");
    if (!definitions)
    {
        return nullptr;
    }
    for (const FbxElement& type : definitions->m_vecChildren)
    {
        if (type.m_name == "ObjectType" && type.getText(0) == kind)
        {
            return type.find("PropertyTemplate");
        }
    }
    return nullptr;
}
}  // namespace TW2::convert
