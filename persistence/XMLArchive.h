#ifndef PREDSEL_PERSISTENCE_XMLARCHIVE_H
#define PREDSEL_PERSISTENCE_XMLARCHIVE_H

// The XML form of saved objects: an object is an Obj element with its name, and its items are
// sub-elements in the order of the binary form, without tags. A bool is an Int, an unsigned number
// a Long.

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "host/Xml.h"
#include "persistence/Fields.h"

namespace Persistence {

/// Writes objects to a stream. Errors show in the stream's state.
class XMLWriter : public FieldWalker<XMLWriter, false, true> {
 public:
    /// level: how deep the first object lies under the root; indents only.
    XMLWriter(std::ostream& stream, std::int32_t level) : fStream(stream), fLevel(level) {}

    /// Elements written so far, objects and values.
    std::int64_t Count() const { return fCount; }

    void Begin(const SavedClass& saved) {
        const std::int32_t level = fLevel + static_cast<std::int32_t>(fvOpen.size());
        fvOpen.emplace_back(saved.fName, std::max(level, saved.fMinLevel));
        fvOpen.back().StartObj(fStream);
        ++fCount;
    }
    void End() {
        fvOpen.back().EndObj(fStream);
        fvOpen.pop_back();
    }
    void Scalar(std::int32_t value) { Write(value); }
    void Scalar(std::uint32_t value) { Write(static_cast<std::int64_t>(value)); }
    void Scalar(double value) { Write(value); }
    void Text(const std::string& text) { Write(std::string_view(text)); }
    void Skip(std::int32_t) {}

 private:
    template <class T>
    void Write(T value) {
        fvOpen.back().WriteSubElement(fStream, value);
        ++fCount;
    }

    std::ostream& fStream;
    std::int32_t fLevel;
    std::int64_t fCount = 0;
    std::vector<MCCommonXML::XMLObj> fvOpen;
};

/// Reads objects of a document; fails as BinaryReader does, with the lines for XML.
template <class Exception>
class XMLArchiveReader : public FieldWalker<XMLArchiveReader<Exception>, true, true> {
 public:
    /// Borrowed: one reader serves all objects of a document.
    explicit XMLArchiveReader(MCCommonXML::XMLReader& document) : fDocument(document) {}

    /// Elements read so far, objects and values.
    std::int64_t Count() const { return fCount; }

    void Begin(const SavedClass& saved) {
        if (!TryBegin(saved))
            throw new Exception;  // NOLINT(misc-throw-by-value-catch-by-reference)
    }
    /// As BinaryReader::TryBegin.
    bool TryBegin(const SavedClass& saved) {
        if (!fDocument.ParseStartObj(saved.fName)) {
            PrintLine(saved);
            return false;
        }
        fvpOpen.push_back(&saved);
        ++fCount;
        return true;
    }
    void End() {
        this->Require(fDocument.ParseEndObj());
        fvpOpen.pop_back();
    }
    void Scalar(std::int32_t& value) { Parse(value); }
    void Scalar(double& value) { Parse(value); }
    void Scalar(std::uint32_t& value) {
        std::int64_t number = 0;
        Parse(number);
        this->Require(number >= 0 && number <= UINT32_MAX);
        value = static_cast<std::uint32_t>(number);
    }
    void Text(std::string& text) { Parse(text); }
    void Skip(std::int32_t) {}

    [[noreturn]] void Fail() {
        if (!fvpOpen.empty()) PrintLine(*fvpOpen.back());
        throw new Exception;  // NOLINT(misc-throw-by-value-catch-by-reference): the scheme's way
    }

 private:
    static void PrintLine(const SavedClass& saved) {
        (saved.fbXMLFailureOnOutput ? std::cout : std::cerr) << saved.FailureLine(true);
    }

    template <class T>
    void Parse(T& value) {
        this->Require(fDocument.ParseValue(value));
        ++fCount;
    }

    MCCommonXML::XMLReader& fDocument;
    std::int64_t fCount = 0;
    std::vector<const SavedClass*> fvpOpen;  // static objects, the innermost last
};

/// Saves an object; the number of elements written.
template <class T>
std::int64_t SaveXML(const T& object, std::ostream& stream, std::int32_t level) {
    XMLWriter writer(stream, level);
    writer.Items(object);
    return writer.Count();
}

/// Fills an object that was made empty; the number of elements read. Throws a pointer to an
/// Exception.
template <class Exception, class T>
std::int64_t RestoreXML(T& object, MCCommonXML::XMLReader& document) {
    XMLArchiveReader<Exception> reader(document);
    reader.Items(object);
    return reader.Count();
}

}  // namespace Persistence

#endif  // PREDSEL_PERSISTENCE_XMLARCHIVE_H
