// Scene description text: exact bytes, full-frame conversion, truncation, wrapping, the bound.
#include <android-base/stringprintf.h>

#include "support/ProviderTest.h"

using namespace testing_support;
using ::android::base::StringPrintf;

namespace {

// The text with its source numbers and the lines that follow "weight".
std::string text(int x, int y, int w, int h, const std::string& tail) {
    return StringPrintf(R"(
{
  "scene":[
    {
      "cameraid":"1",
      "source": { "xoffset":"%d", "yoffset":"%d", "width":"%d", "height":"%d" },
      "dest": { "xoffset":"0", "yoffset":"0", "width":"5440", "height":"3060" },
      "weight":"0",
%s    }
  ]
}
)",
                        x, y, w, h, tail.c_str());
}

}  // namespace

TEST(SceneJsonTest, SceneRowsScaleTo5440By3060TruncatingTowardZero) {
    // The scene, then the source numbers, transition and duration of its text
    const std::pair<SceneControl, std::array<int, 6>> rows[] = {
            {{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}, {0, 0, 5440, 3060, 0, 0}},
            // Only the first crop counts; the frame fields never change the factors
            {{{Crop{100, 50, 740, 410}, Crop{0, 0, 1, 1}}, 640, 360, -3, 700, 0},
             {425, 212, 2720, 1530, -3, 700}},
            // Negative values truncate toward zero, not down
            {{{Crop{-10, -10, 5, 5}}, 1280, 720, 0, 0, 0}, {-42, -42, 63, 63, 0, 0}},
            // No crops clears the text
            {{{}, 1280, 720, 0, 0, 0}, {}},
            // Extreme edges wrap in 32 bits instead of overflowing
            {{{Crop{INT_MAX, INT_MIN, INT_MIN, INT_MAX}}, 0, 0, INT_MIN, INT_MAX, 0},
             {-4, 0, 4, -4, INT_MIN, INT_MAX}},
    };
    for (const auto& [scene, n] : rows) {
        hidl_string json = "previous";
        ZorvCameraProvider::buildSceneJson(scene, json);
        const std::string tail = StringPrintf(
                "      \"transition\":\"%d\",\n      \"duration\":\"%d\"\n", n[4], n[5]);
        EXPECT_EQ(std::string(json), scene.crops.size() ? text(n[0], n[1], n[2], n[3], tail) : "");
    }
    // silently
    EXPECT_TRUE(providerLines().empty());
}

TEST(SceneJsonTest, TrackTextCarriesActionAndVelocitiesOrKeepsTheOutputWhenTooLong) {
    TrackControl track{100, 50, 740, 410, {}, 0.5, -1, 0, 4};
    hidl_string json;
    ZorvCameraProvider::buildTrackJson(track, json);
    const std::string before = text(425, 212, 2720, 1530,
                                    "      \"action\":\"4\",\n      \"xVelocity\":\"0.500000\",\n "
                                    "     \"yVelocity\":\"-1.000000\",\n      "
                                    "\"wVelocity\":\"0.000000\"\n");
    EXPECT_EQ(std::string(json), before);
    // Velocities that print with over 300 digits each: the needed length is logged and the
    // output keeps the earlier text
    track.xVelocity = track.yVelocity = track.wVelocity = 1e300;
    ZorvCameraProvider::buildTrackJson(track, json);
    EXPECT_EQ(std::string(json), before);
    EXPECT_EQ(providerLines(),
              (Lines{providerLine(kError, "Failed to build scene JSON: res 1252")}));
}
