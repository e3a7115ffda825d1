// Presets: saving the PTZ crop into properties and recalling it.
#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

const char* const kSuffixes[] = {".l", ".t", ".r", ".b"};

// The four property texts of a preset, l, t, r, b, joined by blanks ("" when missing).
std::string stored(int32_t n) {
    std::string ltrb;
    for (const char* s : kSuffixes)
        ltrb += " " + prop("persist.camera.preset." + std::to_string(n) + s);
    return ltrb.substr(1);
}

// "<n>, position  <l>, <r>, <t>, <b>   \n", as both methods log it.
std::string position(int32_t n, const Crop& c) {
    return std::to_string(n) + ", position  " + std::to_string(c.left) + ", " +
           std::to_string(c.right) + ", " + std::to_string(c.top) + ", " +
           std::to_string(c.bottom) + "   \n";
}

}  // namespace

TEST(PresetsTest, SaveWritesTheCurrentPtzCropInDecimalForZeroToNinetyNineOnly) {
    struct Row {
        SceneControl ptz;
        int32_t preset;
        const char* ltrb;  // "   ": nothing written
        Crop logged;
    };
    const Row rows[] = {
            {{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}, 0, "0 0 1280 720", {0, 0, 1280, 720}},
            {{{Crop{100, 56, 1180, 664}}, 1280, 720, 0, 0, 0},
             99,
             "100 56 1180 664",
             {100, 56, 1180, 664}},
            {{{Crop{-1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, 7, "-1 2 3 4", {-1, 2, 3, 4}},
            // A PTZ record without crops is saved as its whole frame
            {{{}, 640, 360, 0, 0, 0}, 5, "0 0 640 360", {0, 0, 640, 360}},
            {{{Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, 100, "   ", {}},
            {{{Crop{1, 2, 3, 4}}, 1280, 720, 0, 0, 0}, -1, "   ", {}},
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
        if (row.ltrb[0] != ' ')
            logs.push_back(
                    providerLine(kDebug, "SavePreset : " + position(row.preset, row.logged)));
        EXPECT_EQ(providerLines(), logs);
    }
}

TEST(PresetsTest, GotoAppliesValidRectanglesAsStoredAndRefusesTheRest) {
    struct Row {
        const char* what;
        std::vector<std::string> ltrb;  // the properties written; fewer than four: partly
        Crop read;                      // as read, a missing or unreadable edge as -1
        bool applied;
    };
    const Row rows[] = {
            {"never saved", {}, {-1, -1, -1, -1}, false},
            {"zero width", {"0", "0", "0", "720"}, {0, 0, 0, 720}, false},
            {"zero height", {"10", "20", "30", "20"}, {10, 20, 30, 20}, false},
            {"inverted", {"500", "0", "400", "720"}, {500, 0, 400, 720}, false},
            {"negative left", {"-5", "0", "400", "720"}, {-5, 0, 400, 720}, false},
            {"negative top", {"0", "-5", "400", "720"}, {0, -5, 400, 720}, false},
            {"partly written", {"0", "0", "400"}, {0, 0, 400, -1}, false},
            {"not a number", {"0", "x", "400", "720"}, {0, -1, 400, 720}, false},
            {"beyond 32 bits", {"0", "0", "4294967296", "720"}, {0, 0, -1, 720}, false},
            {"saved", {"100", "56", "1180", "664"}, {100, 56, 1180, 664}, true},
            {"hex and trailing text", {"0x10", "12abc", "17", "13"}, {16, 12, 17, 13}, true},
            {"beyond the frame, not clamped",
             {"1000", "600", "2000", "900"},
             {1000, 600, 2000, 900},
             true},
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

        // When it is recalled, it is logged as read
        EXPECT_EQ(provider->gotoPreset("cam0", preset), row.applied);
        const Crop& c = row.read;
        EXPECT_EQ(providerLines(),
                  (std::vector<LogLine>{
                          providerLine(kDebug, "GotoPreset " + std::to_string(preset) + " "),
                          providerLine(kDebug, "GotoPreset : " + position(preset, c)),
                  }));
        // and a valid rectangle reaches the session, the engine and the listeners as stored
        const SceneControl applied{{c}, 1280, 720, 0, 0, 0};
        EXPECT_EQ(ptz(), row.applied ? applied : before);
        EXPECT_EQ(engine.operations(), row.applied ? std::vector<std::string>{"onPTZControl"}
                                                   : std::vector<std::string>{});
        EXPECT_EQ(listener->crops(),
                  row.applied ? std::vector<SceneControl>{applied} : std::vector<SceneControl>{});
        EXPECT_EQ(listener->jsons().size(), row.applied ? 1u : 0u);
    }
}
