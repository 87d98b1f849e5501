#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>

// Textures and their animations are the material manager's; an object that is not constructed has none.

namespace TW2
{
void TW_ObjectAnimation::uploadTextures()
{
    if (m_pMaterialManager)
    {
        m_pMaterialManager->addToTextureMemory();
    }
}

bool TW_ObjectAnimation::isValidTextureAnimationSet(const S_String& set) const
{
    return m_pMaterialManager && m_pMaterialManager->isValidAnimationSet(set);
}

bool TW_ObjectAnimation::isValidTextureAnimation(const S_String& set, int index) const
{
    return m_pMaterialManager && m_pMaterialManager->isValidAnimation(set, index);
}

unsigned int TW_ObjectAnimation::getTotalTextureAnimationSets() const
{
    return m_pMaterialManager ? m_pMaterialManager->getTotalTextureAnimationSets() : 0;
}

unsigned int TW_ObjectAnimation::getTotalTextureAnimations(const S_String& set) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTotalTextureAnimations(set) : 0;
}

unsigned int TW_ObjectAnimation::getTextureAnimationFrames(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationFrames(set, index) : 0;
}

float TW_ObjectAnimation::getTextureAnimationLength(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationLength(set, index) : 0.0F;
}

float TW_ObjectAnimation::getTextureAnimationFPS(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationFPS(set, index) : 0.0F;
}

void TW_ObjectAnimation::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    if (m_pMaterialManager)
    {
        m_pMaterialManager->setTextureAnimationFPS(set, index, fps);
    }
}

bool TW_ObjectAnimation::animateTexture(const S_String& set, float time)
{
    return m_pMaterialManager && m_pMaterialManager->animateTexture(set, time);
}

bool TW_ObjectAnimation::animateTextureFrame(const S_String& set, float frame)
{
    return m_pMaterialManager && m_pMaterialManager->animateTextureFrame(set, frame);
}
}  // namespace TW2
