#include "tests/motion/moving_files.h"
#include "tests/support/expectations.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/foot_planter.h>
#include <tw2/motion/reaching.h>
#include <tw2/object/object_animation.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace TW2;
using support::Matrix;
using support::MovingFiles;
using Vector = M_Vector3Template<float>;

namespace
{
Vector anyDirection(std::mt19937& random)
{
    std::normal_distribution<float> any;
    return Vector{any(random), any(random), any(random)}.normalized();
}

Matrix anyPlace(std::mt19937& random, const Vector& position)
{
    const Vector axis = anyDirection(random);
    Matrix m = support::rotation(static_cast<double>(axis.x), static_cast<double>(axis.y), static_cast<double>(axis.z),
                                 std::uniform_real_distribution<double>(0.0, 3.0)(random));
    m.setTranslation(position);
    return m;
}

/// An arm: three matrices, the bones of the given lengths.
struct Arm
{
    Arm(std::mt19937& random, float upperLength, float lowerLength)
        : upper(anyPlace(random, anyDirection(random) * 3.0f)),
          middle(anyPlace(random, upper.getTranslation() + anyDirection(random) * upperLength)),
          end(anyPlace(random, middle.getTranslation() + anyDirection(random) * lowerLength)),
          lengths{upperLength, lowerLength}
    {
    }
    float reach(const TW_TwoBoneReach& to) { return reachTwoBones(upper, middle, end, to); }
    void expectBonesOfTheirLengths() const
    {
        EXPECT_NEAR((middle.getTranslation() - upper.getTranslation()).length(), lengths[0], 2e-6f);
        EXPECT_NEAR((end.getTranslation() - middle.getTranslation()).length(), lengths[1], 2e-6f);
    }

    Matrix upper;
    Matrix middle;
    Matrix end;
    float lengths[2];
};

/// Bones of half a unit, each turned in any way, that go up but for chance.
std::vector<Matrix> anyChain(std::mt19937& random, std::size_t count)
{
    std::vector<Matrix> chain{anyPlace(random, {})};
    while (chain.size() < count)
    {
        const Vector way = (anyDirection(random) * 0.8f + Vector{0, 1, 0}).normalized();
        chain.push_back(anyPlace(random, chain.back().getTranslation() + way * 0.5f));
    }
    return chain;
}

void expectRigid(const Matrix& m)
{
    for (int r = 0; r < 3; ++r)
    {
        EXPECT_NEAR(m.getRow(r).length(), 1.0f, 2e-6f);
        EXPECT_NEAR(m.getRow(r).dot(m.getRow((r + 1) % 3)), 0.0f, 2e-6f);
    }
}

float angleBetween(const Vector& a, const Vector& b)
{
    return std::atan2(a.cross(b).length(), a.dot(b)) * 57.29578f;
}
}  // namespace

TEST(TwoBoneReach, HitsWhatItCanHitAndStretchesOrFoldsTowardsTheRest)
{
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i)
    {
        const float upper = std::uniform_real_distribution<float>(0.2f, 1.5f)(random);
        const float lower = std::uniform_real_distribution<float>(0.2f, 1.5f)(random);
        const float length = upper + lower;
        Arm arm(random, upper, lower);
        const Arm before = arm;
        const float distance = std::uniform_real_distribution<float>(0.0f, 1.3f * length)(random);
        const Vector target = arm.upper.getTranslation() + anyDirection(random) * distance;
        const Vector pole = i % 3 == 0 ? Vector{} : anyDirection(random);
        const float left = arm.reach({.target = target, .pole = pole});
        const float possible = std::max({0.0f, distance - length, std::abs(upper - lower) - distance});
        EXPECT_NEAR((arm.end.getTranslation() - target).length(), possible, 1e-5f * length) << i;
        EXPECT_NEAR(left, possible, 1e-5f * length);
        arm.expectBonesOfTheirLengths();
        for (const Matrix* m : {&arm.upper, &arm.middle, &arm.end})
        {
            expectRigid(*m);
        }
        EXPECT_EQ(arm.upper.getTranslation(), before.upper.getTranslation());
        // The joint as its bone sees it stays where it is.
        const auto seen = [](const Matrix& from, const Vector& p)
        { return (Matrix::translation(p) * from.inverse()).getTranslation(); };
        EXPECT_LT((seen(arm.upper, arm.middle.getTranslation()) - seen(before.upper, before.middle.getTranslation()))
                      .length(),
                  1e-5f);
        EXPECT_LT(
            (seen(arm.middle, arm.end.getTranslation()) - seen(before.middle, before.end.getTranslation())).length(),
            1e-5f);
    }
}

TEST(TwoBoneReach, TheMiddleJointPointsAlongThePoleAndItsHingeStaysInThePlane)
{
    std::mt19937 random(2);
    for (int i = 0; i < 500; ++i)
    {
        Arm arm(random, 1.0f, 0.8f);
        const Vector shoulder = arm.upper.getTranslation();
        const Vector towards = anyDirection(random);
        Vector pole = anyDirection(random);
        pole = (pole - towards * towards.dot(pole)).normalized();
        arm.reach({.target = shoulder + towards * 1.2f, .pole = pole});
        const Vector elbow = arm.middle.getTranslation() - shoulder;
        const Vector bend = (elbow - towards * towards.dot(elbow)).normalized();
        EXPECT_LT(angleBetween(bend, pole), 0.05f);
        Arm turned = arm;
        turned.reach({.target = shoulder + towards * 1.2f, .pole = pole, .twist = 30.0f});
        const Vector other = turned.middle.getTranslation() - shoulder;
        EXPECT_NEAR(angleBetween(bend, other - towards * towards.dot(other)), 30.0f, 0.1f);
        EXPECT_GT(towards.dot(bend.cross(other)), 0.0f) << "counter-clockwise";
        // Reaching for where it is changes nothing.
        Arm same = arm;
        same.reach({.target = arm.end.getTranslation()});
        EXPECT_LT(support::getDifference({same.upper, same.middle, same.end}, {arm.upper, arm.middle, arm.end}), 2e-5f);
        // Half the weight is half of each turn.
        Arm half = arm;
        const Vector target = shoulder + anyDirection(random);
        half.reach({.target = target, .weight = 0.5f});
        Arm whole = arm;
        whole.reach({.target = target});
        const TW_Rotation from = TW_Rotation::ofMatrix(arm.upper).inverse();
        EXPECT_NEAR((from * TW_Rotation::ofMatrix(half.upper)).getDegrees(),
                    0.5 * (from * TW_Rotation::ofMatrix(whole.upper)).getDegrees(), 0.01);
        Arm none = arm;
        none.reach({.target = target, .weight = 0.0f});
        EXPECT_LT(support::getDifference({none.middle, none.end}, {arm.middle, arm.end}), 1e-6f);
    }
}

TEST(TwoBoneReach, SoftnessSlowsTheEndBeforeFullStretch)
{
    std::mt19937 random(3);
    const Arm arm(random, 1.0f, 1.0f);
    const Vector shoulder = arm.upper.getTranslation();
    float before = 0.0f;
    for (float d = 1.0f; d < 6.0f; d += 0.01f)
    {
        Arm soft = arm;
        soft.reach({.target = shoulder + Vector{d, 0, 0}, .softness = 0.2f});
        const float reached = (soft.end.getTranslation() - shoulder).length();
        // Straight up to 1.6; then 1.6 + 0.4 x / (0.4 + x).
        const float x = d - 1.6f;
        EXPECT_NEAR(reached, x < 0 ? d : 1.6f + 0.4f * x / (0.4f + x), 1e-5f) << d;
        EXPECT_GT(reached, before);
        before = reached;
    }
}

