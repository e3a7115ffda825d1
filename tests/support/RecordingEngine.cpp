// Recording framing engine.
#include "support/RecordingEngine.h"

#include <thread>

#include "FDSession.h"

namespace testing_support {

using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

bool sessionLockHeldByAnyone() {
    bool held = false;
    std::thread probe([&held] {
        held = !FDSession::mLock.try_lock();
        if (!held) FDSession::mLock.unlock();
    });
    probe.join();
    return held;
}

RecordingEngine::RecordingEngine() {
    FDSession::getInstance()->attachEngine(this);
}

RecordingEngine::~RecordingEngine() {
    FDSession::getInstance()->attachEngine(nullptr);
}

std::vector<RecordingEngine::Call> RecordingEngine::calls() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mCalls;
}

std::vector<std::string> RecordingEngine::operations() const {
    std::vector<std::string> names;
    for (const Call& c : calls()) names.push_back(c.operation);
    return names;
}

void RecordingEngine::clear() {
    std::lock_guard<std::mutex> lock(mLock);
    mCalls.clear();
}

void RecordingEngine::record(Call call) {
    call.sessionLockHeld = sessionLockHeldByAnyone();
    std::lock_guard<std::mutex> lock(mLock);
    mCalls.push_back(std::move(call));
}

void RecordingEngine::onSceneControl(const SceneControl& scene) {
    record({"onSceneControl", scene, {}, 0, false});
}

void RecordingEngine::onPTZControl(const SceneControl& scene) {
    record({"onPTZControl", scene, {}, 0, false});
}

void RecordingEngine::onTrackControl(const TrackControl& track) {
    record({"onTrackControl", {}, track, 0, false});
}

void RecordingEngine::onTrackingModeChanged(int32_t mode) {
    record({"onTrackingModeChanged", {}, {}, mode, false});
}

}  // namespace testing_support
