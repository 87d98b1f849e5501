#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/scene/frame_preparation.h>
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

    /// One frame. From the root down, parents first, passing over idle objects (see P_BaseObject): tests each object's
    /// volumes against the view volume of the context's current camera, sets its in-view flag and calls
    /// `executeAlways`; of a level-of-detail object only the level in use is visited. Then calls `executeVisible` on
    /// every object that is enabled and in view, and collects what there is to draw. Objects may be added, removed and
    /// destroyed by what is called; what is added below an object that was already visited takes part from the next
    /// frame on, and so does an object that was passed over and is idle no more. No object is visited twice in a frame,
    /// and one that was taken out during the frame is not drawn in it. An exception of what is called passes on; the
    /// lists are then empty. Throws P_SceneException when it is called during a frame.
    void executeFrame();
    /// The same, with threads of the host: what objects can do ahead for themselves (P_FramePreparation, the bone
    /// matrices of skinned characters) is shared out by `parallelFor` before the first object is visited. Everything
    /// else happens on this thread as it does without, every call in the same order and with the same result; what is
    /// moved by such a call after it was prepared is computed again. Only the bone matrices of a character that a call
    /// takes out of view or out of the scene, in this very frame and before its turn, are newer than they would be.
    void executeFrame(const P_ParallelFor& parallelFor);

    /// @name What the last frame found
    /// Both lists are emptied when an object leaves the scene between two frames.
    /// @{

    /// Meshes that are enabled and in view, in tree order, without those that are idle.
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

    struct Visited
    {
        enum class Kind : unsigned char
        {
            Called,
            Plain,   ///< nothing of it is called; it was to be drawn when it was found
            Hidden,  ///< the same, but out of view
            Idle,    ///< the same, and there was nothing to draw
            Gone     ///< it has left the scene since, and may not exist any more
        };

        P_BaseObject* m_pObject;
        Kind m_eKind;
    };

    class Frame;

    void visitAll();
    void findBusyObjects() noexcept;
    /// Whether no object that is taken for idle may have got something to show.
    [[nodiscard]] bool knowsIdleObjects() const noexcept;
    void prepare(const P_ParallelFor& parallelFor);
    void findPrepared();
    void pushChildren(P_ObjectContainer& container, bool culled);
    void push(P_BaseObject* object, bool culled);
    void fetchAhead() const noexcept;
    void visit(const Pending& pending);
    void visitPlain(P_BaseObject& top, bool culled);
    void pushRest(const P_BaseObject& top, P_BaseObject& object, bool culled);
    void executeVisited();
    void collectVisible();
    void forget(const P_BaseObject* object) noexcept;

    /// Counts the frames of all scenes, so that no two have the same number.
    static S_Counter<unsigned int> sm_uiFrames;

    P_Context* m_pContext;
    S_Vector<Pending> m_vecPending;
    S_Vector<Visited> m_vecVisited;
    /// Objects with something to prepare, as long as `m_bPreparedFound` says that they have been found.
    S_Vector<P_BaseObject*> m_vecPrepared;
    S_Vector<P_VirtualObject*> m_vecVisibleMeshes;
    S_Vector<P_Light*> m_vecLights;
    unsigned int m_uiFrame = 0;
    /// `P_TriangleMeshBase::getFillCount` when it was last found out which objects are idle.
    unsigned int m_uiFills = 0;
    bool m_bInFrame = false;
    /// Something was enabled, disabled, or put into view or out of it during the frame.
    bool m_bLooksAgain = false;
    bool m_bPreparedFound = false;
};
