// Host copy of the generated android.hardware.camera.provider@2.4::ICameraProvider.
#ifndef HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDER_H
#define HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDER_H

#include <functional>

#include <android/hardware/camera/common/1.0/types.h>
#include <android/hardware/camera/device/1.0/ICameraDevice.h>
#include <android/hardware/camera/device/3.2/ICameraDevice.h>
#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>
#include <android/hidl/base/1.0/IBase.h>

namespace android {
namespace hardware {
namespace camera {
namespace provider {
namespace V2_4 {

struct ICameraProvider : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor =
            "android.hardware.camera.provider@2.4::ICameraProvider";

    using getVendorTags_cb = std::function<void(
            ::android::hardware::camera::common::V1_0::Status status,
            const ::android::hardware::hidl_vec<
                    ::android::hardware::camera::common::V1_0::VendorTagSection>& sections)>;
    using getCameraIdList_cb =
            std::function<void(::android::hardware::camera::common::V1_0::Status status,
                               const ::android::hardware::hidl_vec<
                                       ::android::hardware::hidl_string>& cameraDeviceNames)>;
    using isSetTorchModeSupported_cb = std::function<void(
            ::android::hardware::camera::common::V1_0::Status status, bool support)>;
    using getCameraDeviceInterface_V1_x_cb = std::function<void(
            ::android::hardware::camera::common::V1_0::Status status,
            const ::android::sp<::android::hardware::camera::device::V1_0::ICameraDevice>& device)>;
    using getCameraDeviceInterface_V3_x_cb = std::function<void(
            ::android::hardware::camera::common::V1_0::Status status,
            const ::android::sp<::android::hardware::camera::device::V3_2::ICameraDevice>& device)>;

    virtual ::android::hardware::Return<::android::hardware::camera::common::V1_0::Status>
    setCallback(const ::android::sp<ICameraProviderCallback>& callback) = 0;
    virtual ::android::hardware::Return<void> getVendorTags(getVendorTags_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> isSetTorchModeSupported(
            isSetTorchModeSupported_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> getCameraDeviceInterface_V1_x(
            const ::android::hardware::hidl_string& cameraDeviceName,
            getCameraDeviceInterface_V1_x_cb _hidl_cb) = 0;
    virtual ::android::hardware::Return<void> getCameraDeviceInterface_V3_x(
            const ::android::hardware::hidl_string& cameraDeviceName,
            getCameraDeviceInterface_V3_x_cb _hidl_cb) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V2_4
}  // namespace provider
}  // namespace camera
}  // namespace hardware
}  // namespace android

#endif  // HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_PROVIDER_V2_4_ICAMERAPROVIDER_H
