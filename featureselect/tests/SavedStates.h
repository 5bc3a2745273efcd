#ifndef PREDSEL_FEATURESELECT_TESTS_SAVEDSTATES_H
#define PREDSEL_FEATURESELECT_TESTS_SAVEDSTATES_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "featureselect/FSCatAccum.h"
#include "featureselect/FSCatPCatTAccum.h"
#include "featureselect/FSCatPContTAccum.h"
#include "featureselect/FSContAccum.h"
#include "featureselect/FSContPCatTAccum.h"
#include "featureselect/FSContPContTAccum.h"
#include "featureselect/FSMapICnt.h"
#include "featureselect/FSMapIPCnt.h"
#include "featureselect/FSMapIStat.h"
#include "featureselect/FSMapPiCnt.h"
#include "featureselect/FSPredSort.h"
#include "featureselect/FSSettings.h"
#include "featureselect/IFSAlgorithm.h"

// One object of every saved class, always the same, with its saved forms: for golden files, round
// trips and damaged states.

namespace savedstates {

FSMapICnt MapICnt();
FSMapIPCnt MapIPCnt();
FSMapIStat MapIStat();
FSMapPiCnt MapPiCnt();
FSPredSort PredSort();
FSCatAccum CatAccum();
FSCatPCatTAccum CatPCatTAccum();
FSCatPContTAccum CatPContTAccum();
FSContAccum ContAccum();
FSContPCatTAccum ContPCatTAccum();
FSContPContTAccum ContPContTAccum();
/// Of four predictors, two of each kind.
FSSettings MixedSettings(bool targetIsCategorical = true);

/// The saved engine, with an elapsed time of 0. All have read the same records: the third predictor
/// is constant and the fourth has a value too few.
std::string AccumulatedEngine(bool targetIsCategorical = true);
/// Screened and ranked; the third predictor is deleted.
std::string RankedEngine(bool targetIsCategorical = true);
/// The predictor set in a saved engine of four predictors.
std::string PredictorSetOf(const std::string& savedEngine);

/// The XML form of a saved engine.
std::string EngineAsXML(const std::string& savedEngine);

/// One saved state of one class in one form.
struct State {
    std::string fClass;
    bool fbXML = false;
    std::string fSaved;
    /// Restores the bytes, does to the object all that may be done to it and saves it, in the same
    /// form; empty when the restore is refused.
    std::function<std::string(const std::string& bytes)> fUse;
    /// Restores and saves.
    std::function<std::string(const std::string& bytes)> fSaveAgain;
    /// How the golden file is called.
    std::string FileName() const { return fClass + (fbXML ? ".xml" : ".bin"); }
};

/// Every class in both forms; the engine and its predictor set are ranked ones.
std::vector<State> AllStates();

}  // namespace savedstates

#endif  // PREDSEL_FEATURESELECT_TESTS_SAVEDSTATES_H
