// Scenes and crops: relaying texts, setting scenes, announcing changed crops, the crop in force.
#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/ProviderPeer.h"
#include "support/RecordingEngine.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

const SceneControl kScene{{Crop{100, 50, 740, 410}}, 1280, 720, 1, 500, 7};

class SceneTest : public ::testing::Test {
  protected:
    void SetUp() override { LogCapture::clear(); }

    void setMode(int32_t mode) {
        std::lock_guard lock(FDSession::mLock);
        FDSession::getInstance()->mTrackingMode = mode;
    }
    SceneControl currentCrop() {
        SceneControl out;
        EXPECT_TRUE(
                provider->getCurrentCameraCropArea([&](const SceneControl& s) { out = s; }).isOk());
        return out;
    }
    std::string crop(const SceneControl& s) { return "onCameraCropApplied " + describe(s); }
    std::string json(size_t bytes) {
        return "onCameraSceneJsonApplied " + std::to_string(bytes) + " bytes";
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
};

}  // namespace

TEST_F(SceneTest, SceneTextIsRelayedVerbatimOnlyWhileTracking) {
    provider->setListener(first);
    provider->setListener(second);

    // Tracking off: nobody hears of it
    EXPECT_EQ(provider->setSceneJson("{\"a\":1}"), Status::OK);
    EXPECT_TRUE(allListenerEvents().empty());

    // Any tracking mode: every listener gets the text as it came, JSON or not
    setMode(4);
    EXPECT_EQ(provider->setSceneJson("not json \n\"{"), Status::OK);
    EXPECT_EQ(allListenerEvents(),
              (std::vector<std::string>{"first: " + json(12), "second: " + json(12)}));
    EXPECT_EQ(first->jsons(), (std::vector<std::string>{"not json \n\"{"}));
}

TEST_F(SceneTest, SceneWithTrackingOffIsStoredAndEngineToldButNothingAnnounced) {
    RecordingEngine engine;
    provider->setListener(first);

    EXPECT_EQ(provider->setScene(kScene), Status::OK);

    std::vector<RecordingEngine::Call> calls = engine.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "onSceneControl");
    EXPECT_EQ(calls[0].scene, kScene);
    EXPECT_TRUE(calls[0].sessionLockHeld);
    {
        std::lock_guard lock(FDSession::mLock);
        EXPECT_EQ(FDSession::getInstance()->mSceneControl, kScene);
    }
    EXPECT_TRUE(first->events().empty());
    // The PTZ crop stays the one in force
    EXPECT_EQ(currentCrop(), (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}));
}

