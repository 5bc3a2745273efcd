#ifndef PREDSEL_HOST_ASSERTION_H
#define PREDSEL_HOST_ASSERTION_H

#include <cstdio>
#include <cstdlib>

/// Prints the text on the standard error stream and aborts.
[[noreturn]] inline void AssertionFailed(const char* text) {
    std::fprintf(stderr, "Assertion failed: %s\n", text);
    std::abort();
}

/// Stops the process with the text when the condition is false, in release builds too: going on
/// with state that contradicts itself would report wrong numbers. For mistakes in our own code
/// only, never for what data or a command may hold.
#define PREDSEL_ASSERT(condition, text) ((condition) ? static_cast<void>(0) : AssertionFailed(text))

#endif  // PREDSEL_HOST_ASSERTION_H
