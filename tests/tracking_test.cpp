// Tracking mode: notification, talker-tracking property, session reset and track controls.
#include <atomic>
#include <thread>

#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

LogLine request(int mode) {
    return providerLine(kDebug,
                        "ZorvCameraProvider setTrackingMode " + std::to_string(mode) + " \n");
}
LogLine property(int mode) {
    return providerLine(
            kInfo, "setTrackingModeProperty: setting talker tracking to " + std::to_string(mode));
}
LogLine changed(int mode) {
    return providerLine(kDebug, "Tracking changed to " + std::to_string(mode) + " ");
}

}  // namespace

TEST(TrackingTest, ModeSequenceNotifiesAndWritesThePropertyOnlyWhenTheReportedModeChanges) {
    struct Row {
        int mode;
        Lines lines;
        bool told;          // the listener hears the mode
        int engine;         // the mode the engine is told under the session lock, -1 none
        const char* after;  // session mode and talker-tracking property
    };
    const LogLine reset = providerLine(kDebug, "PTZ Scene reset 0 0 1280 720");
    const LogLine invalid =
            providerLine(kError, "setTrackingModeProperty: ignoring invalid trackingMode 7");
    const Row rows[] = {
            // The first call of the process notifies although nothing changes
            {0, {request(0), property(0)}, true, -1, "0 0"},
            // 3 runs as 2; listeners hear 3
            {3, {request(3), changed(2), property(2)}, true, 2, "2 2"},
            // 3 again differs from the reported 2, so it is told again
            {3, {request(3), property(2)}, true, -1, "2 2"},
            {2, {request(2)}, false, -1, "2 2"},
            // Off: the PTZ crop goes back to the full frame before the engine is told 0
            {0, {request(0), reset, changed(0), property(0)}, true, 0, "0 0"},
            {0, {request(0)}, false, -1, "0 0"},
            {1, {request(1), changed(1), property(1)}, true, 1, "1 1"},
            // Out of range: stored and notified, the property keeps its text
            {7, {request(7), changed(7), invalid}, true, 7, "7 1"},
    };
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    RecordingEngine engine;
    FDSession::getInstance()->setPTZControl({{Crop{100, 56, 1180, 664}}, 1280, 720, 4, 5, 6});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.mode);
        LogCapture::clear();
        listener->clear();
        engine.clear();
        EXPECT_TRUE(provider->setTrackingMode("cam0", static_cast<TrackingMode>(row.mode)).isOk());
        EXPECT_EQ(providerLines(), row.lines);
        EXPECT_EQ(listener->events(),
                  row.told ? Strings{"cameraDeviceTrackingChange cam0 " + std::to_string(row.mode)}
                           : Strings{});
        const auto calls = engine.calls();
        ASSERT_EQ(calls.size(), row.engine < 0 ? 0u : 1u);
        if (row.engine >= 0) {
            EXPECT_EQ(calls[0].operation, "onTrackingModeChanged");
            EXPECT_EQ(calls[0].mode, row.engine);
            EXPECT_TRUE(calls[0].sessionLockHeld);
        }
        // The mode is process-wide: any camera id answers it
        EXPECT_EQ(std::to_string(static_cast<int>(TrackingMode(provider->getTrackingMode("x")))) +
                          " " + prop("vendor.talkertracking.flag"),
                  row.after);
    }
    // The reset kept everything of the PTZ record but the crop and frame
    EXPECT_EQ(ptz(), (SceneControl{{kFull}, 1280, 720, 4, 5, 6}));
}

TEST(TrackingTest, TrackControlIsStoredAndReachesTheEngineOutsideTheSessionLock) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    RecordingEngine engine;
    LogCapture::clear();
    TrackControl track{};
    track.left = 10;
    track.bottom = 200;
    track.reserved[3] = 0x7f;
    track.xVelocity = 0.25;
    track.action = 2;
    EXPECT_EQ(provider->setTracking(track), Status::OK);
    {
        std::lock_guard lock(FDSession::mLock);
        EXPECT_EQ(FDSession::getInstance()->mTrackControl, track);
    }
    const auto calls = engine.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "onTrackControl");
    EXPECT_EQ(calls[0].track, track);
    EXPECT_FALSE(calls[0].sessionLockHeld);
    EXPECT_TRUE(listener->events().empty());
    EXPECT_TRUE(providerLines().empty());
}

// The first-notification flag is process-wide: two providers share it (a race shows under TSan).
TEST(TrackingConcurrencyTest, TwoProvidersSetTheModeAtOnce) {
    sp<ZorvCameraProvider> providers[] = {new ZorvCameraProvider(), new ZorvCameraProvider()};
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (const auto& p : providers) {
        threads.emplace_back([p, &ready] {
            for (++ready; ready < 2;) std::this_thread::yield();
            for (int i = 0; i < 1000; ++i) p->setTrackingMode("0", TrackingMode(i % 2));
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(providers[1]->getTrackingMode("0"), TrackingMode::MODE_1);
}
