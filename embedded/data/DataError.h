#ifndef PREDSEL_EMBEDDED_DATA_DATAERROR_H
#define PREDSEL_EMBEDDED_DATA_DATAERROR_H

#include <stdexcept>
#include <string>

namespace embedded {

/// A data file that cannot be used. what() is one line: what is wrong, where, how to mend it.
class DataError : public std::runtime_error {
 public:
    enum class Kind {
        kFile,     // cannot be opened or read
        kContent,  // can be read but is no data set in any supported form
        kSchema,   // the dictionary beside the data is faulty or contradicts them
        kOption    // an option of the caller's does not fit the data
    };
    DataError(Kind kind, const std::string& message) : std::runtime_error(message), fKind(kind) {}
    Kind GetKind() const { return fKind; }

 private:
    Kind fKind;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DATAERROR_H
