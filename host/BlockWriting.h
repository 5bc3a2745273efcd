#ifndef PREDSEL_HOST_BLOCKWRITING_H
#define PREDSEL_HOST_BLOCKWRITING_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// Beside KOLT_InputCaseIterator: values of new variables for all records of the block that its
/// pass gave last, in the block's order. Who writes scores asks the reader of a pass for this
/// interface and writes case by case where it is wanting.
class BlockColumnWriter {
 public:
    virtual ~BlockColumnWriter() = default;
    /// One value a record; MCMV::gMissingValue leaves the case as it is.
    virtual void SetColumnValues(std::int32_t column, std::span<const double> values) = 0;
    /// One place in texts a record; a negative one leaves the case as it is. type as in
    /// KOLT_InputCaseIterator::SetColumnValue.
    virtual void SetColumnTexts(std::int32_t column, std::span<const std::int32_t> places,
                                const std::vector<std::string>& texts, std::int32_t type) = 0;
};

#endif  // PREDSEL_HOST_BLOCKWRITING_H
