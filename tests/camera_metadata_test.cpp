// Camera metadata stand-in: buffer layout, entry add/find/update, append, validation, tag tables.
#include <system/camera_metadata.h>

#include <stdlib.h>
#include <string.h>

#include <memory>
#include <vector>

#include <camera/NdkCameraMetadata.h>
#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>

namespace {

using Metadata = std::unique_ptr<camera_metadata_t, decltype(&free_camera_metadata)>;

// Header and entry field offsets of the platform layout.
enum : size_t { kSize = 0, kVersion = 4, kFlags = 8, kEntryCount = 12, kEntryCap = 16 };
enum : size_t { kEntriesStart = 20, kDataCount = 24, kDataCap = 28, kDataStart = 32 };
enum : size_t { kPadding = 36, kVendorId = 40 };
enum : size_t { kTag = 0, kCount = 4, kValue = 8, kType = 12 };
constexpr size_t entry(size_t index, size_t field) {
    return 48 + 16 * index + field;
}

static_assert(int{ACAMERA_TYPE_BYTE} == TYPE_BYTE && int{ACAMERA_TYPE_RATIONAL} == TYPE_RATIONAL &&
                      int{ACAMERA_NUM_TYPES} == NUM_TYPES,
              "NDK and buffer type codes agree");

uint8_t* raw(camera_metadata_t* m) {
    return reinterpret_cast<uint8_t*>(m);
}

uint32_t u32(camera_metadata_t* m, size_t offset) {
    uint32_t v;
    memcpy(&v, raw(m) + offset, sizeof(v));
    return v;
}

void setU32(camera_metadata_t* m, size_t offset, uint32_t v) {
    memcpy(raw(m) + offset, &v, 4);
}

uint64_t vendorId(camera_metadata_t* m) {
    uint64_t v;
    memcpy(&v, raw(m) + kVendorId, sizeof(v));
    return v;
}

void setVendorId(camera_metadata_t* m, uint64_t v) {
    memcpy(raw(m) + kVendorId, &v, 8);
}

std::vector<int32_t> i32s(const camera_metadata_entry_t& e) {
    return std::vector<int32_t>(e.data.i32, e.data.i32 + e.count);
}

class CameraMetadataTest : public ::testing::Test {
  protected:
    void TearDown() override { hostfault::disarmAll(); }

    Metadata make(size_t entries, size_t data) {
        return Metadata(allocate_camera_metadata(entries, data), free_camera_metadata);
    }

    void add(camera_metadata_t* m, uint32_t tag, const std::vector<int32_t>& values) {
        ASSERT_EQ(0, add_camera_metadata_entry(m, tag, values.data(), values.size()));
    }

