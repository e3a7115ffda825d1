// Text forms of the interface's values.
#include "kit/Format.h"

#include <stdio.h>

namespace kit {

std::string quote(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c == '\n') {
            out += "\\n";
        } else if (c < 0x20 || c >= 0x7f) {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02x", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string formatCrop(const Crop& crop) {
    char text[64];
    snprintf(text, sizeof(text), "{%d,%d,%d,%d}", crop.left, crop.top, crop.right, crop.bottom);
    return text;
}

std::string formatScene(const SceneControl& scene) {
    std::string out = "crops=[";
    for (size_t i = 0; i < scene.crops.size(); ++i) {
        out += (i ? " " : "") + formatCrop(scene.crops[i]);
    }
    char rest[128];
    snprintf(rest, sizeof(rest), "] frame=%dx%d transition=%d duration=%d extra=%u",
             scene.frameWidth, scene.frameHeight, scene.transition, scene.duration, scene.extra);
    return out + rest;
}

std::string formatTrack(const TrackControl& track) {
    char velocities[128];
    snprintf(velocities, sizeof(velocities), " xVelocity=%g yVelocity=%g wVelocity=%g",
             track.xVelocity, track.yVelocity, track.wVelocity);
    return "rect=" + formatCrop({track.left, track.top, track.right, track.bottom}) +
           " action=" + std::to_string(track.action) + velocities;
}

std::string formatCameraInfo(const CameraInfo& info) {
    std::string out = "{text1=" + quote(info.text1) + ",text2=" + quote(info.text2) + ",entries=";
    for (size_t i = 0; i < info.entries.size(); ++i) {
        const auto& e = info.entries[i];
        out += (i ? ";" : "") + std::to_string(e.key) + ":" + std::to_string(e.flags) + ":" +
               std::to_string(e.value);
    }
    out += ",block=";
    for (size_t i = 0; i < 16; ++i) {
        char hex[4];
        snprintf(hex, sizeof(hex), "%02x", info.block[i]);
        out += hex;
    }
    return out + ",value1=" + std::to_string(info.value1) +
           ",value2=" + std::to_string(info.value2) + ",value3=" + std::to_string(info.value3) +
           "}";
}

std::string formatInfos(const hidl_vec<CameraInfo>& infos) {
    std::string out = "[";
    for (size_t i = 0; i < infos.size(); ++i) out += (i ? " " : "") + formatCameraInfo(infos[i]);
    return out + "]";
}

std::string formatStrings(const hidl_vec<hidl_string>& names) {
    std::string out = "[";
    for (size_t i = 0; i < names.size(); ++i) out += (i ? " " : "") + quote(names[i]);
    return out + "]";
}

const char* boolName(bool value) {
    return value ? "true" : "false";
}

}  // namespace kit
