// Camera moves and the zoom-in limit, one table: start crop, call, resulting crop, and what the
// session, the engine, the listeners and the log get from it.
#include <limits.h>

#include <android-base/stringprintf.h>

#include "support/ProviderTest.h"

using namespace testing_support;
using ::android::base::StringPrintf;

namespace {

constexpr int kSetZoomInLimit = -1;  // a row's call: setZoomInLimit(level) instead of a move
constexpr int kPanLeft = 1, kPanRight = 2, kTiltUp = 3, kTiltDown = 4, kZoomIn = 5, kZoomOut = 6,
              kApplyLimit = 7;

struct Row {
    Crop start;
    int call;     // a direction value, or kSetZoomInLimit
    int32_t arg;  // the step, or the level
    Crop result;
    uint32_t limit = 320;  // in force for a move; stored after setZoomInLimit
    int32_t mode = 0;      // the session's tracking mode; moves are refused unless 0
    int32_t frameHeight = 720;
};

const Row kRows[] = {
        // The worked values
        {kFull, kZoomIn, 100, {100, 56, 1180, 664}},
        {kFull, kZoomIn, 1000, {256, 144, 1024, 576}},
        {{100, 56, 1180, 664}, kPanLeft, 50, {50, 56, 1130, 664}},
        {{100, 56, 1180, 664}, kPanRight, 500, {200, 56, 1280, 664}},
        {{100, 56, 1180, 664}, kTiltDown, 0, {100, 57, 1180, 665}},
        {{400, 225, 880, 495}, kZoomIn, 100, {480, 270, 800, 450}},
        {{480, 270, 800, 450}, kZoomOut, 40, {440, 248, 840, 472}},
        {kFull, kZoomOut, 100, kFull},
        {{480, 270, 800, 450}, kApplyLimit, 0, {320, 180, 960, 540}, 640},
        // Steps clamp to 1..256; pans and tilts stop at the frame's edges
        {{100, 56, 1180, 664}, kPanLeft, -5, {99, 56, 1179, 664}},
        {{99, 56, 1179, 664}, kTiltUp, INT_MAX, {99, 0, 1179, 608}},
        {{99, 0, 1179, 608}, kTiltUp, 10, {99, 0, 1179, 608}},
        {{99, 0, 1179, 608}, kPanLeft, 257, {0, 0, 1080, 608}},
        {{0, 0, 1080, 608}, kPanLeft, 10, {0, 0, 1080, 608}},
        {{0, 0, 1080, 608}, kPanRight, 256, {200, 0, 1280, 608}},
        {{200, 0, 1280, 608}, kPanRight, 1, {200, 0, 1280, 608}},
        {{200, 0, 1280, 608}, kTiltDown, INT_MIN, {200, 1, 1280, 609}},
        {{200, 1, 1280, 609}, kTiltDown, 200, {200, 112, 1280, 720}},
        // right + step wraps below the frame width, so the whole step is taken
        {{0, 0, INT_MAX, 720}, kPanRight, 1, {1, 0, INT_MIN, 720}},
        // Zoom-in stops at the limit (one short when odd) and is pinned inside the frame
        {{500, 0, 781, 720}, kZoomIn, 1, {481, 270, 800, 450}},
        {{-50, 0, 250, 720}, kZoomIn, 1, {0, 270, 320, 450}},
        {{1000, 200, 1300, 520}, kZoomIn, 1, {960, 270, 1280, 450}},
        {kFull, kZoomIn, 100, kFull, 1280},
        // Zoom-out keeps 16:9 inside every edge of the frame
        {{0, 500, 640, 720}, kZoomOut, 100, {0, 248, 840, 720}},
        {{440, 0, 840, 100}, kZoomOut, 40, {400, 0, 880, 270}},
        {{1000, 300, 1280, 458}, kZoomOut, 50, {900, 273, 1280, 485}},
        {{-200, 0, 1100, 720}, kZoomOut, 100, kFull},
        {{0, 0, 1280, 600}, kZoomOut, 10, {0, 0, 1280, 600}, 320, 0, 600},
        {{0, 300, 1280, 600}, kZoomOut, 1, {0, 0, 1280, 600}, 320, 0, 600},
        // Applying a limit widens about the centre, reshapes to 16:9 and pins at every edge,
        // setting the width to exactly the limit also when the crop was wider
        {{0, 0, 320, 180}, kApplyLimit, 0, {0, 0, 640, 360}, 640},
        {{0, 270, 320, 450}, kApplyLimit, 0, {0, 180, 640, 540}, 640},
        {{1000, 270, 1280, 450}, kApplyLimit, 0, {640, 180, 1280, 540}, 640},
        {{480, 600, 800, 720}, kApplyLimit, 0, {320, 360, 960, 720}, 640},
        {{0, 0, 320, 180}, kApplyLimit, 0, {-320, -180, 1280, 720}, 1600},
        {{-10, 0, 1270, 720}, kApplyLimit, 0, {0, 0, 320, 720}},
        {{100, 0, 1300, 720}, kApplyLimit, 0, {960, 0, 1280, 720}},
        {{0, 0, 640, 360}, kApplyLimit, 0, {0, 0, 640, 360}},
        // Unknown directions store and announce the crop unchanged
        {{100, 56, 1180, 664}, 9, 10, {100, 56, 1180, 664}},
        {{100, 56, 1180, 664}, 0, 10, {100, 56, 1180, 664}},
        // Refused while tracking
        {{100, 56, 1180, 664}, kPanLeft, 10, {100, 56, 1180, 664}, 320, 2},
        // setZoomInLimit: levels 1 to 5 select their limit, any other level 320; the crop is
        // re-applied at once, and a crop wider than the limit keeps its width
        {{600, 326, 680, 371}, kSetZoomInLimit, 1, kFull, 1280},
        {{600, 326, 680, 371}, kSetZoomInLimit, 2, {320, 169, 960, 528}, 640},
        {{600, 326, 680, 371}, kSetZoomInLimit, 3, {432, 232, 848, 465}, 416},
        {{600, 326, 680, 371}, kSetZoomInLimit, 4, {480, 259, 800, 438}, 320},
        {{600, 326, 680, 371}, kSetZoomInLimit, 5, {512, 277, 768, 420}, 256},
        {{600, 326, 680, 371}, kSetZoomInLimit, 0, {480, 259, 800, 438}, 320},
        {{600, 326, 680, 371}, kSetZoomInLimit, 6, {480, 259, 800, 438}, 320},
        {{600, 326, 680, 371}, kSetZoomInLimit, -1, {480, 259, 800, 438}, 320},
        {{480, 270, 800, 450}, kSetZoomInLimit, 2, {320, 180, 960, 540}, 640},
        {{320, 180, 960, 540}, kSetZoomInLimit, 5, {320, 180, 960, 540}, 256},
        // While tracking the limit is stored all the same; it applies from the next zoom
        {{480, 270, 800, 450}, kSetZoomInLimit, 1, {480, 270, 800, 450}, 1280, 1},
};

}  // namespace

