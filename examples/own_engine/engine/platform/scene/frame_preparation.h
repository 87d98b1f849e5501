#pragma once

class P_FramePreparation
{
public:
    virtual void prepareFrame(unsigned long long frame) noexcept = 0;

protected:
    ~P_FramePreparation() = default;
};
