// Observed against predicted categories of the target.

#include <optional>

#include "backend/predselect/NaiveOutput.h"
#include "backend/predselect/OutputTables.h"
#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/CaseDelivery.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBOutputStatistics.h"

using OutputTables::kByLabel;
using OutputTables::kColumns;
using OutputTables::Key;
using OutputTables::kRows;
using OutputTables::MakeDimension;
using OutputTables::Put;

namespace {

double Share(double part, double whole) { return whole == 0.0 ? 0.0 : part / whole * 100.0; }

// The table's block of one sample. Its cells go to the row that was made or selected last.
class ClassificationBlock {
 public:
    /// headings: one a category of the target. All borrowed.
    ClassificationBlock(const NBOutputStatistics& counts, const std::vector<BpItem>& headings,
                        const BpDimension& observed, const BpDimension& predicted)
        : fCounts(counts),
          fHeadings(headings),
          fObserved(observed),
          fPredicted(predicted),
          fPredictedValues(predicted.Group(Key("Values"), 0, 0)) {}

    void Write() const {
        const BpGroup observedValues = fObserved.Group(Key("Values"), 0, 0);
        std::vector<double> columnSums(fHeadings.size(), 0.0);
        double total = 0.0, correct = 0.0;
        for (std::size_t i = 0; i < fHeadings.size(); ++i) {
            observedValues.Category(fHeadings[i]);
            double rowSum = 0.0;
            for (std::size_t j = 0; j < fHeadings.size(); ++j) {
                const double count = Cell(i, j);
                PutPredicted(j, BpNumber(count, BpProcedure::Count()));
                rowSum += count;
                columnSums[j] += count;
            }
            PutCorrect(Share(Cell(i, i), rowSum));
            correct += Cell(i, i);
            total += rowSum;
        }
        fObserved.Category(Key("Overall Percent"));
        for (std::size_t j = 0; j < fHeadings.size(); ++j) {
            PutPredicted(j, BpNumber(Share(columnSums[j], total), BpProcedure::Percent()));
        }
        PutCorrect(Share(correct, total));
    }

 private:
    double Cell(std::size_t observed, std::size_t predicted) const {
        return fCounts.GetCell(static_cast<std::int32_t>(observed),
                               static_cast<std::int32_t>(predicted));
    }
    void PutPredicted(std::size_t category, const BpNumber& number) const {
        fPredictedValues.Category(fHeadings[category]).Cell(number);
    }
    void PutCorrect(double percent) const {
        Put(fPredicted, "Percent Correct", percent, BpProcedure::Percent());
    }

    const NBOutputStatistics& fCounts;
    const std::vector<BpItem>& fHeadings;
    const BpDimension& fObserved;
    const BpDimension& fPredicted;
    BpGroup fPredictedValues;
};

}  // namespace

void NaiveOutput::WriteClassification() const {
    const INBAlgorithm& engine = Engine();
    const NBOutputStatistics* training = engine.GetTrainStatistics();
    const NBOutputStatistics* test = engine.GetTestStatistics();
    if (training == nullptr) return;

    const std::int32_t target = fSpecs.GetDependVar();
    std::vector<BpItem> headings;
    for (std::int32_t code = 0; code < engine.GetNumTargetCategories(); ++code) {
        std::int32_t variable = -1;
        KoltObs value;
        fController.GetInputAdapter().DecodeCatValue(target, code, variable, value);
        headings.push_back(BpDataValue(target, value, kByLabel));
    }

    BpPivotTable table(fProcedure, BpHeading(Key("Classification"), "Classification", 1));
    BpComposite caption("Dependent Variable ^1", true);
    caption.Add(BpVariable(target, kByLabel));
    caption.Finish();
    table.SetCaption(caption);
    const BpDimension observed = MakeDimension(table, "Observed", kRows, 1, false);
    const BpDimension predicted = MakeDimension(table, "Predicted", kColumns, 1, false);
    if (test == nullptr) {
        ClassificationBlock(*training, headings, observed, predicted).Write();
    } else {
        const BpDimension sample = MakeDimension(table, "Sample", kRows, 2, false);
        sample.Category(Key("Training"));
        ClassificationBlock(*training, headings, observed, predicted).Write();
        sample.Category(Key("Test"));
        ClassificationBlock(*test, headings, observed, predicted).Write();
    }
    table.Send();
}
