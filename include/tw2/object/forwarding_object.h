#pragma once

#include <tw2/export.h>
#include <tw2/object/virtual_object.h>

namespace TW2
{
/// What the animated objects that consist of object animations have in common: every operation of the interface is
/// passed on, with its arguments as they are, to parts that the kind of object chooses. Hosts use the class of a kind.
///
/// Where several parts are moved, the result is true when it is true for any. Without parts, because the object is not
/// constructed, it answers as a TW_ObjectAnimation that is not constructed does.
///
/// A host's callback that destructs or rebuilds the object while its parts are being loaded ends that load with
/// TW_Exception_InvalidGeometry; the parts stay until then. A copy of what is still being built is not constructed.
class TW2_API TW_ForwardingObject : public TW_VirtualObject
{
public:
    /// Deletes the parts, unless other objects share them. The engine object keeps its name, place and flags.
    void destruct() noexcept;
    /// False before the first `construct`, after `destruct` and after a construction that threw.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }

    [[nodiscard]] TW_ObjectAnimation* getPlayedObject(unsigned int i) const override;

    /// @name Animations
    /// @{
    [[nodiscard]] unsigned int getTotalMeshes() const override;
    [[nodiscard]] P_VirtualObject* getMesh(unsigned int mesh) const override;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override;
    [[nodiscard]] bool isValidAnimation(int index) const override;
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    void setAnimationFPS(int index, float fps) override;
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    /// @}

    /// @name Playing and blending
    /// @{
    bool animateObject(int index, float time, TW_BoneGroupHandle* group = nullptr) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group = nullptr) override;
    /// Shows and hides the meshes of a character's skin, of its level 0, or of every level of an object, as the
    /// animation's visibility tracks say; the skin's first mesh until the scene's next frame, which shows it. False
    /// when there is no such animation or it was loaded without them.
    bool updateVisibility(int index, float time);
    /// The same at a frame.
    bool updateVisibilityFrame(int index, float frame);
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group = nullptr) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
    using TW_VirtualObject::getBoneHandle;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1, float weight1,
                            int index2, float time2, float weight2, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            const TW_BoneHandle& reference, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int index1, float time1, float weight1, int index2, float time2, float weight2, int index3,
                            float time3, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                            TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObject(int, float, int, float, TW_BoneGroupHandle* = nullptr) = delete;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1, float frame1,
                                 float weight1, int index2, float frame2, float weight2,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2, float weight2,
                                 int index3, float frame3, TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                 TW_BoneGroupHandle* group = nullptr) override;
    bool crossAnimateObjectFrame(int, float, int, float, TW_BoneGroupHandle* = nullptr) = delete;
    /// @}

    /// @name Textures
    /// @{
    void uploadTextures() override;
    [[nodiscard]] bool isValidTextureAnimationSet(const S_String& set) const override;
    [[nodiscard]] bool isValidTextureAnimation(const S_String& set, int index) const override;
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const override;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const override;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int index) const override;
    void setTextureAnimationFPS(const S_String& set, int index, float fps) override;
    bool animateTexture(const S_String& set, float time) override;
    bool animateTextureFrame(const S_String& set, float frame) override;
    using TW_VirtualObject::animateTexture;
    using TW_VirtualObject::animateTextureFrame;
    using TW_VirtualObject::getTextureAnimationFPS;
    using TW_VirtualObject::getTextureAnimationFrames;
    using TW_VirtualObject::getTextureAnimationLength;
    using TW_VirtualObject::getTotalTextureAnimations;
    using TW_VirtualObject::isValidTextureAnimation;
    using TW_VirtualObject::isValidTextureAnimationSet;
    using TW_VirtualObject::setTextureAnimationFPS;
    [[nodiscard]] const char* getTextureAnimationSetName(int set) const override;
    bool animateTextureSet(std::string_view set, float time) override;
    bool animateTextureSetFrame(std::string_view set, float frame) override;
    /// @}

    /// @name Bounding volumes
    /// The manual one of the first part that uses one, else the engine's own for this object.
    /// @{
    [[nodiscard]] float getBoundingRadius() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMin() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMax() override;
    /// @}

protected:
    /// Operations that go to the same parts.
    enum class Operations
    {
        Move,         ///< playing, blending and frame rates: every part
        Show,         ///< showing and hiding meshes: every part
        Freeze,       ///< freezing and restoring states: the first part
        Ask,          ///< meshes, bone handles and animations: the first part
        AskForIndex,  ///< which indices there are and where they loop to: the first part
        Texture,      ///< what changes textures: every part
        AskTexture,   ///< texture animations: the first part
        Bounds        ///< bounding volumes: the first part that uses a manual one
    };

    /// The part, in the order in which they take their turns, that uses a manual volume of the kind asked for; null
    /// when none does.
    [[nodiscard]] TW_ObjectAnimation* findManualVolume(bool (TW_ObjectAnimation::*isUsed)() const noexcept) const;

    /// Stands around whatever loads into the parts. A host's callback may destruct the object meanwhile: the parts then
    /// stay until the last scope ends.
    class LoadScope
    {
    public:
        /// `object` must outlive the scope.
        explicit LoadScope(TW_ForwardingObject& object) noexcept : m_object(object) { ++object.m_iLoads; }
        /// Lets the parts of a destructed object go, when no other scope stands around it.
        ~LoadScope();
        LoadScope(const LoadScope&) = delete;
        LoadScope& operator=(const LoadScope&) = delete;

        /// Throws TW_Exception_InvalidGeometry when the object was destructed.
        void requireObject() const;

    private:
        TW_ForwardingObject& m_object;
    };
    /// Whether a scope stands around the object.
    [[nodiscard]] bool isLoading() const noexcept { return m_iLoads != 0; }

    /// Builds from scratch by `steps`; whatever throws leaves the object not constructed.
    template <typename Steps>
    void build(const Steps& steps);
    /// Whether this object is to become a copy of `source`. It is not when it is the source; when the source is not
    /// constructed, or still being built, it is destructed, too.
    [[nodiscard]] bool isToCopy(const TW_ForwardingObject& source) noexcept;

private:
    /// Takes back the bounding volumes that an earlier construction has fixed, and no longer tests the sphere.
    void forgetBoundingVolumes();
    /// Called when the steps of a construction have made all parts.
    virtual void complete() {}
    /// Lets go of all parts of a constructed object, however far its construction has come.
    virtual void takeApart() noexcept = 0;
    /// The i-th part that `operations` go to; null behind the last.
    [[nodiscard]] virtual TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const = 0;

    template <typename... Arguments, typename Object = TW_VirtualObject>
    bool onEvery(Operations operations, bool (Object::*operation)(Arguments...), Arguments... arguments);
    template <typename Result, typename... Arguments, typename... Given>
    Result ask(Operations operations, Result (TW_VirtualObject::*operation)(Arguments...) const,
               const Given&... arguments) const;

    bool m_bConstructed = false;
    bool m_bGivenUp = false;  ///< destructed while it is loaded
    int m_iLoads = 0;         ///< scopes that there are
};
}  // namespace TW2
