#pragma once

#include <platform/math/matrix4x3.h>

#include <cstddef>

class P_BaseObject;

class P_TransformBlock
{
public:
    P_TransformBlock() noexcept;
    ~P_TransformBlock();

    void adopt(P_BaseObject* const* objects, std::size_t count);
    void append(P_BaseObject& object);
    void reserve(std::size_t count);
    void reserveRow(void* first, std::size_t distance, std::size_t count);
    void shrinkToFit();
    void release() noexcept;
    unsigned int getCount() const noexcept;
    unsigned int getMemberCount() const noexcept;
    P_BaseObject* getObject(unsigned int index) const noexcept;
    const int* getParents() const noexcept;
    bool areParentsFirst() const noexcept;
    const M_Matrix4x3Template<float>* getLocalMatrices() const noexcept;
    M_Matrix4x3Template<float>* accessLocalMatrices() noexcept;
    void prefetch() const noexcept;
    void invalidateAll() noexcept;
    void invalidate(const unsigned int* indices, std::size_t count) noexcept;
    void invalidateMasked(const unsigned char* mask) noexcept;
    unsigned long long getChangeCount() const noexcept;
    void updateWorldMatrices() noexcept;
};
