// Injected platform faults: failed property writes and listeners dying mid-operation, with what
// each leaves behind (the merge's faults are swept with the merge).
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "kit/RecordingListener.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/ProviderPeer.h"
#include "support/TypePrinters.h"

using namespace kit;
using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;
using Strings = std::vector<std::string>;

namespace {

constexpr const char* kTalkerTracking = "vendor.talkertracking.flag";
constexpr const char* kMaxProperty = "persist.tessaview.vc.max";
constexpr const char* kEnable = "vendor.tessaview.vc.enable";
constexpr const char* kMultistream = "persist.vendor.multistream.enable";
const std::string kDead = "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '";

Strings preset(const std::string& n) {
    const std::string p = "persist.camera.preset." + n;
    return {prop(p + ".l"), prop(p + ".t"), prop(p + ".r"), prop(p + ".b")};
}

SceneControl ptz() {
    std::lock_guard lock(FDSession::mLock);
    return FDSession::getInstance()->mPTZControl;
}

std::vector<LogLine> providerErrors() {
    std::vector<LogLine> out;
    for (const LogLine& l : LogCapture::linesWithTag(kProviderTag)) {
        if (l.priority == kError) out.push_back(l);
    }
    return out;
}

class FaultInjectionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        provider->setListener(listener);
        LogCapture::clear();
    }
    void TearDown() override { hostfault::disarmAll(); }

    int32_t trackingMode() {
        return static_cast<int32_t>(static_cast<TrackingMode>(provider->getTrackingMode("0")));
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener("listener");
};

}  // namespace

TEST_F(FaultInjectionTest, FailedTalkerTrackingWriteLeavesThePropertyBehindTheMode) {
    // Given tracking notified once, and the next property write failing
    provider->setTrackingMode("0", TrackingMode::OFF);
    hostfault::arm(hostfault::kPropertySet);
    LogCapture::clear();
    listener->clear();

    // When tracking is switched on
    provider->setTrackingMode("0", TrackingMode::MODE_2);

    // Then the session runs it and listeners hear it; the write is logged as made, but the
    // property still says off
    EXPECT_EQ(trackingMode(), 2);
    EXPECT_EQ(listener->events(), Strings{"cameraDeviceTrackingChange 0 2"});
    EXPECT_TRUE(LogCapture::contains(
            providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 2")));
    EXPECT_EQ(prop(kTalkerTracking), "0");

    // And asking for the same mode again does not repair it: nothing changed, nothing is written
    provider->setTrackingMode("0", TrackingMode::MODE_2);
    EXPECT_EQ(prop(kTalkerTracking), "0");
    EXPECT_EQ(listener->events().size(), 1u);

    // Only the next change brings property and mode together again
    provider->setTrackingMode("0", TrackingMode::MODE_1);
    EXPECT_EQ(prop(kTalkerTracking), "1");
}

TEST_F(FaultInjectionTest, FailedPresetWritesLeaveAPartOrAMixOfTwoPresets) {
    // Given preset 1 saved at the full frame, then a zoom-in
    provider->savePreset("0", 1);
    provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100);
    const Crop zoomed{100, 56, 1180, 664};
    ASSERT_EQ(ptz().crops[0], zoomed);

    // When saving preset 1 again fails at its right and bottom edges, and preset 2 at its left
    hostfault::arm(hostfault::kPropertySet, 2, /*skip=*/2);
    LogCapture::clear();
    provider->savePreset("0", 1);
    hostfault::arm(hostfault::kPropertySet, 1);
    provider->savePreset("0", 2);

    // Then both saves are logged as complete
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "SavePreset 1 "),
                      providerLine(kDebug, "SavePreset : 1, position  100, 1180, 56, 664   \n"),
                      providerLine(kDebug, "SavePreset 2 "),
                      providerLine(kDebug, "SavePreset : 2, position  100, 1180, 56, 664   \n"),
              }));
    // And preset 1 mixes the new left and top with the old right and bottom, preset 2 lacks its
    // left edge
    EXPECT_EQ(preset("1"), (Strings{"100", "56", "1280", "720"}));
    EXPECT_EQ(preset("2"), (Strings{"", "56", "1180", "664"}));

    // So recalling preset 2 is refused and changes nothing, while preset 1 recalls a rectangle
    // that was never saved
    listener->clear();
    EXPECT_FALSE(provider->gotoPreset("0", 2));
    EXPECT_EQ(ptz().crops[0], zoomed);
    EXPECT_TRUE(listener->events().empty());
    EXPECT_TRUE(provider->gotoPreset("0", 1));
    EXPECT_EQ(ptz().crops[0], (Crop{100, 56, 1280, 720}));
}

