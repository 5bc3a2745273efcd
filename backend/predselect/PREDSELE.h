#ifndef PREDSEL_PREDSELE_H
#define PREDSEL_PREDSELE_H

/// The library's one exported entry. The host calls it for each SELECTPRED or NAIVEBAYES command,
/// after it has put the command's tokens and the active data set in place, and learns of failures
/// through its error word and its messages. Keeps nothing from one command to the next.
extern "C" __attribute__((visibility("default"))) void PREDSELE();

#endif  // PREDSEL_PREDSELE_H
