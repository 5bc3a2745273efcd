#ifndef PREDSEL_HOST_CASEDELIVERY_H
#define PREDSEL_HOST_CASEDELIVERY_H

#include <cstdint>
#include <memory>
#include <vector>

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
    std::vector<std::int32_t> fvIndices;  // by record column
    std::vector<bool> fvCategorical;      // by record column
    std::int32_t fWeightColumn = -1;
    bool fbUserMissExclude;
};

struct UAAdapterState;  // the host's

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

    UAAdapterState& State() const { return *fpState; }

 protected:
    ~UAInputAdapter();

 private:
    std::unique_ptr<UAAdapterState> fpState;
};

/// Records of the adapter's cases, in file order.
class UAProcDataSourceIter : public MCCommon::MultiPassRecordIter {
 public:
    /// startNow true begins the first pass at once, which is the first contact with the data.
    UAProcDataSourceIter(UAInputAdapter& adapter, bool startNow);
    bool HasMore() override;
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override;
    void NewPass() override;

 protected:
    ~UAProcDataSourceIter() override;
    /// Called for each case before its record is made; false leaves the case out.
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
