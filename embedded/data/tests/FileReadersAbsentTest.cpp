#include <gtest/gtest.h>

#include "embedded/data/DataSetBuilder.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/data/SaveDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"

namespace embedded {
namespace {

TEST(FileReadersAbsent, TextIsReadAndTheOtherFormsAreRefusedWithTheReason) {
    const TemporaryFiles files;
    EXPECT_EQ(OpenDataSet(files.Write("data.csv", "a\n1\n")).GetColumn(0).Value(0), KoltObs(1.0));
    for (const auto& [bytes, form] :
         {std::pair{"PAR1", "Parquet files"}, std::pair{"ARROW1", "Arrow files"},
          std::pair{"\xFF\xFF\xFF\xFF", "Arrow streams"}}) {
        const std::string path = files.Write("data", bytes);
        try {
            OpenDataSet(path);
            ADD_FAILURE() << form;
        } catch (const DataError& fault) {
            EXPECT_EQ(fault.GetKind(), DataError::Kind::kFile);
            EXPECT_EQ(fault.what(), path +
                                        ": this program was built without Apache Arrow and cannot "
                                        "read " +
                                        form + "; build it with PREDSEL_ARROW=ON");
        }
    }
}

TEST(FileReadersAbsent, TextIsWrittenAndTheOtherFormsAreRefusedWithTheReason) {
    const TemporaryFiles files;
    const DataSet data = DataSetBuilder().Numbers("x", {1}).Build();
    SaveDataSet(data, SaveFormat::kCsv, files.Path("data.csv"));
    for (const auto& [name, form] :
         {std::pair{"data.parquet", "Parquet files"}, std::pair{"data.arrow", "Arrow files"}}) {
        const std::string path = files.Path(name);
        try {
            SaveDataSet(data, SaveFormatOf(path), path);
            ADD_FAILURE() << form;
        } catch (const DataError& fault) {
            EXPECT_EQ(fault.GetKind(), DataError::Kind::kFile);
            EXPECT_EQ(fault.what(), path +
                                        ": this program was built without Apache Arrow and cannot "
                                        "write " +
                                        form +
                                        "; build it with PREDSEL_ARROW=ON or write a .csv file");
        }
    }
}

}  // namespace
}  // namespace embedded
