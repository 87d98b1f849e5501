// Moves a camera away from a skinned character with two levels of detail and prints which level is shown.
//
//     example_level_of_detail [folder]        the folder of the project's sample, "sample" when none is given

#include <tw2/tw2.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv)
{
    try
    {
        const std::string folder = argc > 1 ? argv[1] : "sample";
        S_Script skeleton((folder + "/walker.script").c_str());
        S_Script skins((folder + "/walker_levels.script").c_str());
        const int levels[] = {0, 1};  // the blocks "near" and "far"; block 0 of the other script is the skeleton
        TW2::TW_VertexAnimationLODs walker(&skeleton, 0, 2, &skins, levels);
        const int walk = walker.findAnimation("walk");

        P_Context context;
        P_Scene scene(&context);
        P_Camera camera;
        context.setCurrentCamera(&camera);
        walker.addTo(&scene);

        for (const float distance : {2.0F, 7.0F, 9.0F, 50.0F, 70.0F})
        {
            camera.lookAt({0.0F, 0.0F, -distance}, {0.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
            walker.animateObject(walk, 0.1F * distance);  // moves the skeleton that all levels follow
            scene.executeFrame();

            std::printf("distance %2.0F: ", static_cast<double>(distance));
            if (const TW2::TW_VertexAnimation* const level = walker.getUsedLODObject())
            {
                const P_VirtualObject& skin = *level->getSkin()->getMesh(0);
                std::printf("%u triangles\n", skin.getPrimitive(0)->getIndexBuffer().getUsedCount());
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
