#include "naivebayes/NBOutput.h"

#include <ostream>

#include "persistence/Display.h"

void NBOutput::SetResult(const std::vector<double>& values, std::int32_t winner) {
    fNumUnits = static_cast<std::int32_t>(values.size());
    fValues = values;
    fWinner = winner;
    fMaxValue = values[static_cast<std::size_t>(winner)];
}

void NBOutput::Display(std::ostream& out) const {
    out << "Start of NBOutput display\nNumber of units = " << fNumUnits << '\n';
    Persistence::DisplayVector(out, "Unit values", fValues);
    out << "Maximum value = ";
    Persistence::DisplayValue(out, fMaxValue);
    out << "\nIndex of winner ";
    if (fWinner < 0) {
        out << "is undefined";
    } else {
        out << "= " << fWinner;
    }
    out << "\nEnd of NBOutput display\n";
}
