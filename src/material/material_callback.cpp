#include <tw2/material/material_callback.h>

namespace TW2
{
TW_MaterialCallback::TW_MaterialCallback() noexcept = default;
TW_MaterialCallback::TW_MaterialCallback(const TW_MaterialCallback&) noexcept = default;
TW_MaterialCallback& TW_MaterialCallback::operator=(const TW_MaterialCallback&) noexcept = default;
TW_MaterialCallback::~TW_MaterialCallback() = default;

void TW_MaterialCallback::operator()(P_Material*, const TWMaterialChunk&) {}
void TW_MaterialCallback::operator()(int&, int&, const TWMaterialChunk&) {}
}  // namespace TW2
