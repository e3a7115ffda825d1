// Camera moves and the zoom-in limit, one table: start crop, call, resulting crop, and what the
// session, the engine, the listeners and the log get from it.
#include <limits.h>

#include <android-base/stringprintf.h>

#include "support/ProviderTest.h"

using namespace testing_support;
using ::android::base::StringPrintf;

namespace {

constexpr int kLimit = -1;  // a row's call: setZoomInLimit(level) instead of a move
constexpr int kLeft = 1, kRight = 2, kUp = 3, kDown = 4, kIn = 5, kOut = 6, kApply = 7;

// A row: the start crop; the call, a direction value or kLimit; its step or level; the resulting
// crop; the limit in force for a move, or stored after setZoomInLimit; the session's tracking
// mode (moves are refused unless 0); the frame's height.
// clang-format off
struct Row { Crop start; int call; int32_t arg; Crop result;
             uint32_t limit = 320; int32_t mode = 0; int32_t frameHeight = 720; };
// clang-format on

// The lines a move logs, as logText() renders them.
const char* const kLimitLine = "3 ZorvCameraProvider camera %s setZoomInLimit %d \n|";
const char* const kMoveLine = "3 ZorvCameraProvider moveCamera %s %d by %d \n|";
const char* kMovedLine = "3 ZorvCameraProvider Move Camera, step %d to %d, %d, %d, %d ..  \n|";

// The provider's log lines as "<priority> <text>|".
std::string logText() {
    std::string out;
    for (const LogLine& l : providerLines()) out += std::to_string(l.priority) + " " + l.text + "|";
    return out;
}

// clang-format off
const Row kRows[] = {
    // The worked values
    {kFull, kIn, 100, {100, 56, 1180, 664}}, {kFull, kIn, 1000, {256, 144, 1024, 576}},
    {{100, 56, 1180, 664}, kLeft, 50, {50, 56, 1130, 664}},
    {{100, 56, 1180, 664}, kRight, 500, {200, 56, 1280, 664}},
    {{100, 56, 1180, 664}, kDown, 0, {100, 57, 1180, 665}},
    {{400, 225, 880, 495}, kIn, 100, {480, 270, 800, 450}},
    {{480, 270, 800, 450}, kOut, 40, {440, 248, 840, 472}}, {kFull, kOut, 100, kFull},
    {{480, 270, 800, 450}, kApply, 0, {320, 180, 960, 540}, 640},
    // Steps clamp to 1..256; pans and tilts stop at the frame's edges
    {{100, 56, 1180, 664}, kLeft, -5, {99, 56, 1179, 664}},
    {{99, 56, 1179, 664}, kUp, INT_MAX, {99, 0, 1179, 608}},
    {{99, 0, 1179, 608}, kUp, 10, {99, 0, 1179, 608}},
    {{99, 0, 1179, 608}, kLeft, 257, {0, 0, 1080, 608}},
    {{0, 0, 1080, 608}, kLeft, 10, {0, 0, 1080, 608}},
    {{0, 0, 1080, 608}, kRight, 256, {200, 0, 1280, 608}},
    {{200, 0, 1280, 608}, kRight, 1, {200, 0, 1280, 608}},
    {{200, 0, 1280, 608}, kDown, INT_MIN, {200, 1, 1280, 609}},
    {{200, 1, 1280, 609}, kDown, 200, {200, 112, 1280, 720}},
    // right + step wraps below the frame width, so the whole step is taken
    {{0, 0, INT_MAX, 720}, kRight, 1, {1, 0, INT_MIN, 720}},
    // Zoom-in stops at the limit (one short when odd) and is pinned inside the frame
    {{500, 0, 781, 720}, kIn, 1, {481, 270, 800, 450}},
    {{-50, 0, 250, 720}, kIn, 1, {0, 270, 320, 450}},
    {{1000, 200, 1300, 520}, kIn, 1, {960, 270, 1280, 450}}, {kFull, kIn, 100, kFull, 1280},
    // Zoom-out keeps 16:9 inside every edge of the frame
    {{0, 500, 640, 720}, kOut, 100, {0, 248, 840, 720}},
    {{440, 0, 840, 100}, kOut, 40, {400, 0, 880, 270}},
    {{1000, 300, 1280, 458}, kOut, 50, {900, 273, 1280, 485}},
    {{-200, 0, 1100, 720}, kOut, 100, kFull},
    {{0, 0, 1280, 600}, kOut, 10, {0, 0, 1280, 600}, 320, 0, 600},
    {{0, 300, 1280, 600}, kOut, 1, {0, 0, 1280, 600}, 320, 0, 600},
    // Applying a limit widens about the centre, reshapes to 16:9 and pins at every edge,
    // setting the width to exactly the limit also when the crop was wider
    {{0, 0, 320, 180}, kApply, 0, {0, 0, 640, 360}, 640},
    {{0, 270, 320, 450}, kApply, 0, {0, 180, 640, 540}, 640},
    {{1000, 270, 1280, 450}, kApply, 0, {640, 180, 1280, 540}, 640},
    {{480, 600, 800, 720}, kApply, 0, {320, 360, 960, 720}, 640},
    {{0, 0, 320, 180}, kApply, 0, {-320, -180, 1280, 720}, 1600},
    {{-10, 0, 1270, 720}, kApply, 0, {0, 0, 320, 720}},
    {{100, 0, 1300, 720}, kApply, 0, {960, 0, 1280, 720}},
    {{0, 0, 640, 360}, kApply, 0, {0, 0, 640, 360}},
    // Unknown directions store and announce the crop unchanged
    {{100, 56, 1180, 664}, 9, 10, {100, 56, 1180, 664}},
    {{100, 56, 1180, 664}, 0, 10, {100, 56, 1180, 664}},
    // Refused while tracking
    {{100, 56, 1180, 664}, kLeft, 10, {100, 56, 1180, 664}, 320, 2},
    // setZoomInLimit: levels 1 to 5 select their limit, any other level 320; the crop is
    // re-applied at once, and a crop wider than the limit keeps its width
    {{600, 326, 680, 371}, kLimit, 1, kFull, 1280},
    {{600, 326, 680, 371}, kLimit, 2, {320, 169, 960, 528}, 640},
    {{600, 326, 680, 371}, kLimit, 3, {432, 232, 848, 465}, 416},
    {{600, 326, 680, 371}, kLimit, 4, {480, 259, 800, 438}, 320},
    {{600, 326, 680, 371}, kLimit, 5, {512, 277, 768, 420}, 256},
    {{600, 326, 680, 371}, kLimit, 0, {480, 259, 800, 438}, 320},
    {{600, 326, 680, 371}, kLimit, 6, {480, 259, 800, 438}, 320},
    {{600, 326, 680, 371}, kLimit, -1, {480, 259, 800, 438}, 320},
    {{480, 270, 800, 450}, kLimit, 2, {320, 180, 960, 540}, 640},
    {{320, 180, 960, 540}, kLimit, 5, {320, 180, 960, 540}, 256},
    // While tracking the limit is stored all the same; it applies from the next zoom
    {{480, 270, 800, 450}, kLimit, 1, {480, 270, 800, 450}, 1280, 1},
};
// clang-format on

}  // namespace

