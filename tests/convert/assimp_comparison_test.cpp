#include "convert/converter.h"
#include "tests/convert/scene_oracle.h"
#include "tests/support/sanitized.h"
#include "tests/support/temporary_directory.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <assimp/config.h>
#include <assimp/Importer.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace
{
using convert_test::Matrix;
using convert_test::SceneOracle;
using Vector = M_Vector3Template<float>;

constexpr const char* modelFolder = "/usr/share/assimp/models";
constexpr int timesPerClip = 20;
// Checked code is slow: the long motions are for the plain build.
constexpr std::uintmax_t largestFile = support::isSanitized ? 60'000 : std::numeric_limits<std::uintmax_t>::max();

int s_iBeyondTolerance = 0;

/// A converted model, loaded by the library.
class Played
{
public:
    Played(const std::string& script, bool skinned)
    {
        const S_DirectoryGuard guard;
        File.changeDirectory(File.getPath(script));
        if (skinned)
        {
            auto character = std::make_unique<TW2::TW_VertexAnimation>(script.c_str(), "skeleton", "skin");
            m_skeleton = character->getSkeleton();
            m_drawn = character->getSkin();
            m_object = std::move(character);
        }
        else
        {
            auto object = std::make_unique<TW2::TW_ObjectAnimation>(script.c_str(), "object", nullptr, false);
            m_skeleton = m_drawn = object.get();
            m_object = std::move(object);
        }
        m_object->addTo(&m_scene);
    }
    ~Played() { m_object->remove(); }
    Played(const Played&) = delete;
    Played& operator=(const Played&) = delete;

    bool pose(int index, double seconds)
    {
        const bool played = m_object->animateObject(index, static_cast<float>(seconds), nullptr);
        m_scene.executeFrame();
        return played;
    }
    [[nodiscard]] const TW2::TW_ObjectAnimation& getSkeleton() const { return *m_skeleton; }
    template <typename Visit>
    void forEachVertex(Visit visit) const
    {
        for (unsigned int i = 0; i < m_drawn->getTotalMeshes(); ++i)
        {
            const P_VirtualObject& mesh = *m_drawn->getMesh(i);
            for (int p = 0; p < mesh.getPrimitiveCount(); ++p)
            {
                const P_TriangleMesh* geometry = mesh.getPrimitive(p);
                for (unsigned int v = 0; geometry && v < geometry->getVertexBuffer().getUsedCount(); ++v)
                {
                    visit(mesh.getObjectToWorldMatrix().transformPoint(mesh.getVertexPosition(p, v)));
                }
            }
        }
    }

private:
    P_Scene m_scene;
    std::unique_ptr<TW2::TW_VirtualObject> m_object;
    TW2::TW_ObjectAnimation* m_skeleton = nullptr;
    TW2::TW_ObjectAnimation* m_drawn = nullptr;
};

struct Difference
{
    double m_dDistance = 0.0;
    double m_dDegrees = 0.0;
    double m_dBox = 0.0;  ///< of the corners of the box around all vertices
};

void compareNode(const M_Matrix4x3Template<float>& is, const Matrix& shouldBe, Difference& difference)
{
    double squared = 0.0;
    for (std::size_t k = 0; k < 3; ++k)
    {
        squared += std::pow(static_cast<double>(is.m[3][k]) - shouldBe.m[k][3], 2.0);
    }
    difference.m_dDistance = std::max(difference.m_dDistance, std::sqrt(squared));
    for (std::size_t row = 0; row < 3; ++row)
    {
        double dot = 0.0;
        double a = 0.0;
        double b = 0.0;
        for (std::size_t k = 0; k < 3; ++k)
        {
            const auto x = static_cast<double>(is.m[row][k]);
            const double y = shouldBe.m[k][row];
            dot += x * y;
            a += x * x;
            b += y * y;
        }
        if (a > 0.0 && b > 0.0)
        {
            const double chord = std::sqrt(std::max(2.0 - 2.0 * dot / std::sqrt(a * b), 0.0));
            const double degrees = 2.0 * std::asin(std::min(chord / 2.0, 1.0)) * 180.0 / std::numbers::pi;
            difference.m_dDegrees = std::max(difference.m_dDegrees, degrees);
        }
    }
}

struct Box
{
    std::array<double, 6> m_values{1e300, 1e300, 1e300, 1e300, 1e300, 1e300};  // minima, negated maxima

    void add(double x, double y, double z)
    {
        const std::array<double, 6> point{x, y, z, -x, -y, -z};
        for (std::size_t i = 0; i < 6; ++i)
        {
            m_values[i] = std::min(m_values[i], point[i]);
        }
    }
    [[nodiscard]] double getDifference(const Box& other) const
    {
        double largest = 0.0;
        for (std::size_t i = 0; i < 6; ++i)
        {
            largest = std::max(largest, std::abs(m_values[i] - other.m_values[i]));
        }
        return largest;
    }
};

Difference compareClip(Played& played, const SceneOracle& oracle, const aiAnimation& clip, int index)
{
    const double ticksPerSecond = clip.mTicksPerSecond > 0.0 ? clip.mTicksPerSecond : 25.0;
    Difference difference;
    for (int k = 0; k < timesPerClip; ++k)
    {
        const double ticks = clip.mDuration * k / timesPerClip;
        EXPECT_TRUE(played.pose(index, ticks / ticksPerSecond));
        const std::vector<Matrix> world = oracle.getWorld(clip, ticks);
        for (std::size_t node = 0; node < world.size(); ++node)
        {
            compareNode(played.getSkeleton().getMesh(static_cast<unsigned int>(node))->getObjectToWorldMatrix(),
                        world[node], difference);
        }
        Box is;
        Box shouldBe;
        played.forEachVertex([&is](const Vector& v)
                             { is.add(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)); });
        oracle.forEachVertex(world, [&shouldBe](const std::array<double, 3>& v) { shouldBe.add(v[0], v[1], v[2]); });
        difference.m_dBox = std::max(difference.m_dBox, is.getDifference(shouldBe));
    }
    return difference;
}

