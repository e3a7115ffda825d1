// A framing engine that records each call and whether the session lock was held during it.
#ifndef TESTS_SUPPORT_RECORDINGENGINE_H
#define TESTS_SUPPORT_RECORDINGENGINE_H

#include <mutex>
#include <string>
#include <vector>

#include "FramingEngine.h"

namespace testing_support {

class RecordingEngine
    : public ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine {
  public:
    using SceneControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
    using TrackControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;

    struct Call {
        std::string operation;  // "onSceneControl", "onPTZControl", ...
        SceneControl scene;     // for the scene operations
        TrackControl track;     // for onTrackControl
        int32_t mode;           // for onTrackingModeChanged
        bool sessionLockHeld;   // FDSession::mLock held by the calling thread
    };

    // Attaches itself to the session (creating it if needed) and detaches on destruction.
    RecordingEngine();
    ~RecordingEngine();

    std::vector<Call> calls() const;
    // Operation names only, in order.
    std::vector<std::string> operations() const;
    void clear();

    void onSceneControl(const SceneControl& scene) override;
    void onPTZControl(const SceneControl& scene) override;
    void onTrackControl(const TrackControl& track) override;
    void onTrackingModeChanged(int32_t mode) override;

  private:
    void record(Call call);

    mutable std::mutex mLock;  // guards mCalls
    std::vector<Call> mCalls;
};

// True when the calling thread holds FDSession::mLock (probed from another thread).
bool sessionLockHeldByAnyone();

}  // namespace testing_support

#endif  // TESTS_SUPPORT_RECORDINGENGINE_H