TEST(TwoBoneReach, ItsAnswerHasNoJumps)
{
    std::mt19937 random(4);
    // Along lines through and around everything special: full stretch, the shoulder's reach, the pole's direction.
    for (int line = 0; line < 60; ++line)
    {
        const Arm arm(random, 1.0f, 0.7f);
        const Vector shoulder = arm.upper.getTranslation();
        const Vector from = anyDirection(random) * 2.5f;
        const Vector to = anyDirection(random) * 2.5f;
        const Vector pole =
            line % 2 == 0 ? anyDirection(random) : (from + (to - from) * 0.5f + anyDirection(random) * 0.2f);
        const float nearest = (from - (to - from) * (from.dot(to - from) / (to - from).lengthSquared())).length();
        Arm last = arm;
        constexpr int steps = 20000;
        for (int i = 0; i <= steps && nearest > 0.4f; ++i)
        {
            Arm now = arm;
            const Vector at = from + (to - from) * (static_cast<float>(i) / steps);
            now.reach({.target = shoulder + at, .pole = pole});
            const float fromPole = angleBetween(at, pole);
            if (i > 0 && fromPole > 3.0f && fromPole < 177.0f)
            {
                ASSERT_LT((now.middle.getTranslation() - last.middle.getTranslation()).length(), 0.03f)
                    << line << " " << i;
            }
            last = now;
        }
    }
}

TEST(TwoBoneReach, DegenerateAndMirroredArmsHaveAnAnswer)
{
    std::mt19937 random(5);
    const float inline2 = 1.0f;
    for (const float lower : {1.0f, 0.0f})
    {
        for (const Vector& target :
             {Vector{0, 0, 0}, Vector{0, 2, 0}, Vector{0, -2, 0}, Vector{0, 1, 0}, Vector{1, 0, 0}, Vector{0, 9, 0}})
        {
            // A straight arm: nothing tells where it bends.
            Matrix upper;
            Matrix middle = Matrix::translation({0, inline2, 0});
            Matrix end = Matrix::translation({0, inline2 + lower, 0});
            reachTwoBones(upper, middle, end, {.target = target, .pole = {0, 1, 0}});
            EXPECT_TRUE(support::isFinite(upper) && support::isFinite(middle) && support::isFinite(end));
            expectRigid(upper);
            expectRigid(middle);
            if (lower > 0.0f)
            {
                EXPECT_NEAR((end.getTranslation() - target).length(), std::max(0.0f, target.length() - 2.0f), 2e-5f);
            }
        }
    }
    // A mirrored arm does what the arm does in the mirror.
    for (int i = 0; i < 100; ++i)
    {
        Arm arm(random, 1.0f, 0.8f);
        const auto mirror = [](const Matrix& m)
        {
            Matrix result = m;
            for (int r = 0; r < 4; ++r)
            {
                result.m[r][0] = -m.m[r][0];
            }
            return result;
        };
        Arm mirrored = arm;
        mirrored.upper = mirror(arm.upper);
        mirrored.middle = mirror(arm.middle);
        mirrored.end = mirror(arm.end);
        const Vector target = arm.upper.getTranslation() + anyDirection(random);
        const Vector pole = anyDirection(random);
        arm.reach({.target = target, .pole = pole});
        mirrored.reach({.target = {-target.x, target.y, target.z}, .pole = {-pole.x, pole.y, pole.z}});
        EXPECT_LT(support::getDifference({mirror(arm.upper), mirror(arm.middle)}, {mirrored.upper, mirrored.middle}),
                  1e-5f);
    }
}

