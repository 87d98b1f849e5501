#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

#include <cstddef>
#include <cstdint>
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
        /// As the standard library asks of iterators.
        using iterator_category = std::forward_iterator_tag;
        /// As the standard library asks of iterators.
        using value_type = P_BaseObject*;
        /// As the standard library asks of iterators.
        using difference_type = std::ptrdiff_t;
        /// As the standard library asks of iterators.
        using pointer = P_BaseObject* const*;
        /// As the standard library asks of iterators.
        using reference = P_BaseObject*;

        /// Stands on a child; null: behind the last one.
        explicit ChildIterator(P_BaseObject* child = nullptr) noexcept : m_pChild(child) {}
        /// The child; only before the end.
        P_BaseObject* operator*() const noexcept { return m_pChild; }
        /// Goes on to the next child.
        TW2_PLATFORM_API ChildIterator& operator++() noexcept;
        /// Goes on to the next child.
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
        /// The children from `first` on.
        explicit Children(P_BaseObject* first) noexcept : m_pFirst(first) {}
        /// The first child.
        [[nodiscard]] ChildIterator begin() const noexcept { return ChildIterator(m_pFirst); }
        /// Behind the last child.
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

    /// Valid as long as the container; children that come or go meanwhile are seen as the iterator says.
    [[nodiscard]] Children getChildren() const noexcept { return Children(m_pFirstChild); }
    /// Null when there is none.
    [[nodiscard]] P_BaseObject* getFirstChild() const noexcept { return m_pFirstChild; }
    /// Goes through the children.
    [[nodiscard]] unsigned int getChildCount() const noexcept;
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

    /// An empty container.
    explicit P_ObjectContainer(Kind kind) noexcept : m_eKind(kind) {}

    /// Lets every child hang under nothing. Destructors of what has children call it.
    void detachChildren() noexcept;

private:
    friend class P_BaseObject;
    friend class P_Scene;
    friend class P_TransformBlock;

    [[nodiscard]] P_BaseObject* getLastChild() const noexcept;

    P_BaseObject* m_pFirstChild = nullptr;
    /// Children at or below which a frame has something to do.
    unsigned int m_uiBusyChildren = 0;

    // Of an object rather than of a container, here where there is room for it: there are many objects.

    std::uint16_t m_uiEngineFlags = 0;
    Kind m_eKind : 3;
    /// While the object is in no block: its world matrix does not follow from the local ones any more.
    mutable bool m_bOutOfDate : 1 = true;
    /// The storage is that of a block, and the object is a member.
    bool m_bMember : 1 = false;
    bool m_bInScene : 1 = false;
    bool m_bEnabled : 1 = true;
    bool m_bInView : 1 = true;
    bool m_bIdle : 1 = false;
    /// A frame calls nothing of the object: it is idle, or only to be found.
    bool m_bPlain : 1 = false;
    /// `linkToScene` was called for the present scene.
    bool m_bLinked : 1 = false;
    bool m_bVisualization : 1 = false;
    bool m_bVertexNormalVisualization : 1 = false;
    /// The volumes were just computed: nobody computes them again.
    bool m_bVolumesHeld : 1 = false;
    /// While a block takes objects in: this one was met.
    bool m_bMet : 1 = false;
};