void compareModel(const std::string& file)
{
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const aiScene* scene = nullptr;
    try
    {
        scene = importer.ReadFile(file, convert_test::importFlags);
    }
    catch (const std::exception&)
    {
        // Some importers throw on damaged files; the test of the command sees to those.
    }
    if (!scene || scene->mNumAnimations == 0)
    {
        return;
    }
    SCOPED_TRACE(file);
    const support::TemporaryDirectory directory;
    TW2::convert::Options options;
    options.m_import.m_eUp = TW2::convert::ImportOptions::UpAxis::Y;  // as it was imported
    const TW2::convert::Summary summary = TW2::convert::convertModel(file, directory.getPath().string(), options);
    Played played(summary.m_strScript, summary.m_bSkinned);
    const SceneOracle oracle(*scene);
    ASSERT_GE(played.getSkeleton().getTotalMeshes(), oracle.getNodeCount());
    ASSERT_EQ(summary.m_vecClips.size(), scene->mNumAnimations);
    for (unsigned int i = 0; i < scene->mNumAnimations; ++i)
    {
        const Difference difference =
            compareClip(played, oracle, *scene->mAnimations[i], summary.m_vecClips[i].m_iIndex);
        std::printf("%-58s %-24.24s %10.3g units (%5.2f of the tolerance) %8.3g degrees, box %10.3g\n",
                    file.substr(std::char_traits<char>::length(modelFolder) + 1).c_str(),
                    summary.m_vecClips[i].m_strName.c_str(), difference.m_dDistance,
                    difference.m_dDistance / summary.m_tolerance.m_dDistance, difference.m_dDegrees, difference.m_dBox);
        // A joint that turns half round from one sample to the next is beyond any frame rate: then the summary says how
        // far off the clip is, and that is what holds.
        const TW2::convert::PoseError& told = summary.m_vecClips[i].m_error;
        EXPECT_LE(difference.m_dDistance, std::max(summary.m_tolerance.m_dDistance, told.m_dDistance));
        EXPECT_LE(difference.m_dDegrees, std::max(summary.m_tolerance.m_dDegrees, told.m_dDegrees));
        EXPECT_LE(difference.m_dBox, 2.0 * summary.m_tolerance.m_dDistance);
        s_iBeyondTolerance += told.isWithin(summary.m_tolerance) ? 0 : 1;
    }
}
}  // namespace

TEST(ConvertedModels, MoveAsTheirChannelsSayWhoeverEvaluatesThem)
{
    if (!std::filesystem::is_directory(modelFolder))
    {
        GTEST_SKIP() << "the models of the package assimp-testmodels are not installed";
    }
    // Formats that can hold motion; the folder's other files are converted by the test of the command.
    const std::vector<std::string> folders{"3DS", "ASE", "BVH", "CSM",  "Collada", "FBX", "LWS", "MDL",
                                           "MD5", "SMD", "X",   "glTF", "glTF2",   "IQM", "B3D", "MS3D"};
    for (const std::string& folder : folders)
    {
        std::vector<std::string> files;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::filesystem::path(modelFolder) / folder))
        {
            Assimp::Importer importer;
            if (entry.is_regular_file() && entry.file_size() <= largestFile &&
                importer.IsExtensionSupported(entry.path().extension().string()))
            {
                files.push_back(entry.path().string());
            }
        }
        std::ranges::sort(files);
        for (const std::string& file : files)
        {
            compareModel(file);
        }
    }
    // Two motion captures that jump by more than 100 degrees within 1/120 second.
    EXPECT_LE(s_iBeyondTolerance, 2);
}
