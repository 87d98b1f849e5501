#pragma once

#include <platform/export.h>
#include <platform/runtime/exception.h>

/// The scene engine was asked for something it cannot do: a cycle in the tree, an index that does not exist, a write
/// into a buffer that is not locked.
class TW2_PLATFORM_API P_SceneException : public S_Exception
{
public:
    /// `message`: what was asked for that cannot be.
    explicit P_SceneException(const char* message);
    ~P_SceneException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};
