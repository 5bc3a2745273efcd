#include "naivebayes/data/NBVarList.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <utility>

#include "naivebayes/IOException.h"
#include "naivebayes/data/NBVarListFields.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace {

bool HaveEqualMissing(const INBVariable& mine, const INBVariable& theirs) {
    const INBUserMissing* const definition = mine.GetUserMissing();
    const INBUserMissing* const other = theirs.GetUserMissing();
    return definition == nullptr ? other == nullptr : definition->Equals(other);
}

bool HaveEqualBins(const NBContVar& mine, const NBContVar& theirs) {
    const NBBinningEncoder* const encoder = mine.GetEncoderConst();
    const NBBinningEncoder* const other = theirs.GetEncoderConst();
    if (encoder == nullptr || other == nullptr) return encoder == other;
    return encoder->GetCutpoints() == other->GetCutpoints();
}

bool HasAllValues(const INBVariable& variable) {
    return variable.GetNumCategories() == variable.GetEncoderConst()->GetNumCodes();
}

/// REQUIRES: both of the same role and measure level.
bool EncodeAlike(const INBVariable& mine, const INBVariable& theirs) {
    if (!HaveEqualMissing(mine, theirs)) return false;
    if (mine.GetMeasureLevel() == NBMeasureLevel::kContinuous) {
        return HaveEqualBins(static_cast<const NBContVar&>(mine),
                             static_cast<const NBContVar&>(theirs));
    }
    return HasAllValues(mine) && HasAllValues(theirs);
}

bool AreAlike(const INBVariable& mine, const INBVariable& theirs) {
    if (mine.GetName() != theirs.GetName() || mine.GetLabel() != theirs.GetLabel() ||
        mine.GetRole() != theirs.GetRole() || mine.GetMeasureLevel() != theirs.GetMeasureLevel()) {
        return false;
    }
    const bool isInModel = mine.GetRole() == NBRole::kInput || mine.GetRole() == NBRole::kTarget;
    return !isInModel || EncodeAlike(mine, theirs);
}

}  // namespace

NBVarList::NBVarList(const NBVarList& other)
    : fNumContVars(other.fNumContVars),
      fNumCatVars(other.fNumCatVars),
      fTargetIndex(other.fTargetIndex),
      fWeightIndex(other.fWeightIndex) {
    fvpVars.reserve(other.fvpVars.size());
    for (const auto& variable : other.fvpVars) fvpVars.push_back(variable->Clone());
}

NBVarList& NBVarList::operator=(const NBVarList& other) {
    NBVarList copy(other);
    *this = std::move(copy);
    return *this;
}

std::int32_t NBVarList::AddNumericCatVar(const std::string& name, const std::string& label,
                                         const std::vector<double>& values,
                                         const std::vector<std::string>& valueLabels,
                                         std::int32_t role) {
    const std::int32_t index = AddNumericCatVar(name, label, values, role);
    if (index >= 0) GetEncoder(index)->SetCategoryLabels(valueLabels);
    return index;
}

std::int32_t NBVarList::AddNumericCatVar(const std::string& name, const std::string& label,
                                         const std::vector<double>& values, std::int32_t role) {
    if (!IsNewName(name)) return -1;
    return AppendCategorical(std::make_unique<NBCatVar>(name, label, role,
                                                        static_cast<std::int32_t>(values.size()),
                                                        std::make_unique<NBCatNumEncoder>(values)));
}

std::int32_t NBVarList::AddStringCatVar(const std::string& name, const std::string& label,
                                        const std::vector<std::string>& values,
                                        const std::vector<std::string>& valueLabels,
                                        std::int32_t role) {
    if (!IsNewName(name)) return -1;
    auto encoder = std::make_unique<NBStringEncoder>(values);
    encoder->SetCategoryLabels(valueLabels);
    return AppendCategorical(std::make_unique<NBCatVar>(
        name, label, role, static_cast<std::int32_t>(values.size()), std::move(encoder)));
}

std::int32_t NBVarList::AddCatVar(const std::string& name, const std::string& label,
                                  std::int32_t numCategories, std::int32_t measureLevel,
                                  std::int32_t role) {
    if (!IsNewName(name)) return -1;
    if (measureLevel == NBMeasureLevel::kNumericCat) {
        return AppendCategorical(std::make_unique<NBCatVar>(
            name, label, role, numCategories, std::make_unique<NBCatNumEncoder>(numCategories)));
    }
    return AppendCategorical(std::make_unique<NBCatVar>(
        name, label, role, numCategories, std::make_unique<NBStringEncoder>(numCategories)));
}

std::int32_t NBVarList::AddContVar(const std::string& name, const std::string& label,
                                   const std::vector<double>& cutpoints, std::int32_t role) {
    if (role == NBRole::kTarget || !IsNewName(name)) return -1;
    return AppendContinuous(std::make_unique<NBContVar>(name, label, cutpoints, role));
}

std::int32_t NBVarList::AddContVar(const std::string& name, const std::string& label, double min,
                                   double max, std::int32_t numBins, std::int32_t role) {
    if (role == NBRole::kTarget || !IsNewName(name)) return -1;
    return AppendContinuous(std::make_unique<NBContVar>(name, label, min, max, numBins, role));
}