TEST(Aim, AChainLooksAtItsTargetWithinItsLimits)
{
    std::mt19937 random(6);
    for (int i = 0; i < 400; ++i)
    {
        std::vector<Matrix> chain;
        for (int bone = 0; bone < 3; ++bone)
        {
            chain.push_back(anyPlace(random, {0, 0.3f * static_cast<float>(bone), 0}));
        }
        const std::vector<Matrix> before = chain;
        const Vector forward{0.0f, 0.6f, 0.8f};
        const Vector eye{0.05f, 0.0f, 0.1f};
        const Vector look = before[2].transformDirection(forward);
        Vector side = anyDirection(random);
        side = (side - look * look.dot(side)).normalized();
        const float angle = std::uniform_real_distribution<float>(0.0f, 2.4f)(random);
        const Vector target = before[2].getTranslation() + (look * std::cos(angle) + side * std::sin(angle)) * 5.0f;
        const float left = aimChain(chain.data(), 3, {.target = target, .forward = forward, .eye = eye});
        EXPECT_LT(left, 1e-3f) << i;
        const Vector view = chain[2].transformDirection(forward);
        EXPECT_LT(angleBetween(view, target - chain[2].transformPoint(eye)), 0.01f);
        std::ranges::for_each(chain, expectRigid);
        const double turned =
            (TW_Rotation::ofMatrix(before[0]).inverse() * TW_Rotation::ofMatrix(chain[0])).getDegrees();
        EXPECT_NEAR(turned, static_cast<double>(angle) * 57.29578 / 3.0, 2.5) << "the first of three takes a third";

        chain = before;
        aimChain(chain.data(), 3, {.target = target, .forward = forward, .limit = 10.0f});
        const TW_Rotation all = TW_Rotation::ofMatrix(before[2]).inverse() * TW_Rotation::ofMatrix(chain[2]);
        EXPECT_LT(all.getDegrees(), 30.01);
        if (angle > 0.7f && angle < 2.4f)
        {
            EXPECT_NEAR(all.getDegrees(), 30.0, 0.7);
        }
    }
}

TEST(Aim, AChainOfNoneOrOfMoreThanSixtyFourBonesStays)
{
    for (const std::size_t count : {std::size_t{0}, std::size_t{65}})
    {
        std::vector<Matrix> chain(65);
        EXPECT_EQ(aimChain(chain.data(), count, {.target = {5, 0, 0}}), 0.0f);
        EXPECT_EQ(chain, std::vector<Matrix>(65));
    }
}

TEST(Aim, ATargetBehindIsGivenUpWithoutAJump)
{
    Vector last{0, 0, 1};
    for (int i = 0; i <= 3600; ++i)
    {
        Matrix head[2] = {Matrix(), Matrix::translation({0, 0.2f, 0})};
        const float angle = static_cast<float>(i) * 0.1f * 0.0174532925f;
        aimChain(head, 2, {.target = {10.0f * std::sin(angle), 0.2f, 10.0f * std::cos(angle)}, .limit = 50.0f});
        const Vector view = head[1].getRow(2);
        EXPECT_LT(angleBetween(view, last), 1.2f) << i;
        last = view;
        if (i == 1800)
        {
            EXPECT_LT(angleBetween(view, {0, 0, 1}), 0.5f);
        }
        if (i == 450)
        {
            EXPECT_LT(angleBetween(view, {0.70710678f, 0, 0.70710678f}), 0.5f);
        }
    }
}

TEST(ChainReach, BendsSoThatItsTipComesToTheTarget)
{
    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i)
    {
        const std::size_t count = 3 + random() % 8;
        std::vector<Matrix> chain = anyChain(random, count);
        const float length = 0.5f * static_cast<float>(count - 1);
        const float distance = std::uniform_real_distribution<float>(0.1f, 1.2f)(random) * length;
        const Vector target = anyDirection(random) * distance;
        const float left = reachChain(chain.data(), count, {.target = target});
        EXPECT_NEAR((chain.back().getTranslation() - target).length(), std::max(0.0f, distance - length),
                    (distance < 0.98f * length ? 1e-3f : 1e-2f) * length)
            << i << " " << distance / length;
        EXPECT_NEAR(left, (chain.back().getTranslation() - target).length(), 1e-5f);
        for (std::size_t bone = 0; bone + 1 < count; ++bone)
        {
            expectRigid(chain[bone]);
            EXPECT_NEAR((chain[bone + 1].getTranslation() - chain[bone].getTranslation()).length(), 0.5f, 5e-6f);
        }
    }
    // Straight, and the target on its line.
    std::vector<Matrix> straight;
    for (int bone = 0; bone < 5; ++bone)
    {
        straight.push_back(Matrix::translation({0, static_cast<float>(bone), 0}));
    }
    EXPECT_LT(reachChain(straight.data(), 5, {.target = {0, 2, 0}}), 4e-3f);
}

