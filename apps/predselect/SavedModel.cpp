#include "apps/predselect/SavedModel.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <utility>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Terminal.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/data/NBVarList.h"

namespace app {
namespace {

constexpr std::int32_t kInput = 1;  // roles of a variable
constexpr std::int32_t kTarget = 3;

// The engine tells on the error stream which of its objects could not be read; the user is told of
// the file instead.
class QuietErrorStream {
 public:
    QuietErrorStream() : fpOld(std::cerr.rdbuf(fNothing.rdbuf())) {}
    ~QuietErrorStream() { std::cerr.rdbuf(fpOld); }
    QuietErrorStream(const QuietErrorStream&) = delete;
    QuietErrorStream& operator=(const QuietErrorStream&) = delete;

 private:
    std::ostringstream fNothing;
    std::streambuf* fpOld;
};

std::unique_ptr<INBAlgorithm> Restore(const StateFile& state) {
    const QuietErrorStream quiet;
    std::istringstream stream(state.fState);
    NBStatus status;
    return RestoreNBAlgorithm(status, stream);
}

// The layout and the engine were saved together, so that they can only differ in a forged file.
bool Fits(const embedded::RecordLayout& layout, const NBVarList& list) {
    // A classifier with a weight cannot be restored, so there is none.
    if (layout.fWeightColumn >= 0) return false;
    if (static_cast<std::int32_t>(layout.fvColumns.size()) != list.GetNumVariables()) return false;
    for (std::int32_t i = 0; i < list.GetNumVariables(); ++i) {
        const auto& column = layout.fvColumns[static_cast<std::size_t>(i)];
        const INBVariable& variable = *list.GetVariable(i);
        const bool isUsed = list.GetRole(i) == kInput || list.GetRole(i) == kTarget;
        if (column.fName != variable.GetName()) return false;
        if (!isUsed) continue;
        if (column.fbCategorical == (variable.GetMeasureLevel() == 1)) return false;
        const auto values = static_cast<std::int32_t>(column.fvValues.size());
        if (column.fbCategorical && values > variable.GetNumCategories()) return false;
    }
    return true;
}

// The values behind the codes of an encoder of categories.
std::vector<KoltObs> ValuesOf(const INBEncoder& encoder) {
    std::vector<KoltObs> values;
    for (std::int32_t code = 0; code < encoder.GetNumCodes(); ++code) {
        if (const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(&encoder)) {
            values.emplace_back(numbers->Decode(code));
        } else if (const auto* texts = dynamic_cast<const NBStringEncoder*>(&encoder)) {
            values.emplace_back(std::string(texts->Decode(code)));
        }
    }
    return values;
}

}  // namespace

SavedModel::SavedModel(const std::string& path) : fName(StateName(path)) {
    StateFile state = ReadState(path);
    if (state.fCommand != "NAIVEBAYES") {
        throw ProgramError(kFileFault, fName + " holds the state of a " + state.fCommand +
                                           " run, which classifies nothing; give a state that "
                                           "predselect bayes wrote");
    }
    fLayout = std::move(state.fLayout);
    fpEngine = Restore(state);
    if (fpEngine == nullptr || !Fits(fLayout, fpEngine->GetVarList())) {
        throw ProgramError(kFileFault, "the state " + fName +
                                           " is damaged: it holds no classifier; write it "
                                           "again");
    }
    for (std::int32_t i = 0; i < fpEngine->GetVarList().GetNumVariables(); ++i) {
        if (fpEngine->GetVarList().GetRole(i) == kTarget) fTarget = i;
    }
    if (fTarget < 0 || !Target().fbCategorical) {
        throw ProgramError(kFileFault, "the state " + fName +
                                           " is damaged: it has no target; write "
                                           "it again");
    }
}

const embedded::RecordLayoutColumn& SavedModel::Target() const {
    return fLayout.fvColumns[static_cast<std::size_t>(fTarget)];
}

bool SavedModel::IsInput(std::int32_t column) const {
    return fpEngine->GetVarList().GetRole(column) == kInput;
}

void SavedModel::RefreshValues() {
    for (std::size_t i = 0; i < fLayout.fvColumns.size(); ++i) {
        embedded::RecordLayoutColumn& column = fLayout.fvColumns[i];
        const INBEncoder* encoder = fpEngine->GetVarList().GetEncoder(static_cast<std::int32_t>(i));
        if (!column.fbCategorical || encoder == nullptr) continue;
        std::vector<KoltObs> values = ValuesOf(*encoder);
        if (values.size() <= column.fvValues.size()) continue;
        column.fvValues = std::move(values);
        for (const KoltObs& value : column.fvValues) {
            const std::string* text = std::get_if<std::string>(&value);
            if (text == nullptr) continue;
            column.fType = std::max(column.fType, static_cast<std::int32_t>(text->size()));
        }
    }
}

std::string ReasonOf(const NBStatus& status, const SavedModel& model) {
    const auto variable = [&](std::int32_t index) {
        const INBVariable* found = model.Engine().GetVarList().GetVariable(index);
        return found != nullptr ? OneLine(found->GetName()) : std::string();
    };
    switch (status.GetCode()) {
        case 0:
            return {};
        case NBCode::kInterrupted:
            return "interrupted";
        case NBCode::kNoUsableRecords:
        case NBCode::kTrainingEmpty:
            return "no case has a valid target and a valid predictor; check the data";
        case NBCode::kTooLittleData:
            return "too few cases, or no predictor with two categories is left; add cases";
        case NBCode::kCannotMerge: {
            const std::string name = variable(status.fIntArgs[0]);
            return name.empty() ? "they do not describe the same variables"
                                : "they differ in the variable " + name +
                                      ": its role, level, label, missing values or bins";
        }
        default:
            return "the engine refused with status " + std::to_string(status.GetCode());
    }
}

}  // namespace app
