// The white map that all solid layers show: made for the first material that has one, gone with the last.

#include "core/unit_init.h"
#include "material/white_image.h"

#include <tw2/material/material.h>

#include <platform/scene/driver.h>
#include <platform/scene/map.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace TW2
{
std::unique_ptr<G_Image> createWhiteImage()
{
    const P_DriverCaps& caps = P_Driver::m_initializedDriver->getDriverCaps();
    auto image = std::make_unique<G_Image>(caps.m_uiMinimumTextureWidth, caps.m_uiMinimumTextureHeight);
    std::fill_n(image->accessPixels(), image->getSize(), static_cast<unsigned char>(255));
    return image;
}

P_Map* TW_Material::acquireSolidMap()
{
    if (sm_iSolidMapReferenceCnt == 0)
    {
        std::unique_ptr<G_Image> image = createWhiteImage();
        auto map = std::make_unique<P_Map>(image.get(), nullptr);
        map->setMipLevelCount(1);
        map->validate();
        sm_pSolidImage = image.release();
        sm_pSolidMap = map.release();
    }
    ++sm_iSolidMapReferenceCnt;
    m_bSolidLayer = true;
    return sm_pSolidMap;
}

void TW_Material::releaseSolidMap() noexcept
{
    if (std::exchange(m_bSolidLayer, false) && --sm_iSolidMapReferenceCnt == 0)
    {
        delete std::exchange(sm_pSolidMap, nullptr);
        delete std::exchange(sm_pSolidImage, nullptr);
    }
}
}  // namespace TW2
