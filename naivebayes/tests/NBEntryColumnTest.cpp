#include "naivebayes/NBEntryColumn.h"

#include <gtest/gtest.h>

namespace {

TEST(NBEntryColumn, HoldsEntriesInTheNarrowestIntegersThatTakeAllCategories) {
    const auto bytes = [](std::int32_t numCategories) {
        return std::visit([](const auto& entries) { return sizeof entries[0]; },
                          NBEntryColumn(numCategories).GetEntries());
    };
    EXPECT_EQ(bytes(-1), 1U);
    EXPECT_EQ(bytes(255), 1U);
    EXPECT_EQ(bytes(256), 2U);
    EXPECT_EQ(bytes(65535), 2U);
    EXPECT_EQ(bytes(65536), 4U);
}

TEST(NBEntryColumn, TakesTheHighestEntryOfEachWidth) {
    for (const std::int32_t numCategories : {255, 256, 65535, 65536}) {
        NBEntryColumn column(numCategories);
        column.Append(0);
        column.Append(column.GetNumCategories());
        EXPECT_EQ(column[1], static_cast<std::uint32_t>(numCategories));
        EXPECT_EQ(column.Code(0), -1.0);
        EXPECT_EQ(column.Code(1), numCategories - 1.0);
    }
}

TEST(NBEntryColumn, AViewEndsBehindTheHighestEntry) {
    NBEntryColumn column(7);
    for (const std::uint32_t entry : {3U, 7U, 0U, 5U}) column.Append(entry);
    const MCCommon::BlockColumn view = column.View(1, 2);
    EXPECT_EQ(view.fEntryEnd, 8U);
    const auto entries = std::get<MCCommon::BlockColumn::Bytes>(view.fValues);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0], 7);
    EXPECT_EQ(entries[1], 0);
}

TEST(NBEntryColumn, KeepsTheRowsThatAreToBeKeptFromTheFirstOn) {
    NBEntryColumn column(9);
    for (std::uint32_t entry = 1; entry < 8; ++entry) column.Append(entry);
    column.Keep(2, {0, 1, 1, 0, 1});
    ASSERT_EQ(column.Size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(column[i], (std::vector<std::uint32_t>{1, 2, 4, 5, 7})[i]) << i;
    }
}

}  // namespace
