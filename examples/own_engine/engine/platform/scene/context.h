#pragma once

class P_Camera;

class P_Context
{
public:
    P_Camera* getCurrentCamera() const noexcept;
};
