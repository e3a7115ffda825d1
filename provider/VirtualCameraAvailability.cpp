// Virtual camera availability and info (stub until implemented).
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


Return<void> ZorvCameraProvider::setVirtualCameraAvailability(const hidl_string&, bool) { return Void(); }
Return<bool> ZorvCameraProvider::getVirtualCameraAvailability(const hidl_string&) { return false; }
Return<void> ZorvCameraProvider::setVirtualCameraInfo(const hidl_vec<CameraInfo>&) { return Void(); }
Return<void> ZorvCameraProvider::getVirtualCameraInfo(getVirtualCameraInfo_cb _hidl_cb) { _hidl_cb({}); return Void(); }
void setVirtualCameraEnabledProperty(bool) {}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
