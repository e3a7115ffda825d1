// Fuzzes the metadata cache: arbitrary store operations, request batches and queue bytes.
#include <stdint.h>
#include <string.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <hostfault/FaultInjection.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "kit/BlobBuilder.h"

using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::extractCameraId;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using CaptureRequest = CameraControlCache::CaptureRequest;
using kit::blob;
using kit::Bytes;
using kit::Item;

namespace {

// Tags of every kind: the two always-applied ones, known tags of several types, unknown ones.
constexpr uint32_t kTags[] = {ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION,
                              ANDROID_SCALER_CROP_REGION,
                              ANDROID_CONTROL_AE_MODE,
                              ANDROID_CONTROL_AE_TARGET_FPS_RANGE,
                              ANDROID_CONTROL_AWB_MODE,
                              ANDROID_JPEG_ORIENTATION,
                              ANDROID_LENS_FOCAL_LENGTH,
                              ANDROID_SENSOR_EXPOSURE_TIME,
                              ANDROID_COLOR_CORRECTION_TRANSFORM,
                              ANDROID_JPEG_GPS_COORDINATES,
                              0x300000,
                              0x80000000};
constexpr size_t kMaxCount = 12;
constexpr size_t kMaxBatch = 5;

#define CHECK(cond) \
    if (!(cond)) __builtin_trap()

uint32_t pickTag(FuzzedDataProvider& in) {
    if (in.ConsumeBool()) return in.ConsumeIntegral<uint32_t>();
    return in.PickValueInArray(kTags);
}

std::string pickCamera(FuzzedDataProvider& in) {
    switch (in.ConsumeIntegralInRange<int>(0, 3)) {
        case 0:
            return "0";
        case 1:
            return "device@3.2/internal/0";
        case 2:
            return "1";
        default:
            return in.ConsumeRandomLengthString(24);
    }
}

// Element bytes of an NDK type code, 0 for codes without a payload.
size_t elementSize(uint8_t type) {
    return type < NUM_TYPES ? camera_metadata_type_size[type] : 0;
}

// Overwrites one field of an entry in the block's used table with a fuzz value: the header stays
// sound while the entry becomes hostile (its tag one the merge looks for, its count, data offset
// or type anything).
void makeEntryHostile(Bytes& blob, FuzzedDataProvider& in) {
    uint32_t entryCount;
    memcpy(&entryCount, blob.data() + 12, sizeof(entryCount));
    if (entryCount == 0) return;
    const size_t at = 48 + 16 * in.ConsumeIntegralInRange<size_t>(0, entryCount - 1);
    const size_t fields[] = {0, 4, 8, 12};
    const size_t field = in.PickValueInArray(fields);
    uint32_t value = field == 0 ? in.PickValueInArray(kTags) : in.ConsumeIntegral<uint32_t>();
    if (field == 8 && in.ConsumeBool()) value = in.ConsumeIntegralInRange<uint32_t>(0, 64) * 8;
    if (field == 12) value &= 0xFF;
    memcpy(blob.data() + at + field, &value, sizeof(value));
}

// A settings blob: usually a sound block built from fuzz values, then sometimes hostile entries
// under a sound header, a changed header field, or flipped bytes; sometimes raw bytes.
Bytes makeBlob(FuzzedDataProvider& in) {
    if (in.ConsumeIntegralInRange<int>(0, 7) == 0) {
        return in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(0, 512));
    }
    const size_t entryCapacity = in.ConsumeIntegralInRange<size_t>(0, 12);
    const size_t dataCapacity = in.ConsumeIntegralInRange<size_t>(0, 160);
    std::vector<Item> entries(in.ConsumeIntegralInRange<size_t>(0, entryCapacity));
    for (Item& item : entries) {
        item.tag = pickTag(in);
        const int type = get_camera_metadata_tag_type(item.tag);
        item.type = static_cast<uint8_t>(type < 0 ? 0 : type);
        item.bytes = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(0, 6) *
                                              camera_metadata_type_size[item.type]);
        item.bytes.resize(item.bytes.size() / camera_metadata_type_size[item.type] *
                          camera_metadata_type_size[item.type]);
    }
    Bytes made = blob(entryCapacity, dataCapacity, entries);
    switch (in.ConsumeIntegralInRange<int>(0, 5)) {
        case 0:
        case 1:
            for (int i = in.ConsumeIntegralInRange<int>(1, 3); i > 0; --i) {
                makeEntryHostile(made, in);
            }
            break;
        case 2: {  // one header field anything: a count, a capacity, a start, the size
            const uint32_t value = in.ConsumeIntegralInRange<uint32_t>(0, 400);
            memcpy(made.data() + 4 * in.ConsumeIntegralInRange<size_t>(0, 8), &value, 4);
            break;
        }
        case 3:
            for (int i = in.ConsumeIntegralInRange<int>(1, 4); i > 0; --i) {
                made[in.ConsumeIntegralInRange<size_t>(0, made.size() - 1)] ^=
                        in.ConsumeIntegral<uint8_t>();
            }
            break;
        default:
            break;
    }
    return made;
}

