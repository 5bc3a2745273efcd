#ifndef PREDSEL_HOST_CASEDELIVERY_H
#define PREDSEL_HOST_CASEDELIVERY_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/Blocks.h"
#include "host/Data.h"
#include "host/Records.h"

/// Which variables a run reads, and the column of a record in which each arrives: in the order in
/// which they were registered.
class UAVarValidSpecs {
 public:
    /// userMissExclude true: user-missing values arrive as missing; false: as values. The other two
    /// flags are true for a procedure.
    UAVarValidSpecs(bool procedure, bool userMissExclude, bool useWeights);
    /// Registers a variable by dictionary index; returns its record column.
    std::int32_t AddVariable(std::int32_t index, bool isCategorical);
    /// Registers the weight variable; returns its record column.
    std::int32_t SetWeightVar(std::int32_t index);
    /// Registers several; columnsOut takes their columns, flags tells which are categorical.
    void AddVariables(const std::vector<std::int32_t>& indices,
                      std::vector<std::int32_t>& columnsOut, const std::vector<bool>& flags);
    /// Columns of a record.
    std::int32_t GetNRecordVars() const;
    /// True when the variable of this dictionary index is registered as categorical.
    bool GetKOLTCatVar(std::int32_t index) const;
    /// The dictionary index of a record column.
    std::int32_t GetKOLTVarIndex(std::int32_t column) const;
    bool GetUserMissExclude() const { return fbUserMissExclude; }
    /// Column of the weight, -1 when none is registered.
    std::int32_t GetWeightColumn() const { return fWeightColumn; }

 protected:
    ~UAVarValidSpecs();  // deleted through the procedure's own subclass

 private:
    std::vector<std::int32_t> fvIndices;                  // by record column
    std::unordered_map<std::int32_t, bool> fCategorical;  // by variable, as it came first
    std::int32_t fWeightColumn = -1;
    bool fbUserMissExclude;
};

struct UAAdapterState;  // the host's

/// The raw values of the case that a pass stands on. Columns are dictionary indices.
class KOLT_InputCaseIterator {
 public:
    virtual ~KOLT_InputCaseIterator() = default;
    /// The value of a numeric variable, user-missing values as they stand; MCMV::gMissingValue when
    /// it is system-missing.
    virtual double GetNumericValue(std::int32_t index) const = 0;
    /// Writes a value of a new variable, see KOLT_DataSource::MakeVariable. type is the string's
    /// length in bytes; what does not fit is cut off at a character.
    virtual void SetColumnValue(std::int32_t column, double value) = 0;
    virtual void SetColumnValue(std::int32_t column, const std::string& text,
                                std::int32_t type) = 0;
};

/// Turns cases of the active data set into records. A categorical value arrives as its code, from 0
/// to GetCatVarSize() - 1 in ascending order of value, a continuous one as itself, a missing one as
/// the code -1 or MCMV::gMissingValue. A case whose weight is missing or not above 0 is no valid
/// case and is not delivered.
class UAInputAdapter {
 public:
    /// Both borrowed.
    UAInputAdapter(UAVarValidSpecs* specs, ProcedureDataSource& source);
    /// Categories met, of a categorical variable by dictionary index. Known after the first pass.
    std::int32_t GetCatVarSize(std::int32_t index) const;
    /// Smallest and largest valid value of a continuous variable over the delivered cases;
    /// MCMV::gMissingValue when it has none. Known after the first pass.
    double GetContMinValue(std::int32_t index) const;
    double GetContMaxValue(std::int32_t index) const;
    /// The value behind a category code, and the dictionary index it belongs to. False for a code
    /// that does not exist.
    bool DecodeCatValue(std::int32_t index, std::int32_t code, std::int32_t& indexOut,
                        KoltObs& valueOut) const;
    /// After the first pass: numbers the categories that it met by value, ascending or descending,
    /// from 0 without gaps. A category that only a later pass meets is delivered as -1; the host
    /// counts these cases and names the variable in the notes.
    void ReorderCategories(std::int32_t index, bool ascending);

