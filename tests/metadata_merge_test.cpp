// Merging cached metadata into capture requests: queued blobs (edits, growth, malformed blobs,
// order, every single fault), new settings, and requests left alone.
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "kit/BlobBuilder.h"
#include "support/CachePeer.h"
#include "support/LogCapture.h"

using namespace kit;
using namespace testing_support;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using Peer = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::
        CameraControlCacheTestPeer;
using Items = std::vector<Item>;
using Strings = std::vector<std::string>;

namespace {

constexpr uint32_t kExposure = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;  // int32 x1
constexpr uint32_t kCrop = ANDROID_SCALER_CROP_REGION;                    // int32 x4
constexpr uint32_t kAeMode = ANDROID_CONTROL_AE_MODE;                     // byte
constexpr uint32_t kFps = ANDROID_CONTROL_AE_TARGET_FPS_RANGE;            // int32 x2
constexpr uint32_t kAwb = ANDROID_CONTROL_AWB_MODE;                       // byte
constexpr uint32_t kMarker = ANDROID_JPEG_ORIENTATION;                    // int32: request mark

const Item kCropItem = i32(kCrop, {1, 2, 3, 4});
const Item kExposureItem = i32(kExposure, {-2});
const LogLine kUpdatedCrop = cacheLine(kInfo, "updating 0xd0000 metadata \n");

// The queue's blobs, cut by the sizes the requests now claim; the queue must hold no more.
std::vector<Bytes> blobsFor(RequestMetadataQueue& queue, const hidl_vec<CaptureRequest>& requests) {
    Bytes all = drain(queue);
    std::vector<Bytes> out;
    size_t at = 0;
    for (const CaptureRequest& r : requests) {
        if (r.fmqSettingsSize == 0) continue;
        if (at + r.fmqSettingsSize > all.size()) break;
        out.emplace_back(all.begin() + at, all.begin() + at + r.fmqSettingsSize);
        at += r.fmqSettingsSize;
    }
    EXPECT_EQ(at, all.size()) << "bytes left in the queue";
    return out;
}

std::string format(const char* fmt, size_t a, size_t b = 0) {
    char text[200];
    snprintf(text, sizeof(text), fmt, a, b);
    return text;
}

class MetadataMergeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Peer::reset();
        cache = CameraControlCache::Instance();
    }
    void TearDown() override { hostfault::disarmAll(); }

    void cacheItems(const Items& cached) {
        for (const Item& item : cached) cache->addMetaData("0", asEntry(item));
    }
    void apply(hidl_vec<CaptureRequest>& requests, std::shared_ptr<RequestMetadataQueue> queue) {
        LogCapture::clear();
        cache->applyMetaData("device@3.2/internal/0", requests, std::move(queue));
    }

    std::shared_ptr<CameraControlCache> cache;
};

}  // namespace

TEST_F(MetadataMergeTest, QueuedBlobGetsOnlyTheAlwaysAppliedTagsInPlaceOrGrown) {
    struct Row {
        const char* what;
        Items cached;
        Bytes sent;
        Items expected;
        size_t entryCapacity, dataCapacity;  // of the blob written back
        std::vector<LogLine> log;
    };
    const Item fps = i32(kFps, {15, 30}), awb = u8(kAwb, {1});
    const Row rows[] = {
            {"append with room",
             {u8(kAeMode, {1}), kCropItem},
             blob(8, 64, {fps, awb}),
             {fps, awb, kCropItem},
             8,
             64,
             {}},
            {"update in place",
             {kCropItem},
             blob(2, 32, {i32(kCrop, {0, 0, 1280, 720}), awb}),
             {kCropItem, awb},
             2,
             32,
             {kUpdatedCrop}},
            {"update that does not fit is skipped",
             {i32(kCrop, {1, 2, 3, 4, 5, 6})},
             blob(2, 16, {i32(kCrop, {0, 0, 1280, 720}), awb}),
             {i32(kCrop, {0, 0, 1280, 720}), awb},
             2,
             16,
             {}},
            {"narrower cached values are not merged",
             {u8(kCrop, {1, 2, 3, 4})},
             blob(2, 16, {awb}),
             {awb},
             2,
             16,
             {}},
            // Growth: twice the needed entries (count + 1) and data (count + 16), only of
            // the room that runs out; the second tag then fits in the grown blob
            {"grow: entry room only",
             {kCropItem, kExposureItem},
             blob(2, 64, {fps, awb}),
             {fps, awb, kCropItem, kExposureItem},
             6,
             64,
             {}},
            {"grow: data room only",
             {kCropItem, kExposureItem},
             blob(4, 8, {fps}),
             {fps, kCropItem, kExposureItem},
             4,
             48,
             {}},
            {"grow: both",
             {kCropItem, kExposureItem},
             blob(2, 8, {fps, awb}),
             {fps, awb, kCropItem, kExposureItem},
             6,
             48,
             {}},
            {"grow: inline value still reserves 16 data bytes",
             {kExposureItem},
             blob(2, 8, {fps}),
             {fps, kExposureItem},
             2,
             48,
             {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // Given the cached items and one queued blob
        Peer::reset();
        cache = CameraControlCache::Instance();
        cacheItems(row.cached);
        auto queue = queueWith({row.sent});
        hidl_vec<CaptureRequest> requests = queuedRequests({row.sent});

        // When the batch is merged
        apply(requests, queue);

        // Then the queue holds the one merged blob, as the request now claims
        std::vector<Bytes> out = blobsFor(*queue, requests);
        ASSERT_EQ(out.size(), 1u);
        EXPECT_TRUE(valid(out[0]));
        EXPECT_EQ(items(out[0]), row.expected);
        EXPECT_EQ(entryCapacity(out[0]), row.entryCapacity);
        EXPECT_EQ(dataCapacity(out[0]), row.dataCapacity);
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag), row.log);
        EXPECT_EQ(requests[0].settings.size(), 0u);
    }
}

