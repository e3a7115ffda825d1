// Scenes and crops: setting the scene, relaying scene texts, announcing and reading the crop in
// force.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <cutils/properties.h>

#include "FDSession.h"
#include "Framing.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

namespace {

constexpr const char* kFlipMaskProperty = "persist.camera.cpp.flipmask";

// Only the frame size, the crop count and the first crop decide whether a crop is new.
bool sameCrop(const SceneControl& scene, const SceneControl& last) {
    if (scene.frameWidth != last.frameWidth) return false;
    if (scene.frameHeight != last.frameHeight) return false;
    if (last.crops.size() == 0) return false;
    if (scene.crops.size() == 0) return false;
    if (scene.crops.size() != last.crops.size()) return false;
    const Crop& a = scene.crops[0];
    const Crop& b = last.crops[0];
    return a.left == b.left && a.right == b.right && a.top == b.top && a.bottom == b.bottom;
}

}  // namespace

Return<Status> ZorvCameraProvider::setSceneJson(const hidl_string& json) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return Status::OK;
    // The text is relayed as it comes while tracking runs; the session never sees it.
    if (session->trackingMode() != 0) notifyCameraSceneJson(json);
    return Status::OK;
}

Return<Status> ZorvCameraProvider::setScene(const SceneControl& scene) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return Status::OK;
    session->setSceneControl(scene);
    bool hasListeners;
    {
        std::lock_guard lock(mLock);
        hasListeners = !mListeners.empty();
    }
    if (!hasListeners) return Status::OK;
    // The scene is the crop in force only in modes 1 and 2.
    const int32_t mode = session->trackingMode();
    if (mode == 1 || mode == 2) notifyCameraCropArea(scene, true);
    return Status::OK;
}

Return<void> ZorvCameraProvider::getCurrentCameraCropArea(getCurrentCameraCropArea_cb _hidl_cb) {
    SceneControl reply{};
    sp<FDSession> session = FDSession::getInstance();
    if (session != nullptr) {
        std::lock_guard lock(FDSession::mLock);  // guards the records
        switch (session->mTrackingMode) {
            case 0:
                reply = session->mPTZControl;
                break;
            case 1:
            case 2:
                reply = session->mSceneControl;
                break;
            case 3: {
                const TrackControl& t = session->mTrackControl;
                reply.crops = {Crop{t.left, t.top, t.right, t.bottom}};
                reply.frameWidth = kPtzWidth;
                reply.frameHeight = kPtzHeight;
                break;
            }
            default:
                break;
        }
    }
    if (reply.frameWidth < 1 || reply.frameHeight < 1) {
        reply.frameWidth = kPtzWidth;
        reply.frameHeight = kPtzHeight;
    }
    _hidl_cb(reply);
    return Void();
}

void ZorvCameraProvider::notifyCameraSceneJson(const hidl_string& json, const uint64_t* serial) {
    notifyListeners(
            "onCameraSceneJsonApplied",
            [&json](const Listener& listener) { return listener->onCameraSceneJsonApplied(json); },
            serial);
}

void ZorvCameraProvider::notifyCameraCropArea(const SceneControl& scene, bool withJson) {
    // Held throughout, so the stored crop and its announcements stay in one order.
    std::lock_guard lock(mLock);
    if (sameCrop(scene, mLastCrop)) return;
    mLastCrop = scene;
    ++mCropSerial;

    // A camera mounted upside down shows the crop rotated by 180 degrees; mLastCrop keeps the
    // crop as received.
    SceneControl announced = mLastCrop;
    if (property_get_int32(kFlipMaskProperty, 0) != 0 && announced.crops.size() > 0) {
        const Crop c = announced.crops[0];
        announced.crops[0] = Crop{wrapSub(kPtzWidth, c.right), wrapSub(kPtzHeight, c.bottom),
                                  wrapSub(kPtzWidth, c.left), wrapSub(kPtzHeight, c.top)};
    }
    // A listener that announces a newer crop from its callback has told everyone: this crop
    // and its text go no further, so that every listener hears the crops in stored order.
    const bool latest = notifyListeners(
            "onCameraCropApplied",
            [&announced](const Listener& listener) {
                return listener->onCameraCropApplied(announced);
            },
            &mCropSerial);
    if (latest && withJson) {
        // Listeners get the text even when it stays empty.
        hidl_string json;
        buildSceneJson(announced, json);
        notifyCameraSceneJson(json, &mCropSerial);
    }
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
