// What the provider's tests share: the test doubles, the names and a few one-line probes.
#ifndef TESTS_SUPPORT_PROVIDERTEST_H
#define TESTS_SUPPORT_PROVIDERTEST_H

#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include <cutils/properties.h>
#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "kit/Format.h"
#include "kit/RecordingListener.h"
#include "support/LogCapture.h"
#include "support/RecordingEngine.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

// Test access to provider state that has no interface method.
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

// Readable GoogleTest output for the crop records (found by argument lookup).
namespace vendor::zorv::zorvprovider::zorvprovider::V2_4 {

inline void PrintTo(const Crop& c, std::ostream* os) {
    *os << ::kit::formatCrop(c);
}

inline void PrintTo(const SceneControl& s, std::ostream* os) {
    *os << ::kit::formatScene(s);
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4

namespace testing_support {

using namespace kit;
using namespace ::vendor::zorv::zorvprovider::zorvprovider::V2_4;
using namespace ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine;
using Peer = ZorvCameraProviderTestPeer;

// The property's text, or "" when it was never set.
inline std::string prop(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

inline void setProp(const std::string& name, const std::string& value) {
    property_set(name.c_str(), value.c_str());
}
using Strings = std::vector<std::string>;
using Lines = std::vector<LogLine>;

const std::string kDead = "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '";
const std::string kFailed = "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '";
const Crop kFull{0, 0, 1280, 720};

inline void setMode(int32_t mode) {
    std::lock_guard lock(FDSession::mLock);
    FDSession::getInstance()->mTrackingMode = mode;
}
inline int32_t sessionMode() {
    std::lock_guard lock(FDSession::mLock);
    return FDSession::getInstance()->mTrackingMode;
}
inline SceneControl ptz() {
    std::lock_guard lock(FDSession::mLock);
    return FDSession::getInstance()->mPTZControl;
}
inline std::string sceneText(const SceneControl& scene) {
    hidl_string text;
    ZorvCameraProvider::buildSceneJson(scene, text);
    return text;
}
inline Lines providerLines(int minPriority = 0) {
    Lines out;
    for (const LogLine& l : LogCapture::linesWithTag(kProviderTag)) {
        if (l.priority >= minPriority) out.push_back(l);
    }
    return out;
}
// After every call has returned: the session's mode, the talker-tracking property and each
// listener's last tracking notification agree (3 runs as 2), and in mode 0 each listener's
// last crop is the crop in force (when `crops`).
inline void expectAgreement(const std::vector<sp<RecordingListener>>& listeners,
                            bool crops = true) {
    const int32_t mode = sessionMode();
    EXPECT_EQ(prop("vendor.talkertracking.flag"), std::to_string(mode));
    for (const sp<RecordingListener>& l : listeners) {
        std::string heard;  // the last mode `l` was told
        for (const std::string& e : l->events()) {
            if (e.rfind("cameraDeviceTracking", 0) == 0) heard = e.substr(e.rfind(' ') + 1);
        }
        if (!heard.empty() || !crops) {
            EXPECT_TRUE(heard == std::to_string(mode) || (heard == "3" && mode == 2)) << heard;
        }
        // In mode 0 the last crop heard is the crop in force.
        EXPECT_EQ(crops && mode == 0 && !l->crops().empty() ? l->crops().back() : ptz(), ptz());
    }
}

}  // namespace testing_support

#endif  // TESTS_SUPPORT_PROVIDERTEST_H