TEST_F(FaultInjectionTest, FailedVirtualCameraPropertyWritesKeepTablesAndNotifications) {
    // Given a maximum written once
    provider->setMaxVirtualCameras("0", 2);
    listener->clear();

    // When the next maximum's property write fails
    hostfault::arm(hostfault::kPropertySet);
    provider->setMaxVirtualCameras("0", 4);

    // Then the table and the listeners have it, the property keeps the old text
    EXPECT_EQ(provider->getMaxVirtualCameras("0"), 4u);
    EXPECT_EQ(listener->events(), Strings{"onMaxVirtualCamerasChange 0 4"});
    EXPECT_EQ(prop(kMaxProperty), "2");

    // Given the multistream flag, when switching virtual cameras on fails to write the enable
    // property (the tracking property before it is written)
    setProp(kMultistream, "1");
    hostfault::arm(hostfault::kPropertySet, 1, /*skip=*/1);
    listener->clear();
    provider->setVirtualCameraAvailability("0", true);

    // Then the switch, tracking mode 5 and both notifications happen, the enable property
    // stays unset
    EXPECT_TRUE(provider->getVirtualCameraAvailability("0"));
    EXPECT_EQ(trackingMode(), 5);
    EXPECT_EQ(prop(kTalkerTracking), "5");
    EXPECT_EQ(prop(kEnable), "");
    EXPECT_EQ(listener->events(),
              (Strings{"cameraDeviceTrackingChange 0 5", "onVirtualCameraAvailablityChange 0 1"}));

    // And switching them off again finds them never enabled: tracking stays at 5
    provider->setVirtualCameraAvailability("0", false);
    EXPECT_FALSE(provider->getVirtualCameraAvailability("0"));
    EXPECT_EQ(trackingMode(), 5);
    EXPECT_EQ(prop(kEnable), "0");
    EXPECT_TRUE(providerErrors().empty());
}

TEST_F(FaultInjectionTest, ListenerDyingMidOperationMissesTheRestOfIt) {
    // Given a listener registered twice that dies at its first crop, between two that live
    sp<RecordingListener> last = new RecordingListener("last");
    sp<RecordingListener> dying = new RecordingListener("dying");
    provider->setListener(dying);
    provider->setListener(dying);
    provider->setListener(last);
    dying->failWith(::android::DEAD_OBJECT);
    clearAllListenerEvents();

    // When a move announces a crop and its text
    ASSERT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100));

    // Then both entries were called and dropped during the crop, so the text skips them
    const std::string crop =
            "onCameraCropApplied crops=[{100,56,1180,664}] frame=1280x720 "
            "transition=0 duration=0 extra=0";
    const std::string text = "onCameraSceneJsonApplied 288 bytes";
    EXPECT_EQ(allListenerEvents(),
              (Strings{"listener: " + crop, "dying: " + crop, "dying: " + crop, "last: " + crop,
                       "listener: " + text, "last: " + text}));
    const LogLine deadCrop =
            providerLine(kError, "Error from onCameraCropApplied callback: " + kDead);
    EXPECT_EQ(providerErrors(), (std::vector<LogLine>{deadCrop, deadCrop}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 2u);

    // Given the multistream flag and a listener dying at the tracking change that the
    // availability switch makes inside its own notification, while another listener fails
    // with another transport error throughout
    setProp(kMultistream, "1");
    sp<RecordingListener> flaky = new RecordingListener("flaky");
    sp<RecordingListener> dyingLater = new RecordingListener("dyingLater");
    provider->setListener(flaky);
    provider->setListener(dyingLater);
    flaky->failWith(::android::FAILED_TRANSACTION);
    dyingLater->failWith(::android::DEAD_OBJECT);
    clearAllListenerEvents();
    LogCapture::clear();

    // When virtual cameras are switched on
    provider->setVirtualCameraAvailability("0", true);

    // Then the dead one heard only the tracking change; the failing one heard both, stays, and
    // the tracking property and the switch are in place all the same
    EXPECT_EQ(allListenerEvents(), (Strings{"listener: cameraDeviceTrackingChange 0 5",
                                            "last: cameraDeviceTrackingChange 0 5",
                                            "flaky: cameraDeviceTrackingChange 0 5",
                                            "dyingLater: cameraDeviceTrackingChange 0 5",
                                            "listener: onVirtualCameraAvailablityChange 0 1",
                                            "last: onVirtualCameraAvailablityChange 0 1",
                                            "flaky: onVirtualCameraAvailablityChange 0 1"}));
    const std::string failed = "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '";
    EXPECT_EQ(providerErrors(),
              (std::vector<LogLine>{
                      providerLine(kError,
                                   "Error from cameraDeviceTrackingChange callback: " + failed),
                      providerLine(kError,
                                   "Error from cameraDeviceTrackingChange callback: " + kDead),
                      providerLine(kError,
                                   "Error from onVirtualCameraAvailablityChange "
                                   "callback: " +
                                           failed)}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 3u);
    EXPECT_EQ(prop(kTalkerTracking), "5");
    EXPECT_EQ(prop(kEnable), "1");
    EXPECT_TRUE(provider->getVirtualCameraAvailability("0"));
}
