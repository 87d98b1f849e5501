#include "json/writer.h"
#include "tools/commands.h"
#include "viewer/animated_script.h"

#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

struct Arguments
{
    std::string script;
    TW2::viewer::Selection selection;
    std::string animation;
    double time = 0.0;
    std::string bone;
    bool json = false;
};

void print(const char* label, const Matrix& matrix)
{
    std::printf("  %s", label);
    for (int row = 0; row < 4; ++row)
    {
        const M_Vector3Template<float> v = matrix.getRow(row);
        std::printf("  %.9g %.9g %.9g%s", static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z),
                    row < 3 ? " |" : "\n");
    }
}

/// Mesh indices to show: all, or that of one bone.
std::vector<unsigned int> chooseBones(TW2::TW_ObjectAnimation& skeleton, const std::string& bone)
{
    std::vector<unsigned int> bones;
    if (!bone.empty())
    {
        bones.push_back(skeleton.getBoneHandle(bone.c_str()).getBoneIndex());
        return bones;
    }
    for (unsigned int i = 0; i < skeleton.getTotalMeshes(); ++i)
    {
        bones.push_back(i);
    }
    return bones;
}

void run(const Arguments& arguments)
{
    TW2::viewer::AnimatedScript script(arguments.script, arguments.selection);
    const int index =
        arguments.animation.empty() ? script.chooseAnimation() : script.findAnimation(arguments.animation);
    if (index >= 0 && !script.getObject().animateObject(index, static_cast<float>(arguments.time), nullptr))
    {
        throw tools::Failure("animation " + std::to_string(index) + " cannot be played");
    }

    TW2::TW_ObjectAnimation& skeleton = script.getSkeleton();
    const std::vector<unsigned int> bones = chooseBones(skeleton, arguments.bone);
    if (!arguments.json)
    {
        for (const unsigned int i : bones)
        {
            const P_VirtualObject& mesh = *skeleton.getMesh(i);
            std::printf("%u %s\n", i, mesh.getName().c_str());
            print("local", mesh.getMatrix());
            print("world", mesh.getObjectToWorldMatrix());
        }
    }
    else
    {
        TW2::json::Writer json(std::cout);
        json.beginObject();
        json.member("animation", index);
        json.member("time", arguments.time);
        json.objects("bones", bones,
                     [&](unsigned int i)
                     {
                         const P_VirtualObject& mesh = *skeleton.getMesh(i);
                         json.member("index", i);
                         json.member("name", std::string_view(mesh.getName()));
                         json.list("local", std::span(mesh.getMatrix().data(), 12));
                         json.list("world", std::span(mesh.getObjectToWorldMatrix().data(), 12));
                     });
        json.endObject();
    }
}

const tools::Command s_command(
    "play", "Print the matrices of a pose",
    [](CLI::App& command)
    {
        const auto arguments = std::make_shared<Arguments>();
        command.add_option("SCRIPT", arguments->script, "Script file")->required();
        command.add_option("--block", arguments->selection.block, "Block to play (default: the first skin, or block)");
        command.add_option("--skeleton-block", arguments->selection.skeleton, "Skeleton of a skin");
        command.add_option("--animation", arguments->animation, "Index, name, or part of the name or file's name");
        command.add_option("--time", arguments->time, "Seconds (default: 0)");
        command.add_option("--bone", arguments->bone, "Only this bone");
        command.add_flag("--json", arguments->json,
                         "Print JSON: matrices as twelve numbers, three basis rows and the translation");
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
