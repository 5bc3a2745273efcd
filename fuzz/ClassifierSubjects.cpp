#include "fuzz/RestoreSubjects.h"
#include "naivebayes/tests/SavedModels.h"

namespace fuzz {

std::vector<testsupport::RestoreSubject> ClassifierSubjects() {
    return {{"NBAlgorithm.bin", savedmodels::SmallModelBinary(), savedmodels::UseBinary},
            {"NBAlgorithm.xml", savedmodels::SmallModelXML(), savedmodels::UseXML, true}};
}

}  // namespace fuzz
