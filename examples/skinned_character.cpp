// Builds a skinned character, fades from one animation into another, lets a bone group do something else meanwhile, and
// prints where the tip of the skin is.

#include "sleeve_files.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/exception.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <cstdio>

namespace
{
constexpr int wave = 0;
constexpr int reach = 1;
}  // namespace

int main()
{
    try
    {
        SleeveFiles::write();
        TW2::TW_VertexAnimation character("sleeve.txt", "arm", "sleeve");
        P_Scene scene;
        character.addTo(&scene);
        std::printf("%s: %u bones\n", character.getName().c_str(), character.getTotalMeshes());

        // Only the hand keeps waving.
        const TW2::TW_BoneHandle handles[] = {character.getBoneHandle("hand")};
        TW2::TW_BoneGroupHandle hand(1, handles);
        hand.attach(&character);

        const TW2::TW_ObjectAnimation& skin = *character.getSkin();
        const P_VirtualObject& sleeve = *skin.getMesh(0);
        const unsigned int tip = sleeve.getPrimitive(0)->getVertexBuffer().getUsedCount() - 1;
        for (int step = 0; step <= 10; ++step)
        {
            const float time = 0.1f * static_cast<float>(step);
            const float faded = 0.1f * static_cast<float>(step);
            character.crossAnimateObject(wave, time, 1.0f - faded, reach, time, nullptr);
            character.animateObject(wave, time, &hand);
            scene.executeFrame();  // writes the bone matrices; drawing the scene would show the skin

            const auto position = sleeve.getVertexPosition(0, tip);
            std::printf("%.1f s  %3.0f %% reach  tip (%.3f, %.3f, %.3f)\n", static_cast<double>(time),
                        100.0 * static_cast<double>(faded), static_cast<double>(position.x),
                        static_cast<double>(position.y), static_cast<double>(position.z));
        }
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
