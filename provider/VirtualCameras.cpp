// Virtual camera registry (stub until implemented).
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


Return<VirtualCameraCapability> ZorvCameraProvider::getVirtualCameraCapability(const hidl_string&) { return VirtualCameraCapability::NOT_SUPPORTED; }
Return<void> ZorvCameraProvider::setVirtualCameraCapability(const hidl_string&, VirtualCameraCapability) { return Void(); }
Return<void> ZorvCameraProvider::getVirtualCameraList(const hidl_string&, getVirtualCameraList_cb _hidl_cb) { _hidl_cb({}); return Void(); }
Return<void> ZorvCameraProvider::setVirtualCameraList(const hidl_string&, const hidl_vec<hidl_string>&) { return Void(); }
Return<void> ZorvCameraProvider::setMaxVirtualCameras(const hidl_string&, uint32_t) { return Void(); }
Return<uint32_t> ZorvCameraProvider::getMaxVirtualCameras(const hidl_string&) { return 0u; }
void setMaxVirtualCamProperty(int) {}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
