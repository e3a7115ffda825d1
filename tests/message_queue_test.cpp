// Message queue stand-in: all-or-nothing reads and writes, wrap-around, one reader and one writer.
#include <fmq/MessageQueue.h>

#include <stdint.h>

#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>

namespace {

using android::hardware::kSynchronizedReadWrite;
using ByteQueue = android::hardware::MessageQueue<uint8_t, kSynchronizedReadWrite>;

std::vector<uint8_t> sequence(uint8_t first, size_t n) {
    std::vector<uint8_t> v(n);
    std::iota(v.begin(), v.end(), first);
    return v;
}

class MessageQueueTest : public ::testing::Test {
  protected:
    void TearDown() override { hostfault::disarmAll(); }
    ByteQueue q{8};
};

TEST_F(MessageQueueTest, NewQueueIsEmptyWithItsGeometry) {
    android::hardware::MessageQueue<int64_t, kSynchronizedReadWrite> wide(5, true);
    EXPECT_TRUE(wide.isValid());
    EXPECT_EQ(8u, wide.getQuantumSize());
    EXPECT_EQ(5u, wide.getQuantumCount());
    EXPECT_EQ(5u, wide.availableToWrite());
    EXPECT_EQ(0u, wide.availableToRead());
    EXPECT_FALSE((android::hardware::MessageQueue<int64_t, kSynchronizedReadWrite>(SIZE_MAX / 4)
                          .isValid()));
}

TEST_F(MessageQueueTest, WriteIsAllOrNothing) {
    // Given 6 of 8 bytes queued
    const std::vector<uint8_t> data = sequence(1, 6);
    ASSERT_TRUE(q.write(data.data(), 6));

    // When / Then
    EXPECT_FALSE(q.write(data.data(), 3));
    EXPECT_FALSE(q.write(nullptr, 1));
    EXPECT_FALSE(q.write(nullptr, 0));
    EXPECT_TRUE(q.write(data.data(), 0));
    EXPECT_EQ(6u, q.availableToRead());
    EXPECT_TRUE(q.write(data.data(), 2));
    EXPECT_EQ(0u, q.availableToWrite());
    std::vector<uint8_t> out(8);
    ASSERT_TRUE(q.read(out.data(), 8));
    EXPECT_EQ((std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 1, 2}), out);
}

TEST_F(MessageQueueTest, ReadIsAllOrNothing) {
    // Given
    const std::vector<uint8_t> data = sequence(10, 3);
    ASSERT_TRUE(q.write(data.data(), 3));
    uint8_t out[4] = {};

    // When / Then
    EXPECT_FALSE(q.read(out, 4));
    EXPECT_FALSE(q.read(nullptr, 1));
    EXPECT_EQ(3u, q.availableToRead());
    EXPECT_TRUE(q.read(out));
    EXPECT_EQ(10, out[0]);
    EXPECT_TRUE(q.read(out, 2));
    EXPECT_EQ(11, out[0]);
    EXPECT_EQ(12, out[1]);
    EXPECT_EQ(8u, q.availableToWrite());
}

TEST_F(MessageQueueTest, CopiesWrapAroundTheRingInOrder) {
    // Given positions moved to 4 of 8
    std::vector<uint8_t> out(8);
    ASSERT_TRUE(q.write(sequence(0, 6).data(), 6));
    ASSERT_TRUE(q.read(out.data(), 4));

    // When: 6 more bytes, 4 at the end of the ring and 2 at its start
    ASSERT_TRUE(q.write(sequence(6, 6).data(), 6));

    // Then
    ASSERT_TRUE(q.read(out.data(), 8));
    EXPECT_EQ(sequence(4, 8), out);
    EXPECT_EQ(0u, q.availableToRead());
}

TEST_F(MessageQueueTest, InjectedFailuresWriteAndConsumeNothing) {
    // Given
    const std::vector<uint8_t> data = sequence(1, 4);
    uint8_t out[4] = {};
    hostfault::arm(hostfault::kQueueWrite);

    // When / Then
    EXPECT_FALSE(q.write(data.data(), 4));
    EXPECT_EQ(0u, q.availableToRead());
    ASSERT_TRUE(q.write(data.data(), 4));
    hostfault::arm(hostfault::kQueueRead);
    EXPECT_FALSE(q.read(out, 4));
    EXPECT_EQ(4u, q.availableToRead());
    ASSERT_TRUE(q.read(out, 4));
    EXPECT_EQ(4, out[3]);
}

TEST_F(MessageQueueTest, OneReaderAndOneWriterThreadPassEveryByteInOrder) {
    // Given a stream much longer than the ring, in chunks that do not divide its size
    ByteQueue small(61);
    constexpr size_t kTotal = 200000;
    std::vector<uint8_t> received;
    received.reserve(kTotal);

    // When
    std::thread writer([&] {
        uint8_t chunk[7];
        for (size_t sent = 0; sent < kTotal;) {
            const size_t n = std::min(sizeof(chunk), kTotal - sent);
            for (size_t i = 0; i < n; ++i) chunk[i] = static_cast<uint8_t>((sent + i) % 251);
            if (small.write(chunk, n)) {
                sent += n;
            } else {
                std::this_thread::yield();
            }
        }
    });
    uint8_t chunk[5];
    while (received.size() < kTotal) {
        const size_t n = std::min(sizeof(chunk), kTotal - received.size());
        if (small.read(chunk, n)) {
            received.insert(received.end(), chunk, chunk + n);
        } else {
            std::this_thread::yield();
        }
    }
    writer.join();

    // Then
    for (size_t i = 0; i < kTotal; ++i) ASSERT_EQ(i % 251, received[i]) << i;
}

}  // namespace
