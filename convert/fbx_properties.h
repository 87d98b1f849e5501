#pragma once

#include "convert/fbx_document.h"
#include "convert/model.h"

#include <algorithm>
#include <string_view>

namespace TW2::convert
{
/// The named properties of an FBX object. What the object does not say is its kind's template's, where there is one.
class FbxProperties
{
public:
    /// Both may be null.
    explicit FbxProperties(const FbxElement* object, const FbxElement* otherwise = nullptr)
        : m_list(object), m_template(otherwise)
    {
    }

    [[nodiscard]] bool has(std::string_view name) const { return find(name).m_pElement != nullptr; }
    [[nodiscard]] double getNumber(std::string_view name, double otherwise) const
    {
        return find(name).getNumber(0, otherwise);
    }
    [[nodiscard]] int getInteger(std::string_view name, int otherwise) const
    {
        const double number = getNumber(name, otherwise);
        constexpr double most = 1e9;
        return number > -most && number < most ? static_cast<int>(number) : otherwise;
    }
    [[nodiscard]] std::string_view getText(std::string_view name) const
    {
        const Value value = find(name);
        return value.m_pElement ? value.m_pElement->getText(value.m_uiFirst) : std::string_view();
    }
    [[nodiscard]] Vector3d getVector(std::string_view name, const Vector3d& otherwise) const
    {
        const Value value = find(name);
        return {value.getNumber(0, otherwise.x), value.getNumber(1, otherwise.y), value.getNumber(2, otherwise.z)};
    }
    /// Visits the properties of the object itself: `visit(name, flags, text)`; flags with "U" are the user's own.
    template <typename Visit>
    void forEachText(Visit visit) const
    {
        for (const FbxElement& property : m_list.m_pElement ? m_list.m_pElement->m_vecChildren : s_none)
        {
            visit(property.getText(0), property.getText(m_list.m_uiFirst - 1), property.getText(m_list.m_uiFirst));
        }
    }

private:
    /// Name, type, a label (since version 7), flags, values.
    struct List
    {
        explicit List(const FbxElement* object)
        {
            m_pElement = object ? object->find("Properties70") : nullptr;
            if (object && !m_pElement)
            {
                m_pElement = object->find("Properties60");
                m_uiFirst = 3;
            }
        }
        const FbxElement* m_pElement = nullptr;
        std::size_t m_uiFirst = 4;
    };
    struct Value
    {
        const FbxElement* m_pElement = nullptr;
        std::size_t m_uiFirst = 0;

        [[nodiscard]] double getNumber(std::size_t index, double otherwise) const
        {
            return m_pElement ? m_pElement->getNumber(m_uiFirst + index, otherwise) : otherwise;
        }
    };

    [[nodiscard]] Value find(std::string_view name) const
    {
        for (const List& list : {m_list, m_template})
        {
            // Of two with one name the later one holds.
            const std::vector<FbxElement>& all = list.m_pElement ? list.m_pElement->m_vecChildren : s_none;
            const auto found = std::find_if(all.rbegin(), all.rend(),
                                            [name](const FbxElement& property) { return property.getText(0) == name; });
            if (found != all.rend())
            {
                return {&*found, list.m_uiFirst};
            }
        }
        return {};
    }

    inline static const std::vector<FbxElement> s_none;
    List m_list;
    List m_template;
};
}  // namespace TW2::convert
