#ifndef PREDSEL_HOST_COMMANDLANGUAGE_H
#define PREDSEL_HOST_COMMANDLANGUAGE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/Data.h"

namespace TokenSequenceBase {

/// Operators by the host's codes.
enum OperatorCode : std::int32_t {
    kOpNone = 0,
    kOpEquals = 3,
    kOpSlash = 5,
    kOpMinus = 7,
    kOpStar = 9,
    kOpComma = 11,
    kOpLeftParen = 13,
    kOpRightParen = 14,
    kOpColon = 16,
    kOpRange = 18,     // ".."
    kOpSemicolon = 20  // ends a command
};

}  // namespace TokenSequenceBase

enum class TokenKind { Name, Number, String, Operator, End };

/// One token of a command. A word and a name in double quotes are names; a text in single quotes
/// is a string. Characters that are no part of the language never become tokens: the host refuses
/// the text before it runs a command.
class TokenInfoObj {
 public:
    TokenInfoObj() = default;
    TokenInfoObj(TokenKind kind, std::string text, std::int32_t line, std::int32_t column)
        : fText(std::move(text)), fKind(kind), fLine(line), fColumn(column) {}

    TokenKind Kind() const { return fKind; }
    /// A word or quoted name, so that it may name a variable.
    bool IsVarName() const { return fKind == TokenKind::Name; }
    bool IsNumber() const { return fKind == TokenKind::Number; }
    /// A word, quoted name or string.
    bool IsString() const { return fKind == TokenKind::Name || fKind == TokenKind::String; }
    /// True for a name that stood in double quotes: never a keyword, pattern or ALL.
    bool IsQuoted() const { return fbQuoted; }
    /// The number; 0 for any other token.
    double getNumeric() const { return fNumber; }
    /// TokenSequenceBase::OperatorCode; kOpNone for any other token.
    std::int32_t getOperatorCode() const { return fOperator; }
    /// The text without quotes; a number as it was typed.
    const std::string& getString() const { return fText; }
    /// The same with ASCII letters in upper case.
    std::string getUpperString() const;
    KoltVarName getVarName() const { return KoltVarName(fText); }

    /// Where it stands: line and column from 1; the column counts characters, not bytes.
    std::int32_t Line() const { return fLine; }
    std::int32_t Column() const { return fColumn; }

    void SetNumber(double number) { fNumber = number; }
    void SetOperator(std::int32_t code) { fOperator = code; }
    void SetQuoted(bool quoted) { fbQuoted = quoted; }

 private:
    std::string fText;
    double fNumber = 0;
    TokenKind fKind = TokenKind::End;
    std::int32_t fOperator = TokenSequenceBase::kOpNone;
    std::int32_t fLine = 0;
    std::int32_t fColumn = 0;
    bool fbQuoted = false;
};

using TokenList = std::vector<TokenInfoObj>;

/// The tokens of the running command, after its name.
class KOLT_TokenSequence {
 public:
    /// fromCurrentCommand is true for a procedure.
    explicit KOLT_TokenSequence(bool fromCurrentCommand);
    KOLT_TokenSequence(const KOLT_TokenSequence&) = delete;
    KOLT_TokenSequence& operator=(const KOLT_TokenSequence&) = delete;
    /// The token at the position, or one of kind End behind the last.
    const TokenInfoObj& Peek() const;
    void Advance();

 private:
    std::size_t fPosition = 0;
};

/// Value form of a parameter.
enum ParamSpec : std::int32_t {
    kParamKeyword = 1,     // bare keyword, no value
    kParamTokenList = 2,   // a list of tokens, examined by the procedure
    kParamOneString = 3,   // one keyword from the list of addStringValue
    kParamStringList = 5,  // several keywords from that list
    kParamNumber = 7,      // a number
    kParamInteger = 9,     // an integer; with addStringValue also that keyword
    kParamVariable = 15,   // one variable name
    kParamFile = 20        // a file path
};

/// Form of a subcommand.
enum SubComSpec : std::int32_t {
    kSubComVarList = 0,  // the variable list that opens a command
    kSubComParams = 1,   // named parameters
    kSubComKeywords = 2  // keywords
};

/// Whether a bound itself is allowed.
enum BdryOption : std::int32_t { kBdryIncluded = 1, kBdryExcluded = 2 };

/// One parameter of a subcommand. A value: adding it to a subcommand copies it, so what is set
/// afterwards reaches the copy no more.
class ParamDescriptor {
 public:
    /// valueRequired false: the value may be left out; brackets is 0, the one form that there is.
    ParamDescriptor(std::string name, ParamSpec spec, bool mandatory, bool valueRequired,
                    std::int32_t brackets = 0);
    void addStringValue(std::string word);
    void setLowerBdry(double bound, BdryOption option);
    void setUpperBdry(double bound, BdryOption option);
    /// Qualifiers in parentheses after the value: NAME=WORD. They stay among the value's tokens
    /// with their parentheses, for the procedure to examine. Option 0, the one that there is: they
    /// may be left out.
    void setQualifOption(std::int32_t option);
    void addQualifDesc(std::string name);

    const std::string& Name() const { return fName; }
    ParamSpec Spec() const { return fSpec; }
    bool IsMandatory() const { return fbMandatory; }
    bool IsValueRequired() const { return fbValueRequired; }
    const std::vector<std::string>& StringValues() const { return fvStringValues; }
    const std::vector<std::string>& Qualifiers() const { return fvQualifiers; }
    bool HasLower() const { return fbLower; }
    bool HasUpper() const { return fbUpper; }
    double Lower() const { return fLower; }
    double Upper() const { return fUpper; }
    BdryOption LowerOption() const { return fLowerOption; }
    BdryOption UpperOption() const { return fUpperOption; }

 private:
    std::string fName;
    ParamSpec fSpec;
    bool fbMandatory;
    bool fbValueRequired;
    bool fbLower = false;
    bool fbUpper = false;
    double fLower = 0;
    double fUpper = 0;
    BdryOption fLowerOption = kBdryIncluded;
    BdryOption fUpperOption = kBdryIncluded;
    std::vector<std::string> fvStringValues;
    std::vector<std::string> fvQualifiers;
};

/// One subcommand; the nameless one has an empty name.
class SubComDescriptor {
 public:
    SubComDescriptor(std::string name, SubComSpec spec, bool mandatory);
    void addParamDescriptor(const ParamDescriptor& parameter);

    const std::string& Name() const { return fName; }
    SubComSpec Spec() const { return fSpec; }
    bool IsMandatory() const { return fbMandatory; }
    const std::vector<ParamDescriptor>& Params() const { return fvParams; }

 private:
    std::string fName;
    SubComSpec fSpec;
    bool fbMandatory;
    std::vector<ParamDescriptor> fvParams;
};

/// The grammar of one command.
class CommandDescriptor {
 public:
    explicit CommandDescriptor(std::string name);
    void addSubComDescriptor(const SubComDescriptor& subcommand);

    const std::string& Name() const { return fName; }
    const std::vector<SubComDescriptor>& SubComs() const { return fvSubComs; }

 private:
    std::string fName;
    std::vector<SubComDescriptor> fvSubComs;
};

/// One parameter as it was written.
class ParamObj {
 public:
    ParamObj(std::string name, TokenInfoObj word)
        : fName(std::move(name)), fWord(std::move(word)) {}

    /// The declared name, in upper case.
    const std::string& getParamName() const { return fName; }
    /// True when the parameter was written without a value.
    bool isLeadingToken() const { return fvTokens.empty(); }
    /// True when the value is this keyword, without regard to case.
    bool isStringValueCase(std::string_view word) const;
    /// The first token of the value as it was typed.
    std::string getStringToken() const;
    /// The first token as a number or integer.
    double getNumeric() const;
    std::int32_t getInteger() const;
    /// The value's keywords as typed and in upper case, same size and order.
    std::vector<std::string> getStringList() const;
    std::vector<std::string> getUpperStringList() const;
    /// All tokens of the value, commas of a list included. For SUBSET MAXSIZE the qualifier's
    /// parentheses are among them; the parentheses around a list are not.
    const TokenList& getTokenList() const { return fvTokens; }
    KoltVarName getVarName() const;
    /// The path of a file parameter: false when there is none. Both flags are the host's.
    bool getFilePath(std::string& pathOut, bool expand, bool forWriting) const;
    /// Where the parameter's name stands.
    const TokenInfoObj& Word() const { return fWord; }

    void SetTokens(TokenList tokens) { fvTokens = std::move(tokens); }

 private:
    std::string fName;
    TokenInfoObj fWord;
    TokenList fvTokens;
};

/// One subcommand as it was written.
class SubComObj {
 public:
    SubComObj(std::string name, TokenInfoObj word)
        : fName(std::move(name)), fWord(std::move(word)) {}

    const std::string& getSubComName() const { return fName; }
    /// Null when the parameter was not written. Borrowed.
    const ParamObj* getParamObj(std::string_view name) const;
    /// Parameters in the order in which they were written.
    std::int32_t getParamListSize() const { return static_cast<std::int32_t>(fvParams.size()); }
    const ParamObj& getParamObjAt(std::int32_t position) const {
        return fvParams[static_cast<std::size_t>(position)];
    }
    /// The tokens of a variable list that opens a command.
    const TokenList& exportParamObj() const { return fvTokens; }
    const TokenInfoObj& Word() const { return fWord; }

