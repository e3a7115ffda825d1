// Virtual camera availability switch (with its properties and tracking rule) and info records.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdint.h>
#include <stdio.h>

#include <string>
#include <vector>

#include <cutils/properties.h>
#include <log/log.h>

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
constexpr const char* kEnableProperty = "vendor.tessaview.vc.enable";
constexpr const char* kMultistreamProperty = "persist.vendor.multistream.enable";
}  // namespace

void setVirtualCameraEnabledProperty(bool available) {
    const int value = available ? 1 : 0;
    char text[2];
    snprintf(text, sizeof(text), "%d", value);
    ALOGI("%s: setting property %s to %d", "setVirtualCameraEnabledProperty", kEnableProperty,
          value);
    property_set(kEnableProperty, text);
}

Return<void> ZorvCameraProvider::setVirtualCameraAvailability(const hidl_string& cameraId,
                                                              bool available) {
    ALOGI("%s: camera: %s setting virtual camera availability to %d", __func__, cameraId.c_str(),
          available);
    // Held across setTrackingMode, which takes FDSession::mLock inside it (provider lock first).
    std::lock_guard lock(mLock);
    mVirtualCameraAvailability[std::string(cameraId)] = available;
    if (property_get_int32(kMultistreamProperty, 0) != 0) {
        ALOGI("%s: multistream feature flag enabled!!!", __func__);
        // The enable property still holds what the previous call wrote: tracking drops back to
        // mode 1 only when virtual cameras were on before.
        if (available) {
            setTrackingMode(cameraId, TrackingMode::MODE_5);
        } else if (property_get_int32(kEnableProperty, 0) != 0) {
            setTrackingMode(cameraId, TrackingMode::MODE_1);
        }
    }
    setVirtualCameraEnabledProperty(available);
    notifyListeners("onVirtualCameraAvailablityChange", [&](const Listener& listener) {
        return listener->onVirtualCameraAvailablityChange(cameraId, available);
    });
    return Void();
}

Return<bool> ZorvCameraProvider::getVirtualCameraAvailability(const hidl_string& cameraId) {
    ALOGD("%s: camera: %s", __func__, cameraId.c_str());
    std::lock_guard lock(mLock);
    auto it = mVirtualCameraAvailability.find(std::string(cameraId));
    if (it == mVirtualCameraAvailability.end()) {
        ALOGI("%s: did not find availability for camera: %s returning false", __func__,
              cameraId.c_str());
        return false;
    }
    ALOGI("%s: Found availability: %s enable: %d", __func__, cameraId.c_str(), it->second);
    return it->second;
}

Return<void> ZorvCameraProvider::setVirtualCameraInfo(const hidl_vec<CameraInfo>& infos) {
    ALOGI("%s: info size %d", __func__, static_cast<int>(infos.size()));
    std::lock_guard lock(mLock);
    // Deep copies: the stored records own their strings and entries apart from the caller's.
    mVirtualCameraInfos.assign(infos.begin(), infos.end());
    notifyListeners("onVirtualCameraInfos", [&](const Listener& listener) {
        return listener->onVirtualCameraInfos(infos);
    });
    return Void();
}

Return<void> ZorvCameraProvider::getVirtualCameraInfo(getVirtualCameraInfo_cb _hidl_cb) {
    ALOGI("%s: ", __func__);
    std::lock_guard lock(mLock);
    _hidl_cb(hidl_vec<CameraInfo>(mVirtualCameraInfos));
    return Void();
}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
