// Scenes and crops: relaying texts, setting scenes, announcing changed crops, the crop in force.
#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

const SceneControl kScene{{Crop{100, 50, 740, 410}, Crop{1, 2, 3, 4}}, 1280, 720, 1, 500, 7};

SceneControl currentCrop(ZorvCameraProvider& provider) {
    SceneControl out;
    EXPECT_TRUE(provider.getCurrentCameraCropArea([&](const SceneControl& s) { out = s; }).isOk());
    return out;
}

// The events of one announcement of `scene` (unmirrored).
Strings announced(const SceneControl& scene) {
    return {"onCameraCropApplied " + describe(scene),
            "onCameraSceneJsonApplied " + std::to_string(sceneText(scene).size()) + " bytes"};
}

// kScene with another first crop or frame.
SceneControl like(Crop first, int32_t width = 1280, int32_t height = 720) {
    return {{first, Crop{1, 2, 3, 4}}, width, height, 1, 500, 7};
}

}  // namespace

TEST(SceneTest, SetSceneStoresAlwaysAndAnnouncesOnlyNewCropsInModesOneAndTwo) {
    // A row: the mode; the scene set before in the same mode (unless its frame width is 0); the
    // scene; whether it is announced; whether the listener comes before `previous` (else after:
    // unheard, a scene is not the last announced one); when set, the flip mask is on and listeners
    // hear this first crop (it rotates the heard first crop only, read at every announcement).
    const SceneControl none{}, bare{{}, 1280, 720, 0, 0, 0};
    const Crop c = kScene.crops[0];
    // clang-format off
    struct Row { int32_t mode; SceneControl previous, scene; bool announce;
                 bool listenerBefore = true; Crop flipped{}; };
    const Row rows[] = {
    {0, none, kScene, false}, {3, none, kScene, false}, {4, none, kScene, false},
    {1, none, kScene, true}, {2, none, kScene, true}, {2, kScene, kScene, false},
    {2, kScene, {{c, Crop{5, 6, 7, 8}}, 1280, 720, 9, 9, 9}, false},  // only other details
    {1, kScene, {{c}, 1280, 720, 1, 500, 7}, true}, {1, kScene, like(c, 1281), true},
    {1, kScene, like(c, 1280, 721), true}, {1, bare, bare, true}, {1, kScene, kScene, true, false},
    {1, kScene, like({101, 50, 740, 410}), true}, {1, kScene, like({100, 51, 740, 410}), true},
    {1, kScene, like({100, 50, 741, 410}), true}, {1, kScene, like({100, 50, 740, 411}), true},
    {2, none, kScene, true, true, {540, 310, 1180, 670}}, {1, none, kScene, true}};
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(&row - rows);
        // Given a provider with a listener, an engine and the mode
        setMode(row.mode);
        setProp("persist.camera.cpp.flipmask", row.flipped.right ? "1" : "0");
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        sp<RecordingListener> listener = new RecordingListener();
        if (row.listenerBefore) provider->setListener(listener);
        if (row.previous.frameWidth != 0) provider->setScene(row.previous);
        const SceneControl last = Peer::lastCrop(*provider);
        EXPECT_TRUE(row.listenerBefore || last == SceneControl{});
        if (!row.listenerBefore) provider->setListener(listener);
        listener->clear();
        RecordingEngine engine;

        EXPECT_EQ(provider->setScene(row.scene), Status::OK);

        // Then the session stores it and tells the engine under its lock, whatever the mode,
        EXPECT_EQ(engine.operations(), Strings{"onSceneControl"});
        for (const auto& k : engine.calls()) EXPECT_TRUE(k.scene == row.scene && k.sessionLockHeld);
        // listeners hear of it, crop before text, only when it is new, and the provider keeps,
        // and in modes 1 and 2 answers, the crop as set
        SceneControl heard = row.scene;
        if (row.flipped.right) heard.crops[0] = row.flipped;
        EXPECT_EQ(listener->events(), row.announce ? announced(heard) : Strings{});
        EXPECT_EQ(listener->jsons(), row.announce ? Strings{sceneText(heard)} : Strings{});
        EXPECT_TRUE((row.mode != 1 && row.mode != 2) || currentCrop(*provider) == row.scene);
        EXPECT_EQ(Peer::lastCrop(*provider), row.announce ? row.scene : last);
        std::lock_guard lock(FDSession::mLock);
        EXPECT_EQ(FDSession::getInstance()->mSceneControl, row.scene);
    }
}

TEST(SceneTest, AnnouncementGoesCropsFirstToEveryListenerAndLogsEachFailure) {
    // Given two listeners, the first failing, and mode 1
    setMode(1);
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
    for (const auto& l : {first, second}) provider->setListener(l);
    first->failWith(::android::FAILED_TRANSACTION);
    LogCapture::clear();

    provider->setScene(kScene);

    const Strings e = announced(kScene);
    EXPECT_EQ(allListenerEvents(),
              (Strings{"first: " + e[0], "second: " + e[0], "first: " + e[1], "second: " + e[1]}));
    EXPECT_EQ(providerLines(),
              (Lines{providerLine(kError, "Error from onCameraCropApplied callback: " + kFailed),
                     providerLine(kError,
                                  "Error from onCameraSceneJsonApplied callback: " + kFailed)}));
}

TEST(SceneTest, SceneTextIsRelayedVerbatimInEveryModeButZero) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    const std::string text = "not json \n\"{";
    for (int32_t mode : {0, 1, 2, 3, 4, 5, -1}) {
        setMode(mode);
        listener->clear();
        EXPECT_EQ(provider->setSceneJson(text), Status::OK);
        EXPECT_EQ(listener->jsons(), mode == 0 ? Strings{} : Strings{text}) << mode;
        EXPECT_EQ(listener->events().size(), mode == 0 ? 0u : 1u);
    }
}

TEST(SceneTest, CropInForceFollowsTheModeAndDefaultsTheFrame) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    // Before any scene, mode 1 answers no crops in a 1280 x 720 frame
    setMode(1);
    const SceneControl empty{{}, 1280, 720, 0, 0, 0};
    EXPECT_EQ(currentCrop(*provider), empty);
    // Given a PTZ crop, a scene with a frame below 1 on one axis, and a track control
    const SceneControl ptzCrop{{Crop{10, 20, 30, 40}}, 1280, 720, 1, 2, 3};
    FDSession::getInstance()->setPTZControl(ptzCrop);
    provider->setScene({{Crop{1, 2, 3, 4}}, 640, 0, 5, 6, 7});
    provider->setTracking(TrackControl{10, 20, 330, 200, {}, 0, 0, 0, 3});
    const SceneControl scene{{Crop{1, 2, 3, 4}}, 1280, 720, 5, 6, 7};
    const SceneControl tracked{{Crop{10, 20, 330, 200}}, 1280, 720, 0, 0, 0};
    const std::pair<int32_t, SceneControl> rows[] = {{0, ptzCrop}, {1, scene}, {2, scene},
                                                     {3, tracked}, {4, empty}, {-1, empty}};
    for (const auto& [mode, reply] : rows) {
        setMode(mode);
        EXPECT_EQ(currentCrop(*provider), reply) << mode;
    }
}
