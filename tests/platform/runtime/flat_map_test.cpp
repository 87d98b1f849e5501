#include <platform/runtime/flat_map.h>

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace
{
TEST(FlatMap, AnswersLikeATreeThroughRandomChanges)
{
    std::mt19937 random(3);
    S_FlatMap<int, int> map;
    std::map<int, int> model;
    for (int step = 0; step < 3000; ++step)
    {
        const int key = static_cast<int>(random() % 60) - 30;
        if (random() % 2)
        {
            EXPECT_EQ(map.emplace(key, step), model.emplace(key, step).second);
        }
        else
        {
            map.erase(key);
            model.erase(key);
        }
        EXPECT_EQ(map.size(), model.size());
        for (int asked = -31; asked <= 31; ++asked)
        {
            const auto expected = model.find(asked);
            const int* const value = map.find(asked);
            ASSERT_EQ(value != nullptr, expected != model.end()) << asked;
            EXPECT_TRUE(!value || *value == expected->second) << asked;
        }
    }
}
}  // namespace
