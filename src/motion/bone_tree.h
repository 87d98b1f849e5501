#pragma once

namespace TW2
{
class TW_ObjectAnimation;

/// Mesh index of the first bone of that name, whatever the case of its letters. Throws TW_Exception_BoneNotFound.
[[nodiscard]] unsigned int findBone(const TW_ObjectAnimation& object, const char* name);
[[nodiscard]] bool hasBone(const TW_ObjectAnimation& object, const char* name);
/// Mesh index of the bone above; -1 when there is none.
[[nodiscard]] int findParent(const TW_ObjectAnimation& object, unsigned int bone) noexcept;
/// How many bones `bone` hangs below `top`: 0 for itself, 1 for its children;
/// -1 when it does not.
[[nodiscard]] int getDepthBelow(const TW_ObjectAnimation& object, unsigned int bone, unsigned int top) noexcept;
}  // namespace TW2
