#pragma once

#include <cstddef>
#include <utility>

/// A hold on an object that several own together. Each handle is one holder; the last one to go deletes the object.
///
/// T has a member `m_iReferenceCount`, an S_Counter<int> that begins with 1: the hold of whoever makes the object.
/// Threads may copy and drop handles of one object at the same time, but not one and the same handle.
template <typename T>
class S_Handle
{
public:
    S_Handle() noexcept = default;
    /// Holds nothing.
    S_Handle(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): null is a handle's value
    /// Takes over the hold that comes with a new object.
    explicit S_Handle(T* made) noexcept : m_pObject(made) {}
    S_Handle(const S_Handle& other) noexcept : m_pObject(other.m_pObject)
    {
        if (m_pObject)
        {
            ++m_pObject->m_iReferenceCount;
        }
    }
    S_Handle(S_Handle&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
    /// Holds what the other held, and lets go what it held itself.
    S_Handle& operator=(S_Handle other) noexcept
    {
        swap(other);
        return *this;
    }
    ~S_Handle()
    {
        if (m_pObject && --m_pObject->m_iReferenceCount == 0)
        {
            delete m_pObject;
        }
    }

    /// Exchanges what both hold; counts nothing.
    void swap(S_Handle& other) noexcept { std::swap(m_pObject, other.m_pObject); }
    /// Null when it holds nothing.
    [[nodiscard]] T* get() const noexcept { return m_pObject; }
    /// Only of a handle that holds something.
    [[nodiscard]] T& operator*() const noexcept { return *m_pObject; }
    /// Only of a handle that holds something.
    [[nodiscard]] T* operator->() const noexcept { return m_pObject; }
    /// Whether it holds something.
    explicit operator bool() const noexcept { return m_pObject != nullptr; }
    /// Whether nobody else holds the object; false for null. What nobody else holds may be changed.
    [[nodiscard]] bool isOnlyHolder() const noexcept { return m_pObject && m_pObject->m_iReferenceCount == 1; }
    friend bool operator==(const S_Handle&, const S_Handle&) noexcept = default;

private:
    T* m_pObject = nullptr;
};
