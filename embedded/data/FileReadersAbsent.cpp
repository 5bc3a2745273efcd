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

std::unique_ptr<ParquetFile> ParquetFile::Open(std::string_view /*bytes*/, const std::string& name,
                                               const GiveBack& /*giveBack*/) {
    Refuse(name, "Parquet files");
}

ArrowStream ReadIpcFile(std::string_view /*bytes*/, const std::string& name) {
    Refuse(name, "Arrow files");
}

ArrowStream ReadIpcStream(std::string_view /*bytes*/, const std::string& name) {
    Refuse(name, "Arrow streams");
}

}  // namespace embedded
