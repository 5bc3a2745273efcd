#include "featureselect/tests/SavedStates.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "featureselect/FSAccumKind.h"
#include "featureselect/FSCancelState.h"
#include "featureselect/FSFactory.h"
#include "featureselect/FSPredOrder.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/IOException.h"
#include "host/Xml.h"
#include "tests/support/RecordList.h"

namespace savedstates {
namespace {

constexpr double kMissing = MCMV::gMissingValue;

// Target, then the predictors of MixedSettings: categorical, continuous, constant, continuous.
const std::vector<std::vector<double>>& Rows() {
    static const std::vector<std::vector<double>> kRows{
        {0, 0, 1.5, 7, 20}, {0, 0, 2.5, 7, 21},   {0, 1, 1.0, 7, 19.5}, {1, 1, 4.0, 7, kMissing},
        {1, 1, 5.5, 7, 22}, {1, 2, 4.5, 7, 20.5}, {0, -1, 2.0, 7, 18},  {1, 0, 3.5, 7, 23},
    };
    return kRows;
}

template <class Accum>
Accum FedWithPairs() {
    Accum accum;
    for (const auto& row : Rows()) {
        if (accum.IsCategorical() ? row[1] == -1 : row[4] == kMissing) {
            accum.AddMissing(1.0);
        } else {
            accum.AddPair(accum.IsCategorical() ? row[1] : row[4], row[0], 1.0, true);
        }
    }
    accum.FinishData();
    return accum;
}

template <class Accum>
Accum FedWithValues() {
    Accum accum;
    for (const auto& row : Rows()) {
        if (accum.IsCategorical() ? row[1] == -1 : row[4] == kMissing) {
            accum.AddMissing(1.0);
        } else {
            accum.AddValue(accum.IsCategorical() ? row[1] : row[4], 1.0, true);
        }
    }
    accum.FinishData();
    return accum;
}

template <class T>
std::string Saved(const T& object, bool xml) {
    std::ostringstream stream;
    if (xml) {
        object.SaveXML(stream, 0);
    } else {
        object.SaveBinary(stream);
    }
    return stream.str();
}

/// False when the bytes are refused.
template <class T>
bool RestoreInto(T& object, const std::string& bytes, bool xml) {
    std::istringstream stream(bytes);
    try {
        if (xml) {
            MCCommonXML::XMLReader document(stream);
            object.RestoreXML(document);
        } else {
            object.RestoreBinary(stream);
        }
        return true;
    } catch (const MCFeature::IOException* failure) {
        delete failure;
        return false;
    }
}

void Require(bool condition, const char* text) {
    if (!condition) throw std::runtime_error(text);
}

template <class T>
void Show(const T& object) {
    std::ostringstream text;
    object.Display(text);
    Require(text.str().starts_with("Start of ") && text.str().ends_with(" display\n"),
            "shown without its frame");
}

// --- What may be done to an object of each kind ---

template <class Map>
void UseMap(Map& map, Map& other) {
    double sum = 0;
    for (std::int32_t at = 0; at < map.Size(); ++at) sum += map.GetAt(at).fWeight;
    other.MergeFrom(map);
    Require(other.Size() >= map.Size() || sum != sum, "smaller after a merge");
    Show(other);
}
void Use(FSMapICnt& map, FSMapICnt& other) {
    double weight = 0;
    map.Find(3, weight);
    map.Add(4, 1.0);
    UseMap(map, other);
}
void Use(FSMapIPCnt& map, FSMapIPCnt& other) {
    double weight = 0;
    std::int32_t count = 0;
    map.Find(3, count, weight);
    UseMap(map, other);
}
void Use(FSMapIStat& map, FSMapIStat& other) {
    double weight = 0, mean = 0, moment = 0, variance = 0;
    map.Find(3, weight, mean, moment, variance);
    map.Add(4, 1.0, 2.0);
    map.FinishVariances();
    UseMap(map, other);
}
void Use(FSMapPiCnt& map, FSMapPiCnt& other) {
    double weight = 0;
    map.Find({3, 1}, weight);
    map.Add({3, 4}, 1.0);
    UseMap(map, other);
}
void Use(FSPredSort& record, FSPredSort& other) {
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        std::vector<std::unique_ptr<FSPredSort>> records;
        for (const FSPredSort* one : {&record, &other, &record}) {
            records.push_back(std::make_unique<FSPredSort>(*one));
        }
        FSPredOrder::Sort(records, criterion, records.size());
        const auto unused = std::count(records.begin(), records.end(), nullptr);
        Require(records.size() == 3 && unused == 0, "lost in the order");
    }
}
void Use(FSSettings& settings, FSSettings& other) {
    settings.GetDefaultBestCount(0);
    settings.IsPredictorCategorical(settings.GetNumPredictors());
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        settings.SetCriterion(criterion, !settings.IsCriterionOn(criterion));
    }
    for (std::int32_t predictor = -1; predictor < 8; ++predictor) {
        settings.SetPredictorCategorical(predictor, !settings.IsPredictorCategorical(predictor));
    }
    settings.SetTargetCategorical(!settings.IsTargetCategorical());
    other = settings;
}
void Use(IFSPredTargetAccum& accum, IFSPredTargetAccum& other) {
    const auto query = [](const IFSPredTargetAccum& queried) {
        const FSSettings settings(1, queried.IsCategorical(), true);
        std::vector<std::int32_t> reasons;
        queried.CheckDeletion(settings);
        queried.CheckAllDeletions(settings, reasons);
        queried.IsAllMissing();
        queried.IsConstant();
        double one = 0, two = 0, three = 0, four = 0, five = 0;
        for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
            queried.ComputeCriterion(criterion, one, two, three, four, five);
            queried.GetCriterionForDisplay(criterion, one, two, three, four);
        }
    };
    query(accum);
    FSAccumKind::Merge(other, accum);
    other.FinishData();
    query(other);
    accum.AddMissing(1.0);
    accum.AddValue(2.0, 1.0, true);
    accum.AddPair(2.0, 1.0, 1.0, true);
    accum.FinishData();
    query(accum);
    Show(other);
}
void Use(FSPredictorSet& set, FSPredictorSet& other) {
    set.MergeFrom(other);
    std::vector<std::int32_t> indices;
    std::vector<double> values;
    std::vector<std::vector<std::int32_t>> reasons;
    std::ostringstream report;
    const auto query = [&] {
        double one = 0, two = 0, three = 0, four = 0;
        for (std::int32_t criterion = -1; criterion <= FSCriterion::kCount; ++criterion) {
            static_cast<void>(set.GetBest(criterion, 2, indices, values));
            set.GetRanks(criterion);
            set.GetCriterionValues(criterion);
            for (std::int32_t predictor = -1; predictor < 5; ++predictor) {
                set.GetPredictorCriterion(criterion, predictor, one, two, three, four);
            }
        }
        for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
            static_cast<void>(set.WriteOutputOne(report, criterion, 2));
        }
        static_cast<void>(set.WriteOutputAll(report));
        Show(set);
    };
    query();
    static_cast<void>(set.CollectDeletionReasons(indices, reasons));
    static_cast<void>(set.DeleteMissingOrConstant());
    static_cast<void>(set.DeleteByCriteria());
    for (const std::int32_t best : {0, 2}) {
        static_cast<void>(set.ComputeCriteria());
        static_cast<void>(best == 0 ? set.SortAll() : set.SortBest(best));
        static_cast<void>(best == 0 ? set.RankAll() : set.RankBest());
        query();
    }
    set.Reset();
    query();
}

