#include "naivebayes/NBMemoryIter.h"

#include <cstddef>
#include <new>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace MCNaive {

namespace {

constexpr Persistence::SavedClass kSaved{
    .fTag = "RBI",
    .fName = "NBMemoryIter",
    .fXMLFailure = "Error restoring MCNaive::NBMemoryIter from XML.\n",
    .fbXMLFailureOnOutput = true};

/// The values of so many records, one behind the other.
template <class Records>
struct Rows {
    const std::int32_t& fCount;
    const std::int32_t& fRecordSize;
    Records& fvRecords;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        for (std::int32_t i = 0; i < self.fCount; ++i) {
            if constexpr (Archive::kRestores) {
                std::vector<double> values;
                for (std::int32_t j = 0; j < self.fRecordSize; ++j) {
                    double value = 0.0;
                    archive.Items(value);
                    values.push_back(value);
                }
                values.shrink_to_fit();
                self.fvRecords.emplace_back(std::move(values));
            } else {
                const MCCommon::Record& record = self.fvRecords[static_cast<std::size_t>(i)];
                for (std::int32_t j = 0; j < self.fRecordSize; ++j) archive.Items(record[j]);
            }
        }
    }
};
template <class Records>
Rows(const std::int32_t&, const std::int32_t&, Records&) -> Rows<Records>;

}  // namespace

NBMemoryIter::NBMemoryIter(std::int32_t recordSize, std::int32_t capacity) {
    if (recordSize < 0 || capacity < 0) {
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    try {
        fvBuffer.assign(static_cast<std::size_t>(capacity), MCCommon::Record(recordSize));
    } catch (const std::bad_alloc&) {
        Clear(MCCommon::kITER_ERROR);
        return;
    } catch (const std::length_error&) {
        Clear(MCCommon::kITER_ERROR);
        return;
    }
    fCapacity = capacity;
    fRecordSize = capacity > 0 ? recordSize : 0;
}

bool NBMemoryIter::Add(const MCCommon::Record& record) {
    if (fCount >= fCapacity) return false;
    const auto position = static_cast<std::size_t>(fCount);
    if (position < fvBuffer.size()) {
        fvBuffer[position] = record;
    } else {
        fvBuffer.push_back(record);  // a restored store has memory for its records only
    }
    ++fCount;
    if (fIndCurRecord < fCount) fStatus = MCCommon::kITER_SUCCESS;
    return true;
}

bool NBMemoryIter::HasMore() { return fStatus == MCCommon::kITER_SUCCESS; }

const MCCommon::Record* NBMemoryIter::Next() {
    if (fStatus != MCCommon::kITER_SUCCESS) return nullptr;
    const MCCommon::Record* const record = &fvBuffer[static_cast<std::size_t>(fIndCurRecord)];
    ++fIndCurRecord;
    if (fIndCurRecord >= fCount) fStatus = MCCommon::kITER_NO_VALID_CASE;
    return record;
}

std::int32_t NBMemoryIter::NewPass() {
    fIndCurRecord = 0;
    if (fCount > 0 && fStatus != MCCommon::kITER_ERROR) fStatus = MCCommon::kITER_SUCCESS;
    return fStatus;
}

void NBMemoryIter::Skip(std::int32_t n) {
    if (n < 1) return;
    if (n < fCount - fIndCurRecord) {
        fIndCurRecord += n;
        return;
    }
    fIndCurRecord = fCount;
    fStatus = MCCommon::kITER_NO_VALID_CASE;
}

template <class Self, class Archive>
void NBMemoryIter::Fields(Self&& self, Archive& archive) {
    archive(kSaved, self.fRecordSize, self.fCapacity, self.fCount, self.fIndCurRecord, self.fStatus,
            Persistence::Check{[&self] { return self.HoldsTogether(); }},
            Rows{self.fCount, self.fRecordSize, self.fvBuffer});
}

bool NBMemoryIter::HoldsTogether() const {
    // Records without values would take memory for which nothing arrived.
    if (fRecordSize < 0 || (fRecordSize == 0 && fCount > 0)) return false;
    if (fCount < 0 || fCount > fCapacity) return false;
    if (fIndCurRecord < 0 || fIndCurRecord > fCount) return false;
    return fStatus != MCCommon::kITER_SUCCESS || fIndCurRecord < fCount;
}

std::int64_t NBMemoryIter::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBMemoryIter::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBMemoryIter::RestoreBinary(std::istream& stream) {
    return Restore([&stream](NBMemoryIter& self) {
        return Persistence::RestoreBinary<IOException>(self, stream);
    });
}

std::int64_t NBMemoryIter::RestoreXML(MCCommonXML::XMLReader& document) {
    return Restore([&document](NBMemoryIter& self) {
        return Persistence::RestoreXML<IOException>(self, document);
    });
}

template <class Read>
std::int64_t NBMemoryIter::Restore(Read read) {
    Clear(MCCommon::kITER_NO_VALID_CASE);
    try {
        return read(*this);
    } catch (const std::bad_alloc&) {
        Clear(MCCommon::kITER_ERROR);
        return 0;
    } catch (const IOException*) {
        Clear(MCCommon::kITER_NO_VALID_CASE);
        throw;
    }
}

void NBMemoryIter::Clear(std::int32_t status) {
    std::vector<MCCommon::Record>().swap(fvBuffer);
    fRecordSize = 0;
    fCapacity = 0;
    fCount = 0;
    fIndCurRecord = 0;
    fStatus = status;
}

void NBMemoryIter::Display(std::ostream& out) const {
    // The record that was given last: the one before the read position.
    const MCCommon::Record* const current =
        fIndCurRecord > 0 ? &fvBuffer[static_cast<std::size_t>(fIndCurRecord - 1)] : nullptr;
    out << "Start of NBMemoryIter display\n"
        << "fpBuffer = " << static_cast<const void*>(fvBuffer.data()) << '\n'
        << "fCapacity = " << fCapacity << '\n'
        << "fCount = " << fCount << '\n'
        << "fpCurRecord = " << static_cast<const void*>(current) << '\n'
        << "fIndCurRecord = " << fIndCurRecord << '\n'
        << "fStatus = " << fStatus << '\n';
    for (std::int32_t i = 0; i < fCount; ++i) {
        out << "Rec." << i << ':';
        const MCCommon::Record& record = fvBuffer[static_cast<std::size_t>(i)];
        for (std::int32_t j = 0; j < record.Size(); ++j) {
            if (record[j] == MCMV::gMissingValue) {
                out << " <missing>";
            } else {
                out << ' ' << record[j];
            }
        }
        out << '\n';
    }
    out << "End of NBMemoryIter display\n";
}

}  // namespace MCNaive
