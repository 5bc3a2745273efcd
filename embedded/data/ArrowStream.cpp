#include "embedded/data/ArrowStream.h"

#include <algorithm>

namespace embedded {

void ArrowStream::Fail() const {
    const char* reason = Raw()->get_last_error(Raw());
    std::string text = reason == nullptr ? "the source gives no reason" : reason;
    text.erase(std::min(text.find('\n'), text.size()));
    throw DataError(DataError::Kind::kContent, fName + ": cannot be read: " + text);
}

OwnedArrowSchema ArrowStream::Schema() const {
    OwnedArrowSchema schema;
    if (Raw()->get_schema(Raw(), schema.Out()) != 0) {
        Fail();
    }
    return schema;
}

bool ArrowStream::Next(OwnedArrowArray& batch) const {
    if (Raw()->get_next(Raw(), batch.Out()) != 0) {
        Fail();
    }
    return !batch.IsReleased();
}

}  // namespace embedded