// A class with its four operations. make gives an empty object.
template <class Make>
void AddClass(std::vector<State>& states, const std::string& name, const std::string& binary,
              const std::string& text, Make make) {
    for (const bool xml : {false, true}) {
        const auto saveAgain = [make, xml](const std::string& bytes) {
            auto object = make();
            return RestoreInto(*object, bytes, xml) ? Saved(*object, xml) : std::string();
        };
        const auto use = [make, xml, saveAgain](const std::string& bytes) {
            auto object = make();
            if (!RestoreInto(*object, bytes, xml)) return std::string();
            Show(*object);
            std::string saved = Saved(*object, xml);
            Require(saveAgain(saved) == saved, "saved differently the second time");
            auto other = make();
            RestoreInto(*other, bytes, xml);
            Use(*object, *other);
            Saved(*object, !xml);
            return saved;
        };
        states.push_back({name, xml, xml ? text : binary, use, saveAgain});
    }
}

template <class T>
void AddObject(std::vector<State>& states, const T& object) {
    AddClass(states, std::string(T::kSaved.fName), Saved(object, false), Saved(object, true),
             [] { return std::make_unique<T>(); });
}

std::unique_ptr<IFSAlgorithm> RestoredEngine(const std::string& bytes, bool xml) {
    FSFactory factory;
    std::istringstream stream(bytes);
    auto engine = xml ? factory.CreateFromXML(stream) : factory.CreateFromBinary(stream);
    const std::uint32_t code = factory.GetStatus().fCode;
    Require(engine ? code == 0 : code == (xml ? 80005U : 80004U), "a wrong status");
    return engine;
}

