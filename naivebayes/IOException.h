#ifndef PREDSEL_NAIVEBAYES_IOEXCEPTION_H
#define PREDSEL_NAIVEBAYES_IOEXCEPTION_H

namespace MCNaive {

/// An object that could not be restored. Thrown by pointer; who catches it deletes it.
struct IOException {};

}  // namespace MCNaive

#endif  // PREDSEL_NAIVEBAYES_IOEXCEPTION_H
