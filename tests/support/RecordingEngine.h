// A framing engine that records each call and whether the session lock was held during it.
#ifndef TESTS_SUPPORT_RECORDINGENGINE_H
#define TESTS_SUPPORT_RECORDINGENGINE_H

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "FDSession.h"

namespace testing_support {

// Attached to the session (created if needed) while it lives.
class RecordingEngine
    : public ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine {
  public:
    using FDSession = ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
    using SceneControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
    using TrackControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;

    struct Call {
        std::string operation;  // "onSceneControl", "onPTZControl", ...
        SceneControl scene;     // for the scene operations
        TrackControl track;     // for onTrackControl
        int32_t mode;           // for onTrackingModeChanged
        bool sessionLockHeld;   // FDSession::mLock held by the calling thread
    };

    RecordingEngine() { FDSession::getInstance()->attachEngine(this); }
    ~RecordingEngine() { FDSession::getInstance()->attachEngine(nullptr); }
    std::vector<Call> calls() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mCalls;
    }
    // Operation names only, in order.
    std::vector<std::string> operations() const {
        std::vector<std::string> names;
        for (const Call& c : calls()) names.push_back(c.operation);
        return names;
    }
    void clear() {
        std::lock_guard<std::mutex> lock(mLock);
        mCalls.clear();
    }
    void onSceneControl(const SceneControl& s) override { record({"onSceneControl", s, {}, 0, 0}); }
    void onPTZControl(const SceneControl& s) override { record({"onPTZControl", s, {}, 0, 0}); }
    void onTrackControl(const TrackControl& t) override { record({"onTrackControl", {}, t, 0, 0}); }
    void onTrackingModeChanged(int32_t m) override {
        record({"onTrackingModeChanged", {}, {}, m, 0});
    }

  private:
    // Whether the caller holds the session lock, probed from another thread.
    void record(Call call) {
        std::thread([&call] {
            call.sessionLockHeld = !FDSession::mLock.try_lock();
            if (!call.sessionLockHeld) FDSession::mLock.unlock();
        }).join();
        std::lock_guard<std::mutex> lock(mLock);
        mCalls.push_back(std::move(call));
    }

    mutable std::mutex mLock;  // guards mCalls
    std::vector<Call> mCalls;
};

}  // namespace testing_support

#endif  // TESTS_SUPPORT_RECORDINGENGINE_H
