// Presets: saving the PTZ crop into properties and recalling it.
#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/RecordingEngine.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"

using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

const char* const kSuffixes[] = {".l", ".t", ".r", ".b"};
const std::vector<std::string> kNone = {"", "", "", ""};

// The four property texts of a preset: l, t, r, b ("" when missing).
std::vector<std::string> stored(int32_t n) {
    std::vector<std::string> ltrb;
    for (const char* s : kSuffixes)
        ltrb.push_back(prop("persist.camera.preset." + std::to_string(n) + s));
    return ltrb;
}

SceneControl ptz() {
    std::lock_guard lock(FDSession::mLock);
    return FDSession::getInstance()->mPTZControl;
}

std::string position(int32_t n, const std::vector<std::string>& lrtb) {
    return std::to_string(n) + ", position  " + lrtb[0] + ", " + lrtb[1] + ", " + lrtb[2] + ", " +
           lrtb[3] + "   \n";
}

}  // namespace

TEST(PresetsTest, SaveWritesTheCurrentPtzCropInDecimalForZeroToNinetyNineOnly) {
    struct Row {
        SceneControl ptz;
        int32_t preset;
        std::vector<std::string> ltrb;  // kNone: nothing written
    };
    const Row rows[] = {
            {{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}, 0, {"0", "0", "1280", "720"}},
            {{{Crop{100, 56, 1180, 664}}, 1280, 720, 0, 0, 0}, 99, {"100", "56", "1180", "664"}},
            {{{Crop{-1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, 7, {"-1", "2", "3", "4"}},
            // A PTZ record without crops is saved as its whole frame
            {{{}, 640, 360, 0, 0, 0}, 5, {"0", "0", "640", "360"}},
            {{{Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, 100, kNone},
            {{{Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, -1, kNone},
    };
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.preset);
        FDSession::getInstance()->setPTZControl(row.ptz);
        LogCapture::clear();

        provider->savePreset("cam0", row.preset);

        EXPECT_EQ(stored(row.preset), row.ltrb);
        std::vector<LogLine> logs = {
                providerLine(kDebug, "SavePreset " + std::to_string(row.preset) + " ")};
        if (row.ltrb != kNone) {
            logs.push_back(providerLine(
                    kDebug, "SavePreset : " + position(row.preset, {row.ltrb[0], row.ltrb[2],
                                                                    row.ltrb[1], row.ltrb[3]})));
        }
        EXPECT_EQ(LogCapture::linesWithTag(kProviderTag), logs);
    }
}

TEST(PresetsTest, GotoAppliesValidRectanglesAsStoredAndRefusesTheRest) {
    struct Row {
        const char* what;
        std::vector<std::string> ltrb;  // the properties written; fewer than four: partly
        bool applied;
    };
    const Row rows[] = {
            {"never saved", {}, false},
            {"zero width", {"0", "0", "0", "720"}, false},
            {"zero height", {"10", "20", "30", "20"}, false},
            {"inverted", {"500", "0", "400", "720"}, false},
            {"negative left", {"-5", "0", "400", "720"}, false},
            {"negative top", {"0", "-5", "400", "720"}, false},
            {"partly written", {"0", "0", "400"}, false},
            {"not a number", {"0", "x", "400", "720"}, false},
            {"saved", {"100", "56", "1180", "664"}, true},
            {"one by one", {"0", "0", "1", "1"}, true},
            {"beyond the frame, not clamped", {"1000", "600", "2000", "900"}, true},
    };
    // Tracking on changes nothing for presets
    {
        std::lock_guard lock(FDSession::mLock);
        FDSession::getInstance()->mTrackingMode = 2;
    }
    int32_t preset = 10;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // Given the properties of a fresh preset number, a provider, an engine and a listener
        ++preset;
        for (size_t i = 0; i < row.ltrb.size(); ++i) {
            setProp("persist.camera.preset." + std::to_string(preset) + kSuffixes[i], row.ltrb[i]);
        }
        const SceneControl before{{Crop{7, 7, 9, 9}}, 1280, 720, 0, 0, 0};
        FDSession::getInstance()->setPTZControl(before);
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        sp<RecordingListener> listener = new RecordingListener();
        provider->setListener(listener);
        RecordingEngine engine;
        LogCapture::clear();

        // When it is recalled
        EXPECT_EQ(provider->gotoPreset("cam0", preset), row.applied);

        // Then it is logged with missing or unreadable edges as -1
        std::vector<std::string> read = {"-1", "-1", "-1", "-1"};
        for (size_t i = 0; i < row.ltrb.size(); ++i) {
            if (row.ltrb[i] != "x") read[i] = row.ltrb[i];
        }
        EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
                  (std::vector<LogLine>{
                          providerLine(kDebug, "GotoPreset " + std::to_string(preset) + " "),
                          providerLine(kDebug,
                                       "GotoPreset : " + position(preset, {read[0], read[2],
                                                                           read[1], read[3]})),
                  }));
        // and a valid rectangle reaches the session, the engine and the listeners as stored
        if (row.applied) {
            const SceneControl expected{{Crop{std::stoi(read[0]), std::stoi(read[1]),
                                              std::stoi(read[2]), std::stoi(read[3])}},
                                        1280,
                                        720,
                                        0,
                                        0,
                                        0};
            EXPECT_EQ(ptz(), expected);
            EXPECT_EQ(engine.operations(), (std::vector<std::string>{"onPTZControl"}));
            EXPECT_EQ(listener->crops(), (std::vector<SceneControl>{expected}));
            EXPECT_EQ(listener->jsons().size(), 1u);
        } else {
            EXPECT_EQ(ptz(), before);
            EXPECT_TRUE(engine.calls().empty());
            EXPECT_TRUE(listener->events().empty());
        }
    }
}
