#include "featureselect/FSDisplay.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "host/Records.h"

namespace {

template <class Element>
std::string Shown(const std::vector<Element>& values) {
    std::ostringstream out;
    FSDisplay::Vector(out, "Ranks", values);
    return out.str();
}

TEST(FSDisplay, EmptyVectorSaysSo) { EXPECT_EQ(Shown(std::vector<double>{}), "Ranks: <empty>\n"); }

TEST(FSDisplay, OneElementHasNoPlural) {
    EXPECT_EQ(Shown(std::vector<std::int32_t>{7}), "Ranks (1 element): \n     7\n");
}

TEST(FSDisplay, TenValuesStandInOneLine) {
    EXPECT_EQ(Shown(std::vector<std::int32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}),
              "Ranks (10 elements): \n"
              "     1     2     3     4     5     6     7     8     9    10\n");
}

TEST(FSDisplay, EleventhValueStartsALine) {
    EXPECT_EQ(Shown(std::vector<std::int32_t>(11, -1)),
              "Ranks (11 elements): \n"
              "    -1    -1    -1    -1    -1    -1    -1    -1    -1    -1\n"
              "    -1\n");
}

TEST(FSDisplay, BooleansAreWords) {
    EXPECT_EQ(Shown(std::vector<bool>{true, false}), "Ranks (2 elements): \n  true false\n");
}

TEST(FSDisplay, MissingDoubleIsNamed) {
    EXPECT_EQ(Shown(std::vector<double>{0.5, MCMV::gMissingValue}),
              "Ranks (2 elements): \n   0.5<missing>\n");
}

TEST(FSDisplay, LineNamesAMissingValue) {
    std::ostringstream out;
    FSDisplay::Line(out, "Mean = ", MCMV::gMissingValue);
    FSDisplay::Line(out, "Mean = ", 1.5);
    FSDisplay::Line(out, "Count = ", std::int32_t{3});
    EXPECT_EQ(out.str(), "Mean = <missing>\nMean = 1.5\nCount = 3\n");
}

}  // namespace
