// Test access to provider state that has no interface method.
#ifndef TESTS_SUPPORT_PROVIDERPEER_H
#define TESTS_SUPPORT_PROVIDERPEER_H

#include <mutex>

#include "ZorvCameraProvider.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

class ZorvCameraProviderTestPeer {
  public:
    static void setZoomInLimit(ZorvCameraProvider& p, uint32_t limit) {
        std::lock_guard lock(p.mLock);
        p.mZoomInLimit = limit;
    }
    static uint32_t zoomInLimit(ZorvCameraProvider& p) {
        std::lock_guard lock(p.mLock);
        return p.mZoomInLimit;
    }
    static SceneControl lastCrop(ZorvCameraProvider& p) {
        std::lock_guard lock(p.mLock);
        return p.mLastCrop;
    }
    static size_t listenerCount(ZorvCameraProvider& p) {
        std::lock_guard lock(p.mLock);
        return p.mListeners.size();
    }
    // Sends one notification through the provider's fan-out.
    static void notify(ZorvCameraProvider& p, const char* callback,
                       const std::function<::android::hardware::Return<void>(
                               const ::android::sp<IZorvCameraProviderCallback>&)>& call) {
        p.notifyListeners(callback, call);
    }
    static auto& lock(ZorvCameraProvider& p) { return p.mLock; }
};

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation

#endif  // TESTS_SUPPORT_PROVIDERPEER_H
