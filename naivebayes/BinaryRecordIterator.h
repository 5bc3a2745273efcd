#ifndef PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H
#define PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "host/Records.h"

namespace MCNaive {

/// Prepared records in a temporary file: doubles as they stand in memory, one record behind the
/// other, no header. Reads large pieces, at least one record ahead. The file goes when the iterator
/// goes.
class BinaryRecordIterator : public MCCommon::MultiPassRecordIter {
 public:
    /// Takes over an open file, which stands on its first record, and its path. recordSize in
    /// doubles. A null file gives fail reason 3 and a line on standard output.
    BinaryRecordIterator(std::FILE* file, std::string path, std::int32_t recordSize);
    /// Closes and removes the file.
    ~BinaryRecordIterator() override;
    BinaryRecordIterator(const BinaryRecordIterator&) = delete;
    BinaryRecordIterator& operator=(const BinaryRecordIterator&) = delete;

    bool HasMore() override;
    const MCCommon::Record* Next() override;
    /// 1 at the end of the file, 3 when the file ends within a record or cannot be read. The
    /// records before that are delivered.
    std::int32_t GetFailReason() const override { return fStatus; }
    std::int32_t NewPass() override;

 private:
    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    /// Reads the next piece. Sets the status when there is no further record.
    void ReadPiece();

    MCCommon::Record fCurrent;
    std::vector<double> fvPiece;                    // whole records, from the file
    std::size_t fNext = 0;                          // in fvPiece: the record that comes next
    std::size_t fEnd = 0;                           // in fvPiece: behind the last record
    bool fbTorn = false;                            // the file ends within the record behind it
    std::unique_ptr<std::FILE, FileCloser> fpFile;  // null only when none was given
    std::string fPath;
    std::int32_t fRecordSize;  // doubles
    std::int32_t fStatus = MCCommon::kITER_SUCCESS;
};

}  // namespace MCNaive

#endif  // PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H
