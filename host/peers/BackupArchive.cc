#include "host/peers/BackupArchive.h"

#include <zip.h>

#include <cstring>
#include <memory>

#include "station/database/AttributeCodec.h"

namespace vesk {
namespace host {
namespace peers {
namespace {

const char* const kManifest = "manifest.json";
const char* const kLayoutsEntry = "layouts.bin";
const char* const kObjects = "objects.bin";
// 2: the layouts kept once, in their own entry (1 wrote one with each object).
const int kFormat = 2;

void putNumber(std::string* out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out->push_back(static_cast<char>((value >> (8 * i)) & 0xff));
}

void putText(std::string* out, const std::string& text) {
    putNumber(out, text.size(), 4);
    out->append(text);
}

// Reads from a byte string, refusing to run past its end.
class Reader {
  public:
    explicit Reader(const std::string& data) : _data(data) {}
    bool number(uint64_t* value, int bytes) {
        if (_data.size() - _at < static_cast<size_t>(bytes))
            return false;
        *value = 0;
        for (int i = 0; i < bytes; ++i)
            *value |= static_cast<uint64_t>(static_cast<unsigned char>(_data[_at++])) << (8 * i);
        return true;
    }
    // The next text in place: valid while the data is.
    bool view(const char** text, size_t* size) {
        uint64_t length = 0;
        if (!number(&length, 4) || _data.size() - _at < length)
            return false;
        *text = _data.data() + _at;
        *size = length;
        _at += length;
        return true;
    }
    bool text(std::string* out) {
        const char* text = nullptr;
        size_t size = 0;
        if (!view(&text, &size))
            return false;
        out->assign(text, size);
        return true;
    }
    bool done() const { return _at == _data.size(); }

  private:
    const std::string& _data;
    size_t _at = 0;
};

// One pass over the objects: each layout is kept once in `layouts`, each object's values refer
// to it by id.
std::string encodeObjects(const std::vector<db::ObjectPtr>& objects, db::Layouts* layouts) {
    std::string out;
    out.reserve(objects.size() * 128);
    for (const db::ObjectPtr& object : objects) {
        putText(&out, object->fullDn);
        for (int64_t field : {int64_t(object->instance), int64_t(object->visible),
                              int64_t(object->flagB), int64_t(object->operationalState),
                              int64_t(object->adminState), int64_t(object->classInstance)})
            putNumber(&out, static_cast<uint64_t>(field), 8);
        putText(&out, db::encodeAttributes(*object, layouts->idOf(db::Layouts::bodyOf(*object))));
    }
    return out;
}

std::string encodeLayouts(const db::Layouts& layouts) {
    std::string out;
    for (const auto& entry : layouts.pending()) {
        putNumber(&out, entry.first, 4);
        putText(&out, entry.second);
    }
    return out;
}

bool decodeLayouts(const std::string& data, db::Layouts* layouts) {
    Reader in(data);
    while (!in.done()) {
        uint64_t id = 0;
        const char* body = nullptr;
        size_t size = 0;
        if (!in.number(&id, 4) || !in.view(&body, &size) ||
            !layouts->load(static_cast<uint32_t>(id), body, size))
            return false;
    }
    return true;
}

bool decodeObject(Reader& in, const db::Layouts& layouts, db::StoredObject* object) {
    uint64_t fields[6];
    if (!in.text(&object->fullDn))
        return false;
    for (uint64_t& field : fields) {
        if (!in.number(&field, 8))
            return false;
    }
    object->instance = static_cast<int>(fields[0]);
    object->visible = fields[1] != 0;
    object->flagB = fields[2] != 0;
    object->operationalState = static_cast<int>(fields[3]);
    object->adminState = static_cast<int>(fields[4]);
    object->classInstance = static_cast<int>(fields[5]);
    const char* attributes = nullptr;
    size_t size = 0;
    return in.view(&attributes, &size) && db::decodeAttributes(attributes, size, layouts, object);
}

std::string zipError(zip_t* archive) {
    return zip_strerror(archive);
}

// The whole entry `name`; libzip checks its CRC once the last byte is read.
bool readEntry(zip_t* archive, const char* name, std::string* out, std::string* error) {
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat(archive, name, 0, &stat) != 0 || (stat.valid & ZIP_STAT_SIZE) == 0) {
        *error = std::string("no entry ") + name;
        return false;
    }
    std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen(archive, name, 0), zip_fclose);
    if (!file) {
        *error = std::string(name) + ": " + zipError(archive);
        return false;
    }
    out->resize(stat.size);
    zip_int64_t got = out->empty() ? 0 : zip_fread(file.get(), &(*out)[0], stat.size);
    char probe;
    if (got != static_cast<zip_int64_t>(stat.size) || zip_fread(file.get(), &probe, 1) != 0) {
        *error = std::string(name) + ": " + zip_file_strerror(file.get());
        return false;
    }
    return true;
}

bool addEntry(zip_t* archive, const char* name, const std::string& data, int level,
              std::string* error) {
    zip_source_t* source = zip_source_buffer(archive, data.data(), data.size(), 0);
    zip_int64_t index =
        source != nullptr ? zip_file_add(archive, name, source, ZIP_FL_OVERWRITE) : -1;
    if (index < 0) {
        zip_source_free(source);
        *error = zipError(archive);
        return false;
    }
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE,
                             static_cast<zip_uint32_t>(level));
    return true;
}

}  // namespace

bool writeBackupArchive(const std::string& path, const std::vector<db::ObjectPtr>& objects,
                        nlohmann::ordered_json manifest, const Progress& progress,
                        std::string* error) {
    manifest["format"] = kFormat;
    manifest["objects"] = objects.size();
    db::Layouts layouts;
    const std::string data = encodeObjects(objects, &layouts);
    const std::string shapes = encodeLayouts(layouts);
    const std::string head = manifest.dump(2);
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (archive == nullptr) {
        zip_error_t reason;
        zip_error_init_with_code(&reason, code);
        *error = path + ": " + zip_error_strerror(&reason);
        zip_error_fini(&reason);
        return false;
    }
    // Fast compression: the archive is written while the station keeps serving.
    if (!addEntry(archive, kManifest, head, 6, error) ||
        !addEntry(archive, kLayoutsEntry, shapes, 6, error) ||
        !addEntry(archive, kObjects, data, 1, error)) {
        zip_discard(archive);
        return false;
    }
    void* state = const_cast<Progress*>(&progress);
    zip_register_progress_callback_with_state(
        archive, 0.1,
        [](zip_t*, double done, void* self) { static_cast<Progress*>(self)->told(done); }, nullptr,
        state);
    zip_register_cancel_callback_with_state(
        archive,
        [](zip_t*, void* self) { return static_cast<Progress*>(self)->cancelled() ? 1 : 0; },
        nullptr, state);
    if (zip_close(archive) != 0) {
        *error = path + ": " + zipError(archive);
        zip_discard(archive);
        return false;
    }
    return true;
}

bool readBackupArchive(const std::string& path, std::vector<db::StoredObject>* objects,
                       nlohmann::ordered_json* manifest, std::string* error) {
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (archive == nullptr) {
        zip_error_t reason;
        zip_error_init_with_code(&reason, code);
        *error = path + ": " + zip_error_strerror(&reason);
        zip_error_fini(&reason);
        return false;
    }
    std::unique_ptr<zip_t, void (*)(zip_t*)> guard(archive, zip_discard);
    std::string head;
    std::string data;
    if (!readEntry(archive, kManifest, &head, error)) {
        *error = path + ": " + *error;
        return false;
    }
    *manifest = nlohmann::ordered_json::parse(head, nullptr, false);
    if (manifest->is_discarded() || manifest->value("format", 0) != kFormat ||
        !(*manifest)["objects"].is_number_unsigned()) {
        *error = path + ": " + kManifest + " is not one of this format";
        return false;
    }
    db::Layouts layouts;
    if (!readEntry(archive, kLayoutsEntry, &data, error)) {
        *error = path + ": " + *error;
        return false;
    }
    if (!decodeLayouts(data, &layouts)) {
        *error = path + ": " + kLayoutsEntry + " does not decode";
        return false;
    }
    if (!readEntry(archive, kObjects, &data, error)) {
        *error = path + ": " + *error;
        return false;
    }
    size_t count = (*manifest)["objects"].get<size_t>();
    Reader in(data);
    objects->clear();
    objects->reserve(count);
    while (!in.done()) {
        objects->emplace_back();
        if (objects->size() > count || !decodeObject(in, layouts, &objects->back())) {
            *error = path + ": object " + std::to_string(objects->size()) + " does not decode";
            return false;
        }
    }
    if (objects->size() != count) {
        *error = path + ": " + std::to_string(objects->size()) + " objects, the manifest says " +
                 std::to_string(count);
        return false;
    }
    return true;
}

}  // namespace peers
}  // namespace host
}  // namespace vesk
