#ifndef PREDSEL_NAIVEBAYES_NBOUTPUT_H
#define PREDSEL_NAIVEBAYES_NBOUTPUT_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "host/Records.h"

/// The classification of one record: the posterior of each target category, and the winner.
class NBOutput {
 public:
    NBOutput() = default;
    /// numUnits: target categories. Their values are missing until SetResult.
    explicit NBOutput(std::int32_t numUnits)
        : fNumUnits(numUnits), fValues(static_cast<std::size_t>(numUnits), MCMV::gMissingValue) {}
    virtual ~NBOutput() = default;
    NBOutput(const NBOutput&) = default;
    NBOutput& operator=(const NBOutput&) = default;

    /// winner: an index of values.
    virtual void SetResult(const std::vector<double>& values, std::int32_t winner);
    virtual void Display(std::ostream& out) const;

    double GetMaxValue() const { return fMaxValue; }
    const std::vector<double>& GetValues() const { return fValues; }
    /// -1 before SetResult.
    std::int32_t GetWinner() const { return fWinner; }

 private:
    std::int32_t fNumUnits = 0;
    std::vector<double> fValues;
    double fMaxValue = MCMV::gMissingValue;
    std::int32_t fWinner = -1;
};

#endif  // PREDSEL_NAIVEBAYES_NBOUTPUT_H
