// Camera moves: stepwise pan, tilt and zoom of the PTZ crop within its frame, and the zoom-in
// limit.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <algorithm>
#include <iterator>

#include <log/log.h>

#include "FDSession.h"
#include "Framing.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

namespace {

constexpr int32_t kMinStep = 1;
constexpr int32_t kMaxStep = 256;

// Smallest crop width a zoom-in may reach, by level 1 to 5. Level 3 is 416, not 1280 / 3.
constexpr uint32_t kZoomInLimits[] = {1280, 640, 416, 320, 256};

// Truncates toward zero and cannot overflow.
int32_t half(int32_t x) {
    return x / 2;
}
// The 16:9 height of a width. |w| * 0.5625 < 2^31 for every int32 w, so the truncating
// conversion back to int32 is always in range.
int32_t shape(int32_t w) {
    return static_cast<int32_t>(static_cast<double>(w) * 0.5625);
}

// Shifts the span [lo, hi) back by the step, stopping at 0.
void shiftBack(int32_t& lo, int32_t& hi, int32_t s) {
    const int32_t d = std::min(lo, s);
    lo = wrapSub(lo, d);
    hi = wrapSub(hi, d);
}
// Shifts the span [lo, hi) on by the step, stopping at `size`.
void shiftOn(int32_t& lo, int32_t& hi, int32_t s, int32_t size) {
    const int32_t d = wrapAdd(hi, s) > size ? wrapSub(size, hi) : s;
    lo = wrapAdd(lo, d);
    hi = wrapAdd(hi, d);
}

// Widens the span [lo, hi) to at least `z` around its centre, then pins it inside [0, size].
void limitSpan(int32_t& lo, int32_t& hi, int32_t z, int32_t size) {
    if (z > wrapSub(hi, lo)) {
        const int32_t e = half(wrapSub(z, wrapSub(hi, lo)));
        lo = wrapSub(lo, e);
        hi = wrapAdd(hi, e);
    }
    if (lo < 0) {
        lo = 0;
        hi = z;
        if (z > size) {
            lo = wrapSub(size, z);
            hi = size;
        }
    } else if (hi > size) {
        lo = wrapSub(size, z);
        hi = size;
    }
}

void zoomIn(Crop& c, int32_t s, int32_t z, int32_t w) {
    c.left = wrapAdd(c.left, s);
    c.right = wrapSub(c.right, s);
    limitSpan(c.left, c.right, z, w);
    const int32_t h = shape(wrapSub(c.right, c.left));
    const int32_t d = half(wrapSub(wrapSub(c.bottom, c.top), h));
    c.top = wrapAdd(c.top, d);
    c.bottom = wrapSub(c.bottom, d);
}

void zoomOut(Crop& c, int32_t s, int32_t w, int32_t hFrame) {
    c.left = wrapSub(c.left, s);
    c.right = wrapAdd(c.right, s);
    if (c.right > w) {
        c.left = std::max(wrapAdd(c.left, wrapSub(w, c.right)), 0);
        c.right = w;
    } else if (c.left < 0) {
        c.right = std::min(wrapSub(c.right, c.left), w);
        c.left = 0;
    }
    const int32_t h = shape(wrapSub(c.right, c.left));
    const int32_t d = half(wrapAdd(wrapSub(c.top, c.bottom), h));
    c.top = wrapSub(c.top, d);
    c.bottom = wrapAdd(c.bottom, d);
    if (c.top < 0) {
        c.top = 0;
        c.bottom = std::min(hFrame, h);
    } else if (c.bottom > hFrame) {
        c.bottom = hFrame;
        c.top = std::max(wrapSub(hFrame, h), 0);
    }
}

void applyZoomLimit(Crop& c, int32_t z, int32_t w, int32_t hFrame) {
    limitSpan(c.left, c.right, z, w);
    limitSpan(c.top, c.bottom, shape(wrapSub(c.right, c.left)), hFrame);
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

Return<void> ZorvCameraProvider::setZoomInLimit(const hidl_string& cameraId, uint32_t level) {
    ALOGD("ZorvCameraProvider camera %s setZoomInLimit %d \n", cameraId.c_str(), level);
    const uint32_t limit = level >= 1 && level <= std::size(kZoomInLimits)
                                   ? kZoomInLimits[level - 1]
                                   : kDefaultZoomInLimit;
    {
        std::lock_guard lock(mLock);
        mZoomInLimit = limit;
    }
    // Re-applies the current crop under the new limit; refused while tracking is on, when the
    // limit applies from the next zoom.
    moveCamera_l(cameraId, CameraMoveDirection::APPLY_ZOOM_LIMIT, 0);
    return Void();
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
    Crop c = cropOrFrame(current);
    switch (direction) {
        case CameraMoveDirection::PAN_LEFT:
            shiftBack(c.left, c.right, s);
            break;
        case CameraMoveDirection::PAN_RIGHT:
            shiftOn(c.left, c.right, s, w);
            break;
        case CameraMoveDirection::TILT_UP:
            shiftBack(c.top, c.bottom, s);
            break;
        case CameraMoveDirection::TILT_DOWN:
            shiftOn(c.top, c.bottom, s, h);
            break;
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

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
