// Session access: one session per process, its reset framing and the forwarding interface.
#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "FDSession.h"
#include "FDSessionHostControl.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/RecordingEngine.h"
#include "support/Watchdog.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::camera::common::V1_0::Status;
using ::android::hardware::camera::device::V3_2::CaptureRequest;
using ::android::hardware::camera::device::V3_2::StreamConfiguration;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

sp<IFDSession> fdSessionOf(const sp<ZorvCameraProvider>& provider) {
    sp<IFDSession> session;
    Status status = Status::INTERNAL_ERROR;
    EXPECT_TRUE(provider->getFDSessionInterface([&](Status s, const sp<IFDSession>& i) {
                            status = s;
                            session = i;
                        })
                        .isOk());
    EXPECT_EQ(status, Status::OK);
    return session;
}

}  // namespace

TEST(SessionTest, ConcurrentFirstCallsShareOneSessionAndOneThread) {
    // When two threads ask for the session at once
    sp<FDSession> a, b;
    std::thread t1([&] { a = FDSession::getInstance(); });
    std::thread t2([&] { b = FDSession::getInstance(); });
    t1.join();
    t2.join();

    // Then both hold the same session, and one monitor thread was started
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a.get(), b.get());
    for (int i = 0; i < 200 && fdstream_host::handlerCounts().threadsStarted == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(fdstream_host::handlerCounts().threadsStarted, 1);
    EXPECT_EQ(LogCapture::count(providerLine(kDebug, "PTZ Scene reset 0 0 1280 720")), 1);
}

TEST(SessionTest, NewSessionHoldsWholeFrameAndResetKeepsTransitionAndDuration) {
    sp<FDSession> session = FDSession::getInstance();
    {
        std::lock_guard lock(FDSession::mLock);
        ASSERT_EQ(session->mPTZControl.crops.size(), 1u);
        EXPECT_EQ(session->mPTZControl.crops[0], (Crop{0, 0, 1280, 720}));
        EXPECT_EQ(session->mPTZControl.frameWidth, 1280);
        EXPECT_EQ(session->mPTZControl.frameHeight, 720);
        EXPECT_EQ(session->mTrackingMode, 0);
        EXPECT_EQ(session->mSceneControl.crops.size(), 0u);
    }

    // Given a stored PTZ control and an attached engine
    RecordingEngine engine;
    session->setPTZControl(SceneControl{{Crop{100, 50, 740, 410}}, 1280, 720, 1, 500, 9});
    engine.clear();
    LogCapture::clear();

    // When the framing is reset
    session->resetPTZScene();

    // Then only the crop and frame change, the engine is not told, and the reset is logged
    std::lock_guard lock(FDSession::mLock);
    EXPECT_EQ(session->mPTZControl, (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 1, 500, 9}));
    EXPECT_TRUE(engine.calls().empty());
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{providerLine(kDebug, "PTZ Scene reset 0 0 1280 720")}));
}

TEST(SessionTest, InterfacesAreDistinctDriveTheSameSessionAndTranslateHandlerResults) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();

    sp<IFDSession> first = fdSessionOf(provider);
    sp<IFDSession> second = fdSessionOf(provider);

    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first.get(), second.get());
    const LogLine enter = providerLine(kInfo, "getFDSessionInterface: enter \n");
    const LogLine exit = providerLine(kInfo, "getFDSessionInterface: exit \n");
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{enter, exit, enter, exit}));

    // Both reach the one session's handlers; any handler failure becomes 1, success stays 0,
    // and setCallback always answers 0
    EXPECT_EQ(static_cast<int32_t>(first->configure(StreamConfiguration{})), 0);
    EXPECT_EQ(static_cast<int32_t>(second->processCaptureRequest(CaptureRequest{})), 0);
    EXPECT_TRUE(FDSession::getInstance()->mConfigured);
    fdstream_host::setHandlerResults(-22, -22, -22);
    EXPECT_EQ(static_cast<int32_t>(second->configure(StreamConfiguration{})), 1);
    EXPECT_EQ(static_cast<int32_t>(first->processCaptureRequest(CaptureRequest{})), 1);
    EXPECT_EQ(static_cast<int32_t>(first->setCallback(nullptr)), 0);
    const auto counts = fdstream_host::handlerCounts();
    EXPECT_EQ(counts.setCallback, 1);
    EXPECT_EQ(counts.configure, 2);
    EXPECT_EQ(counts.captureRequest, 2);
}

namespace {

// An engine whose track control runs `inside`, then waits for `release` and counts the call
// in its own state: freed memory if the engine was destroyed meanwhile.
class SlowEngine : public FramingEngine {
  public:
    SlowEngine(std::function<void()> inside, const std::atomic<bool>& release)
        : mInside(std::move(inside)), mRelease(release) {}
    void onSceneControl(const SceneControl&) override {}
    void onPTZControl(const SceneControl&) override {}
    void onTrackControl(const TrackControl&) override {
        mInside();
        while (!mRelease) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ++mTrackControls;
    }
    void onTrackingModeChanged(int32_t) override {}

  private:
    std::function<void()> mInside;
    const std::atomic<bool>& mRelease;
    int mTrackControls = 0;
};

}  // namespace

TEST(SessionConcurrencyTest, DetachingWaitsForTrackControlsInFlightOnOtherThreads) {
    Watchdog watchdog(std::chrono::seconds(20), "engine detach");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<FDSession> session = FDSession::getInstance();
    std::atomic<bool> entered{false}, release{true}, detached{false};

    // An engine may detach itself from inside its own track control on the same thread
    auto engine = std::make_unique<SlowEngine>([&] { session->attachEngine(nullptr); }, release);
    session->attachEngine(engine.get());
    provider->setTracking(TrackControl{});

    // Given a track control in flight on one thread
    release = false;
    engine = std::make_unique<SlowEngine>([&] { entered = true; }, release);
    session->attachEngine(engine.get());
    std::thread tracking([&] { provider->setTracking(TrackControl{}); });
    while (!entered) std::this_thread::sleep_for(std::chrono::milliseconds(1));

    // When another thread detaches the engine and then destroys it
    std::thread owner([&] {
        session->attachEngine(nullptr);
        detached = true;
        engine.reset();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));

    // Then the detach returns only after the call in flight has
    EXPECT_FALSE(detached);
    release = true;
    tracking.join();
    owner.join();
    EXPECT_TRUE(detached);
}
