// The metadata cache store: its one instance, lock, entry payloads and the five store operations.
#define LOG_TAG "CameraControlCache"
#include "CameraControlCache.h"

#include <string.h>

#include <algorithm>

#include <log/log.h>
#include <system/camera_metadata.h>

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::hidl_vec;

// The NDK type codes are the metadata library's: its element sizes size the payloads.
constexpr bool sameCode(int ndk, int library) {
    return ndk == library;
}
static_assert(sameCode(ACAMERA_TYPE_BYTE, TYPE_BYTE) && sameCode(ACAMERA_TYPE_INT32, TYPE_INT32) &&
                      sameCode(ACAMERA_TYPE_FLOAT, TYPE_FLOAT) &&
                      sameCode(ACAMERA_TYPE_INT64, TYPE_INT64) &&
                      sameCode(ACAMERA_TYPE_DOUBLE, TYPE_DOUBLE) &&
                      sameCode(ACAMERA_TYPE_RATIONAL, TYPE_RATIONAL) &&
                      sameCode(ACAMERA_NUM_TYPES, NUM_TYPES),
              "NDK and metadata library type codes agree");

// Defined before sInstance so that the instance is released first at unload.
RankedRecursiveMutex<LockRank::kCache> CameraControlCache::mLock;
std::shared_ptr<CameraControlCache> CameraControlCache::sInstance;

namespace {

bool hasPayload(const ACameraMetadata_entry& entry) {
    return entry.type < ACAMERA_NUM_TYPES;
}

size_t payloadSize(const ACameraMetadata_entry& entry) {
    return hasPayload(entry) ? size_t{entry.count} * camera_metadata_type_size[entry.type] : 0;
}

// Gives the entry a new 32-bit integer payload holding the values.
void makeInt32Entry(ACameraMetadata_entry& entry, const int32_t* values, uint32_t count) {
    entry.type = ACAMERA_TYPE_INT32;
    entry.count = count;
    newEntryData(entry);
    if (count != 0) memcpy(entry.data.u8, values, count * sizeof(int32_t));
}

// The entry for the tag in the list, or null.
ACameraMetadata_entry* findEntry(std::vector<ACameraMetadata_entry>& entries, uint32_t tag) {
    auto it = std::find_if(entries.begin(), entries.end(),
                           [tag](const ACameraMetadata_entry& e) { return e.tag == tag; });
    return it == entries.end() ? nullptr : &*it;
}

// Stores values as a 32-bit integer entry. A stored entry of another type, or with no
// values, is replaced in place by one holding the values; a stored 32-bit integer array
// keeps its count: the first values overwrite its first elements and the rest stay.
void storeInt32s(std::vector<ACameraMetadata_entry>& entries, const std::string& id, uint32_t tag,
                 const int32_t* values, uint32_t count) {
    ACameraMetadata_entry* stored = findEntry(entries, tag);
    if (stored == nullptr) {
        entries.push_back({tag, ACAMERA_TYPE_INT32, 0, {nullptr}});
        makeInt32Entry(entries.back(), values, count);
        return;
    }
    if (stored->type != ACAMERA_TYPE_INT32 || stored->count == 0) {
        deleteEntryData(*stored);
        makeInt32Entry(*stored, values, count);
        return;
    }
    if (count != stored->count) {
        ALOGE("set camera [%s] metadata [0x%x] length mis-match\n", id.c_str(), tag);
    }
    const uint32_t written = std::min(count, stored->count);
    if (written != 0) memcpy(stored->data.u8, values, written * sizeof(int32_t));
}

}  // namespace

std::string extractCameraId(const std::string& cameraId) {
    const size_t slash = cameraId.rfind('/');
    return slash == std::string::npos ? cameraId : cameraId.substr(slash + 1);
}

void newEntryData(ACameraMetadata_entry& entry) {
    if (!hasPayload(entry)) return;
    entry.data.u8 = new uint8_t[payloadSize(entry)]();
}

void deleteEntryData(ACameraMetadata_entry& entry) {
    if (!hasPayload(entry)) return;
    delete[] entry.data.u8;
}

