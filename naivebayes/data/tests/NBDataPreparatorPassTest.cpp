#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "naivebayes/BinaryRecordIterator.h"
#include "naivebayes/NBMemoryIter.h"
#include "naivebayes/data/tests/PreparatorFixture.h"
#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/RecordSource.h"
#include "tests/support/RandomSeed.h"

namespace {

using namespace preparatortest;
using Rows = std::vector<std::vector<double>>;
using Store = std::unique_ptr<MCCommon::MultiPassRecordIter>;

/// A folder that goes with all that is in it.
class Folder {
 public:
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "predsel-XXXXXX").string();
        fPath = ::mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(fPath); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string WithSeparator() const { return fPath.string() + "/"; }
    std::vector<std::filesystem::path> Files() const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(fPath)) {
            files.push_back(entry.path());
        }
        return files;
    }

 private:
    std::filesystem::path fPath;
};

/// Two usable records, one excluded with weight 4, one excluded without a weight.
const RecordSource::Records kRecords = {
    std::vector<double>{2, 1, 7, 2, 1, 0}, std::vector<double>{2, kMissing, 7, 4, 1, 0},
    std::vector<double>{0, 0, 3, 1, 0, 0}, std::vector<double>{0, 0, 3, kMissing, 0, 0}};
const Rows kPrepared = {{1, 2, 2, 1, 1}, {0, 1, 0, 0, 0}};

/// Where the records are kept.
class NBDataPreparatorPass : public testing::TestWithParam<bool> {
 protected:
    bool InMemory() const { return GetParam(); }

    NBStatus Prepare(RecordSource& source, std::int32_t numRecords) {
        return fPrepared.fPreparator.PrepareRecords(source, numRecords, InMemory(), fpStore, fCount,
                                                    fFolder.WithSeparator());
    }

    Folder fFolder;  // outlives the store
    Prepared fPrepared{MakeList()};
    Store fpStore;
    std::int32_t fCount = -1;
};

INSTANTIATE_TEST_SUITE_P(Stores, NBDataPreparatorPass, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "InMemory" : "InAFile");
});

TEST_P(NBDataPreparatorPass, KeepsTheUsableRecordsForAnyNumberOfPasses) {
    RecordSource source(kRecords);
    EXPECT_EQ(Prepare(source, 4), NBStatus());
    EXPECT_EQ(fCount, 2);
    ASSERT_NE(fpStore, nullptr);
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(Drain(*fpStore), kPrepared);
        EXPECT_EQ(fpStore->NewPass(), 0);
    }
}

TEST_P(NBDataPreparatorPass, CountsWhatItExcludesButNotAMissingWeight) {
    RecordSource source(kRecords);
    Prepare(source, 4);
    EXPECT_EQ(fPrepared.fPreparator.GetNumExcluded(), 2);
    EXPECT_EQ(fPrepared.fPreparator.GetWeightExcluded(), 4.0);
}

TEST_P(NBDataPreparatorPass, CountsAnewInEachPass) {
    RecordSource source(kRecords);
    Prepare(source, 4);
    source.NewPass();
    EXPECT_EQ(Prepare(source, 2), NBStatus());
    EXPECT_EQ(fCount, 1);
    EXPECT_EQ(fPrepared.fPreparator.GetNumExcluded(), 1);
    EXPECT_EQ(fPrepared.fPreparator.GetWeightExcluded(), 4.0);
}

TEST_P(NBDataPreparatorPass, ChoosesTheKindOfStore) {
    RecordSource source(kRecords);
    Prepare(source, 4);
    EXPECT_EQ(dynamic_cast<MCNaive::NBMemoryIter*>(fpStore.get()) != nullptr, InMemory());
    EXPECT_EQ(dynamic_cast<MCNaive::BinaryRecordIterator*>(fpStore.get()) != nullptr, !InMemory());
    EXPECT_EQ(fFolder.Files().size(), InMemory() ? 0U : 1U);
}

TEST_P(NBDataPreparatorPass, ReadsNoMoreThanAskedForExcludedOnesIncluded) {
    RecordSource source(kRecords);
    EXPECT_EQ(Prepare(source, 2), NBStatus());
    EXPECT_EQ(source.Taken(), 2U);
    EXPECT_EQ(Drain(*fpStore), (Rows{kPrepared[0]}));
}

TEST_P(NBDataPreparatorPass, DoesNotCountNullRecords) {
    RecordSource source({std::nullopt, kRecords[0], std::nullopt, kRecords[2], kRecords[0]});
    EXPECT_EQ(Prepare(source, 2), NBStatus());
    EXPECT_EQ(Drain(*fpStore), kPrepared);
    EXPECT_EQ(fPrepared.fPreparator.GetNumExcluded(), 0);
}

