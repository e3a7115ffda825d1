// Listener registry and the one fan-out rule of every notification.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <stdint.h>

#include <algorithm>

#include <log/log.h>

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

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
    mListeners.push_back({listener, mNextListenerId++});
    return Void();
}

Return<void> ZorvCameraProvider::clearListener(const sp<IZorvCameraProviderCallback>& listener) {
    std::lock_guard lock(mLock);
    for (auto it = mListeners.begin(); it != mListeners.end();) {
        if (it->listener == listener) {
            ALOGD("Removing listener 0x%08x", low32(it->listener.get()));
            it = mListeners.erase(it);
        } else {
            ++it;
        }
    }
    return Void();
}

bool ZorvCameraProvider::notifyListeners(const char* callback,
                                         const std::function<Return<void>(const Listener&)>& call,
                                         const uint64_t* serial) {
    std::lock_guard lock(mLock);
    const uint64_t announcement = serial != nullptr ? *serial : 0;
    auto current = [&] { return serial == nullptr || *serial == announcement; };
    // A listener may call back into the provider on this thread (the lock is recursive) and
    // change the list, so the walk goes over the live list by registration number: an entry
    // removed meanwhile is not called, one added meanwhile waits for the next notification.
    const uint64_t end = mNextListenerId;
    for (uint64_t next = 0; current();) {
        auto it = std::find_if(mListeners.begin(), mListeners.end(),
                               [next](const ListenerEntry& e) { return e.id >= next; });
        if (it == mListeners.end() || it->id >= end) break;
        const uint64_t id = it->id;
        const Listener listener = it->listener;  // held through the call
        next = id + 1;
        Return<void> ret = call(listener);
        if (ret.isOk()) continue;
        ALOGE("Error from %s callback: %s", callback, ret.description().c_str());
        if (ret.isDeadObject()) {
            auto dead = std::find_if(mListeners.begin(), mListeners.end(),
                                     [id](const ListenerEntry& e) { return e.id == id; });
            if (dead != mListeners.end()) mListeners.erase(dead);
        }
    }
    return current();
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
