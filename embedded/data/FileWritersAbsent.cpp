#include "embedded/data/DataError.h"
#include "embedded/data/FileWriters.h"

namespace embedded {
namespace {

[[noreturn]] void Refuse(const std::string& name, const std::string& format) {
    throw DataError(DataError::Kind::kFile,
                    name + ": this program was built without Apache Arrow and cannot write " +
                        format + "; build it with PREDSEL_ARROW=ON or write a .csv file");
}

}  // namespace

void WriteParquet(const ArrowColumns& /*columns*/, std::ostream& /*file*/, const std::string& name,
                  std::int32_t /*threads*/) {
    Refuse(name, "Parquet files");
}

void WriteIpcFile(ArrowArrayStream& stream, std::ostream& /*file*/, const std::string& name) {
    if (stream.release != nullptr) stream.release(&stream);
    Refuse(name, "Arrow files");
}

}  // namespace embedded
