// Host copy of the generated vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProvider.
#ifndef HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDER_H
#define HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDER_H

#include <functional>

#include <android/hardware/camera/common/1.0/types.h>
#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSession.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProviderCallback.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {

struct IZorvCameraProvider : public ::android::hardware::camera::provider::V2_4::ICameraProvider {
    static constexpr const char* descriptor =
            "vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProvider";

    using getFDSessionInterface_cb = std::function<void(
            ::android::hardware::camera::common::V1_0::Status status,
            const ::android::sp<::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession>&
                    session)>;
    using getCurrentCameraCropArea_cb = std::function<void(const SceneControl& scene)>;
    using getVirtualCameraList_cb = std::function<void(
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& names)>;
    using getVirtualCameraInfo_cb =
            std::function<void(const ::android::hardware::hidl_vec<CameraInfo>& infos)>;

    virtual ::android::hardware::Return<void> getFDSessionInterface(
            getFDSessionInterface_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<::android::hardware::camera::common::V1_0::Status>
    setSceneJson(const ::android::hardware::hidl_string& json) = 0;
    virtual ::android::hardware::Return<::android::hardware::camera::common::V1_0::Status> setScene(
            const SceneControl& scene) = 0;
    virtual ::android::hardware::Return<::android::hardware::camera::common::V1_0::Status>
    setTracking(const TrackControl& track) = 0;
    virtual ::android::hardware::Return<TrackingMode> getTrackingMode(
            const ::android::hardware::hidl_string& cameraId) = 0;
    virtual ::android::hardware::Return<void> setTrackingMode(
            const ::android::hardware::hidl_string& cameraId, TrackingMode mode) = 0;
    virtual ::android::hardware::Return<bool> moveCamera(
            const ::android::hardware::hidl_string& cameraId, CameraMoveDirection direction,
            int32_t step) = 0;
    virtual ::android::hardware::Return<void> savePreset(
            const ::android::hardware::hidl_string& cameraId, int32_t preset) = 0;
    virtual ::android::hardware::Return<bool> gotoPreset(
            const ::android::hardware::hidl_string& cameraId, int32_t preset) = 0;
    virtual ::android::hardware::Return<void> setListener(
            const ::android::sp<IZorvCameraProviderCallback>& listener) = 0;
    virtual ::android::hardware::Return<void> getCurrentCameraCropArea(
            getCurrentCameraCropArea_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> setMetaData(
            const ::android::hardware::hidl_string& cameraId, uint32_t tag, int32_t value) = 0;
    virtual ::android::hardware::Return<void> setMetaArray(
            const ::android::hardware::hidl_string& cameraId, uint32_t tag,
            const ::android::hardware::hidl_vec<int32_t>& values) = 0;
    virtual ::android::hardware::Return<void> setZoomInLimit(
            const ::android::hardware::hidl_string& cameraId, uint32_t level) = 0;
    virtual ::android::hardware::Return<void> setVirtualCameraAvailability(
            const ::android::hardware::hidl_string& cameraId, bool available) = 0;
    virtual ::android::hardware::Return<bool> getVirtualCameraAvailability(
            const ::android::hardware::hidl_string& cameraId) = 0;
    virtual ::android::hardware::Return<VirtualCameraCapability> getVirtualCameraCapability(
            const ::android::hardware::hidl_string& cameraId) = 0;
    virtual ::android::hardware::Return<void> setVirtualCameraCapability(
            const ::android::hardware::hidl_string& cameraId,
            VirtualCameraCapability capability) = 0;
    virtual ::android::hardware::Return<void> getVirtualCameraList(
            const ::android::hardware::hidl_string& cameraId, getVirtualCameraList_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> setVirtualCameraList(
            const ::android::hardware::hidl_string& cameraId,
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& names) = 0;
    virtual ::android::hardware::Return<void> setMaxVirtualCameras(
            const ::android::hardware::hidl_string& cameraId, uint32_t maxVirtualCameras) = 0;
    virtual ::android::hardware::Return<uint32_t> getMaxVirtualCameras(
            const ::android::hardware::hidl_string& cameraId) = 0;
    virtual ::android::hardware::Return<void> setVirtualCameraInfo(
            const ::android::hardware::hidl_vec<CameraInfo>& infos) = 0;
    virtual ::android::hardware::Return<void> getVirtualCameraInfo(
            getVirtualCameraInfo_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> clearListener(
            const ::android::sp<IZorvCameraProviderCallback>& listener) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDER_H
