// Shell commands run on behalf of a component.
#pragma once

#include <string>

enum e_eComp { e_eComp_VeskCM = 13 };

// "rm PATH", "rm -f PATH", "rm -rf PATH" and "rm -rf DIR/*" are carried out by the station itself,
// all after the options taken as one path, so that no file name reaches a shell; the status is
// rm's (0 removed, 1 not). Any other command:
// Runs `command` with /bin/sh -c and waits for it, up to the station's time limit (default
// 300 s; a command that runs longer is killed). Logs the command and its exit status. Returns
// the exit status, or -1 if the command could not run, was killed or timed out. When `second`
// is not empty, the command's output is appended to that file; otherwise it is discarded.
// `flag` is not used. Blocks the calling thread; any thread.
int executeCmd(e_eComp component, std::string const& command, std::string const& second, bool flag);
int executeCmd(int component, std::string const& command, std::string const& second, bool flag);
