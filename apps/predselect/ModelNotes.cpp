#include "apps/predselect/ModelNotes.h"

#include <fmt/format.h>

#include <iostream>

#include "apps/predselect/ProgramError.h"

namespace app {

embedded::LayoutRecords ReadByLayout(const embedded::DataSet& data,
                                     const embedded::RecordLayout& layout,
                                     const embedded::LayoutRecordsOptions& options,
                                     const std::string& dataPath) {
    try {
        return {data, layout, options};
    } catch (const embedded::DataError& error) {
        throw ProgramError(kCommandFailed, dataPath + ": " + error.what());
    }
}

void TellUnknownValues(const embedded::LayoutRecords& records,
                       const embedded::RecordLayout& layout) {
    for (std::size_t i = 0; i < layout.fvColumns.size(); ++i) {
        const auto& unknown = records.UnknownValues()[i];
        if (unknown.fCount == 0) continue;
        std::cerr << fmt::format(
            "predselect: note: in {} {} {} has a category first met here, the first in row {}; it "
            "counts as missing\n",
            unknown.fCount, unknown.fCount == 1 ? "case" : "cases", layout.fvColumns[i].fName,
            unknown.fFirstRow + 1);
    }
}

}  // namespace app