TEST(ChainReach, BonesCarryWhatHangsOnThemAndTheWeightLeadsThereWithoutAJump)
{
    // Where the next bone stands in a bone's own axes, in double precision.
    const auto hangsAt = [](const Matrix& bone, const Matrix& next)
    { return (TW_Travel::ofMatrix(next) * TW_Travel::ofMatrix(bone).inverse()).m_vTranslation; };
    std::mt19937 random(12);
    for (int i = 0; i < 60; ++i)
    {
        constexpr std::size_t count = 6;
        const std::vector<Matrix> chain = anyChain(random, count);
        const Vector target = anyDirection(random) * std::uniform_real_distribution<float>(0.3f, 2.2f)(random);
        std::vector<Matrix> last = chain;
        constexpr int steps = 200;
        for (int step = 0; step <= steps; ++step)
        {
            std::vector<Matrix> now = chain;
            const float left = reachChain(
                now.data(), count, {.target = target, .weight = static_cast<float>(step) / static_cast<float>(steps)});
            EXPECT_NEAR(left, (now.back().getTranslation() - target).length(), 1e-5f);
            EXPECT_EQ(now[0].getTranslation(), chain[0].getTranslation());
            for (std::size_t bone = 0; bone + 1 < count; ++bone)
            {
                EXPECT_LT((hangsAt(now[bone], now[bone + 1]) - hangsAt(chain[bone], chain[bone + 1])).length(), 3e-6);
                // Half a turn of every bone above it, in even steps, is the most that a bone can come to.
                ASSERT_LT((now[bone + 1].getTranslation() - last[bone + 1].getTranslation()).length(),
                          6.3f * 0.5f * static_cast<float>((bone + 1) * (bone + 2)) / static_cast<float>(steps))
                    << i << " " << step << " " << bone;
            }
            last = now;
        }
    }
}

