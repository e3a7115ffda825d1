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
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

class PresetsTest : public ::testing::Test {
  protected:
    void SetUp() override { LogCapture::clear(); }

    // The four property texts of a preset: l, t, r, b.
    std::vector<std::string> stored(const std::string& n) {
        const std::string p = "persist.camera.preset." + n;
        return {prop(p + ".l"), prop(p + ".t"), prop(p + ".r"), prop(p + ".b")};
    }
    void store(const std::string& n, const std::vector<std::string>& ltrb) {
        const char* suffixes[] = {".l", ".t", ".r", ".b"};
        for (size_t i = 0; i < ltrb.size(); ++i) {
            setProp("persist.camera.preset." + n + suffixes[i], ltrb[i]);
        }
    }
    SceneControl ptz() {
        std::lock_guard lock(FDSession::mLock);
        return FDSession::getInstance()->mPTZControl;
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
};

}  // namespace

TEST_F(PresetsTest, SaveWritesTheCurrentPtzCropInDecimal) {
    // Right after a reset
    provider->savePreset("cam0", 0);
    EXPECT_EQ(stored("0"), (std::vector<std::string>{"0", "0", "1280", "720"}));
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "SavePreset 0 "),
                      providerLine(kDebug, "SavePreset : 0, position  0, 1280, 0, 720   \n"),
              }));

    // After a move, into the last number accepted
    provider->moveCamera("cam0", CameraMoveDirection::ZOOM_IN, 100);
    provider->savePreset("cam1", 99);
    EXPECT_EQ(stored("99"), (std::vector<std::string>{"100", "56", "1180", "664"}));

    // A PTZ record without crops is saved as its whole frame
    FDSession::getInstance()->setPTZControl({{}, 640, 360, 0, 0, 0});
    provider->savePreset("cam0", 5);
    EXPECT_EQ(stored("5"), (std::vector<std::string>{"0", "0", "640", "360"}));
}

TEST_F(PresetsTest, SaveOutsideZeroToNinetyNineWritesNothing) {
    provider->savePreset("cam0", 100);
    provider->savePreset("cam0", -1);

    EXPECT_EQ(stored("100"), (std::vector<std::string>{"", "", "", ""}));
    EXPECT_EQ(stored("-1"), (std::vector<std::string>{"", "", "", ""}));
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{providerLine(kDebug, "SavePreset 100 "),
                                    providerLine(kDebug, "SavePreset -1 ")}));
}

TEST_F(PresetsTest, GotoAppliesTheStoredCropAsIsAndAnnouncesIt) {
    // Given a saved preset, the crop moved away since, tracking on, an engine and a listener
    provider->moveCamera("cam0", CameraMoveDirection::ZOOM_IN, 100);
    provider->savePreset("cam0", 7);
    provider->moveCamera("cam0", CameraMoveDirection::PAN_LEFT, 100);
    provider->setTrackingMode("cam0", TrackingMode::MODE_2);
    RecordingEngine engine;
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    LogCapture::clear();

    // When it is recalled
    EXPECT_TRUE(provider->gotoPreset("cam0", 7));

    // Then the session, the engine and the listener get it in the 1280 x 720 space
    const SceneControl expected{{Crop{100, 56, 1180, 664}}, 1280, 720, 0, 0, 0};
    EXPECT_EQ(ptz(), expected);
    EXPECT_EQ(engine.operations(), (std::vector<std::string>{"onPTZControl"}));
    EXPECT_EQ(listener->crops(), (std::vector<SceneControl>{expected}));
    EXPECT_EQ(listener->jsons().size(), 1u);
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "GotoPreset 7 "),
                      providerLine(kDebug, "GotoPreset : 7, position  100, 1180, 56, 664   \n"),
              }));

    // A rectangle reaching beyond the frame is neither clamped nor reshaped
    store("8", {"1000", "600", "2000", "900"});
    EXPECT_TRUE(provider->gotoPreset("cam0", 8));
    EXPECT_EQ(ptz(), (SceneControl{{Crop{1000, 600, 2000, 900}}, 1280, 720, 0, 0, 0}));
}

TEST_F(PresetsTest, GotoRefusesMissingPartialEmptyAndInvertedRectangles) {
    RecordingEngine engine;
    store("1", {"0", "0", "0", "720"});      // zero width
    store("2", {"10", "20", "30", "20"});    // zero height
    store("3", {"500", "0", "400", "720"});  // inverted
    store("4", {"-5", "0", "400", "720"});   // negative
    store("5", {"0", "0", "400"});           // partly written
    store("6", {"0", "x", "400", "720"});    // not a number

    EXPECT_FALSE(provider->gotoPreset("cam0", 42));
    for (int n = 1; n <= 6; ++n) EXPECT_FALSE(provider->gotoPreset("cam0", n)) << n;

    EXPECT_TRUE(LogCapture::contains(
            providerLine(kDebug, "GotoPreset : 42, position  -1, -1, -1, -1   \n")));
    EXPECT_TRUE(LogCapture::contains(
            providerLine(kDebug, "GotoPreset : 5, position  0, 400, 0, -1   \n")));
    EXPECT_TRUE(engine.calls().empty());
    EXPECT_EQ(ptz(), (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}));
}
