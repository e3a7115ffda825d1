// Presets: saving and recalling PTZ positions in system properties.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

#include <string>

#include <cutils/properties.h>
#include <log/log.h>

#include "FDSession.h"
#include "Framing.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

using ::android::hardware::Return;
using ::android::hardware::Void;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

namespace {

constexpr uint32_t kMaxPreset = 99;

// "persist.camera.preset.<n>"; the platform keeps "persist." properties across reboots.
std::string presetPrefix(int32_t preset) {
    return "persist.camera.preset." + std::to_string(preset);
}

void setEdge(const std::string& prefix, const char* suffix, int32_t value) {
    property_set((prefix + suffix).c_str(), std::to_string(value).c_str());
}

int32_t getEdge(const std::string& prefix, const char* suffix) {
    return property_get_int32((prefix + suffix).c_str(), -1);
}

}  // namespace

Return<void> ZorvCameraProvider::savePreset(const hidl_string& /*cameraId*/, int32_t preset) {
    ALOGD("SavePreset %d ", preset);
    sp<FDSession> session = FDSession::getInstance();
    if (static_cast<uint32_t>(preset) > kMaxPreset || session == nullptr) return Void();

    const std::string prefix = presetPrefix(preset);
    SceneControl ptz;
    {
        std::lock_guard lock(FDSession::mLock);  // guards the PTZ record
        ptz = session->mPTZControl;
    }
    const Crop c = cropOrFrame(ptz);
    setEdge(prefix, ".l", c.left);
    setEdge(prefix, ".t", c.top);
    setEdge(prefix, ".r", c.right);
    setEdge(prefix, ".b", c.bottom);
    ALOGD("SavePreset : %d, position  %d, %d, %d, %d   \n", preset, c.left, c.right, c.top,
          c.bottom);
    return Void();
}

Return<bool> ZorvCameraProvider::gotoPreset(const hidl_string& /*cameraId*/, int32_t preset) {
    ALOGD("GotoPreset %d ", preset);
    const std::string prefix = presetPrefix(preset);
    const int32_t l = getEdge(prefix, ".l");
    const int32_t t = getEdge(prefix, ".t");
    const int32_t r = getEdge(prefix, ".r");
    const int32_t b = getEdge(prefix, ".b");
    ALOGD("GotoPreset : %d, position  %d, %d, %d, %d   \n", preset, l, r, t, b);
    // Missing edges read as -1, so a preset never saved, or saved in part, is refused too.
    if (l < 0 || t < 0 || l >= r || t >= b) return false;
    sp<FDSession> session = FDSession::getInstance();
    if (session == nullptr) return false;

    // Applied as stored: neither clamped to the frame nor reshaped. Stored and announced in one
    // step, in order with moves (provider lock, then session lock).
    const SceneControl scene{{Crop{l, t, r, b}}, kPtzWidth, kPtzHeight, 0, 0, 0};
    std::lock_guard lock(mLock);
    session->setPTZControl(scene);
    notifyCameraCropArea(scene, true);
    return true;
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation
