// fuzz_restore [INPUTS [SEED [NAME]]]: gives every reader of saved states INPUTS damaged states in
// all (1,000,000 unless told), or only the readers whose name begins with NAME. The seed is
// printed; the same one gives the same inputs. Ends with 1 at the first that is neither refused nor
// usable.

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/RestoreSubjects.h"
#include "tests/support/AllocationCounter.inc"

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const std::int64_t inputs = arguments.empty() ? 1000000 : std::stoll(arguments[0]);
        const std::uint64_t seed =
            arguments.size() > 1 ? std::stoull(arguments[1]) : std::random_device{}();
        const std::string name = arguments.size() > 2 ? arguments[2] : std::string();

        std::vector<testsupport::RestoreSubject> subjects;
        for (auto& subject : fuzz::AllRestoreSubjects()) {
            if (subject.fName.starts_with(name)) subjects.push_back(std::move(subject));
        }
        if (subjects.empty() || inputs < 1) {
            std::cerr << "nothing to do\n";
            return EXIT_FAILURE;
        }
        std::cout << "seed " << seed << ", memory is "
                  << (testsupport::MemoryIsChecked() ? "" : "not ") << "checked\n";
        const auto readers = static_cast<std::int64_t>(subjects.size());
        std::int64_t done = 0;
        for (std::int64_t reader = 0; reader < readers; ++reader) {
            const auto& subject = subjects[static_cast<std::size_t>(reader)];
            const std::int64_t share = inputs / readers + (reader < inputs % readers ? 1 : 0);
            testsupport::RestoreAbuse abuse;
            abuse.Try(subject, subject.fSaved);
            abuse.Fuzz(subject, share, seed + static_cast<std::uint64_t>(reader));
            done += share;
            std::cout << subject.fName << ": " << share << " inputs from " << subject.fSaved.size()
                      << " bytes\n";
        }
        std::cout << done << " inputs, all refused or usable\n";
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