    std::vector<int32_t> valuesOf(camera_metadata_t* m, uint32_t tag) {
        camera_metadata_entry_t e;
        EXPECT_EQ(0, find_camera_metadata_entry(m, tag, &e));
        return i32s(e);
    }
};

TEST_F(CameraMetadataTest, SizesAndHeaderFollowThePlatformLayoutAndPlaceWritesOnlyTheHeader) {
    // Sizes align the entry table and the data to 8 bytes
    EXPECT_EQ(88u, calculate_camera_metadata_size(2, 5));
    EXPECT_EQ(288u, calculate_camera_metadata_size(9, 96));
    EXPECT_EQ(48u, calculate_camera_metadata_size(0, 0));
    EXPECT_EQ(56u, calculate_camera_metadata_size(0, 1));
    EXPECT_EQ(1u, get_camera_metadata_size(nullptr));

    // An allocated block has the platform header
    Metadata m = make(3, 20);
    ASSERT_NE(nullptr, m);
    const std::pair<size_t, uint32_t> header[] = {
            {kSize, 120},        {kVersion, 1},   {kFlags, 0},    {kEntryCount, 0}, {kEntryCap, 3},
            {kEntriesStart, 48}, {kDataCount, 0}, {kDataCap, 20}, {kDataStart, 96}};
    for (const auto& [offset, value] : header) EXPECT_EQ(value, u32(m.get(), offset)) << offset;
    EXPECT_EQ(UINT64_MAX, vendorId(m.get()));
    EXPECT_EQ(120u, get_camera_metadata_size(m.get()));
    EXPECT_EQ(3u, get_camera_metadata_entry_capacity(m.get()));
    EXPECT_EQ(20u, get_camera_metadata_data_capacity(m.get()));
    EXPECT_EQ(0, validate_camera_metadata_structure(m.get(), nullptr));

    // Placing needs the calculated size and leaves everything past the header as it was
    alignas(8) uint8_t buffer[200];
    memset(buffer, 0xAB, sizeof(buffer));
    EXPECT_EQ(nullptr, place_camera_metadata(nullptr, 200, 2, 5));
    EXPECT_EQ(nullptr, place_camera_metadata(buffer, 87, 2, 5));
    camera_metadata_t* placed = place_camera_metadata(buffer, sizeof(buffer), 2, 5);
    ASSERT_EQ(static_cast<void*>(buffer), placed);
    EXPECT_EQ(88u, u32(placed, kSize));
    EXPECT_EQ(80u, u32(placed, kDataStart));
    EXPECT_EQ(0xABABABABu, u32(placed, kPadding));
    for (size_t i = 48; i < sizeof(buffer); ++i) ASSERT_EQ(0xAB, buffer[i]) << i;
}

TEST_F(CameraMetadataTest, AddStoresSmallPayloadsInlineAndLargerOnesAt8AlignedOffsets) {
    // Given a block over dirty memory, flagged sorted
    alignas(8) uint8_t buffer[176];
    memset(buffer, 0xAB, sizeof(buffer));
    camera_metadata_t* m = place_camera_metadata(buffer, sizeof(buffer), 4, 64);
    ASSERT_NE(nullptr, m);
    setU32(m, kFlags, 1);
    const uint8_t effects[] = {1, 2, 3};

    // When
    add(m, ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, {-3});
    add(m, ANDROID_SCALER_CROP_REGION, {0, 0, 1280, 720});
    ASSERT_EQ(0, add_camera_metadata_entry(m, ANDROID_JPEG_GPS_PROCESSING_METHOD, "HELLO", 5));
    ASSERT_EQ(0, add_camera_metadata_entry(m, ANDROID_CONTROL_AVAILABLE_EFFECTS, effects, 3));

    // Then: 16-byte slots, zeroed before filling
    const uint8_t slot0[16] = {0x01, 0, 1, 0, 1, 0, 0, 0, 0xFD, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0};
    EXPECT_EQ(0, memcmp(slot0, buffer + entry(0, 0), 16));
    const uint8_t slot3[16] = {0x18, 0, 1, 0, 3, 0, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0};
    EXPECT_EQ(0, memcmp(slot3, buffer + entry(3, 0), 16));
    EXPECT_EQ(0u, u32(m, entry(1, kValue)));
    EXPECT_EQ(16u, u32(m, entry(2, kValue)));
    EXPECT_EQ(24u, u32(m, kDataCount));
    EXPECT_EQ(4u, u32(m, kEntryCount));
    EXPECT_EQ(0u, u32(m, kFlags));
    EXPECT_EQ(0, memcmp("HELLO", buffer + 112 + 16, 5));
    EXPECT_EQ(0xAB, buffer[112 + 21]);  // the alignment tail is left as it was
    camera_metadata_entry_t e;
    ASSERT_EQ(0, find_camera_metadata_entry(m, ANDROID_SCALER_CROP_REGION, &e));
    EXPECT_EQ(buffer + 112, e.data.u8);
    EXPECT_EQ((std::vector<int32_t>{0, 0, 1280, 720}), i32s(e));
    ASSERT_EQ(0, find_camera_metadata_entry(m, ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, &e));
    EXPECT_EQ(buffer + entry(0, kValue), e.data.u8);
    EXPECT_EQ(0, validate_camera_metadata_structure(m, nullptr));
}

TEST_F(CameraMetadataTest, AddRefusesUnknownTagsFullTablesMissingDataAndNoRoom) {
    // Given one free slot and 8 free data bytes
    Metadata m = make(2, 24);
    add(m.get(), ANDROID_SCALER_CROP_REGION, {1, 2, 3, 4});
    const int32_t v[3] = {1, 2, 3};

    // When / Then
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), ANDROID_CONTROL_END, v, 1));
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), ANDROID_SECTION_COUNT << 16, v, 1));
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), VENDOR_SECTION_START, v, 1));
    EXPECT_EQ(1, add_camera_metadata_entry(nullptr, ANDROID_SCALER_CROP_REGION, v, 1));
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), ANDROID_SCALER_CROP_REGION, nullptr, 1));
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), ANDROID_SCALER_CROP_REGION, v, 3));
    EXPECT_EQ(1u, get_camera_metadata_entry_count(m.get()));
    EXPECT_EQ(16u, get_camera_metadata_data_count(m.get()));
    EXPECT_EQ(0, add_camera_metadata_entry(m.get(), ANDROID_SCALER_CROP_REGION, v, 2));
    EXPECT_EQ(1, add_camera_metadata_entry(m.get(), ANDROID_CONTROL_AE_LOCK, v, 0));  // full
}

