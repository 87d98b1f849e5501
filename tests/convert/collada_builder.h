#pragma once

#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/temporary_directory.h"

#include <string>

/// Texts of COLLADA files.
namespace convert_test
{
inline std::string makeSource(const std::string& id, const std::string& array, std::size_t stride = 1,
                              std::size_t offset = 0)
{
    return "<source id='" + id + "'>" + array + "<technique_common><accessor stride='" + std::to_string(stride) +
           "' offset='" + std::to_string(offset) + "'/></technique_common></source>";
}

inline std::string floats(const std::string& numbers)
{
    return "<float_array>" + numbers + "</float_array>";
}

/// An animation of `target` with keys of one kind at 0, 1 and 2 seconds.
inline std::string makeAnimation(const std::string& target, const std::string& kind, const std::string& values,
                                 std::size_t stride = 1, const std::string& arriving = {},
                                 const std::string& leaving = {})
{
    static int s_count = 0;
    const std::string id = "a" + std::to_string(s_count++);
    std::string text = "<animation id='" + id + "'>" + makeSource(id + "t", floats("0 1 2"), 1) +
                       makeSource(id + "v", floats(values), stride) +
                       makeSource(id + "k", "<Name_array>" + kind + " " + kind + " " + kind + "</Name_array>");
    std::string inputs = "<input semantic='INPUT' source='#" + id + "t'/><input semantic='OUTPUT' source='#" + id +
                         "v'/><input semantic='INTERPOLATION' source='#" + id + "k'/>";
    if (!arriving.empty())
    {
        text += makeSource(id + "i", floats(arriving), 1) + makeSource(id + "o", floats(leaving), 1);
        inputs +=
            "<input semantic='IN_TANGENT' source='#" + id + "i'/><input semantic='OUT_TANGENT' source='#" + id + "o'/>";
    }
    return text + "<sampler id='" + id + "s'>" + inputs + "</sampler><channel source='#" + id + "s' target='" + target +
           "'/></animation>";
}

/// A scene of "arm" with two steps of its own and "hand" below it; a camera has the id of the hand as well.
inline std::string makeCollada(const std::string& animations, const std::string& libraries = {},
                               const std::string& nodes = {}, const std::string& up = "Y_UP")
{
    return "<?xml version='1.0'?><COLLADA version='1.4.1'><asset><unit meter='0.5'/><up_axis>" + up +
           "</up_axis></asset><library_cameras><camera id='hand'><optics><technique_common><perspective><xfov>50</xfov>"
           "</perspective></technique_common></optics></camera></library_cameras>" +
           libraries + "<library_animations>" + animations +
           "</library_animations><library_visual_scenes><visual_scene id='scene'>"
           "<node id='arm' name='upper arm'><translate sid='place'>1 2 3</translate>"
           "<rotate sid='turn'>0 0 1 0</rotate><node id='hand' sid='tip'>"
           "<matrix sid='matrix'>1 0 0 5 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node></node>" +
           nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#scene'/></scene></COLLADA>";
}

inline Model readCollada(const std::string& text)
{
    const support::TemporaryDirectory directory;
    return TW2::convert::readModel(directory.write("arm.dae", text), {});
}
}  // namespace convert_test
