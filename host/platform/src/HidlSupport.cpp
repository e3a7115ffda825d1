// hidl_string: copies are malloc'd with a NUL, the default refers to a static "".
#include <hidl/HidlSupport.h>

#include <stdlib.h>
#include <string.h>

namespace android {
namespace hardware {
namespace {
const char kEmpty[1] = {'\0'};
}  // namespace

hidl_string::hidl_string() : mBuffer(kEmpty), mSize(0), mOwnsBuffer(false) {}

hidl_string::hidl_string(const hidl_string& other) : hidl_string() {
    copyFrom(other.c_str(), other.size());
}

hidl_string::hidl_string(hidl_string&& other) noexcept : hidl_string() {
    moveFrom(std::move(other));
}

hidl_string::hidl_string(const char* s) : hidl_string() {
    if (s != nullptr) copyFrom(s, strlen(s));
}

hidl_string::hidl_string(const char* s, size_t length) : hidl_string() {
    copyFrom(s, length);
}

hidl_string::hidl_string(const std::string& s) : hidl_string() {
    copyFrom(s.data(), s.size());
}

hidl_string::~hidl_string() {
    clear();
}

hidl_string& hidl_string::operator=(const hidl_string& other) {
    if (this != &other) {
        clear();
        copyFrom(other.c_str(), other.size());
    }
    return *this;
}

hidl_string& hidl_string::operator=(hidl_string&& other) noexcept {
    if (this != &other) {
        clear();
        moveFrom(std::move(other));
    }
    return *this;
}

hidl_string& hidl_string::operator=(const char* s) {
    clear();
    if (s != nullptr) copyFrom(s, strlen(s));
    return *this;
}

hidl_string& hidl_string::operator=(const std::string& s) {
    clear();
    copyFrom(s.data(), s.size());
    return *this;
}

void hidl_string::clear() {
    if (mOwnsBuffer) free(const_cast<char*>(mBuffer));
    mBuffer = kEmpty;
    mSize = 0;
    mOwnsBuffer = false;
}

void hidl_string::copyFrom(const char* data, size_t size) {
    if (size > UINT32_MAX) details::logAlwaysFatal("string size can't exceed 2^32 bytes.");
    char* buffer = static_cast<char*>(malloc(size + 1));
    if (size > 0) memcpy(buffer, data, size);
    buffer[size] = '\0';
    mBuffer = buffer;
    mSize = static_cast<uint32_t>(size);
    mOwnsBuffer = true;
}

void hidl_string::moveFrom(hidl_string&& other) {
    mBuffer = other.mBuffer;
    mSize = other.mSize;
    mOwnsBuffer = other.mOwnsBuffer;
    other.mOwnsBuffer = false;
    other.clear();
}

static int compare(const hidl_string& a, const char* b, size_t bSize) {
    int c = memcmp(a.c_str(), b, std::min<size_t>(a.size(), bSize));
    if (c != 0) return c;
    return a.size() < bSize ? -1 : (a.size() > bSize ? 1 : 0);
}

bool operator==(const hidl_string& a, const hidl_string& b) {
    return compare(a, b.c_str(), b.size()) == 0;
}
bool operator!=(const hidl_string& a, const hidl_string& b) {
    return !(a == b);
}
bool operator==(const hidl_string& a, const char* b) {
    return b != nullptr && strcmp(a.c_str(), b) == 0;
}
bool operator!=(const hidl_string& a, const char* b) {
    return !(a == b);
}
bool operator==(const char* a, const hidl_string& b) {
    return b == a;
}
bool operator==(const hidl_string& a, const std::string& b) {
    return compare(a, b.data(), b.size()) == 0;
}
bool operator==(const std::string& a, const hidl_string& b) {
    return b == a;
}

}  // namespace hardware
}  // namespace android
