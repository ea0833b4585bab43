// The one-writer rule of a state directory: an exclusive lock on the directory itself, held from
// the open of its store to the close. The lock belongs to the open file description, so it dies
// with the process that holds it: a writer killed with SIGKILL never blocks the next start.
#pragma once

#include <string>

namespace vesk {
namespace db {

class StateLock {
  public:
    StateLock() = default;
    ~StateLock();
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;

    enum Result { kTaken, kBusy, kFailed };
    // Takes the lock on `directory` without waiting. kBusy, with "the state directory DIR is in
    // use by process PID" in `error`, when another holder has it; kFailed, with the reason, when
    // the directory cannot be opened or locked.
    Result acquire(const std::string& directory, std::string* error);
    void release();

  private:
    int _fd = -1;
};

}  // namespace db
}  // namespace vesk