TEST(BoneChain, ReachesInTheWorldWhereverTheObjectStands)
{
    const MovingFiles files(6);
    const auto object = files.build();
    std::mt19937 random(8);
    for (const bool mirrored : {false, true})
    {
        Matrix place = anyPlace(random, {30.0f, -4.0f, 17.0f});
        if (mirrored)
        {
            place.setRow(0, -place.getRow(0));
        }
        object->setMatrix(place);
        object->animateObjectFrame(0, 0.0f, nullptr);
        TW_BoneChain arm(*object, "BONE1", "bone4");
        ASSERT_EQ(arm.getBoneCount(), 4u);
        EXPECT_EQ(arm.getBone(3), 4u);
        for (int i = 0; i < 100; ++i)
        {
            for (unsigned int bone = 0; bone < 6; ++bone)
            {
                Matrix local = anyPlace(random, {0, bone > 0 ? 1.0f : 0.0f, 0});
                object->getMesh(bone)->setMatrix(local);
            }
            const Vector base = object->getMesh(1)->getObjectToWorldMatrix().getTranslation();
            const Vector target = base + anyDirection(random) * 1.4f;
            const float folded = (object->getMesh(4)->getObjectToWorldMatrix().getTranslation() -
                                  object->getMesh(2)->getObjectToWorldMatrix().getTranslation())
                                     .length();
            const float left = arm.reachTwoBones({.target = target, .pole = anyDirection(random)});
            const Vector tip = object->getMesh(4)->getObjectToWorldMatrix().getTranslation();
            EXPECT_NEAR(left, std::max({0.0f, std::abs(1.0f - folded) - 1.4f, 1.4f - 1.0f - folded}), 2e-5f);
            EXPECT_NEAR((tip - target).length(), left, 3e-5f);
            EXPECT_LT((arm.getTipPosition() - TW_Travel::ofMatrix(Matrix::translation(tip)).m_vTranslation).length(),
                      1e-4);
            expectRigid(object->getMesh(1)->getMatrix());
            EXPECT_EQ(object->getMesh(2)->getMatrix().getTranslation(), (Vector{0, 1, 0})) << "bones keep their places";

            EXPECT_LT(arm.aim({.target = base + anyDirection(random) * 40.0f, .behind = 0.0f}), 0.01f);
            const float most = arm.reach({.target = base + anyDirection(random) * 1.5f});
            EXPECT_LT(most, 0.01f);

            const TW_Rotation turn = TW_Rotation::ofMatrix(anyPlace(random, {}));
            const Matrix turning = TW_Travel{turn, {}}.toMatrix();
            const Matrix stood = object->getMesh(4)->getObjectToWorldMatrix();
            arm.turnTip(turn);
            const Matrix turned = object->getMesh(4)->getObjectToWorldMatrix();
            for (int r = 0; r < 3; ++r)
            {
                EXPECT_LT((turned.getRow(r) - turning.transformDirection(stood.getRow(r))).length(), 1e-4f);
            }
            EXPECT_LT((turned.getTranslation() - stood.getTranslation()).length(), 1e-4f);
        }
    }
    EXPECT_THROW(TW_BoneChain(*object, "bone4", "bone1"), TW_Exception_InvalidMotion);
    EXPECT_THROW(TW_BoneChain(*object, "bone4", "tail"), TW_Exception_BoneNotFound);
}

namespace
{
/// A slope that rises along x, and a hole somewhere.
struct Slope : TW_GroundCallback
{
    TW_GroundPoint operator()(const Vector& foot) override
    {
        ++m_iAsked;
        const Vector normal = Vector{-m_fRise, 1.0f, 0.0f}.normalized();
        return {m_fHeight + m_fRise * foot.x, normal, !m_bHole};
    }
    float m_fRise = 0.0f;
    float m_fHeight = 0.0f;
    bool m_bHole = false;
    int m_iAsked = 0;
};

/// Pelvis at 1.7, two legs a metre apart, thigh and shin 0.9 long and a little bent, feet at 0.
struct Walker
{
    Walker()
    {
        m_files.addMesh("pelvis", "", Matrix::translation({0, 1.7f, 0}));
        for (const char* side : {"_left", "_right"})
        {
            const float x = side[1] == 'l' ? -0.5f : 0.5f;
            m_files.addMesh(std::string("thigh") + side, "pelvis", Matrix::translation({x, 0, 0}));
            m_files.addMesh(std::string("shin") + side, std::string("thigh") + side,
                            Matrix::translation({0, -0.85f, 0.3f}));
            m_files.addMesh(std::string("foot") + side, std::string("shin") + side,
                            Matrix::translation({0, -0.75f, -0.3f}));
        }
        m_object = m_files.build();
    }
    [[nodiscard]] Vector place(const char* bone) const
    {
        return m_object->getMeshByName(bone)->getObjectToWorldMatrix().getTranslation();
    }

