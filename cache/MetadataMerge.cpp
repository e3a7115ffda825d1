// Merging cached metadata into capture requests: settings in the request queue and new settings.
#define LOG_TAG "CameraControlCache"
#include "CameraControlCache.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>

#include <log/log.h>
#include <system/camera_metadata.h>

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::hidl_vec;
using CaptureRequest = CameraControlCache::CaptureRequest;

const std::unordered_set<int32_t> sAlwaysMetadataTags = {ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION,
                                                         ANDROID_SCALER_CROP_REGION};

namespace {

// Capacities of the settings given to a request that brings none.
constexpr size_t kNewSettingsEntries = 1000;
constexpr size_t kNewSettingsData = 1000;
// Data room an appended entry is given, whatever its own size: the settings grow when they lack
// it, and an entry needing more is not appended.
constexpr size_t kAppendData = 16;
// The always-applied tags a camera can hold (one entry per tag).
constexpr size_t kMaxMerged = 2;

// The metadata block layout of version 1, which the edits below rely on: a 48-byte header, the
// entry table right after it, then the data area at the next 8-byte boundary.
struct Header {
    uint32_t size;
    uint32_t version;
    uint32_t flags;
    uint32_t entryCount;
    uint32_t entryCapacity;
    uint32_t entriesStart;
    uint32_t dataCount;
    uint32_t dataCapacity;
    uint32_t dataStart;
    uint32_t padding;
    uint64_t vendorId;
};
struct Entry {
    uint32_t tag;
    uint32_t count;
    uint32_t offset;  // or the values themselves when they fit in 4 bytes
    uint8_t type;
    uint8_t reserved[3];
};
static_assert(sizeof(Header) == 48 && sizeof(Entry) == 16, "metadata block layout");
static_assert(kMaxMerged == 2, "nextMatch looks for two tags");
constexpr size_t kDataAlignment = 8;

constexpr size_t align8(size_t v) {
    return (v + kDataAlignment - 1) & ~(kDataAlignment - 1);
}

// Data-area bytes of count elements of a library type: none when they fit in the entry.
size_t dataBytes(int type, size_t count) {
    const size_t payload = count * camera_metadata_type_size[type];
    return payload <= 4 ? 0 : align8(payload);
}

struct FreeMetadata {
    void operator()(camera_metadata_t* m) const { free_camera_metadata(m); }
};
using MetadataPtr = std::unique_ptr<camera_metadata_t, FreeMetadata>;

bool isAlwaysApplied(const ACameraMetadata_entry& entry) {
    return sAlwaysMetadataTags.count(static_cast<int32_t>(entry.tag)) != 0;
}

// The metadata library reads count elements of its own type for the tag from the values it is
// given; hand it only payloads that hold at least that many bytes.
bool payloadCovers(const ACameraMetadata_entry& entry, int libraryType) {
    return entry.type < ACAMERA_NUM_TYPES && libraryType >= 0 && libraryType < NUM_TYPES &&
           camera_metadata_type_size[entry.type] >= camera_metadata_type_size[libraryType] &&
           (entry.data.u8 != nullptr || entry.count == 0);
}

// Logs "updating 0x%x metadata \n" at INFO. It is written for every updated tag of every request
// on the capture path, so the text is put together here: formatting it with printf would cost
// more than the rest of the update.
void logUpdated(uint32_t tag) {
    char text[] = "updating 0x00000000 metadata \n";
    char* end = text + strlen("updating 0x");
    char digits[8];
    size_t n = 0;
    do {
        digits[n++] = "0123456789abcdef"[tag % 16];
        tag /= 16;
    } while (tag != 0);
    while (n != 0) *end++ = digits[--n];
    strcpy(end, " metadata \n");
    __android_log_write(ANDROID_LOG_INFO, LOG_TAG, text);
}

// The index of the first entry of the table from `from` on whose tag is a or b, or `end`.
// kMaxMerged is 2, so the merged tags are the first and the last of the list.
size_t nextMatch(const uint8_t* table, size_t end, size_t from, uint32_t a, uint32_t b) {
    for (size_t i = from; i < end; ++i) {
        uint32_t tag;
        memcpy(&tag, table + i * sizeof(Entry), sizeof(tag));
        if (tag == a || tag == b) return i;
    }
    return end;
}

// Whether an entry's out-of-line values are unaligned or lie past the used data (of a known type).
bool valuesOutsideUsedData(const Entry& e, uint32_t dataCount) {
    const size_t data = dataBytes(e.type, e.count);
    return data != 0 && (e.offset % kDataAlignment != 0 || uint64_t{e.offset} + data > dataCount);
}

// One pass over a blob read from the queue: checks what the edit relies on (the header, and each
// entry the merge will rewrite) and finds the merged tags, first match in table order (found[i]
// is the index for entries[i], or -1). Returns why the blob must not be edited, or null. Entries
// the merge does not touch are left to the session's own validation of the whole blob.
const char* checkAndFind(const uint8_t* bytes, size_t size, const ACameraMetadata_entry* entries,
                         size_t count, long found[], char* why, size_t whySize) {
    if (size < sizeof(Header)) return "is shorter than a header";
    Header h;
    memcpy(&h, bytes, sizeof(h));
    if (h.size != size || h.version != 1) return "has another size or version than claimed";
    if (h.entryCount > h.entryCapacity || h.dataCount > h.dataCapacity) {
        return "counts more than its capacities";
    }
    if (h.dataCount % kDataAlignment != 0) return "has an unaligned data count";
    if (h.entriesStart != sizeof(Header) ||
        h.dataStart != calculate_camera_metadata_size(h.entryCapacity, 0) ||
        calculate_camera_metadata_size(h.entryCapacity, h.dataCapacity) != size) {
        return "has an unexpected layout";
    }

    std::fill(found, found + count, -1);
    if (count == 0) return nullptr;
    const uint8_t* table = bytes + h.entriesStart;
    const uint32_t first = entries[0].tag, last = entries[count - 1].tag;
    for (size_t i = nextMatch(table, h.entryCount, 0, first, last); i < h.entryCount;
         i = nextMatch(table, h.entryCount, i + 1, first, last)) {
        uint32_t tag;
        memcpy(&tag, table + i * sizeof(Entry), sizeof(tag));
        bool all = true;
        for (size_t k = 0; k < count; ++k) {
            if (found[k] < 0 && entries[k].tag == tag) found[k] = static_cast<long>(i);
            all = all && found[k] >= 0;
        }
        if (all) break;
    }
    for (size_t k = 0; k < count; ++k) {
        if (found[k] < 0) continue;
        Entry e;
        memcpy(&e, table + found[k] * sizeof(Entry), sizeof(e));
        if (e.type != get_camera_metadata_tag_type(e.tag) ||
            valuesOutsideUsedData(e, h.dataCount)) {
            snprintf(why, whySize, "has a malformed entry 0x%x", e.tag);
            return why;
        }
    }
    return nullptr;
}

// Appends the entry to settings that have room for it (entry slot and kAppendData bytes).
// The alignment tail of its data is cleared, as an appended block carries no stale bytes.
void appendInPlace(camera_metadata_t* settings, const ACameraMetadata_entry& entry, int type) {
    const size_t before = get_camera_metadata_data_count(settings);
    if (add_camera_metadata_entry(settings, entry.tag, entry.data.u8, entry.count) != 0) return;
    const size_t payload = size_t{entry.count} * camera_metadata_type_size[type];
    const size_t added = get_camera_metadata_data_count(settings) - before;
    if (added > payload) {
        Header h;
        memcpy(&h, settings, sizeof(h));
        memset(reinterpret_cast<uint8_t*>(settings) + h.dataStart + before + payload, 0,
               added - payload);
    }
}

// Merges the entries, in order, into the settings blob `bytes` of `size` bytes (8-aligned): a
// tag the blob holds gets the new values in place; an absent tag is appended in place when the
// blob has an entry slot and kAppendData bytes of data room, else into a copy with twice the
// room needed (the one allocation). Returns the settings to write back: the blob itself, the
// copy (owned by `grown`), or null with `problem` set when the blob fails its checks and must go
// back unchanged. A value that does not fit is skipped; the rest is still merged.
const camera_metadata_t* mergeEntries(uint8_t* bytes, size_t size,
                                      const ACameraMetadata_entry* entries, size_t count,
                                      MetadataPtr& grown, const char** problem, char* why,
                                      size_t whySize) {
    long found[kMaxMerged];
    if (count > kMaxMerged) count = kMaxMerged;
    *problem = checkAndFind(bytes, size, entries, count, found, why, whySize);
    if (*problem != nullptr) return nullptr;

    auto* settings = reinterpret_cast<camera_metadata_t*>(bytes);
    for (size_t k = 0; k < count; ++k) {
        const ACameraMetadata_entry& entry = entries[k];
        const int type = get_camera_metadata_tag_type(entry.tag);
        if (!payloadCovers(entry, type)) continue;
        if (found[k] >= 0) {
            if (update_camera_metadata_entry(settings, found[k], entry.data.u8, entry.count,
                                             nullptr) == 0) {
                logUpdated(entry.tag);
            }
            continue;
        }
        if (dataBytes(type, entry.count) > kAppendData) continue;

        const size_t entryCount = get_camera_metadata_entry_count(settings);
        const size_t dataCount = get_camera_metadata_data_count(settings);
        size_t entryCapacity = get_camera_metadata_entry_capacity(settings);
        size_t dataCapacity = get_camera_metadata_data_capacity(settings);
        if (entryCount + 1 > entryCapacity) entryCapacity = (entryCount + 1) * 2;
        if (dataCount + kAppendData > dataCapacity) dataCapacity = (dataCount + kAppendData) * 2;
        if (entryCapacity != get_camera_metadata_entry_capacity(settings) ||
            dataCapacity != get_camera_metadata_data_capacity(settings)) {
            MetadataPtr larger(allocate_camera_metadata(entryCapacity, dataCapacity));
            if (larger == nullptr || append_camera_metadata(larger.get(), settings) != 0) continue;
            grown = std::move(larger);
            settings = grown.get();
        }
        appendInPlace(settings, entry, type);
    }
    return settings;
}

// The bytes of blobs read from the queue, kept per thread and reused, so that merging does not
// allocate per request once the largest batch has been seen. operator new[] aligns them for the
// metadata block.
class ReadBuffer {
  public:
    uint8_t* reserve(size_t size) {
        if (size > mCapacity) {
            mBytes.reset(new uint8_t[size]);
            mCapacity = size;
        }
        return mBytes.get();
    }

