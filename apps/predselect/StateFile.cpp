#include "apps/predselect/StateFile.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Terminal.h"
#include "embedded/output/Sha256.h"
#include "host/EngineState.h"

namespace app {
namespace {

using Json = nlohmann::ordered_json;
using embedded::ColumnKind;

constexpr std::string_view kMagic = "predselect state";
constexpr std::int32_t kVersion = 1;
constexpr std::size_t kChecksumSize = 44;  // SHA-256 in base64

// The frame: magic, version, and the lengths of the two parts behind it.
struct Frame {
    std::int32_t fVersion = kVersion;
    std::int32_t fHeaderSize = 0;
    std::int64_t fStateSize = 0;
};
static_assert(sizeof(Frame) == 16, "the frame is written as it stands in memory");
constexpr std::size_t kFrameSize = kMagic.size() + sizeof(Frame);

constexpr std::pair<ColumnKind, const char*> kKinds[] = {
    {ColumnKind::kNumber, "number"}, {ColumnKind::kBoolean, "boolean"},
    {ColumnKind::kDate, "date"},     {ColumnKind::kDateTime, "datetime"},
    {ColumnKind::kTime, "time"},     {ColumnKind::kString, "string"}};

const char* WordOf(ColumnKind kind) {
    for (const auto& [known, word] : kKinds) {
        if (known == kind) return word;
    }
    throw std::logic_error("a kind of column without a word");
}

ColumnKind KindOf(const std::string& word) {
    for (const auto& [kind, known] : kKinds) {
        if (word == known) return kind;
    }
    throw std::invalid_argument("unknown kind " + word);
}

Json ToJson(const KoltObs& value) {
    if (const double* number = std::get_if<double>(&value)) return *number;
    return std::get<std::string>(value);
}

KoltObs ObsFrom(const Json& json) {
    if (json.is_number()) return json.get<double>();
    return json.get<std::string>();
}

Json ToJson(const std::vector<KoltObs>& values) {
    Json list = Json::array();
    for (const KoltObs& value : values) list.push_back(ToJson(value));
    return list;
}

// Values of one type: numbers, or else texts.
std::vector<KoltObs> ObsListFrom(const Json& json, bool isNumeric) {
    std::vector<KoltObs> values;
    for (const Json& value : json) {
        values.push_back(ObsFrom(value));
        if (std::holds_alternative<double>(values.back()) != isNumeric) {
            throw std::invalid_argument("a value of another type");
        }
    }
    return values;
}

std::int32_t IntegerFrom(const Json& json, std::int64_t low, std::int64_t high) {
    if (!json.is_number_integer()) throw std::invalid_argument("no whole number");
    const auto value = json.get<std::int64_t>();
    if (value < low || value > high) throw std::out_of_range("a number out of its range");
    return static_cast<std::int32_t>(value);
}

Json ToJson(const embedded::RecordLayoutColumn& column) {
    Json json{{"name", column.fName},
              {"kind", WordOf(column.fKind)},
              {"type", column.fType},
              {"categorical", column.fbCategorical}};
    if (column.fbCategorical) json["values"] = ToJson(column.fvValues);
    if (column.fMissing.fbRange)
        json["missingRange"] = {column.fMissing.fLow, column.fMissing.fHigh};
    if (!column.fMissing.fvDiscrete.empty()) {
        json["missingValues"] = ToJson(column.fMissing.fvDiscrete);
    }
    return json;
}

embedded::RecordLayoutColumn ColumnFrom(const Json& json) {
    embedded::RecordLayoutColumn column;
    column.fName = json.at("name").get<std::string>();
    column.fKind = KindOf(json.at("kind").get<std::string>());
    column.fType = IntegerFrom(json.at("type"), 0, std::numeric_limits<std::int32_t>::max());
    const bool isNumeric = column.fKind != ColumnKind::kString;
    if ((column.fType == 0) != isNumeric) throw std::invalid_argument("a type of another kind");
    column.fbCategorical = json.at("categorical").get<bool>();
    if (column.fbCategorical) {
        column.fvValues = ObsListFrom(json.at("values"), isNumeric);
        const std::set<KoltObs> distinct(column.fvValues.begin(), column.fvValues.end());
        if (distinct.size() != column.fvValues.size()) {
            throw std::invalid_argument("a value with two codes");
        }
    }
    if (json.contains("missingRange")) {
        if (!isNumeric) throw std::invalid_argument("a range of texts");
        column.fMissing.fbRange = true;
        column.fMissing.fLow = json.at("missingRange").at(0).get<double>();
        column.fMissing.fHigh = json.at("missingRange").at(1).get<double>();
    }
    if (json.contains("missingValues")) {
        column.fMissing.fvDiscrete = ObsListFrom(json.at("missingValues"), isNumeric);
    }
    return column;
}

Json HeaderOf(const StateFile& state) {
    Json columns = Json::array();
    for (const auto& column : state.fLayout.fvColumns) columns.push_back(ToJson(column));
    Json header{{"command", state.fCommand},
                {"userMissing", state.fLayout.fbUserMissExclude ? "exclude" : "include"},
                {"weightColumn", nullptr},
                {"columns", std::move(columns)}};
    if (state.fLayout.fWeightColumn >= 0) header["weightColumn"] = state.fLayout.fWeightColumn;
    return header;
}

void ReadHeader(const Json& header, StateFile& state) {
    state.fCommand = header.at("command").get<std::string>();
    if (state.fCommand != "SELECTPRED" && state.fCommand != "NAIVEBAYES") {
        throw std::invalid_argument("a command that keeps no state");
    }
    state.fLayout.fbUserMissExclude = header.at("userMissing").get<std::string>() == "exclude";
    for (const Json& column : header.at("columns")) {
        state.fLayout.fvColumns.push_back(ColumnFrom(column));
    }
    const Json& weight = header.at("weightColumn");
    if (weight.is_null()) return;
    const auto columns = static_cast<std::int64_t>(state.fLayout.fvColumns.size());
    state.fLayout.fWeightColumn = IntegerFrom(weight, 0, columns - 1);
}

std::string ReadWhole(const std::string& path) {
    if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    // A directory opens, but cannot be read.
    if (!file || !(content << file.rdbuf())) {
        const int error = errno;
        if (file && file.peek() == std::ifstream::traits_type::eof() && error == 0) return {};
        throw ProgramError(kFileFault, "cannot read the state " + path + ": " +
                                           std::strerror(error != 0 ? error : EIO) +
                                           "; check the path");
    }
    return std::move(content).str();
}

[[noreturn]] void NoStateFile(const std::string& name) {
    throw ProgramError(kFileFault, name +
                                       " is no state file; give one that --state of bayes, update "
                                       "or merge has written");
}

[[noreturn]] void Damaged(const std::string& name) {
    throw ProgramError(kFileFault,
                       "the state " + name + " is damaged or cut short; write it again");
}

template <bool (SavableEngine::*save)(std::ostream&) const>
std::string Saved(const SavableEngine& engine) {
    std::ostringstream stream;
    if (!(engine.*save)(stream)) {
        throw ProgramError(kCommandFailed,
                           "the state of the engine cannot be saved; leave out --state");
    }
    return std::move(stream).str();
}

}  // namespace

StateFile TakeState(const SavableEngine& engine, const embedded::RecordLayout& layout) {
    return {engine.GetCommandName(), layout, Saved<&SavableEngine::SaveBinary>(engine)};
}

std::string TakeStateAsXML(const SavableEngine& engine) {
    return Saved<&SavableEngine::SaveXML>(engine);
}

std::string WrittenState(const StateFile& state) {
    // Names of variables are UTF-8; what is not is replaced rather than refused.
    const std::string header =
        HeaderOf(state).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    const Frame frame{kVersion, static_cast<std::int32_t>(header.size()),
                      static_cast<std::int64_t>(state.fState.size())};
    std::string content(kMagic);
    content.append(reinterpret_cast<const char*>(&frame), sizeof frame);
    content += header;
    content += state.fState;
    return content + embedded::Sha256Base64(content);
}

std::string StateName(const std::string& path) {
    return path == "-" ? "standard input" : OneLine(path);
}

StateFile ReadState(const std::string& path) {
    const std::string content = ReadWhole(path);
    const std::string name = StateName(path);
    if (content.compare(0, kMagic.size(), kMagic) != 0) NoStateFile(name);
    if (content.size() < kFrameSize + kChecksumSize) Damaged(name);
    Frame frame;
    std::memcpy(&frame, content.data() + kMagic.size(), sizeof frame);
    if (frame.fVersion != kVersion) {
        throw ProgramError(
            kFileFault, "the state " + name + " is of version " + std::to_string(frame.fVersion) +
                            ", and this program reads version " + std::to_string(kVersion) +
                            "; write it again with this program");
    }
    const std::size_t left = content.size() - kFrameSize - kChecksumSize;
    const std::string_view whole(content);
    if (frame.fHeaderSize < 0 || static_cast<std::size_t>(frame.fHeaderSize) > left ||
        frame.fStateSize !=
            static_cast<std::int64_t>(left - static_cast<std::size_t>(frame.fHeaderSize)) ||
        embedded::Sha256Base64(whole.substr(0, whole.size() - kChecksumSize)) !=
            whole.substr(whole.size() - kChecksumSize)) {
        Damaged(name);
    }
    StateFile state;
    try {
        const auto headerSize = static_cast<std::size_t>(frame.fHeaderSize);
        ReadHeader(Json::parse(content.substr(kFrameSize, headerSize)), state);
        state.fState = content.substr(kFrameSize + headerSize, left - headerSize);
    } catch (const std::exception&) {  // the checksum is right, so it was written so
        Damaged(name);
    }
    return state;
}

}  // namespace app
