#include "embedded/data/Describe.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "embedded/data/DataSetBuilder.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"
#include "embedded/output/DisplayWidth.h"

namespace embedded {
namespace {

using Json = nlohmann::json;

DataSet Sample() {
    return DataSetBuilder()
        .SourceName("sample.csv")
        .Numbers("age", {31, 45.5, -9, 95, MCMV::gMissingValue})
        .Label("Age in years")
        .Missing({true, 90, 99, {-9.0}})
        .ValueLabel(-9.0, "refused")
        .Strings("sex", {"f", "m", "f", "?", std::nullopt})
        .Missing({false, 0, 0, {std::string("?")}})
        .ValueLabel(std::string("f"), "Female")
        .Numbers("day", {0, 1, 2, 3, 4})
        .Kind(ColumnKind::kDate)
        .Numbers("w", {1, 1, 1, 1, 1})
        .Weight()
        .Split()
        .Build();
}

TEST(DescribeAsText, ShowsTheDictionaryAsATable) {
    EXPECT_EQ("\n" + DescribeAsText(Sample(), 108), R"(
sample.csv: 5 rows, 4 variables
Weight: w
Split by: w

Variable  Type     Level    Valid  Missing  Distinct  Values                                    Label
--------  -------  -------  -----  -------  --------  ----------------------------------------  ------------
age       numeric  scale        2        3         2  31.00 to 45.50; missing: 90.00 to 99.00,  Age in years
                                                      -9.00
sex       string   nominal      3        2         2  f (Female), m; missing: ?
day       date     scale        5        0         5  1970-01-01 to 1970-01-05
w         numeric  nominal      5        0         1  1
)");
}

TEST(DescribeAsText, KeepsToTheWidth) {
    DataSet data = Sample();
    data.MutableVariable(0).SetLabel(
        "A label that goes on and on, with \xC3\xBCmlauts and "
        "aVeryLongWordThatCannotBeBrokenNicely");
    DataNote note;
    note.fText = "A note that goes on and on until it has to be wrapped to the next line at last.";
    data.AddNote(note);
    const std::string text = DescribeAsText(data, 80);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        EXPECT_LE(DisplayWidth(text.substr(begin, end - begin)), 80U)
            << text.substr(begin, end - begin);
        begin = end + 1;
    }
    EXPECT_NE(text.find("Notes\n- A note"), std::string::npos);
}

TEST(DescribeAsText, NothingInTheDataCanSteerTheTerminal) {
    const DataSet data =
        DataSetBuilder().Strings("n\x1B[31m", {"a\x07\nb"}).Label("l\x1B]0;x").Build();
    for (const char letter : DescribeAsText(data, 80)) {
        EXPECT_TRUE(letter == '\n' || static_cast<unsigned char>(letter) >= 0x20);
    }
}

TEST(DescribeAsText, ManyCategoriesAreCutShort) {
    const DataSet data = DataSetBuilder().Strings("s", {"a", "b", "c", "d", "e", "f", "g"}).Build();
    EXPECT_NE(DescribeAsText(data, 100).find("a, b, c, d, e, f, ...\n"), std::string::npos);
}

TEST(DescribeAsText, NoVariablesIsATableOfNone) {
    EXPECT_EQ(DescribeAsText(DataSetBuilder().SourceName("x").Build(), 80),
              "x: 0 rows, 0 variables\n");
}

TEST(DescribeAsJson, HoldsTheSame) {
    DataSet data = Sample();
    data.AddNote({DataNote::Kind::kInfinite, 0, 2, 3, "odd"});
    const Json root = Json::parse(DescribeAsJson(data));
    EXPECT_EQ(root["source"], "sample.csv");
    EXPECT_EQ(root["rows"], 5);
    EXPECT_EQ(root["weight"], "w");
    EXPECT_EQ(root["split"], Json({"w"}));
    ASSERT_EQ(root["variables"].size(), 4U);
    EXPECT_EQ(root["variables"][0],
              Json::parse(R"({"name": "age", "label": "Age in years", "type": "numeric",
                  "level": "scale", "valid": 2, "systemMissing": 1, "userMissing": 2, "distinct": 2,
                  "min": 31, "max": 45.5, "missingRange": [90, 99], "missingValues": [-9],
                  "labels": [{"value": -9, "label": "refused"}]})"));
    EXPECT_EQ(root["variables"][1]["bytes"], 1);
    EXPECT_EQ(root["variables"][1]["distinct"], 2);
    EXPECT_EQ(root["notes"],
              Json::parse(R"([{"variable": "age", "count": 2, "firstRow": 4, "text": "odd"}])"));
}

TEST(DescribeAsJson, AVariableWithoutValuesHasNoBounds) {
    const Json root =
        Json::parse(DescribeAsJson(DataSetBuilder().Numbers("x", {MCMV::gMissingValue}).Build()));
    EXPECT_TRUE(root["variables"][0]["min"].is_null());
    EXPECT_TRUE(root["weight"].is_null());
}

/// Opens a text, drafts its schema, opens it with the draft and compares the dictionaries.
class Draft : public testing::Test {
 protected:
    DataSet Open(std::string_view text, std::string_view schema, const OpenOptions& options) {
        OpenOptions withSchema = options;
        const std::string path = fFiles.Write("data.csv", text);
        if (!schema.empty()) {
            withSchema.fSchemaPath = fFiles.Write("schema.json", schema);
        }
        return OpenDataSet(path, withSchema);
    }
    // The draft; it holds that opening with it gives the same, and that it is its own draft.
    Json RoundTrip(std::string_view text, std::string_view schema = "",
                   const OpenOptions& options = {}) {
        const DataSet data = Open(text, schema, options);
        const std::string draft = DraftSchema(data);
        const DataSet again = Open(text, draft, {});
        EXPECT_EQ(again.ColumnCount(), data.ColumnCount());
        for (std::int32_t index = 0; index < data.ColumnCount(); ++index) {
            const KOLT_Variable& before = data.Variable(index);
            const KOLT_Variable& after = again.Variable(index);
            SCOPED_TRACE(before.GetName());
            EXPECT_EQ(after.GetName(), before.GetName());
            EXPECT_EQ(after.GetLabel(), before.GetLabel());
            EXPECT_EQ(after.GetType(), before.GetType());
            EXPECT_EQ(after.GetFormat(), before.GetFormat());
            EXPECT_EQ(after.GetMeasurementLevel(), before.GetMeasurementLevel());
            EXPECT_EQ(after.GetMissingSpec(), before.GetMissingSpec());
            EXPECT_EQ(again.Kind(index), data.Kind(index));
            for (const auto& [value, label] : before.GetValueLabels().Entries()) {
                const std::string* found = after.GetValueLabels().Find(value);
                EXPECT_TRUE(found != nullptr && *found == label) << label;
            }
            EXPECT_EQ(after.GetValueLabels().Entries().size(),
                      before.GetValueLabels().Entries().size());
            for (std::int64_t row = 0; row < data.RowCount(); ++row) {
                EXPECT_EQ(again.GetColumn(index).Value(row), data.GetColumn(index).Value(row));
            }
        }
        EXPECT_EQ(again.WeightIndex(), data.WeightIndex());
        EXPECT_EQ(again.SplitIndices(), data.SplitIndices());
        EXPECT_EQ(DraftSchema(again), draft);
        return Json::parse(draft);
    }
    TemporaryFiles fFiles;
};

TEST_F(Draft, GivesTheSameDictionaryWhereNothingWasDeclared) {
    const Json root = RoundTrip(
        "i,f,s,b,d,t,e,g\n1,1.5,x,true,2024-01-01,2024-01-01T10:00:00,,1e-3\n"
        "2,2,y,false,2024-01-02,2024-01-01,,2\n");
    EXPECT_EQ(root["fields"][0],
              Json::parse(R"({"name": "i", "type": "integer", "measurementLevel": "nominal",
                              "categories": [1, 2]})"));
    EXPECT_EQ(root["fields"][1]["type"], "number");
    EXPECT_EQ(root["fields"][2]["categories"], Json({"x", "y"}));
    EXPECT_EQ(root["fields"][3]["type"], "boolean");
    EXPECT_EQ(root["fields"][4]["type"], "date");
    EXPECT_EQ(root["fields"][5]["type"], "datetime");
    EXPECT_EQ(root["fields"][6]["type"], "number");
    EXPECT_EQ(root["fields"][7]["type"], "number");
    EXPECT_FALSE(root.contains("missingValues"));
}

TEST_F(Draft, HoldsWhatOptionsSaid) {
    OpenOptions options;
    options.fvNaTexts = {"NA"};
    options.fvLevels = {{"a", "ordinal"}};
    options.fvMissing = {{"a", "8..9,-1"}, {"d", "1999-01-01"}};
    options.fWeight = "w";
    const Json root =
        RoundTrip("a,s,w,d\n1,x,1,2024-01-01\nNA,NA,2,1999-01-01\n8,y,1,NA\n-1,x,1,2024-01-02\n",
                  "", options);
    EXPECT_EQ(root["missingValues"], Json({"NA"}));
    EXPECT_EQ(root["weight"], "w");
    EXPECT_EQ(root["fields"][0]["missingRange"], Json({8, 9}));
    EXPECT_EQ(root["fields"][0]["missingValues"], Json::parse(R"([-1, "NA"])"));
    EXPECT_EQ(root["fields"][3]["missingValues"], Json::parse(R"(["1999-01-01", "NA"])"));
}

TEST_F(Draft, KeepsEverythingThatASchemaSaid) {
    const Json before = Json::parse(R"({
        "$schema": "https://example.org/own.json", "primaryKey": ["id"], "foo": {"bar": [1, null]},
        "fieldsMatch": "partial",
        "fields": [
          {"name": "id", "type": "integer", "constraints": {"required": true}},
          {"name": "g", "title": "Group", "type": "string", "rdfType": "x",
           "categories": [{"value": "b", "label": "Bee"}, "a"], "categoriesOrdered": true,
           "missingValues": ["", {"value": "?", "label": "unknown"}]},
          {"name": "y", "type": "year", "missingValues": ["none", "9999"]},
          {"name": "l", "type": "list"}],
        "weight": "id", "split": "g"})");
    const Json after =
        RoundTrip("id,g,y,l\n1,a,2001,\"1,2\"\n2,?,none,3\n3,\"\",9999,4\n", before.dump());
    EXPECT_EQ(after["$schema"], before["$schema"]);
    EXPECT_EQ(after["primaryKey"], before["primaryKey"]);
    EXPECT_EQ(after["foo"], before["foo"]);
    EXPECT_EQ(after["fields"][0]["constraints"], before["fields"][0]["constraints"]);
    EXPECT_EQ(after["fields"][1]["categories"], before["fields"][1]["categories"]);
    EXPECT_EQ(after["fields"][1]["rdfType"], "x");
    EXPECT_EQ(after["fields"][1]["measurementLevel"], "ordinal");
    EXPECT_EQ(after["fields"][1]["missingValues"],
              Json::parse(R"([{"value": "?", "label": "unknown"}, ""])"));
    EXPECT_EQ(after["fields"][2]["type"], "year");
    EXPECT_EQ(after["fields"][2]["missingValues"], Json::parse(R"([9999, "none"])"));
    EXPECT_EQ(after["fields"][3], before["fields"][3]);
    EXPECT_EQ(after["split"], Json({"g"}));
}

TEST(DraftSchema, OfColumnsInMemoryHoldsTheirLabels) {
    const Json root = Json::parse(DraftSchema(Sample()));
    EXPECT_EQ(root["fields"][0],
              Json::parse(R"({"name": "age", "title": "Age in years", "type": "number",
                  "measurementLevel": "scale", "missingRange": [90, 99],
                  "missingValues": [{"value": -9, "label": "refused"}]})"));
    EXPECT_EQ(root["fields"][1]["categories"],
              Json::parse(R"([{"value": "f", "label": "Female"}, "m"])"));
    EXPECT_EQ(root["fields"][1]["missingValues"], Json({"?"}));
}

}  // namespace
}  // namespace embedded
