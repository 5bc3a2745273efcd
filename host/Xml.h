#ifndef PREDSEL_HOST_XML_H
#define PREDSEL_HOST_XML_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// XML documents as the engines write and read them. Texts are UTF-8 on both sides; in texts that
/// go out, bytes and characters that XML cannot hold become U+FFFD. No locale has a say in numbers.
namespace MCCommonXML {

/// What stands for a missing double, in attributes and in saved values.
inline constexpr std::string_view kMissingText = "Missing";

/// An element with its attributes, child elements and texts, all in the order in which they were
/// added. Names are the caller's and must be valid.
class XMLElement {
 public:
    using Child = std::variant<std::unique_ptr<XMLElement>, std::string>;

    explicit XMLElement(std::string_view name) : fName(name) {}

    /// A name that the element has already gets the new value in its old place.
    void AddAttribute(std::string_view name, std::string_view value);
    /// As many digits as read back as the same double, without an exponent where a whole number has
    /// at most 15 digits; MCMV::gMissingValue is kMissingText.
    void AddAttribute(std::string_view name, double value);
    /// Both give the child, which this element owns.
    XMLElement& AddChild(std::string_view name);
    XMLElement& AddChild(std::unique_ptr<XMLElement> child);
    void AddText(std::string_view text);

    const std::string& Name() const { return fName; }
    const std::vector<std::pair<std::string, std::string>>& Attributes() const {
        return fvAttributes;
    }
    const std::vector<Child>& Children() const { return fvChildren; }

 private:
    std::string fName;
    std::vector<std::pair<std::string, std::string>> fvAttributes;
    std::vector<Child> fvChildren;
};

/// The document type: names the root and the DTD. The DTD is named only, nothing reads it.
class XMLDocType {
 public:
    static std::unique_ptr<XMLDocType> Create(std::string_view rootName, std::string_view dtdName);
    const std::string& RootName() const { return fRootName; }
    const std::string& DtdName() const { return fDtdName; }

 private:
    XMLDocType(std::string_view rootName, std::string_view dtdName)
        : fRootName(rootName), fDtdName(dtdName) {}
    std::string fRootName;
    std::string fDtdName;
};

/// Writes a whole document. docType null: none is written. indent: blanks a level; 0 puts the tree
/// on one line. Elements that hold text are never broken. Errors show in the stream's state.
void WriteTree(std::ostream& stream, const XMLDocType* docType, const XMLElement& root,
               std::int32_t indent);
/// The same for callers that ask for UTF-8 by name.
void WriteTreeUTF8(std::ostream& stream, const XMLDocType* docType, const XMLElement& root,
                   std::int32_t indent);

/// The frame of a document of saved objects: prolog, document type and the root's start, with the
/// copyright line as an attribute; then the root's end.
void StartRoot(std::ostream& stream, const XMLDocType& docType, std::string_view copyright);
void EndRoot(std::ostream& stream, const XMLDocType& docType);

/// Writes one saved object: its name, its values in order, objects inside it. Values are read back
/// by their order, so they have no names.
///
///     <Obj name="FSPredSort">
///      <Int value="4"/>
///      <Double value="Missing"/>
///     </Obj>
class XMLObj {
 public:
    /// level: how deep the object lies under the root, from 1; indents only.
    XMLObj(std::string_view name, std::int32_t level) : fName(name), fLevel(level) {}

    void StartObj(std::ostream& stream) const;
    void EndObj(std::ostream& stream) const;
    /// Elements Int, Long, Double and String. MCMV::gMissingValue is kMissingText.
    void WriteSubElement(std::ostream& stream, std::int32_t value) const;
    void WriteSubElement(std::ostream& stream, std::int64_t value) const;
    void WriteSubElement(std::ostream& stream, double value) const;
    void WriteSubElement(std::ostream& stream, std::string_view value) const;

 private:
    std::string fName;
    std::int32_t fLevel;
};

/// Longest document and deepest nesting that XMLReader takes.
inline constexpr std::size_t kMaxXMLBytes = std::size_t{1} << 28;
inline constexpr std::int32_t kMaxXMLDepth = 64;

/// Reads a document of saved objects, in the order in which it was written. Every operation is true
/// when the document has what was asked for next. The first that is not ends the reading: all later
/// ones are false and change nothing.
///
/// The text may come from anywhere. Nothing that it names is fetched; a document type other than
/// the one asked for, an internal subset, and undue length or depth make it unreadable. Memory is
/// in proportion to the bytes that really arrived.
class XMLReader {
 public:
    /// Reads the stream to its end.
    explicit XMLReader(std::istream& stream, std::size_t maxBytes = kMaxXMLBytes);
    ~XMLReader();
    XMLReader(const XMLReader&) = delete;
    XMLReader& operator=(const XMLReader&) = delete;

    /// True while nothing has failed.
    bool IsGood() const;
    /// Enters the root. A document without one holds a single object; then this is left out.
    bool ParseStartRoot(const XMLDocType& docType);
    /// True when nothing is left in the root.
    bool ParseEndRoot();
    /// Enters the next object, which must have this name.
    bool ParseStartObj(std::string_view name);
    /// The next value of the object, which must be of this type and in its range.
    bool ParseValue(std::int32_t& valueOut);
    bool ParseValue(std::int64_t& valueOut);
    bool ParseValue(double& valueOut);
    bool ParseValue(std::string& valueOut);
    /// Leaves the object; true when nothing was left in it.
    bool ParseEndObj();

 private:
    struct Document;
    std::unique_ptr<Document> fpDocument;
};

}  // namespace MCCommonXML

#endif  // PREDSEL_HOST_XML_H
