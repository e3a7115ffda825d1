// Host copy of the generated
// vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProviderCallback.
#ifndef HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDERCALLBACK_H
#define HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDERCALLBACK_H

#include <android/hidl/base/1.0/IBase.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {

struct IZorvCameraProviderCallback : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor =
            "vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProviderCallback";

    virtual ::android::hardware::Return<void> cameraDeviceTrackingChange(
            const ::android::hardware::hidl_string& cameraId, TrackingMode mode) = 0;
    virtual ::android::hardware::Return<void> onCameraSceneJsonApplied(
            const ::android::hardware::hidl_string& json) = 0;
    virtual ::android::hardware::Return<void> onCameraCropApplied(const SceneControl& scene) = 0;
    virtual ::android::hardware::Return<void> onVirtualCameraCapabilityChange(
            const ::android::hardware::hidl_string& cameraId,
            VirtualCameraCapability capability) = 0;
    virtual ::android::hardware::Return<void> onMaxVirtualCamerasChange(
            const ::android::hardware::hidl_string& cameraId, uint32_t maxVirtualCameras) = 0;
    virtual ::android::hardware::Return<void> onVirtualCameraListChange(
            const ::android::hardware::hidl_string& cameraId,
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& names) = 0;
    virtual ::android::hardware::Return<void> onVirtualCameraInfos(
            const ::android::hardware::hidl_vec<CameraInfo>& infos) = 0;
    virtual ::android::hardware::Return<void> onVirtualCameraAvailablityChange(
            const ::android::hardware::hidl_string& cameraId, bool available) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_IZORVCAMERAPROVIDERCALLBACK_H
