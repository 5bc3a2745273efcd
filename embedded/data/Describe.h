#ifndef PREDSEL_EMBEDDED_DATA_DESCRIBE_H
#define PREDSEL_EMBEDDED_DATA_DESCRIBE_H

#include <cstdint>
#include <string>

#include "embedded/data/DataSet.h"

namespace embedded {

/// The dictionary as it was understood, as a table with notes below it. width in terminal columns;
/// texts that do not fit are wrapped or, when a word is too long, cut with an ellipsis.
std::string DescribeAsText(const DataSet& data, std::int32_t width);

/// The same as a JSON object, indented: source, rows, weight, split, variables, notes.
std::string DescribeAsJson(const DataSet& data);

/// A Table Schema (JSON, indented) that describes the data set; opening the same data with it gives
/// the same dictionary. Properties of the schema that came with the data and that have no meaning
/// here are kept.
std::string DraftSchema(const DataSet& data);

/// The same for the data set as SaveDataSet writes it: what the schema that came with the data says
/// of the form of its cells (decimal marks, texts of booleans, texts without a value) is left out,
/// and so are fields of no variable.
std::string SchemaOf(const DataSet& data);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DESCRIBE_H
