#include "naivebayes/data/INBVariable.h"

namespace NBRole {

std::string Text(std::int32_t role) {
    switch (role) {
        case kNone:
            return "Undefined variable role";
        case kInput:
            return "Input";
        case kPossibleInput:
            return "Possible Input";
        case kTarget:
            return "Output";
        case kWeight:
            return "Frequency weight";
        case kUnused:
            return "Unused variable";
        default:
            return "Variable role " + std::to_string(role);
    }
}

}  // namespace NBRole

namespace NBMeasureLevel {

std::string Text(std::int32_t level) {
    switch (level) {
        case kUnknown:
            return "Unknown measure level";
        case kContinuous:
            return "Continuous";
        case kNumericCat:
            return "Numeric Categorical";
        case kStringCat:
            return "String Categorical";
        case kWeight:
            return "Frequency weight";
        default:
            return "Measure level " + std::to_string(level);
    }
}

}  // namespace NBMeasureLevel
