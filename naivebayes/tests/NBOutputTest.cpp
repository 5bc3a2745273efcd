#include "naivebayes/NBOutput.h"

#include <gtest/gtest.h>

#include "naivebayes/tests/SavedForms.h"

namespace {

TEST(NBOutput, IsUndefinedBeforeAResult) {
    const NBOutput none;
    EXPECT_TRUE(none.GetValues().empty());
    const NBOutput output(2);
    EXPECT_EQ(output.GetValues(), std::vector<double>(2, MCMV::gMissingValue));
    EXPECT_EQ(output.GetMaxValue(), MCMV::gMissingValue);
    EXPECT_EQ(output.GetWinner(), -1);
}

TEST(NBOutput, TakesTheWinnersValueAsItsLargest) {
    NBOutput output(2);
    output.SetResult({0.2, 0.5, 0.3}, 2);
    EXPECT_EQ(output.GetValues(), (std::vector<double>{0.2, 0.5, 0.3}));
    EXPECT_EQ(output.GetWinner(), 2);
    EXPECT_EQ(output.GetMaxValue(), 0.3);
}

TEST(NBOutput, DisplaySaysWhetherThereIsAWinner) {
    NBOutput output(1);
    EXPECT_EQ(savedforms::Displayed(output),
              "Start of NBOutput display\nNumber of units = 1\n"
              "Unit values (1 element): \n<missing>\n"
              "Maximum value = <missing>\nIndex of winner is undefined\n"
              "End of NBOutput display\n");
    output.SetResult({0.25, 0.75}, 1);
    EXPECT_EQ(savedforms::Displayed(output),
              "Start of NBOutput display\nNumber of units = 2\n"
              "Unit values (2 elements): \n  0.25  0.75\n"
              "Maximum value = 0.75\nIndex of winner = 1\n"
              "End of NBOutput display\n");
}

}  // namespace
