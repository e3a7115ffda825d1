// Host copy of android.hardware.camera.device@3.2::ICameraDevice: only its identity is used.
#ifndef HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_ICAMERADEVICE_H
#define HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_ICAMERADEVICE_H

#include <android/hidl/base/1.0/IBase.h>

namespace android {
namespace hardware {
namespace camera {
namespace device {
namespace V3_2 {

struct ICameraDevice : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor = "android.hardware.camera.device@3.2::ICameraDevice";

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V3_2
}  // namespace device
}  // namespace camera
}  // namespace hardware
}  // namespace android

#endif  // HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_ICAMERADEVICE_H
