#ifndef PREDSEL_EMBEDDED_DATA_TEXTDECODING_H
#define PREDSEL_EMBEDDED_DATA_TEXTDECODING_H

#include <functional>
#include <string>
#include <string_view>

#include "embedded/data/OpenOptions.h"

namespace embedded {

/// A text in UTF-8, whatever encoding it came in.
class DecodedText {
 public:
    /// Borrows the bytes. A byte order mark decides and is taken away; without one the encoding is
    /// UTF-16 if every other byte of a good part is zero, else UTF-8 if the text is that throughout
    /// or has more characters beyond ASCII that are well-formed than bytes that are not, else
    /// Windows-1252. What cannot be decoded is left as bytes that are no UTF-8 either, so that it
    /// is counted where it ends up.
    DecodedText(std::string_view bytes, TextEncoding encoding)
        : DecodedText(bytes, encoding, [](std::string_view) { return false; }) {}
    /// isUtf8: whether the text (without its mark) is known to be UTF-8 throughout; asked where
    /// that would settle the encoding.
    DecodedText(std::string_view bytes, TextEncoding encoding,
                const std::function<bool(std::string_view)>& isUtf8);

    DecodedText(const DecodedText&) = delete;
    DecodedText& operator=(const DecodedText&) = delete;

    std::string_view Get() const { return fText; }
    /// The encoding it was read in: kUtf8, kUtf16 or kLatin1.
    TextEncoding Encoding() const { return fEncoding; }

 private:
    std::string fConverted;
    std::string_view fText;
    TextEncoding fEncoding;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TEXTDECODING_H
