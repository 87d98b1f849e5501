#pragma once

#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/temporary_directory.h"

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

/// Text FBX for the tests of its reader.
namespace fbx_test
{
using namespace convert_test;

/// A node of three numbers that curves may move: `kind` R or S.
inline std::string makeNode(int id, const char* kind, double x, double y, double z)
{
    std::ostringstream text;
    text << "\tAnimationCurveNode: " << id << ", \"AnimCurveNode::" << kind << "\", \"\" { Properties70: {\n"
         << "\t\tP: \"d|X\", \"Number\", \"\", \"A\"," << x << "\n\t\tP: \"d|Y\", \"Number\", \"\", \"A\"," << y
         << "\n\t\tP: \"d|Z\", \"Number\", \"\", \"A\"," << z << "\n\t} }\n";
    return text.str();
}

/// A curve whose keys are all of one kind.
inline std::string makeCurve(int id, const std::vector<int>& values, const std::string& flags,
                             const std::string& slopes, const std::string& beyond = {},
                             const std::vector<double>& seconds = {0, 1, 2})
{
    std::string times;
    std::string numbers;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        times += (i > 0 ? "," : "") + std::to_string(std::llround(46186158000.0 * seconds[i]));
        numbers += (i > 0 ? "," : "") + std::to_string(values[i]);
    }
    const auto list = [](const char* name, const std::string& content)
    { return "\t\t" + std::string(name) + ": *9 { a: " + content + " }\n"; };
    return "\tAnimationCurve: " + std::to_string(id) + ", \"AnimCurve::\", \"\" {\n" + list("KeyTime", times) +
           list("KeyValueFloat", numbers) + list("KeyAttrFlags", flags) + list("KeyAttrDataFloat", slopes) +
           list("KeyAttrRefCount", std::to_string(values.size())) + beyond + "\t}\n";
}

/// What differs from file to file.
struct Fbx
{
    std::string m_strLower = {};  ///< properties of the lower node
    std::string m_strFlags = "4";
    std::string m_strSlopes = "0,0,0,0";
    std::string m_strBeyond = {};  ///< the keys
    std::string m_strObjects = {};
    std::string m_strLinks = {};
    std::vector<int> m_vecValues{0, 90, 30};
    std::vector<double> m_vecSeconds{0, 1, 2};
    double m_dX = 0.0;  ///< the lower node's rotations that stay
    double m_dY = 0.0;
};

/// A text FBX with two nodes, "arm" below "arm", and one curve for the rotation of the lower one around z: unless said
/// otherwise 0 degrees at 0 s, 90 at 1 s, 30 at 2 s.
inline std::string make(const Fbx& fbx)
{
    return R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXVersion: 7400
}
GlobalSettings:  {
	Properties70: { P: "UpAxis", "int", "Integer", "",1 }
}
Objects:  {
	Model: 1, "Model::arm", "Null" {
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",1,2,3
			P: "InheritType", "enum", "", "",1
		}
	}
	Model: 2, "Model::arm", "LimbNode" {
		Properties70:  {
			P: "InheritType", "enum", "", "",1
)" + fbx.m_strLower +
           R"(
		}
	}
	AnimationStack: 10, "AnimStack::wave", "" {
		Properties70: { P: "LocalStop", "KTime", "Time", "",92372316000 }
	}
	AnimationLayer: 11, "AnimLayer::base", "" { }
)" + makeNode(12, "R", fbx.m_dX, fbx.m_dY, 0) +
           makeCurve(13, fbx.m_vecValues, fbx.m_strFlags, fbx.m_strSlopes, fbx.m_strBeyond, fbx.m_vecSeconds) +
           fbx.m_strObjects + R"(}
Connections:  {
	C: "OO",1,0
	C: "OO",2,1
	C: "OO",11,10
	C: "OO",12,11
	C: "OP",12,2, "Lcl Rotation"
	C: "OP",13,12, "d|Z"
)" + fbx.m_strLinks +
           "}\n";
}

inline Model readFbx(const std::string& text)
{
    const support::TemporaryDirectory directory;
    return TW2::convert::readModel(directory.write("wave.fbx", text), {});
}
}  // namespace fbx_test
