#pragma once

#include <utility>

/// Takes back what was done when the scope is left before `keep`, as it is when an exception passes.
///
///     m_vecItems.push_back(item);
///     S_Rollback rollback([this]() noexcept { m_vecItems.pop_back(); });
///     ... steps that may throw ...
///     rollback.keep();
template <typename Action>
class S_Rollback
{
public:
    /// Does `action` at the end of the scope; it must not throw.
    explicit S_Rollback(Action action) noexcept : m_action(std::move(action)) {}
    ~S_Rollback()
    {
        if (m_bArmed)
        {
            m_action();
        }
    }
    S_Rollback(const S_Rollback&) = delete;
    S_Rollback& operator=(const S_Rollback&) = delete;

    /// All went well: nothing is taken back.
    void keep() noexcept { m_bArmed = false; }

private:
    Action m_action;
    bool m_bArmed = true;
};
