// Listener registry and the fan-out rule of every notification, with listeners that call back
// into the provider from their callbacks and calls that meet a fan-out from another thread.
#include <chrono>
#include <memory>
#include <thread>

#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

const std::string kCapability = "onVirtualCameraCapabilityChange 0 1";

std::string address(const sp<RecordingListener>& l) {
    char text[16];
    snprintf(text, sizeof(text), "0x%08x",
             static_cast<uint32_t>(reinterpret_cast<uintptr_t>(
                     static_cast<IZorvCameraProviderCallback*>(l.get()))));
    return text;
}

std::string cropEvent(const std::string& crop) {
    return "onCameraCropApplied crops=[" + crop +
           "] frame=1280x720 transition=0 duration=0 extra=0";
}

// Runs `action` from the first event that starts with `prefix` only.
void once(const sp<RecordingListener>& l, const std::string& prefix, std::function<void()> action) {
    auto done = std::make_shared<bool>(false);
    l->onEvent([=](const std::string& event) {
        if (*done || event.rfind(prefix, 0) != 0) return;
        *done = true;
        action();
    });
}

class ListenerTest : public ::testing::Test {
  public:
    void SetUp() override { LogCapture::clear(); }
    void notify() {
        Peer::notify(*provider, "onVirtualCameraCapabilityChange",
                     [](const sp<IZorvCameraProviderCallback>& l) {
                         return l->onVirtualCameraCapabilityChange(
                                 "0", VirtualCameraCapability::SUPPORTED);
                     });
    }
    void expectAgreement() { testing_support::expectAgreement({a, b}); }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> a = new RecordingListener("a");
    sp<RecordingListener> b = new RecordingListener("b");
};

}  // namespace

TEST_F(ListenerTest, RegistrationIsLoggedTwiceMeansCalledTwiceOneClearRemovesBoth) {
    // Given a registered twice, and a null and an unknown listener given too
    provider->setListener(a);
    provider->setListener(a);
    provider->setListener(nullptr);
    provider->clearListener(b);
    provider->clearListener(nullptr);
    notify();
    EXPECT_EQ(a->events().size(), 2u);

    // When a is cleared, then both entries go
    provider->clearListener(a);
    EXPECT_EQ(Peer::listenerCount(*provider), 0u);
    const LogLine added = providerLine(kDebug, "Adding listener " + address(a));
    const LogLine removed = providerLine(kDebug, "Removing listener " + address(a));
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{added, added,
                                    providerLine(kError, "setListener: ignoring null listener"),
                                    removed, removed}));
}

// A listener "a" (registered first) and "b" call back into the provider from their callbacks.
struct Reentry {
    const char* name;
    std::function<void(ListenerTest&, ZorvCameraProvider&, const sp<RecordingListener>& a,
                       const sp<RecordingListener>& b)>
            given;
    std::function<void(ListenerTest&, ZorvCameraProvider&)> when;
    Strings events;  // every listener's events, in call order
    size_t errors;   // provider error lines
};

void PrintTo(const Reentry& row, std::ostream* os) {
    *os << row.name;
}

class ReentrantListenerTest : public ListenerTest, public ::testing::WithParamInterface<Reentry> {};

const Reentry kReentries[] = {
        {"ReassertsTheModeItIsTold",
         [](auto&, auto& p, auto& a, auto&) {
             a->onEvent([&p](const std::string& e) {
                 if (e.rfind("cameraDeviceTrackingChange", 0) != 0) return;
                 p.setTrackingMode("0", static_cast<TrackingMode>(std::stoi(e.substr(29))));
             });
         },
         [](auto&, auto& p) { p.setTrackingMode("0", TrackingMode::OFF); },
         {"a: cameraDeviceTrackingChange 0 0", "b: cameraDeviceTrackingChange 0 0"},
         0},
        {"SwitchesVirtualCamerasOnWhenToldTheMode",
         [](auto&, auto& p, auto& a, auto&) {
             setProp("persist.vendor.multistream.enable", "1");
             a->onEvent([&p](const std::string& e) {
                 if (e.rfind("cameraDeviceTrackingChange", 0) == 0) {
                     p.setVirtualCameraAvailability("0", true);
                 }
             });
         },
         [](auto&, auto& p) { p.setVirtualCameraAvailability("0", true); },
         {"a: cameraDeviceTrackingChange 0 5", "a: onVirtualCameraAvailablityChange 0 1",
          "b: onVirtualCameraAvailablityChange 0 1", "b: cameraDeviceTrackingChange 0 5",
          "a: onVirtualCameraAvailablityChange 0 1", "b: onVirtualCameraAvailablityChange 0 1"},
         0},
        {"ChangesTheModeItIsTold",
         [](auto&, auto& p, auto& a, auto&) {
             once(a, "cameraDeviceTrackingChange 0 1",
                  [&p] { p.setTrackingMode("0", TrackingMode::MODE_2); });
         },
         [](auto&, auto& p) { p.setTrackingMode("0", TrackingMode::MODE_1); },
         {"a: cameraDeviceTrackingChange 0 1", "a: cameraDeviceTrackingChange 0 2",
          "b: cameraDeviceTrackingChange 0 2"},
         0},
        {"PansFromTheCropItIsTold",
         [](auto&, auto& p, auto& a, auto&) {
             once(a, "onCameraCropApplied",
                  [&p] { p.moveCamera("0", CameraMoveDirection::PAN_LEFT, 50); });
         },
         [](auto&, auto& p) { p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 100); },
         {"a: " + cropEvent("{100,56,1180,664}"), "a: " + cropEvent("{50,56,1130,664}"),
          "b: " + cropEvent("{50,56,1130,664}"), "a: onCameraSceneJsonApplied 288 bytes",
          "b: onCameraSceneJsonApplied 288 bytes"},
         0},
        {"RemovesAListenerLaterInTheList",
         [](auto&, auto& p, auto& a, auto& b) {
             a->onEvent([&p, b = b.get()](const std::string&) { p.clearListener(b); });
         },
         [](auto& t, auto&) { t.notify(); },
         {"a: " + kCapability},
         0},
        {"RemovesItselfAndAddsAnotherFromTheNextNotificationOn",
         [](auto&, auto& p, auto& a, auto& b) {
             p.clearListener(b);
             a->onEvent([&p, a = a.get(), b = b.get()](const std::string&) {
                 p.clearListener(a);
                 p.setListener(b);
             });
         },
         [](auto& t, auto&) {
             t.notify();
             t.notify();
         },
         {"a: " + kCapability, "b: " + kCapability},
         0},
        {"FailsWhileALaterOneHasDied",
         [](auto&, auto&, auto& a, auto& b) {
             a->failWith(::android::FAILED_TRANSACTION);
             b->failWith(::android::DEAD_OBJECT);
         },
         [](auto& t, auto&) {
             t.notify();
             t.notify();
         },
         {"a: " + kCapability, "b: " + kCapability, "a: " + kCapability},
         3},
        {"NotifiesAgainAheadOfADeadListener",
         [](auto& t, auto&, auto& a, auto& b) {
             b->failWith(::android::DEAD_OBJECT);
             once(a, "onVirtualCameraCapabilityChange", [&t] { t.notify(); });
         },
         [](auto& t, auto&) { t.notify(); },
         {"a: " + kCapability, "a: " + kCapability, "b: " + kCapability},
         1},
};

TEST_P(ReentrantListenerTest, ListenerThat) {
    // Given listeners a and b, a (or both) calling back into the provider
    const Reentry& row = GetParam();
    provider->setListener(a);
    provider->setListener(b);
    row.given(*this, *provider, a, b);
    clearAllListenerEvents();
    LogCapture::clear();

    // When the row's call is made, then the listeners hear what the row says
    row.when(*this, *provider);
    EXPECT_EQ(allListenerEvents(), row.events);
    EXPECT_EQ(providerLines(kError).size(), row.errors);
    expectAgreement();
}

INSTANTIATE_TEST_SUITE_P(, ReentrantListenerTest, ::testing::ValuesIn(kReentries),
                         [](const auto& info) { return std::string(info.param.name); });

// While listener a holds the provider lock in a fan-out, another thread starts `concurrent`;
// then a makes the `nested` call.
struct Meeting {
    const char* name;
    std::function<void(ZorvCameraProvider&)> concurrent;
    std::function<void(ZorvCameraProvider&)> nested;
};

void PrintTo(const Meeting& row, std::ostream* os) {
    *os << row.name;
}

class ListenerConcurrencyTest : public ListenerTest,
                                public ::testing::WithParamInterface<Meeting> {};

const Meeting kMeetings[] = {
        {"ModeSetMeetsModeSetFromAListener",
         [](auto& p) { p.setTrackingMode("0", TrackingMode::MODE_1); },
         [](auto& p) { p.setTrackingMode("0", TrackingMode::MODE_2); }},
        {"PresetMeetsMoveFromAListener", [](auto& p) { p.gotoPreset("0", 7); },
         [](auto& p) { p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 10); }},
};

TEST_P(ListenerConcurrencyTest, CallsEndInAgreement) {
    const Meeting& row = GetParam();
    for (const char* edge : {".l=0", ".t=0", ".r=640", ".b=360"}) {
        const std::string s(edge);
        setProp("persist.camera.preset.7" + s.substr(0, 2), s.substr(3));
    }
    provider->setListener(a);
    provider->setListener(b);
    std::thread other;
    once(a, "onMaxVirtualCamerasChange", [&] {
        other = std::thread([&] { row.concurrent(*provider); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        row.nested(*provider);
    });

    provider->setMaxVirtualCameras("0", 1);
    other.join();

    expectAgreement();
}

INSTANTIATE_TEST_SUITE_P(, ListenerConcurrencyTest, ::testing::ValuesIn(kMeetings),
                         [](const auto& info) { return std::string(info.param.name); });