std::shared_ptr<CameraControlCache> CameraControlCache::Instance() {
    std::lock_guard lock(mLock);
    if (sInstance == nullptr) sInstance.reset(new CameraControlCache());
    return sInstance;
}

CameraControlCache::~CameraControlCache() {
    // Only the last owner gets here; nobody else can reach the entries.
    for (auto& camera : mEntries) {
        for (ACameraMetadata_entry& entry : camera.second) deleteEntryData(entry);
    }
}

void CameraControlCache::setCameraMetadata(const std::string& cameraId, uint32_t tag,
                                           int32_t value) {
    std::lock_guard lock(mLock);
    const std::string id = extractCameraId(cameraId);
    std::vector<ACameraMetadata_entry>& entries = mEntries[id];
    ALOGI("set camera [%s] metadata [0x%x] to value [%d] this [0x%p]\n", id.c_str(), tag, value,
          static_cast<void*>(this));
    ACameraMetadata_entry* stored = findEntry(entries, tag);
    if (stored != nullptr && stored->type == ACAMERA_TYPE_INT32 && stored->count != 0) {
        // Only the first element changes; a longer array keeps the rest.
        memcpy(stored->data.u8, &value, sizeof(value));
        return;
    }
    storeInt32s(entries, id, tag, &value, 1);
}

void CameraControlCache::setCameraMetaarray(const std::string& cameraId, uint32_t tag,
                                            const hidl_vec<int32_t>& values) {
    std::lock_guard lock(mLock);
    const std::string id = extractCameraId(cameraId);
    std::vector<ACameraMetadata_entry>& entries = mEntries[id];
    ALOGI("set camera [%s] metadata [0x%x] to value [%d] this [0x%p]\n", id.c_str(), tag,
          values.size() != 0 ? values[0] : 0, static_cast<void*>(this));
    storeInt32s(entries, id, tag, values.data(), static_cast<uint32_t>(values.size()));
}

void CameraControlCache::addMetaData(const std::string& cameraId, ACameraMetadata_entry entry) {
    std::lock_guard lock(mLock);
    const std::string id = extractCameraId(cameraId);
    // Whatever is stored is handed to the metadata library later: only what the cache can
    // own is accepted, and the caller's buffer is never kept.
    if (!hasPayload(entry)) {
        ALOGE("camera [%s] metadata [0x%x] has unknown type [%u], not stored\n", id.c_str(),
              entry.tag, entry.type);
        return;
    }
    const size_t size = payloadSize(entry);
    if (size != 0 && entry.data.u8 == nullptr) {
        ALOGE("camera [%s] metadata [0x%x] has no values for count [%u], not stored\n", id.c_str(),
              entry.tag, entry.count);
        return;
    }

    std::vector<ACameraMetadata_entry>& entries = mEntries[id];
    ACameraMetadata_entry* stored = findEntry(entries, entry.tag);
    if (stored == nullptr) {
        entries.push_back({entry.tag, entry.type, entry.count, {nullptr}});
        stored = &entries.back();
        newEntryData(*stored);
    } else if (stored->type != entry.type || stored->count != entry.count) {
        deleteEntryData(*stored);
        *stored = {entry.tag, entry.type, entry.count, {nullptr}};
        newEntryData(*stored);
    }
    if (size != 0) memcpy(stored->data.u8, entry.data.u8, size);
}

void CameraControlCache::removeMetaData(const std::string& cameraId, uint32_t tag) {
    std::lock_guard lock(mLock);
    auto camera = mEntries.find(extractCameraId(cameraId));
    if (camera == mEntries.end()) return;
    std::vector<ACameraMetadata_entry>& entries = camera->second;
    ACameraMetadata_entry* stored = findEntry(entries, tag);
    if (stored == nullptr) return;
    deleteEntryData(*stored);
    entries.erase(entries.begin() + (stored - entries.data()));
}

void CameraControlCache::removeCamera(const std::string& cameraId) {
    std::lock_guard lock(mLock);
    auto camera = mEntries.find(extractCameraId(cameraId));
    if (camera == mEntries.end()) return;
    for (ACameraMetadata_entry& entry : camera->second) deleteEntryData(entry);
    mEntries.erase(camera);
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
