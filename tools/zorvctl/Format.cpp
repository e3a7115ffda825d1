// Text forms of the interface types: reading command words and printing values.
#include "Format.h"

#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

namespace zorvctl {

namespace {

const char* const kDirections[] = {"PAN_LEFT", "PAN_RIGHT", "TILT_UP",         "TILT_DOWN",
                                   "ZOOM_IN",  "ZOOM_OUT",  "APPLY_ZOOM_LIMIT"};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos) return parts;
        start = end + 1;
    }
}

std::string stripBraces(const std::string& text) {
    if (text.size() >= 2 && text.front() == '{' && text.back() == '}') {
        return text.substr(1, text.size() - 2);
    }
    return text;
}

// Splits "key=value"; false for a word without "=".
bool keyValue(const std::string& word, std::string& key, std::string& value) {
    size_t eq = word.find('=');
    if (eq == std::string::npos) return false;
    key = word.substr(0, eq);
    value = word.substr(eq + 1);
    return true;
}

int32_t int32Of(const std::string& text) {
    return static_cast<int32_t>(parseInteger(text, INT32_MIN, INT32_MAX));
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::vector<std::string> splitWords(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quoted) {
            if (c == '"') {
                quoted = false;
            } else if (c == '\\' && i + 1 < line.size()) {
                char next = line[++i];
                word += next == 'n' ? '\n' : next;
            } else {
                word += c;
            }
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
        } else if (c == '#' && !inWord) {
            break;
        } else {
            inWord = true;
            if (c == '"') {
                quoted = true;
            } else {
                word += c;
            }
        }
    }
    if (quoted) throw UsageError("unterminated quote");
    if (inWord) words.push_back(word);
    return words;
}

int64_t parseInteger(const std::string& text, int64_t min, int64_t max) {
    const char* s = text.c_str();
    bool negative = *s == '-';
    const char* digits = negative ? s + 1 : s;
    int base = strncasecmp(digits, "0x", 2) == 0 ? 16 : 10;
    if (base == 16) digits += 2;
    // strtoull would accept blanks and a sign of its own; only digits may follow here.
    if (*digits == '\0' || hexDigit(*digits) < 0 || hexDigit(*digits) >= base) {
        throw UsageError(quote(text) + " is not a number");
    }
    errno = 0;
    char* end = nullptr;
    unsigned long long magnitude = strtoull(digits, &end, base);
    if (*end != '\0') throw UsageError(quote(text) + " is not a number");
    bool fits =
            errno == 0 && magnitude <= (negative ? 1ULL << 63 : static_cast<uint64_t>(INT64_MAX));
    int64_t value =
            negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    if (!fits || value < min || value > max) {
        char range[64];
        snprintf(range, sizeof(range), " is out of range (%" PRId64 "..%" PRId64 ")", min, max);
        throw UsageError(quote(text) + range);
    }
    return value;
}

double parseReal(const std::string& text) {
    errno = 0;
    char* end = nullptr;
    double value = strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno != 0) {
        throw UsageError(quote(text) + " is not a number");
    }
    return value;
}

bool parseBool(const std::string& text) {
    if (text == "true" || text == "1" || text == "on") return true;
    if (text == "false" || text == "0" || text == "off") return false;
    throw UsageError(quote(text) + " is not true or false");
}

std::vector<std::string> directionNames() {
    return std::vector<std::string>(std::begin(kDirections), std::end(kDirections));
}

CameraMoveDirection parseDirection(const std::string& text) {
    for (size_t i = 0; i < sizeof(kDirections) / sizeof(kDirections[0]); ++i) {
        if (strcasecmp(text.c_str(), kDirections[i]) == 0) {
            return static_cast<CameraMoveDirection>(i + 1);
        }
    }
    try {
        return static_cast<CameraMoveDirection>(int32Of(text));
    } catch (const UsageError&) {
        throw UsageError(quote(text) + " is not a direction (PAN_LEFT, PAN_RIGHT, TILT_UP, " +
                         "TILT_DOWN, ZOOM_IN, ZOOM_OUT, APPLY_ZOOM_LIMIT or a number)");
    }
}

Crop parseCrop(const std::string& text) {
    std::vector<std::string> parts = split(stripBraces(text), ',');
    if (parts.size() != 4)
        throw UsageError(quote(text) + " is not a rectangle LEFT,TOP,RIGHT,BOTTOM");
    return Crop{int32Of(parts[0]), int32Of(parts[1]), int32Of(parts[2]), int32Of(parts[3])};
}

