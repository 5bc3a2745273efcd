// fuzz_restore [INPUTS [SEED [NAME]]]: gives every reader of saved states INPUTS damaged states in
// all (1,000,000 unless told), or only the readers whose name begins with NAME. The seed is
// printed; the same one gives the same inputs.
// fuzz_restore all [NAME]: gives them every truncation and every value of every byte.
// Ends with 1 at the first that is neither refused nor usable.

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/RestoreSubjects.h"
#include "tests/support/AllocationCounter.inc"

namespace {

using Subjects = std::vector<testsupport::RestoreSubject>;

Subjects SubjectsNamed(const std::string& start) {
    Subjects subjects;
    for (auto& subject : fuzz::AllRestoreSubjects()) {
        if (subject.fName.starts_with(start)) subjects.push_back(std::move(subject));
    }
    if (subjects.empty()) throw std::invalid_argument("no reader begins with " + start);
    std::cout << "memory is " << (testsupport::MemoryIsChecked() ? "" : "not ") << "checked\n";
    return subjects;
}

std::int64_t Report(const testsupport::RestoreSubject& subject,
                    const testsupport::RestoreAbuse& abuse) {
    std::cout << subject.fName << ": " << abuse.Count() << " inputs from " << subject.fSaved.size()
              << " bytes" << std::endl;
    return abuse.Count();
}

std::int64_t DamageAtRandom(const Subjects& subjects, std::int64_t inputs, std::uint64_t seed) {
    std::cout << "seed " << seed << '\n';
    const auto readers = static_cast<std::int64_t>(subjects.size());
    std::int64_t done = 0;
    for (std::int64_t reader = 0; reader < readers; ++reader) {
        const auto& subject = subjects[static_cast<std::size_t>(reader)];
        const std::int64_t share = inputs / readers + (reader < inputs % readers ? 1 : 0);
        testsupport::RestoreAbuse abuse;
        abuse.Fuzz(subject, share, seed + static_cast<std::uint64_t>(reader));
        done += Report(subject, abuse);
    }
    return done;
}

std::int64_t DamageEveryByte(const Subjects& subjects) {
    std::int64_t done = 0;
    for (const auto& subject : subjects) {
        testsupport::RestoreAbuse abuse;
        abuse.Truncate(subject);
        abuse.ChangeEveryByte(subject);
        done += Report(subject, abuse);
    }
    return done;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const auto argument = [&](std::size_t at) {
            return at < arguments.size() ? arguments[at] : std::string();
        };
        std::int64_t done = 0;
        if (argument(0) == "all") {
            done = DamageEveryByte(SubjectsNamed(argument(1)));
        } else {
            const std::int64_t inputs = arguments.empty() ? 1000000 : std::stoll(argument(0));
            const std::uint64_t seed =
                arguments.size() > 1 ? std::stoull(argument(1)) : std::random_device{}();
            done = DamageAtRandom(SubjectsNamed(argument(2)), inputs, seed);
        }
        std::cout << done << " inputs, all refused or usable\n";
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