  private:
    std::unique_ptr<uint8_t[]> mBytes;
    size_t mCapacity = 0;
};

ReadBuffer& threadBatchBuffer() {
    thread_local ReadBuffer buffer;
    return buffer;
}

// A blob that does not start on an 8-byte boundary (one after a blob of odd size) is moved
// here before it is edited.
ReadBuffer& threadAlignedBuffer() {
    thread_local ReadBuffer buffer;
    return buffer;
}

// Merges the entries into the request's settings blob, already read from the head of the queue
// into `bytes`, and writes the result to the tail, so each blob is read and written once and
// keeps its place among the others. A blob that fails its checks goes back unchanged. If the
// write fails, the blob is already out of the queue: it is handed to the request's own settings
// instead and fmqSettingsSize becomes 0, so the session reads it from there and the queue still
// holds one blob per remaining queue-carried request, in order.
void mergeQueuedSettings(RequestMetadataQueue& queue, CaptureRequest& request, uint8_t* bytes,
                         size_t size, const ACameraMetadata_entry* entries, size_t count) {
    if (reinterpret_cast<uintptr_t>(bytes) % kDataAlignment != 0) {
        bytes = static_cast<uint8_t*>(memcpy(threadAlignedBuffer().reserve(size), bytes, size));
    }
    MetadataPtr grown;
    const char* problem = nullptr;
    char why[64];
    const camera_metadata_t* merged =
            mergeEntries(bytes, size, entries, count, grown, &problem, why, sizeof(why));
    const uint8_t* out = bytes;
    size_t outSize = size;
    if (merged == nullptr) {
        ALOGE("request %u: settings blob of %zu bytes in the queue %s; passed on unchanged\n",
              request.frameNumber, size, problem);
    } else {
        out = reinterpret_cast<const uint8_t*>(merged);
        outSize = get_camera_metadata_size(merged);
    }

    if (queue.write(out, outSize)) {
        request.fmqSettingsSize = outSize;
        return;
    }
    ALOGE("request %u: settings could not be written back to the queue; moved to the request\n",
          request.frameNumber);
    uint8_t* owned = new uint8_t[outSize];
    memcpy(owned, out, outSize);
    request.settings.setToExternal(owned, outSize, true);
    request.fmqSettingsSize = 0;
}

// Sum of the settings sizes that the batch claims to have in the queue.
uint64_t queuedSettingsBytes(const hidl_vec<CaptureRequest>& requests) {
    uint64_t total = 0;
    for (const CaptureRequest& request : requests) {
        total += std::min<uint64_t>(request.fmqSettingsSize, UINT64_MAX - total);
    }
    return total;
}

// New settings holding every entry the library accepts, in list order. The request's vector
// releases an owned buffer with delete[], so the block is laid out in a new[] buffer.
void giveNewSettings(CaptureRequest& request, const std::vector<ACameraMetadata_entry>& entries) {
    const size_t size = calculate_camera_metadata_size(kNewSettingsEntries, kNewSettingsData);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]());
    camera_metadata_t* settings =
            place_camera_metadata(buffer.get(), size, kNewSettingsEntries, kNewSettingsData);
    if (settings == nullptr) return;
    for (const ACameraMetadata_entry& entry : entries) {
        if (!payloadCovers(entry, get_camera_metadata_tag_type(entry.tag))) continue;
        add_camera_metadata_entry(settings, entry.tag, entry.data.u8, entry.count);
    }
    const size_t length = get_camera_metadata_size(settings);
    request.settings.setToExternal(buffer.release(), length, true);
}

}  // namespace