TEST(MovesTest, EveryRowGivesItsCropStoresToldAndLogged) {
    const char* id = "device@3.2/internal/0";
    for (const Row& row : kRows) {
        const SceneControl start{{row.start}, 1280, row.frameHeight, 4, 5, 6};
        SCOPED_TRACE(describe(start) + StringPrintf(" call %d %d", row.call, row.arg));
        // Given the start crop (with numbers a move must not keep), the mode and the limit
        const bool limit = row.call == kLimit, applied = row.mode == 0;
        setMode(row.mode);
        FDSession::getInstance()->setPTZControl(start);
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        if (!limit) Peer::setZoomInLimit(*provider, row.limit);
        RecordingEngine engine;
        sp<RecordingListener> listener = new RecordingListener();
        provider->setListener(listener);
        LogCapture::clear();

        // When the call is made (setZoomInLimit: logged first, then as a move 7 by 0)
        const int step = limit ? 0 : row.arg;
        if (limit) provider->setZoomInLimit(id, static_cast<uint32_t>(row.arg));
        EXPECT_EQ(limit || provider->moveCamera(id, CameraMoveDirection(row.call), step),
                  applied || limit);
        EXPECT_EQ(Peer::zoomInLimit(*provider), row.limit);
        const Crop& c = row.result;
        std::string logs = limit ? StringPrintf(kLimitLine, id, row.arg) : "";
        logs += StringPrintf(kMoveLine, id, limit ? 7 : row.call, step);
        logs += applied ? StringPrintf(kMovedLine, step, c.left, c.right, c.top, c.bottom)
                        : "3 Tracking enabled for camera, ignoring move|";
        EXPECT_EQ(logText(), logs);

        // Then the session holds the result, told to the engine under the session lock and
        // announced once with its text; refused, nothing changes
        const SceneControl result{{row.result}, 1280, row.frameHeight, 0, 0, 0};
        EXPECT_EQ(ptz(), applied ? result : start);
        EXPECT_EQ(engine.operations(), applied ? Strings{"onPTZControl"} : Strings{});
        for (const auto& k : engine.calls()) EXPECT_TRUE(k.scene == result && k.sessionLockHeld);
        EXPECT_EQ(listener->crops(), applied ? std::vector{result} : std::vector<SceneControl>{});
        EXPECT_EQ(listener->jsons(), applied ? Strings{sceneText(result)} : Strings{});
        EXPECT_EQ(Peer::lastCrop(*provider), applied ? result : SceneControl{});
    }
}

TEST(MovesTest, ExtremeStoredCropsCompleteInEveryDirection) {
    setMode(0);
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    const SceneControl extremes[] = {
            {{Crop{INT_MIN, INT_MIN, INT_MAX, INT_MAX}}, 1280, 720, 0, 0, 0},
            {{}, INT_MIN, INT_MAX, 0, 0, 0}};
    for (int d = 0; d < 18; ++d) {  // every direction 0 to 8 from each
        FDSession::getInstance()->setPTZControl(extremes[d % 2]);
        EXPECT_TRUE(provider->moveCamera("0", CameraMoveDirection(d / 2), 256));
    }
}
