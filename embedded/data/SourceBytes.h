#ifndef PREDSEL_EMBEDDED_DATA_SOURCEBYTES_H
#define PREDSEL_EMBEDDED_DATA_SOURCEBYTES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace embedded {

/// All bytes of a file: mapped when it is an ordinary file, else (a pipe, standard input) read into
/// memory. A mapped file must not be cut short while it is in use.
class SourceBytes {
 public:
    /// "-" is standard input. Throws DataError of kind kFile.
    explicit SourceBytes(const std::string& path);
    ~SourceBytes();
    SourceBytes(const SourceBytes&) = delete;
    SourceBytes& operator=(const SourceBytes&) = delete;

    std::string_view Get() const {
        return fpMapped != nullptr ? std::string_view(static_cast<const char*>(fpMapped), fSize)
                                   : std::string_view(fRead);
    }
    /// Says that a part of Get(), or what is no part of it, is not needed for now: the memory of a
    /// mapped file goes back, and is read again from the file when it is touched. Any thread.
    void GiveBack(std::string_view part) const;

 private:
    void* fpMapped = nullptr;
    std::size_t fSize = 0;
    std::string fRead;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_SOURCEBYTES_H