TEST_P(NBDataPreparatorPass, KeepsARecordWhoseBadInputCodeHidesItsMissingTarget) {
    RecordSource source({std::vector<double>{3, kMissing, 7, 1, 1, 0}});
    EXPECT_EQ(Prepare(source, 1), NBStatus());
    EXPECT_EQ(Drain(*fpStore), (Rows{{0, 1, kMissing, 1, 1}}));
}

TEST_P(NBDataPreparatorPass, WithoutAUsableRecordLeavesNoStoreAndNoFile) {
    RecordSource source({kRecords[1], kRecords[3]});
    fpStore = std::make_unique<MCNaive::NBMemoryIter>(1, 1);
    const NBStatus status = Prepare(source, 2);
    EXPECT_EQ(status, NBStatus(70011, false));
    EXPECT_EQ(fPrepared.fPreparator.GetStatus(), status);
    EXPECT_EQ(fCount, 0);
    EXPECT_EQ(fpStore, nullptr);
    EXPECT_TRUE(fFolder.Files().empty());
    EXPECT_EQ(fPrepared.fPreparator.GetNumExcluded(), 2);
}

TEST_P(NBDataPreparatorPass, WithoutInputsExcludesEveryRecord) {
    NBVarList list;
    list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
    Prepared prepared(list);
    RecordSource source({std::vector<double>{1}, std::vector<double>{0}});
    const NBStatus status = prepared.fPreparator.PrepareRecords(source, 2, InMemory(), fpStore,
                                                                fCount, fFolder.WithSeparator());
    EXPECT_EQ(status, NBStatus(70011, false));
    EXPECT_EQ(prepared.fPreparator.GetNumExcluded(), 2);
    EXPECT_EQ(prepared.fPreparator.GetWeightExcluded(), 2.0);
}

TEST_P(NBDataPreparatorPass, ReadsNothingForACountBelowOne) {
    for (const std::int32_t numRecords : {0, -1}) {
        RecordSource source(kRecords);
        EXPECT_EQ(Prepare(source, numRecords), NBStatus(70011, false));
        EXPECT_EQ(source.Taken(), 0U);
    }
}

TEST_P(NBDataPreparatorPass, IsGoodAgainAfterAnEmptyPass) {
    RecordSource empty({});
    EXPECT_TRUE(Prepare(empty, 2).IsError());
    RecordSource source(kRecords);
    EXPECT_EQ(Prepare(source, 4), NBStatus());
    EXPECT_TRUE(fPrepared.fPreparator.GetStatus().IsOK());
}

/// Stops at the given poll.
class StopAt : public MCStopProcessor {
 public:
    explicit StopAt(int poll) : MCStopProcessor(0.0), fLeft(poll) {}
    bool IsCancelled() override { return --fLeft <= 0; }

 private:
    int fLeft;
};

TEST_P(NBDataPreparatorPass, StopsAtOnceWhenInterruptedAndKeepsTheRecordsSoFar) {
    StopAt stop(2);
    fPrepared.fInterrupt.fpStopProcessor = &stop;
    RecordSource source(kRecords);
    EXPECT_EQ(Prepare(source, 4), NBStatus());
    EXPECT_EQ(source.Taken(), 1U);
    EXPECT_EQ(fCount, 1);
    EXPECT_EQ(Drain(*fpStore), (Rows{kPrepared[0]}));
    EXPECT_TRUE(fPrepared.fInterrupt.fStopped);
}

TEST_P(NBDataPreparatorPass, InterruptedBeforeTheFirstRecordHasNone) {
    fPrepared.fInterrupt.fStopped = true;
    RecordSource source(kRecords);
    EXPECT_EQ(Prepare(source, 4), NBStatus(70011, false));
    EXPECT_EQ(source.Taken(), 0U);
    EXPECT_EQ(fpStore, nullptr);
    EXPECT_TRUE(fFolder.Files().empty());
}

TEST_P(NBDataPreparatorPass, AllocatesNothingForARecord) {
    const auto calls = [this](std::size_t count) {
        RecordSource source(RecordSource::Records(count, kRecords[0]));
        fpStore.reset();  // its name is free again, so none is waited for
        const AllocationMeter meter;
        Prepare(source, static_cast<std::int32_t>(count));
        return meter.Calls();
    };
    const std::size_t few = calls(10);
    const std::size_t many = calls(1010);
    // The memory store takes one piece a record, all before the first is read.
    EXPECT_EQ(many - few, InMemory() ? 1000U : 0U);
}

