#ifndef PREDSEL_EMBEDDED_COMMAND_NEARESTNAMES_H
#define PREDSEL_EMBEDDED_COMMAND_NEARESTNAMES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace embedded {

/// Looks among names for those that a mistyped word may have meant. Without regard to the case of
/// ASCII letters; names are offered one by one, so that many need not be gathered first.
class NearestNames {
 public:
    static constexpr std::size_t kMost = 3;

    explicit NearestNames(std::string_view word);
    void Offer(std::string_view name);
    /// At most kMost names, the nearest first, equally near ones in the order in which they were
    /// offered. Those within a few slips of the word (a letter too many, missing, wrong, or two
    /// swapped); failing that, those that begin with the word.
    std::vector<std::string> Names() const;

 private:
    struct Found {
        std::size_t fDistance;
        std::string fName;
    };

    std::size_t Distance(std::string_view name);

    std::string fWord;  // in upper case
    std::size_t fMostSlips;
    std::vector<Found> fvNear;
    std::vector<std::string> fvBegun;
    std::vector<std::size_t> fvRows;  // three rows of the distance table, kept between calls
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_NEARESTNAMES_H
