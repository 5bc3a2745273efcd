#include "apps/predselect/ModelNotes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Terminal.h"

namespace app {

void CheckStandardInput(const std::vector<std::string>& paths) {
    if (std::count(paths.begin(), paths.end(), "-") < 2) return;
    throw ProgramError(kWrongUse,
                       "standard input cannot give two of the inputs; put one of them in a file");
}

embedded::LayoutRecords ReadByLayout(const embedded::DataSet& data,
                                     const embedded::RecordLayout& layout,
                                     const embedded::LayoutRecordsOptions& options) {
    try {
        return {data, layout, options};
    } catch (const embedded::DataError& error) {
        throw ProgramError(kCommandFailed, OneLine(error.what()));
    }
}

std::string CasesText(std::int64_t count) {
    return fmt::format("{} {}", count, count == 1 ? "case" : "cases");
}

void TellUnknownValues(const embedded::LayoutRecords& records,
                       const embedded::RecordLayout& layout) {
    for (std::size_t i = 0; i < layout.fvColumns.size(); ++i) {
        const auto& unknown = records.UnknownValues()[i];
        if (unknown.fCount == 0) continue;
        std::cerr << fmt::format(
            "predselect: note: in {} {} has a category first met here, the first in row {}; it "
            "counts as missing\n",
            CasesText(unknown.fCount), OneLine(layout.fvColumns[i].fName), unknown.fFirstRow + 1);
    }
}

}  // namespace app
