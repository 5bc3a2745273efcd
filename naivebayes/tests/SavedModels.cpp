#include "naivebayes/tests/SavedModels.h"

#include <array>
#include <cstdint>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "naivebayes/NBOutput.h"
#include "naivebayes/NBOutputStatistics.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBVarList.h"

namespace {

class Rows : public MCCommon::MultiPassRecordIter {
 public:
    explicit Rows(std::vector<MCCommon::Record> records) : fvRecords(std::move(records)) {}
    bool HasMore() override { return fNext < fvRecords.size(); }
    const MCCommon::Record* Next() override { return HasMore() ? &fvRecords[fNext++] : nullptr; }
    std::int32_t GetFailReason() const override { return MCCommon::kITER_SUCCESS; }
    std::int32_t NewPass() override {
        fNext = 0;
        return GetFailReason();
    }

 private:
    std::vector<MCCommon::Record> fvRecords;
    std::size_t fNext = 0;
};

void Check(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

using Save = NBStatus (INBAlgorithm::*)(std::ostream&);
using Restore = std::unique_ptr<INBAlgorithm> (*)(NBStatus&, std::istream&);

std::string Saved(INBAlgorithm& engine, Save save) {
    std::ostringstream stream;
    Check((engine.*save)(stream).IsOK(), "a model was not saved");
    return stream.str();
}

/// Records of the engine's list with all kinds of values.
std::vector<MCCommon::Record> Probes(std::int32_t size) {
    constexpr std::array<double, 8> kValues{0.0,  1.0,   2.7,    -1.0,
                                            -0.4, 1e308, -1e308, MCMV::gMissingValue};
    std::vector<MCCommon::Record> records;
    for (std::size_t shift = 0; shift < kValues.size(); ++shift) {
        MCCommon::Record record(size);
        for (std::int32_t i = 0; i < size; ++i) {
            // The same value everywhere, then mixed ones.
            const auto at = shift + static_cast<std::size_t>(shift % 2 == 0 ? 0 : i);
            record[i] = kValues[at % kValues.size()];
        }
        records.push_back(record);
    }
    return records;
}

void Query(INBAlgorithm& engine) {
    std::ostringstream out;
    double weight = 0.0;
    double excludedWeight = 0.0;
    std::int32_t count = 0;
    std::int32_t excluded = 0;
    engine.GetRecordCounts(weight, excludedWeight, count, excluded);
    for (std::int32_t k = -1; k <= engine.GetNumTargetCategories(); ++k) {
        out << engine.GetTargetCategoryCounts(k).fUnweighted;
    }
    std::vector<std::string> names;
    std::string target;
    engine.GetVarList().GetVariableNames(names, target);
    out << engine.GetVersionString() << engine.GetStatus().GetCode() << engine.IsModelBuilt();
    engine.Display(out);
    engine.GetVarList().Display(out);
    engine.GetSettings().Display(out);
    engine.WritePMML(out, nullptr);
}

void Score(INBAlgorithm& engine) {
    NBOutput output;
    NBOutputStatistics table;
    for (const auto& record : Probes(engine.GetVarList().GetNumVariables())) {
        engine.ScoreRecord(record, output);
        engine.TallyRecord(record, output, true);
    }
    for (const auto& record : Probes(engine.GetNumInputVars())) {
        engine.ScoreInputRecord(record, output);
    }
    Rows records(Probes(engine.GetVarList().GetNumVariables()));
    engine.ClassifyRecords(records, table, -1);
}

void Use(const std::string& bytes, Restore restore, Save save) {
    NBStatus status;
    std::istringstream stream(bytes);
    const auto engine = restore(status, stream);
    Check((engine == nullptr) == status.IsError(), "a refusal without its status");
    if (engine == nullptr) return;
    Query(*engine);
    Score(*engine);
    const std::string saved = Saved(*engine, save);
    std::istringstream again(bytes);
    const auto other = restore(status, again);
    Check(other != nullptr && Saved(*other, save) == saved, "restored differently the second time");
    engine->MergeModel(*other, true);
    engine->MergeModel(*other, false);
    engine->MergeModel(*engine, false);
    Query(*engine);
    Score(*engine);
    Rows records(Probes(engine->GetVarList().GetNumVariables()));
    engine->UpdateModel(records, -1);
    Query(*engine);
    Score(*engine);
}

}  // namespace

namespace savedmodels {

std::unique_ptr<INBAlgorithm> SmallModel() {
    NBVarList list;
    list.AddNumericCatVar("a", "Size", {1, 2, 4}, {"small", "", "large"}, NBRole::kInput);
    list.AddStringCatVar("t", "", {"no", "yes"}, {}, NBRole::kTarget);
    list.AddContVar("x", "", 0.0, 4.0, 4, NBRole::kInput);
    list.AddNumericCatVar("u", "", {0, 1}, {}, NBRole::kInput);
    list.AddStringCatVar("s", "Colour", {"red", "green"}, {}, NBRole::kInput);
    list.AddNumericCatVar("c", "", {7, 8}, {}, NBRole::kPossibleInput);
    list.AddNumericMissing(0, 9, "refused");
    list.AddStringMissing(4, "?", "");
    list.AddNumericMissing(2, -1, "unknown");
    list.SetMissingRange(2, 97, 99);
    NBStatus status;
    auto engine = CreateNBAlgorithm(status, NaiveBayesSettings(), list);
    if (engine == nullptr) return nullptr;
    // "u" is constant and leaves; the third bin of "x" is empty; the last record is excluded.
    std::vector<MCCommon::Record> records;
    for (const auto& row : {std::vector<double>{0, 0, 0.5, 1, 0, 0},
                            {0, 0, 1.5, 1, 1, 1},
                            {2, 1, 3.5, 1, 1, 0},
                            {2, 1, 98, 1, -1, 1},
                            {-1, 1, 3.25, 1, 1, 1},
                            {1, 0, 0.25, 1, 0, 0},
                            {0, -1, 1, 1, 1, 1}}) {
        records.emplace_back(row);
    }
    Rows source(records);
    engine->BuildModel(source, static_cast<std::int32_t>(records.size()));
    return engine;
}

std::string SmallModelBinary() { return Saved(*SmallModel(), &INBAlgorithm::SaveBinary); }
std::string SmallModelXML() { return Saved(*SmallModel(), &INBAlgorithm::SaveXML); }

void UseBinary(const std::string& bytes) {
    Use(bytes, &RestoreNBAlgorithm, &INBAlgorithm::SaveBinary);
}
void UseXML(const std::string& text) { Use(text, &RestoreNBAlgorithmXML, &INBAlgorithm::SaveXML); }

}  // namespace savedmodels
