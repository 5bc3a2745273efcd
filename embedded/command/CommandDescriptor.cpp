#include <utility>

#include "host/CommandLanguage.h"

ParamDescriptor::ParamDescriptor(std::string name, ParamSpec spec, bool mandatory,
                                 bool valueRequired, std::int32_t /*brackets*/)
    : fName(std::move(name)), fSpec(spec), fbMandatory(mandatory), fbValueRequired(valueRequired) {}

void ParamDescriptor::addStringValue(std::string word) {
    fvStringValues.push_back(std::move(word));
}

void ParamDescriptor::setLowerBdry(double bound, BdryOption option) {
    fbLower = true;
    fLower = bound;
    fLowerOption = option;
}

void ParamDescriptor::setUpperBdry(double bound, BdryOption option) {
    fbUpper = true;
    fUpper = bound;
    fUpperOption = option;
}

void ParamDescriptor::setQualifOption(std::int32_t /*option*/) {}

void ParamDescriptor::addQualifDesc(std::string name) { fvQualifiers.push_back(std::move(name)); }

SubComDescriptor::SubComDescriptor(std::string name, SubComSpec spec, bool mandatory)
    : fName(std::move(name)), fSpec(spec), fbMandatory(mandatory) {}

void SubComDescriptor::addParamDescriptor(const ParamDescriptor& parameter) {
    fvParams.push_back(parameter);
}

CommandDescriptor::CommandDescriptor(std::string name) : fName(std::move(name)) {}

void CommandDescriptor::addSubComDescriptor(const SubComDescriptor& subcommand) {
    fvSubComs.push_back(subcommand);
}
