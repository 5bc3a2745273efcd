#include <gtest/gtest.h>

#include <sstream>

#include "naivebayes/MCRandom.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/tests/SavedForms.h"
#include "tests/support/RestoreAbuse.h"
// Last, because it replaces operators.
#include "tests/support/AllocationCounter.inc"

namespace {

constexpr std::uint64_t kSeed = 20260712;

void Use(NBayesInput& table) {
    table.ClearCounts();
    for (std::int32_t m = 0; m < table.GetNumCategories(); ++m) {
        for (std::int32_t k = 0; k < table.GetNumTargetCategories(); ++k) {
            table.AddCount(m, k, 1.0);
            (void)table.GetProbability(m, k);
        }
    }
    table.UpdateProbabilities(2.0);
    const NBayesInput copy = table;
    table.MergeFrom(copy, nullptr, nullptr, table.GetNumTargetCategories(), {0, 1}, 1.0);
}

void Use(NBayesOutput& table) {
    const NBayesOutput copy = table;
    std::vector<std::int32_t> codeMap;
    double weight = 0.0;
    table.MergeFrom(copy, nullptr, nullptr, codeMap, weight);
    table.Clear();
    for (std::int32_t k = 0; k < table.GetNumCategories(); ++k) table.AddRecord(k, 1.0);
    table.ComputePriors(2.0);
}

void Use(MCRandom& random) {
    for (int i = 0; i < 3; ++i) (void)random.GetUniform();
    random.SetSeed(5);
    random.SetPortable(false);
    (void)random.GetUniform();
}

void Use(NaiveBayesSettings&) {}

template <class T>
void Exercise(T object, const std::string& bytes, bool isText) {
    const bool restored =
        isText ? savedforms::FromXML(object, bytes) : savedforms::FromBinary(object, bytes);
    if (!restored) return;
    (void)savedforms::Binary(object);
    (void)savedforms::XML(object);
    (void)savedforms::Displayed(object);
    Use(object);
}

/// Every damage to both forms of the object; empty is what is restored into.
template <class T, class MakeEmpty>
void Abuse(const std::string& name, const T& object, MakeEmpty makeEmpty) {
    testsupport::RestoreAbuse abuse;
    for (const bool isText : {false, true}) {
        const testsupport::RestoreSubject subject{
            name + (isText ? ", XML" : ", binary"),
            isText ? savedforms::XML(object) : savedforms::Binary(object),
            [&](const std::string& bytes) { Exercise(makeEmpty(), bytes, isText); }, isText};
        ASSERT_NO_THROW(abuse.Truncate(subject));
        ASSERT_NO_THROW(abuse.ChangeEveryByte(subject));
        ASSERT_NO_THROW(abuse.Fuzz(subject, 5000, kSeed));
    }
    EXPECT_GT(abuse.Count(), 10000);
}

class TableRestoreAbuse : public testing::Test {
 protected:
    TableRestoreAbuse() {
        fList.AddStringCatVar("answer", "", {"no", "yes"}, {}, 3);
        fList.AddStringCatVar("colour", "", {"a", "b", "c"}, {}, 1);
    }
    NBVarList fList;
};

TEST_F(TableRestoreAbuse, MemoryIsChecked) { EXPECT_TRUE(testsupport::MemoryIsChecked()); }

TEST_F(TableRestoreAbuse, PredictorTablesStandAnyDamage) {
    NBayesInput table;
    table.Setup(*fList.GetVariable(1), 2, 1, 1);
    table.AddCount(0, 0, 1.0);
    table.AddCount(2, 1, 2.5);
    table.UpdateProbabilities(3.5);
    Abuse("NBayesInput", table, [] { return NBayesInput(); });
}

TEST_F(TableRestoreAbuse, TargetTablesStandAnyDamage) {
    NBayesOutput table(*fList.GetVariable(0), 0);
    table.AddRecord(0, 1.0);
    table.ComputePriors(1.0);
    Abuse("NBayesOutput", table, [] { return NBayesOutput(); });
}

TEST_F(TableRestoreAbuse, RandomSourcesStandAnyDamage) {
    Abuse("MCRandom", MCRandom(876543, true, true, nullptr),
          [] { return MCRandom(0, false, false, nullptr); });
}

TEST_F(TableRestoreAbuse, SettingsStandAnyDamage) {
    Abuse("NaiveBayesSettings", NaiveBayesSettings{}, [] { return NaiveBayesSettings{}; });
}

}  // namespace
