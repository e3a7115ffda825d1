// Metadata cache store: short ids, 32-bit setters, entries of any type, removal, ownership.
#include <stdio.h>
#include <string.h>

#include <thread>

#include <gtest/gtest.h>
#include <system/camera_metadata_tags.h>

#include "CameraControlCache.h"
#include "ZorvCameraProvider.h"
#include "support/CachePeer.h"
#include "support/LogCapture.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::extractCameraId;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using Peer = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::
        CameraControlCacheTestPeer;
using Stored = Peer::Stored;

namespace {

constexpr uint32_t kExposureCompensation = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;
constexpr uint32_t kCropRegion = ANDROID_SCALER_CROP_REGION;
constexpr uint32_t kAeMode = ANDROID_CONTROL_AE_MODE;

std::vector<uint8_t> bytesOf(std::vector<int32_t> values) {
    std::vector<uint8_t> bytes(values.size() * 4);
    if (!values.empty()) memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// tag, type, count and payload, without the payload's address.
std::string describe(const std::vector<Stored>& entries) {
    std::string out;
    char buf[64];
    for (const Stored& e : entries) {
        snprintf(buf, sizeof(buf), "0x%x t%u n%u [", e.tag, e.type, e.count);
        out += buf;
        for (uint8_t b : e.bytes) out += std::to_string(b) + " ";
        out += "] ";
    }
    return out;
}

std::string i32Entry(uint32_t tag, std::vector<int32_t> values) {
    return describe({{tag, 1, static_cast<uint32_t>(values.size()), bytesOf(values), nullptr}});
}

class CacheStoreTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Peer::reset();
        cache = CameraControlCache::Instance();
        LogCapture::clear();
    }

    LogLine setLine(const std::string& id, uint32_t tag, int32_t value) {
        char text[160];
        snprintf(text, sizeof(text), "set camera [%s] metadata [0x%x] to value [%d] this [0x%p]\n",
                 id.c_str(), tag, value, static_cast<void*>(cache.get()));
        return cacheLine(kInfo, text);
    }

    std::shared_ptr<CameraControlCache> cache;
};

}  // namespace

TEST_F(CacheStoreTest, OneSharedInstanceNamesCamerasByThePartAfterTheLastSlash) {
    EXPECT_EQ(CameraControlCache::Instance(), cache);
    EXPECT_EQ(CameraControlCache::sInstance, cache);
    EXPECT_EQ(extractCameraId("device@3.2/internal/5"), "5");
    EXPECT_EQ(extractCameraId("5"), "5");
    EXPECT_EQ(extractCameraId("device@3.2/internal/"), "");
    EXPECT_EQ(extractCameraId(""), "");

    // Given a value set through the full device name
    cache->setCameraMetadata("device@3.2/internal/5", kExposureCompensation, -2);
    EXPECT_TRUE(Peer::hasCamera("5"));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{setLine("5", kExposureCompensation, -2)}));

    // When the camera is removed by its short id, then no key is left
    cache->removeCamera("5");
    EXPECT_EQ(Peer::cameraCount(), 0u);
}

TEST_F(CacheStoreTest, SetMetadataCreatesOneIntegerEntryThenOverwritesItInPlace) {
    // When a value is set twice for the same tag of an unknown camera
    cache->setCameraMetadata("0", kExposureCompensation, 3);
    const void* payload = Peer::entries("0").at(0).data;
    cache->setCameraMetadata("0", kExposureCompensation, -1);

    // Then one entry holds the latest value in the same payload, and each call logged
    std::vector<Stored> entries = Peer::entries("0");
    EXPECT_EQ(describe(entries), i32Entry(kExposureCompensation, {-1}));
    EXPECT_EQ(entries[0].data, payload);
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{setLine("0", kExposureCompensation, 3),
                                    setLine("0", kExposureCompensation, -1)}));
}

TEST_F(CacheStoreTest, ArrayUpdatesKeepTheStoredCount) {
    // Each row updates the four-value array stored by the first; a count other than the stored
    // one is logged, yet the stored count wins
    const LogLine mismatch =
            cacheLine(kError, "set camera [0] metadata [0xd0000] length mis-match\n");
    struct Row {
        std::vector<int32_t> values;
        std::vector<int32_t> stored;
        bool logsMismatch;
    };
    const Row rows[] = {
            {{1, 2, 3, 4}, {1, 2, 3, 4}, false}, {{10, 20, 30, 40, 50, 60}, {10, 20, 30, 40}, true},
            {{5, 6, 7, 8}, {5, 6, 7, 8}, false}, {{-5, -6}, {-5, -6, 7, 8}, true},
            {{}, {-5, -6, 7, 8}, true},  // the line shows 0
    };
    for (const Row& row : rows) {
        LogCapture::clear();
        cache->setCameraMetaarray("0", kCropRegion, hidl_vec<int32_t>(row.values));
        EXPECT_EQ(describe(Peer::entries("0")), i32Entry(kCropRegion, row.stored));
        std::vector<LogLine> log{setLine("0", kCropRegion, row.values.empty() ? 0 : row.values[0])};
        if (row.logsMismatch) log.push_back(mismatch);
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag), log);
    }

    // A single value changes only the first element, without a mismatch line
    LogCapture::clear();
    cache->setCameraMetadata("0", kCropRegion, 100);
    EXPECT_EQ(describe(Peer::entries("0")), i32Entry(kCropRegion, {100, -6, 7, 8}));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{setLine("0", kCropRegion, 100)}));
}

