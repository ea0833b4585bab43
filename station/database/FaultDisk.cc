#include "station/database/FaultDisk.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace vesk {
namespace db {

// The real file lies in the same allocation, right after this header.
struct FaultDisk::File {
    sqlite3_file base;
    FaultDisk* owner;
    std::string path;
    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

namespace {

FaultDisk::File* of(sqlite3_file* file) {
    return reinterpret_cast<FaultDisk::File*>(file);
}

sqlite3_file* realOf(sqlite3_file* file) {
    return of(file)->real();
}

std::string readWhole(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

}  // namespace

FaultDisk::FaultDisk() : _real(sqlite3_vfs_find(nullptr)) {
    std::memset(&_vfs, 0, sizeof _vfs);
    _vfs.iVersion = 2;
    _vfs.szOsFile = static_cast<int>(sizeof(File)) + _real->szOsFile;
    _vfs.mxPathname = _real->mxPathname;
    _vfs.zName = "vesk-test-disk";
    _vfs.pAppData = this;
    _vfs.xOpen = &FaultDisk::open;
    _vfs.xDelete = &FaultDisk::remove;
    _vfs.xAccess = [](sqlite3_vfs* v, const char* n, int f, int* out) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xAccess(real, n, f, out);
    };
    _vfs.xFullPathname = [](sqlite3_vfs* v, const char* n, int size, char* out) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xFullPathname(real, n, size, out);
    };
    _vfs.xRandomness = [](sqlite3_vfs* v, int n, char* out) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xRandomness(real, n, out);
    };
    _vfs.xSleep = [](sqlite3_vfs* v, int micros) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xSleep(real, micros);
    };
    _vfs.xCurrentTime = [](sqlite3_vfs* v, double* now) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xCurrentTime(real, now);
    };
    _vfs.xGetLastError = [](sqlite3_vfs* v, int n, char* out) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xGetLastError(real, n, out);
    };
    _vfs.xCurrentTimeInt64 = [](sqlite3_vfs* v, sqlite3_int64* now) {
        sqlite3_vfs* real = static_cast<FaultDisk*>(v->pAppData)->_real;
        return real->xCurrentTimeInt64(real, now);
    };
    sqlite3_vfs_register(&_vfs, 1);
}

FaultDisk::~FaultDisk() {
    sqlite3_vfs_unregister(&_vfs);
    sqlite3_vfs_register(_real, 1);
}

void FaultDisk::arm() {
    _armedWrites = _armedSyncs = 0;
    _failWriteAt = _failSyncAt = _cutAt = 0;
    _diskFull = false;
}

void FaultDisk::failWrite(int nth) {
    std::lock_guard<std::mutex> lock(_mutex);
    arm();
    _failWriteAt = nth;
}

void FaultDisk::failSync(int nth) {
    std::lock_guard<std::mutex> lock(_mutex);
    arm();
    _failSyncAt = nth;
}

void FaultDisk::fillDisk() {
    std::lock_guard<std::mutex> lock(_mutex);
    arm();
    _diskFull = true;
}

void FaultDisk::cutPower(int nth) {
    std::lock_guard<std::mutex> lock(_mutex);
    arm();
    _cutAt = nth;
}

void FaultDisk::clear() {
    std::lock_guard<std::mutex> lock(_mutex);
    arm();
}

bool FaultDisk::powerIsOff() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _powerOff;
}

void FaultDisk::restoreSynced() {
    std::lock_guard<std::mutex> lock(_mutex);
    for (const auto& entry : _images) {
        if (entry.second.exists) {
            std::ofstream(entry.first, std::ios::binary | std::ios::trunc) << entry.second.bytes;
        } else {
            std::filesystem::remove(entry.first);
        }
    }
    arm();
    _powerOff = false;
}

void FaultDisk::copySynced(const std::string& from, const std::string& to) const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::filesystem::create_directories(to);
    for (const auto& entry : _images) {
        std::filesystem::path path(entry.first);
        if (entry.second.exists && path.parent_path() == from)
            std::ofstream(to / path.filename(), std::ios::binary) << entry.second.bytes;
    }
}

int FaultDisk::writes() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _writes;
}

std::vector<std::string> FaultDisk::synced() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _synced;
}

void FaultDisk::resetCounts() {
    std::lock_guard<std::mutex> lock(_mutex);
    _writes = 0;
    _synced.clear();
}

int FaultDisk::nextOperation(bool isSync) {
    std::lock_guard<std::mutex> lock(_mutex);
    int& count = isSync ? _armedSyncs : _armedWrites;
    ++count;
    if (!isSync)
        ++_writes;
    if (_cutAt > 0 && _armedSyncs + _armedWrites == _cutAt)
        _powerOff = true;
    if (_powerOff || count == (isSync ? _failSyncAt : _failWriteAt))
        return SQLITE_IOERR;
    return SQLITE_OK;
}

int FaultDisk::open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out) {
    auto* self = static_cast<FaultDisk*>(vfs->pAppData);
    File* f = of(file);
    f->base.pMethods = nullptr;
    f->owner = self;
    new (&f->path) std::string(name != nullptr ? name : "");
    if (!f->path.empty()) {
        std::lock_guard<std::mutex> lock(self->_mutex);
        if (self->_images.count(f->path) == 0) {  // as it stood before this disk saw it
            Image& image = self->_images[f->path];
            image.exists = std::filesystem::exists(f->path);
            if (image.exists)
                image.bytes = readWhole(f->path);
        }
    }
    int rc = self->_real->xOpen(self->_real, name, f->real(), flags, out);
    if (rc != SQLITE_OK) {
        f->path.~basic_string();
        return rc;
    }
    static const sqlite3_io_methods methods = {
        2,
        &FaultDisk::close,
        [](sqlite3_file* x, void* data, int amount, sqlite3_int64 offset) {
            return realOf(x)->pMethods->xRead(realOf(x), data, amount, offset);
        },
        &FaultDisk::write,
        &FaultDisk::truncate,
        &FaultDisk::sync,
        [](sqlite3_file* x, sqlite3_int64* size) {
            return realOf(x)->pMethods->xFileSize(realOf(x), size);
        },
        [](sqlite3_file* x, int level) { return realOf(x)->pMethods->xLock(realOf(x), level); },
        [](sqlite3_file* x, int level) { return realOf(x)->pMethods->xUnlock(realOf(x), level); },
        [](sqlite3_file* x, int* held) {
            return realOf(x)->pMethods->xCheckReservedLock(realOf(x), held);
        },
        [](sqlite3_file* x, int op, void* arg) {
            return realOf(x)->pMethods->xFileControl(realOf(x), op, arg);
        },
        [](sqlite3_file* x) { return realOf(x)->pMethods->xSectorSize(realOf(x)); },
        [](sqlite3_file* x) { return realOf(x)->pMethods->xDeviceCharacteristics(realOf(x)); },
        [](sqlite3_file* x, int page, int size, int extend, void volatile** map) {
            return realOf(x)->pMethods->xShmMap(realOf(x), page, size, extend, map);
        },
        [](sqlite3_file* x, int offset, int n, int flags) {
            return realOf(x)->pMethods->xShmLock(realOf(x), offset, n, flags);
        },
        [](sqlite3_file* x) { realOf(x)->pMethods->xShmBarrier(realOf(x)); },
        [](sqlite3_file* x, int remove) {
            return realOf(x)->pMethods->xShmUnmap(realOf(x), remove);
        },
        nullptr,
        nullptr,
    };
    f->base.pMethods = &methods;
    return SQLITE_OK;
}

int FaultDisk::remove(sqlite3_vfs* vfs, const char* name, int syncDirectory) {
    auto* self = static_cast<FaultDisk*>(vfs->pAppData);
    {
        std::lock_guard<std::mutex> lock(self->_mutex);
        if (self->_powerOff)
            return SQLITE_IOERR_DELETE;
        self->_images[name] = Image();  // a removal is taken as durable at once
    }
    return self->_real->xDelete(self->_real, name, syncDirectory);
}

int FaultDisk::write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset) {
    File* f = of(file);
    if (f->owner->nextOperation(false) != SQLITE_OK)
        return SQLITE_IOERR_WRITE;
    sqlite3_int64 size = 0;
    bool full;
    {
        std::lock_guard<std::mutex> lock(f->owner->_mutex);
        full = f->owner->_diskFull;
    }
    if (full && f->real()->pMethods->xFileSize(f->real(), &size) == SQLITE_OK &&
        offset + amount > size) {
        return SQLITE_FULL;
    }
    return f->real()->pMethods->xWrite(f->real(), data, amount, offset);
}

int FaultDisk::truncate(sqlite3_file* file, sqlite3_int64 size) {
    File* f = of(file);
    if (f->owner->powerIsOff())
        return SQLITE_IOERR_TRUNCATE;
    return f->real()->pMethods->xTruncate(f->real(), size);
}

// The disk's own sync is not called: what survives a loss of power is this disk's record.
int FaultDisk::sync(sqlite3_file* file, int) {
    File* f = of(file);
    if (f->owner->nextOperation(true) != SQLITE_OK)
        return SQLITE_IOERR_FSYNC;
    f->owner->keepSynced(f);
    return SQLITE_OK;
}

void FaultDisk::keepSynced(File* file) {
    if (file->path.empty())
        return;
    std::string bytes = readWhole(file->path);
    std::lock_guard<std::mutex> lock(_mutex);
    Image& image = _images[file->path];
    image.exists = true;
    image.bytes = std::move(bytes);
    _synced.push_back(file->path);
}

int FaultDisk::close(sqlite3_file* file) {
    File* f = of(file);
    int rc = f->real()->pMethods->xClose(f->real());
    using std::string;
    f->path.~string();
    return rc;
}

}  // namespace db
}  // namespace vesk
