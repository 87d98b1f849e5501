#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>
#include <iterator>

class P_TransformBlock;

namespace TW2
{
/// The meshes of an object by mesh index: first those of a row, which lie side by side in one piece of memory and need
/// no pointers, then others. A copy's meshes are a row, those that were loaded or added by a host are others.
class TW2_API TW_MeshList
{
public:
    /// Walks the meshes in the order of their indices; reads them and does not change the list.
    class Iterator
    {
    public:
        /// @name What algorithms ask
        /// @{
        using iterator_category = std::forward_iterator_tag;  ///< one mesh after the other
        using value_type = P_VirtualObject*;                  ///< a mesh
        using difference_type = std::ptrdiff_t;               ///< of two indices
        using pointer = P_VirtualObject* const*;              ///< to a mesh
        using reference = P_VirtualObject*;                   ///< a mesh, not a place in the list
        /// @}

        /// Of no list.
        Iterator() noexcept = default;
        /// Stands on an index of a list, which must outlive the iterator.
        Iterator(const TW_MeshList& list, std::size_t index) noexcept : m_pList(&list), m_uiIndex(index) {}
        /// The mesh.
        P_VirtualObject* operator*() const noexcept { return (*m_pList)[m_uiIndex]; }
        /// Goes on to the next mesh.
        Iterator& operator++() noexcept
        {
            ++m_uiIndex;
            return *this;
        }
        /// The same; the iterator as it was before.
        Iterator operator++(int) noexcept
        {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator&, const Iterator&) noexcept = default;

    private:
        const TW_MeshList* m_pList = nullptr;
        std::size_t m_uiIndex = 0;
    };

    /// No meshes.
    TW_MeshList() noexcept = default;
    TW_MeshList(const TW_MeshList&) = delete;
    TW_MeshList& operator=(const TW_MeshList&) = delete;
    /// Destroys the meshes.
    ~TW_MeshList() { destroy(); }

    /// @name Reading
    /// @{

    /// Number of meshes.
    [[nodiscard]] std::size_t size() const noexcept { return m_uiRowCount + m_vecOthers.size(); }
    /// Whether there are none.
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    /// The mesh of an index below `size()`.
    [[nodiscard]] P_VirtualObject* operator[](std::size_t index) const noexcept
    {
        return index < m_uiRowCount ? m_pRow + index : m_vecOthers[index - m_uiRowCount];
    }
    /// Stands on the first mesh.
    [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
    /// Behind the last one.
    [[nodiscard]] Iterator end() const noexcept { return {*this, size()}; }
    /// @}

    /// @name Changing
    /// @{

    /// Makes room for a row in an empty list, and in `block`, which has no place yet.
    void reserveRow(std::size_t count, P_TransformBlock& block);
    /// The next mesh of the row: a copy of `source` in `block`. Nothing else may have been added before.
    P_VirtualObject& addToRow(const P_VirtualObject& source, P_TransformBlock& block)
    {
        auto* const mesh = ::new (m_pRow + m_uiRowCount) P_VirtualObject(source, block);
        ++m_uiRowCount;
        return *mesh;
    }
    /// The next mesh, which the list deletes from now on. When memory runs out nothing has changed.
    void push_back(P_VirtualObject* mesh) { m_vecOthers.push_back(mesh); }
    /// Lets go of the one that was added last by `push_back`.
    void pop_back() noexcept { m_vecOthers.pop_back(); }
    /// Takes the meshes out of the scene and destroys them, the last one first.
    void destroy() noexcept;
    /// @}

private:
    P_VirtualObject* m_pRow = nullptr;
    std::size_t m_uiRowCount = 0;
    S_Vector<P_VirtualObject*> m_vecOthers;
};
}  // namespace TW2
