// Cases in blocks against the same cases record by record, over random data.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/BlockWriting.h"
#include "host/CaseDelivery.h"
#include "host/Progress.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using embedded::kChunkRows;
using Values = std::vector<double>;

struct Specs final : UAVarValidSpecs {
    using UAVarValidSpecs::UAVarValidSpecs;
};
struct Adapter final : UAInputAdapter {
    using UAInputAdapter::UAInputAdapter;
};

// Refuses cases by their number: single ones at random and long runs of them.
class Refusals {
 public:
    Refusals(std::mt19937& random, std::int32_t rows) : fvRefused(static_cast<std::size_t>(rows)) {
        const std::uint32_t oneIn = std::array{0U, 1000U, 20U, 2U}[random() % 4];
        for (std::size_t i = 0; oneIn > 0 && i < fvRefused.size(); ++i) {
            fvRefused[i] = random() % oneIn == 0;
        }
        if (rows == 0 || random() % 2 == 0) return;
        const std::size_t first = random() % fvRefused.size();
        const std::size_t end = std::min(fvRefused.size(), first + random() % (2 * kChunkRows));
        std::fill(fvRefused.begin() + static_cast<std::ptrdiff_t>(first),
                  fvRefused.begin() + static_cast<std::ptrdiff_t>(end), true);
    }
    bool operator()(std::int32_t number) const {
        return fvRefused[static_cast<std::size_t>(number)];
    }

 private:
    std::vector<bool> fvRefused;
};

// Writes down what it is shown of each case.
class Pass final : public UAProcDataSourceIter {
 public:
    Pass(UAInputAdapter& adapter, Refusals refusals)
        : UAProcDataSourceIter(adapter, false), fAdapter(adapter), fRefusals(std::move(refusals)) {}

    Values fvSeen;

 protected:
    bool PreprocessCase() override {
        const std::int32_t number = fAdapter.GetCaseCount() - 1;
        fvSeen.push_back(number);
        fvSeen.push_back(fAdapter.GetDataPassCount());
        fvSeen.push_back(fAdapter.GetDSIterator()->GetNumericValue(0));
        fvSeen.push_back(fAdapter.GetDSIterator()->GetNumericValue(3));
        return !fRefusals(number);
    }

 private:
    UAInputAdapter& fAdapter;
    Refusals fRefusals;
};

constexpr std::int32_t kVariables = 9;
const std::vector<bool> kCategorical{false, true, true, true, true, false, false, false, false};

// The first variable is the case's number.
DataSet RandomData(std::mt19937& random, std::int32_t rows) {
    const auto texts = [&](std::uint32_t kinds, std::uint32_t missingOneIn) {
        std::vector<std::optional<std::string>> values(static_cast<std::size_t>(rows));
        for (auto& value : values) {
            if (random() % missingOneIn != 0) value = "t" + std::to_string(random() % kinds);
        }
        return values;
    };
    const auto numbers = [&](std::uint32_t kinds, std::uint32_t missingOneIn) {
        Values values(static_cast<std::size_t>(rows), DataSetBuilder::kSystemMissing);
        for (double& value : values) {
            if (random() % missingOneIn == 0) continue;
            value = static_cast<double>(random() % kinds) - static_cast<double>(kinds / 2);
        }
        return values;
    };
    Values numbersOfCases(static_cast<std::size_t>(rows));
    for (std::size_t i = 0; i < numbersOfCases.size(); ++i) {
        numbersOfCases[i] = static_cast<double>(i);
    }
    constexpr std::uint32_t kNever = std::numeric_limits<std::uint32_t>::max();
    DataSetBuilder builder;
    builder.Numbers("id", numbersOfCases)
        .Strings("few", texts(3, 10))
        .Strings("some", texts(static_cast<std::uint32_t>(254 + random() % 4), 50))
        .Numbers("coded", numbers(12, 30))
        .Strings("many", texts(200000, 5))
        .Numbers("whole", numbers(8, 4))
        .Numbers("dense", numbers(1 << 30, kNever))
        .Numbers("held", numbers(40, 10))
        .Missing({true, 10, 12, {KoltObs(-3.0)}})
        .Strings("text", texts(4, 2));
    if (random() % 2 == 0) {
        builder.Numbers("w", numbers(6, 8)).Missing({false, 0, 0, {KoltObs(2.0)}}).Weight();
    }
    DataSet data = builder.Build();
    if (random() % 2 == 0) {
        data.MutableVariable(1).SetMissingSpec({false, 0, 0, {KoltObs(std::string("t1"))}});
        data.MutableVariable(3).SetMissingSpec({true, 2, 4, {}});
    }
    return data;
}

