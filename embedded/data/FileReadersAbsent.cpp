#include "embedded/data/FileReaders.h"
#include "embedded/data/ParquetFile.h"

namespace embedded {
namespace {

[[noreturn]] void Refuse(const std::string& name, const std::string& format) {
    throw DataError(DataError::Kind::kFile,
                    name + ": this program was built without Apache Arrow and cannot read " +
                        format + "; build it with PREDSEL_ARROW=ON");
}

}  // namespace

std::unique_ptr<ParquetFile> ParquetFile::Open(std::string_view /*bytes*/, std::string name,
                                               GiveBack /*giveBack*/) {
    Refuse(name, "Parquet files");
}

ArrowStream ReadIpcFile(std::string_view /*bytes*/, const std::string& name) {
    Refuse(name, "Arrow files");
}

ArrowStream ReadIpcStream(std::string_view /*bytes*/, const std::string& name) {
    Refuse(name, "Arrow streams");
}

ArrowStream ReadCells(std::string_view /*text*/, const TextDialect& /*dialect*/,
                      std::int32_t /*columns*/, const std::vector<std::int32_t>& /*wanted*/,
                      std::int64_t /*longestRecord*/, std::int32_t /*blockBytes*/,
                      const std::string& name) {
    Refuse(name, "delimited text");
}

}  // namespace embedded
