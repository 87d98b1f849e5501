#pragma once

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/object/script_parameters.h>

#include <platform/runtime/script.h>

namespace TW2
{
/// @name The blocks and keys of animated objects in scripts
/// @{

/// The script; throws TW_Exception_InvalidScriptParameter when it is null.
S_Script& requireScript(S_Script* script);
/// Throws TW_Exception_InvalidGeometry unless an object that is being loaded is still there, which a host's callback
/// may have destructed.
void requireObject(bool isThere);
/// The name; an empty one when it is null.
[[nodiscard]] inline const char* orEmpty(const char* name) noexcept
{
    return name ? name : "";
}
/// Throws TW_Exception_InvalidScriptParameter unless `crossMode` is exactly one of the three words.
[[nodiscard]] InterpolationMode parseCrossMode(const S_Script& script, const S_String& crossMode);

/// Makes of a file name that a key of a block inside the current one gives the name under which the file stands: it is
/// looked for from the current directory, and then beside the script. Throws S_FileException when it is in neither
/// place: that tells both, and the line that asks for it. An empty name stays empty.
void findFile(const S_Script& script, const char* block, unsigned int occurrence, const char* key, S_String& fileName);

/// "nesting, block" of a block at the script's position, after which an object is named that is built from it.
[[nodiscard]] S_String describeBlock(const S_Script& script, const char* blockName);
[[nodiscard]] S_String describeBlock(const S_Script& script, int blockIndex);
/// What is built from a block.
enum class BlockKind
{
    Object,     ///< an object: a block of this name must stand exactly once at the script's position
    Animations  ///< what is added to one: of several blocks of the name it is the first
};
/// Makes a block at the script's position the current one, by its name or by its position, and checks the blocks
/// inside.
void lockBlock(S_Script& script, const char* blockName, BlockKind kind);
void lockBlock(S_Script& script, int blockIndex, BlockKind kind);
/// @}
}  // namespace TW2
