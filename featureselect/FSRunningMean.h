#ifndef PREDSEL_FEATURESELECT_FSRUNNINGMEAN_H
#define PREDSEL_FEATURESELECT_FSRUNNINGMEAN_H

/// How one weighted value moves a running mean, and what it adds to the sum of squared or cross
/// deviations: the recurrence of West (1979), CACM 22(9).
struct FSMeanStep {
    FSMeanStep(double before, double weight)
        : fBefore(before), fShare(weight / (before + weight)), fScale((before + weight) / weight) {}

    double Shift(double value, double mean) const { return (value - mean) * fShare; }
    // The order of operations is part of the saved state: states are compared bit for bit.
    double Moment(double shift, double otherShift) const {
        return fScale * shift * fBefore * otherShift;
    }

    double fBefore;  // valid weight before this value
    double fShare;   // of this value in the new valid weight
    double fScale;   // 1 / fShare, rounded on its own
};

/// How two partitions' means and moments join (Chan, Golub & LeVeque 1983).
struct FSMeanJoin {
    FSMeanJoin(double mine, double theirs) : fMine(mine), fShare(theirs / (mine + theirs)) {}

    double Moment(double delta, double otherDelta) const {
        return delta * otherDelta * fMine * fShare;
    }

    double fMine;   // valid weight of the earlier partition, above 0
    double fShare;  // of the later partition in both
};

#endif  // PREDSEL_FEATURESELECT_FSRUNNINGMEAN_H
