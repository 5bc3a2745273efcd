#ifndef PREDSEL_BACKEND_NAIVEDATASOURCEITER_H
#define PREDSEL_BACKEND_NAIVEDATASOURCEITER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "host/CaseDelivery.h"
#include "host/Random.h"

class PRSValidSpecs;

/// The records of a NAIVEBAYES run: of the training cases, of the test cases, or of both. Which
/// sample a case belongs to is decided in the first pass over the adapter, by the sample variable
/// or by one random number a case; all later passes, of this iterator and of others, agree with it.
///
/// The first pass leaves out cases without a valid target. They have their place in the sample all
/// the same, so that later passes, which read them, count alike.
class NaiveDataSourceIter final : public UAProcDataSourceIter {
 public:
    /// All borrowed. flags: one bit a case of the file, true for training; filled by the first pass
    /// of a random sample, empty otherwise. At least one of the two samples is needed.
    NaiveDataSourceIter(UAInputAdapter& adapter, const PRSValidSpecs& specs,
                        std::vector<bool>& flags, bool needTrain, bool needTest);
    ~NaiveDataSourceIter() override;

    /// Whether the case that the pass stands on is a training case.
    bool IsTrainCase() const { return fbIsTrainCase; }
    /// The same of a case of the file, from 0, that this pass has read. See GetBlockCases.
    bool IsTrainCase(std::int64_t number) const {
        return fvTrainCases.empty() || fvTrainCases[static_cast<std::size_t>(number)];
    }

 protected:
    bool PreprocessCase() override;

 private:
    bool DrawOrRecall();

    UAInputAdapter& fAdapter;
    MCCommon::MCRandom* fpRandom;                     // borrowed from the engine's settings
    std::unique_ptr<UACaseValueReader> fpCaseReader;  // the target's, in the first pass alone
    double fTrainSampProp;                            // 0 when no share is drawn
    std::int32_t fTrainSampVar;                       // dictionary index, -1 without one
    std::vector<bool>& fTrainTestFlags;
    bool fbNeedTrainData;
    bool fbNeedTestData;
    bool fbIsTrainCase = true;
    std::vector<bool> fvTrainCases;  // of the pass, by case; empty where all are training cases
};

#endif  // PREDSEL_BACKEND_NAIVEDATASOURCEITER_H
