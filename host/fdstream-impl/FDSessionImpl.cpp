// Host stand-in for the session's stream-handling half: statics, handlers, thread loop, engine.
#include "FDSession.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "FDSessionHostControl.h"

namespace {
std::atomic<int32_t> sSetCallbackResult{0};
std::atomic<int32_t> sConfigureResult{0};
std::atomic<int32_t> sCaptureRequestResult{0};
std::atomic<int> sSetCallbackCount{0};
std::atomic<int> sConfigureCount{0};
std::atomic<int> sCaptureRequestCount{0};
std::atomic<int> sThreadsStarted{0};
constexpr size_t kMaxPendingFrames = 64;
}  // namespace

namespace fdstream_host {

void setHandlerResults(int32_t setCallbackResult, int32_t configureResult,
                       int32_t captureRequestResult) {
    sSetCallbackResult = setCallbackResult;
    sConfigureResult = configureResult;
    sCaptureRequestResult = captureRequestResult;
}

HandlerCounts handlerCounts() {
    return {sSetCallbackCount, sConfigureCount, sCaptureRequestCount, sThreadsStarted};
}

}  // namespace fdstream_host

namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation {

RankedRecursiveMutex<LockRank::kSession> FDSession::mLock;
::android::sp<FDSession> FDSession::sInstance;

FDSession::~FDSession() {}

::android::status_t FDSession::readyToRun() {
    ++sThreadsStarted;
    return ::android::OK;
}

// The host has no capture stream to watch: the thread idles until asked to exit.
bool FDSession::threadLoop() {
    usleep(50 * 1000);
    return !exitPending();
}

int32_t FDSession::handleSetCallback(const ::android::sp<IFDSessionCallback>& callback) {
    std::lock_guard lock(mLock);
    ++sSetCallbackCount;
    mCallback = callback;
    return sSetCallbackResult;
}

int32_t FDSession::handleConfigure(const StreamConfiguration& configuration) {
    std::lock_guard lock(mLock);
    ++sConfigureCount;
    mStreams.clear();
    for (const auto& stream : configuration.streams) mStreams[stream.id] = stream;
    mConfigured = true;
    return sConfigureResult;
}

int32_t FDSession::handleCaptureRequest(const CaptureRequest& request) {
    std::lock_guard lock(mLock);
    ++sCaptureRequestCount;
    mPendingFrames[request.frameNumber] = request.fmqSettingsSize;
    // Nothing completes frames on the host: keep only the most recent ones.
    if (mPendingFrames.size() > kMaxPendingFrames) mPendingFrames.erase(mPendingFrames.begin());
    return sCaptureRequestResult;
}

void FDSession::attachEngine(FramingEngine* engine) {
    FramingEngine* replaced;
    {
        std::lock_guard lock(mLock);
        replaced = mEngine;
        mEngine = engine;
    }
    if (replaced == nullptr || replaced == engine) return;
    // New calls get the new engine; wait for the calls to the old one made by other threads.
    const std::thread::id self = std::this_thread::get_id();
    std::unique_lock calls(mEngineCallsLock);
    mEngineCallsDone.wait(calls, [&] {
        return std::none_of(mEngineCalls.begin(), mEngineCalls.end(),
                            [&](const auto& c) { return c.second == replaced && c.first != self; });
    });
}

FramingEngine* FDSession::acquireEngine() {
    std::lock_guard lock(mLock);
    if (mEngine == nullptr) return nullptr;
    std::lock_guard calls(mEngineCallsLock);
    mEngineCalls.emplace_back(std::this_thread::get_id(), mEngine);
    return mEngine;
}

void FDSession::releaseEngine(FramingEngine* engine) {
    {
        std::lock_guard calls(mEngineCallsLock);
        auto it = std::find(mEngineCalls.begin(), mEngineCalls.end(),
                            std::make_pair(std::this_thread::get_id(), engine));
        if (it != mEngineCalls.end()) mEngineCalls.erase(it);
    }
    mEngineCallsDone.notify_all();
}

}  // namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation
