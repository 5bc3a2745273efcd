#ifndef PREDSEL_BACKEND_SAVEDSTATE_H
#define PREDSEL_BACKEND_SAVEDSTATE_H

#include <ostream>
#include <string>
#include <utility>

#include "host/EngineState.h"

/// Either engine as the host may save it. A save is good when the engine did not refuse and the
/// stream took everything.
template <class Engine>
class SavedState final : public SavableEngine {
 public:
    /// engine is borrowed.
    SavedState(std::string commandName, Engine& engine)
        : fCommandName(std::move(commandName)), fEngine(engine) {}

    std::string GetCommandName() const override { return fCommandName; }
    bool SaveBinary(std::ostream& stream) const override {
        return !fEngine.SaveBinary(stream).IsError() && stream.good();
    }
    bool SaveXML(std::ostream& stream) const override {
        return !fEngine.SaveXML(stream).IsError() && stream.good();
    }

 private:
    std::string fCommandName;
    Engine& fEngine;
};

#endif  // PREDSEL_BACKEND_SAVEDSTATE_H
