#ifndef PREDSEL_SELOUTPUT_H
#define PREDSEL_SELOUTPUT_H

#include <cstdint>
#include <vector>

#include "host/Output.h"

class IFSAlgorithm;
class PRSUniFactory;
class PRSValidSpecs;
class ProcedureDataSource;

/// Writes the results of a SELECTPRED run into the host's output: notes, pivot tables and a chart.
/// Reads the engine and the validated command and decides only what to show and in which
/// shape. All four arguments are borrowed.
class SelOutput {
 public:
    SelOutput(const PRSValidSpecs& specs, const PRSUniFactory& controller,
              const ProcedureDataSource& source, BpProcedure& procedure);

    void WriteMissingNotes() const;
    /// Needs a controller whose Run was true.
    void WriteTables() const;
    void WriteExcludedPredictors() const;

 private:
    /// The criterion that orders this run's predictors, and whether its values are p-values that
    /// the cut-off applies to.
    struct Criterion {
        std::int32_t fNumber;
        bool fbCompared;
    };
    /// The head of the ranking. Entries 0 to fLastSelected are selected; -1 when none is.
    struct Ranking {
        std::vector<std::int32_t> fvPredictors;
        std::vector<double> fvValues;
        std::int32_t fLastSelected = -1;
        std::int32_t Size() const { return static_cast<std::int32_t>(fvPredictors.size()); }
    };

    void WriteCaseProcessing() const;
    void WritePredictorSummary() const;
    void WritePredictorChart() const;  // SelOutputChart.cpp
    void WriteSelectedPredictors() const;

    IFSAlgorithm& Engine() const;
    Criterion SettleCriterion() const;
    bool PassesCutoff(const Criterion& criterion, double value) const;
    /// The `count` best predictors, of which at most GetEffectiveSelectSize are selected: those
    /// before the first that does not pass the cut-off.
    Ranking RankAndSelect(const Criterion& criterion, std::int32_t count) const;
    /// Dictionary index of a predictor.
    std::int32_t VariableOf(std::int32_t predictor) const;
    BpVariable Heading(std::int32_t predictor) const;
    void WarnNoneSelected() const;

    const PRSValidSpecs& fSpecs;
    const PRSUniFactory& fController;
    const ProcedureDataSource& fSource;
    BpProcedure& fProcedure;
};

#endif  // PREDSEL_SELOUTPUT_H