TEST_F(MetadataMergeTest, MalformedBlobGoesBackUnchangedInItsPlaceWithAnError) {
    cacheItems({u8(kAwb, {2}), kCropItem});
    const Bytes good = blob(2, 16, {u8(kAwb, {1})});
    const Bytes withCrop = blob(2, 24, {u8(kAwb, {1}), i32(kCrop, {0, 9})});
    auto edit = [](Bytes b, size_t at, uint32_t value) {
        memcpy(&b[at], &value, 4);
        return b;
    };
    struct Row {
        const char* why;
        Bytes sent;
    };
    Bytes longer = good;
    longer.resize(good.size() + 8);
    const Row rows[] = {
            {"is shorter than a header", Bytes(40, 0)},
            {"has another size or version than claimed", longer},
            {"has another size or version than claimed", edit(good, 4, 2)},
            {"counts more than its capacities", edit(good, 12, 3)},
            {"counts more than its capacities", edit(withCrop, 24, 32)},
            // validates, yet an entry appended at it would not
            {"has an unaligned data count", edit(withCrop, 24, 12)},
            {"has an unexpected layout", edit(good, 20, 56)},
            {"has an unexpected layout", edit(good, 32, 88)},
            // the crop's data lies past the used data but inside the capacity: validates, yet
            // resizing it moves a wrapped length on the platform
            {"has a malformed entry 0xd0000", edit(withCrop, 48 + 16 + 8, 8)},
            {"has a malformed entry 0xd0000", edit(withCrop, 48 + 16 + 8, 4)},
            {"has a malformed entry 0xd0000", edit(withCrop, 48 + 16 + 12, TYPE_FLOAT)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        // Given a malformed blob between two sound ones
        auto queue = queueWith({good, row.sent, good});
        hidl_vec<CaptureRequest> requests = queuedRequests({good, row.sent, good});

        // When the batch is merged
        apply(requests, queue);

        // Then the malformed blob keeps its bytes, place and size, the others are merged
        std::vector<Bytes> out = blobsFor(*queue, requests);
        ASSERT_EQ(out.size(), 3u);
        EXPECT_EQ(out[1], row.sent);
        EXPECT_EQ(requests[1].fmqSettingsSize, row.sent.size());
        EXPECT_EQ(items(out[0]), (Items{u8(kAwb, {1}), kCropItem}));
        EXPECT_EQ(out[2], out[0]);
        const std::string expected = "request 2: settings blob of " +
                                     std::to_string(row.sent.size()) + " bytes in the queue " +
                                     row.why + "; passed on unchanged\n";
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
                  (std::vector<LogLine>{cacheLine(kError, expected)}));
    }
}