TEST_F(CacheStoreTest, IntegerSettersReplaceEntriesOfAnotherTypeOrWithoutValues) {
    // Given a byte entry, a float pair and an empty integer array
    uint8_t mode = 1;
    float gains[] = {1.5f, 2.5f};
    cache->addMetaData("0", {kAeMode, ACAMERA_TYPE_BYTE, 1, {&mode}});
    ACameraMetadata_entry floats{0x20000, ACAMERA_TYPE_FLOAT, 2, {nullptr}};
    floats.data.f = gains;
    cache->addMetaData("0", floats);
    cache->setCameraMetaarray("0", kCropRegion, hidl_vec<int32_t>{});
    EXPECT_EQ(describe(Peer::entries("0")),
              describe({{kAeMode, 0, 1, {1}, nullptr},
                        {0x20000, 2, 2, {0, 0, 0xc0, 0x3f, 0, 0, 0x20, 0x40}, nullptr}}) +
                      i32Entry(kCropRegion, {}));

    // When integers are set for each tag
    LogCapture::clear();
    cache->setCameraMetadata("0", kAeMode, 7);
    cache->setCameraMetaarray("0", 0x20000, hidl_vec<int32_t>{1, 2, 3});
    cache->setCameraMetaarray("0", kCropRegion, hidl_vec<int32_t>{4, 5, 6, 7});

    // Then each becomes an integer entry holding exactly the given values, in its place,
    // without a mismatch line
    EXPECT_EQ(describe(Peer::entries("0")), i32Entry(kAeMode, {7}) + i32Entry(0x20000, {1, 2, 3}) +
                                                    i32Entry(kCropRegion, {4, 5, 6, 7}));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{setLine("0", kAeMode, 7), setLine("0", 0x20000, 1),
                                    setLine("0", kCropRegion, 4)}));
}

TEST_F(CacheStoreTest, AddMetaDataOwnsACopyAndReplacesOnlyOnOtherTypeOrCount) {
    // Given an entry added from the caller's buffer
    int64_t times[] = {100, 200};
    ACameraMetadata_entry entry{0xE0000, ACAMERA_TYPE_INT64, 2, {nullptr}};
    entry.data.i64 = times;
    cache->addMetaData("device@3.2/internal/1", entry);
    const void* payload = Peer::entries("1").at(0).data;
    EXPECT_NE(payload, static_cast<void*>(times));

    // When the caller changes its buffer, the store does not follow
    times[0] = 999;
    std::vector<uint8_t> first(16);
    const int64_t stored[] = {100, 200};
    memcpy(first.data(), stored, 16);
    EXPECT_EQ(Peer::entries("1").at(0).bytes, first);

    // When the same tag comes with the same type and count, the values are copied in place
    times[0] = 300;
    cache->addMetaData("1", entry);
    EXPECT_EQ(Peer::entries("1").at(0).data, payload);
    const int64_t updated[] = {300, 200};
    memcpy(first.data(), updated, 16);
    EXPECT_EQ(Peer::entries("1").at(0).bytes, first);

    // When it comes with another count or another type, the entry is replaced in its place
    cache->setCameraMetadata("1", kExposureCompensation, 1);
    entry.count = 1;
    cache->addMetaData("1", entry);
    std::vector<Stored> entries = Peer::entries("1");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].tag, 0xE0000u);
    EXPECT_EQ(entries[0].count, 1u);
    EXPECT_EQ(entries[0].bytes, std::vector<uint8_t>(first.begin(), first.begin() + 8));
    double ratio = 0.5;
    ACameraMetadata_entry asDouble{0xE0000, ACAMERA_TYPE_DOUBLE, 1, {nullptr}};
    asDouble.data.d = &ratio;
    cache->addMetaData("1", asDouble);
    entries = Peer::entries("1");
    EXPECT_EQ(entries[0].type, ACAMERA_TYPE_DOUBLE);
    EXPECT_EQ(entries[0].bytes, (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0xe0, 0x3f}));
    EXPECT_EQ(entries[1].tag, kExposureCompensation);
}

