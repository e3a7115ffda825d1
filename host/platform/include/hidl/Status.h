// Host stand-in for the HIDL runtime's transport status and Return<T>.
#ifndef HOST_PLATFORM_HIDL_STATUS_H
#define HOST_PLATFORM_HIDL_STATUS_H

#include <stdint.h>

#include <string>
#include <utility>

#include <utils/Errors.h>

namespace android {
namespace hardware {

// A transport status: an exception code and, for failed transactions, a status_t.
class Status final {
  public:
    enum Exception {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,
    };

    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    static Status fromStatusT(status_t status);

    Status() = default;

    bool isOk() const { return mException == EX_NONE; }
    int32_t exceptionCode() const { return mException; }
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : OK;
    }
    // "No error", or e.g. "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '".
    std::string description() const;

  private:
    Status(int32_t exception, status_t error, std::string message)
        : mException(exception), mErrorCode(error), mMessage(std::move(message)) {}

    int32_t mException = EX_NONE;
    status_t mErrorCode = OK;
    std::string mMessage;
};

namespace details {

// The status half of every Return: a failed status must be looked at before it is dropped.
class return_status {
  public:
    return_status() = default;
    return_status(const Status& status) : mStatus(status) {}  // NOLINT: implicit
    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;
    return_status(return_status&& other) noexcept;
    return_status& operator=(return_status&& other) noexcept;
    ~return_status();

    bool isOk() const {
        mCheckedStatus = true;
        return mStatus.isOk();
    }
    bool isOkUnchecked() const { return mStatus.isOk(); }
    // Marks the status checked only when it reports a dead object.
    bool isDeadObject() const;
    std::string description() const { return mStatus.description(); }
    void assertOk() const;

  private:
    void checkDropped() const;

    Status mStatus;
    mutable bool mCheckedStatus = false;
};

}  // namespace details

template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : details::return_status(), mVal(std::move(value)) {}     // NOLINT
    Return(const Status& status) : details::return_status(status), mVal{} {}  // NOLINT
    Return(Return&& other) = default;
    Return& operator=(Return&& other) = default;

    // Reading the value of a failed call aborts, as on the platform.
    operator T() const {  // NOLINT
        assertOk();
        return mVal;
    }

  private:
    T mVal;
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() : details::return_status() {}
    Return(const Status& status) : details::return_status(status) {}  // NOLINT
    Return(Return&& other) = default;
    Return& operator=(Return&& other) = default;
};

inline Return<void> Void() {
    return Return<void>();
}

}  // namespace hardware
}  // namespace android

#endif  // HOST_PLATFORM_HIDL_STATUS_H
