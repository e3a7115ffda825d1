// Host copy of the generated vendor.zorv.zorvprovider.fdstream@1.0::IFDSessionCallback.
#ifndef HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSIONCALLBACK_H
#define HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSIONCALLBACK_H

#include <android/hidl/base/1.0/IBase.h>

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace fdstream {
namespace V1_0 {

struct IFDSessionCallback : public ::android::hidl::base::V1_0::IBase {
    static constexpr const char* descriptor =
            "vendor.zorv.zorvprovider.fdstream@1.0::IFDSessionCallback";

    virtual ::android::hardware::Return<void> onFrameProcessed(uint32_t frameNumber,
                                                               int32_t status) = 0;

  protected:
    const char* interfaceName() const override { return descriptor; }
};

}  // namespace V1_0
}  // namespace fdstream
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // HIDL_GENERATED_VENDOR_ZORV_ZORVPROVIDER_FDSTREAM_V1_0_IFDSESSIONCALLBACK_H
