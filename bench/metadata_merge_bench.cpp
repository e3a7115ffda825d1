// Cost of merging cached metadata into queue-carried capture requests, against the queue floor
// and the per-entry mechanism.
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <memory>
#include <new>
#include <vector>

#include <android/log.h>
#include <benchmark/benchmark.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "kit/BlobBuilder.h"

using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using namespace kit;
using Clock = std::chrono::steady_clock;

// Every heap allocation of the process is counted: operator new here, the C allocator through
// glibc's documented interposition (not under a sanitizer, which owns the allocator).
namespace {
std::atomic<uint64_t> sAllocations{0};
}  // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* p, size_t size);

void* malloc(size_t size) {
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}
void* realloc(void* p, size_t size) {
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(p, size);
}
}  // extern "C"
#define COUNTED_MALLOC __libc_malloc
#else
#define COUNTED_MALLOC malloc
#endif

void* operator new(size_t size) {
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    void* p = COUNTED_MALLOC(size == 0 ? 1 : size);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
void* operator new[](size_t size) {
    return operator new(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    return COUNTED_MALLOC(size == 0 ? 1 : size);
}
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
// The library's operator delete releases with free(), which matches.

namespace {

constexpr uint32_t kExposureCompensation = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;
constexpr uint32_t kCropRegion = ANDROID_SCALER_CROP_REGION;
constexpr size_t kBatch = 4;
const std::string kCameraId = "device@3.2/internal/0";  // longer than the short-string buffer

// The keys of a typical preview request: tag and element count.
struct Key {
    uint32_t tag;
    size_t count;
};
const Key kPreviewKeys[] = {
        // color correction
        {0x00000, 1},
        {0x00001, 9},
        {0x00002, 4},
        {0x00003, 1},
        // control (the exposure compensation is added by the variants)
        {0x10000, 1},
        {0x10002, 1},
        {0x10003, 1},
        {0x10004, 5},
        {0x10005, 2},
        {0x10006, 1},
        {0x10007, 1},
        {0x10008, 5},
        {0x10009, 1},
        {0x1000A, 1},
        {0x1000B, 1},
        {0x1000C, 5},
        {0x1000D, 1},
        {0x1000E, 1},
        {0x1000F, 1},
        {0x10010, 1},
        {0x10011, 1},
        {0x10029, 1},
        // demosaic, edge, flash, hot pixel
        {0x20000, 1},
        {0x30000, 1},
        {0x30001, 1},
        {0x40000, 1},
        {0x40001, 1},
        {0x40002, 1},
        {0x60000, 1},
        // jpeg
        {0x70000, 3},
        {0x70001, 10},
        {0x70002, 1},
        {0x70003, 1},
        {0x70004, 1},
        {0x70005, 1},
        {0x70006, 2},
        // lens
        {0x80000, 1},
        {0x80001, 1},
        {0x80002, 1},
        {0x80003, 1},
        {0x80004, 1},
        // noise reduction, request
        {0xA0000, 1},
        {0xA0001, 1},
        {0xC0000, 1},
        {0xC0001, 1},
        {0xC0002, 1},
        {0xC0003, 1},
        {0xC0004, 2},
        {0xC0005, 1},
        // sensor
        {0xE0000, 1},
        {0xE0001, 1},
        {0xE0002, 1},
        {0xE0017, 4},
        {0xE0018, 1},
        // shading, statistics
        {0x100000, 1},
        {0x100001, 1},
        {0x110000, 1},
        {0x110001, 1},
        {0x110002, 1},
        {0x110003, 1},
        {0x110010, 1},
        {0x110011, 1},
        // tonemap, led, black level, reprocess, distortion correction
        {0x130000, 4},
        {0x130001, 4},
        {0x130002, 4},
        {0x130003, 1},
        {0x130006, 1},
        {0x130007, 1},
        {0x140000, 1},
        {0x160000, 1},
        {0x180000, 1},
        {0x1B0000, 1},
};

enum class Variant {
    kAppendWithRoom,  // the blob lacks both cached tags and has room for them
    kUpdate,          // the blob holds both tags: their values are replaced (two log lines)
    kAppendGrow,      // the blob lacks both tags and has no room: it must grow
};

// A preview request's settings, with or without the two always-applied tags.
Bytes previewSettings(Variant variant) {
    std::vector<Key> keys(std::begin(kPreviewKeys), std::end(kPreviewKeys));
    if (variant == Variant::kUpdate) {
        keys.insert(keys.begin() + 4, {kExposureCompensation, 1});
        keys.push_back({kCropRegion, 4});
    }
    std::vector<Item> entries;
    size_t data = 0;
    for (const Key& key : keys) {
        const int type = get_camera_metadata_tag_type(key.tag);
        const size_t bytes = key.count * camera_metadata_type_size[type];
        if (bytes > 4) data += (bytes + 7) & ~size_t{7};
        Bytes values(bytes);
        for (size_t i = 0; i < bytes; ++i) values[i] = static_cast<uint8_t>(i + 1);
        entries.push_back({key.tag, static_cast<uint8_t>(type), values});
    }
    const bool grow = variant == Variant::kAppendGrow;
    Bytes settings = blob(grow ? keys.size() : 128, grow ? data : 1024, entries);
    if (get_camera_metadata_entry_count(reinterpret_cast<camera_metadata_t*>(settings.data())) !=
        keys.size()) {
        abort();
    }
    return settings;
}

// The per-entry mechanism the merge replaces, step by step: per entry one read of the blob into
// a new buffer, a lookup, an update or an append through a one-entry scratch block (enlarging
// into a new block when the room runs out), one write, and every buffer released.
void appendPerEntry(RequestMetadataQueue& queue, CaptureRequest& request,
                    const ACameraMetadata_entry& entry) {
    if (request.fmqSettingsSize == 0) return;
    const size_t size = request.fmqSettingsSize;
    auto* settings = static_cast<camera_metadata_t*>(malloc(size));
    if (!queue.read(reinterpret_cast<uint8_t*>(settings), size)) {
        free(settings);
        return;
    }
    camera_metadata_t* result = settings;
    camera_metadata_t* scratch = nullptr;
    camera_metadata_t* larger = nullptr;
    camera_metadata_entry_t found;
    if (find_camera_metadata_entry(settings, entry.tag, &found) == 0) {
        if (update_camera_metadata_entry(settings, found.index, entry.data.u8, entry.count,
                                         nullptr) == 0) {
            __android_log_print(ANDROID_LOG_INFO, "CameraControlCache", "updating 0x%x metadata \n",
                                entry.tag);
        }
    } else if ((scratch = allocate_camera_metadata(1, 16)) != nullptr &&
               add_camera_metadata_entry(scratch, entry.tag, entry.data.u8, entry.count) == 0) {
        size_t entries = get_camera_metadata_entry_capacity(settings);
        size_t data = get_camera_metadata_data_capacity(settings);
        const size_t entryCount = get_camera_metadata_entry_count(settings);
        const size_t dataCount = get_camera_metadata_data_count(settings);
        const bool grow = entryCount + 1 > entries || dataCount + 16 > data;
        if (entryCount + 1 > entries) entries = (entryCount + 1) * 2;
        if (dataCount + 16 > data) data = (dataCount + 16) * 2;
        if (!grow) {
            append_camera_metadata(settings, scratch);
        } else if ((larger = allocate_camera_metadata(entries, data)) != nullptr) {
            append_camera_metadata(larger, settings);
            append_camera_metadata(larger, scratch);
            result = larger;
        }
    }
    const size_t outSize = get_camera_metadata_size(result);
    request.fmqSettingsSize =
            queue.write(reinterpret_cast<const uint8_t*>(result), outSize) ? outSize : 0;
    free_camera_metadata(larger);
    free_camera_metadata(scratch);
    free(settings);
}

void discardLog(const __android_logger_data*, const char*) {}

// Puts the original blobs back in the queue and the sizes back in the requests.
void refill(RequestMetadataQueue& queue, hidl_vec<CaptureRequest>& requests, const Bytes& blob,
            Bytes& sink) {
    while (queue.availableToRead() != 0) {
        const size_t n = std::min(queue.availableToRead(), sink.size());
        queue.read(sink.data(), n);
    }
    for (CaptureRequest& request : requests) {
        queue.write(blob.data(), blob.size());
        request.fmqSettingsSize = blob.size();
    }
}

double seconds(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double>(end - start).count();
}

// In the same iterations: the merge of a batch of queue-carried requests (the reported time),
// the floor (one read and one write of each of the same blobs), and the per-entry mechanism on
// each request as a batch of one (where it is correct), one call per cached entry.
void BM_ApplyMetaData(benchmark::State& state, Variant variant) {
    __android_log_set_logger(discardLog);  // the line is still formatted, then dropped
    std::shared_ptr<CameraControlCache> cache = CameraControlCache::Instance();
    cache->setCameraMetadata(kCameraId, kExposureCompensation, -2);
    cache->setCameraMetaarray(kCameraId, kCropRegion, hidl_vec<int32_t>{0, 0, 2720, 1530});
    int32_t exposure = -2, crop[] = {0, 0, 2720, 1530};
    ACameraMetadata_entry perEntry[] = {{kExposureCompensation, ACAMERA_TYPE_INT32, 1, {nullptr}},
                                        {kCropRegion, ACAMERA_TYPE_INT32, 4, {nullptr}}};
    perEntry[0].data.i32 = &exposure;
    perEntry[1].data.i32 = crop;

    const Bytes blob = previewSettings(variant);
    auto queue = std::make_shared<RequestMetadataQueue>(1 << 16);
    hidl_vec<CaptureRequest> requests(kBatch), lone(1);
    Bytes sink(1 << 16), buffer(blob.size() * 4);

    // Warm up: the per-thread read buffer and the queue's pages.
    refill(*queue, requests, blob, sink);
    cache->applyMetaData(kCameraId, requests, queue);

    double mergeTime = 0, floorTime = 0, peerTime = 0;
    uint64_t allocations = 0, peerAllocations = 0;
    for (auto _ : state) {
        refill(*queue, requests, blob, sink);
        const Clock::time_point floorStart = Clock::now();
        for (CaptureRequest& request : requests) {
            queue->read(buffer.data(), request.fmqSettingsSize);
            queue->write(buffer.data(), request.fmqSettingsSize);
        }
        const Clock::time_point floorEnd = Clock::now();
        benchmark::DoNotOptimize(buffer.data());

        for (size_t i = 0; i < kBatch; ++i) {
            refill(*queue, lone, blob, sink);
            const uint64_t before = sAllocations.load(std::memory_order_relaxed);
            const Clock::time_point start = Clock::now();
            for (const ACameraMetadata_entry& entry : perEntry) {
                appendPerEntry(*queue, lone[0], entry);
            }
            peerTime += seconds(start, Clock::now());
            peerAllocations += sAllocations.load(std::memory_order_relaxed) - before;
        }

        refill(*queue, requests, blob, sink);
        const uint64_t allocationsBefore = sAllocations.load(std::memory_order_relaxed);
        const Clock::time_point mergeStart = Clock::now();
        cache->applyMetaData(kCameraId, requests, queue);
        const Clock::time_point mergeEnd = Clock::now();
        allocations += sAllocations.load(std::memory_order_relaxed) - allocationsBefore;

        floorTime += seconds(floorStart, floorEnd);
        mergeTime += seconds(mergeStart, mergeEnd);
        state.SetIterationTime(seconds(mergeStart, mergeEnd));
    }
    if (requests[0].fmqSettingsSize == 0 || lone[0].fmqSettingsSize == 0) {
        state.SkipWithError("a merge lost a blob");
    }

    const double perRequest = 1e9 / (static_cast<double>(state.iterations()) * kBatch);
    state.counters["blob_bytes"] = static_cast<double>(blob.size());
    state.counters["merge_ns"] = mergeTime * perRequest;
    state.counters["floor_ns"] = floorTime * perRequest;
    state.counters["per_entry_ns"] = peerTime * perRequest;
    state.counters["x_floor"] = floorTime > 0 ? mergeTime / floorTime : 0;
    state.counters["per_entry_x_ours"] = mergeTime > 0 ? peerTime / mergeTime : 0;
    state.counters["allocs"] = static_cast<double>(allocations) * perRequest / 1e9;
    state.counters["per_entry_allocs"] = static_cast<double>(peerAllocations) * perRequest / 1e9;
    __android_log_set_logger(__android_log_stderr_logger);
}

BENCHMARK_CAPTURE(BM_ApplyMetaData, append_with_room, Variant::kAppendWithRoom)->UseManualTime();
BENCHMARK_CAPTURE(BM_ApplyMetaData, update_in_place, Variant::kUpdate)->UseManualTime();
BENCHMARK_CAPTURE(BM_ApplyMetaData, append_must_grow, Variant::kAppendGrow)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
