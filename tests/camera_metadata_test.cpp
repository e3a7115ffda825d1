// The stand-ins, in what the product relies on: camera metadata layout, add/find/update/append,
// room and validation; the queue's all-or-nothing reads and writes; and the aborts where the
// platform is undefined or aborts itself.
#include <fmq/MessageQueue.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <string.h>
#include <system/camera_metadata.h>

#include <memory>
#include <numeric>

namespace {

using Metadata = std::unique_ptr<camera_metadata_t, decltype(&free_camera_metadata)>;

// Header and entry field offsets of the platform layout.
enum : size_t { kSize = 0, kFlags = 8, kEntryCount = 12, kDataCount = 24, kDataStart = 32 };
enum : size_t { kVendorId = 40, kTag = 0, kCount = 4, kValue = 8, kType = 12 };
constexpr size_t entry(size_t index, size_t field) {
    return 48 + 16 * index + field;
}

constexpr uint32_t kExposure = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;  // int32 x1: inline
constexpr uint32_t kCrop = ANDROID_SCALER_CROP_REGION;                    // int32 x4: 16 bytes

using U32s = std::vector<uint32_t>;
U32s fields(const camera_metadata_t* m, std::initializer_list<size_t> offsets) {
    U32s out(offsets.size());
    for (size_t i = 0; i < out.size(); ++i)
        memcpy(&out[i], reinterpret_cast<const uint8_t*>(m) + offsets.begin()[i], 4);
    return out;
}
uint32_t u32(const camera_metadata_t* m, size_t offset) {
    return fields(m, {offset})[0];
}

void setU32(camera_metadata_t* m, size_t offset, uint32_t v) {
    memcpy(reinterpret_cast<uint8_t*>(m) + offset, &v, sizeof(v));
}

Metadata make(size_t entries, size_t data) {
    return Metadata(allocate_camera_metadata(entries, data), free_camera_metadata);
}

int add(camera_metadata_t* m, uint32_t tag, const std::vector<int32_t>& values) {
    return add_camera_metadata_entry(m, tag, values.data(), values.size());
}

// 0 inline {5}; 1 crop region at data offset 0; 2 fps ranges at 16; 32 of 64 data bytes used;
// then the given field set.
Metadata threeEntries(size_t offset = kFlags, uint32_t value = 0) {
    Metadata m = make(4, 64);
    add(m.get(), kExposure, {5});
    add(m.get(), kCrop, {1, 2, 3, 4});
    add(m.get(), ANDROID_CONTROL_AE_AVAILABLE_TARGET_FPS_RANGES, {15, 30, 30, 30});
    setU32(m.get(), offset, value);
    return m;
}

std::vector<int32_t> valuesAt(camera_metadata_t* m, size_t index) {
    camera_metadata_entry_t e;
    if (get_camera_metadata_entry(m, index, &e) != 0) return {};
    return std::vector<int32_t>(e.data.i32, e.data.i32 + e.count);
}

TEST(CameraMetadataTest, LayoutAddAndFindFollowThePlatform) {
    // Entry table and data 8-aligned after the header; payloads over 4 bytes at 8-aligned data
    // offsets; adding clears the sorted flag; a table exactly full takes no more
    EXPECT_EQ(calculate_camera_metadata_size(2, 5), 88u);
    EXPECT_EQ(allocate_camera_metadata(1, size_t{1} << 32), nullptr);  // capacity over 32 bits
    Metadata m = make(3, 40);
    setU32(m.get(), kFlags, 1);
    ASSERT_EQ(add(m.get(), kExposure, {-3}), 0);
    ASSERT_EQ(add(m.get(), ANDROID_CONTROL_AE_TARGET_FPS_RANGE, {15, 30}), 0);
    ASSERT_EQ(add(m.get(), kCrop, {1, 2, 3, 4}), 0);
    EXPECT_EQ(fields(m.get(), {kSize, 4, kVendorId, kDataStart, kDataCount, kFlags}),
              (U32s{136, 1, UINT32_MAX, 96, 24, 0}));
    EXPECT_EQ(fields(m.get(),
                     {entry(0, kValue), entry(1, kValue), entry(2, kValue), entry(2, kType)}),
              (U32s{static_cast<uint32_t>(-3), 0, 8, TYPE_INT32}));
    EXPECT_EQ(add(m.get(), kExposure, {1}), 1);

    // Unknown tags, missing room or values are refused
    Metadata room = make(2, 8);
    for (uint32_t tag : {uint32_t{ANDROID_CONTROL_END}, uint32_t{VENDOR_SECTION_START}, kCrop})
        EXPECT_EQ(add(room.get(), tag, {1, 2, 3, 4}), 1);
    EXPECT_EQ(add_camera_metadata_entry(room.get(), kExposure, nullptr, 1), 1);
    EXPECT_EQ(u32(room.get(), kEntryCount), 0u);

    // Find: the first match, or a bisection when flagged sorted; an absent tag is -2 either way
    ASSERT_EQ(add(room.get(), kExposure, {7}), 0);
    ASSERT_EQ(add(room.get(), kExposure, {8}), 0);
    camera_metadata_ro_entry_t e;
    for (uint32_t sorted : {0, 1}) {
        setU32(room.get(), kFlags, sorted);
        ASSERT_EQ(find_camera_metadata_ro_entry(room.get(), kExposure, &e), 0);
        EXPECT_EQ(e.index, sorted);
        EXPECT_EQ(e.data.i32[0], 7 + static_cast<int>(sorted));
        EXPECT_EQ(find_camera_metadata_ro_entry(room.get(), kCrop, &e), -2);
        EXPECT_EQ(find_camera_metadata_ro_entry(room.get(), 0, &e), -2);
    }
}

TEST(CameraMetadataTest, UpdateRewritesInPlaceOrMovesLaterDataAndNeedsRoom) {
    // entry, its new values, result, then the value field of entries 0, 1, 2 and the data count
    const std::tuple<const char*, size_t, std::vector<int32_t>, int, U32s> rows[] = {
            {"same size: in place", 1, {9, 9, 9, 9}, 0, {5, 0, 16, 32}},
            {"grows: later data moves down", 1, {1, 2, 3, 4, 5, 6}, 0, {5, 16, 0, 40}},
            {"shrinks to inline", 1, {9}, 0, {5, 9, 0, 16}},
            {"inline to out of line", 0, {7, 8}, 0, {32, 0, 16, 40}},
            {"last block resized", 2, {1, 2}, 0, {5, 0, 16, 24}},
            {"32 + 48 - 16 fits exactly", 2, std::vector<int32_t>(12), 0, {5, 0, 16, 64}},
            {"no room: 32 + 56 - 16 > 64", 2, std::vector<int32_t>(14), 1, {5, 0, 16, 32}},
            {"no such entry", 3, {1}, 1, {5, 0, 16, 32}},
            // the platform keeps the stale offset, which validation then refuses
            {"emptied out-of-line value", 2, {}, 0, {5, 0, 16, 16}},
    };
    for (const auto& [what, index, values, result, after] : rows) {
        SCOPED_TRACE(what);
        Metadata m = threeEntries(kFlags, 1);
        EXPECT_EQ(update_camera_metadata_entry(m.get(), index, values.data(), values.size(), 0),
                  result);
        EXPECT_EQ(
                fields(m.get(), {entry(0, kValue), entry(1, kValue), entry(2, kValue), kDataCount}),
                after);
        EXPECT_EQ(u32(m.get(), kFlags), 1u);
        EXPECT_TRUE(result != 0 || valuesAt(m.get(), index) == values);
        EXPECT_TRUE(index == 2 || valuesAt(m.get(), 2) == std::vector<int32_t>({15, 30, 30, 30}));
        EXPECT_EQ(validate_camera_metadata_structure(m.get(), nullptr), values.empty() ? 1 : 0);
    }
    EXPECT_EQ(update_camera_metadata_entry(nullptr, 0, nullptr, 0, nullptr), 1);
    // Entry 0, made out of line, lies after the crop: it moves down when the crop is resized
    Metadata m = threeEntries();
    const int32_t pair[2] = {7, 8}, six[6] = {};
    ASSERT_EQ(update_camera_metadata_entry(m.get(), 0, pair, 2, nullptr), 0);
    ASSERT_EQ(update_camera_metadata_entry(m.get(), 1, six, 6, nullptr), 0);
    EXPECT_EQ(fields(m.get(), {entry(0, kValue), entry(1, kValue), entry(2, kValue), kDataCount}),
              (U32s{16, 24, 0, 48}));
    EXPECT_EQ(valuesAt(m.get(), 0), (std::vector<int32_t>{7, 8}));
}

TEST(CameraMetadataTest, AppendRebasesOffsetsNeedsRoomAndOneVendor) {
    // Given a destination holding one out-of-line entry and a source of two from vendor 9
    Metadata dst = make(3, 24);
    add(dst.get(), kCrop, {1, 2, 3, 4});
    Metadata src = make(2, 8);
    add(src.get(), kExposure, {7});
    add(src.get(), ANDROID_CONTROL_AE_TARGET_FPS_RANGE, {15, 30});
    setU32(src.get(), kVendorId, 9);

    // Missing room (one slot or one byte short) or another vendor refuses it whole
    Metadata fewSlots = make(1, 64), fewBytes = make(4, 7), other = make(4, 64);
    setU32(other.get(), kVendorId, 6);
    for (camera_metadata_t* d : {fewSlots.get(), fewBytes.get(), other.get()})
        EXPECT_EQ(std::pair(append_camera_metadata(d, src.get()), u32(d, kEntryCount)),
                  std::pair(1, 0u));

    // When appended into exactly the room left, both flagged sorted
    setU32(dst.get(), kFlags, 1);
    setU32(src.get(), kFlags, 1);
    ASSERT_EQ(append_camera_metadata(dst.get(), src.get()), 0);

    // Then the source's offsets are rebased past the destination's data, the vendor is taken
    EXPECT_EQ(fields(dst.get(), {kEntryCount, kDataCount, entry(2, kValue), kVendorId, kFlags}),
              (U32s{3, 24, 16, 9, 0}));  // two non-empty blocks make an unsorted one
    EXPECT_EQ(valuesAt(dst.get(), 2), (std::vector<int32_t>{15, 30}));
    EXPECT_EQ(validate_camera_metadata_structure(dst.get(), nullptr), 0);

    // An empty destination takes the source's sorted flag
    Metadata empty = make(2, 8);
    ASSERT_EQ(append_camera_metadata(empty.get(), src.get()), 0);
    EXPECT_EQ(u32(empty.get(), kFlags), 1u);
}

TEST(CameraMetadataTest, ValidateReportsEachStructuralFault) {
    // A field set to a value, and the result. The last three pass: data past the used data but
    // inside the capacity, an unaligned data count, and a vendor tag (its type is not checked).
    const std::tuple<size_t, uint32_t, int> rows[] = {
            {kSize, 144, 1},          {kEntryCount, 5, 1},
            {kDataCount, 72, 1},      {kDataStart, 49, 1},
            {entry(0, kType), 6, 1},  {entry(0, kType), TYPE_FLOAT, 1},
            {entry(1, kValue), 4, 1}, {entry(1, kValue), 56, 1},
            {entry(0, kCount), 0, 1}, {entry(1, kValue), 48, 0},
            {kDataCount, 12, 0},      {entry(0, kTag), VENDOR_SECTION_START, 0}};
    const size_t size = calculate_camera_metadata_size(4, 64);
    for (const auto& [offset, value, result] : rows) {
        Metadata m = threeEntries(offset, value);
        EXPECT_EQ(validate_camera_metadata_structure(m.get(), &size), result) << offset;
    }
    EXPECT_EQ(validate_camera_metadata_structure(threeEntries().get(), &size), 0);
    EXPECT_EQ(validate_camera_metadata_structure(nullptr, nullptr), 1);
    camera_metadata_entry_t e;
    EXPECT_EQ(get_camera_metadata_entry(threeEntries().get(), 3, &e), 1);  // past the used ones
}

TEST(CameraMetadataDeathTest, CallsTheStandInCannotAnswerAsThePlatformWouldAbortNamingTheCase) {
    const int32_t six[6] = {}, four[4] = {};
    // The last block lies past the used data: resizing it moves a wrapped length
    EXPECT_DEATH(
            update_camera_metadata_entry(threeEntries(kDataCount, 16).get(), 2, six, 6, nullptr),
            "update_camera_metadata_entry: resized entry's data lies past the used data");
    // Rewritten in place past the data area
    EXPECT_DEATH(update_camera_metadata_entry(threeEntries(entry(1, kValue), 56).get(), 1, four, 4,
                                              nullptr),
                 "update_camera_metadata_entry: entry's data lies past the data area");
    EXPECT_DEATH(update_camera_metadata_entry(threeEntries(entry(1, kType), 9).get(), 1, four, 4,
                                              nullptr),
                 "update_camera_metadata_entry: entry of unknown type");
    EXPECT_DEATH(update_camera_metadata_entry(threeEntries().get(), 1, nullptr, 4, nullptr),
                 "update_camera_metadata_entry: NULL values");
    EXPECT_DEATH(get_camera_metadata_entry_count(nullptr),
                 "get_camera_metadata_entry_count: NULL metadata");
}

TEST(MessageQueueTest, ReadsAndWritesAreAllOrNothingInOrderAroundTheRing) {
    // Given 6 of 8 bytes queued, a write past the room or from nowhere, and a read of more than
    // is queued, move nothing; 4 read and 6 written (2 round the ring) come out in order
    android::hardware::MessageQueue<uint8_t, android::hardware::kSynchronizedReadWrite> q(8);
    std::vector<uint8_t> in(12), out(8);
    std::iota(in.begin(), in.end(), 0);
    ASSERT_TRUE(q.write(in.data(), 6));
    EXPECT_FALSE(q.write(in.data(), 3) || q.write(nullptr, 1) || q.read(out.data(), 7));
    ASSERT_TRUE(q.read(out.data(), 4) && q.write(&in[6], 6) && q.availableToWrite() == 0);
    EXPECT_TRUE(q.read(out.data(), 8) && out == std::vector<uint8_t>(in.begin() + 4, in.end()));
}

TEST(HidlSupportDeathTest, MisuseAbortsAsOnThePlatformOrWhereItIsUndefinedThere) {
    using ::android::hardware::Return;
    EXPECT_DEATH(
            { Return<void> r = ::android::hardware::Status::fromStatusT(::android::DEAD_OBJECT); },
            "Failed HIDL return status not checked: Status\\(EX_TRANSACTION_FAILED\\): "
            "'DEAD_OBJECT: '");
    ::android::hardware::hidl_vec<int> v = {1, 2};
    EXPECT_DEATH(v[2] = 0, "hidl_vec index out of range");
}

}  // namespace
