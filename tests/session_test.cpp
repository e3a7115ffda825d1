// The session: one per process, its reset framing, the forwarding interface, the engine's
// lifetime, the lock order between the provider, session and cache locks, and which of them each
// operation takes.
#include <string.h>

#include <atomic>
#include <future>
#include <thread>

#include "CameraControlCache.h"
#include "FDSessionHostControl.h"
#include "support/ProviderOps.h"
#include "support/ProviderTest.h"
#include "support/Watchdog.h"

using namespace testing_support;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;

namespace {

// An engine, attached while it lives, that runs `onCrop` inside each PTZ crop and `onTrack`
// inside each track control.
struct CallingEngine : FramingEngine {
    CallingEngine(
            std::function<void()> crop, std::function<void()> track = [] {})
        : onCrop(std::move(crop)), onTrack(std::move(track)) {
        FDSession::getInstance()->attachEngine(this);
    }
    ~CallingEngine() { FDSession::getInstance()->attachEngine(nullptr); }
    void onSceneControl(const SceneControl&) override {}
    void onPTZControl(const SceneControl&) override { onCrop(); }
    // Touches freed memory if the engine was destroyed meanwhile.
    void onTrackControl(const TrackControl&) override { onTrack(), ++trackControls; }
    void onTrackingModeChanged(int32_t) override {}
    std::function<void()> onCrop, onTrack;
    int trackControls = 0;
};

constexpr uint32_t kExposure = 0x10001;  // exposure compensation
const std::string kProvider = "provider lock \\(ZorvCameraProvider::mLock\\)";
const std::string kSession = "session lock \\(FDSession::mLock\\)";
const std::string kCache = "cache lock \\(CameraControlCache::mLock\\)";
std::string violation(const std::string& requested, const std::string& held) {
    return "lock order violation: " + requested + " requested while this thread holds " + held;
}

}  // namespace

TEST(SessionTest, FirstCallsShareOneSessionAndThreadAndResetKeepsTransitionAndDuration) {
    sp<FDSession> a, b;
    std::thread t1([&] { a = FDSession::getInstance(); });
    b = FDSession::getInstance();
    t1.join();
    ASSERT_TRUE(a != nullptr && a.get() == b.get());
    for (int i = 0; i < 200 && fdstream_host::handlerCounts().threadsStarted == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    // A new session holds the whole frame, mode 0 and no scene
    EXPECT_EQ(std::to_string(fdstream_host::handlerCounts().threadsStarted) +
                      std::to_string(a->mSceneControl.crops.size()) + describe(ptz()) +
                      std::to_string(sessionMode()),
              "10crops=[{0,0,1280,720}] frame=1280x720 transition=0 duration=0 extra=00");
    // A reset keeps the transition, duration and extra and tells no engine
    RecordingEngine engine;
    a->setPTZControl(SceneControl{{Crop{100, 50, 740, 410}}, 1280, 720, 1, 500, 9});
    engine.clear();
    a->resetPTZScene();
    EXPECT_TRUE(ptz() == (SceneControl{{kFull}, 1280, 720, 1, 500, 9}) && engine.calls().empty());
    EXPECT_EQ(providerLines(kDebug),
              (Lines(2, providerLine(kDebug, "PTZ Scene reset 0 0 1280 720"))));
}

TEST(SessionTest, InterfacesAreDistinctDriveTheSameSessionAndTranslateHandlerResults) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();
    std::vector<sp<IFDSession>> s;
    auto keep = [&](Status st, auto& i) { s.push_back(st == Status::OK ? i : nullptr); };
    provider->getFDSessionInterface(keep);
    provider->getFDSessionInterface(keep);
    ASSERT_TRUE(s.size() == 2 && s[0] != nullptr && s[1] != nullptr && s[0] != s[1]);
    const LogLine enter = providerLine(kInfo, "getFDSessionInterface: enter \n");
    const LogLine exit = providerLine(kInfo, "getFDSessionInterface: exit \n");
    EXPECT_EQ(LogCapture::lines(), (Lines{enter, exit, enter, exit}));
    // Any handler failure becomes 1, success stays 0, and setCallback always answers 0
    auto str = [](auto v) { return std::to_string(int32_t(v)); };
    std::string answers = str(s[0]->configure({}));  // each call in turn
    answers += str(s[1]->processCaptureRequest({}));
    answers += str(FDSession::getInstance()->mConfigured);
    fdstream_host::setHandlerResults(-22, -22, -22);
    answers += str(s[1]->configure({})) + str(s[0]->processCaptureRequest({})) +
               str(s[0]->setCallback(nullptr));
    const auto n = fdstream_host::handlerCounts();
    EXPECT_EQ(answers + " " + str(n.setCallback) + str(n.configure) + str(n.captureRequest),
              "001110 122");
}

TEST(SessionConcurrencyTest, DetachingWaitsForTrackControlsInFlightOnOtherThreads) {
    Watchdog watchdog(std::chrono::seconds(20), "engine detach");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<FDSession> session = FDSession::getInstance();
    {  // An engine may detach itself from inside its own track control on the same thread
        CallingEngine self([] {}, [&] { session->attachEngine(nullptr); });
        provider->setTracking(TrackControl{});
    }
    // Given a track control in flight on one thread
    std::atomic<bool> entered{false}, release{false}, detached{false};
    auto engine = std::make_unique<CallingEngine>(
            [] {},
            [&] {
                for (entered = true; !release;)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
            });
    std::thread tracking([&] { provider->setTracking(TrackControl{}); });
    while (!entered) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    // When another thread detaches the engine and destroys it, the detach waits for the call
    std::thread owner([&] { engine.reset(), detached = true; });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(detached);
    release = true;
    tracking.join(), owner.join();
    EXPECT_TRUE(detached);
}