// What can be seen of a pass behind so many of its records.
struct State {
    std::size_t fRecords = 0;
    std::int32_t fFailReason = 0;
    std::int32_t fCases = 0;
    std::int32_t fPasses = 0;
    std::optional<Values> fCurrent;
    std::size_t fSeen = 0;  // cases that were preprocessed
    bool operator==(const State&) const = default;
};

struct Transcript {
    std::vector<Values> fvRecords;
    std::vector<State> fvStates;
    Values fvSeen;
    Values fvLearned;
    std::vector<KoltObs> fvDecoded;
    std::vector<std::int32_t> fvProgress;
    std::string fNotes;
};

Values ValuesOf(const MCCommon::Record& record) {
    Values values;
    for (std::int32_t i = 0; i < record.Size(); ++i) values.push_back(record[i]);
    return values;
}

double ValueOf(const MCCommon::BlockColumn& column, std::size_t row) {
    return std::visit(
        [&](const auto values) {
            const double value = values[row];
            if (!column.IsCategorical()) return value;
            EXPECT_LT(value, column.fEntryEnd);
            return value - 1;
        },
        column.fValues);
}

class Progress final : public ProgressListener {
 public:
    explicit Progress(std::vector<std::int32_t>& told) : fvTold(told) {}
    void OnProgress(const ProgressReport& report) override {
        fvTold.push_back(report.GetInteger("records"));
        fvTold.push_back(report.GetInteger("pass"));
    }

 private:
    std::vector<std::int32_t>& fvTold;
};

// Three passes of two iterators over data of one seed: the whole first one, or one that is broken
// off. `blocks` settles what is read in blocks; null: nothing is.
class Reading {
 public:
    Reading(std::uint32_t seed, std::int32_t rows, std::mt19937* blocks)
        : fRandom(seed), fRows(rows), fpBlocks(blocks) {}

    Transcript Run() {
        DataSet data = RandomData(fRandom, fRows);
        const std::vector<embedded::CommandTokens> commands =
            embedded::ParseCommandText("SELECTPRED x;", "test").fvCommands;
        embedded::CommandReport report;
        Progress progress(fTranscript.fvProgress);
        embedded::RunOptions options;
        options.fpProgress = &progress;
        options.fThreads = fpBlocks == nullptr ? 1 : static_cast<std::int32_t>(1 + Draw(3));
        embedded::HostSession session(data, commands.front(), report, options);
        Specs specs(true, fRandom() % 2 == 0, true);
        for (std::int32_t i = 0; i < kVariables; ++i) {
            specs.AddVariable(i, kCategorical[static_cast<std::size_t>(i)]);
        }
        if (data.WeightIndex() >= 0) specs.SetWeightVar(data.WeightIndex());
        // So many numbers that are held as codes that the rows of a chunk are opened in parts.
        const int more = fRandom() % 2 == 0 && fRows <= 70000 ? 40 : 0;
        for (int i = 0; i < more; ++i) specs.AddVariable(5, false);
        ProcedureDataSource source;
        Adapter adapter(&specs, source);
        {
            Pass first(adapter, Refusals(fRandom, fRows));
            first.NewPass(fRandom() % 2 == 0);
            const bool all = fRandom() % 4 != 0;
            Read(first, adapter,
                 all ? std::numeric_limits<std::size_t>::max()
                     : fRandom() % (static_cast<std::size_t>(fRows) + 1));
            first.StopPass();
            Learned(adapter);
            if (fRandom() % 2 == 0 && adapter.GetDataPassCount() > 0) {
                for (const std::int32_t variable : {1, 3}) {
                    adapter.ReorderCategories(variable, fRandom() % 2 == 0);
                }
            }
            Learned(adapter);
            Pass second(adapter, Refusals(fRandom, fRows));
            second.NewPass(true);
            Read(second, adapter, fRandom() % (2 * static_cast<std::size_t>(fRows) + 1));
            first.NewPass(false);
            Read(first, adapter, std::numeric_limits<std::size_t>::max());
            for (const Pass* pass : {&first, &second}) {
                fTranscript.fvSeen.insert(fTranscript.fvSeen.end(), pass->fvSeen.begin(),
                                          pass->fvSeen.end());
            }
        }
        Learned(adapter);
        session.AddClosingNotes();
        for (const embedded::ReportNote& note : report.fvNotes) {
            fTranscript.fNotes += note.fText + "\n";
        }
        return std::move(fTranscript);
    }

 private:
    std::uint32_t Draw(std::uint32_t count) {
        return static_cast<std::uint32_t>((*fpBlocks)() % count);
    }