TEST_F(CameraMetadataTest, FindTakesFirstMatchUnlessTheBlockIsFlaggedSorted) {
    // Given tags C, A, C in that order
    const uint32_t c = ANDROID_SCALER_CROP_REGION;
    Metadata m = make(3, 32);
    add(m.get(), c, {1, 1, 1, 1});
    add(m.get(), ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, {1});
    add(m.get(), c, {2, 2, 2, 2});
    camera_metadata_ro_entry_t e;

    // When / Then: unsorted, linear
    ASSERT_EQ(0, find_camera_metadata_ro_entry(m.get(), c, &e));
    EXPECT_EQ(0u, e.index);
    EXPECT_EQ(-2, find_camera_metadata_ro_entry(m.get(), ANDROID_SENSOR_TIMESTAMP, &e));
    EXPECT_EQ(1, find_camera_metadata_ro_entry(nullptr, c, &e));
    EXPECT_EQ(1, find_camera_metadata_ro_entry(m.get(), c, nullptr));

    // When / Then: flagged sorted, a bisection that never looks at index 0
    setU32(m.get(), kFlags, 1);
    ASSERT_EQ(0, find_camera_metadata_ro_entry(m.get(), c, &e));
    EXPECT_EQ(2u, e.index);
    ASSERT_EQ(0, get_camera_metadata_ro_entry(m.get(), 1, &e));
    EXPECT_EQ(1, e.data.i32[0]);
    EXPECT_EQ(1, get_camera_metadata_ro_entry(m.get(), 3, &e));
}

