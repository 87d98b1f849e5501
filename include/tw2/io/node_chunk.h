#pragma once

#include <tw2/export.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// The part that cameras, lights, helpers and meshes of a file share: what the object is called and where it hangs.
struct NodeChunk
{
    S_String name;                         ///< by which tracks and children find the node
    M_Matrix4x3Template<float> transform;  ///< relative to the parent
    S_String parentName;                   ///< meaningful only with `hasParent`
    bool hasParent = false;                ///< without a parent the object hangs directly under the animated object
    S_String extraString;                  ///< carried from files to callbacks; the library itself does not use it

    /// Restores the defaults; strings keep their storage.
    void reset() noexcept { *this = {}; }

    /// @name Asking
    /// @{

    /// By which tracks and children find the node.
    [[nodiscard]] const S_String& getName() const noexcept { return name; }
    /// Meaningful only with a parent.
    [[nodiscard]] const S_String& getParentName() const noexcept { return parentName; }
    /// Relative to the parent.
    [[nodiscard]] const M_Matrix4x3Template<float>& getTransform() const noexcept { return transform; }
    /// Whether the file names a parent.
    [[nodiscard]] bool getHasParent() const noexcept { return hasParent; }
    /// @}

    friend bool operator==(const NodeChunk&, const NodeChunk&) = default;
};

/// Reads a node chunk; `extraString` keeps its value when the chunk's version is 0.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, NodeChunk& node);
/// Writes it as a chunk. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const NodeChunk& node);
}  // namespace TW2
