// The host HIDL runtime layer behaves as the platform's in what the product relies on.
#include <gtest/gtest.h>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;

TEST(HidlSupportTest, StatusDescriptionsMatchThePlatformTexts) {
    EXPECT_EQ(Status::ok().description(), "No error");
    EXPECT_EQ(Status::fromStatusT(::android::DEAD_OBJECT).description(),
              "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    EXPECT_EQ(Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED).description(),
              "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '");
    EXPECT_EQ(Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "camera busy").description(),
              "Status(EX_ILLEGAL_STATE): 'camera busy'");
    EXPECT_EQ(Status::fromStatusT(-5).description(),
              "Status(EX_TRANSACTION_FAILED): '-5 Input/output error: '");
    EXPECT_EQ(Status::fromExceptionCode(-42).description(), "Status(-42): ''");
}

TEST(HidlSupportTest, DeadObjectIsRecognisedAndOnlyThenMarksTheStatusChecked) {
    Return<void> dead = Status::fromStatusT(::android::DEAD_OBJECT);
    EXPECT_TRUE(dead.isDeadObject());  // checked: dropping it is fine

    Return<void> failed = Status::fromStatusT(::android::FAILED_TRANSACTION);
    EXPECT_FALSE(failed.isDeadObject());
    EXPECT_FALSE(failed.isOk());  // now checked
}

TEST(HidlSupportDeathTest, UncheckedFailedReturnAndValueOfFailedCallAbort) {
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
    // A successful Return may be dropped unchecked.
    { Return<void> ok = Void(); }
}

TEST(HidlSupportTest, VectorOwnershipFollowsSetToExternalAndMoves) {
    // An owned external buffer replaces (and frees) the previous one; ASan checks new[]/delete[].
    hidl_vec<uint8_t> v = {1, 2, 3};
    uint8_t* owned = new uint8_t[4]{9, 8, 7, 6};
    v.setToExternal(owned, 4, /*shouldOwn=*/true);
    EXPECT_EQ(v.data(), owned);
    EXPECT_EQ(v.size(), 4u);

    // A moved-from vector keeps pointer and size but no longer owns them.
    hidl_vec<uint8_t> w = std::move(v);
    EXPECT_EQ(w.data(), owned);
    EXPECT_EQ(v.data(), owned);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(v.size(), 4u);

    // A non-owned buffer is never freed by the vector.
    uint8_t local[2] = {5, 5};
    w.setToExternal(local, 2);
    EXPECT_EQ(w[1], 5);

    // Copies are deep.
    hidl_vec<uint8_t> copy = w;
    copy[0] = 1;
    EXPECT_EQ(local[0], 5);
}

TEST(HidlSupportTest, StringsCopyDeepAndCompareByBytes) {
    hidl_string empty;
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(empty.size(), 0u);

    const char withNul[] = {'a', '\0', 'b'};
    hidl_string s(withNul, 3);
    hidl_string t = s;
    EXPECT_EQ(t.size(), 3u);
    EXPECT_EQ(std::string(t), std::string(withNul, 3));
    EXPECT_NE(t, hidl_string("a"));
    EXPECT_NE(t.c_str(), s.c_str());
}
