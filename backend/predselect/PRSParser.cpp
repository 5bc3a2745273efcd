#include "backend/predselect/PRSParser.h"

#include "backend/predselect/PRSGrammar.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "host/HostGlobals.h"

// The road of a command: declaration, form, order of the handlers. The handlers stand in
// PRSParserVariables.cpp, PRSParserOptions.cpp and PRSParserSubset.cpp.

PRSParser::PRSParser(KOLT_TokenSequence& tokens, PRSValidSpecs& specs, ProcedureDataSource& source)
    : fpTokens(&tokens), fpValidSpecs(&specs), fpActiveDS(&source) {}

PRSParser::~PRSParser() = default;

bool PRSParser::Parse() {
    fbUniVariable = fpValidSpecs->GetUniVariable();
    const char* commandName = fbUniVariable ? "SELECTPRED" : "NAIVEBAYES";
    fpCommandDesc = PRSGrammar::MakeDescriptor(
        commandName, fbUniVariable ? PRSGrammar::kSelectPred : PRSGrammar::kNaiveBayes);
    fParserMessage.SetCommandName(commandName);

    CommandSpec command;
    MakeVarSpecs();
    UniversalParser parser(*fpTokens, command, *fpCommandDesc);
    if (parser.getCommandSpecifications() != 0) {
        return false;
    }
    const bool ok = HandleSubComs(command);
    fSubComs = SubComs();  // they end with the CommandSpec

    std::int64_t* const words = pvGetCmnGlb();
    if (ok && words[kErrorWord] == 0 && words[kSplitFileCount] >= 1) {
        fParserMessage.DisableSplit();
        words[kSplitFileCount] = 0;
    }
    return ok;
}

void PRSParser::MakeVarSpecs() {
    const auto make = [this](const char* parameter, const char* subcommand, bool numericOnly) {
        return std::make_unique<VarSpecObj>(parameter, subcommand, *fpCommandDesc, *fpActiveDS,
                                            numericOnly);
    };
    fpWeightSpec = std::make_unique<VarSpecObj>("", "", "WEIGHT", *fpActiveDS, true);
    fpDependSpec = make("", "", false);
    fpFactorSpec = make("", "", false);
    fpCovarSpec = make("", "", true);
    fpExceptSpec = make("VARIABLES", "EXCEPT", false);
    fpForceFactorSpec = make("FACTORS", "FORCE", false);
    fpForceCovarSpec = make("COVARIATES", "FORCE", true);
    fpTrainVarSpec = make("VARIABLE", "TRAININGSAMPLE", true);
}

bool PRSParser::Run(const SubComObj* subcommand, Handler handler) {
    return subcommand == nullptr || (this->*handler)(*subcommand);
}

const ParamObj& PRSParser::Required(const SubComObj& subcommand, std::string_view name) {
    const ParamObj* parameter = subcommand.getParamObj(name);
    PREDSEL_ASSERT(parameter != nullptr, "parameter != 0");
    return *parameter;
}

bool PRSParser::HandleSubComs(const CommandSpec& command) {
    fSubComs.fpNameless = command.getSubComObj("");
    fSubComs.fpExcept = command.getSubComObj("EXCEPT");
    fSubComs.fpCriteria = command.getSubComObj("CRITERIA");
    fSubComs.fpMissing = command.getSubComObj("MISSING");
    fSubComs.fpMacroVar = command.getSubComObj("MACROVAR");
    fSubComs.fpPrint = command.getSubComObj("PRINT");
    fSubComs.fpPlot = command.getSubComObj("PLOT");

    bool ok = HandleWeight();

    if (fbUniVariable) {
        fSubComs.fpScreening = command.getSubComObj("SCREENING");
    } else {
        fSubComs.fpForce = command.getSubComObj("FORCE");
        fSubComs.fpTrainSample = command.getSubComObj("TRAININGSAMPLE");
        fSubComs.fpSubset = command.getSubComObj("SUBSET");
        fSubComs.fpSave = command.getSubComObj("SAVE");
        fSubComs.fpOutfile = command.getSubComObj("OUTFILE");
        // First, because the variable list leaves their variables out.
        ok = ok && Run(fSubComs.fpForce, &PRSParser::HandleForce) &&
             Run(fSubComs.fpTrainSample, &PRSParser::HandleTrainSample);
    }

    ok = ok && Run(fSubComs.fpExcept, &PRSParser::HandleExcept) &&
         Run(fSubComs.fpNameless, &PRSParser::HandleNameless) &&
         Run(fSubComs.fpCriteria,
             fbUniVariable ? &PRSParser::HandleSelectCriteria : &PRSParser::HandleNaiveCriteria) &&
         Run(fSubComs.fpMissing, &PRSParser::HandleMissing) &&
         Run(fSubComs.fpMacroVar, &PRSParser::HandleMacroVar) &&
         Run(fSubComs.fpPrint, &PRSParser::HandlePrint) &&
         Run(fSubComs.fpPlot, &PRSParser::HandlePlot);
    if (!ok) {
        return false;
    }
    if (fbUniVariable) {
        return Run(fSubComs.fpScreening, &PRSParser::HandleScreening);
    }

    if (fSubComs.fpSubset == nullptr) {
        const bool hasSample = fSubComs.fpTrainSample != nullptr;
        fpValidSpecs->SetSubset(0, !hasSample, hasSample, 0);
    }
    return Run(fSubComs.fpSubset, &PRSParser::HandleSubset) &&
           Run(fSubComs.fpSave, &PRSParser::HandleSave) &&
           Run(fSubComs.fpOutfile, &PRSParser::HandleOutfile);
}