std::int32_t NBVarList::AddWeightVar(const std::string& name, const std::string& label,
                                     std::int32_t roundOption) {
    if (fWeightIndex >= 0) return -1;
    fWeightIndex = Append(std::make_unique<NBWeightVar>(name, label, roundOption));
    return fWeightIndex;
}

bool NBVarList::AddStringMissing(std::int32_t index, const std::string& value,
                                 const std::string& label) {
    INBVariable* const variable = GetVariable(index);
    if (variable == nullptr || variable->GetMeasureLevel() != NBMeasureLevel::kStringCat) {
        return false;
    }
    const auto* const known = static_cast<const NBStringUserMissing*>(variable->GetUserMissing());
    auto definition = known == nullptr ? std::make_unique<NBStringUserMissing>()
                                       : std::make_unique<NBStringUserMissing>(*known);
    definition->Add(value, label);
    return variable->SetUserMissing(std::move(definition));
}

bool NBVarList::AddNumericMissing(std::int32_t index, double value, const std::string& label) {
    auto definition = CopyNumericMissing(index);
    if (!definition) return false;
    definition->Add(value, label);
    return GetVariable(index)->SetUserMissing(std::move(definition));
}

bool NBVarList::SetMissingRange(std::int32_t index, double low, double high) {
    auto definition = CopyNumericMissing(index);
    if (!definition || definition->HasInterval()) return false;
    definition->SetInterval(NBNumericInterval(low, high));
    return GetVariable(index)->SetUserMissing(std::move(definition));
}

std::unique_ptr<NBNumericUserMissing> NBVarList::CopyNumericMissing(std::int32_t index) const {
    const INBVariable* const variable = GetVariable(index);
    if (variable == nullptr || variable->GetMeasureLevel() == NBMeasureLevel::kStringCat) {
        return nullptr;
    }
    const auto* const known = static_cast<const NBNumericUserMissing*>(variable->GetUserMissing());
    return known == nullptr ? std::make_unique<NBNumericUserMissing>()
                            : std::make_unique<NBNumericUserMissing>(*known);
}

INBVariable* NBVarList::GetVariable(std::int32_t index) {
    return IsInRange(index) ? fvpVars[static_cast<std::size_t>(index)].get() : nullptr;
}

const INBVariable* NBVarList::GetVariable(std::int32_t index) const {
    return IsInRange(index) ? fvpVars[static_cast<std::size_t>(index)].get() : nullptr;
}

INBEncoder* NBVarList::GetEncoder(std::int32_t index) {
    INBVariable* const variable = GetVariable(index);
    return variable == nullptr ? nullptr : variable->GetEncoder();
}

const INBEncoder* NBVarList::GetEncoder(std::int32_t index) const {
    const INBVariable* const variable = GetVariable(index);
    return variable == nullptr ? nullptr : variable->GetEncoderConst();
}

std::int32_t NBVarList::FindVariable(const std::string& name) const {
    const auto at = std::find_if(fvpVars.begin(), fvpVars.end(), [&name](const auto& variable) {
        return variable->GetName() == name;
    });
    return at == fvpVars.end() ? -1 : static_cast<std::int32_t>(at - fvpVars.begin());
}

std::int32_t NBVarList::GetRole(std::int32_t index) const {
    const INBVariable* const variable = GetVariable(index);
    return variable == nullptr ? NBRole::kNone : variable->GetRole();
}

std::int32_t NBVarList::CountRole(std::int32_t role) const {
    return static_cast<std::int32_t>(
        std::count_if(fvpVars.begin(), fvpVars.end(),
                      [role](const auto& variable) { return variable->GetRole() == role; }));
}

const INBVariable* NBVarList::FindTarget() const {
    const auto at = std::find_if(fvpVars.begin(), fvpVars.end(), [](const auto& variable) {
        return variable->GetRole() == NBRole::kTarget;
    });
    return at == fvpVars.end() ? nullptr : at->get();
}

std::int32_t NBVarList::GetTargetNumCategories() const {
    const INBVariable* const target = FindTarget();
    return target == nullptr ? 0 : target->GetNumCategories();
}

std::int64_t NBVarList::GetTotalCategories() {
    std::int64_t total = 0;
    for (const auto& variable : fvpVars) total += variable->RefreshNumCategories();
    return total;
}

void NBVarList::GetVariableNames(std::vector<std::string>& namesOut,
                                 std::string& targetNameOut) const {
    namesOut.clear();
    for (const auto& variable : fvpVars) {
        if (variable->GetRole() == NBRole::kInput) namesOut.push_back(variable->GetName());
    }
    const INBVariable* const target = FindTarget();
    targetNameOut = target == nullptr ? std::string() : target->GetName();
}

bool NBVarList::SetRole(std::int32_t index, std::int32_t role) {
    INBVariable* const variable = GetVariable(index);
    if (variable == nullptr) return false;
    if (role == NBRole::kTarget) {
        // The first target keeps its place. Intended: see ASecondTargetDoesNotDisplaceTheFirst.
        if (fTargetIndex < 0) fTargetIndex = index;
    } else if (fTargetIndex == index) {
        fTargetIndex = -1;
    }
    variable->SetRole(role);
    return true;
}

