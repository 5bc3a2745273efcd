#include "embedded/data/DataError.h"
#include "embedded/data/FileWriters.h"

namespace embedded {
namespace {

[[noreturn]] void Refuse(ArrowArrayStream& stream, const std::string& name,
                         const std::string& format) {
    if (stream.release != nullptr) stream.release(&stream);
    throw DataError(DataError::Kind::kFile,
                    name + ": this program was built without Apache Arrow and cannot write " +
                        format + "; build it with PREDSEL_ARROW=ON or write a .csv file");
}

}  // namespace

void WriteParquet(ArrowArrayStream& stream, std::ostream& /*file*/, const std::string& name) {
    Refuse(stream, name, "Parquet files");
}

void WriteIpcFile(ArrowArrayStream& stream, std::ostream& /*file*/, const std::string& name) {
    Refuse(stream, name, "Arrow files");
}

}  // namespace embedded