TEST(NBDataPreparatorStores, HoldTheSameRecords) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<double> values = {kMissing, -1.5, -1.0, -0.5, 0.0, 0.4,  0.5,
                                        1.0,      1.9,  2.0,  3.0,  7.0, 1e300};
    std::uniform_int_distribution<std::size_t> pick(0, values.size() - 1);
    RecordSource::Records records;
    for (int i = 0; i < 2000; ++i) {
        std::vector<double> record(6);
        for (double& value : record) value = values[pick(random)];
        records.emplace_back(record);
    }
    Prepared prepared(MakeList());
    const Folder folder;
    Rows kept[2];
    std::int32_t excluded[2] = {0, 0};
    for (const bool inMemory : {false, true}) {
        RecordSource source(records);
        Store store;
        std::int32_t count = 0;
        EXPECT_EQ(prepared.fPreparator.PrepareRecords(source, 2000, inMemory, store, count,
                                                      folder.WithSeparator()),
                  NBStatus());
        kept[inMemory] = Drain(*store);
        excluded[inMemory] = prepared.fPreparator.GetNumExcluded();
        EXPECT_EQ(kept[inMemory].size(), static_cast<std::size_t>(count));
        EXPECT_EQ(count + excluded[inMemory], 2000);
    }
    EXPECT_EQ(kept[0], kept[1]);
    EXPECT_EQ(excluded[0], excluded[1]);
}

TEST(NBDataPreparatorFile, HoldsRawDoublesOnly) {
    Prepared prepared(MakeList());
    const Folder folder;
    RecordSource source(kRecords);
    Store store;
    std::int32_t count = 0;
    ASSERT_TRUE(
        prepared.fPreparator.PrepareRecords(source, 4, false, store, count, folder.WithSeparator())
            .IsOK());
    const auto files = folder.Files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(files[0]), 2U * 5 * sizeof(double));
    std::ifstream in(files[0], std::ios::binary);
    std::vector<double> values(10);
    in.read(reinterpret_cast<char*>(values.data()), 80);
    EXPECT_EQ(values, (std::vector<double>{1, 2, 2, 1, 1, 0, 1, 0, 0, 0}));
}

TEST(NBDataPreparatorFile, IsNamedForItsPurposeAndGoesWithTheStore) {
    Prepared prepared(MakeList());
    const Folder folder;
    RecordSource source(kRecords);
    Store store;
    std::int32_t count = 0;
    ASSERT_TRUE(
        prepared.fPreparator.PrepareRecords(source, 4, false, store, count, folder.WithSeparator())
            .IsOK());
    const auto files = folder.Files();
    ASSERT_EQ(files.size(), 1U);
    const std::string name = files[0].filename().string();
    EXPECT_EQ(name.substr(0, 3), "_nb");
    EXPECT_EQ(files[0].extension(), ".tmp");
    store.reset();
    EXPECT_TRUE(folder.Files().empty());
}

