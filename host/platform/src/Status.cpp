// Transport status texts and the abort on a failed status that nobody looked at.
#define LOG_TAG "HidlStatus"
#include <hidl/Status.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <android/log.h>

namespace android {
namespace hardware {
namespace {

std::string exceptionToString(int32_t ex) {
    switch (ex) {
        case Status::EX_NONE:
            return "EX_NONE";
        case Status::EX_SECURITY:
            return "EX_SECURITY";
        case Status::EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case Status::EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case Status::EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case Status::EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case Status::EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case Status::EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case Status::EX_HAS_REPLY_HEADER:
            return "EX_HAS_REPLY_HEADER";
        case Status::EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
    }
    return std::to_string(ex);
}

std::string statusToString(status_t s) {
    switch (s) {
        case OK:
            return "OK";
        case UNKNOWN_ERROR:
            return "UNKNOWN_ERROR";
        case NO_MEMORY:
            return "NO_MEMORY";
        case INVALID_OPERATION:
            return "INVALID_OPERATION";
        case BAD_VALUE:
            return "BAD_VALUE";
        case BAD_TYPE:
            return "BAD_TYPE";
        case NAME_NOT_FOUND:
            return "NAME_NOT_FOUND";
        case PERMISSION_DENIED:
            return "PERMISSION_DENIED";
        case NO_INIT:
            return "NO_INIT";
        case ALREADY_EXISTS:
            return "ALREADY_EXISTS";
        case DEAD_OBJECT:
            return "DEAD_OBJECT";
        case FAILED_TRANSACTION:
            return "FAILED_TRANSACTION";
        case BAD_INDEX:
            return "BAD_INDEX";
        case NOT_ENOUGH_DATA:
            return "NOT_ENOUGH_DATA";
        case WOULD_BLOCK:
            return "WOULD_BLOCK";
        case TIMED_OUT:
            return "TIMED_OUT";
        case UNKNOWN_TRANSACTION:
            return "UNKNOWN_TRANSACTION";
        case FDS_NOT_ALLOWED:
            return "FDS_NOT_ALLOWED";
    }
    return std::to_string(s) + " " + strerror(-s);
}

// The platform's runtime stops the process with a fatal log line; on the host that line goes to
// stderr in the host logger's form, and to the Android log.
[[noreturn]] void fatal(const std::string& text) {
    char when[32];
    time_t now = time(nullptr);
    struct tm local;
    strftime(when, sizeof(when), "%m-%d %H:%M:%S", localtime_r(&now, &local));
    fprintf(stderr, "HidlStatus F %s %5d %5ld Status.cpp] %s\n", when, getpid(),
            static_cast<long>(syscall(SYS_gettid)), text.c_str());
    __android_log_write(ANDROID_LOG_FATAL, LOG_TAG, text.c_str());
    abort();
}

}  // namespace

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return fromExceptionCode(exceptionCode, "");
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    return Status(exceptionCode, exceptionCode == EX_TRANSACTION_FAILED ? FAILED_TRANSACTION : OK,
                  message);
}

Status Status::fromStatusT(status_t status) {
    if (status == OK) return Status();
    return Status(EX_TRANSACTION_FAILED, status, "");
}

std::string Status::description() const {
    if (mException == EX_NONE) return "No error";
    std::string text = "Status(" + exceptionToString(mException) + "): '";
    if (mException == EX_TRANSACTION_FAILED) text += statusToString(mErrorCode) + ": ";
    return text + mMessage + "'";
}

namespace details {

void logAlwaysFatal(const char* message) {
    fatal(message);
}

return_status::return_status(return_status&& other) noexcept {
    *this = std::move(other);
}

return_status& return_status::operator=(return_status&& other) noexcept {
    checkDropped();
    mStatus = other.mStatus;
    mCheckedStatus = other.mCheckedStatus;
    other.mCheckedStatus = true;
    return *this;
}

return_status::~return_status() {
    checkDropped();
}

bool return_status::isDeadObject() const {
    bool dead = mStatus.exceptionCode() == Status::EX_TRANSACTION_FAILED &&
                mStatus.transactionError() == DEAD_OBJECT;
    if (dead) mCheckedStatus = true;
    return dead;
}

void return_status::assertOk() const {
    if (!isOk()) {
        fatal("Attempted to retrieve value from failed HIDL call: " + description());
    }
}

void return_status::checkDropped() const {
    if (!mCheckedStatus && !isOkUnchecked()) {
        fatal("Failed HIDL return status not checked: " + description());
    }
}

}  // namespace details
}  // namespace hardware
}  // namespace android
