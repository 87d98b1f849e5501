#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/object_container.h>

class P_BaseObject;
class P_Light;
class P_LODObject;
class P_VirtualObject;

/// The root of the tree that is drawn.
class TW2_PLATFORM_API P_Scene : public P_ObjectContainer
{
public:
    /// Objects in the scene use `context` (not owned; null: the process's default one).
    explicit P_Scene(P_Context* context = nullptr);
    ~P_Scene() override;

    [[nodiscard]] P_Context* getContext() const override;

    /// One frame. From the root down, parents first: tests each object's volumes against the view volume of the
    /// context's current camera, sets its in-view flag and calls `executeAlways`; of a level-of-detail object only the
    /// level in use is visited. Then calls `executeVisible` on every object that is enabled and in view, and collects
    /// what there is to draw. Objects may be added, removed and destroyed by what is called; what is added below an
    /// object that was already visited takes part from the next frame on. No object is visited twice in a frame, and
    /// one that was taken out during the frame is not drawn in it. An exception of what is called passes on; the lists
    /// are then empty. Throws P_SceneException when it is called during a frame.
    void executeFrame();

    /// @name What the last frame found
    /// Both lists are emptied when an object leaves the scene between two frames.
    /// @{

    /// Meshes that are enabled and in view, in tree order.
    [[nodiscard]] const S_Vector<P_VirtualObject*>& getVisibleMeshes() const noexcept { return m_vecVisibleMeshes; }
    /// Lights that are enabled.
    [[nodiscard]] const S_Vector<P_Light*>& getLights() const noexcept { return m_vecLights; }
    /// @}

private:
    friend class P_BaseObject;
    struct Pending
    {
        P_BaseObject* m_pObject;
        bool m_bCulled;
    };

    class Frame;

    void pushChildren(P_ObjectContainer& container, bool culled);
    void push(P_BaseObject* object, bool culled);
    void visit(const Pending& pending);
    void executeVisited();
    void collectVisible();
    void forget(const P_BaseObject* object) noexcept;

    /// Counts the frames of all scenes, so that no two have the same number.
    static unsigned long long sm_uiFrames;

    P_Context* m_pContext;
    S_Vector<Pending> m_vecPending;
    S_Vector<P_BaseObject*> m_vecVisited;
    S_Vector<P_VirtualObject*> m_vecVisibleMeshes;
    S_Vector<P_Light*> m_vecLights;
    P_BaseObject* m_pVisiting = nullptr;
    unsigned long long m_uiFrame = 0;
    bool m_bInFrame = false;
};