TEST(NBDataPreparatorFile, IsItsOwnersAlone) {
    Prepared prepared(MakeList());
    const Folder folder;
    RecordSource source(kRecords);
    Store store;
    std::int32_t count = 0;
    ASSERT_TRUE(
        prepared.fPreparator.PrepareRecords(source, 4, false, store, count, folder.WithSeparator())
            .IsOK());
    EXPECT_EQ(std::filesystem::status(folder.Files()[0]).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(NBDataPreparatorFile, ThatCannotBeOpenedLeavesTheStoreAndTheSourceUntouched) {
    Prepared prepared(MakeList());
    RecordSource source(kRecords);
    Store store = std::make_unique<MCNaive::NBMemoryIter>(1, 1);
    const auto* const before = store.get();
    std::int32_t count = 7;
    const Folder folder;
    const NBStatus status = prepared.fPreparator.PrepareRecords(
        source, 4, false, store, count, folder.WithSeparator() + "nowhere/");
    EXPECT_EQ(status, NBStatus(70001, false));
    EXPECT_EQ(prepared.fPreparator.GetStatus(), status);
    EXPECT_EQ(store.get(), before);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(source.Taken(), 0U);
}

TEST(NBDataPreparatorFile, LiesInTheSystemsFolderWithoutAnother) {
    Prepared prepared(MakeList());
    RecordSource source(kRecords);
    Store store;
    std::int32_t count = 0;
    EXPECT_EQ(prepared.fPreparator.PrepareRecords(source, 4, false, store, count, ""), NBStatus());
    EXPECT_EQ(Drain(*store), kPrepared);
}

/// Runs in a process of its own, whose files may be so long. 0 when all went as it should.
int PrepareOnAFullDisk(rlim_t bytes, const std::string& dir) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
    Prepared prepared(MakeUnweightedList(), false);  // 3 doubles a record
    RecordSource::Records records;
    for (int i = 0; i < 1000; ++i) {
        records.emplace_back(std::vector<double>{i % 3 + 0.0, i % 2 + 0.0, i % 10 + 0.0, 0, 0});
    }
    RecordSource source(records);
    Store store;
    std::int32_t count = 0;
    const NBStatus status =
        prepared.fPreparator.PrepareRecords(source, 1000, false, store, count, dir);
    if (!status.IsOK() || count != 1000) return 2;
    for (int pass = 0; pass < 2; ++pass) {
        rlim_t delivered = 0;
        for (; store->HasMore(); ++delivered) {
            const auto i = static_cast<int>(delivered);
            const std::vector<double> expected{i % 2 + 0.0, i % 3 + 0.0, i % 10 > 5 ? 1.0 : 0.0};
            if (Values(*store->Next()) != expected) return 3;
        }
        if (delivered != bytes / 24) return 4;
        // A file that happens to end with a record cannot be told from a whole one.
        if (store->GetFailReason() != (bytes % 24 == 0 ? 1 : 3)) return 5;
        store->NewPass();
    }
    return 0;
}

TEST(NBDataPreparatorFile, OnAFullDiskEndsEarlyWithoutAShiftedRecord) {
    for (const rlim_t bytes : {0, 1000, 4096, 5000, 10000, 12288, 23990}) {
        const Folder folder;
        const pid_t child = ::fork();
        ASSERT_NE(child, -1);
        if (child == 0) ::_exit(PrepareOnAFullDisk(bytes, folder.WithSeparator()));
        int state = 0;
        ASSERT_EQ(::waitpid(child, &state, 0), child);
        EXPECT_TRUE(WIFEXITED(state)) << bytes;
        EXPECT_EQ(WEXITSTATUS(state), 0) << bytes;
    }
}

TEST(MakeTempFileName, PutsDigitsBetweenThePrefixAndTheExtension) {
    const Folder folder;
    const std::string name = MakeTempFileName(folder.WithSeparator(), "_nb");
    const std::string start = folder.WithSeparator() + "_nb";
    ASSERT_EQ(name.substr(0, start.size()), start);
    ASSERT_EQ(name.substr(name.size() - 4), ".tmp");
    const std::string digits = name.substr(start.size(), name.size() - start.size() - 4);
    EXPECT_FALSE(digits.empty());
    EXPECT_EQ(digits.find_first_not_of("0123456789"), std::string::npos);
    EXPECT_TRUE(folder.Files().empty());
}

TEST(MakeTempFileName, JoinsTheFolderPlainly) {
    const Folder folder;
    const std::string name = MakeTempFileName(folder.WithSeparator() + "a", "b");
    EXPECT_EQ(name.substr(0, folder.WithSeparator().size() + 2), folder.WithSeparator() + "ab");
}

TEST(MakeTempFileName, WaitsForAnotherSecondWhileTheNameIsTaken) {
    const Folder folder;
    const std::string first = MakeTempFileName(folder.WithSeparator(), "_nb");
    std::ofstream(first) << "taken";
    const std::string second = MakeTempFileName(folder.WithSeparator(), "_nb");
    EXPECT_NE(first, second);
    EXPECT_FALSE(std::filesystem::exists(second));
}

TEST(MakeTempFileName, ComesToAnEndInAFolderThatMayNotBeLookedInto) {
    const Folder folder;
    std::filesystem::permissions(folder.WithSeparator(), std::filesystem::perms::none);
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        // Permissions bind everybody but the superuser.
        constexpr uid_t kNobody = 65534;
        if (::geteuid() == 0 && ::setuid(kNobody) != 0) ::_exit(1);
        Prepared prepared(MakeList());
        RecordSource source(kRecords);
        Store store;
        std::int32_t count = 0;
        const NBStatus status = prepared.fPreparator.PrepareRecords(source, 4, false, store, count,
                                                                    folder.WithSeparator());
        ::_exit(status == NBStatus(70001, false) ? 0 : 2);
    }
    int state = 0;
    ASSERT_EQ(::waitpid(child, &state, 0), child);
    EXPECT_TRUE(WIFEXITED(state));
    EXPECT_EQ(WEXITSTATUS(state), 0);
    std::filesystem::permissions(folder.WithSeparator(), std::filesystem::perms::owner_all);
}

}  // namespace
