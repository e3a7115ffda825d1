// Host copy of the android.hardware.camera.device@3.2 types that the session and the cache use.
// Field order follows the platform; buffer and fence handles are left out on the host.
#ifndef HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_TYPES_H
#define HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_TYPES_H

#include <hidl/HidlSupport.h>

namespace android {
namespace hardware {
namespace camera {
namespace device {
namespace V3_2 {

typedef ::android::hardware::hidl_vec<uint8_t> CameraMetadata;

enum class StreamType : uint32_t { OUTPUT = 0u, INPUT = 1u };
enum class StreamRotation : uint32_t {
    ROTATION_0 = 0u,
    ROTATION_90 = 1u,
    ROTATION_180 = 2u,
    ROTATION_270 = 3u
};
enum class StreamConfigurationMode : uint32_t {
    NORMAL_MODE = 0u,
    CONSTRAINED_HIGH_SPEED_MODE = 1u
};
enum class BufferStatus : uint32_t { OK = 0u, ERROR = 1u };

struct Stream final {
    int32_t id;
    StreamType streamType;
    uint32_t width;
    uint32_t height;
    int32_t format;
    uint64_t usage;
    uint32_t dataSpace;
    StreamRotation rotation;
};

struct StreamConfiguration final {
    ::android::hardware::hidl_vec<Stream> streams;
    StreamConfigurationMode operationMode;
};

struct StreamBuffer final {
    int32_t streamId;
    uint64_t bufferId;
    BufferStatus status;
};

struct CaptureRequest final {
    uint32_t frameNumber;
    uint64_t fmqSettingsSize;
    CameraMetadata settings;
    StreamBuffer inputBuffer;
    ::android::hardware::hidl_vec<StreamBuffer> outputBuffers;
};

}  // namespace V3_2
}  // namespace device
}  // namespace camera
}  // namespace hardware
}  // namespace android

#endif  // HIDL_GENERATED_ANDROID_HARDWARE_CAMERA_DEVICE_V3_2_TYPES_H
