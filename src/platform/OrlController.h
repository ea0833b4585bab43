// The management host's status, as the embedding program reports it.
#pragma once

#include <string>

class OrlController {
  public:
    enum Status {
        TIB_NOT_STARTED = 0,
        TIB_STARTING = 1,
        TIB_INITIALIZING = 2,
        TIB_RUNNING = 3,  // up and operating
        TIB_SHUTTING_DOWN = 4,
        TIB_STOPPED = 5,
    };
    // The current status; 3 unless the embedding program set another. Any thread.
    static int getStatus();
    // "TIB_RUNNING", "TIB_SHUTTING_DOWN", ...; "TIB_UNKNOWN_STATUS" for other values.
    static std::string OrlStatusLiteral(int status);
};
