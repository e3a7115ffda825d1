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
std::vector<std::string> announced(const SceneControl& scene) {
    return {"onCameraCropApplied " + describe(scene),
            "onCameraSceneJsonApplied " + std::to_string(sceneText(scene).size()) + " bytes"};
}

// kScene with another first crop or frame.
SceneControl like(Crop first, int32_t width = 1280, int32_t height = 720) {
    return {{first, Crop{1, 2, 3, 4}}, width, height, 1, 500, 7};
}

}  // namespace

TEST(SceneTest, SetSceneStoresAlwaysAndAnnouncesOnlyNewCropsInModesOneAndTwo) {
    struct Row {
        const char* what;
        int32_t mode;
        SceneControl previous;  // set before, in the same mode, unless its frame width is 0
        SceneControl scene;
        bool announce;
        bool listenerBefore = true;  // else the listener comes after `previous`
        Crop flipped{};  // when set: the flip mask is on and listeners hear this first crop
    };
    const SceneControl none{};
    const Crop c = kScene.crops[0];
    const Row rows[] = {
            {"mode 0", 0, none, kScene, false},
            {"mode 3", 3, none, kScene, false},
            {"mode 4", 4, none, kScene, false},
            {"mode 1, first", 1, none, kScene, true},
            {"mode 2, first", 2, none, kScene, true},
            {"same", 2, kScene, kScene, false},
            {"other transition, duration, extra, later crop",
             2,
             kScene,
             {{c, Crop{5, 6, 7, 8}}, 1280, 720, 9, 9, 9},
             false},
            {"crop count", 1, kScene, {{c}, 1280, 720, 1, 500, 7}, true},
            {"frame width", 1, kScene, like(c, 1281), true},
            {"frame height", 1, kScene, like(c, 1280, 721), true},
            {"left", 1, kScene, like({101, 50, 740, 410}), true},
            {"top", 1, kScene, like({100, 51, 740, 410}), true},
            {"right", 1, kScene, like({100, 50, 741, 410}), true},
            {"bottom", 1, kScene, like({100, 50, 740, 411}), true},
            {"no crops, twice", 1, {{}, 1280, 720, 0, 0, 0}, {{}, 1280, 720, 0, 0, 0}, true},
            // Unheard, a scene is not the last announced one
            {"previous not heard", 1, kScene, kScene, true, false},
            // The flip mask rotates the heard first crop only; it is read at every announcement
            {"flip mask", 2, none, kScene, true, true, {540, 310, 1180, 670}},
            {"flip mask off again", 1, none, kScene, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // Given a provider with a listener, an engine and the mode
        setMode(row.mode);
        const bool flip = row.flipped.right != 0;
        setProp("persist.camera.cpp.flipmask", flip ? "1" : "0");
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        sp<RecordingListener> listener = new RecordingListener();
        if (row.listenerBefore) provider->setListener(listener);
        if (row.previous.frameWidth != 0) provider->setScene(row.previous);
        const SceneControl last = Peer::lastCrop(*provider);
        EXPECT_TRUE(row.listenerBefore || last == SceneControl{});
        if (!row.listenerBefore) provider->setListener(listener);
        listener->clear();
        RecordingEngine engine;

        // When the scene is set
        EXPECT_EQ(provider->setScene(row.scene), Status::OK);

        // Then the session stores it and tells the engine under its lock, whatever the mode
        std::vector<RecordingEngine::Call> calls = engine.calls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "onSceneControl");
        EXPECT_EQ(calls[0].scene, row.scene);
        EXPECT_TRUE(calls[0].sessionLockHeld);
        {
            std::lock_guard lock(FDSession::mLock);
            EXPECT_EQ(FDSession::getInstance()->mSceneControl, row.scene);
        }
        // and listeners hear of it, crop before text, only when it is new
        SceneControl heard = row.scene;
        if (flip) heard.crops[0] = row.flipped;
        EXPECT_EQ(listener->events(), row.announce ? announced(heard) : std::vector<std::string>{});
        EXPECT_EQ(listener->jsons(), row.announce ? std::vector<std::string>{sceneText(heard)}
                                                  : std::vector<std::string>{});
        // while the provider keeps, and in modes 1 and 2 answers, the crop as set
        if (row.mode == 1 || row.mode == 2) {
            EXPECT_EQ(currentCrop(*provider), row.scene);
        }
        EXPECT_EQ(Peer::lastCrop(*provider), row.announce ? row.scene : last);
    }
}

TEST(SceneTest, AnnouncementGoesCropsFirstToEveryListenerAndLogsEachFailure) {
    // Given two listeners, the first failing, and mode 1
    setMode(1);
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
    provider->setListener(first);
    provider->setListener(second);
    first->failWith(::android::FAILED_TRANSACTION);
    LogCapture::clear();

    provider->setScene(kScene);

    const std::vector<std::string> events = announced(kScene);
    EXPECT_EQ(allListenerEvents(),
              (std::vector<std::string>{"first: " + events[0], "second: " + events[0],
                                        "first: " + events[1], "second: " + events[1]}));
    const std::string status = "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '";
    EXPECT_EQ(
            providerLines(),
            (std::vector<LogLine>{
                    providerLine(kError, "Error from onCameraCropApplied callback: " + status),
                    providerLine(kError, "Error from onCameraSceneJsonApplied callback: " + status),
            }));
}

TEST(SceneTest, SceneTextIsRelayedVerbatimInEveryModeButZero) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    const std::string text = "not json \n\"{";
    for (int32_t mode : {0, 1, 2, 3, 4, 5, -1}) {
        SCOPED_TRACE(mode);
        setMode(mode);
        listener->clear();
        EXPECT_EQ(provider->setSceneJson(text), Status::OK);
        EXPECT_EQ(listener->jsons(),
                  mode == 0 ? std::vector<std::string>{} : std::vector<std::string>{text});
        EXPECT_EQ(listener->events().size(), mode == 0 ? 0u : 1u);
    }
}

TEST(SceneTest, CropInForceFollowsTheModeAndDefaultsTheFrame) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    // Before any scene, mode 1 answers no crops in a 1280 x 720 frame
    setMode(1);
    EXPECT_EQ(currentCrop(*provider), (SceneControl{{}, 1280, 720, 0, 0, 0}));

    // Given a PTZ crop, a scene with a frame below 1 on one axis, and a track control
    FDSession::getInstance()->setPTZControl({{Crop{10, 20, 30, 40}}, 1280, 720, 1, 2, 3});
    provider->setScene({{Crop{1, 2, 3, 4}}, 640, 0, 5, 6, 7});
    TrackControl track{};
    track.left = 10;
    track.top = 20;
    track.right = 330;
    track.bottom = 200;
    track.action = 3;
    provider->setTracking(track);

    const std::pair<int32_t, SceneControl> rows[] = {
            {0, {{Crop{10, 20, 30, 40}}, 1280, 720, 1, 2, 3}},
            {1, {{Crop{1, 2, 3, 4}}, 1280, 720, 5, 6, 7}},
            {2, {{Crop{1, 2, 3, 4}}, 1280, 720, 5, 6, 7}},
            {3, {{Crop{10, 20, 330, 200}}, 1280, 720, 0, 0, 0}},
            {4, {{}, 1280, 720, 0, 0, 0}},
            {-1, {{}, 1280, 720, 0, 0, 0}},
    };
    for (const auto& [mode, reply] : rows) {
        SCOPED_TRACE(mode);
        setMode(mode);
        EXPECT_EQ(currentCrop(*provider), reply);
    }
}
