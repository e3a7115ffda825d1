// Host copy of the generated C++ types of android.hardware.camera.common@1.0 that we use.
#ifndef HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_COMMON_V1_0_TYPES_H
#define HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_COMMON_V1_0_TYPES_H

#include <hidl/HidlSupport.h>

namespace android {
namespace hardware {
namespace camera {
namespace common {
namespace V1_0 {

enum class Status : uint32_t {
    OK = 0u,
    ILLEGAL_ARGUMENT = 1u,
    CAMERA_IN_USE = 2u,
    MAX_CAMERAS_IN_USE = 3u,
    METHOD_NOT_SUPPORTED = 4u,
    OPERATION_NOT_SUPPORTED = 5u,
    CAMERA_DISCONNECTED = 6u,
    INTERNAL_ERROR = 7u,
};

enum class CameraDeviceStatus : uint32_t {
    NOT_PRESENT = 0u,
    PRESENT = 1u,
    ENUMERATING = 2u,
};

enum class TorchModeStatus : uint32_t {
    NOT_AVAILABLE = 0u,
    AVAILABLE_OFF = 1u,
    AVAILABLE_ON = 2u,
};

enum class CameraMetadataType : uint32_t {
    BYTE = 0u,
    INT32 = 1u,
    FLOAT = 2u,
    INT64 = 3u,
    DOUBLE = 4u,
    RATIONAL = 5u,
};

struct VendorTag final {
    uint32_t tagId;
    ::android::hardware::hidl_string tagName;
    CameraMetadataType tagType;
};

struct VendorTagSection final {
    ::android::hardware::hidl_string sectionName;
    ::android::hardware::hidl_vec<VendorTag> tags;
};

}  // namespace V1_0
}  // namespace common
}  // namespace camera
}  // namespace hardware
}  // namespace android

#endif  // HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_COMMON_V1_0_TYPES_H
