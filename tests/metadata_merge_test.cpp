// Merging cached metadata into capture requests: queue blobs, new settings, failures, order.
#include <stdio.h>
#include <string.h>

#include <atomic>
#include <ostream>
#include <thread>

#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "support/CachePeer.h"
#include "support/LogCapture.h"

using namespace testing_support;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using CaptureRequest = CameraControlCache::CaptureRequest;
using Peer = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::
        CameraControlCacheTestPeer;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr uint32_t kExposureCompensation = 0x10001;  // int32 x1, always applied
constexpr uint32_t kCropRegion = 0xD0000;            // int32 x4, always applied
constexpr uint32_t kAeMode = 0x10003;                // byte
constexpr uint32_t kAeTargetFpsRange = 0x10005;      // int32 x2
constexpr uint32_t kAwbMode = 0x1000B;               // byte
constexpr uint32_t kJpegOrientation = 0x70003;       // int32
constexpr uint32_t kFocalLength = 0x80002;           // float

// One metadata entry as the settings hold it.
struct Item {
    uint32_t tag;
    uint8_t type;
    Bytes bytes;
    bool operator==(const Item& o) const {
        return tag == o.tag && type == o.type && bytes == o.bytes;
    }
};

std::ostream& operator<<(std::ostream& os, const Item& item) {
    os << "{0x" << std::hex << item.tag << std::dec << " t" << int{item.type} << " [";
    for (uint8_t b : item.bytes) os << int{b} << " ";
    return os << "]}";
}

Item i32(uint32_t tag, std::vector<int32_t> values) {
    Bytes bytes(values.size() * 4);
    if (!values.empty()) memcpy(bytes.data(), values.data(), bytes.size());
    return {tag, TYPE_INT32, bytes};
}

Item u8(uint32_t tag, Bytes values) {
    return {tag, TYPE_BYTE, values};
}

const camera_metadata_t* meta(const Bytes& b) {
    return reinterpret_cast<const camera_metadata_t*>(b.data());
}

// A settings blob with the given room holding the items in order.
Bytes blob(size_t entryCapacity, size_t dataCapacity, const std::vector<Item>& items) {
    Bytes bytes(calculate_camera_metadata_size(entryCapacity, dataCapacity));
    camera_metadata_t* m =
            place_camera_metadata(bytes.data(), bytes.size(), entryCapacity, dataCapacity);
    for (const Item& item : items) {
        EXPECT_EQ(
                add_camera_metadata_entry(m, item.tag, item.bytes.data(),
                                          item.bytes.size() / camera_metadata_type_size[item.type]),
                0);
    }
    return bytes;
}

std::vector<Item> items(const Bytes& b) {
    std::vector<Item> out;
    for (size_t i = 0; i < get_camera_metadata_entry_count(meta(b)); ++i) {
        camera_metadata_ro_entry_t e;
        EXPECT_EQ(get_camera_metadata_ro_entry(meta(b), i, &e), 0);
        const size_t size = e.count * camera_metadata_type_size[e.type];
        out.push_back({e.tag, e.type, Bytes(e.data.u8, e.data.u8 + size)});
    }
    return out;
}

std::vector<Item> items(const hidl_vec<uint8_t>& settings) {
    return items(Bytes(settings.begin(), settings.end()));
}

bool valid(const Bytes& b) {
    const size_t size = b.size();
    return validate_camera_metadata_structure(meta(b), &size) == 0 &&
           get_camera_metadata_size(meta(b)) == size;
}

std::shared_ptr<RequestMetadataQueue> queueWith(const std::vector<Bytes>& blobs) {
    auto queue = std::make_shared<RequestMetadataQueue>(1 << 16);
    for (const Bytes& b : blobs) EXPECT_TRUE(queue->write(b.data(), b.size()));
    return queue;
}

Bytes drain(RequestMetadataQueue& queue) {
    Bytes bytes(queue.availableToRead());
    EXPECT_TRUE(queue.read(bytes.data(), bytes.size()));
    return bytes;
}

