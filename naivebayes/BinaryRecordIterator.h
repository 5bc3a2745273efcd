#ifndef PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H
#define PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "host/Records.h"

namespace MCNaive {

/// Prepared records in a temporary file: doubles as they stand in memory, one record behind the
/// other, no header. Reads one record ahead. The file goes when the iterator goes.
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
    void ReadAhead();

    MCCommon::Record fCurrent;
    MCCommon::Record fNext;
    std::unique_ptr<std::FILE, FileCloser> fpFile;  // null only when none was given
    std::string fPath;
    std::int32_t fRecordSize;  // doubles
    std::int32_t fStatus = MCCommon::kITER_SUCCESS;
};

}  // namespace MCNaive

#endif  // PREDSEL_NAIVEBAYES_BINARYRECORDITERATOR_H
