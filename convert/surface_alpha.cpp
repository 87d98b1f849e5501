#include "convert/surface_alpha.h"

#include <algorithm>

namespace TW2::convert
{
void decideAlpha(const std::string& part, const PictureCollector& pictures, Surface& surface, Warnings& warnings)
{
    if (!(surface.m_fOpacity > 0.0F))
    {
        // Exporters disagree on which end of the scale is clear; nobody draws what cannot be seen.
        warnings.add(part + ": is fully transparent in the file, taken as opaque");
        surface.m_fOpacity = 1.0F;
    }
    surface.m_fOpacity = std::min(surface.m_fOpacity, 1.0F);
    const bool clear = surface.m_diffuseTexture.isUsed() && pictures.get(surface.m_diffuseTexture.m_iPicture).m_bClear;
    surface.m_eAlpha = surface.m_fOpacity < 1.0F                    ? Surface::Alpha::Blend
                       : clear || surface.m_opacityTexture.isUsed() ? Surface::Alpha::Mask
                                                                    : Surface::Alpha::Opaque;
}
}  // namespace TW2::convert
