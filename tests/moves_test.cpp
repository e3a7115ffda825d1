// Camera moves: the worked values, step and edge clamps, refusal while tracking, announcements.
#include <limits.h>

#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/ProviderPeer.h"
#include "support/RecordingEngine.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"

using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

using Dir = CameraMoveDirection;

class MovesTest : public ::testing::Test {
  protected:
    // The session's PTZ crop, as a move leaves it (transition, duration, extra are not kept).
    void startFrom(Crop crop) {
        FDSession::getInstance()->setPTZControl({{crop}, 1280, 720, 4, 5, 6});
    }
    SceneControl ptz() {
        std::lock_guard lock(FDSession::mLock);
        return FDSession::getInstance()->mPTZControl;
    }
    Crop move(Dir direction, int32_t step) {
        EXPECT_TRUE(provider->moveCamera("cam0", direction, step));
        SceneControl s = ptz();
        EXPECT_EQ(s.crops.size(), 1u);
        return s.crops.size() > 0 ? s.crops[0] : Crop{};
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
};

struct Row {
    Crop start;
    Dir direction;
    int32_t step;
    uint32_t zoomInLimit;
    Crop result;
};

}  // namespace

TEST_F(MovesTest, WorkedValues) {
    const Row rows[] = {
            {{0, 0, 1280, 720}, Dir::ZOOM_IN, 100, 320, {100, 56, 1180, 664}},
            {{0, 0, 1280, 720}, Dir::ZOOM_IN, 1000, 320, {256, 144, 1024, 576}},
            {{100, 56, 1180, 664}, Dir::PAN_LEFT, 50, 320, {50, 56, 1130, 664}},
            {{100, 56, 1180, 664}, Dir::PAN_RIGHT, 500, 320, {200, 56, 1280, 664}},
            {{100, 56, 1180, 664}, Dir::TILT_DOWN, 0, 320, {100, 57, 1180, 665}},
            {{400, 225, 880, 495}, Dir::ZOOM_IN, 100, 320, {480, 270, 800, 450}},
            {{480, 270, 800, 450}, Dir::ZOOM_OUT, 40, 320, {440, 248, 840, 472}},
            {{0, 0, 1280, 720}, Dir::ZOOM_OUT, 100, 320, {0, 0, 1280, 720}},
            {{480, 270, 800, 450}, Dir::APPLY_ZOOM_LIMIT, 0, 640, {320, 180, 960, 540}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(describe({{row.start}, 1280, 720, 0, 0, 0}) + " direction " +
                     std::to_string(static_cast<int>(row.direction)) + " step " +
                     std::to_string(row.step));
        ZorvCameraProviderTestPeer::setZoomInLimit(*provider, row.zoomInLimit);
        startFrom(row.start);
        EXPECT_TRUE(provider->moveCamera("cam0", row.direction, row.step));
        EXPECT_EQ(ptz(), (SceneControl{{row.result}, 1280, 720, 0, 0, 0}));
    }
}

TEST_F(MovesTest, TypicalZoomInIsStoredToldToEngineAndAnnouncedOnceWithItsText) {
    // Given a fresh session, tracking off, no flip mask, a listener and an engine
    RecordingEngine engine;
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    LogCapture::clear();

    // When the client zooms in by 100
    EXPECT_TRUE(provider->moveCamera("cam0", Dir::ZOOM_IN, 100));

    // Then the crop reaches the engine under the session lock and the listener once, then text
    const SceneControl expected{{Crop{100, 56, 1180, 664}}, 1280, 720, 0, 0, 0};
    std::vector<RecordingEngine::Call> calls = engine.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "onPTZControl");
    EXPECT_EQ(calls[0].scene, expected);
    EXPECT_TRUE(calls[0].sessionLockHeld);
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{"onCameraCropApplied " + describe(expected),
                                        "onCameraSceneJsonApplied 288 bytes"}));
    EXPECT_EQ(listener->jsons(), (std::vector<std::string>{R"(
{
  "scene":[
    {
      "cameraid":"1",
      "source": { "xoffset":"425", "yoffset":"238", "width":"4590", "height":"2584" },
      "dest": { "xoffset":"0", "yoffset":"0", "width":"5440", "height":"3060" },
      "weight":"0",
      "transition":"0",
      "duration":"0"
    }
  ]
}
)"}));
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "ZorvCameraProvider moveCamera cam0 5 by 100 \n"),
                      providerLine(kDebug,
                                   "ZorvCameraProvider Move Camera, step 100 to 100, 1180, 56, "
                                   "664 ..  \n"),
              }));
    EXPECT_EQ(ZorvCameraProviderTestPeer::lastCrop(*provider), expected);
}

TEST_F(MovesTest, StepsAreClampedAndPansStopAtTheFrameEdges) {
    startFrom({100, 56, 1180, 664});
    EXPECT_EQ(move(Dir::PAN_LEFT, -5), (Crop{99, 56, 1179, 664}));
    EXPECT_EQ(move(Dir::TILT_UP, INT_MAX), (Crop{99, 0, 1179, 608}));
    EXPECT_EQ(move(Dir::TILT_UP, 10), (Crop{99, 0, 1179, 608}));
    EXPECT_EQ(move(Dir::PAN_LEFT, 257), (Crop{0, 0, 1080, 608}));
    EXPECT_EQ(move(Dir::PAN_LEFT, 10), (Crop{0, 0, 1080, 608}));
    EXPECT_EQ(move(Dir::PAN_RIGHT, 256), (Crop{200, 0, 1280, 608}));
    EXPECT_EQ(move(Dir::PAN_RIGHT, 1), (Crop{200, 0, 1280, 608}));
    EXPECT_EQ(move(Dir::TILT_DOWN, INT_MIN), (Crop{200, 1, 1280, 609}));
    EXPECT_EQ(move(Dir::TILT_DOWN, 200), (Crop{200, 112, 1280, 720}));
}

TEST_F(MovesTest, ZoomsKeepTheLimitAndTheFrame) {
    // Zoom-in stops at the limit, one unit short when the difference is odd
    startFrom({500, 0, 781, 720});
    EXPECT_EQ(move(Dir::ZOOM_IN, 1), (Crop{481, 270, 800, 450}));

    // A zoom-in past the left edge is pinned to exactly the limit
    startFrom({-50, 0, 250, 720});
    EXPECT_EQ(move(Dir::ZOOM_IN, 1), (Crop{0, 270, 320, 450}));

    // Zoom-out from the left edge widens rightwards and keeps 16:9 inside the bottom
    startFrom({0, 500, 640, 720});
    EXPECT_EQ(move(Dir::ZOOM_OUT, 100), (Crop{0, 248, 840, 720}));

    // Applying a new limit widens a small crop in the corner and reshapes it downwards
    ZorvCameraProviderTestPeer::setZoomInLimit(*provider, 640);
    startFrom({0, 0, 320, 180});
    EXPECT_EQ(move(Dir::APPLY_ZOOM_LIMIT, 0), (Crop{0, 0, 640, 360}));

    // A limit wider than the frame is placed from the right edge
    ZorvCameraProviderTestPeer::setZoomInLimit(*provider, 1600);
    startFrom({0, 0, 320, 180});
    EXPECT_EQ(move(Dir::APPLY_ZOOM_LIMIT, 0), (Crop{-320, -180, 1280, 720}));
}

TEST_F(MovesTest, UnknownDirectionStoresAndAnnouncesTheUnchangedCrop) {
    RecordingEngine engine;
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);

    // The first announcement of the crop goes out; the same crop again does not
    EXPECT_TRUE(provider->moveCamera("cam0", static_cast<Dir>(9), 10));
    EXPECT_TRUE(provider->moveCamera("cam0", static_cast<Dir>(0), 10));

    const SceneControl full{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0};
    EXPECT_EQ(engine.operations(), (std::vector<std::string>{"onPTZControl", "onPTZControl"}));
    EXPECT_EQ(listener->crops(), (std::vector<SceneControl>{full}));
    EXPECT_EQ(listener->jsons().size(), 1u);
}

TEST_F(MovesTest, MovesAreRefusedWhileTracking) {
    // Given tracking mode 2, an engine and a listener
    provider->setTrackingMode("cam0", TrackingMode::MODE_2);
    RecordingEngine engine;
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    LogCapture::clear();

    // When the client pans
    EXPECT_FALSE(provider->moveCamera("cam0", Dir::PAN_LEFT, 10));

    // Then it is logged and nothing changes or is told
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "ZorvCameraProvider moveCamera cam0 1 by 10 \n"),
                      providerLine(kDebug, "Tracking enabled for camera, ignoring move"),
              }));
    EXPECT_EQ(ptz(), (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}));
    EXPECT_TRUE(engine.calls().empty());
    EXPECT_TRUE(listener->events().empty());
}

TEST_F(MovesTest, ExtremeStoredCropsWrapInsteadOfOverflowing) {
    // right + step wraps below the frame width, so the full step is taken
    startFrom({0, 0, INT_MAX, 720});
    EXPECT_EQ(move(Dir::PAN_RIGHT, 1), (Crop{1, 0, INT_MIN, 720}));

    // Every direction on the widest crop completes
    for (int d = 0; d <= 8; ++d) {
        startFrom({INT_MIN, INT_MIN, INT_MAX, INT_MAX});
        move(static_cast<Dir>(d), 256);
    }
    FDSession::getInstance()->setPTZControl({{}, INT_MIN, INT_MAX, 0, 0, 0});
    for (int d = 0; d <= 8; ++d) move(static_cast<Dir>(d), 256);
}
