// Paths that the environment may override.
#pragma once

#include <string>

// The value of `environmentVariable` if it is set and not empty; otherwise `defaultPath`.
std::string getPath(char const* environmentVariable, std::string defaultPath);
