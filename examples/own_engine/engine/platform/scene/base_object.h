#pragma once

#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/scene/object_container.h>
#include <platform/scene/user_data.h>

class P_Camera;
class P_FramePreparation;
class P_TransformBlock;

class P_BaseObject : public P_ObjectContainer, public P_UserData
{
public:
    enum class ObjectType : int
    {
        ObjectLevels = 3,
        SkinnedLevels = 4
    };
    enum EngineFlag : unsigned int
    {
        FLAG_BOUNDING_SPHERE = 0x2,
        FLAG_BOUNDING_BOX = 0x4,
        FLAG_CULL_SUBTREE = 0x8,
        FLAG_AUTOMATIC_BOUNDING_VOLUME = 0x1000,
        FLAG_FIXED_BOUNDING_VOLUME = 0x2000
    };

    ~P_BaseObject() override;
    P_Context* getContext() const override = 0;
    virtual void addTo(P_ObjectContainer* container);
    virtual void remove();
    virtual ObjectType getType() const;
    virtual void enable(bool enabled);
    virtual void setPosition(float x, float y, float z);
    virtual void setPosition(const M_Vector3Template<float>& position);
    virtual M_Vector3Template<float> getPosition() const;
    virtual float* accessPosition();
    virtual float getBoundingRadius();
    virtual M_Vector3Template<float> getBoundingBoxMin();
    virtual M_Vector3Template<float> getBoundingBoxMax();
    virtual bool isInsideViewVolume(P_Camera* camera);
    virtual void calculateBoundingVolumes();
    virtual void setCollisionGroup(int group);
    virtual void setCollisionMask(unsigned int mask);
    virtual const char* getObjectType() const;
    virtual void duplicate(const P_BaseObject& other);

protected:
    P_BaseObject();
    virtual bool executeAlways();
    virtual void executeVisible();
    virtual void linkToScene();
    virtual void visualization();
    virtual void vertexNormalVisualization();
    P_Context* getStoredContext() const noexcept;
    void setFramePreparation(P_FramePreparation* preparation);

public:
    void dump(bool details) const override;
    void duplicate(const P_UserData& other) override;

    P_BaseObject* getParent() const noexcept;
    bool isEnabled() const noexcept;
    void setInView(bool inView) noexcept;

    const M_Matrix4x3Template<float>& getMatrix() const noexcept;
    M_Matrix4x3Template<float>& accessMatrix() noexcept;
    void setMatrix(const M_Matrix4x3Template<float>& matrix) noexcept;
    void invalidateMatrices() noexcept;
    P_TransformBlock* getTransformBlock() const noexcept;
    unsigned int getTransformBlockIndex() const noexcept;
    bool isObjectToWorldMatrixValid() const noexcept;
    void calculateObjectToWorldMatrix() const noexcept;
    const M_Matrix4x3Template<float>& getObjectToWorldMatrix() const noexcept;
    const M_Matrix4x3Template<float>& getWorldToObjectMatrix() const noexcept;
    unsigned long long getMatrixChangeCount() const noexcept;

    bool hasEngineFlag(EngineFlag flag) const noexcept;
    void setEngineFlag(EngineFlag flag, bool on) noexcept;
    void copyEngineFlags(const P_BaseObject& other) noexcept;
    void setBoundingRadius(float radius) noexcept;
    void setBoundingBox(const M_Vector3Template<float>& minimum, const M_Vector3Template<float>& maximum) noexcept;
    float getStoredBoundingRadius() const noexcept;
    const M_Vector3Template<float>& getStoredBoundingBoxMin() const noexcept;
    const M_Vector3Template<float>& getStoredBoundingBoxMax() const noexcept;
};
