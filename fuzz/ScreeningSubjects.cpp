#include "featureselect/tests/SavedStates.h"
#include "fuzz/RestoreSubjects.h"

namespace fuzz {

std::vector<testsupport::RestoreSubject> ScreeningSubjects() {
    std::vector<testsupport::RestoreSubject> subjects;
    for (const auto& state : savedstates::AllStates()) {
        subjects.push_back({state.FileName(), state.fSaved,
                            [use = state.fUse](const std::string& bytes) { use(bytes); },
                            state.fbXML});
    }
    // States before the ranking can be merged, and a continuous target has accumulators of its own.
    for (const bool categorical : {true, false}) {
        const auto states = savedstates::AllStates();
        for (const auto& state : states) {
            if (state.fClass != "FSAlgorithm") continue;
            const std::string saved = savedstates::AccumulatedEngine(categorical);
            subjects.push_back({state.FileName() + (categorical ? " before ranking" : " for t"),
                                state.fbXML ? savedstates::EngineAsXML(saved) : saved,
                                [use = state.fUse](const std::string& bytes) { use(bytes); },
                                state.fbXML});
        }
    }
    return subjects;
}

}  // namespace fuzz
