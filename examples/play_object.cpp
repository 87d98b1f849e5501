// Builds an animated object from a script, plays its first animation and prints where the bones are.
//
//     example_play_object [script block]      without arguments: an arm that the program writes itself

#include "arm_files.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/exception.h>
#include <platform/scene/virtual_object.h>

#include <cstdio>

int main(int argc, char** argv)
{
    try
    {
        if (argc != 3)
        {
            ArmFiles::write();
        }
        const char* const script = argc == 3 ? argv[1] : "arm.txt";
        const char* const block = argc == 3 ? argv[2] : "arm";
        TW2::TW_ObjectAnimation object(script, block, nullptr, false);

        std::printf("%s: %u bones, animation 0 lasts %.2f s\n", object.getName().c_str(), object.getTotalMeshes(),
                    static_cast<double>(object.getAnimationLength(0)));
        for (int step = 0; step <= 4; ++step)
        {
            const float time = 0.25f * static_cast<float>(step);
            object.animateObject(0, time, nullptr);
            std::printf("%.2f s", static_cast<double>(time));
            for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
            {
                const auto position = object.getMesh(i)->getObjectToWorldMatrix().getTranslation();
                std::printf("  %s (%.2f, %.2f, %.2f)", object.getMesh(i)->getName().c_str(),
                            static_cast<double>(position.x), static_cast<double>(position.y),
                            static_cast<double>(position.z));
            }
            std::printf("\n");
        }
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
