#include <algorithm>

#include "host/Data.h"

void KOLT_ValueLabelMap::Set(KoltObs value, std::string label) {
    for (auto& [known, text] : fvEntries) {
        if (known == value) {
            text = std::move(label);
            return;
        }
    }
    fvEntries.emplace_back(std::move(value), std::move(label));
}

const std::string* KOLT_ValueLabelMap::Find(const KoltObs& value) const {
    for (const auto& [known, text] : fvEntries) {
        if (known == value) {
            return &text;
        }
    }
    return nullptr;
}

std::int32_t KOLT_Variable::GetMissingValues(std::vector<KoltObs>& valuesOut) const {
    valuesOut.clear();
    if (fMissing.fbRange) {
        valuesOut.emplace_back(fMissing.fLow);
        valuesOut.emplace_back(fMissing.fHigh);
    }
    valuesOut.insert(valuesOut.end(), fMissing.fvDiscrete.begin(), fMissing.fvDiscrete.end());
    const auto count = static_cast<std::int32_t>(valuesOut.size());
    return fMissing.fbRange ? -count : count;
}

bool KOLT_Variable::IsUserMissing(const KoltObs& value) const {
    if (fMissing.fbRange) {
        const double* number = std::get_if<double>(&value);
        if (number != nullptr && *number >= fMissing.fLow && *number <= fMissing.fHigh) {
            return true;
        }
    }
    return std::find(fMissing.fvDiscrete.begin(), fMissing.fvDiscrete.end(), value) !=
           fMissing.fvDiscrete.end();
}

void KOLT_Variable::SetValueLabel(KoltObs value, std::string label) {
    fLabels.Set(std::move(value), std::move(label));
}
