#include "fuzz/input_file.h"
#include "fuzz/records.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <cstdint>
#include <string>

namespace
{
void playAndCopy(const TW2::TW_ObjectAnimation& original)
{
    TW2::TW_ObjectAnimation object(original);
    for (const float frame : {0.0F, 0.5F, -3.0F, 1e9F})
    {
        object.animateObjectFrame(0, frame, nullptr);
        object.subAnimateObject(0, frame, 0.5F);
    }
    object.accessMeshTransforms().updateWorldMatrices();
    object.calculateBoundingVolumes();
    object.deleteAnimation(0);
}
}  // namespace

// Any bytes as geometry file and as animation file of one object: refused with an exception, or the object can be
// played, copied and measured, and leaves nothing behind.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::InputFile s_file;
    static const std::string s_text = "object { geometry { exportdata \"" + s_file.getName() +
                                      "\" } animation { index 0 filename \"" + s_file.getName() + "\" } }";
    s_file.write(data, size);
    TW2::TW_ObjectAnimation object;
    const auto buildAndPlay = [&object]
    {
        S_Script script = S_Script::fromText("input", s_text.c_str());
        object.construct(&script, "object", nullptr, true);
        playAndCopy(object);
    };
    fuzz::require(fuzz::completes<S_Exception>(buildAndPlay) || object.isConstructed() ||
                  (object.getTotalMeshes() == 0 && !object.getMaterialManager()));
    return 0;
}
