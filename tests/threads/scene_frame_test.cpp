#include "tests/support/threads.h"
#include "tests/threads/players.h"

#include <platform/scene/camera.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace TW2;

namespace
{
constexpr std::size_t threadCount = 3;
constexpr std::size_t crowdSize = 30;
constexpr int frameCount = 12;

/// Shares out work to threads that are made for it.
void shareOut(std::size_t count, const std::function<void(std::size_t)>& body)
{
    support::runOnThreads(threadCount,
                          [&](std::size_t t)
                          {
                              for (std::size_t i = t; i < count; i += threadCount)
                              {
                                  body(i);
                              }
                          });
}

/// A crowd in a scene: characters alone, some on one skeleton, some with bounding volumes that take them out of view,
/// below a parent that moves; and objects between them whose calls move, add and take out others.
class Stage
{
public:
    explicit Stage(const Prototypes& prototypes) : m_scene(&m_context)
    {
        m_camera.lookAt({0.0F, 0.0F, -20.0F}, {0.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
        m_camera.addTo(&m_scene);
        m_context.setCurrentCamera(&m_camera);
        m_parent.addTo(&m_scene);
        for (std::size_t i = 0; i < crowdSize; ++i)
        {
            std::unique_ptr<TW_VertexAnimation> character;
            if (i % 5 == 4)
            {
                character = std::make_unique<TW_VertexAnimation>(m_crowd.back().get(), *prototypes.skinned, nullptr);
            }
            else
            {
                character = std::make_unique<TW_VertexAnimation>(*prototypes.skinned);
            }
            if (i % 3 == 0)
            {
                character->getSkin()->setManualBoundingSphereRadius(2.0F);
                character->getSkin()->setUseManualBoundingSphere(true);
                character->getSkin()->setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
            }
            character->addTo(i % 2 ? static_cast<P_ObjectContainer*>(&m_parent) : &m_scene);
            m_crowd.push_back(std::move(character));
            if (i % 10 == 5)
            {
                m_meddlers.push_back(std::make_unique<Meddler>(*this, i));
                m_meddlers.back()->addTo(&m_scene);
            }
        }
    }

    /// One frame, and all that can be told of it.
    std::string play(int frame, const P_ParallelFor& parallelFor)
    {
        m_seen = "frame " + std::to_string(frame) + ':';
        for (std::size_t i = 0; i < crowdSize; ++i)
        {
            if ((i + static_cast<std::size_t>(frame)) % 4 != 0)  // some stand still
            {
                m_crowd[i]->animateObjectFrame(1, static_cast<float>(frame) + 0.3F * static_cast<float>(i), nullptr);
            }
            if (i % 7 == 1)
            {
                m_crowd[i]->setPosition(static_cast<float>(frame * 3 - 15), 0.0F, static_cast<float>(i));
            }
        }
        m_parent.setPosition(0.1F * static_cast<float>(frame), 0.0F, 0.0F);
        m_scene.executeFrame(parallelFor);
        for (const P_VirtualObject* mesh : m_scene.getVisibleMeshes())
        {
            m_seen += std::string(" sees ") + mesh->getName().c_str();
        }
        for (const auto& character : m_crowd)
        {
            std::string bytes;
            for (int bone = 0; bone < character->getBoneMatrixCount(); ++bone)
            {
                const auto& matrix = character->getBoneMatrix(bone);
                bytes.append(reinterpret_cast<const char*>(matrix.data()), sizeof(matrix));
            }
            m_seen += "\n" + std::to_string(&character - m_crowd.data()) + ": bones " +
                      std::to_string(std::hash<std::string>()(bytes));
        }
        return m_seen;
    }

private:
    /// Moves the character after the next in its call, pulls a bone of another, and takes one out every other
    /// frame.
    class Meddler : public P_BaseObject
    {
    public:
        Meddler(Stage& stage, std::size_t place) : m_stage(stage), m_uPlace(place) {}
        [[nodiscard]] P_Context* getContext() const override { return getStoredContext(); }

    protected:
        bool executeAlways() override
        {
            auto& crowd = m_stage.m_crowd;
            m_stage.m_seen += " call " + std::to_string(m_uPlace);
            crowd[(m_uPlace + 2) % crowdSize]->animateObjectFrame(0, 3.0F + static_cast<float>(m_uPlace), nullptr);
            crowd[(m_uPlace + 3) % crowdSize]->getMesh(2)->setMatrix(
                M_Matrix4x3Template<float>::translation({static_cast<float>(++m_iCalls), 0.0F, 0.0F}));
            TW_VertexAnimation& other = *crowd[m_uPlace];  // has had its turn: hangs below the parent
            if (other.getScene())
            {
                other.remove();
            }
            else
            {
                other.addTo(&m_stage.m_parent);
            }
            return false;
        }

    private:
        Stage& m_stage;
        std::size_t m_uPlace;
        int m_iCalls = 0;
    };

    P_Context m_context;
    P_Scene m_scene;
    P_Camera m_camera;
    P_VirtualObject m_parent;
    std::vector<std::unique_ptr<TW_VertexAnimation>> m_crowd;
    std::vector<std::unique_ptr<Meddler>> m_meddlers;
    std::string m_seen;
};
}  // namespace

TEST(SceneFrames, OnThreadsOfTheHostAreWhatTheyAreOnOne)
{
    const Prototypes prototypes;
    Stage alone(prototypes);
    Stage shared(prototypes);
    std::size_t shares = 0;
    const P_ParallelFor parallelFor = [&shares](std::size_t count, const std::function<void(std::size_t)>& body)
    {
        shares += count;
        shareOut(count, body);
    };
    for (int frame = 0; frame < frameCount; ++frame)
    {
        ASSERT_EQ(alone.play(frame, nullptr), shared.play(frame, parallelFor)) << "frame " << frame;
    }
    EXPECT_GT(shares, static_cast<std::size_t>(2 * frameCount)) << "the work was shared out";
}

TEST(SceneFrames, OnThreadsComputeTheBoneMatricesAheadAndOnce)
{
    const Prototypes prototypes;
    P_Scene scene;
    TW_VertexAnimation character(*prototypes.skinned);
    character.addTo(&scene);
    character.animateObjectFrame(1, 4.0F, nullptr);
    M_Matrix4x3Template<float> ahead;
    const auto watch = [&](std::size_t count, const std::function<void(std::size_t)>& body)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            body(i);
        }
        ahead = character.getBoneMatrix(5);
        // Something that no call can see: what was prepared is not computed again.
        const_cast<M_Matrix4x3Template<float>&>(character.getBoneMatrix(5)).m[3][0] += 1.0F;
    };
    scene.executeFrame(watch);
    EXPECT_EQ(character.getBoneMatrix(5).m[3][0], ahead.m[3][0] + 1.0F);
    TW_VertexAnimation other(*prototypes.skinned);
    P_Scene plain;
    other.addTo(&plain);
    other.animateObjectFrame(1, 4.0F, nullptr);
    plain.executeFrame();
    EXPECT_EQ(other.getBoneMatrix(5), ahead);

    character.remove();
    bool asked = false;
    scene.executeFrame(
        [&asked](std::size_t count, const std::function<void(std::size_t)>&)
        {
            asked = true;
            EXPECT_EQ(count, 0u) << "what has left the scene is not prepared";
        });
    EXPECT_TRUE(asked);
}
