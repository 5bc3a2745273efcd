#ifndef PREDSEL_NAIVEBAYES_TESTS_SAVEDFORMS_H
#define PREDSEL_NAIVEBAYES_TESTS_SAVEDFORMS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "host/Xml.h"
#include "naivebayes/IOException.h"

// Saved forms of the engine's objects as strings, and how their restores end.

namespace savedforms {

template <class T>
std::string Binary(const T& object) {
    std::ostringstream stream;
    const auto count = object.SaveBinary(stream);
    EXPECT_EQ(count, static_cast<std::int64_t>(stream.str().size()));
    return stream.str();
}

template <class T>
std::string XML(const T& object) {
    std::ostringstream stream;
    const auto count = object.SaveXML(stream, 0);
    const std::string text = stream.str();
    std::int64_t elements = 0;
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos; ++at) {
        if (text[at + 1] != '/') ++elements;
    }
    EXPECT_EQ(count, elements);
    return text;
}

template <class T>
bool FromBinary(T& object, const std::string& bytes) {
    std::istringstream stream(bytes);
    try {
        object.RestoreBinary(stream);
        return true;
    } catch (const MCNaive::IOException* exception) {
        delete exception;
        return false;
    }
}

template <class T>
bool FromXML(T& object, const std::string& text) {
    std::istringstream stream(text);
    MCCommonXML::XMLReader document(stream);
    try {
        object.RestoreXML(document);
        return true;
    } catch (const MCNaive::IOException* exception) {
        delete exception;
        return false;
    }
}

/// The bytes cannot be restored, and this line says so.
template <class T>
void ExpectBinaryFails(T& object, const std::string& bytes, const std::string& line) {
    testing::internal::CaptureStderr();
    const bool isRestored = FromBinary(object, bytes);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line);
    EXPECT_FALSE(isRestored);
}

template <class T>
void ExpectXMLFails(T& object, const std::string& text, const std::string& line) {
    testing::internal::CaptureStderr();
    const bool isRestored = FromXML(object, text);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line);
    EXPECT_FALSE(isRestored);
}

template <class Number>
std::string Bytes(Number number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

/// The bytes with the number in the place of those at the offset.
template <class Number>
std::string With(std::string bytes, std::size_t offset, Number number) {
    return bytes.replace(offset, sizeof number, Bytes(number));
}

/// The text with one piece, which it must hold, replaced.
inline std::string Replaced(std::string text, const std::string& piece,
                            const std::string& replacement) {
    const std::size_t at = text.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    return at == std::string::npos ? text : text.replace(at, piece.size(), replacement);
}

template <class T>
std::string Displayed(const T& object) {
    std::ostringstream out;
    object.Display(out);
    return out.str();
}

}  // namespace savedforms

#endif  // PREDSEL_NAIVEBAYES_TESTS_SAVEDFORMS_H