TEST_F(CameraMetadataTest, UpdateRewritesInPlaceOrMovesLaterDataAndNeedsRoom) {
    // Each case starts from: 0 inline {5}; 1 crop region at offset 0; 2 fps ranges at offset 16;
    // 32 of 64 data bytes used
    auto fresh = [this] {
        Metadata m = make(4, 64);
        add(m.get(), ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, {5});
        add(m.get(), ANDROID_SCALER_CROP_REGION, {1, 2, 3, 4});
        add(m.get(), ANDROID_CONTROL_AE_AVAILABLE_TARGET_FPS_RANGES, {15, 30, 30, 30});
        return m;
    };
    camera_metadata_entry_t out{};

    // The same size rewrites in place and keeps the sorted flag
    Metadata m = fresh();
    setU32(m.get(), kFlags, 1);
    const int32_t four[4] = {10, 20, 30, 40};
    ASSERT_EQ(0, update_camera_metadata_entry(m.get(), 1, four, 4, &out));
    EXPECT_EQ(0u, u32(m.get(), entry(1, kValue)));
    EXPECT_EQ(32u, get_camera_metadata_data_count(m.get()));
    EXPECT_EQ(1u, out.index);
    EXPECT_EQ((std::vector<int32_t>{10, 20, 30, 40}), i32s(out));
    EXPECT_EQ(1u, u32(m.get(), kFlags));

    // Growing moves later data down and appends the new block
    m = fresh();
    const int32_t six[6] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(0, update_camera_metadata_entry(m.get(), 1, six, 6, &out));
    EXPECT_EQ(0u, u32(m.get(), entry(2, kValue)));
    EXPECT_EQ((std::vector<int32_t>{15, 30, 30, 30}),
              valuesOf(m.get(), ANDROID_CONTROL_AE_AVAILABLE_TARGET_FPS_RANGES));
    EXPECT_EQ(16u, u32(m.get(), entry(1, kValue)));
    EXPECT_EQ((std::vector<int32_t>{1, 2, 3, 4, 5, 6}), i32s(out));
    EXPECT_EQ(40u, get_camera_metadata_data_count(m.get()));
    EXPECT_EQ(0, validate_camera_metadata_structure(m.get(), nullptr));

    // Shrinking to inline, then inline to out of line
    m = fresh();
    const int32_t one[1] = {9}, two[2] = {7, 8};
    ASSERT_EQ(0, update_camera_metadata_entry(m.get(), 1, one, 1, nullptr));
    EXPECT_EQ(9u, u32(m.get(), entry(1, kValue)));
    EXPECT_EQ(0u, u32(m.get(), entry(2, kValue)));
    EXPECT_EQ(16u, get_camera_metadata_data_count(m.get()));
    ASSERT_EQ(0, update_camera_metadata_entry(m.get(), 0, two, 2, &out));
    EXPECT_EQ(16u, u32(m.get(), entry(0, kValue)));
    EXPECT_EQ((std::vector<int32_t>{7, 8}), i32s(out));
    EXPECT_EQ(24u, get_camera_metadata_data_count(m.get()));
    EXPECT_EQ(0, validate_camera_metadata_structure(m.get(), nullptr));

    // No room (32 + 56 - 16 > 64) or a bad index changes nothing
    m = fresh();
    const std::vector<uint8_t> before(raw(m.get()),
                                      raw(m.get()) + get_camera_metadata_size(m.get()));
    const int32_t zeros[14] = {};
    EXPECT_EQ(1, update_camera_metadata_entry(m.get(), 2, zeros, 14, &out));
    EXPECT_EQ(1, update_camera_metadata_entry(m.get(), 3, zeros, 1, &out));
    EXPECT_EQ(1, update_camera_metadata_entry(nullptr, 0, zeros, 1, &out));
    EXPECT_EQ(before, std::vector<uint8_t>(raw(m.get()), raw(m.get()) + before.size()));
    // and 32 + 48 - 16 fits exactly, counting the bytes the old block frees
    EXPECT_EQ(0, update_camera_metadata_entry(m.get(), 2, zeros, 12, &out));
    EXPECT_EQ(64u, get_camera_metadata_data_count(m.get()));

    // Emptying an out-of-line value keeps its stale offset, which validation refuses
    m = fresh();
    ASSERT_EQ(0, update_camera_metadata_entry(m.get(), 2, nullptr, 0, &out));
    EXPECT_EQ(0u, out.count);
    EXPECT_EQ(16u, u32(m.get(), entry(2, kValue)));
    EXPECT_EQ(16u, get_camera_metadata_data_count(m.get()));
    EXPECT_EQ(1, validate_camera_metadata_structure(m.get(), nullptr));
}

TEST_F(CameraMetadataTest,
       AppendRebasesOffsetsNeedsRoomAndOneVendorAndKeepsSortedOnlyFromAnEmptySide) {
    // Given
    Metadata dst = make(4, 64);
    add(dst.get(), ANDROID_SCALER_CROP_REGION, {1, 2, 3, 4});
    Metadata src = make(2, 32);
    add(src.get(), ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, {7});
    add(src.get(), ANDROID_CONTROL_AE_TARGET_FPS_RANGE, {15, 30});
    setVendorId(src.get(), 9);

    // When
    ASSERT_EQ(0, append_camera_metadata(dst.get(), src.get()));

    // Then
    EXPECT_EQ(3u, get_camera_metadata_entry_count(dst.get()));
    EXPECT_EQ(24u, get_camera_metadata_data_count(dst.get()));
    EXPECT_EQ(7u, u32(dst.get(), entry(1, kValue)));
    EXPECT_EQ(16u, u32(dst.get(), entry(2, kValue)));
    EXPECT_EQ((std::vector<int32_t>{15, 30}),
              valuesOf(dst.get(), ANDROID_CONTROL_AE_TARGET_FPS_RANGE));
    EXPECT_EQ(9u, vendorId(dst.get()));
    EXPECT_EQ(0, validate_camera_metadata_structure(dst.get(), nullptr));

    // Missing room or a different vendor refuses the append: src has 2 entries, 8 data bytes
    src = make(2, 8);
    add(src.get(), ANDROID_CONTROL_AE_LOCK, {});
    add(src.get(), ANDROID_CONTROL_AE_TARGET_FPS_RANGE, {15, 30});
    Metadata fewSlots = make(1, 64), fewBytes = make(4, 7), other = make(4, 64);
    setVendorId(src.get(), 5);
    setVendorId(other.get(), 6);

    EXPECT_EQ(1, append_camera_metadata(fewSlots.get(), src.get()));
    EXPECT_EQ(1, append_camera_metadata(fewBytes.get(), src.get()));
    EXPECT_EQ(1, append_camera_metadata(other.get(), src.get()));
    EXPECT_EQ(1, append_camera_metadata(nullptr, src.get()));
    EXPECT_EQ(0u, get_camera_metadata_entry_count(fewSlots.get()) +
                          get_camera_metadata_entry_count(fewBytes.get()) +
                          get_camera_metadata_entry_count(other.get()));
    setVendorId(other.get(), 5);
    EXPECT_EQ(0, append_camera_metadata(other.get(), src.get()));

    // The sorted bit follows whichever side was empty
    Metadata sortedSrc = make(1, 0), empty = make(2, 0);
    dst = make(4, 0);
    add(sortedSrc.get(), ANDROID_CONTROL_AE_LOCK, {});
    setU32(sortedSrc.get(), kFlags, 1);

    ASSERT_EQ(0, append_camera_metadata(dst.get(), sortedSrc.get()));  // empty dst takes it
    EXPECT_EQ(1u, u32(dst.get(), kFlags));
    ASSERT_EQ(0, append_camera_metadata(dst.get(), empty.get()));  // empty src keeps it
    EXPECT_EQ(1u, u32(dst.get(), kFlags));
    ASSERT_EQ(0, append_camera_metadata(dst.get(), sortedSrc.get()));  // both non-empty
    EXPECT_EQ(0u, u32(dst.get(), kFlags));
}

TEST_F(CameraMetadataTest, ValidateReportsEachStructuralFault) {
    // Given a sound block: 2 slots, 32 data bytes, data at 80, size 112
    auto good = [this] {
        Metadata m = make(2, 32);
        add(m.get(), ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, {5});
        add(m.get(), ANDROID_SCALER_CROP_REGION, {1, 2, 3, 4});
        return m;
    };
    auto validateAfter = [&](size_t offset, uint32_t value, size_t expected = 112) {
        Metadata m = good();
        setU32(m.get(), offset, value);
        return validate_camera_metadata_structure(m.get(), &expected);
    };
    const size_t small = 47, exact = 112;

    // When / Then
    EXPECT_EQ(0, validate_camera_metadata_structure(good().get(), &exact));
    EXPECT_EQ(1, validate_camera_metadata_structure(nullptr, nullptr));
    EXPECT_EQ(1, validate_camera_metadata_structure(good().get(), &small));
    EXPECT_EQ(1, validateAfter(kSize, 120));
    EXPECT_EQ(1, validateAfter(kEntryCount, 3));
    EXPECT_EQ(1, validateAfter(kDataCount, 33));
    EXPECT_EQ(1, validateAfter(kDataStart, 49));  // before entries_start + 2
    EXPECT_EQ(0, validateAfter(kDataStart, 56));  // capacity counted unscaled: overlap passes
    EXPECT_EQ(1, validateAfter(kSize, 104, 104));
    EXPECT_EQ(1, validateAfter(entry(0, kType), 6));
    EXPECT_EQ(1, validateAfter(entry(0, kType), TYPE_FLOAT));
    EXPECT_EQ(1, validateAfter(entry(0, kTag), ANDROID_SECTION_COUNT << 16));
    EXPECT_EQ(0, validateAfter(entry(0, kTag), VENDOR_SECTION_START));
    EXPECT_EQ(1, validateAfter(entry(1, kValue), 4));   // not 8-aligned
    EXPECT_EQ(1, validateAfter(entry(1, kValue), 24));  // runs past the data capacity
    EXPECT_EQ(1, validateAfter(entry(0, kCount), 0));   // no values but a non-zero offset

    // When / Then: a sound copy at an odd address
    std::vector<uint64_t> storage(16);
    uint8_t* shifted = reinterpret_cast<uint8_t*>(storage.data()) + 1;
    memcpy(shifted, good().get(), exact);
    EXPECT_EQ(2, validate_camera_metadata_structure(reinterpret_cast<camera_metadata_t*>(shifted),
                                                    &exact));
}

