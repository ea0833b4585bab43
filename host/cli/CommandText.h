// Splitting of operator input: a text into commands at ";" and a command into words at blanks.
// Double quotes group a word that holds blanks or ";" (the quotes are dropped); a backslash
// inside quotes takes the next character as it is.
#pragma once

#include <string>
#include <vector>

namespace vesk {
namespace host {
namespace cli {

// The commands of `text`, each trimmed; empty ones are dropped. Quoted ";" do not split.
std::vector<std::string> splitCommands(const std::string& text);

// The words of one command. False, with the reason in `error`, for an unterminated quote.
bool splitWords(const std::string& command, std::vector<std::string>* words, std::string* error);

}  // namespace cli
}  // namespace host
}  // namespace vesk
