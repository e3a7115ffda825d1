// Lock order checks: the cache lock is a leaf under the provider and session locks; a thread
// that takes the service's locks out of order, or two providers' locks, is stopped at once.
#include <functional>
#include <mutex>

#include <gtest/gtest.h>

#include "CameraControlCache.h"
#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "kit/RecordingListener.h"

using namespace kit;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

constexpr uint32_t kExposureCompensation = 0x10001;

// An engine that runs `onCrop` when the session hands it a PTZ crop, under the session lock.
class CallingEngine : public FramingEngine {
  public:
    explicit CallingEngine(std::function<void()> onCrop) : mOnCrop(std::move(onCrop)) {
        FDSession::getInstance()->attachEngine(this);
    }
    ~CallingEngine() { FDSession::getInstance()->attachEngine(nullptr); }
    void onSceneControl(const SceneControl&) override {}
    void onPTZControl(const SceneControl&) override { mOnCrop(); }
    void onTrackControl(const TrackControl&) override {}
    void onTrackingModeChanged(int32_t) override {}

  private:
    std::function<void()> mOnCrop;
};

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

const Inversion kInversions[] = {
        {"EngineCallsTheProviderUnderTheSessionLock",
         [](auto& p, auto&) {
             CallingEngine engine([&p] { p.getMaxVirtualCameras("0"); });
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

void PrintTo(const Inversion& row, std::ostream* os) {
    *os << row.name;
}

class LockOrderDeathTest : public ::testing::TestWithParam<Inversion> {};

}  // namespace

TEST(LockOrderTest, CacheIsTakenUnderTheProviderAndSessionLocks) {
    // Given a listener and an engine that store metadata from inside their calls
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    ZorvCameraProvider* p = provider.get();
    sp<RecordingListener> listener = new RecordingListener();
    listener->onEvent([p](const std::string&) {
        p->setMetaData("0", kExposureCompensation, 1);
        p->setMetaArray("0", kExposureCompensation, {2});
    });
    provider->setListener(listener);
    CallingEngine engine([p] { p->setMetaData("1", kExposureCompensation, 3); });

    // When a notification and a crop reach them, then nothing aborts
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