std::string SavedEngine(IFSAlgorithm& engine, bool xml) {
    std::ostringstream stream;
    static_cast<void>(xml ? engine.SaveXML(stream) : engine.SaveBinary(stream));
    return stream.str();
}

std::string SaveEngineAgain(const std::string& bytes, bool xml) {
    const auto engine = RestoredEngine(bytes, xml);
    return engine ? SavedEngine(*engine, xml) : std::string();
}

std::string UseEngine(const std::string& bytes, bool xml) {
    const auto engine = RestoredEngine(bytes, xml);
    if (!engine) return {};
    std::string saved = SavedEngine(*engine, xml);
    Require(SaveEngineAgain(saved, xml) == saved, "saved differently the second time");
    Require(!SavedEngine(*engine, !xml).empty(), "not saved in the other form");
    Show(*engine);

    const auto other = RestoredEngine(bytes, xml);
    static_cast<void>(other->MergeFrom(*engine));
    Show(*other);
    std::vector<std::int32_t> indices;
    std::vector<double> values;
    std::ostringstream report;
    double one = 0, two = 0, three = 0, four = 0;
    std::int32_t category = 0;
    IFSAlgorithm::CategoryCount count;
    const auto query = [&](IFSAlgorithm& queried) {
        queried.GetRecordCounts(one, two, category, category);
        for (std::int32_t at = -1; at <= queried.GetNumberOfTargetCategories(); ++at) {
            queried.GetTargetCategoryByIndex(at, category, count);
            queried.GetTargetCategoryByValue(category);
        }
        queried.GetDeletedIndices();
        queried.GetDeletionReasons();
        for (std::int32_t criterion = -1; criterion <= FSCriterion::kCount; ++criterion) {
            queried.GetRanks(criterion);
            queried.GetCriterionValues(criterion);
            static_cast<void>(queried.GetBestPredictors(criterion, indices, values, 2));
            static_cast<void>(queried.WriteOutputOne(report, criterion, 2));
            for (std::int32_t predictor = -1; predictor < 5; ++predictor) {
                queried.GetPredictorCriterion(criterion, predictor, one, two, three, four);
            }
        }
        static_cast<void>(queried.WriteOutputAll(report));
    };
    query(*engine);
    query(*other);
    static_cast<void>(other->DeleteMissingOrConstant());
    static_cast<void>(other->DeleteByCriteria());
    static_cast<void>(other->RankPredictors(0));
    query(*other);
    static_cast<void>(engine->RankPredictors(2));
    query(*engine);
    return saved;
}

void AddEngine(std::vector<State>& states, const std::string& saved) {
    for (const bool xml : {false, true}) {
        states.push_back({"FSAlgorithm", xml, xml ? EngineAsXML(saved) : saved,
                          [xml](const std::string& bytes) { return UseEngine(bytes, xml); },
                          [xml](const std::string& bytes) { return SaveEngineAgain(bytes, xml); }});
    }
}

constexpr std::size_t kEngineTag = 16;
// Tag, counts and kinds of four predictors, type, target, criteria, seven numbers, six rules.
constexpr std::size_t kFourSettings = 5 + 4 + 4 * 4 + 3 * 4 + 6 * 4 + 7 * 4 + 6 * 12;

// Processor time differs from run to run.
std::string WithoutElapsed(std::string saved) {
    constexpr std::size_t kElapsed = kEngineTag + kFourSettings + 5 + 2 * 4;
    saved.replace(kElapsed, sizeof(double), sizeof(double), '\0');
    return saved;
}

std::unique_ptr<IFSAlgorithm> EngineWithData(FSSettings& settings) {
    auto engine = FSFactory().CreateFromSettings(settings);
    testsupport::RecordList records(Rows());
    Require(engine->AccumulateData(records, -1).IsOk(), "no pass");
    return engine;
}

