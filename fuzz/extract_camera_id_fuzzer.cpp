// Fuzzes the short camera id: any bytes, NUL and slashes included.
#include <stdint.h>

#include <string>

#include "CameraControlCache.h"

using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::extractCameraId;

#define CHECK(cond) \
    if (!(cond)) __builtin_trap()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string id(reinterpret_cast<const char*>(data), size);
    const std::string shortId = extractCameraId(id);

    // The part after the last slash: no slash left, the id ends with it, and what precedes it
    // is either nothing (no slash at all) or ends in the slash.
    CHECK(shortId.find('/') == std::string::npos);
    CHECK(shortId.size() <= id.size());
    const size_t rest = id.size() - shortId.size();
    CHECK(id.compare(rest, shortId.size(), shortId) == 0);
    CHECK(rest == 0 ? id.find('/') == std::string::npos : id[rest - 1] == '/');
    // A short id is its own short id.
    CHECK(extractCameraId(shortId) == shortId);
    return 0;
}
