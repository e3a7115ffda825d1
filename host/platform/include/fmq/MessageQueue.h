// Host stand-in for the fast message queue: a bounded ring for one reader and one writer.
#ifndef HOST_PLATFORM_FMQ_MESSAGEQUEUE_H
#define HOST_PLATFORM_FMQ_MESSAGEQUEUE_H

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <type_traits>

#include <hidl/MQDescriptor.h>
#include <hostfault/FaultInjection.h>

namespace android {
namespace hardware {

// Elements live in a heap ring instead of shared memory; the read and write positions are
// 64-bit counters that only grow, so their difference is what is queued. The writer publishes
// with a release store of the write counter and the reader frees room with a release store of
// the read counter; each side acquires the other's counter before touching the ring.
// Reads and writes are all-or-nothing.
template <typename T, MQFlavor flavor>
struct MessageQueue {
    static_assert(flavor == kSynchronizedReadWrite, "only the synchronized flavour is provided");
    static_assert(std::is_trivially_copyable<T>::value, "elements are copied as bytes");

  public:
    // The event flag word is not provided on the host; the argument is accepted and ignored.
    explicit MessageQueue(size_t numElementsInQueue, bool configureEventFlagWord = false) {
        (void)configureEventFlagWord;
        if (numElementsInQueue > SIZE_MAX / sizeof(T)) return;
        mRing.reset(new (std::nothrow) T[numElementsInQueue == 0 ? 1 : numElementsInQueue]);
        if (mRing) mQuantumCount = numElementsInQueue;
    }
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    bool isValid() const { return mRing != nullptr; }
    size_t getQuantumSize() const { return sizeof(T); }
    size_t getQuantumCount() const { return mQuantumCount; }

    size_t availableToRead() const {
        return static_cast<size_t>(mWritePos.load(std::memory_order_acquire) -
                                   mReadPos.load(std::memory_order_acquire));
    }
    size_t availableToWrite() const { return mQuantumCount - availableToRead(); }

    bool write(const T* data) { return write(data, 1); }
    bool read(T* data) { return read(data, 1); }

    // False, and nothing written, unless all count elements fit.
    bool write(const T* data, size_t count) {
        if (hostfault::shouldFail(hostfault::kQueueWrite)) return false;
        if (!isValid() || data == nullptr || count > availableToWrite()) return false;
        if (count == 0) return true;
        const uint64_t pos = mWritePos.load(std::memory_order_relaxed);
        const size_t start = static_cast<size_t>(pos % mQuantumCount);
        const size_t first = std::min(count, mQuantumCount - start);
        memcpy(&mRing[start], data, first * sizeof(T));
        memcpy(&mRing[0], data + first, (count - first) * sizeof(T));
        mWritePos.store(pos + count, std::memory_order_release);
        return true;
    }

    // False, and nothing consumed, unless count elements are queued.
    bool read(T* data, size_t count) {
        if (hostfault::shouldFail(hostfault::kQueueRead)) return false;
        if (!isValid() || data == nullptr || count > availableToRead()) return false;
        if (count == 0) return true;
        const uint64_t pos = mReadPos.load(std::memory_order_relaxed);
        const size_t start = static_cast<size_t>(pos % mQuantumCount);
        const size_t first = std::min(count, mQuantumCount - start);
        memcpy(data, &mRing[start], first * sizeof(T));
        memcpy(data + first, &mRing[0], (count - first) * sizeof(T));
        mReadPos.store(pos + count, std::memory_order_release);
        return true;
    }

  private:
    std::unique_ptr<T[]> mRing;
    size_t mQuantumCount = 0;
    std::atomic<uint64_t> mReadPos{0};   // advanced by the reader only
    std::atomic<uint64_t> mWritePos{0};  // advanced by the writer only
};

}  // namespace hardware
}  // namespace android

#endif  // HOST_PLATFORM_FMQ_MESSAGEQUEUE_H
