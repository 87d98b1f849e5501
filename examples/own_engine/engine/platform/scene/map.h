#pragma once

#include <platform/image/image.h>
#include <platform/runtime/allocator.h>

class P_Map : public S_Allocated
{
public:
    P_Map(const char* fileName, const char* alphaFileName);
    P_Map(const G_Image* image, const G_Image* alphaImage);
    ~P_Map();

    void validate();
    void addToTextureMemory();
    void removeFromTextureMemory() noexcept;
    void setMipLevelCount(int count) noexcept;
    void setDescription(const char* text);
};
