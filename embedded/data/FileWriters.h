#ifndef PREDSEL_EMBEDDED_DATA_FILEWRITERS_H
#define PREDSEL_EMBEDDED_DATA_FILEWRITERS_H

#include <iosfwd>
#include <string>

#include "embedded/data/ArrowCData.h"

namespace embedded {

// What the component over Apache Arrow writes: all batches of the stream, which is released in any
// case. Both throw DataError; a build without Arrow has this in place of every writer. name stands
// for the file in messages.

void WriteParquet(ArrowArrayStream& stream, std::ostream& file, const std::string& name);
/// An Arrow IPC file.
void WriteIpcFile(ArrowArrayStream& stream, std::ostream& file, const std::string& name);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_FILEWRITERS_H
