#ifndef PREDSEL_FEATURESELECT_IOEXCEPTION_H
#define PREDSEL_FEATURESELECT_IOEXCEPTION_H

namespace MCFeature {

/// An object that could not be restored. Thrown by pointer; who catches it deletes it.
struct IOException {};

}  // namespace MCFeature

#endif  // PREDSEL_FEATURESELECT_IOEXCEPTION_H
