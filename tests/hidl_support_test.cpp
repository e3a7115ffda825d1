// The host HIDL runtime layer aborts as the platform's does, or where the platform is undefined.
// (Status texts and dead objects: the listener and fault-injection tests.)
#include <gtest/gtest.h>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;

TEST(HidlSupportDeathTest, MisuseAbortsAsOnThePlatformOrWhereItIsUndefinedThere) {
    EXPECT_DEATH({ Return<void> r = Status::fromStatusT(::android::DEAD_OBJECT); },
                 "Failed HIDL return status not checked: Status\\(EX_TRANSACTION_FAILED\\): "
                 "'DEAD_OBJECT: '");
    EXPECT_DEATH(
            {
                Return<bool> r = Status::fromStatusT(::android::TIMED_OUT);
                bool value = r;
                (void)value;
            },
            "Attempted to retrieve value from failed HIDL call: Status\\(EX_TRANSACTION_FAILED\\): "
            "'TIMED_OUT: '");
    hidl_vec<int> v = {1, 2};
    EXPECT_DEATH(v[2] = 0, "hidl_vec index out of range");
    { Return<void> ok = Void(); }  // a successful Return may be dropped unchecked
}
