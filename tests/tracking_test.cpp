// Tracking mode: notification, talker-tracking property, session reset and track controls.
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "kit/RecordingListener.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/RecordingEngine.h"

using namespace kit;
using namespace testing_support;
using ::android::sp;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

constexpr const char* kTalkerProperty = "vendor.talkertracking.flag";

LogLine requestLine(int mode) {
    return providerLine(kDebug,
                        "ZorvCameraProvider setTrackingMode " + std::to_string(mode) + " \n");
}
LogLine propertyLine(int mode) {
    return providerLine(
            kInfo, "setTrackingModeProperty: setting talker tracking to " + std::to_string(mode));
}
LogLine changedLine(int mode) {
    return providerLine(kDebug, "Tracking changed to " + std::to_string(mode) + " ");
}

class TrackingTest : public ::testing::Test {
  protected:
    void SetUp() override {
        provider->setListener(listener);
        engine.clear();
        listener->clear();
        LogCapture::clear();
    }

    // What one setTrackingMode call did: provider log lines, listener events, engine calls.
    struct Effects {
        std::vector<LogLine> lines;
        std::vector<std::string> events;
        std::vector<RecordingEngine::Call> engineCalls;
    };
    Effects set(int mode) {
        LogCapture::clear();
        listener->clear();
        engine.clear();
        EXPECT_TRUE(provider->setTrackingMode("cam0", static_cast<TrackingMode>(mode)).isOk());
        return {LogCapture::linesWithTag(kProviderTag), listener->events(), engine.calls()};
    }
    int32_t sessionMode() {
        std::lock_guard lock(FDSession::mLock);
        return FDSession::getInstance()->mTrackingMode;
    }

    RecordingEngine engine;
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(TrackingTest, SequenceNotifiesAndWritesPropertyOnlyWhenReportedModeChanges) {
    // Given a fresh process, a PTZ crop away from the full frame and one listener
    FDSession::getInstance()->setPTZControl({{Crop{100, 56, 1180, 664}}, 1280, 720, 4, 5, 6});
    engine.clear();

    // When the mode goes 0 -> 3 -> 3 -> 2 -> 0 -> 0
    // Then the first call notifies although nothing changes
    Effects e = set(0);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(0), propertyLine(0)}));
    EXPECT_EQ(e.events, (std::vector<std::string>{"cameraDeviceTrackingChange cam0 0"}));
    EXPECT_TRUE(e.engineCalls.empty());

    // 3 runs as 2, the engine hears 2 under the session lock, listeners hear 3
    e = set(3);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(3), changedLine(2), propertyLine(2)}));
    EXPECT_EQ(e.events, (std::vector<std::string>{"cameraDeviceTrackingChange cam0 3"}));
    ASSERT_EQ(e.engineCalls.size(), 1u);
    EXPECT_EQ(e.engineCalls[0].operation, "onTrackingModeChanged");
    EXPECT_EQ(e.engineCalls[0].mode, 2);
    EXPECT_TRUE(e.engineCalls[0].sessionLockHeld);
    EXPECT_EQ(sessionMode(), 2);
    EXPECT_EQ(prop(kTalkerProperty), "2");

    // 3 again: the session stays, but 3 differs from the previous 2, so it is told again
    e = set(3);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(3), propertyLine(2)}));
    EXPECT_EQ(e.events, (std::vector<std::string>{"cameraDeviceTrackingChange cam0 3"}));
    EXPECT_TRUE(e.engineCalls.empty());

    // 2 after 3: the session already runs 2
    e = set(2);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(2)}));
    EXPECT_TRUE(e.events.empty());
    EXPECT_TRUE(e.engineCalls.empty());

    // Off: the PTZ crop goes back to the full frame before the engine is told 0
    e = set(0);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(0),
                                             providerLine(kDebug, "PTZ Scene reset 0 0 1280 720"),
                                             changedLine(0), propertyLine(0)}));
    EXPECT_EQ(e.events, (std::vector<std::string>{"cameraDeviceTrackingChange cam0 0"}));
    ASSERT_EQ(e.engineCalls.size(), 1u);
    EXPECT_EQ(e.engineCalls[0].operation, "onTrackingModeChanged");
    EXPECT_EQ(e.engineCalls[0].mode, 0);
    EXPECT_TRUE(e.engineCalls[0].sessionLockHeld);
    EXPECT_EQ(prop(kTalkerProperty), "0");
    {
        std::lock_guard lock(FDSession::mLock);
        EXPECT_EQ(FDSession::getInstance()->mPTZControl,
                  (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 4, 5, 6}));
    }

    // Off again: nothing
    e = set(0);
    EXPECT_EQ(e.lines, (std::vector<LogLine>{requestLine(0)}));
    EXPECT_TRUE(e.events.empty());
    EXPECT_TRUE(e.engineCalls.empty());
}

TEST_F(TrackingTest, ModeIsProcessWideAndOutOfRangeModeLeavesPropertyAlone) {
    // Given mode 1 set for one camera id
    set(1);
    EXPECT_EQ(provider->getTrackingMode("cam0"), TrackingMode::MODE_1);
    EXPECT_EQ(provider->getTrackingMode("any/other"), TrackingMode::MODE_1);

    // When a mode outside 0 to 5 is asked for
    Effects e = set(7);

    // Then it is stored and notified, but the property keeps "1"
    EXPECT_EQ(e.lines,
              (std::vector<LogLine>{
                      requestLine(7),
                      changedLine(7),
                      providerLine(kError,
                                   "setTrackingModeProperty: ignoring invalid trackingMode 7"),
              }));
    EXPECT_EQ(e.events, (std::vector<std::string>{"cameraDeviceTrackingChange cam0 7"}));
    EXPECT_EQ(provider->getTrackingMode(""), static_cast<TrackingMode>(7));
    EXPECT_EQ(prop(kTalkerProperty), "1");
}

TEST_F(TrackingTest, TrackControlIsStoredAndReachesEngineOutsideTheSessionLock) {
    TrackControl track{};
    track.left = 10;
    track.top = 20;
    track.right = 330;
    track.bottom = 200;
    track.reserved[3] = 0x7f;
    track.xVelocity = 0.25;
    track.action = 2;

    // When a track control is given with a listener registered
    EXPECT_EQ(provider->setTracking(track), Status::OK);

    // Then the session holds it, the engine got a copy without the lock, listeners nothing
    {
        std::lock_guard lock(FDSession::mLock);
        EXPECT_EQ(FDSession::getInstance()->mTrackControl, track);
    }
    std::vector<RecordingEngine::Call> calls = engine.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "onTrackControl");
    EXPECT_EQ(calls[0].track, track);
    EXPECT_FALSE(calls[0].sessionLockHeld);
    EXPECT_TRUE(listener->events().empty());
    EXPECT_TRUE(LogCapture::linesWithTag(kProviderTag).empty());
}

TEST(TrackingConcurrencyTest, TwoProvidersSetTheModeAtOnce) {
    // The first-notification flag is process-wide: two providers share it (a race shows in the
    // ThreadSanitizer stage).
    sp<ZorvCameraProvider> providers[] = {new ZorvCameraProvider(), new ZorvCameraProvider()};
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (const auto& p : providers) {
        threads.emplace_back([p, &ready] {
            for (++ready; ready < 2;) std::this_thread::yield();
            for (int i = 0; i < 1000; ++i) {
                p->setTrackingMode("0", i % 2 ? TrackingMode::MODE_1 : TrackingMode::OFF);
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(providers[1]->getTrackingMode("0"), TrackingMode::MODE_1);
}
