#include "naivebayes/NBInternalAdapter.h"

#include <utility>

#include "naivebayes/NBStatus.h"
#include "naivebayes/data/NBDataPreparator.h"

NBInternalAdapter::NBInternalAdapter(MCCommon::RecordIterator& source, std::int32_t limit,
                                     const NBDataPreparator& preparator)
    : fSource(source),
      fLimit(limit),
      fPreparator(preparator),
      fCurrent(preparator.GetProcessedRecordSize()),
      fNext(preparator.GetProcessedRecordSize()) {
    if (!fSource.HasMore()) {
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    ReadAhead();
}

bool NBInternalAdapter::HasMore() { return fStatus == MCCommon::kITER_SUCCESS; }

const MCCommon::Record* NBInternalAdapter::Next() {
    if (fStatus != MCCommon::kITER_SUCCESS) return nullptr;
    ReadAhead();
    return &fCurrent;
}

void NBInternalAdapter::ReadAhead() {
    std::swap(fCurrent, fNext);
    while ((fLimit < 1 || fNumRead < fLimit) && fSource.HasMore()) {
        const MCCommon::Record* const original = fSource.Next();
        ++fNumRead;
        if (original == nullptr) continue;
        double weight = 1.0;
        if (!fPreparator.PrepareRecord(*original, fNext, weight).IsError()) {
            ++fNumUsed;
            return;
        }
        ++fNumExcluded;
        if (weight != MCMV::gMissingValue) fExcludedWeight += weight;
    }
    fStatus = MCCommon::kITER_NO_VALID_CASE;
}
