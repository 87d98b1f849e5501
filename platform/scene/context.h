#pragma once

#include <platform/export.h>
#include <platform/image/fcolor.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <atomic>

class P_Camera;

/// What the objects of one picture have in common: the current camera, and the debug lines drawn over it.
///
/// Objects only refer to their context; it outlives them. A process-wide default one always exists. Contexts may come,
/// go and change their cameras on one thread while others ask.
class TW2_PLATFORM_API P_Context : public S_Allocated
{
public:
    /// A line in world space.
    struct DebugLine
    {
        M_Vector3Template<float> m_vFrom;  ///< in world space
        M_Vector3Template<float> m_vTo;    ///< in world space
        G_FColor m_color;                  ///< components 0 to 255
    };

    P_Context() noexcept;
    ~P_Context();
    P_Context(const P_Context&) = delete;
    P_Context& operator=(const P_Context&) = delete;

    /// @name Current camera (not owned)
    /// @{

    /// Null for none; a camera that is destroyed is current no more.
    void setCurrentCamera(P_Camera* camera) noexcept { m_pCamera.store(camera, std::memory_order_release); }
    [[nodiscard]] P_Camera* getCurrentCamera() const noexcept { return m_pCamera.load(std::memory_order_acquire); }
    /// @}

    /// @name The context that new objects refer to
    /// @{

    /// Null: the built-in one again. A context that is destroyed is the default no more.
    static void setDefault(P_Context* context) noexcept;
    [[nodiscard]] static P_Context* getDefault() noexcept;
    /// @}

    /// @name Debug lines, emptied by the scene at the start of each frame
    /// @{

    /// For this frame; a renderer draws what it finds.
    void addDebugLine(const M_Vector3Template<float>& from, const M_Vector3Template<float>& to, const G_FColor& color);
    /// Forgets all lines and keeps their memory.
    void clearDebugLines() noexcept { m_vecDebugLines.clear(); }
    /// In the order of adding; valid until a line is added or all are forgotten.
    [[nodiscard]] const S_Vector<DebugLine>& getDebugLines() const noexcept { return m_vecDebugLines; }
    /// @}

private:
    friend class P_Camera;
    static void forgetCamera(P_Camera* camera) noexcept;

    std::atomic<P_Camera*> m_pCamera = nullptr;
    P_Context* m_pNext = nullptr;
    P_Context* m_pPrevious = nullptr;
    S_Vector<DebugLine> m_vecDebugLines;
};
