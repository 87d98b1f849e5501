#include "test_object.h"

#include <platform/math/matrix4x3_product.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
/// A forest of objects beside a model of it that knows only local matrices and parents, and computes the rest anew in
/// double precision each time.
class Forest
{
public:
    explicit Forest(unsigned int seed, std::size_t count) : m_dice(seed)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            plant(i);
        }
    }

    void step()
    {
        const std::size_t i = m_dice.pick(m_nodes.size());
        switch (m_dice.pick(12))
        {
            case 0:
                setLocal(i, m_dice.matrix(3.0f));
                break;
            case 1:
                m_nodes[i].m_object->setPosition(m_nodes[i].m_local.m[3][0] = m_dice.number(-3.0f, 3.0f),
                                                 m_nodes[i].m_local.m[3][1], m_nodes[i].m_local.m[3][2]);
                break;
            case 2:
            case 3:
                hang(i, m_dice.pick(m_nodes.size()));
                break;
            case 4:
                m_nodes[i].m_object->remove();
                m_nodes[i].m_parent = -1;
                break;
            case 5:
                replace(i);
                break;
            case 6:
                adopt(*m_blocks[m_dice.pick(2)]);
                break;
            case 7:
                leaveBlock(i);
                break;
            case 8:
                writePose(*m_blocks[m_dice.pick(2)]);
                break;
            case 9:
                checkMatrices(i);
                break;
            case 10:
                m_blocks[m_dice.pick(2)] = std::make_unique<P_TransformBlock>();  // its members stay where they are
                break;
            default:
                updateBlock(*m_blocks[m_dice.pick(2)]);
        }
        checkMarks();
    }

    void checkAll()
    {
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
        {
            checkMatrices(i);
        }
    }

