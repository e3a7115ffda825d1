// Listener registry and the fan-out rule of every notification, with listeners that call back
// into the provider from their callbacks and calls that meet a fan-out from another thread.
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

const std::string kCapability = "onVirtualCameraCapabilityChange 0 1|";
const std::string kFrame = "}] frame=1280x720 transition=0 duration=0 extra=0|";

// Runs `action` from the next event of `l` only.
void on(const sp<RecordingListener>& l, std::function<void()> action) {
    auto done = std::make_shared<std::atomic<bool>>(false);
    l->onEvent([=](const std::string&) {
        if (!done->exchange(true)) action();
    });
}

// Listeners "a" (registered first) and "b".
class ListenerTest : public ::testing::Test {
  public:
    ListenerTest() {
        provider->setListener(a);
        provider->setListener(b);
    }
    void notify() {
        Peer::notify(*provider, "onVirtualCameraCapabilityChange", [](const auto& l) {
            return l->onVirtualCameraCapabilityChange("0", VirtualCameraCapability::SUPPORTED);
        });
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> a = new RecordingListener("a");
    sp<RecordingListener> b = new RecordingListener("b");
};

}  // namespace

TEST_F(ListenerTest, RegistrationIsLoggedTwiceMeansCalledTwiceOneClearRemovesBoth) {
    // Given a registered twice, and a null and an unknown listener given too
    LogCapture::clear();
    provider->setListener(a);
    provider->setListener(nullptr);
    provider->clearListener(new RecordingListener());
    provider->clearListener(nullptr);
    notify();
    EXPECT_EQ(a->events().size(), 2u);

    // When a is cleared, then both entries go
    provider->clearListener(a);
    EXPECT_EQ(Peer::listenerCount(*provider), 1u);
    char address[16];
    snprintf(address, sizeof(address), "0x%08x",
             uint32_t(reinterpret_cast<uintptr_t>(
                     static_cast<IZorvCameraProviderCallback*>(a.get()))));
    const LogLine removed = providerLine(kDebug, "Removing listener " + std::string(address));
    EXPECT_EQ(
            LogCapture::lines(),
            (Lines{providerLine(kDebug, "Adding listener " + std::string(address)),
                   providerLine(kError, "setListener: ignoring null listener"), removed, removed}));
}

// Listener a (or both) calls back into the provider from its callbacks.
struct Reentry {
    const char* name;
    std::function<void(ListenerTest&, ZorvCameraProvider&)> given, when;
    std::string expected;  // every listener's events in call order, then the error line count
};

void PrintTo(const Reentry& row, std::ostream* os) {
    *os << row.name;
}

class ReentrantListenerTest : public ListenerTest, public ::testing::WithParamInterface<Reentry> {};

const auto kNotifyTwice = [](ListenerTest& t, ZorvCameraProvider&) { t.notify(), t.notify(); };

const Reentry kReentries[] = {
        {"ReassertsTheModeItIsTold",
         [](auto& t, auto& p) { on(t.a, [&p] { p.setTrackingMode("0", TrackingMode::OFF); }); },
         [](auto&, auto& p) { p.setTrackingMode("0", TrackingMode::OFF); },
         "a: cameraDeviceTrackingChange 0 0|b: cameraDeviceTrackingChange 0 0|0"},
        {"SwitchesVirtualCamerasOnWhenToldTheMode",
         [](auto& t, auto& p) {
             setProp("persist.vendor.multistream.enable", "1");
             on(t.a, [&p] { p.setVirtualCameraAvailability("0", true); });
         },
         [](auto&, auto& p) { p.setVirtualCameraAvailability("0", true); },
         "a: cameraDeviceTrackingChange 0 5|a: onVirtualCameraAvailablityChange 0 1|"
         "b: onVirtualCameraAvailablityChange 0 1|b: cameraDeviceTrackingChange 0 5|"
         "a: onVirtualCameraAvailablityChange 0 1|b: onVirtualCameraAvailablityChange 0 1|0"},
        {"ChangesTheModeItIsTold",
         [](auto& t, auto& p) { on(t.a, [&p] { p.setTrackingMode("0", TrackingMode::MODE_2); }); },
         [](auto&, auto& p) { p.setTrackingMode("0", TrackingMode::MODE_1); },
         "a: cameraDeviceTrackingChange 0 1|a: cameraDeviceTrackingChange 0 2|"
         "b: cameraDeviceTrackingChange 0 2|0"},
        {"PansFromTheCropItIsTold",
         [](auto& t, auto& p) {
             on(t.a, [&p] { p.moveCamera("0", CameraMoveDirection::PAN_LEFT, 50); });
         },
         [](auto&, auto& p) { p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 100); },
         "a: onCameraCropApplied crops=[{100,56,1180,664" + kFrame +
                 "a: onCameraCropApplied crops=[{50,56,1130,664" + kFrame +
                 "b: onCameraCropApplied crops=[{50,56,1130,664" + kFrame +
                 "a: onCameraSceneJsonApplied 288 bytes|b: onCameraSceneJsonApplied 288 bytes|0"},
        // A removal takes effect at once; an addition from the next notification on
        {"RemovesALaterOneAndItselfAndAddsTheLaterOneAgain",
         [](auto& t, auto& p) {
             on(t.a, [&p, &t] { p.clearListener(t.b), p.clearListener(t.a), p.setListener(t.b); });
         },
         kNotifyTwice, "a: " + kCapability + "b: " + kCapability + "0"},
        // a fails and stays; dead b is dropped by a's nested fan-out and not called again
        {"NotifiesAgainWhileFailingAheadOfADeadListener",
         [](auto& t, auto&) {
             t.a->failWith(::android::FAILED_TRANSACTION);
             t.b->failWith(::android::DEAD_OBJECT);
             on(t.a, [&t] { t.notify(); });
         },
         kNotifyTwice,
         "a: " + kCapability + "a: " + kCapability + "b: " + kCapability + "a: " + kCapability +
                 "4"},
};

TEST_P(ReentrantListenerTest, ListenerThat) {
    // Given listeners a and b, a (or both) calling back into the provider
    GetParam().given(*this, *provider);

    // When the row's call is made, then the listeners hear what the row says
    GetParam().when(*this, *provider);
    std::string got;
    for (const std::string& e : allListenerEvents()) got += e + "|";
    EXPECT_EQ(got + std::to_string(providerLines(kError).size()), GetParam().expected);
    expectAgreement({a, b});
}

INSTANTIATE_TEST_SUITE_P(, ReentrantListenerTest, ::testing::ValuesIn(kReentries),
                         [](const auto& info) { return std::string(info.param.name); });

// While listener a holds the provider lock in a fan-out, another thread starts `concurrent`;
// then a makes the `nested` call.
TEST_F(ListenerTest, ConcurrencyCallsThatMeetAFanOutEndInAgreement) {
    for (const char* edge : {"l=0", "t=0", "r=640", "b=360"})
        setProp("persist.camera.preset.7." + std::string(edge, 1), edge + 2);
    const std::function<void()> meetings[][2] = {
            {[&] { provider->gotoPreset("0", 7); },
             [&] { provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10); }},
            {[&] { provider->setTrackingMode("0", TrackingMode::MODE_1); },
             [&] { provider->setTrackingMode("0", TrackingMode::MODE_2); }},
    };
    for (int i = 0; i < 2; ++i) {
        std::thread other;
        on(a, [&] {
            other = std::thread(meetings[i][0]);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            meetings[i][1]();
        });
        provider->setMaxVirtualCameras("0", i + 1);
        other.join();
        expectAgreement({a, b});
    }
}
