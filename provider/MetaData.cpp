// Metadata overrides set through the interface, and the zoom-in limit.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <iterator>
#include <memory>
#include <string>

#include <log/log.h>

#include "CameraControlCache.h"

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {
namespace implementation {

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;

namespace {

// Smallest crop width a zoom-in may reach, by level 1 to 5. Level 3 is 416, not 1280 / 3.
constexpr uint32_t kZoomInLimits[] = {1280, 640, 416, 320, 256};
constexpr uint32_t kDefaultZoomInLimit = 320;

}  // namespace

Return<void> ZorvCameraProvider::setMetaData(const hidl_string& cameraId, uint32_t tag,
                                             int32_t value) {
    std::shared_ptr<CameraControlCache> cache = CameraControlCache::Instance();
    cache->setCameraMetadata(std::string(cameraId), tag, value);
    return Void();
}

Return<void> ZorvCameraProvider::setMetaArray(const hidl_string& cameraId, uint32_t tag,
                                              const hidl_vec<int32_t>& values) {
    std::shared_ptr<CameraControlCache> cache = CameraControlCache::Instance();
    cache->setCameraMetaarray(std::string(cameraId), tag, values);
    return Void();
}

Return<void> ZorvCameraProvider::setZoomInLimit(const hidl_string& cameraId, uint32_t level) {
    ALOGD("ZorvCameraProvider camera %s setZoomInLimit %d \n", cameraId.c_str(), level);
    const uint32_t limit = level >= 1 && level <= std::size(kZoomInLimits)
                                   ? kZoomInLimits[level - 1]
                                   : kDefaultZoomInLimit;
    {
        std::lock_guard lock(mLock);
        mZoomInLimit = limit;
    }
    // Re-applies the current crop under the new limit; refused while tracking is on, when the
    // limit applies from the next zoom.
    moveCamera_l(cameraId, CameraMoveDirection::APPLY_ZOOM_LIMIT, 0);
    return Void();
}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
