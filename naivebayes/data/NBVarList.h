#ifndef PREDSEL_NAIVEBAYES_DATA_NBVARLIST_H
#define PREDSEL_NAIVEBAYES_DATA_NBVARLIST_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "host/Xml.h"
#include "naivebayes/data/INBVariable.h"
#include "persistence/Fields.h"

class NBNumericUserMissing;

/// The classifier's description of the data: its variables in the order of the values in an
/// original record. A variable's index here is its identity everywhere in the engine.
///
/// Filled once by a caller, checked by ValidateVariables, then copied into an engine, where roles
/// change and bins are made. Copies are deep.
class NBVarList {
 public:
    NBVarList() = default;
    NBVarList(const NBVarList& other);
    NBVarList& operator=(const NBVarList& other);
    NBVarList(NBVarList&&) = default;
    NBVarList& operator=(NBVarList&&) = default;
    virtual ~NBVarList() = default;

    // Each gives the new variable's index at the end of the list, or -1 for an empty name and for
    // one that the list has. role: see NBRole.

    /// Value i gets code i. Labels by code.
    std::int32_t AddNumericCatVar(const std::string& name, const std::string& label,
                                  const std::vector<double>& values,
                                  const std::vector<std::string>& valueLabels, std::int32_t role);
    std::int32_t AddNumericCatVar(const std::string& name, const std::string& label,
                                  const std::vector<double>& values, std::int32_t role);
    std::int32_t AddStringCatVar(const std::string& name, const std::string& label,
                                 const std::vector<std::string>& values,
                                 const std::vector<std::string>& valueLabels, std::int32_t role);
    /// Its values aren't known. measureLevel: numeric categories, and any other means strings.
    std::int32_t AddCatVar(const std::string& name, const std::string& label,
                           std::int32_t numCategories, std::int32_t measureLevel,
                           std::int32_t role);
    /// -1 for a target too, as a continuous variable is none. See NBContVar for both.
    std::int32_t AddContVar(const std::string& name, const std::string& label,
                            const std::vector<double>& cutpoints, std::int32_t role);
    std::int32_t AddContVar(const std::string& name, const std::string& label, double min,
                            double max, std::int32_t numBins, std::int32_t role);
    /// -1 for a second weight; the name is not looked at. roundOption: see NBRoundEncoder.
    std::int32_t AddWeightVar(const std::string& name, const std::string& label,
                              std::int32_t roundOption);

    // User-missing values. False for an index out of range and a variable of the other type.

    bool AddStringMissing(std::int32_t index, const std::string& value, const std::string& label);
    bool AddNumericMissing(std::int32_t index, double value, const std::string& label);
    /// Both ends are missing too. False for a variable that has a range.
    bool SetMissingRange(std::int32_t index, double low, double high);

    std::int32_t GetNumVariables() const { return static_cast<std::int32_t>(fvpVars.size()); }
    std::int32_t GetNumContVars() const { return fNumContVars; }
    /// The weight is in neither number.
    std::int32_t GetNumCatVars() const { return fNumCatVars; }
    /// -1 without a target.
    std::int32_t GetTargetIndex() const { return fTargetIndex; }
    /// -1 without a weight. Not saved: after a restore it is what it was before.
    std::int32_t GetWeightIndex() const { return fWeightIndex; }
    /// Null for an index out of range; the encoder also where the variable has none.
    INBVariable* GetVariable(std::int32_t index);
    const INBVariable* GetVariable(std::int32_t index) const;
    INBEncoder* GetEncoder(std::int32_t index);
    const INBEncoder* GetEncoder(std::int32_t index) const;
    /// The index of the first variable of this name, byte for byte, or -1.
    std::int32_t FindVariable(const std::string& name) const;
    /// NBRole::kNone for an index out of range.
    std::int32_t GetRole(std::int32_t index) const;
    std::int32_t GetNumInputVars() const { return CountRole(NBRole::kInput); }
    std::int32_t GetNumPossibleInputVars() const { return CountRole(NBRole::kPossibleInput); }
    /// Categories of the first variable whose role is the target; 0 without one.
    std::int32_t GetTargetNumCategories() const;
    /// Over all variables, each refreshed.
    std::int64_t GetTotalCategories();
    /// The names of the inputs in list order, and that of the first variable whose role is the
    /// target, "" without one.
    void GetVariableNames(std::vector<std::string>& namesOut, std::string& targetNameOut) const;

    /// A second target takes the role but not the target's index. False for an index out of range.
    bool SetRole(std::int32_t index, std::int32_t role);
    /// False when there is no such variable. Later ones move up.
    bool RemoveVariable(std::int32_t index);
    bool RemoveVariable(const std::string& name);
    /// NBContVar::MakeBinningEncoder of the inputs, with usePossible of the candidates too. How
    /// many encoders were made.
    std::int32_t MakeBinningEncoders(std::int32_t numBins, bool usePossible);
    /// NBContVar::DropEncoder of all. How many encoders were dropped.
    std::int32_t DropEncoders(bool force);
    /// Whether a model can be built: no variable in use is constant or empty, and there is at least
    /// one predictor and exactly one target. Candidates are in use with usePossible. The indices of
    /// constant and empty variables. Refreshes categorical variables.
    bool ValidateVariables(std::vector<std::int32_t>& constantVarsOut,
                           std::vector<std::int32_t>& emptyVarsOut, bool usePossible);
    /// Whether both describe the same model input: names, labels, roles and measure levels, and of
    /// inputs and target the user-missing definitions and the bins; a categorical one must have as
    /// many values as categories, in either list. Where they first differ; when the number of
    /// variables or the target's index does, the smaller of the two; -1 when nothing does.
    bool Compare(const NBVarList& other, std::int32_t& firstDifferenceOut) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    /// A list with a weight can be saved but not restored: its weight is taken for a categorical
    /// variable and refused. Intended: see AListWithAWeightCannotBeRestored.
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    void Display(std::ostream& out) const;

    /// Defined in NBVarListFields.h: include it where a list is part of what is saved.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive);

 private:
    static constexpr Persistence::SavedClass kSaved{
        "NBVL", "NBVarList", "Error reading NBVarList!\n", "Failure reading NBVarList!\n"};

    template <class List>
    struct Variables;

    bool IsInRange(std::int32_t index) const { return index >= 0 && index < GetNumVariables(); }
    bool IsNewName(const std::string& name) const;
    std::int32_t CountRole(std::int32_t role) const;
    /// The first variable whose role is the target, or null.
    const INBVariable* FindTarget() const;
    std::int32_t Append(std::unique_ptr<INBVariable> variable);
    std::int32_t AppendCategorical(std::unique_ptr<INBVariable> variable);
    std::int32_t AppendContinuous(std::unique_ptr<INBVariable> variable);
    /// The definition of a variable whose values aren't strings, a new one where it has none; null
    /// for any other index.
    std::unique_ptr<NBNumericUserMissing> CopyNumericMissing(std::int32_t index) const;
    void Clear();

    std::vector<std::unique_ptr<INBVariable>> fvpVars;
    std::int32_t fNumContVars = 0;
    std::int32_t fNumCatVars = 0;
    std::int32_t fTargetIndex = -1;
    std::int32_t fWeightIndex = -1;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBVARLIST_H
