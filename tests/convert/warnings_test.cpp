#include "convert/warnings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

TEST(ConversionWarnings, NameWhatMissesSomethingOnceOrSayHowManyMoreThereAre)
{
    TW2::convert::Warnings warnings;
    warnings.add("morph targets");
    for (const char* part : {"a", "b", "a", "c", "d", "e"})
    {
        warnings.addLeftOut(part, "morph targets");
    }
    warnings.add("damaged");
    warnings.addLeftOut("a", "the bump map");
    EXPECT_THAT(warnings.makeLines(), testing::ElementsAre("morph targets", "a, b, c, d, e: left out: morph targets",
                                                           "damaged", "a: left out: the bump map"));
    warnings.addLeftOut("f", "morph targets");
    EXPECT_EQ(warnings.makeLines().at(1), "a, b, c, d and 2 more: left out: morph targets") << "never one more";
}
