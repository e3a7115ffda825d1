// The process-wide frame-director session, shared by this library and the stream-handling library.
#ifndef FDSTREAM_FDSESSION_H
#define FDSTREAM_FDSESSION_H

#include <stdint.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <utils/StrongPointer.h>
#include <utils/Thread.h>

#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSession.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

#include "FramingEngine.h"
#include "LockOrder.h"

namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation {

// One session per process, created by the first getInstance() and never released. This
// library holds getInstance, the constructor, getInterface, the forwarding TrampolineInterface,
// resetPTZScene and the scene/PTZ setters; the stream-handling library holds the statics, the
// virtual operations (the "CaptureRequestMonitor" thread loop), the handlers and attachEngine.
// mLock guards sInstance and every member that the provider reads or writes.
class FDSession : public ::android::Thread {
  public:
    using SceneControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
    using TrackControl = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
    using StreamConfiguration = ::android::hardware::camera::device::V3_2::StreamConfiguration;
    using CaptureRequest = ::android::hardware::camera::device::V3_2::CaptureRequest;

    // What clients of IFDSession hold: forwards every call to the one session.
    class TrampolineInterface : public IFDSession {
      public:
        explicit TrampolineInterface(const ::android::sp<FDSession>& parent) : mParent(parent) {}
        ::android::hardware::Return<int32_t> setCallback(
                const ::android::sp<IFDSessionCallback>& callback) override;
        ::android::hardware::Return<int32_t> configure(
                const StreamConfiguration& configuration) override;
        ::android::hardware::Return<int32_t> processCaptureRequest(
                const CaptureRequest& request) override;

      private:
        ::android::sp<FDSession> mParent;
    };

    static ::android::sp<FDSession> getInstance();
    ::android::sp<IFDSession> getInterface();

    // The tracking mode, read under mLock.
    int32_t trackingMode() {
        std::lock_guard lock(mLock);
        return mTrackingMode;
    }

    // Puts the PTZ framing back to the whole PTZ frame (Framing.h); the engine is not told.
    void resetPTZScene();
    // Store a deep copy and hand a copy to the engine, both under mLock.
    void setSceneControl(const SceneControl& scene);
    void setPTZControl(const SceneControl& scene);

    // Stream-handling half: called on the client's thread through a TrampolineInterface.
    int32_t handleSetCallback(const ::android::sp<IFDSessionCallback>& callback);
    int32_t handleConfigure(const StreamConfiguration& configuration);
    int32_t handleCaptureRequest(const CaptureRequest& request);
    // Stream-handling half: attaches (or with nullptr detaches) the framing engine. Returns only
    // once no other thread is inside a call to the engine it replaces, so that its owner may
    // destroy it then. A call made on the calling thread itself (an engine detaching from inside
    // its own onTrackControl) is not waited for. Not to be called with mLock held: calls made
    // under it are already excluded by it, and the wait would hold it.
    void attachEngine(FramingEngine* engine);
    // Stream-handling half: the engine for one call made outside mLock (onTrackControl), or
    // null. Called with mLock held, so that it is the engine attached then; every non-null
    // result is handed back with releaseEngine once the call has returned.
    FramingEngine* acquireEngine();
    void releaseEngine(FramingEngine* engine);

    ~FDSession() override;

    static RankedRecursiveMutex<LockRank::kSession> mLock;
    static ::android::sp<FDSession> sInstance;

    // Used only by the stream-handling half.
    std::map<int32_t, ::android::hardware::camera::device::V3_2::Stream> mStreams;
    std::map<uint32_t, uint64_t> mPendingFrames;
    bool mConfigured;
    ::android::sp<IFDSessionCallback> mCallback;
    ::android::hardware::hidl_vec<uint8_t> mSettingsBuffer;
    uint8_t mReserved[48];

    // Framing records, guarded by mLock.
    TrackControl mTrackControl;
    SceneControl mSceneControl;
    SceneControl mPTZControl;
    int32_t mTrackingMode;
    FramingEngine* mEngine;  // not owned

    // Used only by the stream-handling half: the engine calls in flight outside mLock, by
    // thread, guarded by mEngineCallsLock (a leaf: nothing else is taken while it is held).
    std::mutex mEngineCallsLock;
    std::condition_variable mEngineCallsDone;
    std::vector<std::pair<std::thread::id, FramingEngine*>> mEngineCalls;

  private:
    FDSession();
    bool threadLoop() override;
    ::android::status_t readyToRun() override;

    void setControl(SceneControl& stored, const SceneControl& scene,
                    void (FramingEngine::*notify)(const SceneControl&));
};

}  // namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation

#endif  // FDSTREAM_FDSESSION_H
