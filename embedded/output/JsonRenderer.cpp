#include "embedded/output/JsonRenderer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace embedded {

namespace {

using Json = nlohmann::ordered_json;

std::string_view StatusName(CommandStatus status) {
    switch (status) {
        case CommandStatus::Ok:
            return "ok";
        case CommandStatus::Failed:
            return "failed";
        case CommandStatus::Interrupted:
            return "interrupted";
    }
    return "failed";
}

std::string_view LevelName(MessageLevel level) {
    switch (level) {
        case MessageLevel::Note:
            return "note";
        case MessageLevel::Warning:
            return "warning";
        case MessageLevel::Error:
            return "error";
    }
    return "error";
}

std::string_view FormatName(ReportFormat format) {
    switch (format) {
        case ReportFormat::Count:
            return "count";
        case ReportFormat::Percent:
            return "percent";
        case ReportFormat::Significance:
            return "significance";
        case ReportFormat::GeneralStat:
            return "generalStat";
        case ReportFormat::Coefficient:
            return "coefficient";
        case ReportFormat::Text:
            return "text";
        case ReportFormat::List:
            return "list";
    }
    return "text";
}

Json KeyJson(const ReportKey& key) {
    if (const auto* number = std::get_if<double>(&key)) return *number;
    if (const auto* text = std::get_if<std::string>(&key)) return *text;
    return nullptr;
}

Json ValueJson(const ReportValue& value) {
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* list = std::get_if<std::vector<ReportKey>>(&value)) {
        Json elements = Json::array();
        for (const ReportKey& element : *list) elements.push_back(KeyJson(element));
        return elements;
    }
    return nullptr;
}

/// The texts and the keys of the shown headings down to a leaf or a group.
struct PathJson {
    Json fTexts = Json::array();
    Json fKeys = Json::array();
};

class TableWriter {
 public:
    explicit TableWriter(const ReportTable& table) : fTable(table) {
        for (const ReportDimension& dimension : table.fvDimensions) {
            auto& paths = fvPaths.emplace_back();
            Walk(dimension, dimension.fvHeadings, {}, paths);
            if (paths.empty()) paths.emplace_back();
        }
    }

    Json Write() {
        Json out = {{"id", fTable.fId}, {"title", fTable.fTitle}};
        out["caption"] = fTable.fCaption ? Json(*fTable.fCaption) : Json(nullptr);
        Json& dimensions = out["dimensions"] = Json::array();
        for (const ReportDimension& dimension : fTable.fvDimensions)
            dimensions.push_back({{"name", dimension.fName},
                                  {"title", dimension.fTitle},
                                  {"axis", dimension.fAxis == ReportAxis::Row ? "row" : "column"}});
        Json& cells = out["cells"] = Json::array();
        for (const ReportCell& cell : fTable.fvCells) cells.push_back(Cell(cell));
        if (!fHeadingNotes.empty()) out["headingNotes"] = std::move(fHeadingNotes);
        return out;
    }

 private:
    void Walk(const ReportDimension& dimension, const std::vector<ReportHeading>& headings,
              const PathJson& above, std::vector<PathJson>& leaves) {
        for (const ReportHeading& heading : headings) {
            PathJson path = above;
            if (heading.fbShown) {
                path.fTexts.push_back(heading.fText);
                path.fKeys.push_back(KeyJson(heading.fKey));
            }
            for (const std::string& note : heading.fvNotes)
                fHeadingNotes.push_back({{"dimension", dimension.fName},
                                         {"at", path.fTexts},
                                         {"keys", path.fKeys},
                                         {"text", note}});
            if (heading.fvChildren.empty())
                leaves.push_back(std::move(path));
            else
                Walk(dimension, heading.fvChildren, path, leaves);
        }
    }

    // JSON has no infinity.
    static void AddLogarithm(double logarithm, Json& cell) {
        const bool exactZero = std::isinf(logarithm) && logarithm < 0.0;
        cell["lnP"] = exactZero ? Json(nullptr) : Json(logarithm);
        if (exactZero) cell["exactZero"] = true;
    }

    Json Cell(const ReportCell& cell) const {
        Json texts = Json::object();
        Json keys = Json::object();
        for (std::size_t d = 0; d < fTable.fvDimensions.size(); ++d) {
            const PathJson& path = fvPaths[d][cell.fvAt[d]];
            texts[fTable.fvDimensions[d].fName] = path.fTexts;
            keys[fTable.fvDimensions[d].fName] = path.fKeys;
        }
        Json out = {{"at", std::move(texts)}, {"keys", std::move(keys)}};
        out["value"] = ValueJson(cell.fValue);
        if (cell.fLogarithm) AddLogarithm(*cell.fLogarithm, out);
        out["text"] = cell.fText;
        out["format"] = FormatName(cell.fFormat);
        out["notes"] = cell.fvNotes;
        return out;
    }

