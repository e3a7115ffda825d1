// Scenes and crop announcements (stub until implemented).
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
#include "ZorvCameraProvider.h"

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {
namespace implementation {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::camera::common::V1_0::Status;


Return<Status> ZorvCameraProvider::setSceneJson(const hidl_string&) { return Status::OK; }
Return<Status> ZorvCameraProvider::setScene(const SceneControl&) { return Status::OK; }
Return<void> ZorvCameraProvider::getCurrentCameraCropArea(getCurrentCameraCropArea_cb _hidl_cb) {
    _hidl_cb(SceneControl{});
    return Void();
}
void ZorvCameraProvider::notifyCameraSceneJson(const hidl_string&) {}
void ZorvCameraProvider::notifyCameraCropArea(const SceneControl&, bool) {}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