TEST_F(CameraMetadataTest, TagTablesGiveTypesAndNames) {
    EXPECT_EQ(TYPE_INT32, get_camera_metadata_tag_type(ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION));
    EXPECT_EQ(TYPE_RATIONAL, get_camera_metadata_tag_type(ANDROID_CONTROL_AE_COMPENSATION_STEP));
    EXPECT_EQ(TYPE_DOUBLE, get_camera_metadata_tag_type(ANDROID_SENSOR_NOISE_PROFILE));
    EXPECT_EQ(TYPE_INT64, get_camera_metadata_tag_type(ANDROID_SENSOR_ROLLING_SHUTTER_SKEW));
    EXPECT_EQ(TYPE_FLOAT, get_camera_metadata_tag_type(ANDROID_SCALER_AVAILABLE_MAX_DIGITAL_ZOOM));
    EXPECT_EQ(TYPE_BYTE, get_camera_metadata_tag_type(ANDROID_STATISTICS_SCENE_FLICKER));
    const uint32_t ends[] = {ANDROID_COLOR_CORRECTION_END, ANDROID_CONTROL_END, ANDROID_SCALER_END,
                             ANDROID_SENSOR_END, ANDROID_HEIC_INFO_END};
    for (uint32_t end : ends) {
        EXPECT_NE(-1, get_camera_metadata_tag_type(end - 1)) << std::hex << end;
        EXPECT_EQ(-1, get_camera_metadata_tag_type(end)) << std::hex << end;
    }
    EXPECT_EQ(-1, get_camera_metadata_tag_type(VENDOR_SECTION_START));

    EXPECT_STREQ("android.control", get_camera_metadata_section_name(ANDROID_CONTROL_START));
    EXPECT_STREQ("android.sensor.info",
                 get_camera_metadata_section_name(ANDROID_SENSOR_INFO_ACTIVE_ARRAY_SIZE));
    EXPECT_EQ(nullptr, get_camera_metadata_section_name(VENDOR_SECTION_START));
    EXPECT_STREQ("aeExposureCompensation",
                 get_camera_metadata_tag_name(ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION));
    EXPECT_STREQ("cropRegion", get_camera_metadata_tag_name(ANDROID_SCALER_CROP_REGION));
    EXPECT_STREQ("sceneFlicker", get_camera_metadata_tag_name(ANDROID_STATISTICS_SCENE_FLICKER));
    EXPECT_EQ(nullptr, get_camera_metadata_tag_name(ANDROID_CONTROL_START + 0x12));
    EXPECT_EQ(nullptr, get_camera_metadata_tag_name(VENDOR_SECTION_START));
}

TEST_F(CameraMetadataTest, InjectedAllocationFailureHitsOneCallAtATime) {
    // Given the second allocation armed to fail
    hostfault::arm(hostfault::kMetadataAllocate, 1, 1);
    alignas(8) uint8_t buffer[88];

    // When / Then
    Metadata first = make(1, 0);
    EXPECT_NE(nullptr, first);
    EXPECT_EQ(nullptr, allocate_camera_metadata(1, 0));
    EXPECT_NE(nullptr, place_camera_metadata(buffer, sizeof(buffer), 2, 5));
    hostfault::arm(hostfault::kMetadataAllocate);
    EXPECT_EQ(nullptr, place_camera_metadata(buffer, sizeof(buffer), 2, 5));
}

}  // namespace
