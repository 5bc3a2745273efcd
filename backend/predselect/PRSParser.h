#ifndef PREDSEL_BACKEND_PRSPARSER_H
#define PREDSEL_BACKEND_PRSPARSER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "backend/predselect/PRSMessage.h"
#include "host/CommandLanguage.h"

class PRSValidSpecs;

/// Reads one SELECTPRED or NAIVEBAYES command into its PRSValidSpecs. The host checks the form of
/// the command by PRSGrammar and refuses a subcommand without any parameter; one handler a
/// subcommand then checks its sense against the data and stores it. A handler reports a fault where
/// it finds it and returns false.
///
/// Owns the variable lists that the specs point at, so it has to outlive every reader of them.
class PRSParser {
 public:
    /// All three borrowed. The specs say which command it is.
    PRSParser(KOLT_TokenSequence& tokens, PRSValidSpecs& specs, ProcedureDataSource& source);
    ~PRSParser();
    PRSParser(const PRSParser&) = delete;
    PRSParser& operator=(const PRSParser&) = delete;

    /// Called once. False after a message. A true result may still leave the host's error word set:
    /// a bad exclusion list is reported but doesn't fail its handler. When all is well, split files
    /// are switched off for the run, with a warning.
    bool Parse();

 private:
    /// The subcommands of the command, null where absent. Borrowed from the CommandSpec of Parse.
    struct SubComs {
        const SubComObj* fpNameless = nullptr;
        const SubComObj* fpExcept = nullptr;
        const SubComObj* fpScreening = nullptr;
        const SubComObj* fpCriteria = nullptr;
        const SubComObj* fpMissing = nullptr;
        const SubComObj* fpMacroVar = nullptr;
        const SubComObj* fpPrint = nullptr;
        const SubComObj* fpPlot = nullptr;
        const SubComObj* fpForce = nullptr;
        const SubComObj* fpTrainSample = nullptr;
        const SubComObj* fpSubset = nullptr;
        const SubComObj* fpSave = nullptr;
        const SubComObj* fpOutfile = nullptr;
    };
    using Handler = bool (PRSParser::*)(const SubComObj& subcommand);

    /// The kinds of predictors that decide which ranking criteria exist.
    struct PredictorMix {
        bool fbAllCategorical;  // categorical target, factors only
        bool fbMixed;           // categorical target, factors and covariates
    };

    void MakeVarSpecs();
    bool HandleSubComs(const CommandSpec& command);
    bool Run(const SubComObj* subcommand, Handler handler);

    bool HandleWeight();
    bool HandleForce(const SubComObj& subcommand);
    bool HandleTrainSample(const SubComObj& subcommand);
    bool HandleExcept(const SubComObj& subcommand);
    bool HandleNameless(const SubComObj& subcommand);
    bool ExcludeForced(const std::string& targetName, std::vector<const VarSpecObj*> exclusion);
    bool ReadTargetKind(const std::string& targetName, bool& isCatOut);
    bool HandleNaiveCriteria(const SubComObj& subcommand);
    bool HandleSelectCriteria(const SubComObj& subcommand);
    bool HandleMissing(const SubComObj& subcommand);
    bool HandleMacroVar(const SubComObj& subcommand);
    bool HandlePrint(const SubComObj& subcommand);
    void AddPrintRanks(const ParamObj& summary);
    bool HandlePlot(const SubComObj& subcommand);
    bool HandleScreening(const SubComObj& subcommand);
    bool HandleSubset(const SubComObj& subcommand);
    bool ReadMaxSize(const ParamObj& parameter, std::int32_t& maxSizeOut, bool& pseudoBICOut,
                     bool& testDataOut);
    bool ReadBestSubset(const TokenList& tokens, bool& pseudoBICOut, bool& testDataOut);
    bool HandleSave(const SubComObj& subcommand);
    bool ReadPredVal(const ParamObj& parameter);
    bool ReadPredProb(const ParamObj& parameter);
    bool HandleOutfile(const SubComObj& subcommand);

    /// A parameter without which the host refuses the subcommand.
    static const ParamObj& Required(const SubComObj& subcommand, std::string_view name);
    bool IsNoSelection() const;
    PredictorMix GetPredictorMix() const;
    std::int32_t GetPredictorCount() const {
        return static_cast<std::int32_t>(fvPredictList.size());
    }

    bool fbUniVariable = true;
    std::unique_ptr<CommandDescriptor> fpCommandDesc;
    KOLT_TokenSequence* fpTokens;  // borrowed from the constructor's caller, as the next two
    PRSValidSpecs* fpValidSpecs;
    ProcedureDataSource* fpActiveDS;
    ParserMessage fParserMessage;
    PRSMessage fMessage;
    SubComs fSubComs;
    std::vector<std::int32_t> fvPredictList;  // ascending
    std::vector<bool> fvPredCatFlags;
    std::vector<std::int32_t> fvForceList;  // ascending
    std::vector<bool> fvForceCatFlags;
    std::unique_ptr<VarSpecObj> fpWeightSpec;
    std::unique_ptr<VarSpecObj> fpDependSpec;
    std::unique_ptr<VarSpecObj> fpFactorSpec;
    std::unique_ptr<VarSpecObj> fpCovarSpec;
    std::unique_ptr<VarSpecObj> fpExceptSpec;
    std::unique_ptr<VarSpecObj> fpForceFactorSpec;
    std::unique_ptr<VarSpecObj> fpForceCovarSpec;
    std::unique_ptr<VarSpecObj> fpTrainVarSpec;
};

#endif  // PREDSEL_BACKEND_PRSPARSER_H
