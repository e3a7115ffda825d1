// Injected platform faults: failed property writes and listeners dying mid-operation, with what
// each leaves behind (the merge's faults are swept with the merge).
#include <hostfault/FaultInjection.h>

#include "support/ProviderTest.h"

using namespace testing_support;

class FaultInjectionTest : public ::testing::Test {
  protected:
    void SetUp() override { provider->setListener(listener); }
    void TearDown() override { hostfault::disarmAll(); }
    // Arms `count` failed property writes after `skip`, then forgets what came before.
    void fail(int count = 1, int skip = 0) {
        hostfault::arm(hostfault::kPropertySet, count, skip);
        LogCapture::clear();
        clearAllListenerEvents();
    }
    // Tracking mode, talker-tracking, maximum and enable properties, availability of "0", then
    // every listener's events and the error lines since the last `fail`, then how many
    // listeners are registered.
    std::string state() {
        std::string s = std::to_string(int(TrackingMode(provider->getTrackingMode("0"))));
        for (auto p : {"vendor.talkertracking.flag", "persist.tessaview.vc.max",
                       "vendor.tessaview.vc.enable"})
            s += " " + prop(p);
        s += " " + std::to_string(bool(provider->getVirtualCameraAvailability("0")));
        for (const std::string& e : allListenerEvents()) s += " | " + e;
        for (const LogLine& l : providerLines(kError)) s += " | E " + l.text;
        return s + " " + std::to_string(Peer::listenerCount(*provider));
    }
    std::string preset(const std::string& p) {
        return prop(p + ".l") + " " + prop(p + ".t") + " " + prop(p + ".r") + " " + prop(p + ".b");
    }
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener("listener");
};

TEST_F(FaultInjectionTest, FailedPropertyWritesLeaveThePropertyBehindTablesAndNotifications) {
    // A failed talker-tracking write is logged as made; asking for the same mode again does
    // not repair it, only the next change does
    provider->setTrackingMode("0", TrackingMode::OFF);
    fail();
    provider->setTrackingMode("0", TrackingMode::MODE_2);
    EXPECT_TRUE(LogCapture::contains(
            providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 2")));
    provider->setTrackingMode("0", TrackingMode::MODE_2);
    EXPECT_EQ(state(), "2 0   0 | listener: cameraDeviceTrackingChange 0 2 1");
    // A failed maximum write: the table and the listeners have it, the property the old text
    provider->setTrackingMode("0", TrackingMode::MODE_1);
    provider->setMaxVirtualCameras("0", 2);
    fail();
    provider->setMaxVirtualCameras("0", 4);
    EXPECT_EQ(state() + std::to_string(provider->getMaxVirtualCameras("0")),
              "1 1 2  0 | listener: onMaxVirtualCamerasChange 0 4 14");
    // With the multistream flag, a failed enable write (after the tracking one): the switch,
    // mode 5 and both notifications happen; switching off then finds it never enabled
    setProp("persist.vendor.multistream.enable", "1");
    fail(1, /*skip=*/1);
    provider->setVirtualCameraAvailability("0", true);
    EXPECT_EQ(state(),
              "5 5 2  1 | listener: cameraDeviceTrackingChange 0 5 | listener: "
              "onVirtualCameraAvailablityChange 0 1 1");
    provider->setVirtualCameraAvailability("0", false);
    EXPECT_EQ(state().substr(0, 9), "5 5 2 0 0");
}

TEST_F(FaultInjectionTest, FailedPresetWritesLeaveAPartOrAMixOfTwoPresets) {
    provider->savePreset("0", 1);
    provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100);
    const Crop zoomed{100, 56, 1180, 664};
    // Saving preset 1 again fails at its right and bottom edges, preset 2 at its left; both
    // are logged as complete
    fail(2, /*skip=*/2);
    provider->savePreset("0", 1);
    hostfault::arm(hostfault::kPropertySet, 1);
    provider->savePreset("0", 2);
    std::string logged;
    for (const LogLine& l : providerLines()) logged += "DIWE"[l.priority - kDebug] + l.text + "|";
    EXPECT_EQ(logged,
              "DSavePreset 1 |DSavePreset : 1, position  100, 1180, 56, 664   \n|DSavePreset 2 "
              "|DSavePreset : 2, position  100, 1180, 56, 664   \n|");
    EXPECT_EQ(preset("persist.camera.preset.1") + "," + preset("persist.camera.preset.2"),
              "100 56 1280 720, 56 1180 664");
    // So preset 2 is refused and changes nothing; preset 1 recalls a rectangle never saved
    clearAllListenerEvents();
    EXPECT_TRUE(!provider->gotoPreset("0", 2) && ptz().crops[0] == zoomed &&
                allListenerEvents().empty());
    EXPECT_TRUE(provider->gotoPreset("0", 1) && ptz().crops[0] == (Crop{100, 56, 1280, 720}));
}

TEST_F(FaultInjectionTest, ListenerDyingMidOperationMissesTheRestOfIt) {
    // A listener registered twice dies at its first crop: both entries are called and dropped
    // during the crop, so the text skips them
    sp<RecordingListener> last = new RecordingListener("last"),
                          dying = new RecordingListener("dying");
    for (const auto& l : {dying, dying, last}) provider->setListener(l);
    dying->failWith(::android::DEAD_OBJECT);
    fail(0);
    ASSERT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100));
    const std::string crop =
            ": onCameraCropApplied crops=[{100,56,1180,664}] frame=1280x720 transition=0 "
            "duration=0 extra=0 | ";
    const std::string deadCrop = " | E Error from onCameraCropApplied callback: " + kDead;
    EXPECT_EQ(state(), "0 0   0 | listener" + crop + "dying" + crop + "dying" + crop + "last" +
                               crop + "listener: onCameraSceneJsonApplied 288 bytes | last: " +
                               "onCameraSceneJsonApplied 288 bytes" + deadCrop + deadCrop + " 2");

    // With the multistream flag, one listener dies at the tracking change the availability
    // switch makes inside its own notification, another fails throughout and stays
    setProp("persist.vendor.multistream.enable", "1");
    sp<RecordingListener> flaky = new RecordingListener("flaky"),
                          dyingLater = new RecordingListener("dyingLater");
    for (const auto& l : {flaky, dyingLater}) provider->setListener(l);
    flaky->failWith(::android::FAILED_TRANSACTION);
    dyingLater->failWith(::android::DEAD_OBJECT);
    fail(0);
    provider->setVirtualCameraAvailability("0", true);
    const std::string track = ": cameraDeviceTrackingChange 0 5 | ",
                      on = ": onVirtualCameraAvailablityChange 0 1",
                      error = " | E Error from cameraDeviceTrackingChange callback: ";
    EXPECT_EQ(state(), "5 5  1 1 | listener" + track + "last" + track + "flaky" + track +
                               "dyingLater" + track + "listener" + on + " | last" + on +
                               " | flaky" + on + error + kFailed + error + kDead +
                               " | E Error from onVirtualCameraAvailablityChange callback: " +
                               kFailed + " 3");
}
