#include <cstddef>
#include <vector>

#include "naivebayes/NBPMMLWriter.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBBinningEncoder.h"

using MCCommonXML::XMLElement;

namespace {

/// The rows of a continuous predictor that are written as bins, ascending: those with weight, and
/// those that a value can fall into. Closed bins are neither.
std::vector<std::size_t> RowsOfBins(const NBBinningEncoder& encoder, const NBayesInput& table) {
    std::vector<std::size_t> rows;
    for (std::size_t m = 0; m <= encoder.GetCutpoints().size(); ++m) {
        const bool isFilled = m < table.GetCounts().size() && table.IsFilled(m);
        if (isFilled || encoder.IsReachable(m)) rows.push_back(m);
    }
    return rows;
}

}  // namespace

void NBayesInput::AddDiscretize(XMLElement& bayesInput) const {
    XMLElement& derived = bayesInput.AddChild("DerivedField");
    derived.AddAttribute("dataType", "float");
    derived.AddAttribute("optype", "continuous");
    XMLElement& discretize = derived.AddChild("Discretize");
    discretize.AddAttribute("field", fpVariable->GetName());
    std::vector<double> margins;  // between the bins
    if (const auto* const encoder =
            dynamic_cast<const NBBinningEncoder*>(fpVariable->GetEncoderConst())) {
        const auto scoring = encoder->MakeCollapsedCopy(*this);
        const std::vector<std::size_t> rows = RowsOfBins(*scoring, *this);
        for (std::size_t b = 0; b + 1 < rows.size(); ++b) {
            margins.push_back(scoring->GetCutpoints()[rows[b]]);
        }
    }
    for (std::size_t b = 0; b <= margins.size(); ++b) {
        XMLElement& bin = discretize.AddChild("DiscretizeBin");
        bin.AddAttribute("binValue", static_cast<double>(b));
        XMLElement& interval = bin.AddChild("Interval");
        const bool isLast = b == margins.size();
        interval.AddAttribute("closure", isLast ? "openOpen" : "openClosed");
        if (b > 0) interval.AddAttribute("leftMargin", margins[b - 1]);
        if (!isLast) interval.AddAttribute("rightMargin", margins[b]);
    }
}

std::unique_ptr<XMLElement> NBayesInput::MakePMML(const INBEncoder& targetEncoder) const {
    auto bayesInput = std::make_unique<XMLElement>("BayesInput");
    bayesInput->AddAttribute("fieldName", fpVariable->GetName());
    const bool isContinuous = fpVariable->GetMeasureLevel() == NBMeasureLevel::kContinuous;
    if (isContinuous) AddDiscretize(*bayesInput);
    const INBEncoder* const encoder = fpVariable->GetEncoderConst();
    const std::int32_t numCodes = isContinuous || encoder == nullptr ? 0 : encoder->GetNumCodes();
    // Numbers the rows that are written: of a continuous predictor just those bins are left.
    std::int32_t running = 0;
    for (std::size_t m = 0; m < fCounts.size(); ++m) {
        const std::vector<double>& row = fCounts[m];
        if (!IsFilled(m)) continue;
        XMLElement& pair = bayesInput->AddChild("PairCounts");
        const auto code = static_cast<std::int32_t>(m);
        if (code < numCodes) {
            NBPMMLWriter::AddCategoryValue(pair, encoder, code);
        } else {
            pair.AddAttribute("value", running++);
        }
        XMLElement& counts = pair.AddChild("TargetValueCounts");
        for (std::size_t t = 0; t < row.size(); ++t) {
            if (row[t] == 0.0) continue;  // the target's own counts are written with zeros
            XMLElement& count = counts.AddChild("TargetValueCount");
            NBPMMLWriter::AddCategoryValue(count, &targetEncoder, static_cast<std::int32_t>(t));
            count.AddAttribute("count", row[t]);
        }
    }
    return bayesInput;
}
