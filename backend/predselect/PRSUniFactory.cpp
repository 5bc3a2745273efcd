#include "backend/predselect/PRSUniFactory.h"

#include <array>
#include <iostream>
#include <string_view>
#include <vector>

#include "backend/predselect/PRSValidSpecs.h"
#include "featureselect/FSFactory.h"
#include "featureselect/FSSettings.h"
#include "featureselect/IFSAlgorithm.h"
#include "host/Output.h"

namespace {

// Set by nobody; a debugger turns it on.
bool gDisplayResults;

void Issue(std::string_view key, std::int32_t level) {
    BpError(BpString(key, true), kBpErrorShow, level);
}

struct StatusMessage {
    std::uint32_t fCode;
    std::string_view fKey;
};
constexpr std::array kStatusMessages{
    StatusMessage{80009, "All cases excluded in Predictor Selection..."},
    StatusMessage{80010, "All predictors missing or constant..."},
    StatusMessage{80011, "No predictors were selected."},
    StatusMessage{80013, "There are no valid cases..."},
};

constexpr std::uint32_t kNoValidCases = 80002;
constexpr std::uint32_t kTargetConstant = 80000;
constexpr std::uint32_t kAllPredictorsDeleted = 80011;
constexpr std::int32_t kNumCriteria = 6;

FSStatus ErrorStatus(std::uint32_t code) {
    FSStatus status;
    status.fCode = code;
    status.fSeverity = -1;
    return status;
}

}  // namespace

PRSUniFactory::PRSUniFactory(const PRSValidSpecs& specs, ProcedureDataSource& source)
    : fProcValidSpec(specs),
      fpVarValidSpecs(specs.GetVarValidSpecs()),
      fActiveDS(source),
      fAdapterMessages(source),
      fpInpAdapt(std::make_unique<InputAdapter>(specs.GetVarValidSpecs(), source)),
      fpDSIter(std::make_unique<CaseIterator>(*fpInpAdapt, true)) {
    if (fpDSIter->GetFailReason() == MCCommon::kITER_NO_VALID_CASE) {
        fStatus = ErrorStatus(kNoValidCases);
        fAdapterMessages.NoValidCases();
    }
}

PRSUniFactory::~PRSUniFactory() = default;

bool PRSUniFactory::Run() {
    if (fStatus.IsError() || !fpInpAdapt || !fpDSIter) return false;
    FSSettings* settings = fProcValidSpec.GetFSSettings();
    if (!settings) return false;

    FSFactory factory;
    fpAlgorithm = factory.CreateFromSettings(*settings);
    fStatus = fpAlgorithm ? fpAlgorithm->GetStatus() : factory.GetStatus();
    if (fStatus.IsError()) return false;

    fStatus = fpAlgorithm->RunAll(*fpDSIter, -1, fProcValidSpec.GetScreening(), 0);
    bool ok = !fStatus.IsError();
    if (fStatus != FSStatus()) ReportStatus(fStatus);

    // Only now: the adapter knows the target's categories and range after the data pass.
    if (ok && !TargetVaries()) {
        ok = false;
        fStatus = ErrorStatus(kTargetConstant);
        Issue("Dependent variable constant...", kBpError);
    }
    if (ok && gDisplayResults) DisplayResults();
    if (!fStatus.IsError()) fStatus = fpAlgorithm->GetStatus();
    return ok;
}

bool PRSUniFactory::TargetVaries() const {
    const std::int32_t target = fProcValidSpec.GetDependVar();
    if (fpVarValidSpecs->GetKOLTCatVar(target)) return fpInpAdapt->GetCatVarSize(target) > 1;
    return fpInpAdapt->GetContMinValue(target) != fpInpAdapt->GetContMaxValue(target);
}

void PRSUniFactory::ReportStatus(const FSStatus& status) const {
    if (status.IsOk()) return;
    for (const StatusMessage& message : kStatusMessages) {
        if (message.fCode == status.fCode) {
            Issue(message.fKey, status.IsError() ? kBpError : kBpWarning);
        }
    }
}

void PRSUniFactory::DisplayResults() const {
    std::ostream& out = std::cout;
    const IFSAlgorithm& algorithm = *fpAlgorithm;
    const FSSettings& settings = algorithm.GetSettings();
    const std::vector<std::int32_t>& predictors = *fProcValidSpec.GetPredictList();
    const auto showPredictor = [&](std::int32_t predictor) {
        const std::int32_t variable = predictors[static_cast<std::size_t>(predictor)];
        out << predictor << ' ' << fActiveDS.GetVariable(variable).GetName();
    };

    out << "Start Feature Selection Component Output\n";
    settings.Display(out);
    for (std::int32_t criterion = 0; criterion < kNumCriteria; ++criterion) {
        out << "Criterion " << criterion << ": ";
        if (!settings.IsCriterionOn(criterion)) {
            out << "Ranking criterion is not set\n";
            continue;
        }
        out << "Ranking criterion is set\n";
        std::vector<std::int32_t> best;
        std::vector<double> values;
        if (fpAlgorithm->GetBestPredictors(criterion, best, values, 0).IsError()) continue;
        for (std::size_t k = 0; k < best.size(); ++k) {
            showPredictor(best[k]);
            out << ' ' << values[k] << '\n';
        }
    }
    const std::vector<std::int32_t> deleted = algorithm.GetDeletedIndices();
    out << "Number of deleted predictors after screening = " << deleted.size() << '\n';
    for (const std::int32_t predictor : deleted) {
        showPredictor(predictor);
        out << '\n';
    }
    const FSStatus status = algorithm.GetStatus();
    if (deleted.empty() && fProcValidSpec.GetPrintExcluded()) {
        Issue("No predictors excluded in screening...", kBpWarning);
    }
    if (deleted.size() == predictors.size() && status.fCode != kAllPredictorsDeleted) {
        Issue("All predictors excluded in screening...", kBpWarning);
    }
    out << "Feature Selection status: "
        << (status.IsError()     ? "Error"
            : status.IsWarning() ? "Warning"
                                 : "OK")
        << '\n'
        << "End Feature Selection Component Output\n";
}
