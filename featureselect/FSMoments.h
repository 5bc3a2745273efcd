#ifndef PREDSEL_FEATURESELECT_FSMOMENTS_H
#define PREDSEL_FEATURESELECT_FSMOMENTS_H

#include <cstdint>
#include <string>

#include "featureselect/FSExactSum.h"
#include "featureselect/FSScaled.h"
#include "featureselect/FSWeightSum.h"

/// The sums behind a mean and a spread: of weights w, of w x and of w x^2. They are exact, so that
/// what is derived of them depends on the set of values alone: not on its order, nor on how it was
/// cut and put together again. A derived number is right to 31 digits before it is rounded.
struct FSMoments {
    FSWeightSum fWeight;
    FSExactSum fSum;
    FSExactSum fSquares;

    /// Moments with this mean and sum of squared deviations, which are exact from then on.
    static FSMoments Of(const FSWeightSum& weight, double mean, double secondMoment);

    /// REQUIRES: weight above 0.
    void Add(double value, double weight);
    FSMoments& operator+=(const FSMoments& other);
    FSMoments& operator-=(const FSMoments& other);

    /// 0 without a weight.
    double Mean() const;
    /// weight * secondMoment: sum w * sum w x^2 - (sum w x)^2, exactly.
    FSExactSum WeightedSecondMoment() const;
    /// Sum of w * (x - mean)^2; 0 without a weight.
    FSScaled SecondMoment() const;
    /// An infinity or a NaN was among the values.
    bool IsNumber() const { return fSum.IsNumber() && fSquares.IsNumber(); }

    void AppendTo(std::string& bytes) const;
};

/// The same of pairs.
struct FSPairMoments {
    FSWeightSum fWeight;
    FSExactSum fX;
    FSExactSum fY;
    FSExactSum fXX;
    FSExactSum fYY;
    FSExactSum fXY;

    /// Moments with these means and sums of squared and cross deviations.
    static FSPairMoments Of(const FSWeightSum& weight, double meanX, double secondX, double meanY,
                            double secondY, double cross);

    /// REQUIRES: weight above 0.
    void Add(double x, double y, double weight);
    FSPairMoments& operator+=(const FSPairMoments& other);

    FSMoments X() const { return {fWeight, fX, fXX}; }
    FSMoments Y() const { return {fWeight, fY, fYY}; }
    /// Sum w * sum w x y - sum w x * sum w y, exactly.
    FSExactSum WeightedCross() const;
    /// Sum of w * (x - mean of x) * (y - mean of y); 0 without a weight.
    FSScaled Cross() const;
    bool IsNumber() const;

    void AppendTo(std::string& bytes) const;
};

#endif  // PREDSEL_FEATURESELECT_FSMOMENTS_H