// The queue's blobs, cut by the sizes the requests now claim; the queue must hold no more.
std::vector<Bytes> blobsFor(RequestMetadataQueue& queue, const hidl_vec<CaptureRequest>& requests) {
    Bytes all = drain(queue);
    std::vector<Bytes> out;
    size_t at = 0;
    for (const CaptureRequest& r : requests) {
        if (r.fmqSettingsSize == 0) continue;
        EXPECT_LE(at + r.fmqSettingsSize, all.size());
        if (at + r.fmqSettingsSize > all.size()) break;
        out.emplace_back(all.begin() + at, all.begin() + at + r.fmqSettingsSize);
        at += r.fmqSettingsSize;
    }
    EXPECT_EQ(at, all.size()) << "bytes left in the queue";
    return out;
}

hidl_vec<CaptureRequest> queuedRequests(const std::vector<Bytes>& blobs) {
    hidl_vec<CaptureRequest> requests(blobs.size());
    for (size_t i = 0; i < blobs.size(); ++i) {
        requests[i].frameNumber = static_cast<uint32_t>(i + 1);
        requests[i].fmqSettingsSize = blobs[i].size();
    }
    return requests;
}

class MetadataMergeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Peer::reset();
        cache = CameraControlCache::Instance();
    }
    void TearDown() override { hostfault::disarmAll(); }

    void cacheCrop(std::vector<int32_t> crop) {
        cache->setCameraMetaarray("0", kCropRegion, hidl_vec<int32_t>(crop));
    }
    void cacheBytes(uint32_t tag, Bytes values) {
        cache->addMetaData(
                "0",
                {tag, ACAMERA_TYPE_BYTE, static_cast<uint32_t>(values.size()), {values.data()}});
    }
    void apply(hidl_vec<CaptureRequest>& requests, std::shared_ptr<RequestMetadataQueue> queue) {
        LogCapture::clear();
        cache->applyMetaData("device@3.2/internal/0", requests, std::move(queue));
    }

    std::shared_ptr<CameraControlCache> cache;
};

}  // namespace

TEST_F(MetadataMergeTest, QueuedSettingsGetTheCropRegionAppendedButNoOtherCachedTag) {
    // Given a cached AE mode and crop region, and queued settings with room lacking both
    cacheBytes(kAeMode, {1});
    cacheCrop({10, 20, 30, 40});
    const Bytes settings = blob(8, 64, {i32(kAeTargetFpsRange, {15, 30}), u8(kAwbMode, {1})});
    auto queue = queueWith({settings});
    hidl_vec<CaptureRequest> requests = queuedRequests({settings});

    // When the batch is merged
    apply(requests, queue);

    // Then the blob in the queue gained the crop region in place, silently
    std::vector<Bytes> out = blobsFor(*queue, requests);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(requests[0].fmqSettingsSize, settings.size());
    EXPECT_TRUE(valid(out[0]));
    EXPECT_EQ(items(out[0]), (std::vector<Item>{i32(kAeTargetFpsRange, {15, 30}), u8(kAwbMode, {1}),
                                                i32(kCropRegion, {10, 20, 30, 40})}));
    EXPECT_TRUE(requests[0].settings.size() == 0);
    EXPECT_TRUE(LogCapture::linesWithTag(kCacheTag).empty());
}

TEST_F(MetadataMergeTest, CropRegionInTheQueuedSettingsIsReplacedInPlace) {
    // Given queued settings that already hold a crop region
    cacheCrop({10, 20, 30, 40});
    const Bytes settings = blob(2, 32, {i32(kCropRegion, {0, 0, 1280, 720}), u8(kAwbMode, {1})});
    auto queue = queueWith({settings});
    hidl_vec<CaptureRequest> requests = queuedRequests({settings});

    // When the batch is merged
    apply(requests, queue);

    // Then its values are replaced, the size stays, and the update is logged
    std::vector<Bytes> out = blobsFor(*queue, requests);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].size(), settings.size());
    EXPECT_EQ(items(out[0]),
              (std::vector<Item>{i32(kCropRegion, {10, 20, 30, 40}), u8(kAwbMode, {1})}));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{cacheLine(kInfo, "updating 0xd0000 metadata \n")}));
}

