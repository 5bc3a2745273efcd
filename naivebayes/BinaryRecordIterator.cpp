#include "naivebayes/BinaryRecordIterator.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

namespace MCNaive {

BinaryRecordIterator::BinaryRecordIterator(std::FILE* file, std::string path,
                                           std::int32_t recordSize)
    : fCurrent(std::max(recordSize, 0)),
      fNext(std::max(recordSize, 0)),
      fpFile(file),
      fPath(std::move(path)),
      fRecordSize(recordSize) {
    if (fpFile == nullptr) {
        std::cout << "Error: file handle is NULL in BinaryRecordIterator constructor\n";
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    ReadAhead();
}

BinaryRecordIterator::~BinaryRecordIterator() {
    if (fpFile == nullptr) return;
    fpFile.reset();  // not every system removes a file that is open
    std::error_code ignored;
    std::filesystem::remove(fPath, ignored);
}

bool BinaryRecordIterator::HasMore() { return fStatus == MCCommon::kITER_SUCCESS; }

const MCCommon::Record* BinaryRecordIterator::Next() {
    if (fStatus != MCCommon::kITER_SUCCESS) return nullptr;
    ReadAhead();
    return &fCurrent;
}

std::int32_t BinaryRecordIterator::NewPass() {
    if (fStatus == MCCommon::kITER_NO_NEW_PASS || fpFile == nullptr) return fStatus;
    if (std::fseek(fpFile.get(), 0, SEEK_SET) != 0) {
        fStatus = MCCommon::kITER_ERROR;
        return fStatus;
    }
    std::clearerr(fpFile.get());  // a read that failed once may be repeated
    fStatus = MCCommon::kITER_SUCCESS;
    ReadAhead();
    return fStatus;
}

void BinaryRecordIterator::ReadAhead() {
    // fNext gets the old record's memory, which the read below fills.
    std::swap(fCurrent, fNext);
    if (fStatus != MCCommon::kITER_SUCCESS) return;
    if (fRecordSize < 1) {
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    // In bytes, so that a file that ends within a value is told from one that ends with it.
    const std::size_t wanted = static_cast<std::size_t>(fRecordSize) * sizeof(double);
    const std::size_t got = std::fread(&fNext[0], 1, wanted, fpFile.get());
    if (got == wanted) return;
    fStatus = got == 0 && std::feof(fpFile.get()) != 0 ? MCCommon::kITER_NO_VALID_CASE
                                                       : MCCommon::kITER_ERROR;
}

}  // namespace MCNaive
