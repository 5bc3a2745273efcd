#include "backend/predselect/PRSMultiFactory.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "host/EngineState.h"
#include "host/Files.h"
#include "host/Output.h"
#include "naivebayes/NBWriteOptions.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

struct StatusMessage {
    std::uint32_t fCode;
    std::string_view fKey;
};
constexpr std::array kStatusMessages{
    StatusMessage{NBCode::kTrainingEmpty, "All cases excluded in Predictor Selection..."},
    StatusMessage{NBCode::kNoUsableRecords, "All cases excluded in Predictor Selection..."},
    StatusMessage{NBCode::kTestEmpty, "No valid cases in test sample..."},
};

// Between polls of the stop processor.
constexpr std::int32_t kFirstPassRows = 1 << 16;

// Faults that no other message tells of.
constexpr std::array kFailureMessages{
    StatusMessage{NBCode::kTooLittleData, "Too little data for a model..."},
    StatusMessage{NBCode::kNoTempFile, "No temporary file for training cases..."},
    StatusMessage{NBCode::kNoMemory, "Not enough memory for the model..."},
};

}  // namespace

PRSMultiFactory::PRSMultiFactory(const PRSValidSpecs& specs, ProcedureDataSource& source)
    : fProcValidSpec(specs),
      fbWriteModel(!specs.GetModelFile().empty()),
      fbDescribeValues(fbWriteModel || WantsEngineState()),
      fbSubsetSearch(!specs.IsNoSelection()),
      fActiveDS(source),
      fAdapterMessages(source),
      fpInpAdapt(std::make_unique<InputAdapter>(specs.GetVarValidSpecs(), source)),
      fpTrainRecIter(
          std::make_unique<NaiveDataSourceIter>(*fpInpAdapt, specs, fTrainTestFlags, true, false)) {
    fTranslator.SetCommandName("NAIVEBAYES");
    fTranslator.SetProcedureTitle("NaiveBayes");
    fpTrainRecIter->NewPass();
    if (fpTrainRecIter->GetFailReason() == MCCommon::kITER_NO_VALID_CASE) {
        SetError(NBCode::kNoValidCases);
        fAdapterMessages.NoValidCases();
        return;
    }
    if (specs.GetTestData()) {
        fpTestRecIter =
            std::make_unique<NaiveDataSourceIter>(*fpInpAdapt, specs, fTrainTestFlags, false, true);
    }
}

PRSMultiFactory::~PRSMultiFactory() = default;

bool PRSMultiFactory::IsStopped() const {
    return fProcValidSpec.GetNBSettings()->fpStopProcessor->IsCancelled();
}

bool PRSMultiFactory::CheckTrainingData() {
    if (!fpTrainRecIter->HasMore()) {
        SetError(NBCode::kNoValidCases);
        fAdapterMessages.NoValidCases();
        return false;
    }
    while (!fStatus.IsError() && fpTrainRecIter->HasMore()) {
        // What the adapter knows after part of a pass is no ground to describe variables on.
        if (IsStopped()) {
            SetError(NBCode::kInterrupted);
            break;
        }
        fpTrainRecIter->NextBlock(kFirstPassRows);
        if (fpTrainRecIter->GetFailReason() == MCCommon::kITER_ERROR) {
            SetError(NBCode::kNoValidCases);
            return false;
        }
    }
    return true;  // later stages see an error in the status
}

bool PRSMultiFactory::Run() {
    if (fStatus.IsError()) return false;
    const std::int32_t numRecords = fpInpAdapt->GetCaseCount();
    PREDSEL_ASSERT(fpInpAdapt != nullptr && fpTrainRecIter != nullptr, "fpTrainRecIter != 0");
    if (fNUniquePreds > 0 || fNForcePreds > 0) {
        if (!Train(numRecords)) return false;
    }
    if (fpAlgorithm) fStatus = fpAlgorithm->GetStatus();
    // The scoring pass needs an iterator of its own.
    for (auto* iterator : {&fpTrainRecIter, &fpTestRecIter}) {
        if (*iterator) (*iterator)->StopPass();
        iterator->reset();
    }
    if (!fStatus.IsError() && fpAlgorithm && fbWriteModel) WriteModelFile();
    if (fStatus.IsError()) return false;
    if (!fpAlgorithm) return true;

    const bool classify = fProcValidSpec.GetPrintClassification();
    if (fProcValidSpec.GetPredValName().IsEmpty() && fNSaveDepCats < 1 && !classify) return true;
    if (!ScoreCases()) return false;
    // Test cases that judged the search were there.
    if (classify && fProcValidSpec.GetMultiTrainSamp() && !fProcValidSpec.GetTestData() &&
        fpAlgorithm->GetTestStatistics() == nullptr) {
        fMessages.NoValidTestCases();
    }
    return true;
}

