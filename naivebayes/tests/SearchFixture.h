#ifndef PREDSEL_NAIVEBAYES_TESTS_SEARCHFIXTURE_H
#define PREDSEL_NAIVEBAYES_TESTS_SEARCHFIXTURE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "host/Records.h"
#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBSubsetSearch.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/tests/SearchOracle.h"

/// Records in memory that count how they are read.
class CountedRecords : public MCCommon::MultiPassRecordIter {
 public:
    explicit CountedRecords(std::vector<MCCommon::Record> records)
        : fvRecords(std::move(records)) {}
    bool HasMore() override { return fNext < fvRecords.size(); }
    const MCCommon::Record* Next() override {
        if (!HasMore()) return nullptr;
        ++fNumDelivered;
        return &fvRecords[fNext++];
    }
    std::int32_t GetFailReason() const override {
        return fNext < fvRecords.size() ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
    }
    std::int32_t NewPass() override {
        ++fNumRewound;
        fNext = 0;
        return GetFailReason();
    }

    std::vector<MCCommon::Record> fvRecords;
    std::size_t fNext = 0;
    std::int32_t fNumDelivered = 0;
    std::int32_t fNumRewound = 0;
};

/// Gives the positive answer once it has been asked this many times.
class StopAfter : public MCStopProcessor {
 public:
    explicit StopAfter(std::int32_t polls) : MCStopProcessor(0.0), fPollsLeft(polls) {}
    bool IsCancelled() override { return fPollsLeft-- <= 0; }

 private:
    std::int32_t fPollsLeft;
};

struct SearchData {
    struct Predictor {
        std::int32_t fNumCategories = 2;
        std::int32_t fRole = 2;  // 1 forced, 2 candidate
    };
    std::int32_t fNumTargets = 2;
    std::vector<Predictor> fPredictors;
    std::vector<SearchOracle::Row> fRows;
    bool fbWeighted = false;

    std::vector<std::int32_t> NumCategories() const {
        std::vector<std::int32_t> numbers;
        for (const Predictor& predictor : fPredictors) numbers.push_back(predictor.fNumCategories);
        return numbers;
    }
    SearchOracle::Model Oracle() const { return {fNumTargets, NumCategories(), fRows}; }
};

/// A trained engine's part in a search. The variable list holds an unused variable, the first
/// predictor, the target, the other predictors and the weight, so that a predictor's list index,
/// its table index and its position in a record all differ.
class TrainedTables {
 public:
    explicit TrainedTables(const SearchData& data) : fData(data), fRecords(Prepare(data)) {
        fList.AddNumericCatVar("unused", "", Codes(3), NBRole::kUnused);
        for (std::size_t j = 0; j < data.fPredictors.size(); ++j) {
            fvListIndices.push_back(fList.AddNumericCatVar(
                "p" + std::to_string(j), j % 2 == 0 ? "Predictor " + std::to_string(j) : "",
                Codes(data.fPredictors[j].fNumCategories), data.fPredictors[j].fRole));
            if (j == 0) {
                fTargetIndex = fList.AddNumericCatVar("target", "The target",
                                                      Codes(data.fNumTargets), NBRole::kTarget);
            }
        }
        if (data.fbWeighted) fList.AddWeightVar("weight", "", 0);
        fOutput = NBayesOutput(*fList.GetVariable(fTargetIndex), fTargetIndex);
        const std::int32_t first = data.fbWeighted ? 2 : 1;
        for (std::size_t j = 0; j < data.fPredictors.size(); ++j) {
            fvInputs.emplace_back();
            fvInputs.back().Setup(*fList.GetVariable(fvListIndices[j]), data.fNumTargets,
                                  fvListIndices[j], first + static_cast<std::int32_t>(j));
        }
        double weight = 0.0;
        for (const SearchOracle::Row& row : data.fRows) {
            fOutput.AddRecord(row.fTarget, row.fWeight);
            weight += row.fWeight;
            for (std::size_t j = 0; j < fvInputs.size(); ++j) {
                if (row.fCodes[j] < 0) continue;
                fvInputs[j].AddCount(row.fCodes[j], row.fTarget, row.fWeight);
            }
        }
        fOutput.ComputePriors(weight);
        for (NBayesInput& input : fvInputs) input.UpdateProbabilities(weight);
    }

    /// A new search of these tables; one a trial, as roles change.
    NBSubsetSearch MakeSearch() {
        return NBSubsetSearch(fvInputs, fOutput, fList, fSettings, fInterrupt);
    }
    std::int32_t NumRecords() const { return static_cast<std::int32_t>(fRecords.fvRecords.size()); }
    std::vector<std::int32_t> Roles() const {
        std::vector<std::int32_t> roles;
        for (const std::int32_t index : fvListIndices) roles.push_back(fList.GetRole(index));
        return roles;
    }
    /// Chain positions as predictors, from list indices.
    std::vector<std::int32_t> Predictors(const std::vector<std::int32_t>& listIndices) const {
        std::vector<std::int32_t> predictors;
        for (const std::int32_t index : listIndices) {
            for (std::size_t j = 0; j < fvListIndices.size(); ++j) {
                if (fvListIndices[j] == index) predictors.push_back(static_cast<std::int32_t>(j));
            }
        }
        return predictors;
    }
    /// Rows as the preparator takes them.
    CountedRecords Originals(const std::vector<SearchOracle::Row>& rows) const {
        std::vector<MCCommon::Record> records;
        for (const SearchOracle::Row& row : rows) {
            MCCommon::Record record(fList.GetNumVariables());
            record[fTargetIndex] = row.fTarget;
            for (std::size_t j = 0; j < fvListIndices.size(); ++j) {
                record[fvListIndices[j]] = row.fCodes[j];
            }
            if (fData.fbWeighted) record[fList.GetNumVariables() - 1] = row.fWeight;
            records.push_back(std::move(record));
        }
        return CountedRecords(std::move(records));
    }

    static std::vector<double> Codes(std::int32_t count) {
        std::vector<double> codes(static_cast<std::size_t>(count));
        std::iota(codes.begin(), codes.end(), 0.0);
        return codes;
    }
    static CountedRecords Prepare(const SearchData& data) {
        std::vector<MCCommon::Record> records;
        for (const SearchOracle::Row& row : data.fRows) {
            std::vector<double> values{static_cast<double>(row.fTarget)};
            if (data.fbWeighted) values.push_back(row.fWeight);
            for (const std::int32_t code : row.fCodes) values.push_back(code);
            records.emplace_back(std::move(values));
        }
        return CountedRecords(std::move(records));
    }

    SearchData fData;
    CountedRecords fRecords;
    NBVarList fList;
    std::int32_t fTargetIndex = -1;
    std::vector<std::int32_t> fvListIndices;  // of the predictors
    NBayesOutput fOutput;
    std::vector<NBayesInput> fvInputs;
    NaiveBayesSettings fSettings;
    NBInterruptState fInterrupt;
};

#endif  // PREDSEL_NAIVEBAYES_TESTS_SEARCHFIXTURE_H
