#pragma once

class P_Material;

class P_MaterialSwitchObject
{
public:
    virtual ~P_MaterialSwitchObject();
    virtual void switchMaterial(P_Material* material) = 0;
};
