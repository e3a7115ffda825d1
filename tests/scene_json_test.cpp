// Scene description text: exact bytes, full-frame conversion, truncation, wrapping, the bound.
#include <limits.h>

#include <gtest/gtest.h>

#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"

using namespace testing_support;
using ::android::hardware::hidl_string;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

// The scene text of the full PTZ space, transition 0 and duration 0.
const std::string kFullFrameText = R"(
{
  "scene":[
    {
      "cameraid":"1",
      "source": { "xoffset":"0", "yoffset":"0", "width":"5440", "height":"3060" },
      "dest": { "xoffset":"0", "yoffset":"0", "width":"5440", "height":"3060" },
      "weight":"0",
      "transition":"0",
      "duration":"0"
    }
  ]
}
)";

std::string sceneText(const SceneControl& scene) {
    hidl_string json;
    ZorvCameraProvider::buildSceneJson(scene, json);
    return json;
}

std::string sourceLine(int x, int y, int w, int h) {
    return "      \"source\": { \"xoffset\":\"" + std::to_string(x) + "\", \"yoffset\":\"" +
           std::to_string(y) + "\", \"width\":\"" + std::to_string(w) + "\", \"height\":\"" +
           std::to_string(h) + "\" },\n";
}

std::string line(const std::string& text, int n) {
    size_t start = 0;
    for (int i = 0; i < n; ++i) start = text.find('\n', start) + 1;
    return text.substr(start, text.find('\n', start) + 1 - start);
}

}  // namespace

TEST(SceneJsonTest, FullFrameGivesTheWholeTextByteForByte) {
    EXPECT_EQ(sceneText({{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}), kFullFrameText);
    // The 284-byte format with its six two-character placeholders replaced by the numbers
    EXPECT_EQ(kFullFrameText.size(), 284u - 6 * 2 + 1 + 1 + 4 + 4 + 1 + 1);
}

TEST(SceneJsonTest, CropScalesTo5440By3060WithTruncationTowardZero) {
    // Only the first crop counts, and the frame fields never change the factors
    std::string text =
            sceneText({{Crop{100, 50, 740, 410}, Crop{0, 0, 1, 1}}, 640, 360, -3, 700, 0});
    EXPECT_EQ(line(text, 5), sourceLine(425, 212, 2720, 1530));
    EXPECT_EQ(line(text, 8), "      \"transition\":\"-3\",\n");
    EXPECT_EQ(line(text, 9), "      \"duration\":\"700\"\n");

    // Negative values truncate toward zero, not down
    EXPECT_EQ(line(sceneText({{Crop{-10, -10, 5, 5}}, 1280, 720, 0, 0, 0}), 5),
              sourceLine(-42, -42, 63, 63));

    // Extreme edges wrap in 32 bits instead of overflowing
    EXPECT_EQ(line(sceneText({{Crop{INT_MAX, INT_MIN, INT_MIN, INT_MAX}}, 0, 0, 0, 0, 0}), 5),
              sourceLine(-4, 0, 4, -4));
}

TEST(SceneJsonTest, NoCropsClearsTheText) {
    hidl_string json = "previous";
    ZorvCameraProvider::buildSceneJson(SceneControl{}, json);
    EXPECT_EQ(std::string(json), "");
    EXPECT_TRUE(LogCapture::linesWithTag(kProviderTag).empty());
}

TEST(SceneJsonTest, TrackTextCarriesActionAndVelocities) {
    TrackControl track{};
    track.left = 100;
    track.top = 50;
    track.right = 740;
    track.bottom = 410;
    track.xVelocity = 0.5;
    track.yVelocity = -1;
    track.wVelocity = 0;
    track.action = 4;

    hidl_string json;
    ZorvCameraProvider::buildTrackJson(track, json);

    EXPECT_EQ(std::string(json), R"(
{
  "scene":[
    {
      "cameraid":"1",
      "source": { "xoffset":"425", "yoffset":"212", "width":"2720", "height":"1530" },
      "dest": { "xoffset":"0", "yoffset":"0", "width":"5440", "height":"3060" },
      "weight":"0",
      "action":"4",
      "xVelocity":"0.500000",
      "yVelocity":"-1.000000",
      "wVelocity":"0.000000"
    }
  ]
}
)");
}

TEST(SceneJsonTest, TrackTextTooLongIsLoggedAndLeavesOutputUnchanged) {
    // Given velocities that print with over 300 digits each
    TrackControl track{};
    track.xVelocity = track.yVelocity = track.wVelocity = 1e300;
    hidl_string json = "previous";
    LogCapture::clear();

    // When the text is built
    ZorvCameraProvider::buildTrackJson(track, json);

    // Then the output is kept and the needed length is logged
    EXPECT_EQ(std::string(json), "previous");
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{providerLine(kError, "Failed to build scene JSON: res 1242")}));
}