TEST_F(MetadataMergeTest, TwoQueuedRequestsEachGetBothTagsWithTheirBlobsInRequestOrder) {
    // Given both always-applied tags cached and two queued blobs, the second holding one tag
    cache->setCameraMetadata("0", kExposureCompensation, -2);
    cacheCrop({1, 2, 3, 4});
    const Bytes first = blob(4, 32, {u8(kAwbMode, {1})});
    const Bytes second = blob(4, 32, {u8(kAwbMode, {2}), i32(kExposureCompensation, {0})});
    auto queue = queueWith({first, second});
    hidl_vec<CaptureRequest> requests = queuedRequests({first, second});

    // When the batch is merged
    apply(requests, queue);

    // Then each request's blob carries both tags and the blobs stand in request order
    std::vector<Bytes> out = blobsFor(*queue, requests);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(items(out[0]), (std::vector<Item>{u8(kAwbMode, {1}), i32(kExposureCompensation, {-2}),
                                                i32(kCropRegion, {1, 2, 3, 4})}));
    EXPECT_EQ(items(out[1]), (std::vector<Item>{u8(kAwbMode, {2}), i32(kExposureCompensation, {-2}),
                                                i32(kCropRegion, {1, 2, 3, 4})}));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{cacheLine(kInfo, "updating 0x10001 metadata \n")}));
}

TEST_F(MetadataMergeTest, LoneRequestGetsTheSameBytesAsFromOneAppendPerEntry) {
    // Given both tags cached, crop region first, and a full blob, so that the settings grow
    cacheCrop({1, 2, 3, 4});
    cache->setCameraMetadata("0", kExposureCompensation, 5);
    const Bytes full = blob(2, 8, {u8(kAwbMode, {1}), i32(kAeTargetFpsRange, {15, 30})});
    auto merged = queueWith({full});
    hidl_vec<CaptureRequest> batch = queuedRequests({full});
    auto appended = queueWith({full});
    hidl_vec<CaptureRequest> lone = queuedRequests({full});

    // When the batch is merged, and the same request gets one append per entry in list order
    apply(batch, merged);
    int32_t crop[] = {1, 2, 3, 4};
    int32_t compensation = 5;
    ACameraMetadata_entry cropEntry{kCropRegion, ACAMERA_TYPE_INT32, 4, {nullptr}};
    cropEntry.data.i32 = crop;
    ACameraMetadata_entry compensationEntry{
            kExposureCompensation, ACAMERA_TYPE_INT32, 1, {nullptr}};
    compensationEntry.data.i32 = &compensation;
    cache->appendAlwaysMetadata(appended, lone[0], cropEntry);
    cache->appendAlwaysMetadata(appended, lone[0], compensationEntry);

    // Then both give the same bytes: the first append grew the settings to twice the room
    // needed (entries (2 + 1) x 2, data (8 + 16) x 2), keeping the earlier entries first
    std::vector<Bytes> out = blobsFor(*merged, batch);
    std::vector<Bytes> reference = blobsFor(*appended, lone);
    ASSERT_EQ(out.size(), 1u);
    ASSERT_EQ(reference.size(), 1u);
    EXPECT_EQ(out[0], reference[0]);
    EXPECT_EQ(batch[0].fmqSettingsSize, lone[0].fmqSettingsSize);
    EXPECT_EQ(batch[0].fmqSettingsSize, calculate_camera_metadata_size(6, 48));
    EXPECT_EQ(get_camera_metadata_entry_capacity(meta(out[0])), 6u);
    EXPECT_EQ(get_camera_metadata_data_capacity(meta(out[0])), 48u);
    EXPECT_TRUE(valid(out[0]));
    EXPECT_EQ(items(out[0]),
              (std::vector<Item>{u8(kAwbMode, {1}), i32(kAeTargetFpsRange, {15, 30}),
                                 i32(kCropRegion, {1, 2, 3, 4}), i32(kExposureCompensation, {5})}));
}

