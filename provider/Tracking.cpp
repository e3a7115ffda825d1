// Tracking mode and track control: the process-wide mode, its notification and property.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <log/log.h>

#include "FDSession.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine;

namespace {
constexpr int32_t kModeOff = 0;
// Mode 3 is run by the session as mode 2; listeners are still told 3.
constexpr int32_t kModeThree = 3;
constexpr int32_t kModeThreeRunsAs = 2;
}  // namespace

Return<TrackingMode> ZorvCameraProvider::getTrackingMode(const hidl_string& /*cameraId*/) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return TrackingMode::OFF;
    return static_cast<TrackingMode>(session->trackingMode());
}

Return<void> ZorvCameraProvider::setTrackingMode(const hidl_string& cameraId, TrackingMode mode) {
    const int32_t requested = static_cast<int32_t>(mode);
    ALOGD("ZorvCameraProvider setTrackingMode %d \n", requested);
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return Void();

    // Held from the first read of the mode to the property write (provider lock, then session
    // lock), so that the calls on this provider store, notify and write their modes in one
    // order, and the session's mode, the property and every listener's last notification agree.
    std::lock_guard lock(mLock);
    // Three separate session sections: a change made in between is reported as found last.
    const int32_t previous = session->trackingMode();
    const int32_t applied = requested == kModeThree ? kModeThreeRunsAs : requested;
    {
        std::lock_guard sessionLock(FDSession::mLock);
        if (session->mTrackingMode != applied) {
            session->mTrackingMode = applied;
            if (applied == kModeOff) session->resetPTZScene();
            ALOGD("Tracking changed to %d ", session->mTrackingMode);
            // The engine hears of the change under the session lock, in order with the store.
            if (session->mEngine != nullptr) session->mEngine->onTrackingModeChanged(applied);
        }
    }
    const int32_t current = session->trackingMode();
    const int32_t reported =
            (current == kModeThreeRunsAs && requested == kModeThree) ? kModeThree : current;

    // The first call of the process always notifies, so listeners and the property agree. The
    // flag is set before the fan-out: a listener re-asserting the mode it is told finds it set.
    if (previous == reported && sTrackingNotified) return Void();
    sTrackingNotified = true;
    const TrackingMode reportedMode = static_cast<TrackingMode>(reported);
    ++mTrackingSerial;
    const bool latest = notifyListeners(
            "cameraDeviceTrackingChange",
            [&](const Listener& listener) {
                return listener->cameraDeviceTrackingChange(cameraId, reportedMode);
            },
            &mTrackingSerial);
    // A listener that set another mode from its callback has told everyone and written the
    // property already.
    if (!latest) return Void();
    setTrackingModeProperty(reported == kModeThree ? static_cast<TrackingMode>(kModeThreeRunsAs)
                                                   : reportedMode);
    return Void();
}

Return<Status> ZorvCameraProvider::setTracking(const TrackControl& track) {
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return Status::OK;
    FramingEngine* engine;
    {
        std::lock_guard lock(FDSession::mLock);  // guards the track record
        session->mTrackControl = track;
        engine = session->acquireEngine();
    }
    // Unlike the scene records, the track control reaches the engine outside the session lock;
    // the engine is held until the call has returned, so a detach waits for it.
    if (engine != nullptr) {
        TrackControl copy = track;
        engine->onTrackControl(copy);
        session->releaseEngine(engine);
    }
    bool hasListeners;
    {
        std::lock_guard lock(mLock);
        hasListeners = !mListeners.empty();
    }
    if (hasListeners) notifyCameraTrackControl(track);
    return Status::OK;
}

void ZorvCameraProvider::notifyCameraTrackControl(const TrackControl& /*track*/) {}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
