// Moves a camera away from a skinned character with two levels of detail and prints which level is shown.

#include "sleeve_files.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <cstdio>

int main()
{
    try
    {
        SleeveFiles::write();
        S_Script script("sleeve.txt");
        const int levels[] = {1, 2};  // the blocks "sleeve" and "sleeveFar"; block 0, "arm", is the skeleton
        TW2::TW_VertexAnimationLODs character(&script, 0, 2, &script, levels);

        P_Context context;
        P_Scene scene(&context);
        P_Camera camera;
        camera.addTo(&scene);
        context.setCurrentCamera(&camera);
        character.addTo(&scene);

        for (const float distance : {5.0f, 15.0f, 50.0f, 150.0f, 250.0f})
        {
            camera.lookAt({0.0f, 0.0f, -distance}, {0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
            character.animateObject(0, 0.01f * distance, nullptr);  // moves the skeleton that all levels follow
            scene.executeFrame();

            std::printf("distance %3.0f: ", static_cast<double>(distance));
            if (const TW2::TW_VertexAnimation* const level = character.getUsedLODObject())
            {
                const P_VirtualObject& skin = *level->getSkin()->getMesh(0);
                std::printf("\"%s\" with %u triangles\n", skin.getName().c_str(),
                            skin.getPrimitive(0)->getIndexBuffer().getUsedCount());
            }
            else
            {
                std::printf("nothing, it is too far away\n");
            }
        }
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