TEST_F(CacheStoreTest, AddMetaDataRefusesWhatItCannotOwn) {
    // Given an unknown type code, and values missing for a non-zero count
    int32_t value = 5;
    ACameraMetadata_entry unknownType{kExposureCompensation, 6, 1, {nullptr}};
    unknownType.data.i32 = &value;
    ACameraMetadata_entry noValues{kCropRegion, ACAMERA_TYPE_INT32, 4, {nullptr}};

    // When they are added
    cache->addMetaData("2", unknownType);
    cache->addMetaData("2", noValues);

    // Then nothing is stored, not even the camera, and each refusal says why
    EXPECT_FALSE(Peer::hasCamera("2"));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{
                      cacheLine(kError,
                                "camera [2] metadata [0x10001] has unknown type [6], not stored\n"),
                      cacheLine(kError,
                                "camera [2] metadata [0xd0000] has no values for count "
                                "[4], not stored\n")}));

    // A zero count needs no values
    ACameraMetadata_entry empty{kCropRegion, ACAMERA_TYPE_INT32, 0, {nullptr}};
    cache->addMetaData("2", empty);
    EXPECT_EQ(describe(Peer::entries("2")), i32Entry(kCropRegion, {}));
}

TEST_F(CacheStoreTest, RemovalKeepsTheOrderOfTheRestAndTheCameraKey) {
    // Given three entries
    cache->setCameraMetadata("0", 0x10001, 1);
    cache->setCameraMetadata("0", 0x10002, 2);
    cache->setCameraMetadata("0", 0x10003, 3);

    // When the middle one is removed, then an absent tag
    cache->removeMetaData("device@3.2/internal/0", 0x10002);
    cache->removeMetaData("0", 0x10002);
    EXPECT_EQ(describe(Peer::entries("0")), i32Entry(0x10001, {1}) + i32Entry(0x10003, {3}));

    // When an unknown camera is named, no key is created
    cache->removeMetaData("7", 0x10001);
    cache->removeCamera("7");
    EXPECT_FALSE(Peer::hasCamera("7"));

    // When the last entries go, the camera's key stays until the camera is removed
    cache->removeMetaData("0", 0x10001);
    cache->removeMetaData("0", 0x10003);
    EXPECT_TRUE(Peer::hasCamera("0"));
    EXPECT_TRUE(Peer::entries("0").empty());
    cache->removeCamera("0");
    EXPECT_FALSE(Peer::hasCamera("0"));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag).size(), 3u);
}

TEST_F(CacheStoreTest, ProviderMethodsStoreIntoTheCache) {
    // Given a provider
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();

    // When a client sets a value and an array through it
    EXPECT_TRUE(provider->setMetaData("device@3.2/internal/3", kExposureCompensation, 2).isOk());
    EXPECT_TRUE(provider->setMetaArray("3", kCropRegion, hidl_vec<int32_t>{0, 0, 640, 360}).isOk());

    // Then both reach the one cache under the short id, and only the cache logs
    EXPECT_EQ(describe(Peer::entries("3")),
              i32Entry(kExposureCompensation, {2}) + i32Entry(kCropRegion, {0, 0, 640, 360}));
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{setLine("3", kExposureCompensation, 2),
                                                         setLine("3", kCropRegion, 0)}));
}

TEST_F(CacheStoreTest, DestroyingTheInstanceReleasesEveryPayload) {
    // Given entries of every type on two cameras (the leak checker watches the payloads)
    uint8_t bytes[3] = {1, 2, 3};
    for (uint8_t type = 0; type < 6; ++type) {
        ACameraMetadata_entry entry{0x10000u + type, type, 3, {nullptr}};
        entry.data.u8 = type == 0 ? bytes : reinterpret_cast<uint8_t*>(new int64_t[3]());
        cache->addMetaData("a", entry);
        cache->addMetaData("b", entry);
        if (type != 0) delete[] reinterpret_cast<int64_t*>(entry.data.u8);
    }
    EXPECT_EQ(Peer::entries("b").size(), 6u);

    // When the last owner lets go
    std::weak_ptr<CameraControlCache> watch = cache;
    cache.reset();
    Peer::reset();

    // Then the instance is gone and the next one starts empty
    EXPECT_TRUE(watch.expired());
    EXPECT_NE(CameraControlCache::Instance(), nullptr);
    EXPECT_EQ(Peer::cameraCount(), 0u);
}

TEST_F(CacheStoreTest, ConcurrencyOfWritersKeepsOneWholeEntryPerTag) {
    // Given four threads writing the same tags of one camera under different names
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            std::shared_ptr<CameraControlCache> c = CameraControlCache::Instance();
            for (int i = 0; i < 200; ++i) {
                c->setCameraMetadata(t % 2 ? "9" : "device@3.2/internal/9", 0x10001, i);
                c->setCameraMetaarray("9", 0xD0000, hidl_vec<int32_t>{i, i, i, i});
                c->removeMetaData("9", 0x10001);
            }
        });
    }
    for (std::thread& t : threads) t.join();

    // Then the camera holds at most one entry per tag, each whole
    std::vector<Stored> entries = Peer::entries("9");
    ASSERT_GE(entries.size(), 1u);
    ASSERT_LE(entries.size(), 2u);
    const Stored& crop = entries[0].tag == 0xD0000u ? entries[0] : entries.back();
    EXPECT_EQ(crop.tag, 0xD0000u);
    EXPECT_EQ(crop.count, 4u);
    EXPECT_EQ(crop.bytes, bytesOf({199, 199, 199, 199}));
}