    /// Passes that have come to their end: 0 during the first one.
    std::int32_t GetDataPassCount() const;
    /// Cases of the file that the pass has read so far, left-out ones included: 1 at the first.
    /// Between passes those of the last one.
    std::int32_t GetCaseCount() const;
    /// The reader of the pass that is under way, null between passes. Borrowed.
    KOLT_InputCaseIterator* GetDSIterator() const;

    UAAdapterState& State() const { return *fpState; }

 protected:
    ~UAInputAdapter();

 private:
    std::unique_ptr<UAAdapterState> fpState;
};

/// Tells whether a variable of the case that a pass stands on has a valid value.
class UACaseValueReader {
 public:
    /// Borrowed. includeUserMissing true: user-missing values are valid.
    UACaseValueReader(const UAInputAdapter& adapter, std::int32_t index, bool includeUserMissing);
    ~UACaseValueReader();
    UACaseValueReader(const UACaseValueReader&) = delete;
    UACaseValueReader& operator=(const UACaseValueReader&) = delete;
    /// Of the case at hand.
    bool UpdateValid() const;

 private:
    struct Impl;
    std::unique_ptr<Impl> fpImpl;
};

/// Records of the adapter's cases, in file order. A pass stands on its next record: Current gives
/// it, Next gives it and moves on, so that columns of a case are written between Current and Next.
/// Several iterators over one adapter take turns, one pass under way at a time: NewPass of one ends
/// the pass of another.
///
/// NextBlock gives the records that as many calls of Next would have given, and leaves all as these
/// would have left it; the two may take turns. Blocks end where the host's storage does.
class UAProcDataSourceIter : public MCCommon::MultiPassRecordIter,
                             public MCCommon::RecordBlockSource {
 public:
    /// startNow true begins the first pass at once, which is the first contact with the data.
    UAProcDataSourceIter(UAInputAdapter& adapter, bool startNow);
    bool HasMore() override;
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override;
    std::int32_t NewPass() override;
    /// The same. standOnFirst true: the pass stands on its first record at once, else when it is
    /// first asked for one. kITER_NO_NEW_PASS behind the last pass.
    std::int32_t NewPass(bool standOnFirst);
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override;
    MCCommon::BlockExecutor* GetExecutor() override;
    /// The cases of the file, from 0, whose records NextBlock gave last. Valid as long as these.
    std::span<const std::int64_t> GetBlockCases() const;
    /// Ends the pass. Does nothing without one. Where it ends the first pass before the last case,
    /// later passes end there too: the adapter knows no case behind it.
    void StopPass();
    /// The record that the pass stands on, null at its end. Owned by the iterator.
    const MCCommon::Record* Current() const;
    /// No pass over the adapter follows this one.
    void SetLastPass();
    /// The writer of new columns, for the case that the pass stands on; as a BlockColumnWriter, for
    /// the records that NextBlock gave last. Borrowed from the adapter.
    KOLT_InputCaseIterator* GetProcDS() const;

 protected:
    ~UAProcDataSourceIter() override;
    /// Called for each case of the file, before its weight is looked at and its record is made;
    /// false leaves the case out. The adapter's reader stands on the case, and its count includes
    /// it.
    virtual bool PreprocessCase() { return true; }

 private:
    struct Impl;
    std::unique_ptr<Impl> fpImpl;
};

/// The adapter's own messages.
class UAInpAdaptMsg {
 public:
    explicit UAInpAdaptMsg(ProcedureDataSource& source);
    /// No case is valid: an error, when the data were read.
    void NoValidCases() const;
    /// No case can be valid: a warning, before the data are read.
    void NoValidCasesForSelect() const;
};

#endif  // PREDSEL_HOST_CASEDELIVERY_H
