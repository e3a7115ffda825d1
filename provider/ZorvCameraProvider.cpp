// The service object: factory, construction, the base provider methods, session access and the
// metadata overrides, which go to the camera control cache.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdio.h>

#include <memory>
#include <string>

#include <cutils/properties.h>
#include <log/log.h>

#include "CameraControlCache.h"
#include "FDSession.h"
#include "Framing.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

namespace {
constexpr uint32_t kTrackingModeCount = 6;  // the property accepts 0 to 5
constexpr const char* kTalkerTrackingProperty = "vendor.talkertracking.flag";
}  // namespace

std::atomic<bool> ZorvCameraProvider::sTrackingNotified{false};

ZorvCameraProvider::ZorvCameraProvider() : mLastCrop{}, mZoomInLimit(kDefaultZoomInLimit) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return;
    // The property mirrors the session's mode from the moment the service exists.
    setTrackingModeProperty(static_cast<TrackingMode>(session->trackingMode()));
}

ZorvCameraProvider::~ZorvCameraProvider() {}

void ZorvCameraProvider::setTrackingModeProperty(TrackingMode mode) {
    if (static_cast<uint32_t>(mode) >= kTrackingModeCount) {
        ALOGE("%s: ignoring invalid trackingMode %d", "setTrackingModeProperty",
              static_cast<int32_t>(mode));
        return;
    }
    char value[PROPERTY_VALUE_MAX];
    snprintf(value, sizeof(value), "%u", static_cast<uint32_t>(mode));
    ALOGI("%s: setting talker tracking to %s", "setTrackingModeProperty", value);
    property_set(kTalkerTrackingProperty, value);
}

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

Return<Status> ZorvCameraProvider::setCallback(const sp<ICameraProviderCallback>& /*callback*/) {
    return Status::OK;
}

Return<void> ZorvCameraProvider::getVendorTags(getVendorTags_cb _hidl_cb) {
    _hidl_cb(Status::OK, {});
    return Void();
}

Return<void> ZorvCameraProvider::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    _hidl_cb(Status::OK, {});
    return Void();
}

Return<void> ZorvCameraProvider::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    _hidl_cb(Status::OK, false);
    return Void();
}

// No camera device is offered here, so every name is an unknown one.
Return<void> ZorvCameraProvider::getCameraDeviceInterface_V1_x(
        const hidl_string& /*cameraDeviceName*/, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    _hidl_cb(Status::ILLEGAL_ARGUMENT, nullptr);
    return Void();
}

Return<void> ZorvCameraProvider::getCameraDeviceInterface_V3_x(
        const hidl_string& /*cameraDeviceName*/, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    _hidl_cb(Status::ILLEGAL_ARGUMENT, nullptr);
    return Void();
}

Return<void> ZorvCameraProvider::getFDSessionInterface(getFDSessionInterface_cb _hidl_cb) {
    ALOGI("%s: enter \n", "getFDSessionInterface");
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) {
        ALOGE("%s: cannot allocate fd stream \n", "getFDSessionInterface");
        _hidl_cb(Status::INTERNAL_ERROR, nullptr);
        return Void();
    }
    sp<IFDSession> interface = session->getInterface();
    if (interface == nullptr) {
        ALOGE("%s: cannot allocate fd stream interface \n", "getFDSessionInterface");
        _hidl_cb(Status::INTERNAL_ERROR, nullptr);
        return Void();
    }
    _hidl_cb(Status::OK, interface);
    ALOGI("%s: exit \n", "getFDSessionInterface");
    return Void();
}

extern "C" __attribute__((visibility("default"))) IZorvCameraProvider*
HIDL_FETCH_IZorvCameraProvider(const char* /*name*/) {
    return new ZorvCameraProvider();
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
