// The host HIDL runtime layer behaves as the platform's in what the product relies on.
#include <gtest/gtest.h>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;

TEST(HidlSupportTest, StatusDescriptionsMatchThePlatformTexts) {
    const std::pair<Status, const char*> rows[] = {
            {Status::ok(), "No error"},
            {Status::fromStatusT(::android::DEAD_OBJECT),
             "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '"},
            {Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED),
             "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '"},
            {Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "camera busy"),
             "Status(EX_ILLEGAL_STATE): 'camera busy'"},
            {Status::fromStatusT(-5), "Status(EX_TRANSACTION_FAILED): '-5 Input/output error: '"},
    };
    for (const auto& [status, text] : rows) EXPECT_EQ(status.description(), text);

    Return<void> dead = Status::fromStatusT(::android::DEAD_OBJECT);
    EXPECT_TRUE(dead.isDeadObject());  // checked: dropping it is fine
    Return<void> failed = Status::fromStatusT(::android::FAILED_TRANSACTION);
    EXPECT_FALSE(failed.isDeadObject());
    EXPECT_FALSE(failed.isOk());  // now checked
}

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
