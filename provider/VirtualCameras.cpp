// Virtual cameras: per-camera capability, name list and maximum, the availability switch (with
// its properties and tracking rule) and the info records, with notifications.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdint.h>
#include <stdio.h>

#include <string>
#include <vector>

#include <cutils/properties.h>
#include <log/log.h>

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;

namespace {
constexpr const char* kMaxVirtualCamerasProperty = "persist.tessaview.vc.max";
constexpr const char* kEnableProperty = "vendor.tessaview.vc.enable";
constexpr const char* kMultistreamProperty = "persist.vendor.multistream.enable";
}  // namespace

// The tables key by the whole id, byte for byte (std::string(hidl_string) keeps its size),
// while log lines print it as C text.

void setMaxVirtualCamProperty(int maxVirtualCameras) {
    char value[PROPERTY_VALUE_MAX];
    snprintf(value, sizeof(value), "%u", static_cast<unsigned>(maxVirtualCameras));
    property_set(kMaxVirtualCamerasProperty, value);
}

Return<VirtualCameraCapability> ZorvCameraProvider::getVirtualCameraCapability(
        const hidl_string& cameraId) {
    ALOGD("%s: camera: %s", __func__, cameraId.c_str());
    std::lock_guard lock(mLock);
    auto it = mVirtualCameraCapabilities.find(std::string(cameraId));
    if (it == mVirtualCameraCapabilities.end()) {
        ALOGI("%s: did not find virtual camera: %s returning not supported", __func__,
              cameraId.c_str());
        return VirtualCameraCapability::NOT_SUPPORTED;
    }
    ALOGI("%s: found virtual camera: %s capability: %d", __func__, cameraId.c_str(),
          static_cast<int32_t>(it->second));
    return it->second;
}

Return<void> ZorvCameraProvider::setVirtualCameraCapability(const hidl_string& cameraId,
                                                            VirtualCameraCapability capability) {
    ALOGI("%s: camera: %s capability: %d", __func__, cameraId.c_str(),
          static_cast<int32_t>(capability));
    std::lock_guard lock(mLock);
    mVirtualCameraCapabilities[std::string(cameraId)] = capability;
    notifyListeners("onVirtualCameraCapabilityChange", [&](const Listener& listener) {
        return listener->onVirtualCameraCapabilityChange(cameraId, capability);
    });
    return Void();
}

Return<void> ZorvCameraProvider::getVirtualCameraList(const hidl_string& cameraId,
                                                      getVirtualCameraList_cb _hidl_cb) {
    ALOGD("%s: camera: %s", __func__, cameraId.c_str());
    // Held through the result callback, so the answer cannot be half of a concurrent change.
    std::lock_guard lock(mLock);
    auto it = mVirtualCameraLists.find(std::string(cameraId));
    if (it == mVirtualCameraLists.end()) {
        // The callback carries only the list; the miss is told by the log alone.
        ALOGI("%s: did not find virtual cameras for camera: %s returning INTERNAL_ERROR", __func__,
              cameraId.c_str());
        _hidl_cb(hidl_vec<hidl_string>());
        return Void();
    }
    const std::vector<std::string>& stored = it->second;
    ALOGI("%s: found virtual cameras for camera: %s %d", __func__, cameraId.c_str(),
          static_cast<int>(stored.size()));
    hidl_vec<hidl_string> names(stored.size());
    for (size_t i = 0; i < stored.size(); ++i) names[i] = stored[i];
    _hidl_cb(names);
    return Void();
}

Return<void> ZorvCameraProvider::setVirtualCameraList(const hidl_string& cameraId,
                                                      const hidl_vec<hidl_string>& names) {
    ALOGI("%s: camera: %s adding %d virtual cameras ", __func__, cameraId.c_str(),
          static_cast<int>(names.size()));
    for (const hidl_string& name : names) {
        ALOGI("%s:    virtual camera: %s", __func__, name.c_str());
    }
    ALOGI("%s: camera: %s done with enumeration ", __func__, cameraId.c_str());

    std::lock_guard lock(mLock);
    ALOGI("%s: camera: %s clearing the map ", __func__, cameraId.c_str());
    // A stored name is its text up to the first NUL; listeners still get the names as received.
    std::vector<std::string> converted;
    converted.reserve(names.size());
    for (const hidl_string& name : names) converted.emplace_back(name.c_str());
    ALOGI("%s: camera: %s transformed the virtual camera names size: %d", __func__,
          cameraId.c_str(), static_cast<int>(converted.size()));
    std::vector<std::string>& stored = mVirtualCameraLists[std::string(cameraId)];
    stored = std::move(converted);
    ALOGI("%s: camera: %s now has %d virtual cameras", __func__, cameraId.c_str(),
          static_cast<int>(stored.size()));
    ALOGI("%s: Calling the listeners", __func__);
    notifyListeners("onVirtualCameraListChange", [&](const Listener& listener) {
        return listener->onVirtualCameraListChange(cameraId, names);
    });
    return Void();
}

Return<void> ZorvCameraProvider::setMaxVirtualCameras(const hidl_string& cameraId,
                                                      uint32_t maxVirtualCameras) {
    ALOGI("%s: camera: %s setting max virtual cameras to %u", __func__, cameraId.c_str(),
          maxVirtualCameras);
    std::lock_guard lock(mLock);
    // Kept as its 32 bits; every value, 0 and the largest included, is accepted.
    mMaxVirtualCameras[std::string(cameraId)] = static_cast<int32_t>(maxVirtualCameras);
    setMaxVirtualCamProperty(static_cast<int>(maxVirtualCameras));
    notifyListeners("onMaxVirtualCamerasChange", [&](const Listener& listener) {
        return listener->onMaxVirtualCamerasChange(cameraId, maxVirtualCameras);
    });
    return Void();
}

Return<uint32_t> ZorvCameraProvider::getMaxVirtualCameras(const hidl_string& cameraId) {
    ALOGI("%s: camera: %s", __func__, cameraId.c_str());
    std::lock_guard lock(mLock);
    auto it = mMaxVirtualCameras.find(std::string(cameraId));
    if (it == mMaxVirtualCameras.end()) {
        ALOGI("%s: did not find max virtual camers for camera: %s returning 0", __func__,
              cameraId.c_str());
        return 0u;
    }
    ALOGI("%s: Found max virtual camers for camera: %s max: %d", __func__, cameraId.c_str(),
          it->second);
    return static_cast<uint32_t>(it->second);
}

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

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