TEST_F(MetadataMergeTest, RequestsWithoutSettingsGetEveryCachedEntryInListOrder) {
    // Given entries of several types, one the library does not know, one whose values are
    // narrower than its tag's, and no queue
    cache->setCameraMetadata("0", kExposureCompensation, -2);
    cacheBytes(kAeMode, {1});
    cache->setCameraMetadata("0", 0x300000, 9);
    cacheBytes(kJpegOrientation, {90});
    cacheCrop({1, 2, 3, 4});
    float focal = 4.5f;
    ACameraMetadata_entry focalEntry{kFocalLength, ACAMERA_TYPE_FLOAT, 1, {nullptr}};
    focalEntry.data.f = &focal;
    cache->addMetaData("0", focalEntry);
    hidl_vec<CaptureRequest> requests(3);
    requests[1].fmqSettingsSize = 100;

    // When the batch is merged
    apply(requests, nullptr);

    // Then each request without settings owns a new block of 1000 entries and 1000 bytes
    // holding every entry the library takes, in list order; the queued request is untouched
    Bytes focalBytes(4);
    memcpy(focalBytes.data(), &focal, 4);
    const std::vector<Item> expected{i32(kExposureCompensation, {-2}),
                                     u8(kAeMode, {1}),
                                     i32(kCropRegion, {1, 2, 3, 4}),
                                     {kFocalLength, TYPE_FLOAT, focalBytes}};
    for (size_t i : {0, 2}) {
        ASSERT_EQ(requests[i].settings.size(), calculate_camera_metadata_size(1000, 1000));
        EXPECT_EQ(requests[i].fmqSettingsSize, 0u);
        EXPECT_TRUE(valid(Bytes(requests[i].settings.begin(), requests[i].settings.end())));
        EXPECT_EQ(items(requests[i].settings), expected);
    }
    EXPECT_NE(requests[0].settings.data(), requests[2].settings.data());
    EXPECT_EQ(requests[1].fmqSettingsSize, 100u);
    EXPECT_EQ(requests[1].settings.size(), 0u);
    EXPECT_TRUE(LogCapture::linesWithTag(kCacheTag).empty());
}

TEST_F(MetadataMergeTest, OwnSettingsNoListOrNoBatchLeaveEverythingUntouchedWithoutAllocating) {
    // Given a request with its own settings, one without, and a queued one
    cacheCrop({1, 2, 3, 4});
    const Bytes settings = blob(2, 0, {u8(kAwbMode, {1})});
    auto queue = queueWith({settings});
    hidl_vec<CaptureRequest> requests(3);
    requests[0].settings = hidl_vec<uint8_t>{1, 2, 3};
    const uint8_t* own = requests[0].settings.data();
    requests[2].fmqSettingsSize = settings.size();

    // When a camera without a list is merged, and an empty batch of a camera with one,
    // with the next metadata allocation armed to fail
    hostfault::arm(hostfault::kMetadataAllocate, 1);
    LogCapture::clear();
    cache->applyMetaData("device@3.2/internal/4", requests, queue);
    hidl_vec<CaptureRequest> none;
    cache->applyMetaData("0", none, queue);

    // Then nothing changed and no metadata block was even asked for: the fault is unspent
    camera_metadata_t* probe = allocate_camera_metadata(1, 1);
    EXPECT_EQ(probe, nullptr);
    free_camera_metadata(probe);
    EXPECT_EQ(requests[0].settings.data(), own);
    EXPECT_EQ(std::vector<uint8_t>(requests[0].settings), (Bytes{1, 2, 3}));
    EXPECT_EQ(requests[1].settings.size(), 0u);
    EXPECT_EQ(requests[2].fmqSettingsSize, settings.size());
    EXPECT_EQ(drain(*queue), settings);
    EXPECT_TRUE(LogCapture::lines().empty());
    EXPECT_FALSE(Peer::hasCamera("4"));

    // And a request with its own settings stays as it is when the camera has a list
    cache->applyMetaData("0", requests, nullptr);
    EXPECT_EQ(requests[0].settings.data(), own);
}

TEST_F(MetadataMergeTest, EmptiedListStillGivesEmptySettingsUntilTheCameraIsRemoved) {
    // Given a camera whose only entry was removed
    cacheCrop({1, 2, 3, 4});
    cache->removeMetaData("0", kCropRegion);
    hidl_vec<CaptureRequest> requests(1);

    // When merged, the request gets a block without entries
    apply(requests, nullptr);
    ASSERT_EQ(requests[0].settings.size(), calculate_camera_metadata_size(1000, 1000));
    EXPECT_TRUE(items(requests[0].settings).empty());

    // When the camera is removed, a request is left alone
    cache->removeCamera("0");
    hidl_vec<CaptureRequest> later(1);
    apply(later, nullptr);
    EXPECT_EQ(later[0].settings.size(), 0u);
}

