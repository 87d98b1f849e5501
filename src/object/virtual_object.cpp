#include <tw2/core/static_data.h>
#include <tw2/object/virtual_object.h>

namespace TW2
{
TW_VirtualObject::TW_VirtualObject()
{
    ++sm_iLiveCount;
}

TW_VirtualObject::~TW_VirtualObject()
{
    if (--sm_iLiveCount == 0)
    {
        deleteStaticData();
    }
}

P_Context* TW_VirtualObject::getContext() const
{
    return getStoredContext();
}
}  // namespace TW2
