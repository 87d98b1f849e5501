#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

#include <cstddef>
#include <iterator>

class P_BaseObject;
class P_Context;
class P_Scene;

/// What scene objects hang under: another object, a level-of-detail object or the scene.
///
/// Children are kept in the order in which they were added, linked through the children themselves, so that adding and
/// removing allocate nothing and take constant time. A container does not own its children; when it is destroyed they
/// hang under nothing.
class TW2_PLATFORM_API P_ObjectContainer : public S_Allocated
{
public:
    /// Walks the children in order. The child that the iterator stands on may not be removed before it is advanced.
    class ChildIterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = P_BaseObject*;
        using difference_type = std::ptrdiff_t;
        using pointer = P_BaseObject* const*;
        using reference = P_BaseObject*;

        explicit ChildIterator(P_BaseObject* child = nullptr) noexcept : m_pChild(child) {}
        P_BaseObject* operator*() const noexcept { return m_pChild; }
        TW2_PLATFORM_API ChildIterator& operator++() noexcept;
        ChildIterator operator++(int) noexcept
        {
            const ChildIterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(ChildIterator, ChildIterator) noexcept = default;

    private:
        P_BaseObject* m_pChild;
    };

    /// The children as a range: `for (P_BaseObject* child : container.getChildren())`.
    class Children
    {
    public:
        explicit Children(P_BaseObject* first) noexcept : m_pFirst(first) {}
        [[nodiscard]] ChildIterator begin() const noexcept { return ChildIterator(m_pFirst); }
        [[nodiscard]] ChildIterator end() const noexcept { return ChildIterator(); }

    private:
        P_BaseObject* m_pFirst;
    };

    virtual ~P_ObjectContainer();

    /// The context that holds the current camera; null when there is none.
    [[nodiscard]] virtual P_Context* getContext() const = 0;

    P_ObjectContainer(const P_ObjectContainer&) = delete;
    P_ObjectContainer& operator=(const P_ObjectContainer&) = delete;

    /// @name Children
    /// @{
    [[nodiscard]] Children getChildren() const noexcept { return Children(m_pFirstChild); }
    [[nodiscard]] P_BaseObject* getFirstChild() const noexcept { return m_pFirstChild; }
    [[nodiscard]] P_BaseObject* getLastChild() const noexcept { return m_pLastChild; }
    [[nodiscard]] unsigned int getChildCount() const noexcept { return m_uiChildCount; }
    /// @}

protected:
    /// What stands behind the container.
    enum class Kind : unsigned char
    {
        Object,
        Mesh,
        Light,
        LevelOfDetail,
        Scene
    };

    explicit P_ObjectContainer(Kind kind) noexcept : m_eKind(kind) {}

    /// Lets every child hang under nothing. Destructors of what has children call it.
    void detachChildren() noexcept;

private:
    friend class P_BaseObject;
    friend class P_Scene;

    P_BaseObject* m_pFirstChild = nullptr;
    P_BaseObject* m_pLastChild = nullptr;
    unsigned int m_uiChildCount = 0;
    Kind m_eKind;
};