TEST_F(MetadataMergeTest, FailedWriteZeroesTheSizeAndHandsTheBlobToTheRequest) {
    // Given two queued requests and the first write back failing
    cacheCrop({1, 2, 3, 4});
    const Bytes first = blob(2, 16, {u8(kAwbMode, {1})});
    const Bytes second = blob(2, 16, {u8(kAwbMode, {2})});
    auto queue = queueWith({first, second});
    hidl_vec<CaptureRequest> requests = queuedRequests({first, second});
    hostfault::arm(hostfault::kQueueWrite, 1);

    // When the batch is merged
    apply(requests, queue);

    // Then the first request no longer claims a queued blob but carries its merged settings,
    // and the queue holds exactly the second request's blob
    EXPECT_EQ(requests[0].fmqSettingsSize, 0u);
    EXPECT_EQ(requests[0].settings.size(), first.size());
    EXPECT_EQ(items(requests[0].settings),
              (std::vector<Item>{u8(kAwbMode, {1}), i32(kCropRegion, {1, 2, 3, 4})}));
    std::vector<Bytes> out = blobsFor(*queue, requests);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(items(out[0]),
              (std::vector<Item>{u8(kAwbMode, {2}), i32(kCropRegion, {1, 2, 3, 4})}));
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{cacheLine(kError,
                                              "request 1: settings could not be written back to "
                                              "the queue; moved to the request\n")}));
}

TEST_F(MetadataMergeTest, QueueHoldingLessThanTheBatchClaimsIsLeftAlone) {
    // Given two queued requests but only the first blob in the queue
    cacheCrop({1, 2, 3, 4});
    const Bytes first = blob(2, 16, {u8(kAwbMode, {1})});
    auto queue = queueWith({first});
    hidl_vec<CaptureRequest> requests = queuedRequests({first, first});

    // When the batch is merged
    apply(requests, queue);

    // Then nothing is read or written, and the mismatch is logged
    EXPECT_EQ(requests[1].fmqSettingsSize, first.size());
    EXPECT_EQ(drain(*queue), first);
    char text[160];
    snprintf(text, sizeof(text),
             "camera [0] requests claim %zu settings bytes, the queue holds %zu; settings in the "
             "queue left unchanged\n",
             2 * first.size(), first.size());
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag), (std::vector<LogLine>{cacheLine(kError, text)}));
}

TEST_F(MetadataMergeTest, MalformedBlobsArePassedOnUnchangedAndTheNextIsStillMerged) {
    cacheCrop({1, 2, 3, 4});
    const Bytes good = blob(2, 16, {u8(kAwbMode, {1})});
    const size_t size = good.size();

    Bytes longer = good;  // claims more bytes than its header counts
    longer.resize(size + 8);
    Bytes badType = good;  // its entry's type is not the tag's
    badType[48 + 12] = TYPE_INT32;
    Bytes moved = good;  // the entry table starts 8 bytes late, which validation lets through
    memmove(&moved[56], &moved[48], 16);
    moved[20] = 56;
    const Bytes shortHeader(40, 0);

    struct Case {
        Bytes bytes;
        std::string why;
    };
    char text[160];
    for (const Case& c :
         {Case{longer, "has another size than claimed"}, Case{badType, "does not validate"},
          Case{moved, "has an unexpected layout"}, Case{shortHeader, "does not validate"}}) {
        SCOPED_TRACE(c.why);
        // Given a malformed blob followed by a sound one
        auto queue = queueWith({c.bytes, good});
        hidl_vec<CaptureRequest> requests = queuedRequests({c.bytes, good});

        // When the batch is merged
        apply(requests, queue);

        // Then the malformed blob keeps its bytes, place and size, and the next is merged
        std::vector<Bytes> out = blobsFor(*queue, requests);
        ASSERT_EQ(out.size(), 2u);
        EXPECT_EQ(out[0], c.bytes);
        EXPECT_EQ(requests[0].fmqSettingsSize, c.bytes.size());
        EXPECT_EQ(items(out[1]),
                  (std::vector<Item>{u8(kAwbMode, {1}), i32(kCropRegion, {1, 2, 3, 4})}));
        snprintf(text, sizeof(text),
                 "request 1: settings blob of %zu bytes in the queue %s; passed on unchanged\n",
                 c.bytes.size(), c.why.c_str());
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
                  (std::vector<LogLine>{cacheLine(kError, text)}));
    }
}

