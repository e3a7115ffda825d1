// Listener registry and the one fan-out rule of every notification.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdint.h>

#include <algorithm>

#include <log/log.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {
namespace implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;

namespace {
uint32_t low32(const void* p) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p));
}
}  // namespace

Return<void> ZorvCameraProvider::setListener(const sp<IZorvCameraProviderCallback>& listener) {
    std::lock_guard lock(mLock);
    // Every fan-out calls each entry, so the list never holds a null reference.
    if (listener == nullptr) {
        ALOGE("%s: ignoring null listener", "setListener");
        return Void();
    }
    ALOGD("Adding listener 0x%08x", low32(listener.get()));
    mListeners.push_back(listener);
    return Void();
}

Return<void> ZorvCameraProvider::clearListener(const sp<IZorvCameraProviderCallback>& listener) {
    std::lock_guard lock(mLock);
    for (auto it = mListeners.begin(); it != mListeners.end();) {
        if (*it == listener) {
            ALOGD("Removing listener 0x%08x", low32(it->get()));
            it = mListeners.erase(it);
        } else {
            ++it;
        }
    }
    return Void();
}

void ZorvCameraProvider::notifyListeners(const char* callback,
                                         const std::function<Return<void>(const Listener&)>& call) {
    std::lock_guard lock(mLock);
    // A listener may call back into the provider on this thread (the lock is recursive) and
    // register or remove listeners, so the walk runs over a snapshot of the list.
    const std::vector<Listener> listeners = mListeners;
    for (const Listener& listener : listeners) {
        Return<void> ret = call(listener);
        if (ret.isOk()) continue;
        ALOGE("Error from %s callback: %s", callback, ret.description().c_str());
        if (ret.isDeadObject()) {
            auto dead = std::find(mListeners.begin(), mListeners.end(), listener);
            if (dead != mListeners.end()) mListeners.erase(dead);
        }
    }
}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