TEST_F(MetadataMergeTest, BatchBlobsEachGetBothTagsInRequestOrderAsFromOneAppendPerEntry) {
    // Given both tags cached and two queued blobs, the second already holding one tag, and a
    // lone request given the same entries by one appendAlwaysMetadata call each
    cacheItems({kExposureItem, kCropItem});
    const Bytes first = blob(1, 8, {u8(kAwb, {1})});
    const Bytes second = blob(4, 32, {u8(kAwb, {2}), i32(kExposure, {0})});
    auto queue = queueWith({first, second});
    hidl_vec<CaptureRequest> requests = queuedRequests({first, second});
    auto loneQueue = queueWith({first});
    hidl_vec<CaptureRequest> lone = queuedRequests({first});

    // When the batch is merged, and the lone request entry by entry
    apply(requests, queue);
    cache->appendAlwaysMetadata(loneQueue, lone[0], asEntry(kExposureItem));
    cache->appendAlwaysMetadata(loneQueue, lone[0], asEntry(kCropItem));

    // Then each blob carries both tags, in request order, and the lone one the same bytes
    std::vector<Bytes> out = blobsFor(*queue, requests);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(items(out[0]), (Items{u8(kAwb, {1}), kExposureItem, kCropItem}));
    EXPECT_EQ(items(out[1]), (Items{u8(kAwb, {2}), kExposureItem, kCropItem}));
    EXPECT_EQ(blobsFor(*loneQueue, lone), std::vector<Bytes>{out[0]});
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              (std::vector<LogLine>{cacheLine(kInfo, "updating 0x10001 metadata \n")}));
}

TEST_F(MetadataMergeTest, RequestsWithoutSettingsGetEveryCachedEntryOthersAreLeftAlone) {
    // Given entries of several types, one of a tag the library does not know, and no queue
    float focal = 4.5f;
    Item focalItem{ANDROID_LENS_FOCAL_LENGTH, TYPE_FLOAT, Bytes(4)};
    memcpy(focalItem.bytes.data(), &focal, 4);
    cacheItems({kExposureItem, u8(kAeMode, {1}), i32(0x300000, {9}), kCropItem, focalItem});
    hidl_vec<CaptureRequest> requests(4);
    requests[1].fmqSettingsSize = 100;
    requests[3].settings = hidl_vec<uint8_t>{1, 2, 3};
    const uint8_t* own = requests[3].settings.data();

    // When the batch is merged
    apply(requests, nullptr);

    // Then each request without settings owns a new 1000-entry, 1000-byte block holding every
    // entry the library takes, in list order; the queued and the self-carried ones are as sent
    for (size_t i : {0, 2}) {
        const Bytes settings(requests[i].settings.begin(), requests[i].settings.end());
        EXPECT_EQ(settings.size(), calculate_camera_metadata_size(1000, 1000));
        EXPECT_TRUE(valid(settings));
        EXPECT_EQ(items(settings), (Items{kExposureItem, u8(kAeMode, {1}), kCropItem, focalItem}));
    }
    EXPECT_NE(requests[0].settings.data(), requests[2].settings.data());
    EXPECT_EQ(requests[1].fmqSettingsSize, 100u);
    EXPECT_EQ(requests[1].settings.size(), 0u);
    EXPECT_EQ(requests[3].settings.data(), own);
    EXPECT_TRUE(LogCapture::lines().empty());

    // And once the list is emptied the block has no entries; once the camera is removed,
    // nothing is given
    cache->removeCamera("0");
    cacheItems({kCropItem});
    cache->removeMetaData("0", kCrop);
    hidl_vec<CaptureRequest> emptied(1);
    apply(emptied, nullptr);
    EXPECT_TRUE(items(Bytes(emptied[0].settings.begin(), emptied[0].settings.end())).empty());
    cache->removeCamera("0");
    hidl_vec<CaptureRequest> later(1);
    apply(later, nullptr);
    EXPECT_EQ(later[0].settings.size(), 0u);
}

