// Host stand-in for android.hidl.base@1.0::IBase, the root of every HIDL interface.
#ifndef HOST_PLATFORM_ANDROID_HIDL_BASE_V1_0_IBASE_H
#define HOST_PLATFORM_ANDROID_HIDL_BASE_V1_0_IBASE_H

#include <functional>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

struct IBase : virtual public ::android::RefBase {
    static constexpr const char* descriptor = "android.hidl.base@1.0::IBase";

    using interfaceDescriptor_cb =
            std::function<void(const ::android::hardware::hidl_string& descriptor)>;

    // In-process objects answer for themselves; only their own descriptor is known here.
    virtual ::android::hardware::Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
        _hidl_cb(interfaceName());
        return ::android::hardware::Void();
    }

  protected:
    // The descriptor of the most derived interface; generated interfaces override it.
    virtual const char* interfaceName() const { return descriptor; }
};

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android

#endif  // HOST_PLATFORM_ANDROID_HIDL_BASE_V1_0_IBASE_H
