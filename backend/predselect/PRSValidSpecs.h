#ifndef PREDSEL_BACKEND_PRSVALIDSPECS_H
#define PREDSEL_BACKEND_PRSVALIDSPECS_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/Data.h"

class FSSettings;
class MCStopProcessor;
class UAUniformRandom;
class UAVarValidSpecs;
struct NaiveBayesSettings;

/// What the user asked for, checked: the record between the parser, which fills it, and the engines
/// and writers, which read it. One type serves both commands; the fields of the other command keep
/// their defaults. Once FinishSpecs has made the host's variable registry and the engine's settings
/// from it, it is read-only.
class PRSValidSpecs {
 public:
    PRSValidSpecs();
    ~PRSValidSpecs();
    PRSValidSpecs(const PRSValidSpecs&) = delete;
    PRSValidSpecs& operator=(const PRSValidSpecs&) = delete;

    /// True for SELECTPRED, false for NAIVEBAYES.
    void SetUniVariable(bool uniVariable) { fbUniVariable = uniVariable; }
    /// The target by dictionary index.
    void SetDependVar(std::int32_t index, bool isCat);
    void SetWeightVar(std::int32_t index) { fWeightVar = index; }
    /// Predictors by dictionary index, ascending, and for each one true when it is a factor.
    /// Borrowed. REQUIRES: equal sizes, null counting as empty.
    void SetPredictors(const std::vector<std::int32_t>* list, const std::vector<bool>* flags);
    void SetForcePredictors(const std::vector<std::int32_t>* list, const std::vector<bool>* flags);
    /// Borrowed.
    void SetExceptList(const std::vector<std::int32_t>* list) { fpExceptList = list; }
    /// Limits in percent but for the last two.
    void SetScreening(bool status, double pctMissing, double pctEqual, double pctUnequal, double cv,
                      double stdDev);
    /// The same limits as the user typed them, empty where none was given.
    void SetScreeningTexts(std::string pctMissing, std::string pctEqual, std::string pctUnequal,
                           std::string cv, std::string stdDev);
    /// timer in minutes; size 0 leaves the number to the engine.
    void SetSelectCriteria(std::int32_t size, std::int32_t ranking, double pCutoff,
                           std::int32_t showUnselected, double timer);
    /// memAllocate in megabytes, timer in minutes.
    void SetNaiveCriteria(std::int32_t bins, double memAllocate, std::int32_t showUnselected,
                          double timer);
    /// percent 0.0 and variable -1 stand for what was not given.
    void SetTrainSample(double percent, std::int32_t variable);
    /// maxSize 0 leaves the size to the engine, -1 sets no maximum; exactSize 0 is none.
    void SetSubset(std::int32_t maxSize, bool pseudoBIC, bool testData, std::int32_t exactSize);
    void SetUserMissExclude(bool exclude) { fbUserMissExclude = exclude; }
    void SetFactorMacroVar(KoltVarName name) { fFactorMacroVar = std::move(name); }
    void SetCovarMacroVar(KoltVarName name) { fCovarMacroVar = std::move(name); }
    void SetPredProb(KoltVarName root, std::int32_t count);
    void SetPredVal(KoltVarName name, bool isDefault);
    void SetModelFile(std::string path) { fModelFile = std::move(path); }
    void SetPrintFlags(bool cps, bool excluded, bool summary, bool selected, bool classification,
                       bool uncertainty);
    void SetPlotSummary(bool plot) { fbPlotSummary = plot; }
    void SetPlotUncertainty(bool plot) { fbPlotUncertainty = plot; }
    /// A further criterion to report; a repeated one is dropped.
    void AddPrintRank(std::int32_t criterion);

    bool GetUniVariable() const { return fbUniVariable; }
    std::int32_t GetDependVar() const { return fDependVar; }
    bool GetDependCat() const { return fbDependCat; }
    /// -1 without a weight variable.
    std::int32_t GetWeightVar() const { return fWeightVar; }
    /// Null when there are none, here and in the four that follow.
    const std::vector<std::int32_t>* GetPredictList() const { return fpPredictList; }
    const std::vector<bool>* GetPredCatFlags() const { return fbpPredCatVarList; }
    const std::vector<std::int32_t>* GetForcePredList() const { return fpForcePredList; }
    const std::vector<bool>* GetForceCatFlags() const { return fbpForceCatVarList; }
    const std::vector<std::int32_t>* GetExceptList() const { return fpExceptList; }
    bool GetScreening() const { return fbScreening; }
    double GetPctMissing() const { return fPctMissing; }
    double GetPctEqual() const { return fPctEqual; }
    double GetPctUnequal() const { return fPctUnequal; }
    double GetCoefVar() const { return fCoefVar; }
    double GetStdDev() const { return fStdDev; }
    const std::string& GetPctMissingText() const { return fPctMissingText; }
    const std::string& GetPctEqualText() const { return fPctEqualText; }
    const std::string& GetPctUnequalText() const { return fPctUnequalText; }
    const std::string& GetCoefVarText() const { return fCoefVarText; }
    const std::string& GetStdDevText() const { return fStdDevText; }
    /// Minutes.
    double GetTimer() const { return fTimer; }
    std::int32_t GetShowUnselected() const { return fShowUnselected; }
    /// As given: 0 means AUTO.
    std::int32_t GetSelectSize() const { return fSelectSize; }
    /// FSCriterion numbers 0 to 3.
    std::int32_t GetRanking() const { return fRanking; }
    double GetPCutoff() const { return fPCutoff; }
    std::int32_t GetBins() const { return fBins; }
    /// Megabytes.
    double GetMultiMemAllocate() const { return fMultiMemAllocate; }
    double GetTrainSampPct() const { return fTrainSampPct; }
    std::int32_t GetTrainSampVar() const { return fTrainSampVar; }
    std::int32_t GetMaxSubsetSize() const { return fMaxSubsetSize; }
    bool GetPseudoBIC() const { return fbPseudoBIC; }
    bool GetTestData() const { return fbTestData; }
    std::int32_t GetExactSubsetSize() const { return fExactSubsetSize; }
    bool GetUserMissExclude() const { return fbUserMissExclude; }
    /// Empty when no probabilities are saved.
    const KoltVarName& GetPredProbRoot() const { return fPredProbRoot; }
    std::int32_t GetMaxPredProbs() const { return fMaxPredProbs; }
    /// Empty when no predicted value is saved.
    const KoltVarName& GetPredValName() const { return fPredValName; }
    bool GetPredValDefault() const { return fbPredValDefault; }
    const std::string& GetModelFile() const { return fModelFile; }
    const std::vector<std::int32_t>& GetPrintRankList() const { return fPrintRankList; }
    bool GetPrintCPS() const { return fbPrintCPS; }
    bool GetPrintExcluded() const { return fbPrintExcluded; }
    bool GetPrintSummary() const { return fbPrintSummary; }
    bool GetPrintSelected() const { return fbPrintSelected; }
    bool GetPrintClassification() const { return fbPrintClassification; }
    bool GetPrintUncertainty() const { return fbPrintUncertainty; }
    bool GetPlotSummary() const { return fbPlotSummary; }
    bool GetPlotUncertainty() const { return fbPlotUncertainty; }

    /// Null before FinishSpecs. Borrowed from this object.
    UAVarValidSpecs* GetVarValidSpecs() const;
    /// Null before FinishSpecs and for NAIVEBAYES. Borrowed from this object.
    FSSettings* GetFSSettings() const { return fpFSSettings.get(); }
    /// Null before FinishSpecs and for SELECTPRED. Borrowed from this object.
    NaiveBayesSettings* GetNBSettings() const { return fpNBSettings.get(); }

    std::int32_t GetPredictCount() const;
    std::int32_t GetForcePredCount() const;
    /// True when the cases are split into a training and a test sample.
    bool GetMultiTrainSamp() const { return fTrainSampPct > 0.0 || fTrainSampVar >= 0; }
    /// True when no subset search was asked for.
    bool IsNoSelection() const { return fMaxSubsetSize < 0 && fExactSubsetSize < 1; }
    /// The number of predictors to select: as given, else the engine's default for as many
    /// predictors as there are, else 0 while neither is known.
    std::int32_t GetEffectiveSelectSize() const;

    /// Makes the variable registry, the time limit and the engine's settings, for NAIVEBAYES the
    /// random source too. Columns of a record: target, weight if any, predictors in list order,
    /// forced predictors in theirs. Called once, after a parse that succeeded.
    void FinishSpecs();

    /// Debugging text of the members of the command at hand.
    void Display(std::ostream& out) const;

    /// What Display writes of a ranking criterion.
    static std::string_view RankingText(std::int32_t criterion);

 private:
    class VarRegistry;  // the host's registry, deletable

    void FinishSelectPred(std::int32_t targetColumn, std::int32_t weightColumn);
    void FinishNaiveBayes();
    void DisplaySelectPred(std::ostream& out) const;
    void DisplayNaiveBayes(std::ostream& out) const;

    bool fbUniVariable = true;
    std::int32_t fDependVar = -1;  // dictionary index, as all variables here
    bool fbDependCat = true;
    std::int32_t fWeightVar = -1;
    const std::vector<std::int32_t>* fpPredictList = nullptr;  // from the parser, as the next four
    const std::vector<bool>* fbpPredCatVarList = nullptr;      // as long as fpPredictList
    const std::vector<std::int32_t>* fpForcePredList = nullptr;
    const std::vector<bool>* fbpForceCatVarList = nullptr;  // as long as fpForcePredList
    const std::vector<std::int32_t>* fpExceptList = nullptr;
    bool fbScreening = true;
    double fPctMissing = 70.0;
    double fPctEqual = 95.0;
    double fPctUnequal = 90.0;
    double fCoefVar = 0.001;
    double fStdDev = 0.0;
    std::string fPctMissingText;
    std::string fPctEqualText;
    std::string fPctUnequalText;
    std::string fCoefVarText;
    std::string fStdDevText;
    double fTimer = 5.0;  // minutes
    std::int32_t fShowUnselected = 0;
    std::int32_t fSelectSize = 0;  // 0 is AUTO
    std::int32_t fRanking = 0;
    double fPCutoff = 0.05;
    std::int32_t fBins = 10;
    double fMultiMemAllocate = 1024.0;  // megabytes
    double fTrainSampPct = 0.0;         // 0 when unset
    std::int32_t fTrainSampVar = -1;
    std::int32_t fMaxSubsetSize = 0;  // 0 is AUTO, -1 no maximum
    bool fbPseudoBIC = false;
    bool fbTestData = false;
    std::int32_t fExactSubsetSize = 0;  // 0 when unset
    bool fbUserMissExclude = true;
    KoltVarName fFactorMacroVar;
    KoltVarName fCovarMacroVar;
    KoltVarName fPredProbRoot;
    std::int32_t fMaxPredProbs = 25;
    KoltVarName fPredValName;
    bool fbPredValDefault = false;
    std::string fModelFile;
    std::vector<std::int32_t> fPrintRankList;  // no duplicates
    bool fbPrintCPS = true;
    bool fbPrintExcluded = true;
    bool fbPrintSummary = true;
    bool fbPrintSelected = true;
    bool fbPrintClassification = true;
    bool fbPrintUncertainty = false;
    bool fbPlotSummary = false;
    bool fbPlotUncertainty = false;
    // The registry goes first at the end, then the settings, then what they borrow.
    std::unique_ptr<MCStopProcessor> fpStopProcessor;
    std::unique_ptr<UAUniformRandom> fpRandom;
    std::unique_ptr<NaiveBayesSettings> fpNBSettings;
    std::unique_ptr<FSSettings> fpFSSettings;
    std::unique_ptr<VarRegistry> fpVarValidSpecs;
};

#endif  // PREDSEL_BACKEND_PRSVALIDSPECS_H
