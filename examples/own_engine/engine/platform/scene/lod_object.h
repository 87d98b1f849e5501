#pragma once

#include <platform/scene/base_object.h>

class P_LODObject : public P_BaseObject
{
public:
    explicit P_LODObject(int levelCount);
    P_Context* getContext() const override;

    int getLevelCount() const noexcept;
    void setLODObject(int level, P_BaseObject* object, float range);
    void removeLODObject(int level);
    P_BaseObject* getLODObject(int level) const;
    float getRange(int level) const;
    void calculateLOD();
    P_BaseObject* getUsedLODObject() const noexcept;
};