private:
    struct Node
    {
        std::unique_ptr<TestObject> m_object;
        Matrix m_local;
        int m_parent = -1;
    };

    void plant(std::size_t i)
    {
        m_nodes.resize(std::max(m_nodes.size(), i + 1));
        m_nodes[i] = {std::make_unique<TestObject>(), {}, -1};
        setLocal(i, m_dice.matrix(3.0f));
    }

    void setLocal(std::size_t i, const Matrix& local)
    {
        m_nodes[i].m_local = local;
        const bool before = m_dice.chance(0.5);
        if (before)
        {
            m_nodes[i].m_object->invalidateMatrices();
        }
        m_nodes[i].m_object->accessMatrix() = local;
        if (!before)
        {
            m_nodes[i].m_object->invalidateMatrices();
        }
    }

    bool isBelow(std::size_t i, std::size_t ancestor) const
    {
        for (int at = static_cast<int>(i); at >= 0; at = m_nodes[static_cast<std::size_t>(at)].m_parent)
        {
            if (at == static_cast<int>(ancestor))
            {
                return true;
            }
        }
        return false;
    }

    void hang(std::size_t i, std::size_t parent)
    {
        if (isBelow(parent, i))
        {
            EXPECT_THROW(m_nodes[i].m_object->addTo(m_nodes[parent].m_object.get()), P_SceneException);
            return;
        }
        m_nodes[i].m_object->addTo(m_nodes[parent].m_object.get());
        m_nodes[i].m_parent = static_cast<int>(parent);
    }

    /// Destroys object i and puts a new one, or a copy of another, in its place.
    void replace(std::size_t i)
    {
        for (Node& node : m_nodes)
        {
            if (node.m_parent == static_cast<int>(i))
            {
                node.m_parent = -1;
            }
        }
        if (m_dice.chance(0.5))
        {
            plant(i);
            return;
        }
        const std::size_t source = m_dice.pick(m_nodes.size());
        auto copy = std::make_unique<TestObject>(*m_nodes[source].m_object);
        EXPECT_EQ(copy->getTransformBlock(), nullptr);
        m_nodes[i] = {std::move(copy), m_nodes[source].m_local, -1};
    }

    void adopt(P_TransformBlock& block)
    {
        std::vector<P_BaseObject*> members;
        for (const Node& node : m_nodes)
        {
            if (m_dice.chance(0.6))
            {
                members.push_back(node.m_object.get());
            }
        }
        if (m_dice.chance(0.5))
        {
            for (std::size_t i = members.size(); i > 1; --i)
            {
                std::swap(members[i - 1], members[m_dice.pick(i)]);
            }
        }
        const bool oneByOne = m_dice.chance(0.5);
        if (oneByOne)
        {
            block.release();
            for (P_BaseObject* member : members)
            {
                block.append(*member);
            }
            EXPECT_TRUE(members.empty() || block.getObject(0) == members[0]);
            if (m_dice.chance(0.5))
            {
                block.shrinkToFit();
            }
        }
        else
        {
            members.insert(members.begin() + static_cast<std::ptrdiff_t>(m_dice.pick(members.size() + 1)), nullptr);
            block.adopt(members.data(), members.size());
        }
        for (std::size_t i = 0; i < members.size(); ++i)
        {
            EXPECT_EQ(block.getObject(static_cast<unsigned int>(i)), members[i]);
        }
    }

    void leaveBlock(std::size_t i)
    {
        TestObject& object = *m_nodes[i].m_object;
        if (P_TransformBlock* block = object.getTransformBlock())
        {
            const unsigned int place = object.getTransformBlockIndex();
            block->release(object);
            EXPECT_EQ(block->getObject(place), nullptr);
        }
    }

    void writePose(P_TransformBlock& block)
    {
        const std::size_t way = m_dice.pick(3);
        std::vector<unsigned char> mask(block.getCount(), 0);
        std::vector<unsigned int> indices;
        for (Node& node : m_nodes)
        {
            if (node.m_object->getTransformBlock() == &block && (way == 0 || m_dice.chance(0.3)))
            {
                const unsigned int place = node.m_object->getTransformBlockIndex();
                block.accessLocalMatrices()[place] = node.m_local = m_dice.matrix(3.0f);
                mask[place] = 1;
                indices.push_back(place);
            }
        }
        if (way == 0)
        {
            block.invalidateAll();
        }
        else if (way == 1)
        {
            block.invalidateMasked(mask.data());
        }
        else
        {
            block.invalidate(indices.data(), indices.size());
        }
    }

    void updateBlock(P_TransformBlock& block)
    {
        block.updateWorldMatrices();
        const unsigned long long change = block.getChangeCount();
        for (unsigned int i = 0; i < block.getCount(); ++i)
        {
            const P_BaseObject* object = block.getObject(i);
            if (!object)
            {
                EXPECT_EQ(block.getParents()[i], P_TransformBlock::PARENT_NONE);
                continue;
            }
            ASSERT_TRUE(object->isObjectToWorldMatrixValid());
            const P_BaseObject* parent = object->getParent();
            EXPECT_EQ(block.getParents()[i], parent && parent->getTransformBlock() == &block
                                                 ? static_cast<int>(parent->getTransformBlockIndex())
                                                 : P_TransformBlock::PARENT_OUTSIDE);
            const Matrix expected =
                parent ? object->getMatrix() * parent->getObjectToWorldMatrix() : object->getMatrix();
            ASSERT_EQ(std::memcmp(&block.getWorldMatrices()[i], &expected, sizeof expected), 0);
        }
        EXPECT_EQ(block.getChangeCount(), change);
    }

    /// Everything below an object that is out of date is out of date.
    void checkMarks() const
    {
        for (const Node& node : m_nodes)
        {
            if (node.m_parent >= 0 && node.m_object->isObjectToWorldMatrixValid())
            {
                ASSERT_TRUE(m_nodes[static_cast<std::size_t>(node.m_parent)].m_object->isObjectToWorldMatrixValid());
            }
        }
    }

    void checkMatrices(std::size_t i)
    {
        DoubleMatrix world = toDouble(m_nodes[i].m_local);
        double reach = 1.0;
        for (int at = m_nodes[i].m_parent; at >= 0; at = m_nodes[static_cast<std::size_t>(at)].m_parent)
        {
            world = world * toDouble(m_nodes[static_cast<std::size_t>(at)].m_local);
            reach += 1.0;
        }
        const TestObject& object = *m_nodes[i].m_object;
        const Matrix& actual = object.getObjectToWorldMatrix();
        const DoubleMatrix identity = toDouble(actual) * toDouble(object.getWorldToObjectMatrix());
        const DoubleMatrix unit;
        for (int k = 0; k < 12; ++k)
        {
            ASSERT_NEAR(static_cast<double>(actual.data()[k]), world.data()[k], 2e-5 * reach * reach);
            ASSERT_NEAR(identity.data()[k], unit.data()[k], 2e-4 * reach * reach);
        }
    }

    Dice m_dice;
    std::unique_ptr<P_TransformBlock> m_blocks[2] = {std::make_unique<P_TransformBlock>(),
                                                     std::make_unique<P_TransformBlock>()};
    std::vector<Node> m_nodes;
};
}  // namespace