    const ReportTable& fTable;
    std::vector<std::vector<PathJson>> fvPaths;  // by dimension, then leaf
    Json fHeadingNotes = Json::array();
};

Json ChartJson(const ReportChart& chart) {
    Json vega = Json::parse(chart.fVegaLite, nullptr, false);
    if (!vega.is_object()) vega = nullptr;
    return {{"id", chart.fId},
            {"title", chart.fTitle},
            {"vegaLite", std::move(vega)},
            {"svg", chart.fSvg}};
}

Json CommandJson(const CommandReport& command) {
    Json out = {{"command", command.fCommand}, {"status", StatusName(command.fStatus)}};
    Json& notes = out["notes"] = Json::array();
    for (const ReportNote& note : command.fvNotes)
        notes.push_back({{"title", note.fTitle}, {"text", note.fText}});
    Json& messages = out["messages"] = Json::array();
    for (const ReportMessage& message : command.fvMessages)
        messages.push_back(
            {{"level", LevelName(message.fLevel)}, {"key", message.fKey}, {"text", message.fText}});
    Json tables = Json::array();
    Json charts = Json::array();
    for (const ReportItem& item : command.fvItems) {
        if (const auto* table = std::get_if<ReportTable>(&item))
            tables.push_back(TableWriter(*table).Write());
        else
            charts.push_back(ChartJson(std::get<ReportChart>(item)));
    }
    out["tables"] = std::move(tables);
    out["charts"] = std::move(charts);
    out["savedVariables"] = command.fvSavedVariables;
    out["modelFile"] = command.fModelFile ? Json(*command.fModelFile) : Json(nullptr);
    return out;
}

/// Writes a document. Other than the library's own writer it gives each double its shortest form,
/// whole ones without a fraction.
class JsonText {
 public:
    std::string Write(const Json& document) {
        Value(document, 0);
        return std::move(fOut) + "\n";
    }

 private:
    // Elements of the innermost arrays and objects stay on one line.
    static bool IsFlat(const Json& value) {
        for (const Json& element : value)
            if (element.is_structured() && !element.empty()) return false;
        return true;
    }

    void NewLine(std::size_t depth) {
        fOut += '\n';
        fOut.append(2 * depth, ' ');
    }

    void Value(const Json& value, std::size_t depth) {
        if (value.is_number_float())
            Double(value.get<double>());
        else if (value.is_object())
            Object(value, depth);
        else if (value.is_array())
            Array(value, depth);
        else
            fOut += value.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    void Double(double value) {
        if (!std::isfinite(value)) {
            fOut += "null";
            return;
        }
        constexpr double kExactlyWhole = 9007199254740992.0;  // 2^53
        std::array<char, 32> buffer{};
        char* const end = buffer.data() + buffer.size();
        const bool whole = std::fabs(value) < kExactlyWhole && std::trunc(value) == value;
        const auto written = whole
                                 ? std::to_chars(buffer.data(), end, static_cast<long long>(value))
                                 : std::to_chars(buffer.data(), end, value);
        fOut.append(buffer.data(), written.ptr);
    }

    void Object(const Json& object, std::size_t depth) {
        const bool flat = IsFlat(object);
        fOut += '{';
        bool first = true;
        for (const auto& [name, value] : object.items()) {
            Separate(first, flat, depth);
            Value(name, depth);
            fOut += ": ";
            Value(value, depth + 1);
        }
        if (!flat) NewLine(depth);
        fOut += '}';
    }

    void Array(const Json& array, std::size_t depth) {
        const bool flat = IsFlat(array);
        fOut += '[';
        bool first = true;
        for (const Json& value : array) {
            Separate(first, flat, depth);
            Value(value, depth + 1);
        }
        if (!flat) NewLine(depth);
        fOut += ']';
    }

    void Separate(bool& first, bool flat, std::size_t depth) {
        if (!first) fOut += flat ? ", " : ",";
        first = false;
        if (!flat) NewLine(depth + 1);
    }

    std::string fOut;
};

}  // namespace

std::string JsonRenderer::Render(const Report& report) {
    Json document = {{"format", "predselect-report/1"}, {"version", report.fVersion}};
    Json& commands = document["commands"] = Json::array();
    for (const CommandReport& command : report.fvCommands) commands.push_back(CommandJson(command));
    return JsonText().Write(document);
}

}  // namespace embedded