TEST_F(SceneTest, SceneWithoutListenerIsNotAnnouncedAndLaterComparedWithLastAnnounced) {
    // Given mode 1 and no listener
    setMode(1);
    provider->setScene(kScene);
    EXPECT_EQ(ZorvCameraProviderTestPeer::lastCrop(*provider), SceneControl{});

    // When a listener comes and the same scene is set again
    provider->setListener(first);
    provider->setScene(kScene);

    // Then it is announced, since it was never announced before
    EXPECT_EQ(first->events(), (std::vector<std::string>{crop(kScene), json(290)}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::lastCrop(*provider), kScene);
}

TEST_F(SceneTest, OnlyFrameCropCountAndFirstCropMakeACropNew) {
    provider->setListener(first);
    provider->setListener(second);
    setMode(2);
    SceneControl scene{{Crop{100, 50, 740, 410}, Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0};

    // Given a scene announced once, to both listeners, crop before text
    provider->setScene(scene);
    EXPECT_EQ(allListenerEvents(),
              (std::vector<std::string>{"first: " + crop(scene), "second: " + crop(scene),
                                        "first: " + json(288), "second: " + json(288)}));

    // When only transition, duration, extra or a later crop change
    clearAllListenerEvents();
    SceneControl same = scene;
    same.transition = 9;
    same.duration = 9;
    same.extra = 9;
    same.crops[1] = Crop{5, 6, 7, 8};
    provider->setScene(same);
    // Then nothing is announced and the last crop stays the first one announced
    EXPECT_TRUE(allListenerEvents().empty());
    EXPECT_EQ(ZorvCameraProviderTestPeer::lastCrop(*provider), scene);

    // Each of crop count, frame width, frame height and each edge announces again
    std::vector<SceneControl> changes(7, scene);
    changes[0].crops = {Crop{100, 50, 740, 410}};
    changes[1].frameWidth = 1281;
    changes[2].frameHeight = 721;
    changes[3].crops[0].left = 101;
    changes[4].crops[0].top = 51;
    changes[5].crops[0].right = 741;
    changes[6].crops[0].bottom = 411;
    for (const SceneControl& changed : changes) {
        provider->setScene(scene);
        first->clear();
        provider->setScene(changed);
        EXPECT_EQ(first->crops(), (std::vector<SceneControl>{changed}));
    }

    // Empty crop lists never count as unchanged; their text is empty
    first->clear();
    provider->setScene(SceneControl{{}, 1280, 720, 0, 0, 0});
    provider->setScene(SceneControl{{}, 1280, 720, 0, 0, 0});
    EXPECT_EQ(first->events(),
              (std::vector<std::string>{crop(SceneControl{{}, 1280, 720, 0, 0, 0}), json(0),
                                        crop(SceneControl{{}, 1280, 720, 0, 0, 0}), json(0)}));
}

TEST_F(SceneTest, FlipMaskMirrorsTheAnnouncedFirstCropOnly) {
    // Given the flip mask set, mode 1 and a listener
    setProp("persist.camera.cpp.flipmask", "1");
    provider->setListener(first);
    setMode(1);
    SceneControl scene{{Crop{100, 50, 740, 410}, Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0};

    // When the scene is set
    provider->setScene(scene);

    // Then listeners see it rotated, with the text of the rotated crop
    SceneControl mirrored{{Crop{540, 310, 1180, 670}, Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0};
    EXPECT_EQ(first->crops(), (std::vector<SceneControl>{mirrored}));
    ASSERT_EQ(first->jsons().size(), 1u);
    EXPECT_NE(first->jsons()[0].find("\"source\": { \"xoffset\":\"2295\", \"yoffset\":\"1317\", "
                                     "\"width\":\"2720\", \"height\":\"1530\" },\n"),
              std::string::npos);
    // While the provider and the reply keep the crop as set
    EXPECT_EQ(ZorvCameraProviderTestPeer::lastCrop(*provider), scene);
    EXPECT_EQ(currentCrop(), scene);

    // The mask is read at every announcement
    first->clear();
    setProp("persist.camera.cpp.flipmask", "0");
    SceneControl next{{Crop{0, 0, 640, 360}}, 1280, 720, 0, 0, 0};
    provider->setScene(next);
    EXPECT_EQ(first->crops(), (std::vector<SceneControl>{next}));
}

TEST_F(SceneTest, CropInForceFollowsTheModeAndDefaultsTheFrame) {
    // Mode 1 before any scene: no crops, frame 1280 x 720
    setMode(1);
    EXPECT_EQ(currentCrop(), (SceneControl{{}, 1280, 720, 0, 0, 0}));

    // A stored frame below 1 on either axis is reported as 1280 x 720
    provider->setScene({{Crop{1, 2, 3, 4}}, 640, 0, 5, 6, 7});
    EXPECT_EQ(currentCrop(), (SceneControl{{Crop{1, 2, 3, 4}}, 1280, 720, 5, 6, 7}));

    // Mode 3 held by the session: the track rectangle in a plain 1280 x 720 reply
    TrackControl track{};
    track.left = 10;
    track.top = 20;
    track.right = 330;
    track.bottom = 200;
    track.action = 3;
    provider->setTracking(track);
    setMode(3);
    EXPECT_EQ(currentCrop(), (SceneControl{{Crop{10, 20, 330, 200}}, 1280, 720, 0, 0, 0}));

    // Any other mode: an empty reply
    setMode(4);
    EXPECT_EQ(currentCrop(), (SceneControl{{}, 1280, 720, 0, 0, 0}));
    setMode(-1);
    EXPECT_EQ(currentCrop(), (SceneControl{{}, 1280, 720, 0, 0, 0}));
}

TEST_F(SceneTest, FailingListenerIsLoggedPerCallbackAndOthersStillHear) {
    provider->setListener(first);
    provider->setListener(second);
    first->failWith(::android::FAILED_TRANSACTION);
    setMode(1);
    LogCapture::clear();

    provider->setScene(kScene);

    EXPECT_EQ(second->events(), (std::vector<std::string>{crop(kScene), json(290)}));
    const std::string status = "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '";
    EXPECT_EQ(
            LogCapture::linesWithTag(kProviderTag),
            (std::vector<LogLine>{
                    providerLine(kError, "Error from onCameraCropApplied callback: " + status),
                    providerLine(kError, "Error from onCameraSceneJsonApplied callback: " + status),
            }));
}