    void Read(Pass& pass, const Adapter& adapter, std::size_t most) {
        const std::size_t end = most > std::numeric_limits<std::size_t>::max() / 2
                                    ? most
                                    : fTranscript.fvRecords.size() + most;
        while (fTranscript.fvRecords.size() < end) {
            const bool any = fpBlocks != nullptr && Draw(4) != 0
                                 ? ReadBlock(pass, end - fTranscript.fvRecords.size())
                                 : ReadRecord(pass);
            const MCCommon::Record* current = pass.Current();
            fTranscript.fvStates.push_back(
                {fTranscript.fvRecords.size(), pass.GetFailReason(), adapter.GetCaseCount(),
                 adapter.GetDataPassCount(),
                 current == nullptr ? std::nullopt : std::optional(ValuesOf(*current)),
                 pass.fvSeen.size()});
            if (!any) return;
        }
    }
    bool ReadRecord(Pass& pass) {
        const MCCommon::Record* record = pass.Next();
        if (record != nullptr) fTranscript.fvRecords.push_back(ValuesOf(*record));
        return record != nullptr;
    }
    bool ReadBlock(Pass& pass, std::size_t most) {
        const std::uint32_t wish = std::array{1U, 7U, 1000U, 65536U, 100000U}[Draw(5)];
        const auto maxRows = static_cast<std::int32_t>(std::min<std::size_t>(most, 1 + Draw(wish)));
        const MCCommon::RecordBlock* block = pass.NextBlock(maxRows);
        if (block == nullptr) return false;
        EXPECT_GE(block->fRows, 1);
        EXPECT_LE(block->fRows, maxRows);
        const auto cases = pass.GetBlockCases();
        EXPECT_EQ(cases.size(), static_cast<std::size_t>(block->fRows));
        for (std::size_t row = 0; row < cases.size(); ++row) {
            Values& record = fTranscript.fvRecords.emplace_back();
            for (std::size_t i = 0; i < block->fvColumns.size(); ++i) {
                const bool categorical = i < kCategorical.size() && kCategorical[i];
                EXPECT_EQ(block->fvColumns[i].IsCategorical(), categorical);
                record.push_back(ValueOf(block->fvColumns[i], row));
            }
            EXPECT_EQ(record[0], cases[row]);
        }
        return true;
    }
    void Learned(const Adapter& adapter) {
        for (std::int32_t i = 0; i < kVariables; ++i) {
            fTranscript.fvLearned.push_back(adapter.GetCatVarSize(i));
            fTranscript.fvLearned.push_back(adapter.GetContMinValue(i));
            fTranscript.fvLearned.push_back(adapter.GetContMaxValue(i));
            std::int32_t variable = -1;
            KoltObs value;
            for (std::int32_t code = 0; adapter.DecodeCatValue(i, code, variable, value); ++code) {
                fTranscript.fvDecoded.push_back(value);
            }
        }
    }

    std::mt19937 fRandom;  // the same whatever is read in blocks
    std::int32_t fRows;
    std::mt19937* fpBlocks;
    Transcript fTranscript;
};

class RecordBlocks : public testing::TestWithParam<std::int32_t> {};

