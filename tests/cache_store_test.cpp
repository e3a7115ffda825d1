// Metadata cache store: short ids, 32-bit setters, entries of any type, removal, ownership.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <new>

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
using Log = std::vector<LogLine>;

namespace {

constexpr uint32_t kExposure = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;  // 0x10001
constexpr uint32_t kCrop = ANDROID_SCALER_CROP_REGION;                    // 0xd0000
constexpr uint32_t kAeMode = ANDROID_CONTROL_AE_MODE;                     // 0x10003

class CacheStoreTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Peer::reset();
        cache = CameraControlCache::Instance();
        LogCapture::clear();
    }

    LogLine set(const char* id, uint32_t tag, int32_t value) {
        char text[160];
        snprintf(text, sizeof(text), "set camera [%s] metadata [0x%x] to value [%d] this [0x%p]\n",
                 id, tag, value, static_cast<void*>(cache.get()));
        return cacheLine(kInfo, text);
    }
    // The camera's entries as "tag type count: values" (int32 values, other types' bytes), and
    // the cache's log lines since the last check.
    void expect(const char* id, const std::string& entries, const Log& log) {
        std::string got;
        for (const Peer::Stored& e : Peer::entries(id)) {
            got += (got.empty() ? "" : "; ") + std::to_string(e.tag) + " t" +
                   std::to_string(e.type) + " n" + std::to_string(e.count) + ":";
            for (size_t i = 0; i < e.bytes.size(); i += e.type == 1 ? 4 : 1) {
                int32_t v = e.bytes[i];
                if (e.type == 1) memcpy(&v, &e.bytes[i], 4);
                got += " " + std::to_string(v);
            }
        }
        EXPECT_EQ(got, entries);
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag), log);
        LogCapture::clear();
    }

    std::shared_ptr<CameraControlCache> cache;
};

}  // namespace

TEST_F(CacheStoreTest, IntegerSettersKeepOneEntryPerTagInPlaceAndTheStoredCount) {
    // A value set twice overwrites the one entry in its payload
    cache->setCameraMetadata("0", kExposure, 3);
    const void* payload = Peer::entries("0").at(0).data;
    cache->setCameraMetadata("0", kExposure, -1);
    EXPECT_EQ(Peer::entries("0").at(0).data, payload);
    expect("0", "65537 t1 n1: -1", {set("0", kExposure, 3), set("0", kExposure, -1)});

    // An array keeps the stored count: another count is logged, and the stored count wins
    const LogLine mismatch =
            cacheLine(kError, "set camera [0] metadata [0xd0000] length mis-match\n");
    cache->removeCamera("0");
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{1, 2, 3, 4});
    expect("0", "851968 t1 n4: 1 2 3 4", {set("0", kCrop, 1)});
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{10, 20, 30, 40, 50, 60});
    expect("0", "851968 t1 n4: 10 20 30 40", {set("0", kCrop, 10), mismatch});
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{-5, -6});
    expect("0", "851968 t1 n4: -5 -6 30 40", {set("0", kCrop, -5), mismatch});
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{});
    expect("0", "851968 t1 n4: -5 -6 30 40", {set("0", kCrop, 0), mismatch});
    cache->setCameraMetadata("0", kCrop, 100);  // a single value: the first element only
    expect("0", "851968 t1 n4: 100 -6 30 40", {set("0", kCrop, 100)});

    // Entries of another type or without values become integer entries, in their place
    uint8_t mode = 1;
    float gains[] = {1.5f, 2.5f};
    cache->removeCamera("0");
    cache->addMetaData("0", {kAeMode, ACAMERA_TYPE_BYTE, 1, {&mode}});
    ACameraMetadata_entry floats{0x20000, ACAMERA_TYPE_FLOAT, 2, {nullptr}};
    floats.data.f = gains;
    cache->addMetaData("0", floats);
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{});
    expect("0", "65539 t0 n1: 1; 131072 t2 n2: 0 0 192 63 0 0 32 64; 851968 t1 n0:",
           {set("0", kCrop, 0)});
    cache->setCameraMetadata("0", kAeMode, 7);
    cache->setCameraMetaarray("0", 0x20000, hidl_vec<int32_t>{1, 2, 3});
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{4, 5, 6, 7});
    expect("0", "65539 t1 n1: 7; 131072 t1 n3: 1 2 3; 851968 t1 n4: 4 5 6 7",
           {set("0", kAeMode, 7), set("0", 0x20000, 1), set("0", kCrop, 4)});
}

