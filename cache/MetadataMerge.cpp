// Merging cached metadata into capture requests: settings in the request queue and new settings.
#define LOG_TAG "CameraControlCache"
#include "CameraControlCache.h"

#include <string.h>

#include <algorithm>

#include <log/log.h>
#include <system/camera_metadata.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {
namespace implementation {

using ::android::hardware::hidl_vec;
using CaptureRequest = CameraControlCache::CaptureRequest;

const std::unordered_set<int32_t> sAlwaysMetadataTags = {0x10001, 0xD0000};

namespace {

// Capacities of the settings given to a request that brings none.
constexpr size_t kNewSettingsEntries = 1000;
constexpr size_t kNewSettingsData = 1000;
// The one entry to append is staged in a block of this room; 16 is also the data allowance
// that the capacity rule reserves for it.
constexpr size_t kScratchEntries = 1;
constexpr size_t kScratchData = 16;
// Header (48) + one entry (16) + data (16), as the metadata library lays it out.
constexpr size_t kScratchSize = 80;

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

// Merges one entry into the settings: the values of a present tag are replaced in place,
// an absent tag is appended, in place when there is room, otherwise into a copy with twice
// the room needed. Returns the settings to go on with: `settings` itself, or the larger copy,
// which `grown` then holds (releasing an earlier one). A step that fails leaves the settings
// as they were.
camera_metadata_t* mergeEntry(camera_metadata_t* settings, const ACameraMetadata_entry& entry,
                              MetadataPtr& grown) {
    camera_metadata_entry_t found;
    if (find_camera_metadata_entry(settings, entry.tag, &found) == 0) {
        if (payloadCovers(entry, found.type) &&
            update_camera_metadata_entry(settings, found.index, entry.data.u8, entry.count,
                                         nullptr) == 0) {
            ALOGI("updating 0x%x metadata \n", entry.tag);
        }
        return settings;
    }

    alignas(8) uint8_t scratchBytes[kScratchSize] = {};  // zeroed: its padding reaches the queue
    camera_metadata_t* scratch = place_camera_metadata(scratchBytes, sizeof(scratchBytes),
                                                       kScratchEntries, kScratchData);
    if (scratch == nullptr || !payloadCovers(entry, get_camera_metadata_tag_type(entry.tag)) ||
        add_camera_metadata_entry(scratch, entry.tag, entry.data.u8, entry.count) != 0) {
        return settings;
    }

    const size_t entryCount = get_camera_metadata_entry_count(settings);
    const size_t dataCount = get_camera_metadata_data_count(settings);
    size_t entryCapacity = get_camera_metadata_entry_capacity(settings);
    size_t dataCapacity = get_camera_metadata_data_capacity(settings);
    const bool grow = entryCount + 1 > entryCapacity || dataCount + kScratchData > dataCapacity;
    if (entryCount + 1 > entryCapacity) entryCapacity = (entryCount + 1) * 2;
    if (dataCount + kScratchData > dataCapacity) dataCapacity = (dataCount + kScratchData) * 2;
    if (!grow) {
        append_camera_metadata(settings, scratch);
        return settings;
    }
    MetadataPtr larger(allocate_camera_metadata(entryCapacity, dataCapacity));
    if (larger == nullptr || append_camera_metadata(larger.get(), settings) != 0 ||
        append_camera_metadata(larger.get(), scratch) != 0) {
        return settings;
    }
    grown = std::move(larger);
    return grown.get();
}

uint32_t readU32(const uint8_t* bytes, size_t offset) {
    uint32_t v;
    memcpy(&v, bytes + offset, sizeof(v));
    return v;
}

// Why a blob read from the queue must not be edited, or null when it may be. Besides the
// library's own validation, the entry table must stand where the library puts it (the platform
// header, version 1, keeps the table start at byte 20 and the data start at byte 32): the
// validation accepts tables that run into the data area or past the block, and an entry
// appended to such a table would be written outside it.
const char* blobProblem(const uint8_t* bytes, size_t size) {
    const auto* blob = reinterpret_cast<const camera_metadata_t*>(bytes);
    if (validate_camera_metadata_structure(blob, &size) != 0) return "does not validate";
    if (get_camera_metadata_size(blob) != size) return "has another size than claimed";
    const size_t entryTableEnd =
            calculate_camera_metadata_size(get_camera_metadata_entry_capacity(blob), 0);
    if (readU32(bytes, 20) != 48 || readU32(bytes, 32) != entryTableEnd) {
        return "has an unexpected layout";
    }
    return nullptr;
}

// The bytes of one blob read from the queue. Kept per thread and reused, so that merging does
// not allocate per request once the largest blob has been seen.
class ReadBuffer {
  public:
    uint8_t* reserve(size_t size) {
        if (size > mCapacity) {
            mBytes.reset(new uint8_t[size]);  // operator new[]: aligned for the metadata block
            mCapacity = size;
        }
        return mBytes.get();
    }

