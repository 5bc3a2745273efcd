#include <algorithm>
#include <exception>
#include <istream>
#include <new>

#include "host/Xml.h"
#include "naivebayes/IOException.h"
#include "naivebayes/NBAlgorithm.h"

namespace {

/// restore(engine) fills it, or throws, or is false when something is wrong around it.
template <class Restore>
std::unique_ptr<INBAlgorithm> Restored(NBStatus& status, std::istream& stream,
                                       std::uint32_t failure, Restore restore) {
    status = NBStatus();
    if (stream.fail()) {
        status = NBStatus(NBCode::kStreamFailed, false);
        return nullptr;
    }
    try {
        auto algorithm = std::make_unique<NBAlgorithm>();
        if (restore(*algorithm)) return algorithm;
    } catch (const MCNaive::IOException* exception) {
        delete exception;
    } catch (const std::exception&) {
        // No memory for what did arrive, or a stream that throws.
    }
    status = NBStatus(failure, false);
    return nullptr;
}

/// The first variable that is empty or constant, -1 when roles alone are at fault.
std::int32_t FirstOf(const std::vector<std::int32_t>& constants,
                     const std::vector<std::int32_t>& empties) {
    std::vector<std::int32_t> all = constants;
    all.insert(all.end(), empties.begin(), empties.end());
    return all.empty() ? -1 : *std::min_element(all.begin(), all.end());
}

/// Roles can be set so that the one target has not the target's index, or is no categorical
/// variable.
bool HasUsableTarget(const NBVarList& list) {
    const INBVariable* const target = list.GetVariable(list.GetTargetIndex());
    return target != nullptr && target->GetRole() == NBRole::kTarget &&
           target->GetMeasureLevel() != NBMeasureLevel::kContinuous;
}

}  // namespace

std::unique_ptr<INBAlgorithm> CreateNBAlgorithm(NBStatus& status,
                                                const NaiveBayesSettings& settings,
                                                const NBVarList& varList) {
    status = NBStatus();
    try {
        NBVarList checked = varList;  // checking takes over the encoders' numbers of categories
        std::vector<std::int32_t> constants;
        std::vector<std::int32_t> empties;
        if (!checked.ValidateVariables(constants, empties, true) || !HasUsableTarget(checked)) {
            status = NBStatus(NBCode::kBadVarList, false);
            status.SetIntArg(1, FirstOf(constants, empties));
            return nullptr;
        }
        std::unique_ptr<INBAlgorithm> algorithm = std::make_unique<NBAlgorithm>(settings, checked);
        status = algorithm->GetStatus();
        if (status.IsError()) algorithm.reset();
        return algorithm;
    } catch (const std::bad_alloc&) {
        status = NBStatus(NBCode::kNoMemory, false);
        return nullptr;
    }
}

std::unique_ptr<INBAlgorithm> RestoreNBAlgorithm(NBStatus& status, std::istream& stream) {
    return Restored(status, stream, NBCode::kBinaryRestore, [&stream](NBAlgorithm& algorithm) {
        algorithm.RestoreBinary(stream);
        return true;
    });
}

std::unique_ptr<INBAlgorithm> RestoreNBAlgorithmXML(NBStatus& status, std::istream& stream) {
    return Restored(status, stream, NBCode::kXMLRestore, [&stream](NBAlgorithm& algorithm) {
        MCCommonXML::XMLReader document(stream);
        const auto docType = MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd");
        // Without its root nothing else can be read either, and the engine says so.
        document.ParseStartRoot(*docType);
        algorithm.RestoreXML(document);
        return document.ParseEndRoot();
    });
}