    support::ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST(FootPlanter, FeetStandOnASlopeAndThePelvisGoesWithTheLowerOne)
{
    const TW_Leg legs[] = {{"thigh_left", "foot_left", 0.1f}, {"thigh_right", "foot_right", 0.1f}};
    for (const float rise : {0.0f, 0.2f, -0.3f, 0.5f})
    {
        const Walker walker;
        walker.m_object->setMatrix(Matrix::translation({3.0f, 2.0f, 0.0f}));
        TW_FootPlanter feet(*walker.m_object, "pelvis", legs, 2);
        const Vector left = walker.place("foot_left");
        const Vector right = walker.place("foot_right");
        Slope ground;
        ground.m_fRise = rise;
        ground.m_fHeight = 2.0f - rise * 3.0f;
        const float shift = feet.plant(ground, {});
        EXPECT_EQ(ground.m_iAsked, 2);
        EXPECT_NEAR(shift, -std::abs(rise) * 0.5f, 1e-5f);
        EXPECT_NEAR(walker.place("pelvis").y, 3.7f + shift, 1e-5f);
        EXPECT_LT((walker.place("foot_left") - (left + Vector{0, rise * -0.5f, 0})).length(), 2e-5f) << rise;
        EXPECT_LT((walker.place("foot_right") - (right + Vector{0, rise * 0.5f, 0})).length(), 2e-5f) << rise;
        // The right foot of this slope stands: its up is the ground's.
        const Vector up = walker.m_object->getMeshByName("foot_right")->getObjectToWorldMatrix().getRow(1);
        EXPECT_LT(angleBetween(up, {-rise, 1.0f, 0.0f}), 0.1f);
        EXPECT_GT(walker.place("shin_left").z, 0.1f) << "knees bend as they did";
        EXPECT_LT(feet.getLeft(0) + feet.getLeft(1), 4e-5f);
        // Legs in a list and a function for the ground are the same.
        const Walker other;
        other.m_object->setMatrix(Matrix::translation({3.0f, 2.0f, 0.0f}));
        TW_FootPlanter same(*other.m_object, "pelvis",
                            {{"thigh_left", "foot_left", 0.1f}, {"thigh_right", "foot_right", 0.1f}});
        EXPECT_EQ(same.plant([&ground](const Vector& foot) { return ground(foot); }), shift);
        EXPECT_TRUE(support::isSame(support::takePose(*other.m_object), support::takePose(*walker.m_object)));
    }
}

TEST(FootPlanter, CorrectionsAreBoundedAndStopWhereThereIsNoGround)
{
    const TW_Leg legs[] = {{"thigh_left", "foot_left", 0.1f}, {"thigh_right", "foot_right", 0.1f}};
    const Walker walker;
    TW_FootPlanter feet(*walker.m_object, "pelvis", legs, 2);
    Slope ground;
    ground.m_fHeight = -100.0f;
    const float leg = std::sqrt(0.85f * 0.85f + 0.09f) + std::sqrt(0.75f * 0.75f + 0.09f);
    EXPECT_NEAR(feet.plant(ground, {.most = 0.1f}), -0.1f * leg, 1e-5f);
    const Walker other;
    TW_FootPlanter idle(*other.m_object, "pelvis", legs, 2);
    const auto before = support::takePose(*other.m_object);
    ground.m_bHole = true;
    EXPECT_EQ(idle.plant(ground, {}), 0.0f);
    EXPECT_LT(support::getDifference(support::takePose(*other.m_object), before), 1e-6f);
    ground.m_bHole = false;
    for (const auto& [height, rise] : {std::pair{std::nanf(""), 0.0f}, {HUGE_VALF, 0.0f}, {0.0f, std::nanf("")}})
    {
        ground.m_fHeight = height;
        ground.m_fRise = rise;
        EXPECT_EQ(idle.plant(ground, {}), 0.0f) << "no number is no ground";
        EXPECT_LT(support::getDifference(support::takePose(*other.m_object), before), 1e-6f);
    }
    const TW_Leg wrong[] = {{"shin_left", "foot_left"}};
    EXPECT_EQ(support::messageOf([&] { TW_FootPlanter(*other.m_object, "pelvis", wrong, 1); }),
              "TW2: Motion of \"" + std::string(other.m_object->getName()) +
                  "\": expected a bone between \"shin_left\" and \"foot_left\"");
}
