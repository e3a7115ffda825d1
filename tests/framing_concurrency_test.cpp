// Framing under concurrent clients: moves, scenes, presets and mode switches with re-entrant
// listeners.
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/ProviderPeer.h"
#include "support/RecordingEngine.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"

using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

constexpr int kIterations = 150;
constexpr int kWatchdogSeconds = 90;

// Aborts the process (failing the test with a message) if the work does not finish in time.
class Watchdog {
  public:
    Watchdog()
        : mThread([this] {
              for (int i = 0; i < kWatchdogSeconds * 10 && !mDone; ++i) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(100));
              }
              if (!mDone) {
                  fprintf(stderr, "framing threads still running after %d s: deadlock?\n",
                          kWatchdogSeconds);
                  abort();
              }
          }) {}
    ~Watchdog() {
        mDone = true;
        mThread.join();
    }

  private:
    std::atomic<bool> mDone{false};
    std::thread mThread;
};

// Whether the announcement rule would have let `b` follow `a`.
bool differs(const SceneControl& a, const SceneControl& b) {
    return a.frameWidth != b.frameWidth || a.frameHeight != b.frameHeight || a.crops.size() == 0 ||
           b.crops.size() == 0 || a.crops.size() != b.crops.size() || a.crops[0] != b.crops[0];
}

}  // namespace

TEST(FramingConcurrencyTest, ClientsAndReentrantListenersNeitherDeadlockNorReorderCrops) {
    // Given an engine and listeners that call back into the provider from their callbacks
    RecordingEngine engine;
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    ZorvCameraProvider* p = provider.get();
    sp<RecordingListener> reader = new RecordingListener("reader");
    sp<RecordingListener> mover = new RecordingListener("mover");
    std::atomic<int> reads{0};
    reader->onEvent([p, &reads](const std::string& event) {
        if (event.rfind("onCameraCropApplied", 0) != 0) return;
        p->getCurrentCameraCropArea([&reads](const SceneControl&) { ++reads; });
        p->getTrackingMode("cam0");
    });
    mover->onEvent([p](const std::string& event) {
        // A listener may steer the camera as soon as it hears that tracking went off.
        if (event == "cameraDeviceTrackingChange cam0 0") {
            p->moveCamera("cam0", CameraMoveDirection::ZOOM_IN, 8);
        }
    });
    provider->setListener(reader);
    provider->setListener(mover);

    // When several clients work at once
    {
        Watchdog watchdog;
        std::vector<std::thread> clients;
        for (int t = 0; t < 2; ++t) {
            clients.emplace_back([p, t] {
                for (int i = 0; i < kIterations; ++i) {
                    p->moveCamera("cam0", static_cast<CameraMoveDirection>(1 + (i + t) % 7),
                                  i % 40);
                }
            });
        }
        clients.emplace_back([p] {
            for (int i = 0; i < kIterations; ++i) {
                p->setScene({{Crop{i, i, 640 + i, 360 + i}}, 1280, 720, i, 0, 0});
                p->setSceneJson("{}");
                TrackControl track{};
                track.right = i;
                p->setTracking(track);
            }
        });
        clients.emplace_back([p] {
            const TrackingMode modes[] = {TrackingMode::MODE_1, TrackingMode::OFF,
                                          TrackingMode::MODE_3, TrackingMode::MODE_2,
                                          TrackingMode::OFF};
            for (int i = 0; i < kIterations; ++i) p->setTrackingMode("cam0", modes[i % 5]);
        });
        clients.emplace_back([p] {
            for (int i = 0; i < kIterations; ++i) {
                p->savePreset("cam0", i % 3);
                p->gotoPreset("cam0", (i + 1) % 3);
                p->getCurrentCameraCropArea([](const SceneControl&) {});
            }
        });
        for (std::thread& c : clients) c.join();
    }

    // Then every listener heard the crops in the order they were stored, never one twice
    const SceneControl last = ZorvCameraProviderTestPeer::lastCrop(*provider);
    for (const sp<RecordingListener>& l : {reader, mover}) {
        std::vector<SceneControl> crops = l->crops();
        ASSERT_FALSE(crops.empty());
        for (size_t i = 1; i < crops.size(); ++i) EXPECT_TRUE(differs(crops[i - 1], crops[i])) << i;
        EXPECT_EQ(crops.back(), last);
        // Each crop with its text; the relayed "{}" texts come on their own
        std::vector<std::string> jsons = l->jsons();
        EXPECT_EQ(crops.size(), static_cast<size_t>(std::count_if(
                                        jsons.begin(), jsons.end(),
                                        [](const std::string& j) { return j != "{}"; })));
    }
    EXPECT_EQ(reads.load(), static_cast<int>(reader->crops().size()));

    // And the provider still works: tracking off allows a move that lands in the session
    provider->setTrackingMode("cam0", TrackingMode::OFF);
    EXPECT_TRUE(provider->moveCamera("cam0", static_cast<CameraMoveDirection>(0), 1));
    SceneControl current;
    provider->getCurrentCameraCropArea([&current](const SceneControl& s) { current = s; });
    std::lock_guard lock(FDSession::mLock);
    EXPECT_EQ(current, FDSession::getInstance()->mPTZControl);
}