TEST_F(CacheStoreTest, AddMetaDataOwnsACopyReplacesOnOtherTypeOrCountRefusesWhatItCannotOwn) {
    // Given an entry added from the caller's buffer, then the buffer changed
    int64_t times[] = {1, 2};
    ACameraMetadata_entry entry{0xE0000, ACAMERA_TYPE_INT64, 2, {nullptr}};
    entry.data.i64 = times;
    cache->addMetaData("device@3.2/internal/1", entry);
    const void* payload = Peer::entries("1").at(0).data;
    times[0] = 3;
    expect("1", "917504 t3 n2: 1 0 0 0 0 0 0 0 2 0 0 0 0 0 0 0", {});

    // The same type and count are copied in place; another count or type replaces the entry
    cache->addMetaData("1", entry);
    EXPECT_EQ(Peer::entries("1").at(0).data, payload);
    cache->setCameraMetadata("1", kExposure, 1);
    entry.count = 1;
    cache->addMetaData("1", entry);
    expect("1", "917504 t3 n1: 3 0 0 0 0 0 0 0; 65537 t1 n1: 1", {set("1", kExposure, 1)});
    double ratio = 0.5;
    ACameraMetadata_entry asDouble{0xE0000, ACAMERA_TYPE_DOUBLE, 1, {nullptr}};
    asDouble.data.d = &ratio;
    cache->addMetaData("1", asDouble);
    expect("1", "917504 t4 n1: 0 0 0 0 0 0 224 63; 65537 t1 n1: 1", {});

    // An unknown type code, or no values for a non-zero count, store nothing, not even the
    // camera; a zero count needs no values
    int32_t value = 5;
    ACameraMetadata_entry unknownType{kExposure, 6, 1, {nullptr}};
    unknownType.data.i32 = &value;
    ACameraMetadata_entry noValues{kCrop, ACAMERA_TYPE_INT32, 4, {nullptr}};
    cache->addMetaData("2", unknownType);
    cache->addMetaData("2", noValues);
    EXPECT_FALSE(Peer::hasCamera("2"));
    expect("2", "",
           {cacheLine(kError, "camera [2] metadata [0x10001] has unknown type [6], not stored\n"),
            cacheLine(kError,
                      "camera [2] metadata [0xd0000] has no values for count [4], "
                      "not stored\n")});
    noValues.count = 0;
    cache->addMetaData("2", noValues);
    expect("2", "851968 t1 n0:", {});
}

TEST_F(CacheStoreTest, OneInstanceShortIdsRemovalKeepsTheOrderAndTheCameraKeyProviderForwards) {
    EXPECT_EQ(CameraControlCache::Instance(), cache);
    EXPECT_EQ(CameraControlCache::sInstance, cache);
    for (auto [name, id] : {std::pair{"device@3.2/internal/5", "5"},
                            {"5", "5"},
                            {"device@3.2/internal/", ""},
                            {"", ""}}) {
        EXPECT_EQ(extractCameraId(name), id);
    }
    // Given three entries set through the provider, the middle one removed, then an absent tag
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();
    EXPECT_TRUE(provider->setMetaData("device@3.2/internal/0", 0x10001, 1).isOk());
    EXPECT_TRUE(provider->setMetaArray("0", 0x10002, hidl_vec<int32_t>{2, 3}).isOk());
    cache->setCameraMetadata("0", 0x10003, 3);
    cache->removeMetaData("device@3.2/internal/0", 0x10002);
    cache->removeMetaData("0", 0x10002);
    EXPECT_EQ(LogCapture::lines(), LogCapture::linesWithTag(kCacheTag));  // only the cache logs
    expect("0", "65537 t1 n1: 1; 65539 t1 n1: 3",
           {set("0", 0x10001, 1), set("0", 0x10002, 2), set("0", 0x10003, 3)});

    // An unknown camera named creates no key; after the last entry the key stays until removed
    cache->removeMetaData("7", 0x10001);
    cache->removeCamera("7");
    EXPECT_FALSE(Peer::hasCamera("7"));
    cache->removeMetaData("0", 0x10001);
    cache->removeMetaData("0", 0x10003);
    EXPECT_TRUE(Peer::hasCamera("0"));
    expect("0", "", {});
    cache->removeCamera("0");
    EXPECT_FALSE(Peer::hasCamera("0"));
}

TEST_F(CacheStoreTest, DestroyingTheInstanceReleasesEveryPayload) {
    // Given entries of every type on two cameras, two replaced (type, count), one removed
    int64_t values[3] = {};
    for (uint8_t type = 0; type < 6; ++type) {
        ACameraMetadata_entry entry{0x10000u + type, type, 3, {nullptr}};
        entry.data.i64 = values;
        cache->addMetaData("a", entry);
        cache->addMetaData("b", entry);
    }
    EXPECT_EQ(Peer::entries("b").size(), 6u);
    cache->setCameraMetadata("a", 0x10000, 1);
    cache->removeMetaData("b", 0x10001);
    ACameraMetadata_entry fewer{0x10003, ACAMERA_TYPE_INT64, 1, {nullptr}};
    fewer.data.i64 = values;
    cache->addMetaData("b", fewer);

    // When the last owner lets go, the instance is gone (its payloads too: LSan and memcheck
    // check), and the next one is empty
    std::weak_ptr<CameraControlCache> watch = cache;
    cache.reset();
    Peer::reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_NE(CameraControlCache::Instance(), nullptr);
    EXPECT_EQ(Peer::cameraCount(), 0u);
}