void CameraControlCache::applyMetaData(const std::string& cameraId,
                                       hidl_vec<CaptureRequest>& requests,
                                       std::shared_ptr<RequestMetadataQueue> queue) {
    std::lock_guard lock(mLock);
    const std::string id = extractCameraId(cameraId);
    auto camera = mEntries.find(id);
    if (camera == mEntries.end() || requests.size() == 0) return;
    const std::vector<ACameraMetadata_entry>& entries = camera->second;

    ACameraMetadata_entry merged[kMaxMerged];
    size_t mergedCount = 0;
    for (const ACameraMetadata_entry& entry : entries) {
        if (isAlwaysApplied(entry) && mergedCount < kMaxMerged) merged[mergedCount++] = entry;
    }

    // The queue is touched only when there is something to merge, and only when it holds
    // exactly the blobs the batch claims: blobs go from its head to its tail one request after
    // another, which keeps them in request order only if nothing else stands in the queue.
    bool useQueue = queue != nullptr && mergedCount != 0;
    uint8_t* batch = nullptr;
    if (useQueue) {
        const uint64_t claimed = queuedSettingsBytes(requests);
        const size_t held = queue->availableToRead();
        if (claimed != held) {
            ALOGE("camera [%s] requests claim %llu settings bytes, the queue holds %zu; settings "
                  "in the queue left unchanged\n",
                  id.c_str(), static_cast<unsigned long long>(claimed), held);
            useQueue = false;
        } else if (held != 0) {
            // All the batch's blobs in one all-or-nothing read, before any is written back: a
            // read failing after some blobs had gone to the tail would leave them behind the
            // later ones still at the head.
            batch = threadBatchBuffer().reserve(held);
            useQueue = queue->read(batch, held);
        }
    }

    for (CaptureRequest& request : requests) {
        if (request.fmqSettingsSize != 0) {
            if (!useQueue) continue;
            const size_t size = static_cast<size_t>(request.fmqSettingsSize);
            mergeQueuedSettings(*queue, request, batch, size, merged, mergedCount);
            batch += size;
        } else if (request.settings.size() == 0) {
            giveNewSettings(request, entries);
        }
    }
}

void CameraControlCache::appendAlwaysMetadata(std::shared_ptr<RequestMetadataQueue> queue,
                                              CaptureRequest& request,
                                              ACameraMetadata_entry entry) {
    if (queue == nullptr || request.fmqSettingsSize == 0) return;
    const uint64_t claimed = request.fmqSettingsSize;
    if (claimed > queue->availableToRead()) return;
    const size_t size = static_cast<size_t>(claimed);
    uint8_t* bytes = threadBatchBuffer().reserve(size);
    if (!queue->read(bytes, size)) return;
    mergeQueuedSettings(*queue, request, bytes, size, &entry, 1);
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
