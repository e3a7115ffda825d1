// Lock order checks: a thread that takes the service's locks out of order is stopped at once.
#include <functional>
#include <mutex>

#include <gtest/gtest.h>

#include "CameraControlCache.h"
#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/RecordingListener.h"

using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

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

class LockOrderDeathTest : public ::testing::Test {
  protected:
    void SetUp() override {
#if !defined(ZORV_LOCK_ORDER_CHECKS)
        GTEST_SKIP() << "lock order checks are compiled out of this build";
#endif
        // The session runs its own thread, so the child re-runs the test instead of forking.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
};

}  // namespace

TEST_F(LockOrderDeathTest, ProviderLockRequestedUnderTheSessionLockAborts) {
    // Given an engine that asks the provider for a table entry while it is handed a crop
    ZorvCameraProvider* p = provider.get();
    CallingEngine engine([p] { p->getMaxVirtualCameras("0"); });

    // When a move hands it one, then the process stops with the two locks named
    EXPECT_DEATH(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10),
                 "lock order violation: provider lock \\(ZorvCameraProvider::mLock\\) requested "
                 "while this thread holds session lock \\(FDSession::mLock\\), which must come "
                 "after it");
}

TEST_F(LockOrderDeathTest, CacheLockHeldTogetherWithAnotherLockAborts) {
    // A listener that stores metadata from its callback takes the cache lock inside the
    // provider lock
    sp<RecordingListener> listener = new RecordingListener();
    ZorvCameraProvider* p = provider.get();
    listener->onEvent([p](const std::string&) { p->setMetaData("0", 0x10001, 1); });
    provider->setListener(listener);
    EXPECT_DEATH(provider->setMaxVirtualCameras("0", 2),
                 "lock order violation: cache lock \\(CameraControlCache::mLock\\) requested "
                 "while this thread holds provider lock \\(ZorvCameraProvider::mLock\\); it is "
                 "held alone");
    provider->clearListener(listener);

    // A pipeline component holding the cache lock must not call the provider either
    EXPECT_DEATH(
            {
                std::lock_guard lock(CameraControlCache::mLock);
                provider->getTrackingMode("0");
            },
            "lock order violation: session lock \\(FDSession::mLock\\) requested while this "
            "thread holds cache lock \\(CameraControlCache::mLock\\), which is held alone");
}
