#include "host/cli/CommandText.h"

#include <cctype>

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

bool isQuote(char c) {
    return c == '"' || c == '\'';
}

// Inside quotes, the escape at text[i] (a backslash): appends what it stands for to `word` and
// returns the index of its last character.
size_t unescape(const std::string& text, size_t i, std::string* word) {
    const auto hex = [&](size_t at) { return std::isxdigit(static_cast<unsigned char>(text[at])); };
    if (i + 3 < text.size() && text[i + 1] == 'x' && hex(i + 2) && hex(i + 3)) {
        *word += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
        return i + 3;
    }
    *word += text[i + 1];
    return i + 1;
}

}  // namespace

std::vector<std::string> splitCommands(const std::string& text) {
    std::vector<std::string> commands;
    std::string current;
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (quote != 0 && c == '\\' && i + 1 < text.size()) {
            current += c;
            current += text[++i];
            continue;
        }
        if (quote == 0 && c == '#') {
            size_t end = text.find('\n', i);
            i = end == std::string::npos ? text.size() : end - 1;
            continue;
        }
        if (isQuote(c) && (quote == 0 || quote == c)) {
            quote = quote == 0 ? c : 0;
        }
        if (c == ';' && quote == 0) {
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
    char quote = 0;
    for (size_t i = 0; i < command.size(); ++i) {
        char c = command[i];
        if (quote != 0) {
            if (c == '\\' && i + 1 < command.size()) {
                i = unescape(command, i, &word);
            } else if (c == quote) {
                quote = 0;
            } else {
                word += c;
            }
        } else if (isQuote(c)) {
            quote = c;
            inWord = true;
        } else if (c == '#') {
            break;
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
    if (quote != 0) {
        *error = "unterminated quote";
        return false;
    }
    if (inWord) {
        words->push_back(word);
    }
    return true;
}

bool splitPair(const std::string& word, std::string* name, std::string* value) {
    size_t equals = word.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == word.size()) {
        return false;
    }
    *name = word.substr(0, equals);
    *value = word.substr(equals + 1);
    return true;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk
