// The backup archive of the software management peer: a zip file (written and read with libzip)
// holding "manifest.json" (format, object count, what the backup is), "layouts.bin", each
// attribute layout once (id, body), and "objects.bin", every object of the station database in
// insertion order (dn, fields, attributes in the store's own encoding, naming a layout by id).
// Each entry carries the zip's CRC-32; reading checks it, the archive's consistency and the
// count, so that a damaged archive is refused whole.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace host {
namespace peers {

// What the writer is told while it works, and how it learns that the work is cancelled.
struct Progress {
    std::function<void(double done)> told;  // 0 to 1
    std::function<bool()> cancelled;
};

// Writes `objects` with `manifest` (to which "format" and "objects" are added) to `path`:
// libzip writes a temporary file beside it and renames it into place only when complete. False,
// with the reason, when cancelled or when the file cannot be written; `path` is then not there.
bool writeBackupArchive(const std::string& path, const std::vector<db::ObjectPtr>& objects,
                        nlohmann::ordered_json manifest, const Progress& progress,
                        std::string* error);

// Reads the archive at `path` whole into `objects` and `manifest`. False, with the reason, for
// a file that is missing, no zip, damaged (a CRC or a length that does not match), of another
// format, or whose objects do not decode.
bool readBackupArchive(const std::string& path, std::vector<db::StoredObject>* objects,
                       nlohmann::ordered_json* manifest, std::string* error);

}  // namespace peers
}  // namespace host
}  // namespace vesk
