// Camera metadata and capture requests: settings blobs built and decoded with the camera
// metadata calls, the cache's pipeline operations, and batches through the request queue.
#include "Requests.h"

#include <ctype.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <memory>
#include <mutex>

#include <camera/NdkCameraMetadata.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "kit/BlobBuilder.h"

namespace zorvctl {

namespace {

using ::android::hardware::camera::device::V3_2::CaptureRequest;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::extractCameraId;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;

const char* const kTypeNames[NUM_TYPES] = {"byte", "int32", "float", "int64", "double", "rational"};
constexpr size_t kQueueBytes = 1 << 20;  // the size camera device sessions give the queue

// One metadata entry with its payload bytes.
using Entry = kit::Item;

template <typename T>
void append(std::vector<uint8_t>& payload, T value) {
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&value);
    payload.insert(payload.end(), bytes, bytes + sizeof(value));
}

Entry makeEntry(uint32_t tag, int type, const std::vector<std::string>& values) {
    Entry entry{tag, static_cast<uint8_t>(type), {}};
    for (const std::string& value : values) {
        switch (type) {
            case TYPE_BYTE:
                append(entry.bytes, static_cast<uint8_t>(parseInteger(value, 0, UINT8_MAX)));
                break;
            case TYPE_INT32:
                append(entry.bytes,
                       static_cast<int32_t>(parseInteger(value, INT32_MIN, INT32_MAX)));
                break;
            case TYPE_FLOAT:
                append(entry.bytes, static_cast<float>(parseReal(value)));
                break;
            case TYPE_INT64:
                append(entry.bytes, parseInteger(value, INT64_MIN, INT64_MAX));
                break;
            case TYPE_DOUBLE:
                append(entry.bytes, parseReal(value));
                break;
            default: {
                size_t slash = value.find('/');
                if (slash == std::string::npos) throw UsageError(quote(value) + " is not N/D");
                append(entry.bytes, static_cast<int32_t>(parseInteger(value.substr(0, slash),
                                                                      INT32_MIN, INT32_MAX)));
                append(entry.bytes, static_cast<int32_t>(parseInteger(value.substr(slash + 1),
                                                                      INT32_MIN, INT32_MAX)));
            }
        }
    }
    return entry;
}

int parseType(const std::string& text) {
    for (int type = 0; type < NUM_TYPES; ++type) {
        if (text == kTypeNames[type]) return type;
    }
    throw UsageError(quote(text) + " is not a type (byte int32 float int64 double rational)");
}

std::string tagLabel(uint32_t tag) {
    const char* section = get_camera_metadata_section_name(tag);
    const char* name = get_camera_metadata_tag_name(tag);
    return section && name ? std::string(section) + "." + name : "(unnamed)";
}

std::string formatValues(const camera_metadata_ro_entry_t& e) {
    std::string out = "[";
    for (size_t i = 0; i < e.count; ++i) {
        char value[64];
        switch (e.type) {
            case TYPE_BYTE:
                snprintf(value, sizeof(value), "%u", e.data.u8[i]);
                break;
            case TYPE_INT32:
                snprintf(value, sizeof(value), "%d", e.data.i32[i]);
                break;
            case TYPE_FLOAT:
                snprintf(value, sizeof(value), "%g", e.data.f[i]);
                break;
            case TYPE_INT64:
                snprintf(value, sizeof(value), "%" PRId64, e.data.i64[i]);
                break;
            case TYPE_DOUBLE:
                snprintf(value, sizeof(value), "%g", e.data.d[i]);
                break;
            default:
                snprintf(value, sizeof(value), "%d/%d", e.data.r[i].numerator,
                         e.data.r[i].denominator);
        }
        out += (i ? ", " : "") + std::string(value);
    }
    return out + "]";
}

// The settings a camera framework sends with a preview request, with `extra` entries put in
// (replacing a default of the same tag), in a buffer with no spare room.
std::vector<uint8_t> buildSettings(const std::vector<Entry>& extra) {
    std::vector<Entry> entries = {
            makeEntry(ANDROID_CONTROL_CAPTURE_INTENT, TYPE_BYTE, {"1"}),
            makeEntry(ANDROID_CONTROL_MODE, TYPE_BYTE, {"1"}),
            makeEntry(ANDROID_CONTROL_AE_MODE, TYPE_BYTE, {"1"}),
            makeEntry(ANDROID_CONTROL_AE_TARGET_FPS_RANGE, TYPE_INT32, {"30", "30"}),
            makeEntry(ANDROID_CONTROL_AF_MODE, TYPE_BYTE, {"3"}),
            makeEntry(ANDROID_CONTROL_AWB_MODE, TYPE_BYTE, {"1"}),
            makeEntry(ANDROID_SCALER_CROP_REGION, TYPE_INT32, {"0", "0", "5440", "3060"}),
            makeEntry(ANDROID_SENSOR_FRAME_DURATION, TYPE_INT64, {"33333333"}),
    };
    for (const Entry& e : extra) {
        bool replaced = false;
        for (Entry& d : entries) {
            if (d.tag == e.tag) d = e, replaced = true;
        }
        if (!replaced) entries.push_back(e);
    }
    std::vector<uint8_t> settings = kit::blob(entries);
    if (kit::items(settings).size() != entries.size()) {
        throw CommandError("cannot build the request settings");
    }
    return settings;
}

// A request layout: queue|own|empty, then ,TAG=V:V... entries for its settings.
struct RequestLayout {
    std::string kind;
    std::vector<Entry> entries;
};

RequestLayout parseLayout(const std::string& text) {
    std::vector<std::string> parts;
    for (size_t start = 0;;) {
        size_t comma = text.find(',', start);
        parts.push_back(text.substr(start, comma - start));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    RequestLayout layout{parts[0], {}};
    if (layout.kind != "queue" && layout.kind != "own" && layout.kind != "empty") {
        throw UsageError(quote(layout.kind) + " is not queue, own or empty");
    }
    if (layout.kind == "empty" && parts.size() > 1)
        throw UsageError("an empty request has no entries");
    for (size_t i = 1; i < parts.size(); ++i) {
        size_t eq = parts[i].find('=');
        if (eq == std::string::npos) throw UsageError(quote(parts[i]) + " is not TAG=V:V...");
        uint32_t tag = parseTag(parts[i].substr(0, eq));
        int type = get_camera_metadata_tag_type(tag);
        if (type < 0) throw UsageError(quote(parts[i].substr(0, eq)) + " has no known type");
        std::vector<std::string> values;
        std::string list = parts[i].substr(eq + 1);
        for (size_t start = 0;;) {
            size_t colon = list.find(':', start);
            values.push_back(list.substr(start, colon - start));
            if (colon == std::string::npos) break;
            start = colon + 1;
        }
        layout.entries.push_back(makeEntry(tag, type, values));
    }
    return layout;
}

// The process's cache as the pipeline reaches it, through its exported instance; empty until
// the first setMetaData or setMetaArray creates it.
std::shared_ptr<CameraControlCache> cacheInstance() {
    std::lock_guard lock(CameraControlCache::mLock);
    return CameraControlCache::sInstance;
}

std::shared_ptr<CameraControlCache> existingCache() {
    std::shared_ptr<CameraControlCache> cache = cacheInstance();
    if (cache == nullptr) {
        throw CommandError("the cache does not exist yet (setMetaData or setMetaArray makes it)");
    }
    return cache;
}

// Settings as the device reads them: a header, then one line per entry.
std::vector<std::string> settingsLines(const std::string& header,
                                       const std::vector<uint8_t>& bytes) {
    // Copied into 8-aligned storage: metadata buffers hold 8-byte values.
    std::vector<uint64_t> aligned((bytes.size() + 7) / 8);
    memcpy(aligned.data(), bytes.data(), bytes.size());
    camera_metadata_t* m = reinterpret_cast<camera_metadata_t*>(aligned.data());
    size_t size = bytes.size();
    if (validate_camera_metadata_structure(m, &size) != 0) {
        return {header + " size=" + std::to_string(bytes.size()) + " not valid camera metadata"};
    }
    char counts[128];
    snprintf(counts, sizeof(counts), " size=%zu entries=%zu/%zu data=%zu/%zu", bytes.size(),
             get_camera_metadata_entry_count(m), get_camera_metadata_entry_capacity(m),
             get_camera_metadata_data_count(m), get_camera_metadata_data_capacity(m));
    std::vector<std::string> lines = {header + counts};
    for (size_t i = 0; i < get_camera_metadata_entry_count(m); ++i) {
        camera_metadata_ro_entry_t e;
        if (get_camera_metadata_ro_entry(m, i, &e) != 0) continue;
        char tag[16];
        snprintf(tag, sizeof(tag), "0x%x", e.tag);
        lines.push_back(std::string("  ") + tag + " " + tagLabel(e.tag) + " " +
                        (e.type < NUM_TYPES ? kTypeNames[e.type] : "?") + " " + formatValues(e));
    }
    return lines;
}

void printSettings(const std::string& header, const std::vector<uint8_t>& bytes) {
    for (const std::string& line : settingsLines(header, bytes)) out(line);
}

const char* kindOf(const CaptureRequest& r) {
    return r.fmqSettingsSize > 0 ? "queue" : r.settings.size() > 0 ? "own" : "empty";
}

}  // namespace

std::vector<std::string> tagNames() {
    std::vector<std::string> names;
    for (uint32_t section = 0; section < ANDROID_SECTION_COUNT; ++section) {
        for (uint32_t tag = section << 16; get_camera_metadata_tag_type(tag) >= 0; ++tag) {
            names.push_back(tagLabel(tag));
        }
    }
    return names;
}

std::vector<std::string> cacheEntries(const std::set<std::string>& cameras) {
    std::shared_ptr<CameraControlCache> cache = cacheInstance();
    if (cache == nullptr) return {"cache: not created yet"};
    std::set<std::string> ids;
    for (const std::string& camera : cameras) ids.insert(extractCameraId(camera));
    std::vector<std::string> lines;
    for (const std::string& id : ids) {
        // A request without settings gets every entry of the camera.
        ::android::hardware::hidl_vec<CaptureRequest> batch(1);
        cache->applyMetaData(id, batch, nullptr);
        const auto& settings = batch[0].settings;
        std::string line = "cache " + quote(id) + ":";
        if (settings.size() == 0) {
            lines.push_back(line + " no entries");
            continue;
        }
        std::vector<std::string> entries = settingsLines(
                "", std::vector<uint8_t>(settings.data(), settings.data() + settings.size()));
        for (size_t i = 1; i < entries.size(); ++i)
            line += (i > 1 ? ";" : "") + entries[i].substr(1);
        lines.push_back(line);
    }
    return lines;
}

uint32_t parseTag(const std::string& text) {
    if (!text.empty() && (isdigit(static_cast<unsigned char>(text[0])) || text[0] == '-')) {
        return static_cast<uint32_t>(parseInteger(text, 0, UINT32_MAX));
    }
    for (uint32_t section = 0; section < ANDROID_SECTION_COUNT; ++section) {
        for (uint32_t tag = section << 16; get_camera_metadata_tag_type(tag) >= 0; ++tag) {
            if (tagLabel(tag) == text) return tag;
        }
    }
    throw UsageError(quote(text) + " is not a tag number or a known tag name");
}

void cacheAdd(Context&, const Args& a) {
    uint32_t tag = a.parse(1, parseTag);
    int type = a.parse(2, parseType);
    Entry entry = a.parse(3, [&](const std::string&) { return makeEntry(tag, type, a.rest(3)); });
    existingCache()->addMetaData(a.str(0), kit::asEntry(entry));
}

void cacheRemove(Context&, const Args& a) {
    existingCache()->removeMetaData(a.str(0), a.parse(1, parseTag));
}

void cacheRemoveCamera(Context&, const Args& a) {
    existingCache()->removeCamera(a.str(0));
}

void request(Context& c, const Args& a) {
    std::vector<RequestLayout> layouts;
    for (size_t i = 1; i < a.size(); ++i) layouts.push_back(a.parse(i, parseLayout));

    // The batch as the camera framework sends it: blobs of queued settings in request order.
    auto queue = std::make_shared<RequestMetadataQueue>(kQueueBytes);
    ::android::hardware::hidl_vec<CaptureRequest> batch(layouts.size());
    for (size_t i = 0; i < layouts.size(); ++i) {
        CaptureRequest& r = batch[i];
        r.frameNumber = c.nextFrame++;
        if (layouts[i].kind == "empty") continue;
        std::vector<uint8_t> settings = buildSettings(layouts[i].entries);
        if (layouts[i].kind == "own") {
            r.settings = settings;
        } else if (queue->write(settings.data(), settings.size())) {
            r.fmqSettingsSize = settings.size();
        } else {
            throw CommandError("the request queue is full");
        }
    }
    std::vector<std::string> before;
    for (const CaptureRequest& r : batch) before.push_back(kindOf(r));

    // What the device session does before it reads the settings.
    std::shared_ptr<CameraControlCache> cache = cacheInstance();
    if (cache != nullptr) cache->applyMetaData(a.str(0), batch, queue);

    // The device reads each request's settings: its blob from the queue, or its own.
    for (size_t i = 0; i < batch.size(); ++i) {
        const CaptureRequest& r = batch[i];
        std::string header = "req " + std::to_string(i) +
                             " frame=" + std::to_string(r.frameNumber) + " " + before[i] + " -> " +
                             kindOf(r);
        if (r.fmqSettingsSize > 0) {
            std::vector<uint8_t> bytes(r.fmqSettingsSize);
            if (!queue->read(bytes.data(), bytes.size())) {
                out(header + " size=" + std::to_string(r.fmqSettingsSize) + " not in the queue");
                continue;
            }
            printSettings(header, bytes);
        } else if (r.settings.size() > 0) {
            printSettings(header, std::vector<uint8_t>(r.settings.data(),
                                                       r.settings.data() + r.settings.size()));
        } else {
            out(header);
        }
    }
    out("=> queue unread=" + std::to_string(queue->availableToRead()) +
        (cache == nullptr ? " (no cache yet)" : ""));
}

}  // namespace zorvctl
