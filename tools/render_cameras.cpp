#include "tools/render_cameras.h"

#include "tools/commands.h"
#include "viewer/animated_script.h"
#include "viewer/text.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>

#include <platform/runtime/memory_file.h>

#include <filesystem>
#include <set>
#include <vector>

namespace tools
{
namespace
{
void readCameras(const std::string& file, std::vector<SceneCamera>& cameras)
{
    S_MemoryFile content(file, S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    for (content.peekChunk(chunk); chunk.isValid(); content.peekChunk(chunk))
    {
        if (chunk.getID() == TW2::CHUNK_CAMERA)
        {
            TW2::CameraChunk record;
            content >> record;
            cameras.push_back({record.name.c_str(), record.hasParent ? record.parentName.c_str() : "", record.transform,
                               record.value0, record.value1, record.value2});
        }
        content.skipChunk();
    }
}
}  // namespace

SceneCamera findSceneCamera(const std::string& scriptFile, const std::string& name)
{
    std::set<std::string> files;
    for (const TW2::viewer::ScriptEntry& entry : TW2::viewer::readScript(scriptFile))
    {
        files.insert(entry.geometryFile);
    }
    std::vector<SceneCamera> cameras;
    const std::string folder = std::filesystem::path(scriptFile).parent_path().string();
    for (const std::string& file : files)
    {
        readCameras(folder.empty() ? file : folder + "/" + file, cameras);
    }
    std::string names;
    for (const SceneCamera& camera : cameras)
    {
        if (TW2::viewer::toLower(camera.name) == TW2::viewer::toLower(name))
        {
            return camera;
        }
        names += names.empty() ? camera.name : ", " + camera.name;
    }
    throw Failure("there is no camera \"" + name + "\"; " +
                  (names.empty() ? "the files have none" : "the cameras are: " + names));
}
}  // namespace tools