bool NBVarList::RemoveVariable(std::int32_t index) {
    const INBVariable* const variable = GetVariable(index);
    if (variable == nullptr) return false;
    const std::int32_t level = variable->GetMeasureLevel();
    if (level == NBMeasureLevel::kContinuous) {
        --fNumContVars;
    } else if (level != NBMeasureLevel::kWeight) {
        --fNumCatVars;
    }
    fvpVars.erase(fvpVars.begin() + index);
    for (std::int32_t* const held : {&fTargetIndex, &fWeightIndex}) {
        if (*held == index) {
            *held = -1;
        } else if (*held > index) {
            --*held;
        }
    }
    return true;
}

bool NBVarList::RemoveVariable(const std::string& name) {
    return RemoveVariable(FindVariable(name));
}

std::int32_t NBVarList::MakeBinningEncoders(std::int32_t numBins, bool usePossible) {
    std::int32_t made = 0;
    for (const auto& variable : fvpVars) {
        if (variable->GetMeasureLevel() != NBMeasureLevel::kContinuous) continue;
        const std::int32_t role = variable->GetRole();
        if (role == NBRole::kInput || (usePossible && role == NBRole::kPossibleInput)) {
            made += static_cast<NBContVar&>(*variable).MakeBinningEncoder(numBins);
        }
    }
    return made;
}

std::int32_t NBVarList::DropEncoders(bool force) {
    std::int32_t dropped = 0;
    for (const auto& variable : fvpVars) {
        if (variable->GetMeasureLevel() == NBMeasureLevel::kContinuous) {
            dropped += static_cast<NBContVar&>(*variable).DropEncoder(force);
        }
    }
    return dropped;
}

bool NBVarList::ValidateVariables(std::vector<std::int32_t>& constantVarsOut,
                                  std::vector<std::int32_t>& emptyVarsOut, bool usePossible) {
    constantVarsOut.clear();
    emptyVarsOut.clear();
    std::int32_t numPredictors = 0;
    std::int32_t numTargets = 0;
    for (std::int32_t i = 0; i < GetNumVariables(); ++i) {
        INBVariable& variable = *GetVariable(i);
        const std::int32_t role = variable.GetRole();
        if (role == NBRole::kUnused || (role == NBRole::kPossibleInput && !usePossible)) continue;
        const std::int32_t state = variable.GetRangeState();
        if (state == NBRangeState::kConstant) constantVarsOut.push_back(i);
        if (state == NBRangeState::kEmpty) emptyVarsOut.push_back(i);
        if (role == NBRole::kInput || role == NBRole::kPossibleInput) ++numPredictors;
        if (role == NBRole::kTarget) ++numTargets;
    }
    return constantVarsOut.empty() && emptyVarsOut.empty() && numPredictors >= 1 && numTargets == 1;
}

bool NBVarList::Compare(const NBVarList& other, std::int32_t& firstDifferenceOut) const {
    if (GetNumVariables() != other.GetNumVariables()) {
        firstDifferenceOut = std::min(GetNumVariables(), other.GetNumVariables());
        return false;
    }
    if (fTargetIndex != other.fTargetIndex) {
        firstDifferenceOut = std::min(fTargetIndex, other.fTargetIndex);
        return false;
    }
    for (std::int32_t i = 0; i < GetNumVariables(); ++i) {
        if (!AreAlike(*GetVariable(i), *other.GetVariable(i))) {
            firstDifferenceOut = i;
            return false;
        }
    }
    firstDifferenceOut = -1;
    return true;
}

bool NBVarList::IsNewName(const std::string& name) const {
    return !name.empty() && FindVariable(name) < 0;
}

std::int32_t NBVarList::Append(std::unique_ptr<INBVariable> variable) {
    fvpVars.push_back(std::move(variable));
    return GetNumVariables() - 1;
}

std::int32_t NBVarList::AppendCategorical(std::unique_ptr<INBVariable> variable) {
    const bool isTarget = variable->GetRole() == NBRole::kTarget;
    const std::int32_t index = Append(std::move(variable));
    ++fNumCatVars;
    if (isTarget) fTargetIndex = index;
    return index;
}

std::int32_t NBVarList::AppendContinuous(std::unique_ptr<INBVariable> variable) {
    ++fNumContVars;
    return Append(std::move(variable));
}

void NBVarList::Clear() {
    fvpVars.clear();
    fNumContVars = 0;
    fNumCatVars = 0;
    fTargetIndex = -1;
}

std::int64_t NBVarList::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBVarList::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBVarList::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBVarList::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBVarList::Display(std::ostream& out) const {
    out << "\nBegin display of NBVarList object.\n";
    out << "Number of Continuous Variables = " << fNumContVars << '\n';
    out << "Number of Categorical Variables  = " << fNumCatVars << '\n';
    out << "Target Index  = " << fTargetIndex << '\n';
    for (const auto& variable : fvpVars) variable->Display(out);
    out << "End of display for NBVarList object.\n";
}
