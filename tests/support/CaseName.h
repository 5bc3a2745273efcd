#ifndef PREDSEL_TESTS_SUPPORT_CASENAME_H
#define PREDSEL_TESTS_SUPPORT_CASENAME_H

#include <gtest/gtest.h>

#include <string>

namespace testsupport {

/// Names the instances of a table of cases by their fName.
struct CaseName {
    template <class Case>
    std::string operator()(const testing::TestParamInfo<Case>& test) const {
        return test.param.fName;
    }
};

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_CASENAME_H
