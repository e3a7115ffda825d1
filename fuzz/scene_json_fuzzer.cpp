// Fuzzes the scene and track text builders with arbitrary numbers.
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <android/log.h>
#include <fuzzer/FuzzedDataProvider.h>

#include "ZorvCameraProvider.h"

using ::android::hardware::hidl_string;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

#define CHECK(cond) \
    if (!(cond)) __builtin_trap()

constexpr size_t kMaxText = 1023;  // the 1024-byte buffer less its terminating zero
const std::string kBefore = "text from before";

// Numbers near the edges of 32-bit arithmetic come up often.
int32_t pickInt(FuzzedDataProvider& in) {
    const int32_t edges[] = {0, 1, -1, 1280, 720, INT32_MAX, INT32_MIN, 505290270};
    return in.ConsumeBool() ? in.ConsumeIntegral<int32_t>() : in.PickValueInArray(edges);
}

// Any double, NaN and the infinities included; huge ones print with hundreds of digits.
double pickDouble(FuzzedDataProvider& in) {
    if (in.ConsumeBool()) {
        const uint64_t bits = in.ConsumeIntegral<uint64_t>();
        double d;
        memcpy(&d, &bits, sizeof(d));
        return d;
    }
    const double values[] = {0.5, -1, 1e300, -1.7976931348623157e308, INFINITY, NAN};
    return in.PickValueInArray(values);
}

// A source number as the text gives it: 32-bit wrapping product, truncating division.
int32_t scaled(int32_t value, int64_t full, int32_t ptz) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(value) * full)) / ptz;
}

std::string member(const std::string& name, int32_t value) {
    return "\"" + name + "\":\"" + std::to_string(value) + "\"";
}

// Both texts: the frame of lines, the source rectangle, the fixed members.
void checkText(const std::string& text, size_t lines, int32_t l, int32_t t, int32_t r, int32_t b) {
    CHECK(text.size() <= kMaxText && text.size() > 22);
    CHECK(text.compare(0, 15, "\n{\n  \"scene\":[\n") == 0);
    CHECK(text.compare(text.size() - 6, 6, "  ]\n}\n") == 0);
    CHECK(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) == lines);
    CHECK(text.find('\t') == std::string::npos && text.find(" \n") == std::string::npos);
    const std::string source =
            "{ " + member("xoffset", scaled(l, 5440, 1280)) + ", " +
            member("yoffset", scaled(t, 3060, 720)) + ", " +
            member("width", scaled(static_cast<int32_t>(r - static_cast<int64_t>(l)), 5440, 1280)) +
            ", " +
            member("height", scaled(static_cast<int32_t>(b - static_cast<int64_t>(t)), 3060, 720)) +
            " }";
    CHECK(text.find("\"source\": " + source + ",\n") != std::string::npos);
    CHECK(text.find("\"dest\": { \"xoffset\":\"0\", \"yoffset\":\"0\", \"width\":\"5440\", "
                    "\"height\":\"3060\" },\n") != std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Failures are logged at every formatting overflow; keep the fuzzer's output quiet.
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);

    SceneControl scene{};
    std::vector<Crop> crops(in.ConsumeIntegralInRange<size_t>(0, 3));
    for (Crop& c : crops) c = {pickInt(in), pickInt(in), pickInt(in), pickInt(in)};
    scene.crops = crops;
    scene.frameWidth = pickInt(in);
    scene.frameHeight = pickInt(in);
    scene.transition = pickInt(in);
    scene.duration = pickInt(in);
    hidl_string json = kBefore;
    ZorvCameraProvider::buildSceneJson(scene, json);
    if (crops.empty()) {
        CHECK(json.size() == 0);
    } else {
        // Eleven characters at most per number: the scene text always fits.
        const Crop& c = crops[0];
        checkText(json, 13, c.left, c.top, c.right, c.bottom);
        CHECK(std::string(json).find(member("transition", scene.transition) + ",\n") !=
              std::string::npos);
    }

    TrackControl track{};
    track.left = pickInt(in);
    track.top = pickInt(in);
    track.right = pickInt(in);
    track.bottom = pickInt(in);
    track.action = pickInt(in);
    track.xVelocity = pickDouble(in);
    track.yVelocity = pickDouble(in);
    track.wVelocity = pickDouble(in);
    hidl_string text = kBefore;
    ZorvCameraProvider::buildTrackJson(track, text);
    if (std::string(text) == kBefore) {
        // Only velocities printing with hundreds of digits make the text too long.
        double largest = 0;
        for (double v : {track.xVelocity, track.yVelocity, track.wVelocity}) {
            if (std::isfinite(v)) largest = std::max(largest, std::fabs(v));
        }
        CHECK(largest > 1e100);
    } else {
        checkText(text, 15, track.left, track.top, track.right, track.bottom);
    }
    return 0;
}
