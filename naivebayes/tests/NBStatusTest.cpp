#include "naivebayes/NBStatus.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

TEST(NBStatus, IsSuccessAllZeroByDefault) {
    const NBStatus status;
    EXPECT_TRUE(status.IsOK());
    EXPECT_FALSE(status.IsError());
    EXPECT_EQ(status.GetCode(), 0U);
    EXPECT_EQ(status.fSeverity, 0);
    EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{}));
    EXPECT_EQ(status.fDoubleArgs, (std::array<double, 3>{}));
}

TEST(NBStatus, OfACodeIsAnErrorOrAWarningWithoutArguments) {
    const NBStatus error(70010, false);
    EXPECT_EQ(error.GetCode(), 70010U);
    EXPECT_EQ(error.fSeverity, -1);
    EXPECT_TRUE(error.IsError());
    EXPECT_FALSE(error.IsOK());
    const NBStatus warning(70010, true);
    EXPECT_EQ(warning.fSeverity, 1);
    EXPECT_FALSE(warning.IsError());
    EXPECT_FALSE(warning.IsOK());
    for (const NBStatus& status : {error, warning}) {
        EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{}));
        EXPECT_EQ(status.fDoubleArgs, (std::array<double, 3>{}));
    }
}

TEST(NBStatus, DiffersWhenAnyFieldDoes) {
    const std::vector<std::function<void(NBStatus&)>> changes = {
        [](NBStatus& status) { status.fCode = 1; },
        [](NBStatus& status) { status.fSeverity = 1; },
        [](NBStatus& status) { status.SetIntArg(0, 1); },
        [](NBStatus& status) { status.SetIntArg(1, 1); },
        [](NBStatus& status) { status.SetIntArg(2, 1); },
        [](NBStatus& status) { status.SetDoubleArg(0, 1.0); },
        [](NBStatus& status) { status.SetDoubleArg(1, 1.0); },
        [](NBStatus& status) { status.SetDoubleArg(2, 1.0); }};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        NBStatus status;
        changes[i](status);
        EXPECT_NE(status, NBStatus()) << i;
        EXPECT_EQ(status, NBStatus(status)) << i;
    }
}

}  // namespace
