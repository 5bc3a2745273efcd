#include "featureselect/FSFactory.h"

#include "featureselect/FSAlgorithm.h"

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFromSettings(FSSettings& settings) {
    if (fState == State::kShutDown) return nullptr;
    std::unique_ptr<IFSAlgorithm> algorithm = std::make_unique<FSAlgorithm>(settings);
    fStatus = algorithm->GetStatus();
    if (fStatus.IsError()) algorithm.reset();
    return algorithm;
}

void FSFactory::Shutdown() {
    fState = State::kShutDown;
    fStatus = FSStatus::Cancelled();
}