// A predictor set beside the settings and the cancel state that it borrows.
struct SetInPlace {
    FSSettings fSettings = MixedSettings();
    FSCancelState fCancel;
    FSPredictorSet fSet{fSettings, fCancel};

    std::int64_t SaveBinary(std::ostream& stream) const { return fSet.SaveBinary(stream); }
    std::int64_t RestoreBinary(std::istream& stream) { return fSet.RestoreBinary(stream); }
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const {
        return fSet.SaveXML(stream, level);
    }
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) { return fSet.RestoreXML(document); }
    void Display(std::ostream& out) const { fSet.Display(out); }
};

void Use(SetInPlace& set, SetInPlace& other) { Use(set.fSet, other.fSet); }

}  // namespace

FSMapICnt MapICnt() {
    FSMapICnt map;
    map.Add(3, 2.0);
    map.Add(-2, 0.5);
    return map;
}

FSMapIPCnt MapIPCnt() {
    FSMapIPCnt map;
    map.Add(3, 1.5);
    map.Add(-2, 0.5);
    map.Add(3, 1.5);
    return map;
}

FSMapIStat MapIStat() {
    FSMapIStat map;
    map.Add(3, 1.0, 1.0);
    map.Add(3, 2.0, 1.0);
    map.Add(-2, 4.5, 2.0);
    map.FinishVariances();
    return map;
}

FSMapPiCnt MapPiCnt() {
    FSMapPiCnt map;
    map.Add({3, 1}, 2.0);
    map.Add({3, -2}, 0.5);
    return map;
}

FSPredSort PredSort() { return {0.25, 3.0, kMissing, 7}; }

FSCatAccum CatAccum() { return FedWithValues<FSCatAccum>(); }
FSCatPCatTAccum CatPCatTAccum() { return FedWithPairs<FSCatPCatTAccum>(); }
FSCatPContTAccum CatPContTAccum() { return FedWithPairs<FSCatPContTAccum>(); }
FSContAccum ContAccum() { return FedWithValues<FSContAccum>(); }
FSContPCatTAccum ContPCatTAccum() { return FedWithPairs<FSContPCatTAccum>(); }
FSContPContTAccum ContPContTAccum() { return FedWithPairs<FSContPContTAccum>(); }

FSSettings MixedSettings(bool targetIsCategorical) {
    FSSettings settings({true, false, true, false}, targetIsCategorical);
    settings.SetTargetPosition(0);
    return settings;
}

std::string AccumulatedEngine(bool targetIsCategorical) {
    FSSettings settings = MixedSettings(targetIsCategorical);
    return WithoutElapsed(SavedEngine(*EngineWithData(settings), false));
}

std::string RankedEngine(bool targetIsCategorical) {
    FSSettings settings = MixedSettings(targetIsCategorical);
    const auto engine = EngineWithData(settings);
    Require(engine->DeleteMissingOrConstant().IsOk(), "nothing left");
    Require(engine->RankPredictors(0).IsOk(), "not ranked");
    return WithoutElapsed(SavedEngine(*engine, false));
}

std::string PredictorSetOf(const std::string& savedEngine) {
    const std::size_t start = kEngineTag + kFourSettings;
    return savedEngine.substr(start, savedEngine.size() - start - 2 * 4);  // two booleans follow
}

std::string EngineAsXML(const std::string& savedEngine) {
    return SavedEngine(*RestoredEngine(savedEngine, false), true);
}

std::vector<State> AllStates() {
    std::vector<State> states;
    AddObject(states, MapICnt());
    AddObject(states, MapIPCnt());
    AddObject(states, MapIStat());
    AddObject(states, MapPiCnt());
    AddObject(states, PredSort());
    AddObject(states, CatAccum());
    AddObject(states, CatPCatTAccum());
    AddObject(states, CatPContTAccum());
    AddObject(states, ContAccum());
    AddObject(states, ContPCatTAccum());
    AddObject(states, ContPContTAccum());
    AddObject(states, MixedSettings());
    const std::string engine = RankedEngine();
    SetInPlace set;
    Require(RestoreInto(set, PredictorSetOf(engine), false), "no predictor set");
    AddClass(states, "FSPredictorSet", PredictorSetOf(engine), Saved(set, true),
             [] { return std::make_unique<SetInPlace>(); });
    AddEngine(states, engine);
    return states;
}

}  // namespace savedstates
