#ifndef PREDSEL_NAIVEBAYES_DATA_NBUSERMISSINGFIELDS_H
#define PREDSEL_NAIVEBAYES_DATA_NBUSERMISSINGFIELDS_H

// Parts of saved forms that have to do with user-missing definitions.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace NBUserMissingFields {

/// The discrete values with their labels, pair by pair, behind their number. A negative number
/// stands for none.
template <class Values, class Labels>
struct Discrete {
    Values& fvValues;
    Labels& fvLabels;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        auto count = static_cast<std::int32_t>(self.fvValues.size());
        archive.Items(count);
        if constexpr (Archive::kRestores) {
            self.fvValues.clear();
            self.fvLabels.clear();
        }
        for (std::int32_t i = 0; i < count; ++i) self.Pair(static_cast<std::size_t>(i), archive);
    }

    template <class Archive>
    void Pair(std::size_t at, Archive& archive) const {
        if constexpr (Archive::kRestores) {
            typename Values::value_type value{};
            archive.Items(value);
            fvValues.push_back(std::move(value));
            RestoreLabel(archive);
        } else {
            archive.Items(fvValues[at]);
            archive.Items(at < fvLabels.size() ? fvLabels[at] : std::string());
        }
    }

    // A negative length is no label at all, so later labels move up to values before their own.
    // Intended: see ANegativeLabelLengthAddsNoLabel.
    template <class Archive>
    void RestoreLabel(Archive& archive) const {
        std::string label;
        if constexpr (Archive::kXML) {
            archive.Items(label);
        } else {
            std::int32_t length = 0;
            archive.Items(length);
            if (length < 0) return;
            archive.Characters(label, length);
        }
        fvLabels.push_back(std::move(label));
    }
};
template <class Values, class Labels>
Discrete(Values&, Labels&) -> Discrete<Values, Labels>;

/// Whether the owner has a definition, then the definition. The owner's earlier one serves until
/// the new one has been read.
template <class Definition, class Owner>
struct Optional {
    Owner& fOwner;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        bool exists = self.fOwner.GetUserMissing() != nullptr;
        archive.Items(exists);
        if constexpr (Archive::kRestores) {
            std::unique_ptr<Definition> definition;
            if (exists) {
                definition = std::make_unique<Definition>();
                archive.Items(*definition);
            }
            self.fOwner.SetUserMissing(std::move(definition));
        } else if (exists) {
            archive.Items(static_cast<const Definition&>(*self.fOwner.GetUserMissing()));
        }
    }
};

}  // namespace NBUserMissingFields

#endif  // PREDSEL_NAIVEBAYES_DATA_NBUSERMISSINGFIELDS_H
