// Host copy of the generated android.hardware.camera.provider@2.4::ICameraProviderCallback.
#ifndef HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDERCALLBACK_H
#define HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDERCALLBACK_H

#include <android/hardware/camera/common/1.0/types.h>
#include <android/hidl/base/1.0/IBase.h>

namespace android {
namespace hardware {
namespace camera {
namespace provider {
namespace V2_4 {

struct ICameraProviderCallback : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor =
            "android.hardware.camera.provider@2.4::ICameraProviderCallback";

    virtual ::android::hardware::Return<void> cameraDeviceStatusChange(
            const ::android::hardware::hidl_string& cameraDeviceName,
            ::android::hardware::camera::common::V1_0::CameraDeviceStatus newStatus) = 0;
    virtual ::android::hardware::Return<void> torchModeStatusChange(
            const ::android::hardware::hidl_string& cameraDeviceName,
            ::android::hardware::camera::common::V1_0::TorchModeStatus newStatus) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V2_4
}  // namespace provider
}  // namespace camera
}  // namespace hardware
}  // namespace android

#endif  // HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDERCALLBACK_H
