#ifndef PREDSEL_NAIVEBAYES_NBENTRYCOLUMN_H
#define PREDSEL_NAIVEBAYES_NBENTRYCOLUMN_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/Blocks.h"

/// Codes of one variable over many records, each moved up by one so that 0 is a missing or unknown
/// code, in the narrowest integers that hold all its categories.
class NBEntryColumn {
 public:
    using Entries = std::variant<std::vector<std::uint8_t>, std::vector<std::uint16_t>,
                                 std::vector<std::uint32_t>>;

    explicit NBEntryColumn(std::int32_t numCategories = 0)
        : fNumCategories(static_cast<std::uint32_t>(std::max(numCategories, 0))) {
        if (fNumCategories > std::numeric_limits<std::uint16_t>::max()) {
            fvEntries = std::vector<std::uint32_t>();
        } else if (fNumCategories > std::numeric_limits<std::uint8_t>::max()) {
            fvEntries = std::vector<std::uint16_t>();
        }
    }

    /// The highest entry.
    std::uint32_t GetNumCategories() const { return fNumCategories; }
    const Entries& GetEntries() const { return fvEntries; }
    Entries& GetEntries() { return fvEntries; }
    std::size_t Size() const {
        return std::visit([](const auto& entries) { return entries.size(); }, fvEntries);
    }
    /// Makes room for so many entries, a million at most: whoever expects more may be wrong.
    void Reserve(std::size_t size) {
        std::visit([size](auto& entries) { ReserveOf(entries, size); }, fvEntries);
    }
    /// The same for any values by rows.
    template <class Value>
    static void ReserveOf(std::vector<Value>& values, std::size_t size) {
        constexpr std::size_t kMost = std::size_t{1} << 20;
        values.reserve(std::min(size, kMost));
    }
    void Resize(std::size_t size) {
        std::visit([size](auto& entries) { entries.resize(size); }, fvEntries);
    }
    std::uint32_t operator[](std::size_t i) const {
        return std::visit([i](const auto& entries) { return std::uint32_t{entries[i]}; },
                          fvEntries);
    }
    /// The code as a record holds it.
    double Code(std::size_t i) const { return static_cast<double>((*this)[i]) - 1.0; }

    /// REQUIRES: entry is at most the number of categories.
    void Append(std::uint32_t entry) {
        std::visit(
            [entry](auto& entries) {
                using Entry = typename std::remove_reference_t<decltype(entries)>::value_type;
                entries.push_back(static_cast<Entry>(entry));
            },
            fvEntries);
    }
    /// Appends an entry for each of the values; entry(value) is at most the number of categories.
    template <class Value, class EntryOf>
    void Append(std::span<const Value> values, EntryOf entry) {
        std::visit(
            [values, entry](auto& entries) {
                using Entry = typename std::remove_reference_t<decltype(entries)>::value_type;
                const std::size_t first = entries.size();
                entries.resize(first + values.size());
                std::transform(values.begin(), values.end(), entries.data() + first,
                               [entry](Value value) { return static_cast<Entry>(entry(value)); });
            },
            fvEntries);
    }
    /// Of the entries from first on keeps those of rows for which keep is not 0.
    void Keep(std::size_t first, const std::vector<std::uint8_t>& keep) {
        std::visit([first, &keep](auto& entries) { KeepOf(entries, first, keep); }, fvEntries);
    }
    /// The same of any values by rows.
    template <class Value>
    static void KeepOf(std::vector<Value>& values, std::size_t first,
                       const std::vector<std::uint8_t>& keep) {
        std::size_t end = first;
        for (std::size_t i = first; i < values.size(); ++i) {
            values[end] = values[i];
            end += keep[i - first] != 0 ? 1 : 0;
        }
        values.resize(end);
    }

    /// Some rows; valid until the column changes.
    MCCommon::BlockColumn View(std::size_t first, std::size_t count) const {
        MCCommon::BlockColumn column;
        column.fEntryEnd = fNumCategories + 1;
        std::visit(
            [&column, first, count](const auto& entries) {
                column.fValues = std::span(entries).subspan(first, count);
            },
            fvEntries);
        return column;
    }

 private:
    std::uint32_t fNumCategories;
    Entries fvEntries;
};

#endif  // PREDSEL_NAIVEBAYES_NBENTRYCOLUMN_H