TEST_F(MetadataMergeTest, NoListNoBatchOrAQueueNotHoldingTheBatchChangesNothing) {
    cacheItems({kCropItem});
    const Bytes settings = blob(2, 16, {u8(kAwb, {1})});
    auto queue = queueWith({settings});
    hidl_vec<CaptureRequest> requests = queuedRequests({settings, settings});
    hidl_vec<CaptureRequest> none;

    // When a camera without a list, an empty batch, and a batch claiming two blobs where the
    // queue holds one, are merged with the next metadata allocation armed to fail
    hostfault::arm(hostfault::kMetadataAllocate, 1);
    LogCapture::clear();
    cache->applyMetaData("device@3.2/internal/4", requests, queue);
    cache->applyMetaData("0", none, queue);
    cache->applyMetaData("0", requests, queue);

    // Then nothing changed, no block was asked for, no camera was made, and only the
    // mismatch is logged
    EXPECT_EQ(allocate_camera_metadata(1, 1), nullptr);
    EXPECT_EQ(requests[1].fmqSettingsSize, settings.size());
    EXPECT_EQ(drain(*queue), settings);
    EXPECT_FALSE(Peer::hasCamera("4"));
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{cacheLine(
                      kError, format("camera [0] requests claim %zu settings bytes, the queue "
                                     "holds %zu; settings in the queue left unchanged\n",
                                     2 * settings.size(), settings.size()))}));

    // And appendAlwaysMetadata merges any tag into the queued settings, but needs a queue and
    // settings in it
    CaptureRequest request{};
    request.fmqSettingsSize = settings.size();
    queue = queueWith({settings});
    cache->appendAlwaysMetadata(queue, request, asEntry(u8(kAeMode, {2})));
    const Bytes merged = drain(*queue);
    EXPECT_EQ(items(merged), (Items{u8(kAwb, {1}), u8(kAeMode, {2})}));
    queue = queueWith({merged});
    LogCapture::clear();
    cache->appendAlwaysMetadata(nullptr, request, asEntry(kCropItem));
    request.fmqSettingsSize = 0;
    cache->appendAlwaysMetadata(queue, request, asEntry(kCropItem));
    request.fmqSettingsSize = uint64_t{1} << 62;  // more than the queue holds: nothing is read
    cache->appendAlwaysMetadata(queue, request, asEntry(kCropItem));
    EXPECT_EQ(drain(*queue), merged);
    EXPECT_TRUE(LogCapture::lines().empty());
}

namespace {

// One batch: three queued requests (one holding the crop in exact room, one with room to spare,
// one with no room), one without settings and one with its own. The camera caches both
// always-applied tags and an AE mode.
class MergeBatch {
  public:
    MergeBatch() {
        mBlobs = {blob(2, 16, {i32(kMarker, {0}), i32(kCrop, {0, 0, 640, 360})}),
                  blob(8, 64, {i32(kMarker, {2})}), blob(1, 0, {i32(kMarker, {4})})};
        mOwn = blob(1, 0, {i32(kMarker, {3})});
        mQueue = queueWith(mBlobs);
        mRequests.resize(5);
        for (size_t i : {0, 2, 4}) mRequests[i].fmqSettingsSize = mBlobs[i / 2].size();
        for (size_t i = 0; i < 5; ++i) mRequests[i].frameNumber = i;
        mRequests[3].settings = mOwn;
    }

    void apply() { CameraControlCache::Instance()->applyMetaData("0", mRequests, mQueue); }
    void queueBehind(const Bytes& bytes) { mQueue->write(bytes.data(), bytes.size()); }

    // What the session finds for each request when it reads the settings as usual; "LOST",
    // "OUT OF ORDER", "BROKEN" or "EXTRA BYTES" when a blob did not survive.
    Strings outcome() {
        Strings out;
        for (size_t i = 0; i < mRequests.size(); ++i) {
            const CaptureRequest& r = mRequests[i];
            Bytes found(r.settings.begin(), r.settings.end());
            if (i == 3) {
                out.push_back(found == mOwn ? "own" : "OWN CHANGED");
                continue;
            }
            if (i == 1) {
                out.push_back(found.empty() ? "none" : std::to_string(items(found).size()));
                continue;
            }
            std::string where = "settings";
            if (r.fmqSettingsSize != 0) {
                found.resize(r.fmqSettingsSize);
                if (!mQueue->read(found.data(), found.size())) return {"LOST"};
                where = "queue";
            }
            if (!valid(found)) return {"BROKEN " + std::to_string(i)};
            const Items got = items(found);
            if (!(got[0] == i32(kMarker, {static_cast<int32_t>(i)}))) return {"OUT OF ORDER"};
            const bool crop = std::count(got.begin(), got.end(), kCropItem) != 0;
            const bool exposure = std::count(got.begin(), got.end(), kExposureItem) != 0;
            out.push_back(where + ":" +
                          (found == mBlobs[i / 2] ? "unchanged"
                           : crop && exposure     ? "merged"
                           : crop                 ? "crop only"
                                                  : "exposure only"));
        }
        if (mQueue->availableToRead() != 0) out.push_back("EXTRA BYTES");
        return out;
    }

  private:
    std::vector<Bytes> mBlobs;
    Bytes mOwn;
    std::shared_ptr<RequestMetadataQueue> mQueue;
    hidl_vec<CaptureRequest> mRequests;
};

}  // namespace

