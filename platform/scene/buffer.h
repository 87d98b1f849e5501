#pragma once

#include <platform/export.h>

/// A row of vertices or triangles with room for a fixed number, of which some are in use.
///
/// Elements are written between the mesh's `lock` and `unlock`; a write outside of that, or past the used count, throws
/// P_SceneException and changes nothing.
class TW2_PLATFORM_API P_Buffer
{
public:
    virtual ~P_Buffer();

    /// How many elements there is room for.
    [[nodiscard]] unsigned int getCapacity() const noexcept { return m_uiCapacity; }
    /// How many elements are in use; all after the allocation.
    [[nodiscard]] unsigned int getUsedCount() const noexcept { return m_uiUsed; }
    /// Sets the number in use; throws P_SceneException when there is no room for so many.
    void setUsedCount(unsigned int count);
    /// Whether the elements may be written.
    [[nodiscard]] bool isLocked() const noexcept { return m_bLocked; }

protected:
    P_Buffer() noexcept = default;
    P_Buffer(const P_Buffer&) noexcept = default;
    P_Buffer& operator=(const P_Buffer&) noexcept = default;

    /// Room for so many elements, all in use afterwards.
    void setCapacity(unsigned int capacity) noexcept;
    /// Throws P_SceneException unless element `index` may be written.
    void checkWrite(unsigned int index) const
    {
        if (!m_bLocked || index >= m_uiUsed)
        {
            throwBadWrite(index);
        }
    }

private:
    friend class P_TriangleMeshBase;
    [[noreturn]] void throwBadWrite(unsigned int index) const;

    unsigned int m_uiCapacity = 0;
    unsigned int m_uiUsed = 0;
    bool m_bLocked = false;
};