TEST_P(RecordBlocks, GiveWhatRecordsGive) {
    const std::int32_t rows = GetParam();
    const int rounds = rows > 10000 ? 2 : 20;
    std::random_device device;
    for (int round = 0; round < rounds; ++round) {
        const std::uint32_t seed = device();
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Transcript records = Reading(seed, rows, nullptr).Run();
        std::mt19937 blockRandom(seed + 1);
        const Transcript blocks = Reading(seed, rows, &blockRandom).Run();
        ASSERT_TRUE(records.fvRecords == blocks.fvRecords);
        ASSERT_TRUE(records.fvSeen == blocks.fvSeen);
        ASSERT_EQ(records.fvLearned, blocks.fvLearned);
        ASSERT_TRUE(records.fvDecoded == blocks.fvDecoded);
        ASSERT_EQ(records.fvProgress, blocks.fvProgress);
        ASSERT_EQ(records.fNotes, blocks.fNotes);
        // Records have a state behind each of them, blocks behind their last.
        auto at = records.fvStates.begin();
        for (const State& state : blocks.fvStates) {
            at = std::find(at, records.fvStates.end(), state);
            ASSERT_NE(at, records.fvStates.end()) << "behind " << state.fRecords << " records";
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, RecordBlocks,
                         testing::Values(0, 1, 2, 100, 3000, kChunkRows - 1, kChunkRows,
                                         kChunkRows + 1, 2 * kChunkRows + 17));

// One run over numbers and few texts, all in order.
struct Delivery {
    explicit Delivery(DataSet data)
        : fData(std::move(data)),
          fCommands(embedded::ParseCommandText("SELECTPRED x;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport),
          fSpecs(true, true, true) {
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            fSpecs.AddVariable(i, !fData.GetColumn(i).IsNumeric());
        }
        fpAdapter = std::make_unique<Adapter>(&fSpecs, fSource);
    }

    DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
    ProcedureDataSource fSource;
    Specs fSpecs;
    std::unique_ptr<Adapter> fpAdapter;
};

DataSet Small() {
    return DataSetBuilder()
        .Numbers("x", {0.5, 1.5, 2.5, 3.5})
        .Strings("s", {"b", "a", std::nullopt, "b"})
        .Build();
}

struct Plain final : UAProcDataSourceIter {
    using UAProcDataSourceIter::UAProcDataSourceIter;
};

TEST(RecordBlocksOf, ColumnsArePassedOnAsTheyAreHeld) {
    Delivery run(Small());
    Plain pass(*run.fpAdapter, true);
    const MCCommon::RecordBlock* block = pass.NextBlock(100);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->fRows, 4);
    const auto codes = std::get<MCCommon::BlockColumn::Bytes>(block->fvColumns[1].fValues);
    EXPECT_EQ((std::vector<std::uint8_t>(codes.begin(), codes.end())),
              (std::vector<std::uint8_t>{2, 1, 0, 2}));
    EXPECT_EQ(block->fvColumns[1].fEntryEnd, 3U);
    const auto held =
        std::get<MCCommon::BlockColumn::Bytes>(run.fData.GetColumn(1).Codes(0).GetEntries());
    EXPECT_EQ(codes.data(), held.data());
    EXPECT_EQ(pass.NextBlock(100), nullptr);
    EXPECT_EQ(pass.GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
}

TEST(RecordBlocksOf, CasesLeftOutBreakNoBlock) {
    struct Odd final : UAProcDataSourceIter {
        explicit Odd(UAInputAdapter& adapter) : UAProcDataSourceIter(adapter, false) {}
        bool PreprocessCase() override { return fCases++ % 2 == 1; }
        int fCases = 0;
    };
    Delivery run(Small());
    Odd pass(*run.fpAdapter);
    const MCCommon::RecordBlock* block = pass.NextBlock(100);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->fRows, 2);
    const auto numbers = std::get<MCCommon::BlockColumn::Numbers>(block->fvColumns[0].fValues);
    EXPECT_EQ((Values(numbers.begin(), numbers.end())), (Values{1.5, 3.5}));
    const auto cases = pass.GetBlockCases();
    EXPECT_EQ((std::vector<std::int64_t>(cases.begin(), cases.end())),
              (std::vector<std::int64_t>{1, 3}));
}

TEST(RecordBlocksOf, AnIteratorOffersThemByDynamicCast) {
    Delivery run(Small());
    Plain pass(*run.fpAdapter, true);
    MCCommon::MultiPassRecordIter& records = pass;
    EXPECT_EQ(dynamic_cast<MCCommon::RecordBlockSource*>(&records), &pass);
}

TEST(RecordBlocksOf, NewColumnsAreWrittenForTheCasesOfTheBlock) {
    Delivery run(Small());
    Plain pass(*run.fpAdapter, true);
    pass.SetLastPass();
    run.fSource.SetMaxObsAdded(2);
    std::int32_t number = -1;
    std::int32_t text = -1;
    run.fSource.MakeVariable(0, number)->SetName("number");
    run.fSource.MakeVariable(3, text)->SetName("text");
    auto* writer = dynamic_cast<BlockColumnWriter*>(pass.GetProcDS());
    ASSERT_NE(writer, nullptr);
    ASSERT_NE(pass.Next(), nullptr);
    ASSERT_NE(pass.NextBlock(2), nullptr);
    const Values numbers{7, MCMV::gMissingValue};
    const std::vector<std::int32_t> places{-1, 1};
    writer->SetColumnValues(number, numbers);
    writer->SetColumnTexts(text, places, {"no", "yesterday"}, 3);
    run.fSession.Keep();
    const KoltObs none = MCMV::gMissingValue;
    std::vector<KoltObs> written;
    for (const std::int32_t column : {number, text}) {
        for (std::int64_t row = 0; row < 4; ++row) {
            written.push_back(run.fData.GetColumn(column).Value(row));
        }
    }
    EXPECT_EQ(written,
              (std::vector<KoltObs>{none, 7.0, none, none, none, none, std::string("yes"), none}));
}

}  // namespace