TEST_F(MetadataMergeTest, EverySingleFaultKeepsEachQueuedBlobOnceWholeAndInOrder) {
    // Given the camera's entries, and the batch merged without a fault
    cacheItems({kCropItem, kExposureItem, u8(kAeMode, {1})});
    const std::string m = "queue:merged", n = "3";
    auto row = [](std::string r0, std::string r1, std::string r2, std::string r4) {
        return Strings{r0, r1, r2, "own", r4};
    };
    const Strings merged = row(m, n, m, m);
    MergeBatch reference;
    reference.apply();
    ASSERT_EQ(reference.outcome(), merged);

    // What the requests end with when the k-th call at a point fails: the batch's blobs are
    // read at once, so a failed read leaves them all as sent; a failed write hands that
    // request its merged settings; a failed allocation (request 0's growth, request 1's new
    // settings, request 4's growth for the crop, then for the exposure) drops that entry
    struct Sweep {
        hostfault::Point point;
        std::vector<Strings> expected;
    };
    const Sweep sweeps[] = {
            {hostfault::kQueueRead,
             {row("queue:unchanged", n, "queue:unchanged", "queue:unchanged")}},
            {hostfault::kQueueWrite,
             {row("settings:merged", n, m, m), row(m, n, "settings:merged", m),
              row(m, n, m, "settings:merged")}},
            {hostfault::kMetadataAllocate,
             {row("queue:crop only", n, m, m), row(m, "none", m, m),
              row(m, n, m, "queue:exposure only")}},
    };
    for (const Sweep& s : sweeps) {
        for (size_t k = 0; k <= s.expected.size(); ++k) {
            SCOPED_TRACE("point " + std::to_string(s.point) + " failing after " +
                         std::to_string(k) + " calls");
            MergeBatch batch;
            hostfault::arm(s.point, 1, static_cast<int>(k));
            LogCapture::clear();
            batch.apply();
            hostfault::disarmAll();

            // Then one past the last fault point everything is merged; only a failed write
            // is logged as an error
            const bool failed = k < s.expected.size();
            EXPECT_EQ(batch.outcome(), failed ? s.expected[k] : merged);
            std::vector<LogLine> errors;
            for (const LogLine& l : LogCapture::linesWithTag(kCacheTag)) {
                if (l.priority == kError) errors.push_back(l);
            }
            std::vector<LogLine> expectedErrors;
            if (failed && s.point == hostfault::kQueueWrite) {
                expectedErrors.push_back(cacheLine(
                        kError, format("request %zu: settings could not be written back to the "
                                       "queue; moved to the request\n",
                                       2 * k)));
            }
            EXPECT_EQ(errors, expectedErrors);
        }
    }

    // Bytes behind the batch's blobs leave the queue alone: going round the queue would put
    // the merged blobs behind them
    MergeBatch crowded;
    crowded.queueBehind(blob(1, 0, {i32(kMarker, {9})}));
    crowded.apply();
    Strings untouched = row("queue:unchanged", n, "queue:unchanged", "queue:unchanged");
    untouched.push_back("EXTRA BYTES");
    EXPECT_EQ(crowded.outcome(), untouched);
}

TEST_F(MetadataMergeTest, ConcurrencyOfWritersAndMergesKeepsEveryMergedCropWhole) {
    // Given a thread rewriting the cached crop region while another merges batches
    cache->setCameraMetaarray("0", kCrop, hidl_vec<int32_t>{0, 0, 0, 0});
    std::atomic<bool> done{false};
    std::thread writer([this, &done] {
        for (int32_t i = 1; !done; ++i) cache->setCameraMetaarray("0", kCrop, {i, i, i, i});
    });

    // When batches of two queued requests are merged meanwhile
    const Bytes settings = blob(4, 32, {u8(kAwb, {1})});
    for (int round = 0; round < 200; ++round) {
        auto queue = queueWith({settings, settings});
        hidl_vec<CaptureRequest> requests = queuedRequests({settings, settings});
        cache->applyMetaData("0", requests, queue);

        // Then every blob holds one whole crop region, the same in both
        std::vector<Bytes> out = blobsFor(*queue, requests);
        ASSERT_EQ(out.size(), 2u);
        Items got = items(out[0]);
        ASSERT_EQ(got.size(), 2u);
        int32_t v[4];
        memcpy(v, got[1].bytes.data(), sizeof(v));
        EXPECT_TRUE(v[0] == v[1] && v[1] == v[2] && v[2] == v[3]);
        EXPECT_EQ(items(out[1]), got);
    }
    done = true;
    writer.join();
}
