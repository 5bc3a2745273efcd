#include "naivebayes/BinaryRecordIterator.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

namespace MCNaive {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 20;

}  // namespace

BinaryRecordIterator::BinaryRecordIterator(std::FILE* file, std::string path,
                                           std::int32_t recordSize)
    : fCurrent(std::max(recordSize, 0)),
      fpFile(file),
      fPath(std::move(path)),
      fRecordSize(recordSize) {
    if (fpFile == nullptr) {
        std::cout << "Error: file handle is NULL in BinaryRecordIterator constructor\n";
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    if (fRecordSize < 1) {
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    const auto size = static_cast<std::size_t>(fRecordSize);
    fvPiece.resize(std::max(kPieceBytes / sizeof(double) / size, std::size_t{1}) * size);
    ReadPiece();
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
    std::copy_n(fvPiece.data() + fNext, fRecordSize, &fCurrent[0]);
    fNext += static_cast<std::size_t>(fRecordSize);
    if (fNext == fEnd) ReadPiece();
    return &fCurrent;
}

std::int32_t BinaryRecordIterator::NewPass() {
    if (fStatus == MCCommon::kITER_NO_NEW_PASS || fvPiece.empty()) return fStatus;
    if (std::fseek(fpFile.get(), 0, SEEK_SET) != 0) {
        fStatus = MCCommon::kITER_ERROR;
        return fStatus;
    }
    std::clearerr(fpFile.get());  // a read that failed once may be repeated
    fStatus = MCCommon::kITER_SUCCESS;
    fbTorn = false;
    ReadPiece();
    return fStatus;
}

void BinaryRecordIterator::ReadPiece() {
    fNext = 0;
    fEnd = 0;
    if (fbTorn) {
        fStatus = MCCommon::kITER_ERROR;
        return;
    }
    // In bytes, so that a file that ends within a value is told from one that ends with it.
    const std::size_t recordBytes = static_cast<std::size_t>(fRecordSize) * sizeof(double);
    const std::size_t wanted = fvPiece.size() * sizeof(double);
    const std::size_t got = std::fread(fvPiece.data(), 1, wanted, fpFile.get());
    fEnd = got / recordBytes * static_cast<std::size_t>(fRecordSize);
    fbTorn = got % recordBytes != 0 || (got < wanted && std::feof(fpFile.get()) == 0);
    if (fEnd > 0) return;
    fStatus = fbTorn ? MCCommon::kITER_ERROR : MCCommon::kITER_NO_VALID_CASE;
}

}  // namespace MCNaive
