#ifndef PREDSEL_FUZZ_RESTORESUBJECTS_H
#define PREDSEL_FUZZ_RESTORESUBJECTS_H

#include <vector>

#include "tests/support/RestoreAbuse.h"

// What the drivers damage: for each engine, saved states of every class in both forms. An engine
// adds a function and a line to AllRestoreSubjects.

namespace fuzz {

/// The screening engine's (ScreeningSubjects.cpp).
std::vector<testsupport::RestoreSubject> ScreeningSubjects();
/// The classifier's (ClassifierSubjects.cpp).
std::vector<testsupport::RestoreSubject> ClassifierSubjects();

inline std::vector<testsupport::RestoreSubject> AllRestoreSubjects() {
    std::vector<testsupport::RestoreSubject> subjects;
    for (auto* engine : {ScreeningSubjects, ClassifierSubjects}) {
        for (auto& subject : engine()) subjects.push_back(std::move(subject));
    }
    return subjects;
}

}  // namespace fuzz

#endif  // PREDSEL_FUZZ_RESTORESUBJECTS_H