TEST(Transforms, WorldMatricesFollowWhateverHappensToTheTree)
{
    for (unsigned int seed = 0; seed < 40; ++seed)
    {
        Forest forest(seed, 2 + seed % 13);
        for (int i = 0; i < 500 && !::testing::Test::HasFailure(); ++i)
        {
            SCOPED_TRACE(::testing::Message() << "seed " << seed << ", step " << i);
            forest.step();
        }
        forest.checkAll();
    }
}

TEST(Transforms, AChangeCountTellsWhetherAnObjectHasMoved)
{
    TestObject parent;
    TestObject child;
    child.addTo(&parent);
    P_TransformBlock block;
    P_BaseObject* members[] = {&child};
    std::vector<unsigned long long> seen;
    const auto look = [&]
    {
        (void)child.getObjectToWorldMatrix();
        return child.getMatrixChangeCount();
    };
    const auto expectNew = [&](const char* what)
    {
        SCOPED_TRACE(what);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), look()), 0);
        seen.push_back(look());
    };
    expectNew("at first");
    parent.invalidateMatrices();
    expectNew("the parent moved");
    block.adopt(members, 1);
    look();
    parent.invalidateMatrices();
    expectNew("the parent moved while the child is in a block");
    block.invalidateAll();
    expectNew("the pose was written");
    block.release();
    EXPECT_EQ(look(), seen.back());
    child.remove();
    expectNew("the parent is another one");
    EXPECT_EQ(look(), seen.back());
}

