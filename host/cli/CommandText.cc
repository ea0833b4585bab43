#include "host/cli/CommandText.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

std::string trim(const std::string& text) {
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return std::string();
    }
    size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::vector<std::string> splitCommands(const std::string& text) {
    std::vector<std::string> commands;
    std::string current;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (quoted && c == '\\' && i + 1 < text.size()) {
            current += c;
            current += text[++i];
            continue;
        }
        if (c == '"') {
            quoted = !quoted;
        }
        if (c == ';' && !quoted) {
            commands.push_back(trim(current));
            current.clear();
            continue;
        }
        current += c;
    }
    commands.push_back(trim(current));
    std::vector<std::string> kept;
    for (std::string& command : commands) {
        if (!command.empty()) {
            kept.push_back(std::move(command));
        }
    }
    return kept;
}

bool splitWords(const std::string& command, std::vector<std::string>* words, std::string* error) {
    words->clear();
    std::string word;
    bool inWord = false;
    bool quoted = false;
    for (size_t i = 0; i < command.size(); ++i) {
        char c = command[i];
        if (quoted) {
            if (c == '\\' && i + 1 < command.size()) {
                word += command[++i];
            } else if (c == '"') {
                quoted = false;
            } else {
                word += c;
            }
        } else if (c == '"') {
            quoted = true;
            inWord = true;
        } else if (isBlank(c)) {
            if (inWord) {
                words->push_back(word);
            }
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (quoted) {
        *error = "unterminated quote";
        return false;
    }
    if (inWord) {
        words->push_back(word);
    }
    return true;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk
