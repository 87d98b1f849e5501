#pragma once

#include <tw2/export.h>

class P_Material;

namespace TW2
{
struct TWMaterialChunk;

/// Sees every material while it is built, and may change it. A host derives from it, overrides what it needs, and owns
/// it; the operations here do nothing.
class TW2_API TW_MaterialCallback
{
public:
    TW_MaterialCallback() noexcept = default;
    /// A callback is counted by itself: copies share nothing.
    TW_MaterialCallback(const TW_MaterialCallback&) noexcept = default;
    /// Changes nothing.
    TW_MaterialCallback& operator=(const TW_MaterialCallback&) noexcept = default;

    /// The engine material is complete.
    virtual void operator()([[maybe_unused]] P_Material* material, [[maybe_unused]] const TWMaterialChunk& chunk) {}
    /// No layer is added yet; either count may be changed, for layers that the host adds later. Negative counts are
    /// taken as 0.
    virtual void operator()([[maybe_unused]] int& layerCount, [[maybe_unused]] int& textureCoordinateCount,
                            [[maybe_unused]] const TWMaterialChunk& chunk)
    {
    }
    virtual ~TW_MaterialCallback() = default;
};
}  // namespace TW2
