#ifndef PREDSEL_NAIVEBAYES_DATA_NBCATEGORYENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_NBCATEGORYENCODER_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/data/INBEncoder.h"

/// What encoders of categories share: labels by code, and a user-missing definition of their own.
/// Codes are given in the order of first appearance, without gaps, and never change.
class NBCategoryEncoder : public INBEncoder {
 public:
    void SetCategoryLabels(const std::vector<std::string>& labels) override;
    void SetCategoryLabel(std::int32_t code, const std::string& label) override;
    const std::vector<std::string>* GetCategoryLabels() const override { return &fvCategoryLabels; }
    /// Null clears the definition. False for one whose type isn't that of the categories: the
    /// earlier one stays.
    virtual bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) = 0;

 protected:
    NBCategoryEncoder() = default;
    void DisplayLabelsAndMissing(std::ostream& out) const;

    std::vector<std::string> fvCategoryLabels;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBCATEGORYENCODER_H