SceneControl parseScene(const std::vector<std::string>& words) {
    SceneControl scene{};
    scene.frameWidth = 1280;
    scene.frameHeight = 720;
    std::vector<Crop> crops;
    for (const std::string& word : words) {
        std::string key, value;
        if (!keyValue(word, key, value)) {
            crops.push_back(parseCrop(word));
        } else if (key == "frame") {
            std::vector<std::string> size = split(value, 'x');
            if (size.size() != 2) throw UsageError(quote(value) + " is not a size WIDTHxHEIGHT");
            scene.frameWidth = int32Of(size[0]);
            scene.frameHeight = int32Of(size[1]);
        } else if (key == "transition") {
            scene.transition = int32Of(value);
        } else if (key == "duration") {
            scene.duration = int32Of(value);
        } else if (key == "extra") {
            scene.extra = static_cast<uint32_t>(parseInteger(value, 0, UINT32_MAX));
        } else {
            throw UsageError("unknown scene field " + quote(key));
        }
    }
    scene.crops = crops;
    return scene;
}

TrackControl parseTrack(const std::vector<std::string>& words) {
    TrackControl track{};
    bool haveRect = false;
    for (const std::string& word : words) {
        std::string key, value;
        if (!keyValue(word, key, value)) {
            Crop rect = parseCrop(word);
            track.left = rect.left;
            track.top = rect.top;
            track.right = rect.right;
            track.bottom = rect.bottom;
            haveRect = true;
        } else if (key == "action") {
            track.action = int32Of(value);
        } else if (key == "xVelocity") {
            track.xVelocity = parseReal(value);
        } else if (key == "yVelocity") {
            track.yVelocity = parseReal(value);
        } else if (key == "wVelocity") {
            track.wVelocity = parseReal(value);
        } else {
            throw UsageError("unknown track field " + quote(key));
        }
    }
    if (!haveRect) throw UsageError("missing the rectangle LEFT,TOP,RIGHT,BOTTOM");
    return track;
}

CameraInfo parseCameraInfo(const std::string& text) {
    CameraInfo info{};
    std::string fields = stripBraces(text);
    for (const std::string& field :
         fields.empty() ? std::vector<std::string>{} : split(fields, ',')) {
        std::string key, value;
        if (!keyValue(field, key, value)) throw UsageError(quote(field) + " is not FIELD=VALUE");
        if (key == "text1") {
            info.text1 = value;
        } else if (key == "text2") {
            info.text2 = value;
        } else if (key == "value1") {
            info.value1 = static_cast<uint32_t>(parseInteger(value, INT32_MIN, UINT32_MAX));
        } else if (key == "value2") {
            info.value2 = static_cast<uint64_t>(parseInteger(value, INT64_MIN, INT64_MAX));
        } else if (key == "value3") {
            info.value3 = static_cast<uint32_t>(parseInteger(value, INT32_MIN, UINT32_MAX));
        } else if (key == "block") {
            if (value.size() > 32 || value.size() % 2 != 0) {
                throw UsageError(quote(value) + " is not up to 16 bytes of hex");
            }
            for (size_t i = 0; i < value.size(); i += 2) {
                int high = hexDigit(value[i]), low = hexDigit(value[i + 1]);
                if (high < 0 || low < 0) throw UsageError(quote(value) + " is not hex");
                info.block[i / 2] = static_cast<uint8_t>(high * 16 + low);
            }
        } else if (key == "entries") {
            std::vector<::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfoEntry> entries;
            for (const std::string& entry :
                 value.empty() ? std::vector<std::string>{} : split(value, ';')) {
                std::vector<std::string> parts = split(entry, ':');
                if (parts.size() != 3) throw UsageError(quote(entry) + " is not KEY:FLAGS:VALUE");
                entries.push_back({int32Of(parts[0]), int32Of(parts[1]),
                                   parseInteger(parts[2], INT64_MIN, INT64_MAX)});
            }
            info.entries = entries;
        } else {
            throw UsageError("unknown camera info field " + quote(key));
        }
    }
    return info;
}

const char* statusName(Status status) {
    static const char* const kNames[] = {"OK",
                                         "ILLEGAL_ARGUMENT",
                                         "CAMERA_IN_USE",
                                         "MAX_CAMERAS_IN_USE",
                                         "METHOD_NOT_SUPPORTED",
                                         "OPERATION_NOT_SUPPORTED",
                                         "CAMERA_DISCONNECTED",
                                         "INTERNAL_ERROR"};
    uint32_t code = static_cast<uint32_t>(status);
    return code < sizeof(kNames) / sizeof(kNames[0]) ? kNames[code] : "UNKNOWN_STATUS";
}

}  // namespace zorvctl
