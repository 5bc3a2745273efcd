#include "featureselect/FSMoments.h"

namespace {

FSScaled Quotient(const FSExactSum& numerator, const FSExactSum& denominator) {
    if (denominator.Sign() == 0) return {};
    return numerator.Scaled() / denominator.Scaled();
}

}  // namespace

FSMoments FSMoments::Of(const FSWeightSum& weight, double mean, double secondMoment) {
    FSMoments moments;
    moments.fWeight = weight;
    const FSExactSum exactMean(mean);
    moments.fSum = weight.Exact() * exactMean;
    moments.fSquares = moments.fSum * exactMean;
    moments.fSquares.Add(secondMoment);
    return moments;
}

void FSMoments::Add(double value, double weight) {
    fWeight += weight;
    if (weight == 1.0) {
        fSum.Add(value);
        fSquares.AddProduct(value, value);
    } else {
        fSum.AddProduct(weight, value);
        fSquares.AddProduct(weight, value, value);
    }
}

FSMoments& FSMoments::operator+=(const FSMoments& other) {
    fWeight += other.fWeight;
    fSum += other.fSum;
    fSquares += other.fSquares;
    return *this;
}

FSMoments& FSMoments::operator-=(const FSMoments& other) {
    fWeight -= other.fWeight;
    fSum -= other.fSum;
    fSquares -= other.fSquares;
    return *this;
}

double FSMoments::Mean() const { return Quotient(fSum, fWeight.Exact()).Value(); }

FSExactSum FSMoments::WeightedSecondMoment() const {
    return fWeight.Exact() * fSquares - fSum * fSum;
}

FSScaled FSMoments::SecondMoment() const {
    return Quotient(WeightedSecondMoment(), fWeight.Exact());
}

void FSMoments::AppendTo(std::string& bytes) const {
    fWeight.Exact().AppendTo(bytes);
    fSum.AppendTo(bytes);
    fSquares.AppendTo(bytes);
}

FSPairMoments FSPairMoments::Of(const FSWeightSum& weight, double meanX, double secondX,
                                double meanY, double secondY, double cross) {
    const FSMoments x = FSMoments::Of(weight, meanX, secondX);
    const FSMoments y = FSMoments::Of(weight, meanY, secondY);
    FSPairMoments moments{weight, x.fSum, y.fSum, x.fSquares, y.fSquares, {}};
    moments.fXY = x.fSum * FSExactSum(meanY);
    moments.fXY.Add(cross);
    return moments;
}

void FSPairMoments::Add(double x, double y, double weight) {
    fWeight += weight;
    if (weight == 1.0) {
        fX.Add(x);
        fY.Add(y);
        fXX.AddProduct(x, x);
        fYY.AddProduct(y, y);
        fXY.AddProduct(x, y);
    } else {
        fX.AddProduct(weight, x);
        fY.AddProduct(weight, y);
        fXX.AddProduct(weight, x, x);
        fYY.AddProduct(weight, y, y);
        fXY.AddProduct(weight, x, y);
    }
}

FSPairMoments& FSPairMoments::operator+=(const FSPairMoments& other) {
    fWeight += other.fWeight;
    fX += other.fX;
    fY += other.fY;
    fXX += other.fXX;
    fYY += other.fYY;
    fXY += other.fXY;
    return *this;
}

FSExactSum FSPairMoments::WeightedCross() const { return fWeight.Exact() * fXY - fX * fY; }

FSScaled FSPairMoments::Cross() const { return Quotient(WeightedCross(), fWeight.Exact()); }

bool FSPairMoments::IsNumber() const {
    return fX.IsNumber() && fY.IsNumber() && fXX.IsNumber() && fYY.IsNumber() && fXY.IsNumber();
}

void FSPairMoments::AppendTo(std::string& bytes) const {
    fWeight.Exact().AppendTo(bytes);
    for (const FSExactSum* sum : {&fX, &fY, &fXX, &fYY, &fXY}) sum->AppendTo(bytes);
}
