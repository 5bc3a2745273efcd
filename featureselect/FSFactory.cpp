#include "featureselect/FSFactory.h"

#include <istream>
#include <utility>

#include "featureselect/FSAlgorithm.h"
#include "host/Xml.h"

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFromSettings(FSSettings& settings) {
    if (fState == State::kShutDown) return nullptr;
    return Checked(std::make_unique<FSAlgorithm>(settings));
}

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFromBinary(std::istream& stream) {
    if (!MayRestore(stream)) return nullptr;
    return Checked(std::make_unique<FSAlgorithm>(stream));
}

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFromXML(std::istream& stream) {
    if (!MayRestore(stream)) return nullptr;
    MCCommonXML::XMLReader document(stream);
    return Checked(std::make_unique<FSAlgorithm>(document));
}

std::unique_ptr<IFSAlgorithm> FSFactory::Checked(std::unique_ptr<IFSAlgorithm> algorithm) {
    fStatus = algorithm->GetStatus();
    if (fStatus.IsError()) algorithm.reset();
    return algorithm;
}

bool FSFactory::MayRestore(const std::istream& stream) {
    if (fState == State::kShutDown) return false;
    if (!stream.fail()) return true;
    fStatus = FSStatus::StreamUnusable();
    return false;
}

void FSFactory::Shutdown() {
    fState = State::kShutDown;
    fStatus = FSStatus::Cancelled();
}
