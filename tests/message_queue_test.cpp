// Message queue stand-in, in what the merge relies on: all-or-nothing reads and writes in order
// around the ring (injected failures: the merge's fault sweep).
#include <fmq/MessageQueue.h>

#include <stdint.h>

#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ByteQueue =
        android::hardware::MessageQueue<uint8_t, android::hardware::kSynchronizedReadWrite>;
using Bytes = std::vector<uint8_t>;

Bytes sequence(uint8_t first, size_t n) {
    Bytes v(n);
    std::iota(v.begin(), v.end(), first);
    return v;
}

TEST(MessageQueueTest, ReadsAndWritesAreAllOrNothingInOrderAroundTheRing) {
    // Given 6 of 8 bytes queued
    ByteQueue q(8);
    ASSERT_TRUE(q.write(sequence(0, 6).data(), 6));
    Bytes out(8);

    // Then a write past the room or from nowhere, and a read of more than is queued, move nothing
    EXPECT_FALSE(q.write(sequence(6, 3).data(), 3));
    EXPECT_FALSE(q.write(nullptr, 1));
    EXPECT_FALSE(q.read(out.data(), 7));
    EXPECT_EQ(q.availableToRead(), 6u);

    // When 4 are read and 6 more written (4 at the end of the ring, 2 at its start)
    ASSERT_TRUE(q.read(out.data(), 4));
    ASSERT_TRUE(q.write(sequence(6, 6).data(), 6));
    EXPECT_EQ(q.availableToWrite(), 0u);

    // Then the 8 come out in order
    ASSERT_TRUE(q.read(out.data(), 8));
    EXPECT_EQ(out, sequence(4, 8));
    EXPECT_EQ(q.availableToRead(), 0u);
}

}  // namespace
