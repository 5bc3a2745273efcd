#ifndef PREDSEL_BACKEND_NAIVEOUTPUT_H
#define PREDSEL_BACKEND_NAIVEOUTPUT_H

#include <cstdint>
#include <vector>

#include "host/Data.h"
#include "host/Output.h"

class INBAlgorithm;
class NBOutputStatistics;
class PRSMultiFactory;
class PRSValidSpecs;

/// Writes the results of a NAIVEBAYES run into the host's output: notes and pivot tables. Reads the
/// controller, its engine and the validated command and decides only what to show and in which
/// shape. All four arguments are borrowed.
class NaiveOutput {
 public:
    NaiveOutput(const PRSValidSpecs& specs, const PRSMultiFactory& controller,
                const ProcedureDataSource& source, BpProcedure& procedure);

    void WriteMissingNotes() const;
    /// Nothing without an engine.
    void WriteTables() const;
    /// Needs no engine: the controller knows which predictors it left out.
    void WriteExcludedPredictors() const;

 private:
    void WriteCaseProcessing() const;
    void WriteSubsetSummary() const;  // NaiveOutputSubset.cpp
    void WriteSelectedPredictors() const;
    void WriteClassification() const;  // NaiveOutputClassification.cpp

    const INBAlgorithm& Engine() const;
    /// True when the engine searched on records drawn from the model, since the training cases do
    /// not fit into its memory.
    bool SearchedSimulated() const;
    /// The dictionary index of a variable of the engine's list.
    std::int32_t VariableOf(std::int32_t listIndex) const;
    BpVariable Heading(std::int32_t listIndex) const;

    const PRSValidSpecs& fSpecs;
    const PRSMultiFactory& fController;
    const ProcedureDataSource& fSource;
    BpProcedure& fProcedure;
};

#endif  // PREDSEL_BACKEND_NAIVEOUTPUT_H
