// Completion of the word being typed at the prompt: command names, dns (the MOs from the live
// data, read through the agent), class and attribute names (from the model) and the literals of
// an enumeration (or true and false). Called from the line editor on the console's thread.
#pragma once

#include <string>
#include <vector>

namespace vesk {
namespace host {
namespace cli {

class Shell;

struct Completions {
    std::vector<std::string> words;  // each begins with the word typed so far
    bool space = true;               // whether a single match is followed by a blank
};

// The completions of `partial`, the word under the cursor, where `before` is the text of the
// line in front of it.
Completions complete(Shell& shell, const std::string& before, const std::string& partial);

}  // namespace cli
}  // namespace host
}  // namespace vesk
