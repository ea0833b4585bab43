// Splitting of operator input: a text into commands at ";" and a command into words at blanks.
// Double or single quotes group a word that holds blanks or ";" (the quotes are dropped); inside
// quotes a backslash takes the next character as it is, and "\xHH" is the byte of those two hex
// digits. Outside quotes "#" starts a comment that runs to the end of the line.
#pragma once

#include <string>
#include <vector>

namespace vesk {
namespace host {
namespace cli {

// The commands of `text`, each trimmed, comments dropped; empty ones are dropped too. Quoted ";"
// and "#" do not split.
std::vector<std::string> splitCommands(const std::string& text);

// The words of one command. False, with the reason in `error`, for an unterminated quote.
bool splitWords(const std::string& command, std::vector<std::string>* words, std::string* error);

// "name=value" split at the first "="; false when either part is missing.
bool splitPair(const std::string& word, std::string* name, std::string* value);

}  // namespace cli
}  // namespace host
}  // namespace vesk
