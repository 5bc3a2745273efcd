#ifndef PREDSEL_PRSUNIFACTORY_H
#define PREDSEL_PRSUNIFACTORY_H

#include <memory>

#include "featureselect/FSStatus.h"
#include "host/CaseDelivery.h"

class IFSAlgorithm;
class PRSValidSpecs;
class ProcedureDataSource;

/// Controller of a SELECTPRED run: joins the host's cases to the screening engine, turns the
/// engine's status into messages and keeps the engine alive for SelOutput.
class PRSUniFactory {
 public:
    /// Both borrowed. Makes the first contact with the data; when there is no valid case the host's
    /// message is issued and the status becomes an error.
    PRSUniFactory(const PRSValidSpecs& specs, ProcedureDataSource& source);
    ~PRSUniFactory();
    PRSUniFactory(const PRSUniFactory&) = delete;
    PRSUniFactory& operator=(const PRSUniFactory&) = delete;

    /// Runs the engine over all cases and tests that the target varies. False when there is nothing
    /// to report on; a warning of the engine still counts as true.
    bool Run();

    FSStatus GetStatus() const { return fStatus; }
    /// Null until Run has made it.
    IFSAlgorithm* GetAlgorithm() const { return fpAlgorithm.get(); }
    const UAInputAdapter* GetInputAdapter() const { return fpInpAdapt.get(); }

 private:
    // The host's classes are deleted through these.
    struct InputAdapter final : UAInputAdapter {
        using UAInputAdapter::UAInputAdapter;
    };
    struct CaseIterator final : UAProcDataSourceIter {
        using UAProcDataSourceIter::UAProcDataSourceIter;
    };

    void ReportStatus(const FSStatus& status) const;
    bool TargetVaries() const;
    void DisplayResults() const;

    const PRSValidSpecs& fProcValidSpec;
    const UAVarValidSpecs* fpVarValidSpecs;  // borrowed from fProcValidSpec
    ProcedureDataSource& fActiveDS;
    UAInpAdaptMsg fAdapterMessages;
    // Torn down from the engine to the adapter.
    std::unique_ptr<InputAdapter> fpInpAdapt;
    std::unique_ptr<CaseIterator> fpDSIter;
    std::unique_ptr<IFSAlgorithm> fpAlgorithm;
    FSStatus fStatus;
};

#endif  // PREDSEL_PRSUNIFACTORY_H
