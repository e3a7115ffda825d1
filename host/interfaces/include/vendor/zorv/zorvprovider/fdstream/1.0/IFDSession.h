// Host copy of the generated vendor.zorv.zorvprovider.fdstream@1.0::IFDSession.
#ifndef HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSION_H
#define HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSION_H

#include <android/hardware/camera/device/3.2/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSessionCallback.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace fdstream {
namespace V1_0 {

struct IFDSession : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor = "vendor.zorv.zorvprovider.fdstream@1.0::IFDSession";

    virtual ::android::hardware::Return<int32_t> setCallback(
            const ::android::sp<IFDSessionCallback>& callback) = 0;
    virtual ::android::hardware::Return<int32_t> configure(
            const ::android::hardware::camera::device::V3_2::StreamConfiguration&
                    configuration) = 0;
    virtual ::android::hardware::Return<int32_t> processCaptureRequest(
            const ::android::hardware::camera::device::V3_2::CaptureRequest& request) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V1_0
}  // namespace fdstream
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSION_H
