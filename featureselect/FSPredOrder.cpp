#include "featureselect/FSPredOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include "featureselect/FSCriterion.h"

namespace {

using Records = std::vector<std::unique_ptr<FSPredSort>>;

// Doubles lose digits below 2.2e-308 and end at 5e-324; well before that, logarithms decide.
constexpr double kPTooSmall = 1e-290;
constexpr double kLast = std::numeric_limits<double>::infinity();

bool IsMissing(double value) { return value == MCMV::gMissingValue || std::isnan(value); }

// A missing tie-breaker is the smallest number there is.
double TieBreaker(double value) { return std::isnan(value) ? MCMV::gMissingValue : value; }

// Where a record stands: ascending by all of it. No comparison looks at two records at once, so
// that no mixture of rules can make a circle of three of them.
struct Place {
    double fValue = kLast;  // p-value, 0 for one that is too small, or minus the measure
    double fLogP = 0.0;
    double fTieBreak1 = 0.0;  // minus it: the larger goes first
    double fTieBreak2 = 0.0;
    double fStatistic = 0.0;  // likewise
    std::int32_t fPredictor = 0;
    std::size_t fRecord = 0;  // position in the vector

    auto Key() const {
        return std::tie(fValue, fLogP, fTieBreak1, fTieBreak2, fStatistic, fPredictor);
    }
    bool operator<(const Place& other) const { return Key() < other.Key(); }
};

bool IsMeasure(std::int32_t criterion) {
    return criterion == FSCriterion::kCramer || criterion == FSCriterion::kLambda;
}

Place PlaceOf(const FSPredSort& record, std::int32_t criterion) {
    Place place;
    place.fPredictor = record.fPredictor;
    if (IsMissing(record.fCriterion)) return place;
    place.fTieBreak1 = -TieBreaker(record.fTieBreak1);
    if (IsMeasure(criterion)) {
        place.fValue = -record.fCriterion;
        return place;
    }
    if (IsMissing(record.fLogP)) {  // of a restored record
        place.fValue = record.fCriterion;
        place.fLogP = -std::numeric_limits<double>::infinity();
    } else {
        place.fValue = record.fCriterion < kPTooSmall ? 0.0 : record.fCriterion;
        place.fLogP = record.fLogP;
    }
    const bool isChiSquare =
        criterion == FSCriterion::kPearson || criterion == FSCriterion::kLikelihood;
    const double second = TieBreaker(record.fTieBreak2);
    place.fTieBreak2 = isChiSquare ? second : -second;
    return place;
}

// The records that have a p-value with a statistic, those of one test and equal degrees of freedom
// together, the larger statistic first.
std::vector<std::size_t> ByTest(const Records& records) {
    std::vector<std::size_t> order;
    order.reserve(records.size());
    for (std::size_t at = 0; at < records.size(); ++at) {
        const FSPredSort& record = *records[at];
        if (record.fTest != FSTestResult::kNone && !IsMissing(record.fStatistic) &&
            !IsMissing(record.fCriterion)) {
            order.push_back(at);
        }
    }
    const auto key = [&](std::size_t at) {
        const FSPredSort& record = *records[at];
        return std::tuple(record.fTest, TieBreaker(record.fDf1), TieBreaker(record.fDf2),
                          -record.fStatistic, -TieBreaker(record.fTieBreak1), record.fPredictor);
    };
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return key(a) < key(b); });
    return order;
}

bool IsOneTest(const FSPredSort& a, const FSPredSort& b) {
    return a.fTest == b.fTest && TieBreaker(a.fDf1) == TieBreaker(b.fDf1) &&
           TieBreaker(a.fDf2) == TieBreaker(b.fDf2);
}

// Among results of one test a smaller statistic takes no better place than a larger one: what
// rounding has turned round becomes equal, and then the statistic decides.
void FollowStatistics(const Records& records, std::vector<Place>& places) {
    const std::vector<std::size_t> order = ByTest(records);
    for (std::size_t next = 1; next < order.size(); ++next) {
        const std::size_t above = order[next - 1];
        const std::size_t at = order[next];
        if (!IsOneTest(*records[above], *records[at])) continue;
        Place& place = places[at];
        const Place& better = places[above];
        const auto p =
            std::max(std::pair(place.fValue, place.fLogP), std::pair(better.fValue, better.fLogP));
        place.fValue = p.first;
        place.fLogP = p.second;
        place.fTieBreak1 = std::max(place.fTieBreak1, better.fTieBreak1);
    }
    for (const std::size_t at : order) places[at].fStatistic = -records[at]->fStatistic;
}

}  // namespace

void FSPredOrder::Sort(Records& records, std::int32_t criterion, std::size_t head) {
    std::vector<Place> places;
    places.reserve(records.size());
    for (const auto& record : records) {
        places.push_back(PlaceOf(*record, criterion));
        places.back().fRecord = places.size() - 1;
    }
    if (!IsMeasure(criterion)) FollowStatistics(records, places);
    // The index ends every comparison, so that the order is one of its own and needs no stable
    // sort.
    if (head < places.size()) {
        std::partial_sort(places.begin(), places.begin() + static_cast<std::ptrdiff_t>(head),
                          places.end());
    } else {
        std::sort(places.begin(), places.end());
    }
    Records sorted;
    sorted.reserve(records.size());
    for (const Place& place : places) sorted.push_back(std::move(records[place.fRecord]));
    records = std::move(sorted);
}
