#ifndef PREDSEL_NAIVEBAYES_NBINTERNALADAPTER_H
#define PREDSEL_NAIVEBAYES_NBINTERNALADAPTER_H

#include <cstdint>

#include "host/Records.h"

class NBDataPreparator;

/// Prepares the records of a source on the fly, for a single pass. Delivers the usable ones and
/// counts the others. Reads one usable record ahead, which the counts include.
class NBInternalAdapter : public MCCommon::RecordIterator {
 public:
    /// Both borrowed. limit: original records to read at most, below 1 for all. Fail reason 3 when
    /// the source has no record to begin with.
    NBInternalAdapter(MCCommon::RecordIterator& source, std::int32_t limit,
                      const NBDataPreparator& preparator);

    bool HasMore() override;
    /// A processed record, see NBDataPreparator; valid until the following call.
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override { return fStatus; }

    /// Original records read, null ones included.
    std::int32_t GetNumRead() const { return fNumRead; }
    std::int32_t GetNumUsed() const { return fNumUsed; }
    std::int32_t GetNumExcluded() const { return fNumExcluded; }
    /// Weight of the excluded records, but for those whose weight is missing.
    double GetExcludedWeight() const { return fExcludedWeight; }

 private:
    void ReadAhead();

    MCCommon::RecordIterator& fSource;  // borrowed from the caller
    std::int32_t fLimit;
    std::int32_t fNumRead = 0;
    const NBDataPreparator& fPreparator;  // borrowed from the caller
    std::int32_t fStatus = MCCommon::kITER_SUCCESS;
    MCCommon::Record fCurrent;
    MCCommon::Record fNext;
    std::int32_t fNumUsed = 0;
    std::int32_t fNumExcluded = 0;
    double fExcludedWeight = 0.0;
};

#endif  // PREDSEL_NAIVEBAYES_NBINTERNALADAPTER_H
