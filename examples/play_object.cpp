// Builds an animated object from a script, plays its last animation for a second and prints where its bones are.
//
//     example_play_object [script block]      without arguments, in the project's folder: the sprout of its sample

#include <tw2/tw2.h>

#include <cstdio>

int main(int argc, char** argv)
{
    try
    {
        const char* const script = argc == 3 ? argv[1] : "sample/sprout.script";
        const char* const block = argc == 3 ? argv[2] : "skeleton";
        TW2::TW_ObjectAnimation object(script, block, nullptr, false);

        const int index = object.getMaximumAnimationIndex();
        std::printf("%s: %u bones, \"%s\" lasts %.2F s\n", object.getName().c_str(), object.getTotalMeshes(),
                    object.getAnimationName(index), static_cast<double>(object.getAnimationLength(index)));
        for (int step = 0; step <= 4; ++step)
        {
            const float time = 0.25F * static_cast<float>(step);
            object.animateObject(index, time);
            std::printf("%.2F s", static_cast<double>(time));
            for (unsigned int i = 0; i < object.getTotalMeshes(); ++i)
            {
                const auto position = object.getMesh(i)->getObjectToWorldMatrix().getTranslation();
                std::printf("  %s (%.2F, %.2F, %.2F)", object.getMesh(i)->getName().c_str(),
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
