#ifndef PREDSEL_HOST_RECORDS_H
#define PREDSEL_HOST_RECORDS_H

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace MCMV {

/// The missing value. Compared by exact equality, never by order; no NaN enters a record.
inline constexpr double gMissingValue = -std::numeric_limits<double>::max();

}  // namespace MCMV

namespace MCCommon {

/// One case: a flat vector of doubles, one per column. A categorical column holds a category code
/// (0 upwards, -1 missing), a continuous one its value or MCMV::gMissingValue.
class Record {
 public:
    explicit Record(std::int32_t size = 0) : fvValues(static_cast<std::size_t>(size), 0.0) {}
    explicit Record(std::vector<double> values) : fvValues(std::move(values)) {}

    std::int32_t Size() const { return static_cast<std::int32_t>(fvValues.size()); }
    double operator[](std::int32_t column) const {
        return fvValues[static_cast<std::size_t>(column)];
    }
    double& operator[](std::int32_t column) { return fvValues[static_cast<std::size_t>(column)]; }

 private:
    std::vector<double> fvValues;
};

/// Why an iterator has nothing (more) to give.
inline constexpr std::int32_t kITER_SUCCESS = 0;
inline constexpr std::int32_t kITER_NO_VALID_CASE = 1;  // none at all, or none any more
inline constexpr std::int32_t kITER_ERROR = 3;
inline constexpr std::int32_t kITER_NO_NEW_PASS = 4;  // the source cannot be read again

/// A forward source of records.
class RecordIterator {
 public:
    virtual ~RecordIterator() = default;
    /// True while Next() will give a record.
    virtual bool HasMore() = 0;
    /// The next record, owned by the iterator and valid until the following call, or null at the
    /// end.
    virtual const Record* Next() = 0;
    /// kITER_...; HasMore() is true exactly for kITER_SUCCESS.
    virtual std::int32_t GetFailReason() const = 0;
};

/// A source that can be read again from its first record.
class MultiPassRecordIter : public RecordIterator {
 public:
    /// Back to the first record. Returns the fail reason after that.
    virtual std::int32_t NewPass() = 0;
};

}  // namespace MCCommon

#endif  // PREDSEL_HOST_RECORDS_H
