#ifndef PREDSEL_NAIVEBAYES_NBMEMORYITER_H
#define PREDSEL_NAIVEBAYES_NBMEMORYITER_H

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "host/Records.h"
#include "host/Xml.h"

namespace MCNaive {

/// Prepared records in memory, to be read any number of times. Filled by NBDataPreparator where the
/// settings let all records stay in memory; BinaryRecordIterator serves where they do not.
class NBMemoryIter : public MCCommon::MultiPassRecordIter {
 public:
    /// An empty store without capacity, as a restore needs it.
    NBMemoryIter() = default;
    /// Takes the memory for capacity records of recordSize doubles at once. Fail reason 3 when that
    /// cannot be had; the store then keeps nothing.
    NBMemoryIter(std::int32_t recordSize, std::int32_t capacity);

    /// Keeps a copy of a record. False when the store is full. REQUIRES: a record of the store's
    /// size.
    bool Add(const MCCommon::Record& record);

    bool HasMore() override;
    /// The record stays valid until the store is restored, added to or destroyed.
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override { return fStatus; }
    std::int32_t NewPass() override;
    /// Passes over records, as many as there are at most. n below 1 moves nothing.
    void Skip(std::int32_t n);

    std::int32_t GetCount() const { return fCount; }
    std::int32_t GetCapacity() const { return fCapacity; }

    /// 23 bytes and 8 a value.
    virtual std::int64_t SaveBinary(std::ostream& stream) const;
    /// Replaces what the store holds. Throws a pointer to an IOException; the store is then empty.
    /// When there is no memory for the records the store is empty with fail reason 3. The capacity
    /// is kept as a number: memory beyond the records that arrived is taken by Add.
    virtual std::int64_t RestoreBinary(std::istream& stream);
    virtual std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    virtual std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive);

 private:
    /// Whether the numbers that were restored agree with each other.
    bool HoldsTogether() const;
    /// Lets everything go.
    void Clear(std::int32_t status);
    template <class Read>
    std::int64_t Restore(Read read);

    std::int32_t fRecordSize = 0;            // doubles a record; 0 without capacity
    std::vector<MCCommon::Record> fvBuffer;  // the first fCount hold records
    std::int32_t fCapacity = 0;              // records
    std::int32_t fCount = 0;                 // records stored
    std::int32_t fIndCurRecord = 0;          // the record that Next gives
    std::int32_t fStatus = MCCommon::kITER_NO_VALID_CASE;
};

}  // namespace MCNaive

#endif  // PREDSEL_NAIVEBAYES_NBMEMORYITER_H
