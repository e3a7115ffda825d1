// Tracking mode and track control (stub until implemented).
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


Return<TrackingMode> ZorvCameraProvider::getTrackingMode(const hidl_string&) { return TrackingMode::OFF; }
Return<void> ZorvCameraProvider::setTrackingMode(const hidl_string&, TrackingMode) { return Void(); }
Return<Status> ZorvCameraProvider::setTracking(const TrackControl&) { return Status::OK; }
void ZorvCameraProvider::notifyCameraTrackControl(const TrackControl&) {}

}  // namespace implementation
}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor
