// The session: one per process, its reset framing, the forwarding interface, the engine's
// lifetime, the lock order between the provider, session and cache locks, and which of them each
// operation takes.
#include <string.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "CameraControlCache.h"
#include "FDSessionHostControl.h"
#include "support/ProviderOps.h"
#include "support/ProviderTest.h"
#include "support/Watchdog.h"

using namespace testing_support;
using ::android::hardware::camera::device::V3_2::CaptureRequest;
using ::android::hardware::camera::device::V3_2::StreamConfiguration;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;

namespace {

// An engine that runs `onTrack` inside each track control and `onCrop` inside each PTZ crop.
class CallingEngine : public FramingEngine {
  public:
    CallingEngine(
            std::function<void()> onCrop, std::function<void()> onTrack = [] {})
        : mOnCrop(std::move(onCrop)), mOnTrack(std::move(onTrack)) {}
    void onSceneControl(const SceneControl&) override {}
    void onPTZControl(const SceneControl&) override { mOnCrop(); }
    void onTrackControl(const TrackControl&) override {
        mOnTrack();
        ++mTrackControls;  // freed memory if the engine was destroyed meanwhile
    }
    void onTrackingModeChanged(int32_t) override {}

  private:
    std::function<void()> mOnCrop, mOnTrack;
    int mTrackControls = 0;
};

struct Attached : CallingEngine {
    explicit Attached(std::function<void()> onCrop) : CallingEngine(std::move(onCrop)) {
        FDSession::getInstance()->attachEngine(this);
    }
    ~Attached() { FDSession::getInstance()->attachEngine(nullptr); }
};

constexpr uint32_t kExposureCompensation = 0x10001;
const std::string kProvider = "provider lock \\(ZorvCameraProvider::mLock\\)";
const std::string kSession = "session lock \\(FDSession::mLock\\)";
const std::string kCache = "cache lock \\(CameraControlCache::mLock\\)";
std::string violation(const std::string& requested, const std::string& held) {
    return "lock order violation: " + requested + " requested while this thread holds " + held;
}

struct Inversion {
    const char* name;
    std::function<void(ZorvCameraProvider& p, ZorvCameraProvider& other)> run;
    std::string message;
};
void PrintTo(const Inversion& row, std::ostream* os) {
    *os << row.name;
}
const Inversion kInversions[] = {
        {"EngineCallsTheProviderUnderTheSessionLock",
         [](auto& p, auto&) {
             Attached engine([&p] { p.getMaxVirtualCameras("0"); });
             p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 10);
         },
         violation(kProvider, kSession) + ", which must come after it"},
        {"CacheHolderCallsTheSession",
         [](auto& p, auto&) {
             std::lock_guard lock(CameraControlCache::mLock);
             p.getTrackingMode("0");
         },
         violation(kSession, kCache) + ", which is a leaf"},
        {"CacheHolderCallsTheProvider",
         [](auto& p, auto&) {
             std::lock_guard lock(CameraControlCache::mLock);
             p.getMaxVirtualCameras("0");
         },
         violation(kProvider, kCache) + ", which is a leaf"},
        {"ListenerCallsASecondProvider",
         [](auto& p, auto& other) {
             sp<RecordingListener> listener = new RecordingListener();
             listener->onEvent([&other](const std::string&) { other.getMaxVirtualCameras("0"); });
             p.setListener(listener);
             p.setMaxVirtualCameras("0", 2);
         },
         violation(kProvider, kProvider) + " of another instance"},
};
class LockOrderDeathTest : public ::testing::TestWithParam<Inversion> {};

}  // namespace

TEST(SessionTest, ConcurrentFirstCallsShareOneSessionAndOneThread) {
    sp<FDSession> a, b;
    std::thread t1([&] { a = FDSession::getInstance(); });
    std::thread t2([&] { b = FDSession::getInstance(); });
    t1.join();
    t2.join();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a.get(), b.get());
    for (int i = 0; i < 200 && fdstream_host::handlerCounts().threadsStarted == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(fdstream_host::handlerCounts().threadsStarted, 1);
    EXPECT_EQ(LogCapture::count(providerLine(kDebug, "PTZ Scene reset 0 0 1280 720")), 1);
    // A new session holds the whole frame, mode 0 and no scene
    std::lock_guard lock(FDSession::mLock);
    EXPECT_EQ(a->mPTZControl, (SceneControl{{kFull}, 1280, 720, 0, 0, 0}));
    EXPECT_EQ(a->mTrackingMode, 0);
    EXPECT_EQ(a->mSceneControl.crops.size(), 0u);
}

TEST(SessionTest, ResetKeepsTransitionAndDurationAndTellsNoEngine) {
    sp<FDSession> session = FDSession::getInstance();
    RecordingEngine engine;
    session->setPTZControl(SceneControl{{Crop{100, 50, 740, 410}}, 1280, 720, 1, 500, 9});
    engine.clear();
    LogCapture::clear();
    session->resetPTZScene();
    EXPECT_EQ(ptz(), (SceneControl{{kFull}, 1280, 720, 1, 500, 9}));
    EXPECT_TRUE(engine.calls().empty());
    EXPECT_EQ(LogCapture::lines(), Lines{providerLine(kDebug, "PTZ Scene reset 0 0 1280 720")});
}

TEST(SessionTest, InterfacesAreDistinctDriveTheSameSessionAndTranslateHandlerResults) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();
    std::vector<sp<IFDSession>> s;
    for (int i = 0; i < 2; ++i) {
        provider->getFDSessionInterface([&](Status status, const sp<IFDSession>& i) {
            EXPECT_EQ(status, Status::OK);
            s.push_back(i);
        });
    }
    ASSERT_EQ(s.size(), 2u);
    ASSERT_NE(s[0], nullptr);
    EXPECT_NE(s[0].get(), s[1].get());
    const LogLine enter = providerLine(kInfo, "getFDSessionInterface: enter \n");
    const LogLine exit = providerLine(kInfo, "getFDSessionInterface: exit \n");
    EXPECT_EQ(LogCapture::lines(), (Lines{enter, exit, enter, exit}));
    // Any handler failure becomes 1, success stays 0, and setCallback always answers 0
    EXPECT_EQ(int32_t(s[0]->configure(StreamConfiguration{})), 0);
    EXPECT_EQ(int32_t(s[1]->processCaptureRequest(CaptureRequest{})), 0);
    EXPECT_TRUE(FDSession::getInstance()->mConfigured);
    fdstream_host::setHandlerResults(-22, -22, -22);
    EXPECT_EQ(int32_t(s[1]->configure(StreamConfiguration{})), 1);
    EXPECT_EQ(int32_t(s[0]->processCaptureRequest(CaptureRequest{})), 1);
    EXPECT_EQ(int32_t(s[0]->setCallback(nullptr)), 0);
    const auto counts = fdstream_host::handlerCounts();
    EXPECT_EQ(counts.setCallback, 1);
    EXPECT_EQ(counts.configure, 2);
    EXPECT_EQ(counts.captureRequest, 2);
}

TEST(SessionConcurrencyTest, DetachingWaitsForTrackControlsInFlightOnOtherThreads) {
    Watchdog watchdog(std::chrono::seconds(20), "engine detach");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<FDSession> session = FDSession::getInstance();
    std::atomic<bool> entered{false}, release{false}, detached{false};
    // An engine may detach itself from inside its own track control on the same thread
    auto engine = std::make_unique<CallingEngine>([] {}, [&] { session->attachEngine(nullptr); });
    session->attachEngine(engine.get());
    provider->setTracking(TrackControl{});

    // Given a track control in flight on one thread
    engine = std::make_unique<CallingEngine>(
            [] {},
            [&] {
                entered = true;
                while (!release) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            });
    session->attachEngine(engine.get());
    std::thread tracking([&] { provider->setTracking(TrackControl{}); });
    while (!entered) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    // When another thread detaches the engine and destroys it, the detach waits for the call
    std::thread owner([&] {
        session->attachEngine(nullptr);
        detached = true;
        engine.reset();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(detached);
    release = true;
    tracking.join();
    owner.join();
    EXPECT_TRUE(detached);
}

TEST(LockOrderTest, CacheIsTakenUnderTheProviderAndSessionLocks) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    ZorvCameraProvider* p = provider.get();
    sp<RecordingListener> listener = new RecordingListener();
    listener->onEvent([p](const std::string&) {
        p->setMetaData("0", kExposureCompensation, 1);
        p->setMetaArray("0", kExposureCompensation, {2});
    });
    provider->setListener(listener);
    Attached engine([p] { p->setMetaData("1", kExposureCompensation, 3); });
    provider->setMaxVirtualCameras("0", 2);
    EXPECT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10));
    EXPECT_EQ(listener->events().size(), 3u);
}

TEST_P(LockOrderDeathTest, Aborts) {
#if !defined(ZORV_LOCK_ORDER_CHECKS)
    GTEST_SKIP() << "lock order checks are compiled out of this build";
#endif
    // The session runs its own thread, so the child re-runs the test instead of forking.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<ZorvCameraProvider> other = new ZorvCameraProvider();
    EXPECT_DEATH(GetParam().run(*provider, *other), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(, LockOrderDeathTest, ::testing::ValuesIn(kInversions),
                         [](const auto& info) { return std::string(info.param.name); });

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
        if (l == 0) flip(Peer::lock(*provider));
        if (l == 1) flip(FDSession::mLock);
        if (l == 2) flip(CameraControlCache::mLock);
    };
    // What the calls change, as seen from the thread holding the provider or session lock.
    auto state = [&](size_t l) {
        std::string s = prop("persist.tessaview.vc.max") + prop("vendor.tessaview.vc.enable") +
                        prop("vendor.talkertracking.flag") + prop("persist.camera.preset.1.l") +
                        describe(ptz()) + std::to_string(sessionMode());
        if (l != 0) return s;  // the provider's getters take its lock: only after the session's
        for (const char* id : {"0", "1", "device@3.2/internal/0", "device@3.2/internal/1"}) {
            s += std::to_string(
                         int(VirtualCameraCapability(provider->getVirtualCameraCapability(id)))) +
                 std::to_string(uint32_t(provider->getMaxVirtualCameras(id))) +
                 std::to_string(bool(provider->getVirtualCameraAvailability(id)));
            provider->getVirtualCameraList(id,
                                           [&](const auto& v) { s += std::to_string(v.size()); });
        }
        provider->getVirtualCameraInfo([&](const auto& v) { s += std::to_string(v.size()); });
        return s + std::to_string(Peer::listenerCount(*provider));
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
            const std::string before = l < 2 ? state(l) : "";
            auto running = std::async(std::launch::async, [&] { op.run(c); });
            // An operation that needs no lock may still be slow (sanitizers): it gets long.
            const bool needs = want.find("PSC"[l]) != want.npos;
            if (running.wait_for(std::chrono::milliseconds(needs ? 60 : 20000)) !=
                std::future_status::ready) {
                waited += "PSC"[l];
                if (l < 2 && state(l) != before) waited += "!";  // changed without the lock
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
