#pragma once

#include <platform/export.h>
#include <platform/image/fcolor.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

class P_Camera;

/// What the objects of one picture have in common: the current camera, and the debug lines drawn over it.
///
/// Objects only refer to their context; it outlives them. A process-wide default one always exists.
class TW2_PLATFORM_API P_Context : public S_Allocated
{
public:
    /// A line in world space.
    struct DebugLine
    {
        M_Vector3Template<float> m_vFrom;
        M_Vector3Template<float> m_vTo;
        G_FColor m_color;
    };

    P_Context() noexcept;
    ~P_Context();
    P_Context(const P_Context&) = delete;
    P_Context& operator=(const P_Context&) = delete;

    /// @name Current camera (not owned)
    /// @{

    /// Null for none; a camera that is destroyed is current no more.
    void setCurrentCamera(P_Camera* camera) noexcept { m_pCamera = camera; }
    [[nodiscard]] P_Camera* getCurrentCamera() const noexcept { return m_pCamera; }
    /// @}

    /// @name The context that new objects refer to
    /// @{

    /// Null: the built-in one again. A context that is destroyed is the default no more.
    static void setDefault(P_Context* context) noexcept;
    [[nodiscard]] static P_Context* getDefault() noexcept;
    /// @}

    /// @name Debug lines, emptied by the scene at the start of each frame
    /// @{
    void addDebugLine(const M_Vector3Template<float>& from, const M_Vector3Template<float>& to, const G_FColor& color);
    void clearDebugLines() noexcept { m_vecDebugLines.clear(); }
    [[nodiscard]] const S_Vector<DebugLine>& getDebugLines() const noexcept { return m_vecDebugLines; }
    /// @}

private:
    friend class P_Camera;
    static void forgetCamera(const P_Camera* camera) noexcept;

    P_Camera* m_pCamera = nullptr;
    P_Context* m_pNext = nullptr;
    P_Context* m_pPrevious = nullptr;
    S_Vector<DebugLine> m_vecDebugLines;
};
