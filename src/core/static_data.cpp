#include <tw2/core/static_data.h>

#include <io/legacy_mesh_work_lists.h>

namespace TW2
{
void deleteStaticData() noexcept
{
    releaseLegacyMeshLists();
}
}  // namespace TW2
