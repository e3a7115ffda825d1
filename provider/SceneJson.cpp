// Scene description text: a crop of the PTZ space (Framing.h) as a source rectangle of the full
// frame.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdio.h>

#include <log/log.h>

#include "Framing.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::hidl_string;

namespace {

constexpr size_t kJsonBufferSize = 1024;

// The scene text and the track text differ only in the members after "weight".
#define SCENE_TEXT_HEAD                                                              \
    "\n"                                                                             \
    "{\n"                                                                            \
    "  \"scene\":[\n"                                                                \
    "    {\n"                                                                        \
    "      \"cameraid\":\"1\",\n"                                                    \
    "      \"source\": { \"xoffset\":\"%d\", \"yoffset\":\"%d\", \"width\":\"%d\", " \
    "\"height\":\"%d\" },\n"                                                         \
    "      \"dest\": { \"xoffset\":\"0\", \"yoffset\":\"0\", \"width\":\"5440\", "   \
    "\"height\":\"3060\" },\n"                                                       \
    "      \"weight\":\"0\",\n"
#define SCENE_TEXT_TAIL \
    "    }\n"           \
    "  ]\n"             \
    "}\n"
constexpr char kSceneFormat[] = SCENE_TEXT_HEAD
        "      \"transition\":\"%d\",\n"
        "      \"duration\":\"%d\"\n" SCENE_TEXT_TAIL;
constexpr char kTrackFormat[] = SCENE_TEXT_HEAD
        "      \"action\":\"%d\",\n"
        "      \"xVelocity\":\"%f\",\n"
        "      \"yVelocity\":\"%f\",\n"
        "      \"wVelocity\":\"%f\"\n" SCENE_TEXT_TAIL;
#undef SCENE_TEXT_HEAD
#undef SCENE_TEXT_TAIL
static_assert(sizeof(kSceneFormat) - 1 == 284, "scene format changed");
static_assert(sizeof(kTrackFormat) - 1 == 329, "track format changed");

// The full frame is 5440 x 3060. Arithmetic is 32-bit and wraps (done unsigned to stay
// defined); the division truncates toward zero.
int32_t scale(int32_t value, uint32_t full, int32_t ptz) {
    return static_cast<int32_t>(static_cast<uint32_t>(value) * full) / ptz;
}

struct Source {
    int32_t xoffset, yoffset, width, height;
};
Source sourceOf(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    return {scale(left, 5440, kPtzWidth), scale(top, 3060, kPtzHeight),
            scale(wrapSub(right, left), 5440, kPtzWidth),
            scale(wrapSub(bottom, top), 3060, kPtzHeight)};
}

// Keeps `json` as it was when the text does not fit the buffer or formatting fails.
void assignFormatted(int res, const char* buffer, hidl_string& json) {
    if (res >= 1 && static_cast<size_t>(res) < kJsonBufferSize) {
        json = buffer;
    } else {
        ALOGE("Failed to build scene JSON: res %d", res);
    }
}

}  // namespace

void ZorvCameraProvider::buildSceneJson(const SceneControl& scene, hidl_string& json) {
    if (scene.crops.size() == 0) {
        json = "";
        return;
    }
    const Crop& c = scene.crops[0];
    const Source s = sourceOf(c.left, c.top, c.right, c.bottom);
    char buffer[kJsonBufferSize];
    int res = snprintf(buffer, sizeof(buffer), kSceneFormat, s.xoffset, s.yoffset, s.width,
                       s.height, scene.transition, scene.duration);
    assignFormatted(res, buffer, json);
}

void ZorvCameraProvider::buildTrackJson(const TrackControl& track, hidl_string& json) {
    const Source s = sourceOf(track.left, track.top, track.right, track.bottom);
    char buffer[kJsonBufferSize];
    int res = snprintf(buffer, sizeof(buffer), kTrackFormat, s.xoffset, s.yoffset, s.width,
                       s.height, track.action, track.xVelocity, track.yVelocity, track.wVelocity);
    assignFormatted(res, buffer, json);
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
