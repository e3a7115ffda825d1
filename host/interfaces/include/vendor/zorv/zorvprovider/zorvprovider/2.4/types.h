// Host copy of the generated C++ types of vendor.zorv.zorvprovider.zorvprovider@2.4.
#ifndef HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_TYPES_H
#define HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_TYPES_H

#include <stddef.h>

#include <hidl/HidlSupport.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {

struct Crop final {
    int32_t left __attribute__((aligned(4)));
    int32_t top __attribute__((aligned(4)));
    int32_t right __attribute__((aligned(4)));
    int32_t bottom __attribute__((aligned(4)));
};
static_assert(offsetof(Crop, bottom) == 12, "wrong offset");
static_assert(sizeof(Crop) == 16, "wrong size");

struct SceneControl final {
    ::android::hardware::hidl_vec<Crop> crops __attribute__((aligned(8)));
    int32_t frameWidth __attribute__((aligned(4)));
    int32_t frameHeight __attribute__((aligned(4)));
    int32_t transition __attribute__((aligned(4)));
    int32_t duration __attribute__((aligned(4)));
    uint32_t extra __attribute__((aligned(4)));
};
static_assert(offsetof(SceneControl, frameWidth) == 16, "wrong offset");
static_assert(offsetof(SceneControl, extra) == 32, "wrong offset");
static_assert(sizeof(SceneControl) == 40, "wrong size");

struct TrackControl final {
    int32_t left __attribute__((aligned(4)));
    int32_t top __attribute__((aligned(4)));
    int32_t right __attribute__((aligned(4)));
    int32_t bottom __attribute__((aligned(4)));
    ::android::hardware::hidl_array<uint8_t, 16> reserved __attribute__((aligned(1)));
    double xVelocity __attribute__((aligned(8)));
    double yVelocity __attribute__((aligned(8)));
    double wVelocity __attribute__((aligned(8)));
    int32_t action __attribute__((aligned(4)));
};
static_assert(offsetof(TrackControl, reserved) == 16, "wrong offset");
static_assert(offsetof(TrackControl, xVelocity) == 32, "wrong offset");
static_assert(offsetof(TrackControl, action) == 56, "wrong offset");
static_assert(sizeof(TrackControl) == 64, "wrong size");

enum class TrackingMode : int32_t {
    OFF = 0,
    MODE_1 = 1,
    MODE_2 = 2,
    MODE_3 = 3,
    MODE_4 = 4,
    MODE_5 = 5,
};

enum class CameraMoveDirection : int32_t {
    PAN_LEFT = 1,
    PAN_RIGHT = 2,
    TILT_UP = 3,
    TILT_DOWN = 4,
    ZOOM_IN = 5,
    ZOOM_OUT = 6,
    APPLY_ZOOM_LIMIT = 7,
};

enum class VirtualCameraCapability : int32_t {
    NOT_SUPPORTED = 0,
    SUPPORTED = 1,
};

struct CameraInfoEntry final {
    int32_t key __attribute__((aligned(4)));
    int32_t flags __attribute__((aligned(4)));
    int64_t value __attribute__((aligned(8)));
};
static_assert(sizeof(CameraInfoEntry) == 16, "wrong size");

struct CameraInfo final {
    ::android::hardware::hidl_string text1 __attribute__((aligned(8)));
    ::android::hardware::hidl_string text2 __attribute__((aligned(8)));
    ::android::hardware::hidl_vec<CameraInfoEntry> entries __attribute__((aligned(8)));
    ::android::hardware::hidl_array<uint8_t, 16> block __attribute__((aligned(1)));
    uint32_t value1 __attribute__((aligned(4)));
    uint64_t value2 __attribute__((aligned(8)));
    uint32_t value3 __attribute__((aligned(4)));
};
static_assert(offsetof(CameraInfo, entries) == 32, "wrong offset");
static_assert(offsetof(CameraInfo, block) == 48, "wrong offset");
static_assert(offsetof(CameraInfo, value1) == 64, "wrong offset");
static_assert(offsetof(CameraInfo, value2) == 72, "wrong offset");
static_assert(offsetof(CameraInfo, value3) == 80, "wrong offset");
static_assert(sizeof(CameraInfo) == 88, "wrong size");
static_assert(alignof(CameraInfo) == 8, "wrong alignment");

inline bool operator==(const Crop& a, const Crop& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
inline bool operator!=(const Crop& a, const Crop& b) {
    return !(a == b);
}
inline bool operator==(const SceneControl& a, const SceneControl& b) {
    return a.crops == b.crops && a.frameWidth == b.frameWidth && a.frameHeight == b.frameHeight &&
           a.transition == b.transition && a.duration == b.duration && a.extra == b.extra;
}
inline bool operator!=(const SceneControl& a, const SceneControl& b) {
    return !(a == b);
}
inline bool operator==(const TrackControl& a, const TrackControl& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom &&
           a.reserved == b.reserved && a.xVelocity == b.xVelocity && a.yVelocity == b.yVelocity &&
           a.wVelocity == b.wVelocity && a.action == b.action;
}
inline bool operator!=(const TrackControl& a, const TrackControl& b) {
    return !(a == b);
}
inline bool operator==(const CameraInfoEntry& a, const CameraInfoEntry& b) {
    return a.key == b.key && a.flags == b.flags && a.value == b.value;
}
inline bool operator!=(const CameraInfoEntry& a, const CameraInfoEntry& b) {
    return !(a == b);
}
inline bool operator==(const CameraInfo& a, const CameraInfo& b) {
    return a.text1 == b.text1 && a.text2 == b.text2 && a.entries == b.entries &&
           a.block == b.block && a.value1 == b.value1 && a.value2 == b.value2 &&
           a.value3 == b.value3;
}
inline bool operator!=(const CameraInfo& a, const CameraInfo& b) {
    return !(a == b);
}

}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_ZORVPROVIDER_V2_4_TYPES_H