  private:
    std::unique_ptr<uint8_t[]> mBytes;
    size_t mCapacity = 0;
};

ReadBuffer& threadReadBuffer() {
    thread_local ReadBuffer buffer;
    return buffer;
}

// The bytes of every queued blob of one batch.
ReadBuffer& threadBatchBuffer() {
    thread_local ReadBuffer buffer;
    return buffer;
}

// Lets `edit` merge into the request's settings blob, already read from the head of the queue
// into `bytes`, and writes the result to the tail, so each blob is read and written exactly
// once and keeps its place among the others. A blob that fails its checks goes back unchanged.
// If the write fails, the blob is already out of the queue: it is handed to the request's own
// settings instead and fmqSettingsSize becomes 0, so the session reads it from there and the
// queue still holds one blob per remaining queue-carried request, in order.
template <typename Edit>
void writeMergedSettings(RequestMetadataQueue& queue, CaptureRequest& request, uint8_t* bytes,
                         size_t size, Edit edit) {
    const uint8_t* out = bytes;
    size_t outSize = size;
    MetadataPtr grown;
    if (const char* problem = blobProblem(bytes, size)) {
        ALOGE("request %u: settings blob of %zu bytes in the queue %s; passed on unchanged\n",
              request.frameNumber, size, problem);
    } else {
        const camera_metadata_t* merged = edit(reinterpret_cast<camera_metadata_t*>(bytes), grown);
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

// One request alone: reads its blob from the head of the queue, then merges and writes it.
// A failed read leaves the request and the queue unchanged.
template <typename Edit>
void editQueuedSettings(RequestMetadataQueue& queue, CaptureRequest& request, Edit edit) {
    const uint64_t claimed = request.fmqSettingsSize;
    if (claimed > queue.availableToRead()) return;
    const size_t size = static_cast<size_t>(claimed);
    uint8_t* bytes = threadReadBuffer().reserve(size);
    if (!queue.read(bytes, size)) return;
    writeMergedSettings(queue, request, bytes, size, edit);
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

    // The queue is touched only when there is something to merge, and only when it holds
    // exactly the blobs the batch claims: blobs go from its head to its tail one request after
    // another, which keeps them in request order only if nothing else stands in the queue.
    bool useQueue =
            queue != nullptr && std::any_of(entries.begin(), entries.end(), isAlwaysApplied);
    const uint8_t* batch = nullptr;
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
            uint8_t* bytes = threadBatchBuffer().reserve(held);
            useQueue = queue->read(bytes, held);
            batch = bytes;
        }
    }

    for (CaptureRequest& request : requests) {
        if (request.fmqSettingsSize != 0) {
            if (!useQueue) continue;
            const size_t size = static_cast<size_t>(request.fmqSettingsSize);
            uint8_t* bytes = threadReadBuffer().reserve(size);
            memcpy(bytes, batch, size);  // aligned for the metadata block
            batch += size;
            writeMergedSettings(*queue, request, bytes, size,
                                [&entries](camera_metadata_t* settings, MetadataPtr& grown) {
                                    for (const ACameraMetadata_entry& entry : entries) {
                                        if (isAlwaysApplied(entry)) {
                                            settings = mergeEntry(settings, entry, grown);
                                        }
                                    }
                                    return settings;
                                });
        } else if (request.settings.size() == 0) {
            giveNewSettings(request, entries);
        }
    }
}

void CameraControlCache::appendAlwaysMetadata(std::shared_ptr<RequestMetadataQueue> queue,
                                              CaptureRequest& request,
                                              ACameraMetadata_entry entry) {
    if (queue == nullptr || request.fmqSettingsSize == 0) return;
    editQueuedSettings(*queue, request, [&entry](camera_metadata_t* settings, MetadataPtr& grown) {
        return mergeEntry(settings, entry, grown);
    });
}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
