// Test access to the metadata cache's entries and a fresh instance per test.
#ifndef TESTS_SUPPORT_CACHEPEER_H
#define TESTS_SUPPORT_CACHEPEER_H

#include <string.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CameraControlCache.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

class CameraControlCacheTestPeer {
  public:
    // A stored entry with a copy of its payload bytes.
    struct Stored {
        uint32_t tag;
        uint8_t type;
        uint32_t count;
        std::vector<uint8_t> bytes;
        const void* data;  // the stored payload's address
    };

    // Drops the process's instance so that the next Instance() starts empty.
    static void reset() {
        std::lock_guard lock(CameraControlCache::mLock);
        CameraControlCache::sInstance.reset();
    }
    static bool hasCamera(const std::string& id) {
        std::lock_guard lock(CameraControlCache::mLock);
        auto cache = CameraControlCache::sInstance;
        return cache != nullptr && cache->mEntries.count(id) != 0;
    }
    static size_t cameraCount() {
        std::lock_guard lock(CameraControlCache::mLock);
        auto cache = CameraControlCache::sInstance;
        return cache == nullptr ? 0 : cache->mEntries.size();
    }
    static std::vector<Stored> entries(const std::string& id) {
        std::lock_guard lock(CameraControlCache::mLock);
        std::vector<Stored> out;
        auto cache = CameraControlCache::sInstance;
        if (cache == nullptr || cache->mEntries.count(id) == 0) return out;
        for (const ACameraMetadata_entry& e : cache->mEntries.at(id)) {
            static const size_t kSizes[] = {1, 4, 4, 8, 8, 8};
            const size_t size = e.type < 6 ? e.count * kSizes[e.type] : 0;
            std::vector<uint8_t> bytes(size);
            if (size != 0) memcpy(bytes.data(), e.data.u8, size);
            out.push_back({e.tag, e.type, e.count, bytes, e.data.u8});
        }
        return out;
    }
};

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation

#endif  // TESTS_SUPPORT_CACHEPEER_H
