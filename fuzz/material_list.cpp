#include "fuzz/records.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_manager.h>

#include <platform/scene/driver_exception.h>

#include <cstdint>

namespace
{
/// Any record can be built, or is refused; there are no texture files.
void buildMaterials(const TW2::MaterialListChunk& list)
{
    TW2::TW_MaterialManager manager;
    for (const TW2::TWMaterialChunk& material : list.materials)
    {
        const unsigned int count = manager.getMaterialCount();
        try
        {
            manager.addMaterial(material);
            fuzz::require(manager.getMaterialCount() == count + 1);
        }
        catch (const TW2::TW_Exception&)
        {
            fuzz::require(manager.getMaterialCount() == count);
        }
        catch (const P_DriverException&)
        {
            fuzz::require(manager.getMaterialCount() == count);
        }
    }
}

}  // namespace

// Any bytes as a material list: it is refused, or can be written, read and built; nothing stays allocated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const long long live = S_Memory::getLiveCount();
    {
        TW2::MaterialListChunk list;
        if (fuzz::completes([&] { fuzz::read(list, data, size); }))
        {
            fuzz::requireRoundTrip(list);
            buildMaterials(list);
        }
    }
    fuzz::require(S_Memory::getLiveCount() == live);
    return 0;
}
