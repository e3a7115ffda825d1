// The part of the frame-director session held in this library: access, reset and framing setters.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "FDSession.h"

#include <string.h>

#include <log/log.h>

#include "Framing.h"

namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation {

using ::android::sp;
using ::android::hardware::Return;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;

namespace {
constexpr Crop kResetCrop = {0, 0, kPtzWidth, kPtzHeight};
}  // namespace

FDSession::FDSession()
    : ::android::Thread(/*canCallJava=*/true),
      mConfigured(false),
      mTrackControl{},
      mSceneControl{},
      mPTZControl{},
      mTrackingMode(0),
      mEngine(nullptr) {
    memset(mReserved, 0, sizeof(mReserved));
    resetPTZScene();
    run("CaptureRequestMonitor", 0, 0);
}

sp<FDSession> FDSession::getInstance() {
    std::lock_guard lock(mLock);
    if (sInstance == nullptr) sInstance = new FDSession();
    return sInstance;
}

sp<IFDSession> FDSession::getInterface() {
    std::lock_guard lock(mLock);
    return new TrampolineInterface(this);
}

void FDSession::resetPTZScene() {
    std::lock_guard lock(mLock);
    mPTZControl.frameWidth = kPtzWidth;
    mPTZControl.frameHeight = kPtzHeight;
    mPTZControl.crops = {kResetCrop};
    const Crop& c = mPTZControl.crops[0];
    ALOGD("PTZ Scene reset %d %d %d %d", c.left, c.top, c.right, c.bottom);
}

void FDSession::setSceneControl(const SceneControl& scene) {
    setControl(mSceneControl, scene, &FramingEngine::onSceneControl);
}

void FDSession::setPTZControl(const SceneControl& scene) {
    setControl(mPTZControl, scene, &FramingEngine::onPTZControl);
}

void FDSession::setControl(SceneControl& stored, const SceneControl& scene,
                           void (FramingEngine::*notify)(const SceneControl&)) {
    std::lock_guard lock(mLock);
    stored = scene;  // deep copy: the record owns its own crop array
    if (mEngine != nullptr) {
        SceneControl copy = scene;
        (mEngine->*notify)(copy);
    }
}

Return<int32_t> FDSession::TrampolineInterface::setCallback(
        const sp<IFDSessionCallback>& callback) {
    mParent->handleSetCallback(callback);
    return 0;
}

Return<int32_t> FDSession::TrampolineInterface::configure(
        const StreamConfiguration& configuration) {
    return mParent->handleConfigure(configuration) == 0 ? 0 : 1;
}

Return<int32_t> FDSession::TrampolineInterface::processCaptureRequest(
        const CaptureRequest& request) {
    return mParent->handleCaptureRequest(request) == 0 ? 0 : 1;
}

}  // namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation
