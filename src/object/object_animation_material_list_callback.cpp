#include "object/object_animation_material_list_callback.h"

#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_manager.h>
#include <tw2/material/texture.h>

namespace TW2
{
namespace
{
/// An empty texture search path at the begin and at the end of a scope.
class TexturePathGuard
{
public:
    TexturePathGuard() noexcept { TW_Texture::clearTexturePathList(); }
    ~TexturePathGuard() { TW_Texture::clearTexturePathList(); }
    TexturePathGuard(const TexturePathGuard&) = delete;
    TexturePathGuard& operator=(const TexturePathGuard&) = delete;
};
}  // namespace

void TW_ObjectAnimationMaterialListCallback::operator()(MaterialListChunk& record)
{
    const TexturePathGuard guard;
    TW_Texture::addTexturePath(record.texturePath);
    for (const TWMaterialChunk& material : record.materials)
    {
        m_pManager->addMaterial(material);
    }
}
}  // namespace TW2
