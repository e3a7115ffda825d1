// Metadata overrides and the zoom-in limit (stub until implemented).
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


Return<void> ZorvCameraProvider::setMetaData(const hidl_string&, uint32_t, int32_t) { return Void(); }
Return<void> ZorvCameraProvider::setMetaArray(const hidl_string&, uint32_t, const hidl_vec<int32_t>&) { return Void(); }
Return<void> ZorvCameraProvider::setZoomInLimit(const hidl_string&, uint32_t) { return Void(); }

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
