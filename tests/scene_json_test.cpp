// Scene description text: exact bytes, full-frame conversion, truncation, wrapping, the bound.
#include <limits.h>

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

std::string sceneTail(int transition, int duration) {
    return "      \"transition\":\"" + std::to_string(transition) + "\",\n      \"duration\":\"" +
           std::to_string(duration) + "\"\n";
}

}  // namespace

TEST(SceneJsonTest, SceneRowsScaleTo5440By3060TruncatingTowardZero) {
    struct Row {
        SceneControl scene;
        std::string expected;
    };
    const Row rows[] = {
            {{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0},
             text(0, 0, 5440, 3060, sceneTail(0, 0))},
            // Only the first crop counts; the frame fields never change the factors
            {{{Crop{100, 50, 740, 410}, Crop{0, 0, 1, 1}}, 640, 360, -3, 700, 0},
             text(425, 212, 2720, 1530, sceneTail(-3, 700))},
            {{{Crop{100, 56, 1180, 664}}, 1280, 720, 0, 0, 0},
             text(425, 238, 4590, 2584, sceneTail(0, 0))},
            {{{Crop{540, 310, 1180, 670}}, 1280, 720, 0, 0, 0},
             text(2295, 1317, 2720, 1530, sceneTail(0, 0))},
            // Negative values truncate toward zero, not down
            {{{Crop{-10, -10, 5, 5}}, 1280, 720, 0, 0, 0}, text(-42, -42, 63, 63, sceneTail(0, 0))},
            // Extreme edges wrap in 32 bits instead of overflowing
            {{{Crop{INT_MAX, INT_MIN, INT_MIN, INT_MAX}}, 0, 0, INT_MIN, INT_MAX, 0},
             text(-4, 0, 4, -4, sceneTail(INT_MIN, INT_MAX))},
            // No crops clears the text, silently
            {{{}, 1280, 720, 0, 0, 0}, ""},
    };
    LogCapture::clear();
    for (const Row& row : rows) {
        hidl_string json = "previous";
        ZorvCameraProvider::buildSceneJson(row.scene, json);
        EXPECT_EQ(std::string(json), row.expected);
    }
    EXPECT_TRUE(providerLines().empty());
}

TEST(SceneJsonTest, TrackTextCarriesActionAndVelocitiesOrKeepsTheOutputWhenTooLong) {
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
    EXPECT_EQ(std::string(json),
              text(425, 212, 2720, 1530,
                   "      \"action\":\"4\",\n      \"xVelocity\":\"0.500000\",\n      "
                   "\"yVelocity\":\"-1.000000\",\n      \"wVelocity\":\"0.000000\"\n"));

    // Velocities that print with over 300 digits each: the needed length is logged and the
    // output keeps the earlier text
    const std::string before = json;
    track.xVelocity = track.yVelocity = track.wVelocity = 1e300;
    LogCapture::clear();
    ZorvCameraProvider::buildTrackJson(track, json);
    EXPECT_EQ(std::string(json), before);
    EXPECT_EQ(providerLines(),
              (std::vector<LogLine>{providerLine(kError, "Failed to build scene JSON: res 1252")}));
}
