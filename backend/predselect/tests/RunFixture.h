#ifndef PREDSEL_BACKEND_TESTS_RUNFIXTURE_H
#define PREDSEL_BACKEND_TESTS_RUNFIXTURE_H

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/PREDSELE.h"
#include "embedded/CommandRunner.h"
#include "embedded/RunOptions.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/JsonRenderer.h"
#include "embedded/output/Report.h"

/// A command run through the entry, and its report as programs see it.
class CommandRun {
 public:
    CommandRun(const std::string& command, embedded::DataSet data,
               ProgressListener* progress = nullptr)
        : CommandRun(command, std::move(data), embedded::RunOptions{.fpProgress = progress}) {}

    CommandRun(const std::string& command, embedded::DataSet data,
               const embedded::RunOptions& options)
        : fData(std::move(data)) {
        const embedded::CommandScript script = embedded::ParseCommandText(command, "test");
        if (script.fFault) throw std::invalid_argument(script.fFault->fText);
        fReport.fvCommands = embedded::RunCommands(fData, script.fvCommands, &PREDSELE, options);
        fJson = nlohmann::json::parse(embedded::JsonRenderer::Render(fReport))["commands"].back();
    }

    std::string Status() const { return fJson["status"]; }
    const nlohmann::json& Json() const { return fJson; }

    /// The data set after the command.
    const embedded::DataSet& Data() const { return fData; }
    /// The values of a variable, those of all rows.
    std::vector<KoltObs> ValuesOf(const std::string& name) const {
        const std::int32_t index = fData.FindVariable(name);
        if (index < 0) throw std::invalid_argument("no variable " + name);
        std::vector<KoltObs> values;
        for (std::int64_t row = 0; row < fData.RowCount(); ++row) {
            values.push_back(fData.GetColumn(index).Value(row));
        }
        return values;
    }

    /// "level key" of every message.
    std::vector<std::string> Messages() const {
        std::vector<std::string> messages;
        for (const auto& message : fJson["messages"]) {
            messages.push_back(message["level"].get<std::string>() + " " +
                               message["key"].get<std::string>());
        }
        return messages;
    }

    std::vector<std::string> TableIds() const {
        std::vector<std::string> ids;
        for (const auto& table : fJson["tables"]) ids.push_back(table["id"]);
        return ids;
    }

    /// Null when there is no such table.
    const nlohmann::json* Table(const std::string& id) const {
        for (const auto& table : fJson["tables"]) {
            if (table["id"] == id) return &table;
        }
        return nullptr;
    }

    /// "title: text" of every note.
    std::vector<std::string> Notes() const {
        std::vector<std::string> notes;
        for (const auto& note : fJson["notes"]) {
            notes.push_back(note["title"].get<std::string>() + ": " +
                            note["text"].get<std::string>());
        }
        return notes;
    }

    /// The cell whose paths, joined dimension by dimension, hold all these keys; null when no cell
    /// does.
    const nlohmann::json* Cell(const std::string& id,
                               std::initializer_list<const char*> keys) const {
        const nlohmann::json* table = Table(id);
        if (!table) return nullptr;
        for (const auto& cell : (*table)["cells"]) {
            std::vector<std::string> path;
            for (const auto& dimension : cell["keys"]) {
                for (const auto& key : dimension) {
                    path.push_back(key.is_string() ? key.get<std::string>() : key.dump());
                }
            }
            bool all = true;
            for (const char* key : keys) {
                all = all && std::find(path.begin(), path.end(), key) != path.end();
            }
            if (all) return &cell;
        }
        return nullptr;
    }

    /// The cell's value, or a text that says that there is none.
    nlohmann::json Value(const std::string& id, std::initializer_list<const char*> keys) const {
        const nlohmann::json* cell = Cell(id, keys);
        return cell ? (*cell)["value"] : nlohmann::json("no such cell");
    }

    /// The keys on one dimension of the table's cells in order, each once, paths joined by "/".
    std::vector<std::string> Headings(const std::string& id, const std::string& dimension) const {
        std::vector<std::string> headings;
        const nlohmann::json* table = Table(id);
        if (!table) return headings;
        for (const auto& cell : (*table)["cells"]) {
            std::string path;
            for (const auto& key : cell["keys"][dimension]) {
                if (!path.empty()) path += "/";
                path += key.is_string() ? key.get<std::string>() : key.dump();
            }
            if (std::find(headings.begin(), headings.end(), path) == headings.end()) {
                headings.push_back(path);
            }
        }
        return headings;
    }

 private:
    embedded::DataSet fData;
    embedded::Report fReport;
    nlohmann::json fJson;
};

#endif  // PREDSEL_BACKEND_TESTS_RUNFIXTURE_H
