#ifndef PREDSEL_EMBEDDED_DATA_SAVEDATASET_H
#define PREDSEL_EMBEDDED_DATA_SAVEDATASET_H

#include <cstdint>
#include <iosfwd>
#include <string>

#include "embedded/data/DataError.h"
#include "embedded/data/DataSet.h"

namespace embedded {

enum class SaveFormat {
    kCsv,
    kTsv,
    kParquet,
    kArrow  // an Arrow IPC file
};

/// The format of a file of that name: .csv, .tsv, .parquet, .arrow or .feather, in any case.
/// Throws DataError of kind kOption for every other.
SaveFormat SaveFormatOf(const std::string& path);

/// Writes all variables and cases. Numbers read back as the same doubles, whole ones have no point;
/// dates, times and booleans are written as such; system-missing is an empty cell or null;
/// user-missing values are values. Texts are quoted by RFC 4180 where they need it. What a file of
/// data cannot hold of the dictionary is in SchemaOf. One limit: in a text file of one string
/// variable a missing value is written as an empty string, as an empty line is no case.
/// name stands for the file in messages. Works on up to that many threads, below 1 as many as are
/// available; the bytes do not depend on it. Throws DataError of kind kFile.
void SaveDataSet(const DataSet& data, SaveFormat format, std::ostream& file,
                 const std::string& name, std::int32_t threads = 0);
/// The same into a file at that path, which is replaced.
void SaveDataSet(const DataSet& data, SaveFormat format, const std::string& path);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_SAVEDATASET_H
