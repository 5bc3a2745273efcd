#ifndef PREDSEL_NAIVEBAYES_NBWRITEOPTIONS_H
#define PREDSEL_NAIVEBAYES_NBWRITEOPTIONS_H

#include <string>

/// How the engine's documents name their maker. An empty text stands for the engine's own.
struct NBWriteOptions {
    bool fUTF8 = false;
    std::string fAppName;
    std::string fAppVersion;
    std::string fCopyright;
};

#endif  // PREDSEL_NAIVEBAYES_NBWRITEOPTIONS_H
