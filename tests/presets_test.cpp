// Presets: saving the PTZ crop into properties and recalling it.
#include <sstream>

#include <android-base/stringprintf.h>

#include "support/ProviderTest.h"

using namespace testing_support;
using ::android::base::StringPrintf;

namespace {

std::string key(int32_t n, size_t i) {
    return "persist.camera.preset." + std::to_string(n) + "." + "ltrb"[i];
}

// The two lines both methods log: "<Method> <n> ", "<Method> : <n>, position  <l>, <r>, <t>, <b>".
Lines logged(const char* method, int32_t n, const Crop& c, bool second = true) {
    Lines out = {providerLine(kDebug, StringPrintf("%s %d ", method, n))};
    if (second)
        out.push_back(
                providerLine(kDebug, StringPrintf("%s : %d, position  %d, %d, %d, %d   \n", method,
                                                  n, c.left, c.right, c.top, c.bottom)));
    return out;
}

}  // namespace

TEST(PresetsTest, SaveWritesTheCurrentPtzCropInDecimalForZeroToNinetyNineOnly) {
    // A PTZ record without crops is saved as its whole frame; "   ": nothing written; the PTZ
    // record when not given: the crop as written in a 1280 x 720 frame
    // clang-format off
    struct Row { int32_t preset; const char* ltrb; SceneControl ptz{}; };
    const Row rows[] = {{0, "0 0 1280 720"}, {99, "100 56 1180 664"}, {7, "-1 2 3 4"},
                        {5, "0 0 640 360", {{}, 640, 360, 0, 0, 0}}, {100, "   "}, {-1, "   "}};
    // clang-format on
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    for (const Row& row : rows) {
        Crop c{};  // set and logged as written
        std::istringstream(row.ltrb) >> c.left >> c.top >> c.right >> c.bottom;
        FDSession::getInstance()->setPTZControl(
                row.ptz.frameWidth ? row.ptz : SceneControl{{c}, 1280, 720, 0, 0, 0});
        LogCapture::clear();
        provider->savePreset("cam0", row.preset);
        std::string ltrb;
        for (size_t i = 0; i < 4; ++i) ltrb += (i ? " " : "") + prop(key(row.preset, i));
        EXPECT_EQ(ltrb, row.ltrb);
        EXPECT_EQ(providerLines(), logged("SavePreset", row.preset, c, row.ltrb[0] != ' '));
    }
}

TEST(PresetsTest, GotoAppliesValidRectanglesAsStoredAndRefusesTheRest) {
    // The properties written (fewer than four: partly), the crop as read (a missing or unreadable
    // edge as -1), whether it is applied; hex and trailing text read, beyond the frame not clamped
    // clang-format off
    struct Row { const char* ltrb; Crop read; bool applied; };
    const Row rows[] = {
    {"", {-1, -1, -1, -1}, false},              {"0 0 0 720", {0, 0, 0, 720}, false},
    {"10 20 30 20", {10, 20, 30, 20}, false},   {"500 0 400 720", {500, 0, 400, 720}, false},
    {"-5 0 400 720", {-5, 0, 400, 720}, false}, {"0 -5 400 720", {0, -5, 400, 720}, false},
    {"0 0 400", {0, 0, 400, -1}, false},        {"0 x 400 720", {0, -1, 400, 720}, false},
    {"0x10 12abc 17 13", {16, 12, 17, 13}, true},   {"100 56 1180 664", {100, 56, 1180, 664}, true},
    {"0 0 4294967296 720", {0, 0, -1, 720}, false}, {"900 0 1300 700", {900, 0, 1300, 700}, true}};
    // clang-format on
    setMode(2);  // tracking on changes nothing for presets
    for (const Row& row : rows) {
        SCOPED_TRACE(row.ltrb);
        // Given the properties of a fresh preset number, a provider, an engine and a listener
        std::istringstream words(row.ltrb);
        std::string word;
        const int32_t preset = 11 + static_cast<int32_t>(&row - rows);
        for (size_t i = 0; words >> word; ++i) setProp(key(preset, i), word);
        const SceneControl before{{Crop{7, 7, 9, 9}}, 1280, 720, 0, 0, 0};
        FDSession::getInstance()->setPTZControl(before);
        sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
        sp<RecordingListener> listener = new RecordingListener();
        provider->setListener(listener);
        RecordingEngine engine;
        LogCapture::clear();
        // When it is recalled, it is logged as read, and a valid rectangle reaches the session,
        // the engine and the listeners as stored
        EXPECT_EQ(provider->gotoPreset("cam0", preset), row.applied);
        EXPECT_EQ(providerLines(), logged("GotoPreset", preset, row.read));
        const SceneControl applied{{row.read}, 1280, 720, 0, 0, 0};
        EXPECT_EQ(ptz(), row.applied ? applied : before);
        EXPECT_EQ(engine.operations(), row.applied ? Strings{"onPTZControl"} : Strings{});
        EXPECT_EQ(listener->crops(),
                  row.applied ? std::vector{applied} : std::vector<SceneControl>{});
        EXPECT_EQ(listener->jsons().size(), row.applied ? 1u : 0u);
    }
}
