#include "featureselect/FSAlgorithm.h"

#include <exception>
#include <iostream>
#include <sstream>
#include <utility>

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSPredictorSetFields.h"
#include "featureselect/FSVersion.h"

namespace {

std::unique_ptr<MCCommonXML::XMLDocType> SavedDocType() {
    return MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd");
}

}  // namespace

FSAlgorithm::FSAlgorithm(FSSettings& settings)
    : fpSettings(&settings),
      fCancelState(settings.GetCancelCheck()),
      fPredictorSet(settings, fCancelState) {}

FSAlgorithm::FSAlgorithm(std::unique_ptr<FSSettings> ownSettings)
    : fpOwnSettings(std::move(ownSettings)),
      fpSettings(fpOwnSettings.get()),
      fPredictorSet(*fpSettings, fCancelState) {}

FSAlgorithm::FSAlgorithm(std::istream& stream) : FSAlgorithm(std::make_unique<FSSettings>()) {
    Persistence::BinaryReader<MCFeature::IOException> reader(stream);
    if (!Restore(reader)) fStatus = FSStatus::BinaryRestoreFailed();
}

FSAlgorithm::FSAlgorithm(MCCommonXML::XMLReader& document)
    : FSAlgorithm(std::make_unique<FSSettings>()) {
    // A reader that has failed fails at whatever is asked of it next, with that object's line.
    static_cast<void>(document.ParseStartRoot(*SavedDocType()));
    Persistence::XMLArchiveReader<MCFeature::IOException> reader(document);
    if (!Restore(reader)) {
        fStatus = FSStatus::XmlRestoreFailed();
    } else if (!document.ParseEndRoot()) {
        std::cerr << kSaved.FailureLine(true);
        fStatus = FSStatus::XmlRestoreFailed();
    }
}

template <class Archive>
bool FSAlgorithm::Restore(Archive& archive) {
    try {
        if (!archive.TryBegin(kSaved)) return false;
        Contents<FSAlgorithm> contents{*this};
        archive.Items(contents);
        archive.End();
        return true;
    } catch (const MCFeature::IOException* failure) {
        delete failure;  // NOLINT(cppcoreguidelines-owning-memory): thrown by pointer
    } catch (const std::exception&) {
        // No memory for what did arrive, or a stream that throws.
    }
    // Intended: one line for both forms. ABrokenXMLStateNamesTheBinaryForm holds this.
    std::cerr << "Error restoring from binary.\n";
    return false;
}

// The frame of every step: work() runs unless an earlier step failed or the run is cancelled, and
// its result is kept. A cancel found at either end empties the set.
template <class Work>
FSStatus FSAlgorithm::Step(Work work) {
    FSStatus result = fStatus;
    if (MayWork()) result = work();
    if (fCancelState.IsCancelled()) {
        fPredictorSet.Reset();
        result = FSStatus::Cancelled();
    }
    fStatus = result;
    return result;
}

std::string FSAlgorithm::GetVersion() const {
    return "Feature Selection Component Ver.1.0\n" + std::string(FSVersion::kCopyright);
}

FSStatus FSAlgorithm::AccumulateData(MCCommon::RecordIterator& records, std::int32_t maxRecords) {
    return Step([&] {
        fDataAccumulated = true;
        return fpSettings->GetTransactions() ? fPredictorSet.AccumulateTransactions(records)
                                             : fPredictorSet.AccumulateRecords(records, maxRecords);
    });
}

void FSAlgorithm::GetRecordCounts(double& weightedValid, double& weightedExcluded,
                                  std::int32_t& unweightedValid,
                                  std::int32_t& unweightedExcluded) const {
    fPredictorSet.GetRecordCounts(weightedValid, weightedExcluded, unweightedValid,
                                  unweightedExcluded);
}

std::int32_t FSAlgorithm::GetNumberOfTargetCategories() const {
    return fPredictorSet.GetNumberOfTargetCategories();
}

IFSAlgorithm::CategoryCount FSAlgorithm::GetTargetCategoryByValue(std::int32_t category) const {
    CategoryCount count{-1, -1.0};
    if (const FSMapIPCnt* categories = fPredictorSet.GetTargetCategories()) {
        categories->Find(category, count.first, count.second);
    }
    return count;
}

bool FSAlgorithm::GetTargetCategoryByIndex(std::int32_t position, std::int32_t& category,
                                           CategoryCount& count) const {
    category = -1;
    count = {-1, -1.0};
    if (position < 0 || position >= GetNumberOfTargetCategories()) return false;
    const auto& entry = fPredictorSet.GetTargetCategories()->GetAt(position);
    category = entry.fKey;
    count = {entry.fCount, entry.fWeight};
    return true;
}

FSStatus FSAlgorithm::DeleteMissingOrConstant() {
    return Step([&] { return fPredictorSet.DeleteMissingOrConstant(); });
}

FSStatus FSAlgorithm::DeleteByCriteria() {
    return Step([&] { return fPredictorSet.DeleteByCriteria(); });
}

std::int32_t FSAlgorithm::GetNumberOfDeleted() const { return fPredictorSet.GetNumberOfDeleted(); }

std::vector<std::int32_t> FSAlgorithm::GetDeletedIndices() const {
    return fPredictorSet.GetDeletedIndices();
}

std::vector<std::int32_t> FSAlgorithm::GetDeletionReasons() const {
    return fPredictorSet.GetDeletionReasons();
}

FSStatus FSAlgorithm::RankPredictors(std::int32_t n) {
    return Step([&] {
        const auto goesOn = [this](const FSStatus& status) {
            return !status.IsError() && !fCancelState.IsCancelled();
        };
        FSStatus result = fPredictorSet.ComputeCriteria();
        if (goesOn(result)) result = n == 0 ? fPredictorSet.SortAll() : fPredictorSet.SortBest(n);
        if (goesOn(result)) result = n == 0 ? fPredictorSet.RankAll() : fPredictorSet.RankBest();
        fRanked = true;
        const std::int32_t remaining = fPredictorSet.GetNumberOfRemaining();
        if (result.IsOk() && !fCancelState.IsCancelled() && n >= 1 && remaining < n) {
            result = FSStatus::FewerRemain(FSStatus::kError, remaining);
        }
        return result;
    });
}

FSStatus FSAlgorithm::RunAll(MCCommon::RecordIterator& records, std::int32_t maxRecords,
                             bool screen, std::int32_t n) {
    return Step([&] {
        const auto goesOn = [this](const FSStatus& status) {
            return status.IsOk() && !fCancelState.IsCancelled();
        };
        FSStatus result = AccumulateData(records, maxRecords);
        if (goesOn(result)) result = DeleteMissingOrConstant();
        if (goesOn(result) && screen) result = DeleteByCriteria();
        if (goesOn(result)) result = RankPredictors(n);
        // Intended: also where a warning or an error ended the chain before the ranking.
        // RunAllStopsAtAWarningAndIsRankedAllTheSame holds this.
        fRanked = true;
        return result;
    });
}

FSStatus FSAlgorithm::ScreenOnly(MCCommon::RecordIterator& records,
                                 std::vector<std::int32_t>& indices,
                                 std::vector<std::vector<std::int32_t>>& reasons,
                                 std::int32_t maxRecords) {
    indices.clear();
    reasons.clear();
    fpSettings->SetTargetPosition(-1);
    return Step([&] {
        fDataAccumulated = true;
        const FSStatus pass = fPredictorSet.AccumulateForScreening(records, maxRecords);
        if (pass.IsError()) return pass;
        const FSStatus verdict = fPredictorSet.CollectDeletionReasons(indices, reasons);
        // A pass that found nothing says so even where the verdict has nothing to add.
        return verdict.IsOk() ? pass : verdict;
    });
}

bool FSAlgorithm::GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor,
                                        double& first, double& second, double& third,
                                        double& fourth) const {
    return fPredictorSet.GetPredictorCriterion(criterion, predictor, first, second, third, fourth);
}

bool FSAlgorithm::GetPredictorLogP(std::int32_t criterion, std::int32_t predictor,
                                   double& logP) const {
    return fPredictorSet.GetPredictorLogP(criterion, predictor, logP);
}

void FSAlgorithm::SetProgressListener(ProgressListener* listener) {
    fpSettings->SetProgressListener(listener);
}

void FSAlgorithm::SetCancelCheck(CancelCheck* check) {
    fpSettings->SetCancelCheck(check);
    fCancelState.SetCancelCheck(check);
}

