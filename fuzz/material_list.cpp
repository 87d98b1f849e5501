#include <tw2/core/exceptions.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_manager.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>
#include <platform/scene/driver_exception.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace
{
void require(bool condition)
{
    if (!condition)
    {
        std::abort();
    }
}

S_Bytes write(const TW2::MaterialListChunk& list)
{
    S_MemoryFileWriter writer;
    writer << list;
    return writer.getBytes();
}

void read(TW2::MaterialListChunk& list, const std::uint8_t* data, std::size_t size)
{
    S_MemoryFile file;
    file.constructFromMemory("input", data, size);
    file >> list;
}

/// What was read comes back unchanged from a file of its own.
void checkRoundTrip(const TW2::MaterialListChunk& list)
{
    const S_Bytes file = write(list);
    TW2::MaterialListChunk again;
    read(again, file.data(), file.size());
    require(write(again) == file);
}

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
            require(manager.getMaterialCount() == count + 1);
        }
        catch (const TW2::TW_Exception&)
        {
            require(manager.getMaterialCount() == count);
        }
        catch (const P_DriverException&)
        {
            require(manager.getMaterialCount() == count);
        }
    }
}

void run(const std::uint8_t* data, std::size_t size)
{
    TW2::MaterialListChunk list;
    try
    {
        read(list, data, size);
    }
    catch (const S_MemoryFileException&)
    {
        return;
    }
    catch (const std::length_error&)
    {
        return;
    }
    checkRoundTrip(list);
    buildMaterials(list);
}
}  // namespace

// Any bytes as a material list: it is refused, or can be written, read and built; nothing stays allocated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const long long live = S_Memory::getLiveCount();
    run(data, size);
    require(S_Memory::getLiveCount() == live);
    return 0;
}
