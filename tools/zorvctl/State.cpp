// The observable state: everything the interface's getters, the properties and the cache show.
#include "State.h"

#include <stdio.h>
#include <stdlib.h>

#include <android/log.h>
#include <cutils/properties.h>

#include "Requests.h"

namespace zorvctl {

namespace {

bool presetProperty(int number, const char* suffix, int32_t& value) {
    char name[PROPERTY_KEY_MAX];
    char text[PROPERTY_VALUE_MAX];
    snprintf(name, sizeof(name), "persist.camera.preset.%d.%s", number, suffix);
    if (property_get(name, text, "") <= 0) return false;
    char* end = nullptr;
    value = static_cast<int32_t>(strtol(text, &end, 10));
    return *end == '\0';
}

void addProperty(const char* key, const char* value, void* cookie) {
    std::string& list = *static_cast<std::string*>(cookie);
    list += (list.empty() ? "" : " ") + std::string(key) + "=" + quote(value);
}

// Silences the library's log while the getters run, so that observing shows nothing.
struct SilentLog {
    SilentLog() : mPrevious(__android_log_set_minimum_priority(ANDROID_LOG_SILENT)) {}
    ~SilentLog() { __android_log_set_minimum_priority(mPrevious); }
    int mPrevious;
};

}  // namespace

std::map<int, Crop> storedPresets() {
    std::map<int, Crop> presets;
    for (int n = 0; n <= 99; ++n) {
        Crop p;
        if (presetProperty(n, "l", p.left) && presetProperty(n, "t", p.top) &&
            presetProperty(n, "r", p.right) && presetProperty(n, "b", p.bottom)) {
            presets[n] = p;
        }
    }
    return presets;
}

std::vector<std::string> observe(const Context& c) {
    SilentLog silent;
    std::vector<std::string> lines;
    std::string text;
    check(c.provider->getCurrentCameraCropArea(
            [&text](const SceneControl& scene) { text = formatScene(scene); }));
    lines.push_back("crop in force: " + text);
    lines.push_back("last announced: " + (c.announced ? formatScene(c.lastAnnounced) : "none"));
    lines.push_back("crops announced: " + std::to_string(c.announcedCrops.size()));
    lines.push_back("tracking mode: " +
                    std::to_string(static_cast<int32_t>(result(c.provider->getTrackingMode("0")))));
    lines.push_back("zoom-in level: " +
                    (c.zoomLevel ? std::to_string(c.zoomLevel) : "not set (limit 320)"));
    text.clear();
    for (const auto& [number, crop] : storedPresets()) {
        text += (text.empty() ? "" : " ") + std::to_string(number) + "=" + formatCrop(crop);
    }
    lines.push_back("presets: " + (text.empty() ? "none" : text));
    text.clear();
    for (const auto& [name, count] : c.registrations) {
        if (count > 0) text += (text.empty() ? "" : " ") + quote(name);
        if (count > 1) text += " x" + std::to_string(count);
    }
    lines.push_back("listeners: " + (text.empty() ? "none" : text));
    lines.push_back(std::string("engine: ") + (c.engineAttached ? "attached" : "detached") +
                    ", session interfaces: " + std::to_string(c.sessions.size()));
    for (const std::string& camera : c.cameras) {
        std::string names;
        check(c.provider->getVirtualCameraList(camera, [&names](const hidl_vec<hidl_string>& list) {
            names = formatStrings(list);
        }));
        lines.push_back(
                "camera " + quote(camera) + ": capability=" +
                std::to_string(static_cast<int32_t>(
                        result(c.provider->getVirtualCameraCapability(camera)))) +
                " max=" + std::to_string(result(c.provider->getMaxVirtualCameras(camera))) +
                " available=" + boolName(result(c.provider->getVirtualCameraAvailability(camera))) +
                " list=" + names);
    }
    check(c.provider->getVirtualCameraInfo(
            [&text](const hidl_vec<CameraInfo>& infos) { text = formatInfos(infos); }));
    lines.push_back("virtual camera infos: " + text);
    for (const std::string& line : cacheEntries(c.cameras)) lines.push_back(line);
    text.clear();
    property_list(addProperty, &text);
    lines.push_back("properties: " + text);
    return lines;
}

}  // namespace zorvctl