bool PRSMultiFactory::Train(std::int32_t numRecords) {
    if (fpTrainRecIter->NewPass() != MCCommon::kITER_SUCCESS) return false;
    NBStatus creation;
    fpAlgorithm = CreateNBAlgorithm(creation, *fProcValidSpec.GetNBSettings(), *fpNBVarList);
    fStatus = fpAlgorithm ? fpAlgorithm->GetStatus() : creation;
    if (fStatus.IsError()) return false;

    if (fbSubsetSearch) {
        fStatus = SearchSubset(numRecords);
    } else {
        PREDSEL_ASSERT(fpNBVarList->GetNumInputVars() == fNForcePreds + fNUniquePreds &&
                           fpNBVarList->GetNumPossibleInputVars() == 0,
                       "all predictors are inputs");
        fStatus = fpAlgorithm->BuildModel(*fpTrainRecIter, numRecords);
    }
    if (fStatus != NBStatus()) ReportStatus();
    if (fStatus.IsError()) return false;
    if (fbSubsetSearch && fpAlgorithm->GetNumInputVars() == fNForcePreds) {
        fMessages.NoUniquePredsSelected();
    }
    return true;
}

NBStatus PRSMultiFactory::SearchSubset(std::int32_t numRecords) {
    PREDSEL_ASSERT(fpNBVarList->GetNumInputVars() == fNForcePreds,
                   "fpNBVarList->GetNumInputVars() == fNForcePreds");
    PREDSEL_ASSERT(fpNBVarList->GetNumPossibleInputVars() == fNUniquePreds,
                   "fpNBVarList->GetNumPossibleInputVars() == fNUniquePreds");
    const std::int32_t exactSize = fProcValidSpec.GetExactSubsetSize();
    const std::int32_t limit = fProcValidSpec.GetMaxSubsetSize();
    const bool exact = exactSize >= 1;
    std::int32_t maxSize = -1;  // the engine's choice
    if (exact) {
        maxSize = fNForcePreds + exactSize;
    } else if (limit != 0) {
        maxSize = fNForcePreds + limit;
    }
    // Every size can be listed, that of the forced predictors alone too.
    const std::int32_t numBest = fNUniquePreds + (fNForcePreds > 0 ? 1 : 0);
    return fpAlgorithm->SelectSubset(*fpTrainRecIter, numRecords, fSelectPredictors,
                                     fSelectCriteria, fSelectBest, maxSize, exact,
                                     fpTestRecIter.get(), -1, numBest, nullptr, nullptr);
}

void PRSMultiFactory::ReportStatus() const {
    PREDSEL_ASSERT(fStatus.GetCode() != NBCode::kTestEmpty || fProcValidSpec.GetMultiTrainSamp(),
                   "a training sample is set");
    for (const StatusMessage& message : kStatusMessages) {
        if (message.fCode == fStatus.GetCode()) {
            BpError(BpString(message.fKey, true), kBpErrorShow,
                    fStatus.IsError() ? kBpError : kBpWarning);
        }
    }
}

void PRSMultiFactory::ReportFailure() const {
    if (fStatus.GetCode() == NBCode::kInterrupted) return;
    for (const StatusMessage& message : kFailureMessages) {
        if (message.fCode == fStatus.GetCode()) {
            PRSMessage::Error(std::string(message.fKey).c_str());
            return;
        }
    }
    PRSMessage::Error("The classifier run failed with status ^1...",
                      std::to_string(fStatus.GetCode()).c_str());
}

void PRSMultiFactory::WriteModelFile() {
    const KoltAppParams& application = *GetAppParams();
    NBWriteOptions options;
    options.fUTF8 = false;
    options.fAppName = application.fAppName;
    options.fAppVersion = application.fAppVersion;
    options.fCopyright = application.fCopyright;

    std::ofstream stream;
    ExtNameStr file;
    file.SetGeneric(fProcValidSpec.GetModelFile());
    if (!file.Open(stream, kOpenForWriting)) {
        SetError(NBCode::kNoOutput);
        return;
    }
    fStatus = fpAlgorithm->WritePMML(stream, &options);
    errno = 0;
    stream.close();
    const int fault = errno == 0 ? EIO : errno;
    // The whole model is in the file or the run has failed: half a model helps nobody.
    if (!fStatus.IsError() && stream.fail()) {
        SetError(NBCode::kNoOutput);
        PRSMessage::Error("Model file ^1 cannot be written, ^2...",
                          fProcValidSpec.GetModelFile().c_str(),
                          std::generic_category().message(fault).c_str());
    }
}