TEST_F(MetadataMergeTest, CachedValuesNarrowerThanTheTagAreNotMerged) {
    // Given a crop region cached as four bytes, where the library reads four 32-bit integers
    cacheBytes(kCropRegion, {1, 2, 3, 4});
    const Bytes holding = blob(2, 16, {i32(kCropRegion, {0, 0, 1280, 720})});
    const Bytes lacking = blob(2, 16, {u8(kAwbMode, {1})});
    auto queue = queueWith({holding, lacking});
    hidl_vec<CaptureRequest> requests = queuedRequests({holding, lacking});

    // When the batch is merged
    apply(requests, queue);

    // Then neither blob changes and nothing past the cached bytes was read
    EXPECT_EQ(blobsFor(*queue, requests), (std::vector<Bytes>{holding, lacking}));
    EXPECT_TRUE(LogCapture::linesWithTag(kCacheTag).empty());
}

TEST_F(MetadataMergeTest, AppendAlwaysMetadataAloneNeedsAQueueAndQueuedSettings) {
    int32_t crop[] = {1, 2, 3, 4};
    ACameraMetadata_entry entry{kCropRegion, ACAMERA_TYPE_INT32, 4, {nullptr}};
    entry.data.i32 = crop;
    const Bytes settings = blob(2, 16, {u8(kAwbMode, {1})});
    auto queue = queueWith({settings});
    CaptureRequest request{};

    // Without a queue, or with settings not in the queue, nothing happens
    request.fmqSettingsSize = settings.size();
    cache->appendAlwaysMetadata(nullptr, request, entry);
    request.fmqSettingsSize = 0;
    cache->appendAlwaysMetadata(queue, request, entry);
    EXPECT_EQ(queue->availableToRead(), settings.size());

    // With both, the entry is merged into the blob whatever its tag
    request.fmqSettingsSize = settings.size();
    uint8_t mode = 2;
    ACameraMetadata_entry aeMode{kAeMode, ACAMERA_TYPE_BYTE, 1, {&mode}};
    cache->appendAlwaysMetadata(queue, request, aeMode);
    Bytes out = drain(*queue);
    EXPECT_EQ(items(out), (std::vector<Item>{u8(kAwbMode, {1}), u8(kAeMode, {2})}));
}

TEST_F(MetadataMergeTest, ConcurrencyOfWritersAndMergesKeepsEveryMergedCropWhole) {
    // Given a thread rewriting the cached crop region while another merges batches
    cacheCrop({0, 0, 0, 0});
    std::atomic<bool> done{false};
    std::thread writer([this, &done] {
        for (int32_t i = 1; !done; ++i) cacheCrop({i, i, i, i});
    });

    // When batches of two queued requests are merged meanwhile
    const Bytes settings = blob(4, 32, {u8(kAwbMode, {1})});
    for (int round = 0; round < 200; ++round) {
        auto queue = queueWith({settings, settings});
        hidl_vec<CaptureRequest> requests = queuedRequests({settings, settings});
        cache->applyMetaData("0", requests, queue);

        // Then every blob holds one whole crop region, the same in both
        std::vector<Bytes> out = blobsFor(*queue, requests);
        ASSERT_EQ(out.size(), 2u);
        std::vector<Item> got = items(out[0]);
        ASSERT_EQ(got.size(), 2u);
        int32_t v[4];
        memcpy(v, got[1].bytes.data(), sizeof(v));
        EXPECT_TRUE(v[0] == v[1] && v[1] == v[2] && v[2] == v[3]);
        EXPECT_EQ(items(out[1]), got);
    }
    done = true;
    writer.join();
}