TEST(MovesTest, EveryRowGivesItsCropStoresToldAndLogged) {
    const char* id = "device@3.2/internal/0";
    for (const Row& row : kRows) {
        const SceneControl start{{row.start}, 1280, row.frameHeight, 4, 5, 6};
        SCOPED_TRACE(describe(start) + StringPrintf(" call %d %d", row.call, row.arg));
        // Given the start crop (with numbers a move must not keep), the mode and the limit
        setMode(row.mode);
        FDSession::getInstance()->setPTZControl(start);
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        if (row.call != kSetZoomInLimit) Peer::setZoomInLimit(*provider, row.limit);
        RecordingEngine engine;
        sp<RecordingListener> listener = new RecordingListener();
        provider->setListener(listener);
        LogCapture::clear();

        // When the call is made, it is logged as a move (setZoomInLimit: its own line first)
        std::vector<LogLine> logs;
        const bool applied = row.mode == 0;
        if (row.call == kSetZoomInLimit) {
            provider->setZoomInLimit(id, static_cast<uint32_t>(row.arg));
            logs.push_back(providerLine(
                    kDebug, StringPrintf("ZorvCameraProvider camera %s setZoomInLimit %d \n", id,
                                         row.arg)));
            logs.push_back(providerLine(
                    kDebug, StringPrintf("ZorvCameraProvider moveCamera %s 7 by 0 \n", id)));
            EXPECT_EQ(Peer::zoomInLimit(*provider), row.limit);
        } else {
            EXPECT_EQ(provider->moveCamera(id, static_cast<CameraMoveDirection>(row.call), row.arg),
                      applied);
            logs.push_back(providerLine(
                    kDebug, StringPrintf("ZorvCameraProvider moveCamera %s %d by %d \n", id,
                                         row.call, row.arg)));
        }
        const Crop& c = row.result;
        logs.push_back(providerLine(
                kDebug, applied ? StringPrintf("ZorvCameraProvider Move Camera, step %d to %d, %d, "
                                               "%d, %d ..  \n",
                                               row.call == kSetZoomInLimit ? 0 : row.arg, c.left,
                                               c.right, c.top, c.bottom)
                                : "Tracking enabled for camera, ignoring move"));
        EXPECT_EQ(providerLines(), logs);

        // Then the session holds the result, told to the engine under the session lock and
        // announced once with its text; refused, nothing changes
        const SceneControl result{{row.result}, 1280, row.frameHeight, 0, 0, 0};
        EXPECT_EQ(ptz(), applied ? result : start);
        std::vector<RecordingEngine::Call> calls = engine.calls();
        ASSERT_EQ(calls.size(), applied ? 1u : 0u);
        ASSERT_EQ(listener->jsons().size(), applied ? 1u : 0u);
        if (!applied) continue;
        EXPECT_EQ(calls[0].operation, "onPTZControl");
        EXPECT_EQ(calls[0].scene, result);
        EXPECT_TRUE(calls[0].sessionLockHeld);
        EXPECT_EQ(listener->crops(), (std::vector<SceneControl>{result}));
        EXPECT_EQ(listener->jsons()[0], sceneText(result));
        EXPECT_EQ(Peer::lastCrop(*provider), result);
    }
}

TEST(MovesTest, ExtremeStoredCropsCompleteInEveryDirection) {
    setMode(0);
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    for (int d = 0; d <= 8; ++d) {
        FDSession::getInstance()->setPTZControl(
                {{Crop{INT_MIN, INT_MIN, INT_MAX, INT_MAX}}, 1280, 720, 0, 0, 0});
        EXPECT_TRUE(provider->moveCamera("0", static_cast<CameraMoveDirection>(d), 256));
        FDSession::getInstance()->setPTZControl({{}, INT_MIN, INT_MAX, 0, 0, 0});
        EXPECT_TRUE(provider->moveCamera("0", static_cast<CameraMoveDirection>(d), 256));
    }
}