std::vector<std::int32_t> FSAlgorithm::GetRanks(std::int32_t criterion) const {
    return fPredictorSet.GetRanks(criterion);
}

std::vector<double> FSAlgorithm::GetCriterionValues(std::int32_t criterion) const {
    return fPredictorSet.GetCriterionValues(criterion);
}

FSStatus FSAlgorithm::GetBestPredictors(std::int32_t criterion, std::vector<std::int32_t>& indices,
                                        std::vector<double>& values, std::int32_t n) {
    indices.clear();
    values.clear();
    if (!fRanked) return FSStatus::NotRanked();
    if (!MayWork()) return fCancelState.IsCancelled() ? FSStatus::Cancelled() : fStatus;
    FSStatus result = fPredictorSet.GetBest(criterion, n, indices, values);
    const std::int32_t remaining = fPredictorSet.GetNumberOfRemaining();
    if (result.IsOk() && n >= 1 && remaining < n) {
        result = FSStatus::FewerRemain(FSStatus::kWarning, remaining);
    }
    return result;
}

FSStatus FSAlgorithm::WriteOutputOne(std::ostream& stream, std::int32_t criterion, std::int32_t n) {
    if (!fRanked) return FSStatus::NotRanked();
    if (!MayWork()) return fCancelState.IsCancelled() ? FSStatus::Cancelled() : fStatus;
    const bool isOn =
        criterion >= 0 && criterion < FSCriterion::kCount && fpSettings->IsCriterionOn(criterion);
    if (!isOn) return FSStatus::CriterionNotRequested();
    FSStatus result = fPredictorSet.WriteOutputOne(stream, criterion, n);
    const std::int32_t remaining = fPredictorSet.GetNumberOfRemaining();
    if (result.IsOk() && n >= 1 && remaining < n) {
        result = FSStatus::FewerRemain(FSStatus::kError, remaining);
    }
    return result;
}

FSStatus FSAlgorithm::WriteOutputAll(std::ostream& stream) {
    if (!MayWork()) return fCancelState.IsCancelled() ? FSStatus::Cancelled() : fStatus;
    return fPredictorSet.WriteOutputAll(stream);
}

// The frame of both saves.
template <class Save>
FSStatus FSAlgorithm::WriteState(Save save) {
    if (!MayWork()) return fCancelState.IsCancelled() ? FSStatus::Cancelled() : fStatus;
    save();
    return fStatus;
}

FSStatus FSAlgorithm::SaveBinary(std::ostream& stream) {
    return WriteState([&] { Persistence::SaveBinary(*this, stream); });
}

FSStatus FSAlgorithm::SaveXML(std::ostream& stream) {
    return WriteState([&] {
        const auto docType = SavedDocType();
        MCCommonXML::StartRoot(stream, *docType, FSVersion::kCopyright);
        Persistence::SaveXML(*this, stream, 0);
        MCCommonXML::EndRoot(stream, *docType);
    });
}

FSStatus FSAlgorithm::MergeFrom(const IFSAlgorithm& other) {
    if (!MayWork()) return fCancelState.IsCancelled() ? FSStatus::Cancelled() : fStatus;
    const auto* partition = dynamic_cast<const FSAlgorithm*>(&other);
    if (partition == nullptr || partition->fStatus.IsError()) return FSStatus::NotMergeable();
    // What is saved of the settings is all that a pass goes by.
    std::ostringstream mine;
    std::ostringstream theirs;
    fpSettings->SaveBinary(mine);
    partition->fpSettings->SaveBinary(theirs);
    if (mine.str() != theirs.str() || !fPredictorSet.MergeFrom(partition->fPredictorSet)) {
        return FSStatus::NotMergeable();
    }
    return FSStatus::Success();
}

void FSAlgorithm::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSAlgorithm");
    out << "Data accumulated? " << (fDataAccumulated ? "Yes.  " : "No.  ");
    out << "Predictors ranked? " << (fRanked ? "Yes.\n" : "No.\n");
    out << "\nSettings:\n";
    fpSettings->Display(out);
    out << "\nPredictor set:\n";
    fPredictorSet.Display(out);
    FSDisplay::End(out, "FSAlgorithm");
}