    void AddParam(ParamObj parameter) { fvParams.push_back(std::move(parameter)); }
    void SetTokens(TokenList tokens) { fvTokens = std::move(tokens); }

 private:
    std::string fName;
    TokenInfoObj fWord;
    std::vector<ParamObj> fvParams;
    TokenList fvTokens;
};

/// A command as it was written, filled by UniversalParser.
class CommandSpec {
 public:
    /// Null when the subcommand was not written; the nameless one by the empty name. Borrowed.
    const SubComObj* getSubComObj(std::string_view name) const;
    void AddSubCom(SubComObj subcommand) { fvSubComs.push_back(std::move(subcommand)); }

 private:
    std::vector<SubComObj> fvSubComs;
};

/// Reads the tokens of a command by its descriptor. Everything that the descriptor rules out is
/// reported here, with line and column and what was expected.
///
/// A value is written PARAM=value or PARAM(value), a list PARAM=(a b), PARAM=(a, b), PARAM(a b) or
/// PARAM=a b up to the next parameter. Words are written out, in any case. A subcommand holds at
/// least one parameter, each subcommand and parameter stands at most once.
class UniversalParser {
 public:
    /// All three borrowed.
    UniversalParser(KOLT_TokenSequence& tokens, CommandSpec& spec,
                    const CommandDescriptor& descriptor);
    /// Zero on success, else how many faults were reported: one a subcommand at most.
    std::int32_t getCommandSpecifications();

 private:
    KOLT_TokenSequence& fTokens;
    CommandSpec& fSpec;
    const CommandDescriptor& fDescriptor;
};

/// The messages of the command language. Each reports an error, unless told otherwise, and sets
/// the host's error word.
class ParserMessage {
 public:
    void SetCommandName(std::string name) { fCommandName = std::move(name); }
    /// The heading under which the procedure's output stands.
    void SetProcedureTitle(std::string title) { fProcedureTitle = std::move(title); }
    /// A warning: the run ignores split files.
    void DisableSplit() const;
    /// The text of a key with its placeholders filled.
    std::string GetTranslatedText(std::string_view key,
                                  const std::vector<std::string>& arguments = {}) const;

    void ParamExclusive(std::string_view first, std::string_view second,
                        std::string_view subcommand) const;
    void InvalidParamWithWeight(std::string_view parameter, std::string_view subcommand) const;
    /// Parameter and subcommand are empty for the nameless list.
    void NeedDepVarCat(std::string_view variable, std::string_view parameter,
                       std::string_view subcommand) const;
    void VariableNoQualif(std::string_view variable, std::string_view parameter,
                          std::string_view subcommand) const;
    void VariableInvalidQualif(std::string_view variable, std::string_view parameter,
                               std::string_view subcommand) const;
    void ParamExclAnyOther(std::string_view parameter, std::string_view subcommand) const;
    /// A warning: the command shows no table.
    void NoTableRequested() const;
    void InvalidParam(std::string_view text, std::string_view subcommand) const;
    void InvalidParamOption(std::string_view text, std::string_view parameter,
                            std::string_view subcommand) const;
    void WrongValueType(std::string_view parameter, std::string_view subcommand) const;
    /// Options by BdryOption, 0 for a bound that does not exist.
    void ParamValueBreakBdry(double value, double lower, std::int32_t lowerOption, double upper,
                             std::int32_t upperOption, std::string_view parameter,
                             std::string_view subcommand) const;
    void NeedSubComForParam(std::string_view neededSubcommand, std::string_view parameter,
                            std::string_view option) const;
    void InvalidVarName(std::string_view text, std::string_view parameter,
                        std::string_view subcommand) const;
    void ParamNeedInteger(std::string_view parameter, std::string_view subcommand) const;

 private:
    std::string fCommandName;
    std::string fProcedureTitle;
};

/// A list of variables that a command names, resolved against the dictionary.
///
/// A list holds names, first..last in the order of the file, stem* and ALL, with blanks or commas
/// between them. A name stands for the variable of exactly that name, else for the only one that
/// has it but for the case of ASCII letters. A variable that a range, a pattern or ALL would bring
/// in, and that has a place already, is left out silently; so are string variables where only
/// numeric ones serve. Named by its own name, either is a fault.
class VarSpecObj {
 public:
    /// parameter and subcommand say where the list stands, for messages; numericOnly refuses string
    /// variables.
    VarSpecObj(std::string parameter, std::string subcommand, const CommandDescriptor& command,
               const ProcedureDataSource& source, bool numericOnly);
    /// The same with the command's name, or a word that stands in its place.
    VarSpecObj(std::string parameter, std::string subcommand, const std::string& command,
               const ProcedureDataSource& source, bool numericOnly);