TEST(Transforms, ABlockThatCannotTakeItsMembersLeavesAllAsItWas)
{
    TestObject objects[3];
    P_BaseObject* const pointers[] = {&objects[0], &objects[1], &objects[2]};
    P_BaseObject* const twice[] = {&objects[0], &objects[1], &objects[0]};
    P_TransformBlock block;
    block.adopt(pointers, 2);
    const long long live = S_Memory::getLiveCount();
    S_Memory::failAllocation(1);
    EXPECT_THROW(block.adopt(pointers, 3), S_MemoryException_Allocation);
    EXPECT_THROW(block.adopt(twice, 3), P_SceneException);
    EXPECT_THROW(block.append(*pointers[0]), P_SceneException);
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    EXPECT_EQ(block.getCount(), 2u);
    EXPECT_EQ(objects[1].getTransformBlock(), &block);
    EXPECT_EQ(objects[2].getTransformBlock(), nullptr);
    objects[1].setPosition(1.0f, 2.0f, 3.0f);
    block.updateWorldMatrices();
    EXPECT_EQ(block.getWorldMatrices()[1].getTranslation(), (Vector{1.0f, 2.0f, 3.0f}));
    block.adopt(pointers, 0);
    EXPECT_EQ(objects[1].getPosition(), (Vector{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(S_Memory::getLiveCount(), live) << "the matrices stay where they are";
}

TEST(Transforms, AMemberMovesEverythingThatHangsBelowItHoweverMuchThatIs)
{
    constexpr std::size_t count = 300;
    TestObject bone;
    std::vector<std::unique_ptr<TestObject>> hung;
    P_BaseObject* const members[] = {&bone};
    P_TransformBlock block;
    block.adopt(members, 1);
    const auto expectAllFollow = [&](float x)
    {
        block.accessLocalMatrices()[0].setTranslation({x, 0.0f, 0.0f});
        block.invalidateAll();
        block.updateWorldMatrices();
        for (const auto& object : hung)
        {
            ASSERT_EQ(object->getObjectToWorldMatrix().getTranslation().x, x) << "of " << hung.size();
        }
    };
    for (std::size_t i = 0; i < count; ++i)
    {
        hung.push_back(std::make_unique<TestObject>());
        hung.back()->addTo(&bone);
    }
    expectAllFollow(1.0f);
    hung.resize(1);
    expectAllFollow(2.0f);
    block.adopt(members, 1);
    expectAllFollow(3.0f);
    block.release(bone);
    bone.setPosition(4.0f, 0.0f, 0.0f);
    EXPECT_EQ(hung[0]->getObjectToWorldMatrix().getTranslation().x, 4.0f);
}

TEST(Transforms, MembersThatLieInARowNeedNoPointers)
{
    constexpr std::size_t count = 5;
    const P_VirtualObject source;
    TestObject other;
    std::vector<std::byte> memory((count + 1) * sizeof(P_VirtualObject));
    auto* const row = reinterpret_cast<P_VirtualObject*>(memory.data());
    P_TransformBlock block;
    block.reserveRow(row, sizeof(P_VirtualObject), count + 1);
    EXPECT_THROW(block.reserveRow(nullptr, 0, static_cast<std::size_t>(-1)), P_SceneException);
    for (std::size_t i = 0; i < count; ++i)
    {
        new (row + i) P_VirtualObject(source, block);
        row[i].addTo(i == 0 ? nullptr : row + i - 1);
    }
    EXPECT_THROW(block.reserveRow(row, sizeof(P_VirtualObject), count), P_SceneException) << "it is not empty";
    row[1].~P_VirtualObject();
    const auto expectMembers = [&](const std::vector<P_BaseObject*>& members)
    {
        ASSERT_EQ(block.getCount(), members.size());
        for (unsigned int i = 0; i < block.getCount(); ++i)
        {
            EXPECT_EQ(block.getObject(i), members[i]) << i;
            block.accessLocalMatrices()[i].setTranslation({1.0f, 0.0f, 0.0f});
        }
        block.invalidateAll();
        block.updateWorldMatrices();
        EXPECT_EQ(row[0].getObjectToWorldMatrix().getTranslation().x, 1.0f);
        EXPECT_EQ(row[4].getObjectToWorldMatrix().getTranslation().x, 3.0f) << "what it hung under is gone";
    };
    expectMembers({row, nullptr, row + 2, row + 3, row + 4});
    block.append(other);
    other.addTo(row + 4);
    expectMembers({row, nullptr, row + 2, row + 3, row + 4, &other});
    EXPECT_EQ(other.getObjectToWorldMatrix().getTranslation().x, 4.0f);
    for (const std::size_t i : {0U, 2U, 3U, 4U})
    {
        row[i].~P_VirtualObject();
    }
    EXPECT_EQ(block.getMemberCount(), 1u);
    EXPECT_EQ(other.getObjectToWorldMatrix().getTranslation().x, 1.0f);
}

TEST(Transforms, VectorProductsHaveTheBitsOfScalarOnes)
{
    Dice dice(7);
    const float special[] = {0.0f, -0.0f, 1e-42f, 3e38f, -3e38f, 1.0f};
    for (int i = 0; i < 2000; ++i)
    {
        Matrix a = dice.matrix(1e3f);
        Matrix b = dice.matrix(1e-3f);
        for (int k = 0; k < 4; ++k)
        {
            a.data()[dice.pick(12)] = special[dice.pick(6)];
            b.data()[dice.pick(12)] = special[dice.pick(6)];
        }
        const Matrix expected = a * b;
        M_multiply(a, b, a);
        for (int k = 0; k < 12; ++k)
        {
            const float x = expected.data()[k];
            const float y = a.data()[k];
            ASSERT_TRUE(std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y)) << k << ": " << x << ", " << y;
        }
    }
}
