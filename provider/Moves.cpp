// Camera moves: stepwise pan, tilt and zoom of the PTZ crop within its frame.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <algorithm>

#include <log/log.h>

#include "FDSession.h"

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {
namespace implementation {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

namespace {

constexpr int32_t kMinStep = 1;
constexpr int32_t kMaxStep = 256;

// Crop arithmetic is 32-bit and wraps; it is done unsigned so that it stays defined.
int32_t add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
int32_t sub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
// Truncates toward zero and cannot overflow.
int32_t half(int32_t x) {
    return x / 2;
}
// The 16:9 height of a width. |w| * 0.5625 < 2^31 for every int32 w, so the truncating
// conversion back to int32 is always in range.
int32_t shape(int32_t w) {
    return static_cast<int32_t>(static_cast<double>(w) * 0.5625);
}

// Widens the crop to at least `z` around its centre, then pins it inside [0, w].
void limitWidth(Crop& c, int32_t z, int32_t w) {
    if (z > sub(c.right, c.left)) {
        const int32_t e = half(sub(z, sub(c.right, c.left)));
        c.left = sub(c.left, e);
        c.right = add(c.right, e);
    }
    if (c.left < 0) {
        c.left = 0;
        c.right = z;
        if (z > w) {
            c.left = sub(w, z);
            c.right = w;
        }
    } else if (c.right > w) {
        c.left = sub(w, z);
        c.right = w;
    }
}

void zoomIn(Crop& c, int32_t s, int32_t z, int32_t w) {
    c.left = add(c.left, s);
    c.right = sub(c.right, s);
    limitWidth(c, z, w);
    const int32_t h = shape(sub(c.right, c.left));
    const int32_t d = half(sub(sub(c.bottom, c.top), h));
    c.top = add(c.top, d);
    c.bottom = sub(c.bottom, d);
}

void zoomOut(Crop& c, int32_t s, int32_t w, int32_t hFrame) {
    c.left = sub(c.left, s);
    c.right = add(c.right, s);
    if (c.right > w) {
        c.left = std::max(add(c.left, sub(w, c.right)), 0);
        c.right = w;
    } else if (c.left < 0) {
        c.right = std::min(sub(c.right, c.left), w);
        c.left = 0;
    }
    const int32_t h = shape(sub(c.right, c.left));
    const int32_t d = half(add(sub(c.top, c.bottom), h));
    c.top = sub(c.top, d);
    c.bottom = add(c.bottom, d);
    if (c.top < 0) {
        c.top = 0;
        c.bottom = std::min(hFrame, h);
    } else if (c.bottom > hFrame) {
        c.bottom = hFrame;
        c.top = std::max(sub(hFrame, h), 0);
    }
}

void applyZoomLimit(Crop& c, int32_t z, int32_t w, int32_t hFrame) {
    limitWidth(c, z, w);
    const int32_t h = shape(sub(c.right, c.left));
    if (sub(c.bottom, c.top) < h) {
        const int32_t d = half(sub(h, sub(c.bottom, c.top)));
        c.top = sub(c.top, d);
        c.bottom = add(c.bottom, d);
    }
    if (c.top < 0) {
        c.top = 0;
        c.bottom = h;
        if (c.bottom > hFrame) {
            c.top = sub(hFrame, h);
            c.bottom = hFrame;
        }
    } else if (c.bottom > hFrame) {
        c.top = sub(hFrame, h);
        c.bottom = hFrame;
    }
}

}  // namespace

Return<bool> ZorvCameraProvider::moveCamera(const hidl_string& cameraId,
                                            CameraMoveDirection direction, int32_t step) {
    return moveCamera_l(cameraId, direction, step);
}

bool ZorvCameraProvider::moveCamera_l(const hidl_string& cameraId, CameraMoveDirection direction,
                                      int32_t step) {
    ALOGD("ZorvCameraProvider moveCamera %s %d by %d \n", cameraId.c_str(),
          static_cast<int32_t>(direction), step);
    // One ordered step from the tracking check to the announcement (provider lock, then session
    // lock): moves, presets and tracking changes on this provider store and announce their
    // crops in one order, so the crop in force is the one announced last.
    std::lock_guard lock(mLock);
    if (getTrackingMode(cameraId) != TrackingMode::OFF) {
        ALOGD("Tracking enabled for camera, ignoring move");
        return false;
    }
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return false;

    SceneControl scene{};
    updatePTZPosition(direction, step, scene);
    // Only reachable if the session vanished in between, which it never does once created.
    if (scene.crops.size() == 0) return false;
    const Crop& c = scene.crops[0];
    ALOGD("ZorvCameraProvider Move Camera, step %d to %d, %d, %d, %d ..  \n", step, c.left, c.right,
          c.top, c.bottom);
    session->setPTZControl(scene);
    notifyCameraCropArea(scene, true);
    return true;
}

void ZorvCameraProvider::updatePTZPosition(CameraMoveDirection direction, int32_t step,
                                           SceneControl& scene) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return;
    // Two separate sections: the session lock is never held while taking mLock.
    SceneControl current;
    {
        std::lock_guard lock(FDSession::mLock);
        current = session->mPTZControl;
    }
    int32_t z;
    {
        std::lock_guard lock(mLock);
        z = static_cast<int32_t>(mZoomInLimit);
    }

    const int32_t s = std::clamp(step, kMinStep, kMaxStep);
    const int32_t w = current.frameWidth;
    const int32_t h = current.frameHeight;
    Crop c = current.crops.size() > 0 ? current.crops[0] : Crop{0, 0, w, h};
    switch (direction) {
        case CameraMoveDirection::PAN_LEFT: {
            const int32_t d = std::min(c.left, s);
            c.left = sub(c.left, d);
            c.right = sub(c.right, d);
            break;
        }
        case CameraMoveDirection::PAN_RIGHT: {
            const int32_t d = add(c.right, s) > w ? sub(w, c.right) : s;
            c.left = add(c.left, d);
            c.right = add(c.right, d);
            break;
        }
        case CameraMoveDirection::TILT_UP: {
            const int32_t d = std::min(c.top, s);
            c.top = sub(c.top, d);
            c.bottom = sub(c.bottom, d);
            break;
        }
        case CameraMoveDirection::TILT_DOWN: {
            const int32_t d = add(c.bottom, s) > h ? sub(h, c.bottom) : s;
            c.top = add(c.top, d);
            c.bottom = add(c.bottom, d);
            break;
        }
        case CameraMoveDirection::ZOOM_IN:
            zoomIn(c, s, z, w);
            break;
        case CameraMoveDirection::ZOOM_OUT:
            zoomOut(c, s, w, h);
            break;
        case CameraMoveDirection::APPLY_ZOOM_LIMIT:
            applyZoomLimit(c, z, w, h);
            break;
        default:
            // Unknown directions keep the crop; it is still stored and announced.
            break;
    }
    scene.crops = {c};
    scene.frameWidth = w;
    scene.frameHeight = h;
}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