    /// Takes the one variable of this dictionary index. False, with a message, when it cannot
    /// serve.
    bool SetVariable(std::int32_t index);
    /// Resolves a list. repeatOption 0 refuses a variable named twice, 2 drops the repetition.
    /// False, with a message, when it cannot be resolved; the list is empty then.
    bool ValidateVariables(const TokenList& tokens, std::int32_t repeatOption);
    /// Resolves one name: its index, or a negative number after a message.
    std::int32_t ValidateVariable(const KoltVarName& name);
    /// Resolves `target [(qualifiers)] [BY factors] [WITH covariates]`: the target into this
    /// object, the others into theirs. Variables of the exclusion list are dropped from both; a
    /// target that the exclusion list names by its own name is a fault. So is a predictor named in
    /// both lists, under either repeatOption. With neither BY nor WITH and SetAllVarsByDefault, all
    /// other variables are predictors by measurement level: scale ones covariates, the rest
    /// factors. False, with a message, also when no predictor is left.
    bool ValidateRegrVarList(const TokenList& tokens, VarSpecObj& factors, VarSpecObj& covariates,
                             std::int32_t repeatOption,
                             const std::vector<const VarSpecObj*>& exclusion);
    /// Qualifiers after the target are refused, as by VariableNoQualif, unless allowed.
    void SetAllowQualifiers(bool allow) { fbAllowQualifiers = allow; }
    void SetAllVarsByDefault(bool allVars) { fbAllVarsByDefault = allVars; }
    /// String-table key of the message when no predictor is left. That message is about the data:
    /// it is an error, but none of the command language.
    void SetNoVarsMessage(std::string key) { fNoVarsKey = std::move(key); }

    /// True when the two share no variable; else the clash is reported.
    bool CheckCommonVars(const VarSpecObj& other) const;
    /// Drops all variables of the others from this object; true when any remain. Level 0, the one
    /// that there is: silently.
    bool ExcludeCommonVars(const std::vector<const VarSpecObj*>& others, std::int32_t level);
    /// Negative when the name is free for a new variable, else 0 or above after a message. A name
    /// is free when no variable has it, the case of ASCII letters aside, when it neither begins nor
    /// ends with a blank and holds no control character. It may be as long as any name of the data.
    std::int32_t CheckNewVariable(const KoltVarName& name) const;
    /// A free name: the root itself when it is free, else the root with the lowest free number
    /// from 1 behind it. False, with a message, when the root cannot be part of a name.
    bool NewVarNameByRoot(const KoltVarName& root, KoltVarName& nameOut) const;
    /// count free names: the root with consecutive numbers behind it, from 1 or from the lowest
    /// number from which all are free. False, with a message, as above.
    bool NewVarNamesByRoot(const KoltVarName& root, std::int32_t count,
                           std::vector<KoltVarName>& namesOut) const;

    const std::vector<std::int32_t>& GetValidVarList() const { return fvIndices; }
    /// The first variable's index, -1 when there is none.
    std::int32_t GetValidVarInd() const { return fvIndices.empty() ? -1 : fvIndices.front(); }
    /// The first variable is nominal, ordinal or a string.
    bool IsCatVar() const;
    /// What stood in parentheses after the target, without them.
    const TokenList& GetQualifierTokens() const { return fvQualifiers; }
    /// The first variable's name as the dictionary has it.
    std::string GetFirstName() const;

 private:
    struct Resolver;  // the host's

    /// How a variable came into the list.
    struct Origin {
        std::int32_t fLine;  // 0 when not written in the command
        std::int32_t fColumn;
        bool fbByName;  // by its own name, not by a range, a pattern or ALL
    };

    void Clear();
    void Add(std::int32_t index, Origin origin);
    std::vector<bool> Members() const;
    bool RefuseCommonVar(std::size_t position, const VarSpecObj& other) const;
    bool RefuseName(const std::string& name) const;

    std::string fParameter;
    std::string fSubcommand;
    std::string fRole;  // the list in messages
    std::string fNoVarsKey = "No predictors available in data...";
    std::vector<std::string> fvSubcommandNames;
    const ProcedureDataSource* fpSource;  // borrowed
    bool fbNumericOnly;
    bool fbAllowQualifiers = false;
    bool fbAllVarsByDefault = false;
    std::vector<std::int32_t> fvIndices;
    std::vector<Origin> fvOrigins;  // one an index
    TokenList fvQualifiers;
};

#endif  // PREDSEL_HOST_COMMANDLANGUAGE_H