TEST(LockOrderTest, CacheIsTakenUnderTheProviderAndSessionLocks) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    ZorvCameraProvider* p = provider.get();
    sp<RecordingListener> listener = new RecordingListener();
    listener->onEvent([p](const std::string&) {
        p->setMetaData("0", kExposure, 1), p->setMetaArray("0", kExposure, {2});
    });
    provider->setListener(listener);
    CallingEngine engine([p] { p->setMetaData("1", kExposure, 3); });
    provider->setMaxVirtualCameras("0", 2);
    EXPECT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10));
    EXPECT_EQ(listener->events().size(), 3u);
}

TEST(LockOrderDeathTest, InversionsAbort) {
#if !defined(ZORV_LOCK_ORDER_CHECKS)
    GTEST_SKIP() << "lock order checks are compiled out of this build";
#endif
    // The session runs its own thread, so the child re-runs the test instead of forking.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    sp<ZorvCameraProvider> p = new ZorvCameraProvider(), other = new ZorvCameraProvider();
    // The engine (a temporary) stays attached until the move has returned.
    EXPECT_DEATH((CallingEngine([&p] { p->getMaxVirtualCameras("0"); }),
                  p->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10)),
                 violation(kProvider, kSession) + ", which must come after it");
    // The guard (a temporary) holds the cache lock until the call has returned.
    auto underCache = [](auto call) { return std::lock_guard(CameraControlCache::mLock), call(); };
    EXPECT_DEATH(underCache([&] { p->getTrackingMode("0"); }),
                 violation(kSession, kCache) + ", which is a leaf");
    EXPECT_DEATH(underCache([&] { p->getMaxVirtualCameras("0"); }),
                 violation(kProvider, kCache) + ", which is a leaf");
    // A listener that calls a second provider
    sp<RecordingListener> listener = new RecordingListener();
    listener->onEvent([&other](const std::string&) { other->getMaxVirtualCameras("0"); });
    p->setListener(listener);
    EXPECT_DEATH(p->setMaxVirtualCameras("0", 2),
                 violation(kProvider, kProvider) + " of another instance");
}

// Each operation of the shared table against each lock held by another thread: the locks it
// waits for (P provider, S session, C cache), or "-" when it runs through.
TEST(LockTest, EveryOperationWaitsForTheLocksItTakes) {
    const std::string expected =
            "base provider methods -, getFDSessionInterface S, setSceneJson S, setScene PS, "
            "setTracking PS, getTrackingMode S, setTrackingMode PS, moveCamera PS, savePreset S, "
            "gotoPreset PS, setListener/clearListener P, getCurrentCameraCropArea S, "
            "setMetaData C, setMetaArray C, setZoomInLimit PS, setVirtualCameraAvailability P, "
            "setVirtualCameraCapability P, setVirtualCameraList P, setMaxVirtualCameras P, "
            "setVirtualCameraInfo P, virtual camera getters P, addMetaData C, removeMetaData C, "
            "removeCamera C, applyMetaData C, ";
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    for (int32_t n = 0; n <= 3; ++n) provider->savePreset("0", n);
    auto hold = [&](size_t l, bool on) {
        auto flip = [on](auto& m) { on ? m.lock() : m.unlock(); };
        l == 0   ? flip(Peer::lock(*provider))
        : l == 1 ? flip(FDSession::mLock)
                 : flip(CameraControlCache::mLock);
    };
    // What the calls change, as seen from the thread holding the provider or session lock.
    auto state = [&] {
        return prop("persist.tessaview.vc.max") + prop("vendor.tessaview.vc.enable") +
               prop("vendor.talkertracking.flag") + prop("persist.camera.preset.1.l") +
               describe(ptz()) + std::to_string(sessionMode());
    };
    std::string waits;
    for (const ProviderOp& op : providerOps()) {
        const size_t at = expected.find(std::string(op.name) + " ") + strlen(op.name) + 1;
        const std::string want = expected.substr(at, expected.find(',', at) - at);
        std::string waited;
        for (size_t l = 0; l < 3; ++l) {
            RandomChoices in(5);
            OpContext c{*provider, in, [](const std::string&) {}, new RecordingListener()};
            hold(l, true);
            const std::string before = l < 2 ? state() : "";
            auto running = std::async(std::launch::async, [&] { op.run(c); });
            // An operation that needs no lock may still be slow (sanitizers): it gets long.
            const bool needs = want.find("PSC"[l]) != want.npos;
            if (running.wait_for(std::chrono::milliseconds(needs ? 60 : 20000)) !=
                std::future_status::ready) {
                waited += "PSC"[l];
                if (l < 2 && state() != before) waited += "!";  // changed without the lock
            }
            hold(l, false);
            running.get();
            if (c.registered) provider->clearListener(c.listener);
        }
        waits += std::string(op.name) + " " + (waited.empty() ? "-" : waited) + ", ";
    }
    EXPECT_EQ(waits, expected);
    hold(1, true);
    auto finding = std::async(std::launch::async, [] { FDSession::getInstance(); });
    EXPECT_EQ(finding.wait_for(std::chrono::milliseconds(60)), std::future_status::timeout);
    hold(1, false);
}
