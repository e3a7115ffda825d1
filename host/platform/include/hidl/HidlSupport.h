// Host stand-in for the HIDL runtime's value types: hidl_string, hidl_vec, hidl_array.
#ifndef HOST_PLATFORM_HIDL_HIDLSUPPORT_H
#define HOST_PLATFORM_HIDL_HIDLSUPPORT_H

#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <hidl/Status.h>

namespace android {
namespace hardware {

namespace details {
// Aborts the process with a message, as the platform's runtime does on misuse.
[[noreturn]] void logAlwaysFatal(const char* message);
}  // namespace details

// Same 16-byte layout as the platform's: buffer pointer, 32-bit size, ownership flag.
class hidl_string {
  public:
    hidl_string();
    hidl_string(const hidl_string& other);
    hidl_string(hidl_string&& other) noexcept;
    hidl_string(const char* s);  // NOLINT: implicit, as on the platform
    hidl_string(const char* s, size_t length);
    hidl_string(const std::string& s);  // NOLINT
    ~hidl_string();

    hidl_string& operator=(const hidl_string& other);
    hidl_string& operator=(hidl_string&& other) noexcept;
    hidl_string& operator=(const char* s);
    hidl_string& operator=(const std::string& s);

    const char* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear();

    operator std::string() const { return std::string(mBuffer, mSize); }  // NOLINT

  private:
    void copyFrom(const char* data, size_t size);
    void moveFrom(hidl_string&& other);

    const char* mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
};
static_assert(sizeof(hidl_string) == 16, "hidl_string layout");

bool operator==(const hidl_string& a, const hidl_string& b);
bool operator!=(const hidl_string& a, const hidl_string& b);
bool operator==(const hidl_string& a, const char* b);
bool operator!=(const hidl_string& a, const char* b);
bool operator==(const char* a, const hidl_string& b);
bool operator==(const hidl_string& a, const std::string& b);
bool operator==(const std::string& a, const hidl_string& b);

// Same layout as the platform's; storage comes from new[] and goes back with delete[].
template <typename T>
class hidl_vec {
  public:
    hidl_vec() : mBuffer(nullptr), mSize(0), mOwnsBuffer(true) {}
    explicit hidl_vec(size_t size) : hidl_vec() { resize(size); }
    hidl_vec(std::initializer_list<T> list) : hidl_vec() { assignRange(list.begin(), list.size()); }
    hidl_vec(const std::vector<T>& v) : hidl_vec() { assignRange(v.data(), v.size()); }  // NOLINT
    hidl_vec(const hidl_vec& other) : hidl_vec() { *this = other; }
    hidl_vec(hidl_vec&& other) noexcept : mOwnsBuffer(false) { *this = std::move(other); }
    ~hidl_vec() { releaseOwned(); }

    hidl_vec& operator=(const hidl_vec& other) {
        if (this != &other) assignRange(other.mBuffer, other.mSize);
        return *this;
    }
    // The moved-from vector keeps pointer and size but no longer owns them.
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) {
            releaseOwned();
            mBuffer = other.mBuffer;
            mSize = other.mSize;
            mOwnsBuffer = other.mOwnsBuffer;
            other.mOwnsBuffer = false;
        }
        return *this;
    }
    hidl_vec& operator=(std::initializer_list<T> list) {
        assignRange(list.begin(), list.size());
        return *this;
    }
    hidl_vec& operator=(const std::vector<T>& v) {
        assignRange(v.data(), v.size());
        return *this;
    }

    // Adopts data; with shouldOwn it must come from new[] and is freed with delete[].
    void setToExternal(T* data, size_t size, bool shouldOwn = false) {
        if (size > UINT32_MAX)
            details::logAlwaysFatal("external vector size exceeds 2^32 elements.");
        releaseOwned();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = shouldOwn;
    }

    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    size_t size() const { return mSize; }
    // The platform does not check the index; reading past the end is undefined there.
    T& operator[](size_t i) { return mBuffer[checked(i)]; }
    const T& operator[](size_t i) const { return mBuffer[checked(i)]; }
    T* begin() { return mBuffer; }
    T* end() { return mBuffer + mSize; }
    const T* begin() const { return mBuffer; }
    const T* end() const { return mBuffer + mSize; }

    void resize(size_t size) {
        if (size > UINT32_MAX)
            details::logAlwaysFatal("hidl_vec can't hold more than 2^32 elements.");
        T* buffer = size > 0 ? new T[size]() : nullptr;
        std::move(mBuffer, mBuffer + std::min<size_t>(size, mSize), buffer);
        releaseOwned();
        mBuffer = buffer;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }  // NOLINT

  private:
    size_t checked(size_t i) const {
        if (i >= mSize) details::logAlwaysFatal("hidl_vec index out of range (undefined).");
        return i;
    }
    void assignRange(const T* data, size_t size) {
        if (size > UINT32_MAX)
            details::logAlwaysFatal("hidl_vec can't hold more than 2^32 elements.");
        T* buffer = size > 0 ? new T[size] : nullptr;
        std::copy(data, data + size, buffer);
        releaseOwned();
        mBuffer = buffer;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }
    void releaseOwned() {
        if (mOwnsBuffer) delete[] mBuffer;
        mBuffer = nullptr;
    }

    T* mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
};
static_assert(sizeof(hidl_vec<int>) == 16, "hidl_vec layout");

template <typename T>
bool operator==(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}
template <typename T>
bool operator!=(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    return !(a == b);
}

// Fixed-size array of a struct field; plain data copied as a whole.
template <typename T, size_t N>
class hidl_array {
  public:
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    T& operator[](size_t i) { return mBuffer[i]; }
    const T& operator[](size_t i) const { return mBuffer[i]; }
    static constexpr size_t size() { return N; }
    bool operator==(const hidl_array& other) const {
        return std::equal(mBuffer, mBuffer + N, other.mBuffer);
    }
    bool operator!=(const hidl_array& other) const { return !(*this == other); }

  private:
    T mBuffer[N] = {};
};

}  // namespace hardware
}  // namespace android

#endif  // HOST_PLATFORM_HIDL_HIDLSUPPORT_H
