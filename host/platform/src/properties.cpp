// The cutils property calls over libbase's in-process property store.
#include <cutils/properties.h>

#include <errno.h>
#include <inttypes.h>
#include <stdlib.h>
#include <string.h>

#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <android-base/properties.h>
#include <hostfault/FaultInjection.h>

namespace {

// libbase's host store is not safe for a reader beside a writer, while the device's property
// service serves every thread; so every store access here goes through this lock.
std::mutex sStoreLock;  // guards libbase's store and sNames
std::set<std::string>& names() {
    static std::set<std::string>* sNames = new std::set<std::string>;  // never destroyed
    return *sNames;
}

intmax_t propertyGetImax(const char* key, intmax_t lower, intmax_t upper, intmax_t def) {
    if (key == nullptr) return def;
    char buf[PROPERTY_VALUE_MAX] = {'\0'};
    if (property_get(key, buf, "") <= 0) return def;
    // Leading text that is a number counts, trailing text is ignored, as on the device.
    int saved = errno;
    errno = 0;
    char* end = nullptr;
    intmax_t result = strtoimax(buf, &end, 0);
    if (errno == ERANGE || result < lower || result > upper || end == buf) result = def;
    errno = saved;
    return result;
}

}  // namespace

extern "C" {

int property_get(const char* key, char* value, const char* default_value) {
    std::string v;
    if (key != nullptr) {
        std::lock_guard<std::mutex> lock(sStoreLock);
        v = android::base::GetProperty(key, "");
    }
    if (v.empty() && default_value != nullptr) v = default_value;
    size_t len = std::min<size_t>(v.size(), PROPERTY_VALUE_MAX - 1);
    memcpy(value, v.data(), len);
    value[len] = '\0';
    return static_cast<int>(len);
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    return static_cast<int32_t>(propertyGetImax(key, INT32_MIN, INT32_MAX, default_value));
}

int property_set(const char* key, const char* value) {
    if (key == nullptr || hostfault::shouldFail(hostfault::kPropertySet)) return -1;
    if (value == nullptr) value = "";
    // The device refuses values that do not fit a property slot.
    if (strlen(value) >= PROPERTY_VALUE_MAX) return -1;
    std::lock_guard<std::mutex> lock(sStoreLock);
    if (!android::base::SetProperty(key, value)) return -1;
    names().insert(key);
    return 0;
}

int property_list(void (*propfn)(const char* key, const char* value, void* cookie), void* cookie) {
    std::vector<std::pair<std::string, std::string>> snapshot;
    {
        std::lock_guard<std::mutex> lock(sStoreLock);
        for (const std::string& key : names()) {
            snapshot.emplace_back(key, android::base::GetProperty(key, ""));
        }
    }
    for (const auto& [key, value] : snapshot) propfn(key.c_str(), value.c_str(), cookie);
    return 0;
}

}  // extern "C"
