// The process-wide store of per-camera metadata overrides and their merge into capture requests.
#ifndef CACHE_CAMERACONTROLCACHE_H
#define CACHE_CAMERACONTROLCACHE_H

#include <stdint.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include <camera/NdkCameraMetadata.h>
#include <fmq/MessageQueue.h>
#include <hidl/HidlSupport.h>

#include <android/hardware/camera/device/3.2/types.h>

#include "LockOrder.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using RequestMetadataQueue =
        ::android::hardware::MessageQueue<uint8_t, ::android::hardware::kSynchronizedReadWrite>;

// One instance per process (sInstance), created by the first Instance(). mLock guards sInstance
// and every camera's entries; every operation but appendAlwaysMetadata holds it throughout.
// The cache owns the payloads of its entries (types 0 to 5) and never keeps a caller's buffer.
class CameraControlCache {
  public:
    using CaptureRequest = ::android::hardware::camera::device::V3_2::CaptureRequest;

    static std::shared_ptr<CameraControlCache> Instance();
    virtual ~CameraControlCache();

    // Store operations; camera ids may be full device names or short ids.
    void setCameraMetadata(const std::string& cameraId, uint32_t tag, int32_t value);
    void setCameraMetaarray(const std::string& cameraId, uint32_t tag,
                            const ::android::hardware::hidl_vec<int32_t>& values);
    void addMetaData(const std::string& cameraId, ACameraMetadata_entry entry);
    void removeMetaData(const std::string& cameraId, uint32_t tag);
    void removeCamera(const std::string& cameraId);

    // Merges the camera's entries into a batch of requests before the device reads their
    // settings: always-applied tags into settings carried in the queue, every entry into
    // requests that carry no settings at all.
    void applyMetaData(const std::string& cameraId,
                       ::android::hardware::hidl_vec<CaptureRequest>& requests,
                       std::shared_ptr<RequestMetadataQueue> queue);
    // Merges one entry into the request's settings blob at the head of the queue and writes
    // the result to its tail. Takes no lock: the caller holds what it needs.
    void appendAlwaysMetadata(std::shared_ptr<RequestMetadataQueue> queue, CaptureRequest& request,
                              ACameraMetadata_entry entry);

    static std::shared_ptr<CameraControlCache> sInstance;
    static RankedRecursiveMutex<LockRank::kCache> mLock;

  private:
    CameraControlCache() = default;

    std::map<std::string, std::vector<ACameraMetadata_entry>> mEntries;

    friend class CameraControlCacheTestPeer;
};

// Tags merged into settings that travel in the request metadata queue.
extern const std::unordered_set<int32_t> sAlwaysMetadataTags;

// The part of a camera id after its last "/" (the whole id when it has none).
std::string extractCameraId(const std::string& cameraId);
// Gives the entry a new payload of count elements of its type (types 0 to 5).
void newEntryData(ACameraMetadata_entry& entry);
// Releases the entry's payload (types 0 to 5).
void deleteEntryData(ACameraMetadata_entry& entry);

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation

#endif  // CACHE_CAMERACONTROLCACHE_H
