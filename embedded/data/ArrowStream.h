#ifndef PREDSEL_EMBEDDED_DATA_ARROWSTREAM_H
#define PREDSEL_EMBEDDED_DATA_ARROWSTREAM_H

#include <string>
#include <utility>

#include "embedded/data/ArrowCData.h"
#include "embedded/data/DataError.h"

namespace embedded {

/// Owner of one structure of the Arrow C interfaces: releases it once.
template <class Structure>
class ArrowOwner {
 public:
    ArrowOwner() = default;
    ~ArrowOwner() { Release(); }
    ArrowOwner(ArrowOwner&& other) noexcept
        : fStructure(std::exchange(other.fStructure, Structure{})) {}
    ArrowOwner& operator=(ArrowOwner&& other) noexcept {
        if (this != &other) {
            Release();
            fStructure = std::exchange(other.fStructure, Structure{});
        }
        return *this;
    }

    /// Empty, to be filled by a producer.
    Structure* Out() {
        Release();
        return &fStructure;
    }
    const Structure& Get() const { return fStructure; }
    bool IsReleased() const { return fStructure.release == nullptr; }

 private:
    void Release() {
        if (fStructure.release != nullptr) {
            fStructure.release(&fStructure);
            fStructure = Structure{};
        }
    }
    Structure fStructure{};
};

using OwnedArrowSchema = ArrowOwner<ArrowSchema>;
using OwnedArrowArray = ArrowOwner<ArrowArray>;

/// A stream of record batches.
class ArrowStream {
 public:
    /// name stands for the source in messages.
    explicit ArrowStream(std::string name) : fName(std::move(name)) {}
    /// Takes the stream over: the producer's structure is left released.
    ArrowStream(ArrowArrayStream& stream, std::string name) : fName(std::move(name)) {
        *Out() = std::exchange(stream, ArrowArrayStream{});
    }

    /// Empty, to be filled by a producer.
    ArrowArrayStream* Out() { return fStream.Out(); }

    /// The schema of all batches: a struct. Throws DataError.
    OwnedArrowSchema Schema() const;
    /// The next batch; false at the end. Throws DataError when the source is faulty.
    bool Next(OwnedArrowArray& batch) const;

 private:
    [[noreturn]] void Fail() const;
    // The C interface takes the stream as changeable in every call.
    ArrowArrayStream* Raw() const { return const_cast<ArrowArrayStream*>(&fStream.Get()); }

    ArrowOwner<ArrowArrayStream> fStream;
    std::string fName;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_ARROWSTREAM_H
