#ifndef PREDSEL_APPS_SAVEDMODEL_H
#define PREDSEL_APPS_SAVEDMODEL_H

#include <memory>
#include <string>

#include "apps/predselect/StateFile.h"
#include "naivebayes/INBAlgorithm.h"

namespace app {

/// A classifier that came from a state file, with the layout of its records. The columns of the
/// layout are the variables of the engine's list.
class SavedModel {
 public:
    /// Throws ProgramError (kFileFault) that names the file when it holds no classifier.
    explicit SavedModel(const std::string& path);

    /// What messages call the file.
    const std::string& Name() const { return fName; }
    INBAlgorithm& Engine() const { return *fpEngine; }
    const embedded::RecordLayout& Layout() const { return fLayout; }
    const embedded::RecordLayoutColumn& Target() const;
    std::int32_t TargetColumn() const { return fTarget; }
    /// True when the model reads this column to score.
    bool IsInput(std::int32_t column) const;

    /// Takes over the values that the engine knows by now: a merge may have brought new ones, and
    /// longer ones.
    void RefreshValues();

 private:
    std::string fName;
    embedded::RecordLayout fLayout;
    std::unique_ptr<INBAlgorithm> fpEngine;
    std::int32_t fTarget = -1;
};

/// What an engine's status means to who called it; empty for success.
std::string ReasonOf(const NBStatus& status, const SavedModel& model);

}  // namespace app

#endif  // PREDSEL_APPS_SAVEDMODEL_H
