#ifndef PREDSEL_FEATURESELECT_FSNUMERICERROR_H
#define PREDSEL_FEATURESELECT_FSNUMERICERROR_H

/// What a numeric function reports through its error output; with anything but kNUMERIC_OK its
/// result is MCMV::gMissingValue.
inline constexpr int kNUMERIC_OK = 0;
inline constexpr int kNUMERIC_BAD_ARGUMENT = 1;
inline constexpr int kNUMERIC_NO_RESULT = 2;

#endif  // PREDSEL_FEATURESELECT_FSNUMERICERROR_H
