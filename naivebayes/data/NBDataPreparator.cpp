#include "naivebayes/data/NBDataPreparator.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <ostream>
#include <random>
#include <system_error>
#include <thread>
#include <utility>

#include "host/Assertion.h"
#include "naivebayes/BinaryRecordIterator.h"
#include "naivebayes/NBColumnStore.h"
#include "naivebayes/NBMemoryIter.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBRoundEncoder.h"
#include "naivebayes/data/NBVarList.h"

namespace {

constexpr std::int32_t kRecordsPerBin = 15;
constexpr std::int32_t kFewestBins = 2;
constexpr std::int32_t kMostBins = 10;

constexpr double kMissingCode = INBEncoder::kMissingCode;

/// The whole part of a value; the nearest limit for what no code can be.
std::int32_t Truncate(double value) {
    constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();
    if (value >= static_cast<double>(kHighest)) return kHighest;
    if (!(value > static_cast<double>(kLowest))) return kLowest;
    return static_cast<std::int32_t>(value);
}

/// Missing, or a code that says so.
bool IsMissing(double value) { return value == MCMV::gMissingValue || Truncate(value) == -1; }

/// Damaged states hold continuous variables without bins: nothing has a code then.
double BinCode(const NBBinningEncoder* encoder, double value) {
    return encoder == nullptr ? kMissingCode : encoder->Encode(value);
}

void SetToZero(MCCommon::Record& record) {
    for (std::int32_t i = 0; i < record.Size(); ++i) record[i] = 0.0;
}

NBStatus CodeOutOfRange(bool isWarning, std::int32_t index, std::int32_t numCategories,
                        double value) {
    NBStatus status(NBCode::kCodeOutOfRange, isWarning);
    status.fIntArgs = {index, Truncate(value), numCategories - 1};
    status.SetDoubleArg(1, value);
    return status;
}

/// Closes and removes the file unless another owner has taken it over.
class TemporaryFile {
 public:
    /// Sets errno when there is no file.
    explicit TemporaryFile(const std::string& dir) {
        // Between the choice of a name and the opening another process may take it.
        constexpr int kNames = 10;
        for (int i = 0; i < kNames && fpFile == nullptr; ++i) {
            fPath = MakeTempFileName(dir, "_nb");
            fpFile = std::fopen(fPath.c_str(), "w+bx");
            if (fpFile == nullptr && errno != EEXIST) return;
        }
        if (fpFile == nullptr) return;
        std::error_code ignored;  // where a file system knows no owners there is nothing to hide
        std::filesystem::permissions(
            fPath, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
            ignored);
    }
    ~TemporaryFile() {
        if (fpFile == nullptr) return;
        std::fclose(fpFile);
        std::error_code ignored;
        std::filesystem::remove(fPath, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpen() const { return fpFile != nullptr; }

    /// Doubles as they stand in memory. What does not fit is no error here: the file then ends
    /// early. Nothing is written behind a gap, or all later records would be read shifted.
    void Append(MCCommon::Record& record) {
        Append(&record[0], static_cast<std::size_t>(record.Size()));
    }
    void Append(const double* values, std::size_t count) {
        if (fbGap || count == 0) return;
        fbGap = std::fwrite(values, sizeof(double), count, fpFile) != count;
    }

    /// The records from the first one on. Owns the file.
    std::unique_ptr<MCNaive::BinaryRecordIterator> TakeOver(std::int32_t recordSize) {
        // Should the last piece not fit, it is given up here: seeking would try it again and fail.
        std::fflush(fpFile);
        std::rewind(fpFile);
        auto records = std::make_unique<MCNaive::BinaryRecordIterator>(fpFile, fPath, recordSize);
        fpFile = nullptr;
        return records;
    }

 private:
    std::FILE* fpFile = nullptr;
    std::string fPath;
    bool fbGap = false;
};

void DisplayNumbers(std::ostream& out, const char* title,
                    const std::vector<std::int32_t>& numbers) {
    out << title;
    for (const std::int32_t number : numbers) out << number << ' ';
    out << '\n';
}

}  // namespace

NBDataPreparator::NBDataPreparator(NBVarList& varList, bool usePossibleInputs,
                                   std::int32_t numRecords, NBInterruptState& interrupt)
    : fbUsePossibleInputs(usePossibleInputs), fpVarList(&varList), fpInterrupt(&interrupt) {
    varList.MakeBinningEncoders(std::clamp(numRecords / kRecordsPerBin, kFewestBins, kMostBins),
                                usePossibleInputs);
    const std::int32_t numVariables = varList.GetNumVariables();
    for (std::int32_t i = 0; i < numVariables; ++i) {
        const INBVariable& variable = *varList.GetVariable(i);
        fvMeasureLevels.push_back(variable.GetMeasureLevel());
        fvRoles.push_back(variable.GetRole());
        fvNumCategories.push_back(variable.GetNumCategories());
        if (fvRoles.back() != NBRole::kWeight) continue;
        // A damaged state may claim the role for a variable of another kind.
        const auto* const encoder = dynamic_cast<const NBRoundEncoder*>(variable.GetEncoderConst());
        if (encoder == nullptr) continue;
        fWeightIndex = i;
        fNewWeightIndex = 1;
        fpWeightEncoder = encoder;
    }
    fvVarIndex.assign(static_cast<std::size_t>(numVariables), -1);
    if (fWeightIndex >= 0) fvVarIndex[static_cast<std::size_t>(fWeightIndex)] = fNewWeightIndex;
    for (std::int32_t i = 0; i < numVariables; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const std::int32_t role = fvRoles[at];
        if (role == NBRole::kInput || (role == NBRole::kPossibleInput && fbUsePossibleInputs)) {
            AddInput(i);
        } else if (role == NBRole::kTarget) {
            fvVarIndex[at] = 0;
            fTargetIndex = i;
        }
    }
    fOriginalRecordSize = numVariables;
    SetRecordSizes();
}

NBDataPreparator::~NBDataPreparator() = default;

std::int32_t NBDataPreparator::FirstInputPosition() const { return fNewWeightIndex > 0 ? 2 : 1; }

void NBDataPreparator::SetRecordSizes() {
    fInputRecordSize = static_cast<std::int32_t>(fvInputIndices.size());
    fProcessedRecordSize = fInputRecordSize + FirstInputPosition();
}

void NBDataPreparator::AddInput(std::int32_t index) {
    const auto at = static_cast<std::size_t>(index);
    const INBVariable& variable = *fpVarList->GetVariable(index);
    fvVarIndex[at] = FirstInputPosition() + static_cast<std::int32_t>(fvInputIndices.size());
    fvInputIndices.push_back(index);
    fvInputMeasureLevels.push_back(variable.GetMeasureLevel());
    fvInputNumCategories.push_back(variable.GetNumCategories());
    if (variable.GetMeasureLevel() == NBMeasureLevel::kContinuous) {
        fvpBinningEncoders.push_back(
            dynamic_cast<const NBBinningEncoder*>(variable.GetEncoderConst()));
    }
}

NBStatus NBDataPreparator::PrepareRecords(MCCommon::RecordIterator& source, std::int32_t numRecords,
                                          bool inMemory,
                                          std::unique_ptr<MCCommon::MultiPassRecordIter>& storeOut,
                                          std::int32_t& countOut, const std::string& tempDir) {
    countOut = 0;
    fStatus = NBStatus();
    fNumExcluded = 0;
    fWeightExcluded = 0.0;

    std::unique_ptr<TemporaryFile> file;
    if (!inMemory) {
        file = std::make_unique<TemporaryFile>(tempDir);
        if (!file->IsOpen()) {
            fStatus = NBStatus(NBCode::kNoTempFile, false);
            return fStatus;
        }
    }
    std::unique_ptr<MCCommon::MultiPassRecordIter> memory;
    if (auto* const blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&source)) {
        auto columns = std::make_unique<NBColumnStore>(MakeColumnStore(blocks->GetExecutor()));
        if (inMemory) columns->Reserve(static_cast<std::size_t>(std::max(numRecords, 0)));
        std::vector<double> rows;
        PrepareBlocks(source, *blocks, numRecords, *columns, [&] {
            if (file == nullptr) {
                countOut = static_cast<std::int32_t>(columns->GetCount());
                return;
            }
            countOut += static_cast<std::int32_t>(columns->GetCount());
            columns->CopyRows(rows);
            file->Append(rows.data(), rows.size());
            columns->Clear();
        });
        memory = std::move(columns);
    } else {
        std::unique_ptr<MCNaive::NBMemoryIter> kept;
        if (inMemory) {
            kept = std::make_unique<MCNaive::NBMemoryIter>(fProcessedRecordSize, numRecords);
        }
        PrepareEach(source, numRecords, [&](MCCommon::Record& processed) {
            if (kept != nullptr && !kept->Add(processed)) return;
            if (file != nullptr) file->Append(processed);
            ++countOut;
        });
        memory = std::move(kept);
    }

    if (countOut == 0) {
        storeOut.reset();
        fStatus = NBStatus(NBCode::kNoUsableRecords, false);
    } else if (file != nullptr) {
        storeOut = file->TakeOver(fProcessedRecordSize);
    } else {
        storeOut = std::move(memory);
    }
    return fStatus;
}

template <class Sink>
void NBDataPreparator::PrepareBlocks(MCCommon::RecordIterator& source,
                                     MCCommon::RecordBlockSource& blocks, std::int32_t numRecords,
                                     NBColumnStore& store, Sink sink) {
    constexpr std::int32_t kBlockRows = 16384;
    std::int32_t numRead = 0;
    while (numRead < numRecords && !fpInterrupt->IsStopped() && source.HasMore()) {
        const auto* const block = blocks.NextBlock(std::min(numRecords - numRead, kBlockRows));
        if (block == nullptr) break;
        numRead += block->fRows;
        PrepareBlock(*block, store, fNumExcluded, fWeightExcluded);
        sink();
    }
}

template <class Sink>
void NBDataPreparator::PrepareEach(MCCommon::RecordIterator& source, std::int32_t numRecords,
                                   Sink sink) {
    MCCommon::Record processed(fProcessedRecordSize);
    std::int32_t numRead = 0;
    while (numRead < numRecords && !fpInterrupt->IsStopped() && source.HasMore()) {
        const MCCommon::Record* const original = source.Next();
        if (original == nullptr) continue;
        ++numRead;
        double weight = 1.0;
        if (PrepareRecord(*original, processed, weight).IsError()) {
            ++fNumExcluded;
            if (weight != MCMV::gMissingValue) fWeightExcluded += weight;
        } else {
            sink(processed);
        }
    }
}

NBStatus NBDataPreparator::PrepareRecord(const MCCommon::Record& original,
                                         MCCommon::Record& processed, double& weightOut) const {
    NBStatus status;
    SetToZero(processed);
    weightOut = 1.0;
    if (fNewWeightIndex > 0) {
        const double value = original[fWeightIndex];
        weightOut = fpWeightEncoder->Encode(value);
        if (weightOut == MCMV::gMissingValue) {
            status = NBStatus(NBCode::kWeightMissing, false);
            status.SetIntArg(0, fWeightIndex);
            status.SetDoubleArg(1, value);
        }
        processed[fNewWeightIndex] = weightOut;
    }

    const double target = fTargetIndex >= 0 ? original[fTargetIndex] : MCMV::gMissingValue;
    if (IsMissing(target)) {
        status = NBStatus(NBCode::kTargetMissing, false);
    } else {
        const std::int32_t code = Truncate(target);
        const std::int32_t numCategories = fvNumCategories[static_cast<std::size_t>(fTargetIndex)];
        if (code < 0 || code >= numCategories) {
            status = CodeOutOfRange(false, fTargetIndex, numCategories, target);
            processed[0] = MCMV::gMissingValue;
        } else {
            processed[0] = target;
        }
    }

    std::int32_t numMissing = 0;
    std::size_t numContinuous = 0;
    std::int32_t position = FirstInputPosition();
    for (std::size_t i = 0; i < fvInputIndices.size(); ++i, ++position) {
        const std::int32_t index = fvInputIndices[i];
        const double value = original[index];
        double& code = processed[position];
        if (fvInputMeasureLevels[i] == NBMeasureLevel::kContinuous) {
            code = BinCode(fvpBinningEncoders[numContinuous++], value);
            if (IsMissing(code)) ++numMissing;
        } else if (value == MCMV::gMissingValue || value == kMissingCode) {
            code = value;
            ++numMissing;
        } else if (const std::int32_t whole = Truncate(value);
                   whole >= 0 && whole < fvInputNumCategories[i]) {
            code = value;
        } else {
            // Replaces an error, so that the record is kept. Intended, see
            // ABadInputCodeTakesThePlaceOfAMissingTarget.
            status = CodeOutOfRange(true, index, fvInputNumCategories[i], value);
            code = MCMV::gMissingValue;
            ++numMissing;
        }
    }
    if (numMissing == fInputRecordSize) status = NBStatus(NBCode::kNoValidPredictor, false);
    return status;
}

NBStatus NBDataPreparator::PrepareScoreRecord(const MCCommon::Record& original,
                                              MCCommon::Record& inputOnly,
                                              double& weightOut) const {
    NBStatus status;
    SetToZero(inputOnly);
    weightOut = fWeightIndex >= 0 ? fpWeightEncoder->Encode(original[fWeightIndex]) : 1.0;

    std::int32_t numMissing = 0;
    std::size_t numContinuous = 0;
    std::int32_t position = 0;
    for (std::size_t i = 0; i < fvInputIndices.size(); ++i, ++position) {
        const std::int32_t index = fvInputIndices[i];
        const double value = original[index];
        double& code = inputOnly[position];
        if (fvInputMeasureLevels[i] == NBMeasureLevel::kContinuous) {
            code = BinCode(fvpCollapsedEncoders[numContinuous++].get(), value);
            if (IsMissing(code)) ++numMissing;
        } else if (value == MCMV::gMissingValue) {
            code = kMissingCode;
            ++numMissing;
        } else if (const std::int32_t whole = Truncate(value);
                   whole >= -1 && whole < fvInputNumCategories[i]) {
            code = value;
            if (whole == -1) ++numMissing;
        } else {
            status = CodeOutOfRange(true, index, fvInputNumCategories[i], value);
            code = kMissingCode;
            ++numMissing;
        }
    }
    if (numMissing == fInputRecordSize) status = NBStatus(NBCode::kNoValidPredictor, true);
    return status;
}

NBStatus NBDataPreparator::PrepareInputRecord(const MCCommon::Record& inputsIn,
                                              MCCommon::Record& inputsOut) const {
    NBStatus status;
    SetToZero(inputsOut);
    std::size_t numContinuous = 0;
    for (std::int32_t i = 0; i < fInputRecordSize; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double value = inputsIn[i];
        if (fvInputMeasureLevels[at] == NBMeasureLevel::kContinuous) {
            inputsOut[i] = BinCode(fvpCollapsedEncoders[numContinuous++].get(), value);
            continue;
        }
        const std::int32_t whole = Truncate(value);
        if (value == MCMV::gMissingValue || (whole >= -1 && whole < fvInputNumCategories[at])) {
            inputsOut[i] = value;
            continue;
        }
        status = CodeOutOfRange(true, i, fvInputNumCategories[at], value);
        // The position of list variable i, not of input i; that one keeps its 0. Intended, see
        // ABadCodeSetsThePositionOfTheListVariableToZero.
        const std::int32_t cleared = fvVarIndex[at];
        if (cleared >= 0 && cleared < inputsOut.Size()) inputsOut[cleared] = 0.0;
    }
    return status;
}

std::int32_t NBDataPreparator::MakeCollapsedEncoders(const std::vector<NBayesInput>& tables) {
    if (fvRoles.empty()) return 0;
    fvpCollapsedEncoders.clear();
    fvpCollapsedEncoders.reserve(fvpBinningEncoders.size());
    for (std::size_t i = 0; i < fvRoles.size(); ++i) {
        if (fvRoles[i] != NBRole::kInput || fvMeasureLevels[i] != NBMeasureLevel::kContinuous)
            continue;
        const std::size_t k = fvpCollapsedEncoders.size();
        const auto table = static_cast<std::size_t>(fvVarIndex[i] - FirstInputPosition());
        PREDSEL_ASSERT(k < fvpBinningEncoders.size(), "k < fBinningEncoders.size()");
        PREDSEL_ASSERT(table < tables.size(), "p < tables.size()");
        const NBBinningEncoder* const encoder = fvpBinningEncoders[k];
        fvpCollapsedEncoders.push_back(
            encoder == nullptr ? nullptr : encoder->MakeCollapsedCopy(tables[table]));
    }
    return static_cast<std::int32_t>(fvpCollapsedEncoders.size());
}

std::int32_t NBDataPreparator::RemoveInput(std::int32_t position) {
    if (position < 0 || position >= fInputRecordSize) return -1;
    const auto removed =
        static_cast<std::size_t>(fvInputIndices[static_cast<std::size_t>(position)]);
    fvInputIndices.erase(fvInputIndices.begin() + position);
    fvVarIndex[removed] = -1;
    for (std::size_t j = removed + 1; j < fvRoles.size(); ++j) {
        if (fvRoles[j] == NBRole::kInput ||
            (fvRoles[j] == NBRole::kPossibleInput && fvVarIndex[j] >= 1)) {
            --fvVarIndex[j];
        }
    }
    const bool wasContinuous =
        fvInputMeasureLevels[static_cast<std::size_t>(position)] == NBMeasureLevel::kContinuous;
    const auto k = std::count(fvInputMeasureLevels.begin(), fvInputMeasureLevels.begin() + position,
                              NBMeasureLevel::kContinuous);
    fvInputNumCategories.erase(fvInputNumCategories.begin() + position);
    fvInputMeasureLevels.erase(fvInputMeasureLevels.begin() + position);
    fvRoles[removed] = NBRole::kUnused;
    SetRecordSizes();
    if (wasContinuous) {
        fvpBinningEncoders.erase(fvpBinningEncoders.begin() + k);
        if (k < std::ssize(fvpCollapsedEncoders)) {
            fvpCollapsedEncoders.erase(fvpCollapsedEncoders.begin() + k);
        }
    }
    return fInputRecordSize;
}

void NBDataPreparator::SyncWithVarList() {
    const auto numVariables = static_cast<std::int32_t>(fvRoles.size());
    for (std::int32_t i = 0; i < numVariables; ++i) {
        fvRoles[static_cast<std::size_t>(i)] = fpVarList->GetVariable(i)->GetRole();
    }
    if (std::count(fvRoles.begin(), fvRoles.end(), NBRole::kInput) == fInputRecordSize) return;
    fvpBinningEncoders.clear();
    fvInputMeasureLevels.clear();
    fvInputNumCategories.clear();
    fvInputIndices.clear();
    for (std::int32_t i = 0; i < numVariables; ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (fvRoles[at] == NBRole::kInput) {
            AddInput(i);
        } else if (fvRoles[at] == NBRole::kPossibleInput) {
            fvVarIndex[at] = -1;
        }
    }
    SetRecordSizes();
}

void NBDataPreparator::RefreshCategoryCounts() {
    std::size_t input = 0;
    for (std::size_t i = 0; i < fvNumCategories.size(); ++i) {
        fvNumCategories[i] =
            fpVarList->GetVariable(static_cast<std::int32_t>(i))->GetNumCategories();
        if (fvRoles[i] != NBRole::kInput) continue;
        fvInputNumCategories[input] = fvNumCategories[i];
        ++input;
    }
}

void NBDataPreparator::Display(std::ostream& out) const {
    out << "NBDataPreparator object: \n"
        << "\tPossible inputs used? " << (fbUsePossibleInputs ? "Yes." : "No.") << '\n'
        << "\tOriginal record size = " << fOriginalRecordSize << '\n'
        << "\tProcessed record size = " << fProcessedRecordSize << '\n'
        << "\tInput-only record size = " << fInputRecordSize << '\n'
        << "\tFrequency weight original and new indices: " << fWeightIndex << ' ' << fNewWeightIndex
        << '\n';
    DisplayNumbers(out, "\tVariable index: ", fvVarIndex);
    DisplayNumbers(out, "\tIndices of input variables in the variable list: ", fvInputIndices);
    DisplayNumbers(out, "\tVariable measurement levels: ", fvMeasureLevels);
    DisplayNumbers(out, "\tVariable roles: ", fvRoles);
    DisplayNumbers(out, "\tNumbers of categories: ", fvNumCategories);
    if (fStatus.IsOK()) {
        out << "\tStatus is OK.\n";
    } else {
        out << "\tStatus has error code " << fStatus.GetCode() << '\n';
    }
    fpVarList->Display(out);
}

std::string MakeTempFileName(const std::string& dir, const std::string& prefix) {
    if (dir.empty()) {
        std::error_code failed;
        std::filesystem::path folder = std::filesystem::temp_directory_path(failed);
        if (failed) folder = "/tmp";
        std::random_device random;
        std::string name = prefix;
        for (int i = 0; i < 3; ++i) name += std::to_string(random());
        return (folder / (name + ".tmp")).string();
    }
    // A folder that may not be looked into answers the same for ever, so the search has an end.
    // Opening the file then tells what is wrong.
    constexpr int kAttempts = 300;
    std::string name;
    for (int i = 0; i < kAttempts; ++i) {
        // The process's own random source on purpose: nothing else relies on it.
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        name = dir + prefix + std::to_string(std::rand()) + ".tmp";
        std::FILE* const taken = std::fopen(name.c_str(), "r");
        if (taken == nullptr) {
            if (errno != EACCES) break;
        } else {
            std::fclose(taken);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return name;
}
