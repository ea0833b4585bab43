#include "station/database/StateLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace vesk {
namespace db {

namespace {

// The process holding an flock on the file of `fd`, from /proc/locks; 0 if none is found. A
// line reads: "1: FLOCK  ADVISORY  WRITE 4242 fd:01:1048577 0 EOF". Lines of waiters
// carry "->" after the number and are skipped.
long lockHolderOf(int fd) {
    struct stat info;
    if (::fstat(fd, &info) != 0)
        return 0;
    char wanted[64];
    std::snprintf(wanted, sizeof wanted, "%02x:%02x:%llu", major(info.st_dev), minor(info.st_dev),
                  static_cast<unsigned long long>(info.st_ino));
    std::ifstream locks("/proc/locks");
    std::string line;
    while (std::getline(locks, line)) {
        std::istringstream fields(line);
        std::string number, kind, mode, access, pid, file;
        fields >> number >> kind;
        if (kind != "FLOCK")
            continue;
        fields >> mode >> access >> pid >> file;
        if (file == wanted)
            return std::atol(pid.c_str());
    }
    return 0;
}

}  // namespace

StateLock::~StateLock() {
    release();
}

StateLock::Result StateLock::acquire(const std::string& directory, std::string* error) {
    release();
    _fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (_fd < 0) {
        *error = directory + ": cannot open the state directory: " + std::strerror(errno);
        return kFailed;
    }
    if (::flock(_fd, LOCK_EX | LOCK_NB) == 0)
        return kTaken;
    int code = errno;
    Result result = code == EWOULDBLOCK ? kBusy : kFailed;
    if (result == kBusy) {
        long holder = lockHolderOf(_fd);
        *error =
            "the state directory " + directory + " is in use by " +
            (holder > 0 ? "process " + std::to_string(holder) : std::string("another process"));
    } else {
        *error = directory + ": cannot lock the state directory: " + std::strerror(code);
    }
    release();
    return result;
}

void StateLock::release() {
    if (_fd >= 0)
        ::close(_fd);  // closing the last descriptor of the description drops the lock
    _fd = -1;
}

}  // namespace db
}  // namespace vesk