void addEntry(CameraControlCache& cache, FuzzedDataProvider& in) {
    ACameraMetadata_entry entry{};
    entry.tag = pickTag(in);
    entry.type = in.ConsumeBool() ? in.ConsumeIntegralInRange<uint8_t>(0, 5)
                                  : in.ConsumeIntegral<uint8_t>();
    entry.count = in.ConsumeIntegralInRange<uint32_t>(0, kMaxCount);
    Bytes values = in.ConsumeBytes<uint8_t>(entry.count * elementSize(entry.type));
    values.resize(entry.count * elementSize(entry.type));
    entry.data.u8 = in.ConsumeIntegralInRange<int>(0, 15) == 0 ? nullptr : values.data();
    if (in.ConsumeBool()) {
        cache.addMetaData(pickCamera(in), entry);
    } else {
        // Straight into one request's queued settings, as a component of the pipeline may.
        auto queue = std::make_shared<RequestMetadataQueue>(4096);
        const Bytes blob = makeBlob(in);
        queue->write(blob.data(), blob.size());
        CaptureRequest request{};
        request.fmqSettingsSize = blob.size();
        if (entry.data.u8 == nullptr) entry.data.u8 = values.data();
        cache.appendAlwaysMetadata(queue, request, entry);
        CHECK(queue->availableToRead() == request.fmqSettingsSize);
    }
}

void armFaults(FuzzedDataProvider& in) {
    if (in.ConsumeIntegralInRange<int>(0, 3) != 0) return;
    const hostfault::Point points[] = {hostfault::kQueueRead, hostfault::kQueueWrite,
                                       hostfault::kMetadataAllocate};
    hostfault::arm(in.PickValueInArray(points), 1, in.ConsumeIntegralInRange<int>(0, 4));
}

uint64_t queuedBytes(const hidl_vec<CaptureRequest>& requests) {
    uint64_t total = 0;
    for (const CaptureRequest& r : requests) total += r.fmqSettingsSize;
    return total;
}

// A batch of requests of every kind, their blobs in a queue, then the merge. Whatever happens,
// the queue keeps exactly the bytes the requests claim plus whatever else it held.
void applyBatch(CameraControlCache& cache, FuzzedDataProvider& in) {
    const size_t capacities[] = {64, 1024, 8192};
    std::shared_ptr<RequestMetadataQueue> queue;
    if (in.ConsumeIntegralInRange<int>(0, 7) != 0) {
        queue = std::make_shared<RequestMetadataQueue>(in.PickValueInArray(capacities));
    }
    hidl_vec<CaptureRequest> requests(in.ConsumeIntegralInRange<size_t>(0, kMaxBatch));
    for (CaptureRequest& request : requests) {
        request.frameNumber = in.ConsumeIntegral<uint32_t>();
        switch (in.ConsumeIntegralInRange<int>(0, 3)) {
            case 0:
                break;  // no settings at all
            case 1:
                request.settings =
                        in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(1, 64));
                break;
            default: {
                const Bytes blob = makeBlob(in);
                request.fmqSettingsSize = blob.size();
                if (in.ConsumeIntegralInRange<int>(0, 7) == 0) {
                    request.fmqSettingsSize += in.ConsumeIntegralInRange<int>(-8, 8);
                }
                if (queue != nullptr) queue->write(blob.data(), blob.size());
                break;
            }
        }
    }
    if (queue != nullptr && in.ConsumeBool()) {  // bytes beyond the batch's blobs
        const Bytes extra = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(0, 32));
        queue->write(extra.data(), extra.size());
    }
    armFaults(in);

    const uint64_t heldBefore = queue ? queue->availableToRead() : 0;
    const uint64_t claimedBefore = queuedBytes(requests);
    cache.applyMetaData(pickCamera(in), requests, queue);
    hostfault::disarmAll();
    if (queue == nullptr) return;

    CHECK(queue->availableToRead() - queuedBytes(requests) == heldBefore - claimedBefore);
    // Every blob handed to the session must be readable as the request claims it.
    Bytes bytes(queue->availableToRead());
    queue->read(bytes.data(), bytes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    {
        std::lock_guard lock(CameraControlCache::mLock);
        CameraControlCache::sInstance.reset();
    }
    std::shared_ptr<CameraControlCache> cache = CameraControlCache::Instance();

    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 6)) {
            case 0:
                cache->setCameraMetadata(pickCamera(in), pickTag(in),
                                         in.ConsumeIntegral<int32_t>());
                break;
            case 1: {
                std::vector<int32_t> values(in.ConsumeIntegralInRange<size_t>(0, kMaxCount));
                for (int32_t& v : values) v = in.ConsumeIntegral<int32_t>();
                cache->setCameraMetaarray(pickCamera(in), pickTag(in), hidl_vec<int32_t>(values));
                break;
            }
            case 2:
                addEntry(*cache, in);
                break;
            case 3:
                cache->removeMetaData(pickCamera(in), pickTag(in));
                break;
            case 4:
                cache->removeCamera(pickCamera(in));
                break;
            case 5:
                applyBatch(*cache, in);
                break;
            default: {
                const std::string id = in.ConsumeRandomLengthString(32);
                const std::string shortId = extractCameraId(id);
                CHECK(shortId.find('/') == std::string::npos);
                CHECK(id.size() >= shortId.size() &&
                      id.compare(id.size() - shortId.size(), shortId.size(), shortId) == 0);
                break;
            }
        }
    }

    // The last owner releases every payload; the leak checker sees any that stays.
    cache.reset();
    std::lock_guard lock(CameraControlCache::mLock);
    CameraControlCache::sInstance.reset();
    return 0;
}
