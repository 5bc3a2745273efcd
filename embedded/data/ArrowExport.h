#ifndef PREDSEL_EMBEDDED_DATA_ARROWEXPORT_H
#define PREDSEL_EMBEDDED_DATA_ARROWEXPORT_H

#include <memory>

#include "embedded/data/ArrowCData.h"
#include "embedded/data/DataSet.h"
#include "embedded/data/FileWriters.h"

namespace embedded {

/// Gives the data set out as a stream of record batches of kChunkRows rows, system-missing values
/// as nulls. The data set must outlive the stream; a batch is valid until the next one is asked
/// for.
///
/// Strings are utf8 and booleans bool. Numbers are int64 when all are whole and shown without
/// decimals, else float64. Dates are date32, dates with times timestamps and times time64, in
/// microseconds when these hold every value exactly, else in nanoseconds when those do; a column
/// with values that no calendar type holds is float64.
void ExportDataSet(const DataSet& data, ArrowArrayStream& streamOut);
/// The same column by column. Borrows the data set.
std::unique_ptr<ArrowColumns> ExportColumns(const DataSet& data);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_ARROWEXPORT_H
