#include "embedded/HostSession.h"
#include "embedded/command/AsciiCase.h"
#include "embedded/command/CommandTokens.h"
#include "host/CommandLanguage.h"

std::string TokenInfoObj::getUpperString() const { return embedded::UpperAscii(fText); }

// The embedded host has no other source of tokens than the running command.
KOLT_TokenSequence::KOLT_TokenSequence(bool /*fromCurrentCommand*/) {}

const TokenInfoObj& KOLT_TokenSequence::Peek() const {
    const embedded::CommandTokens& command = embedded::HostSession::Active().Command();
    return fPosition < command.Tokens().size() ? command.Tokens()[fPosition] : command.EndToken();
}

void KOLT_TokenSequence::Advance() {
    if (Peek().Kind() != TokenKind::End) ++fPosition;
}
