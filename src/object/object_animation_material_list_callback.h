#pragma once

#include <tw2/io/loader_callbacks.h>

namespace TW2
{
class TW_MaterialManager;

/// Adds the materials of a file to a manager; their textures are looked for where the list says.
class TW_ObjectAnimationMaterialListCallback : public TW_MaterialListCallback
{
public:
    explicit TW_ObjectAnimationMaterialListCallback(TW_MaterialManager* manager) noexcept : m_pManager(manager) {}

    void operator()(MaterialListChunk& record) override;

private:
    TW_MaterialManager* m_pManager;
};
}  // namespace TW2
