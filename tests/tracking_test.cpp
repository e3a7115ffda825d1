// Tracking mode: notification, talker-tracking property, session reset and track controls.
#include <atomic>
#include <thread>

#include "support/ProviderTest.h"

using namespace testing_support;

// Each row renders as "<priority>:<provider line>|", the listener's events, the engine's calls
// ("+" when under the session lock), then the session mode and the talker-tracking property.
TEST(TrackingTest, ModeSequenceNotifiesAndWritesThePropertyOnlyWhenTheReportedModeChanges) {
    const std::string changed = "3:Tracking changed to ", tell = "cameraDeviceTrackingChange cam0 ",
                      engine = "onTrackingModeChanged ",
                      property = "4:setTrackingModeProperty: setting talker tracking to ";
    const std::pair<int, std::string> rows[] = {
            // The first call of the process notifies although nothing changes
            {0, property + "0|" + tell + "0|0 0"},
            // 3 runs as 2; listeners hear 3
            {3, changed + "2 |" + property + "2|" + tell + "3|" + engine + "2+|2 2"},
            // 3 again differs from the reported 2, so it is told again
            {3, property + "2|" + tell + "3|2 2"},
            {2, "2 2"},
            // Off: the PTZ crop goes back to the full frame before the engine is told 0
            {0, "3:PTZ Scene reset 0 0 1280 720|" + changed + "0 |" + property + "0|" + tell +
                        "0|" + engine + "0+|0 0"},
            {0, "0 0"},
            {1, changed + "1 |" + property + "1|" + tell + "1|" + engine + "1+|1 1"},
            // Out of range: stored and notified, the property keeps its text
            {7, changed + "7 |6:setTrackingModeProperty: ignoring invalid trackingMode 7|" + tell +
                        "7|" + engine + "7+|7 1"},
    };
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    RecordingEngine recording;
    FDSession::getInstance()->setPTZControl({{Crop{100, 56, 1180, 664}}, 1280, 720, 4, 5, 6});
    for (const auto& [mode, expected] : rows) {
        LogCapture::clear();
        listener->clear();
        recording.clear();
        std::string got =
                provider->setTrackingMode("cam0", TrackingMode(mode)).isOk() ? "" : "failed|";
        for (const LogLine& l : providerLines())
            got += std::to_string(l.priority) + ":" + l.text + "|";
        for (const std::string& e : listener->events()) got += e + "|";
        for (const auto& c : recording.calls())
            got += c.operation + " " + std::to_string(c.mode) + (c.sessionLockHeld ? "+|" : "|");
        // The mode is process-wide: any camera id answers it
        got += std::to_string(static_cast<int>(TrackingMode(provider->getTrackingMode("x")))) +
               " " + prop("vendor.talkertracking.flag");
        EXPECT_EQ(got, "3:ZorvCameraProvider setTrackingMode " + std::to_string(mode) + " \n|" +
                               expected);
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
    TrackControl track{10, 0, 0, 200, {}, 0.25, 0, 0, 2};
    track.reserved[3] = 0x7f;
    EXPECT_EQ(provider->setTracking(track), Status::OK);
    EXPECT_EQ(FDSession::getInstance()->mTrackControl, track);
    ASSERT_EQ(engine.operations(), Strings{"onTrackControl"});
    EXPECT_TRUE(engine.calls()[0].track == track && !engine.calls()[0].sessionLockHeld);
    EXPECT_TRUE(listener->events().empty() && providerLines().empty());
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
