#pragma once

#include <platform/export.h>
#include <platform/runtime/exception.h>

/// An image cannot be decoded, encoded or created; the message names the image and the reason.
class TW2_PLATFORM_API G_ImageException : public S_Exception
{
public:
    /// `imageName` is the file's name, or what stands for it when the image comes from memory.
    G_ImageException(const char* imageName, const char* reason);
    ~G_ImageException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};
