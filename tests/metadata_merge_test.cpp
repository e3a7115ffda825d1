// Merging cached metadata into capture requests: queued blobs (edits, growth, malformed blobs,
// order, every single fault), new settings, and requests left alone.
#include <string.h>

#include <algorithm>

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
using Log = std::vector<LogLine>;

namespace {

constexpr uint32_t kExposure = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;  // int32 x1
constexpr uint32_t kCrop = ANDROID_SCALER_CROP_REGION;                    // int32 x4
constexpr uint32_t kAeMode = ANDROID_CONTROL_AE_MODE;                     // byte
constexpr uint32_t kAwb = ANDROID_CONTROL_AWB_MODE;                       // byte
constexpr uint32_t kMarker = ANDROID_JPEG_ORIENTATION;                    // int32: request mark

const Item kCropItem = i32(kCrop, {1, 2, 3, 4}), kExposureItem = i32(kExposure, {-2});
const Item kFps = i32(ANDROID_CONTROL_AE_TARGET_FPS_RANGE, {15, 30}), kAwb1 = u8(kAwb, {1});

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

class MetadataMergeTest : public ::testing::Test {
  protected:
    void SetUp() override { Peer::reset(); }
    void TearDown() override { hostfault::disarmAll(); }

    std::shared_ptr<CameraControlCache> cache(const Items& cached = {}) {
        for (const Item& item : cached)
            CameraControlCache::Instance()->addMetaData("0", asEntry(item));
        return CameraControlCache::Instance();
    }
    // Merges queued blobs for camera 0; returns the queue's blobs as the requests claim them.
    std::vector<Bytes> merge(const std::vector<Bytes>& sent, hidl_vec<CaptureRequest>& requests) {
        auto queue = queueWith(sent);
        requests = queuedRequests(sent);
        LogCapture::clear();
        cache()->applyMetaData("device@3.2/internal/0", requests, queue);
        return blobsFor(*queue, requests);
    }
};

}  // namespace

TEST_F(MetadataMergeTest, QueuedBlobGetsOnlyTheAlwaysAppliedTagsInPlaceOrGrown) {
    using Row = std::tuple<Items, Bytes, Items, size_t, size_t, bool>;
    const Item full = i32(kCrop, {0, 0, 1280, 720}), C = kCropItem, E = kExposureItem;
    const Item six = i32(kCrop, {1, 2, 3, 4, 5, 6});
    const Row rows[] = {
            // 0 append with room; 1 update in place; 2 an update that does not fit is skipped
            {{u8(kAeMode, {1}), C}, blob(8, 64, {kFps, kAwb1}), {kFps, kAwb1, C}, 8, 64, false},
            {{C}, blob(2, 32, {full, kAwb1}), {C, kAwb1}, 2, 32, true},
            {{six}, blob(2, 16, {full, kAwb1}), {full, kAwb1}, 2, 16, false},
            // 3 a tag held twice: the first is updated; 4 narrower cached values are not merged
            {{C, E}, blob(4, 48, {full, kAwb1, full}), {C, kAwb1, full, E}, 4, 48, true},
            {{u8(kCrop, {1, 2, 3, 4})}, blob(2, 16, {kAwb1}), {kAwb1}, 2, 16, false},
            // Growth: twice the needed entries (count + 1) and data (count + 16), only of the
            // room that runs out (5 entries, 6 data, 7 both; 8 an inline value still reserves
            // 16 data bytes); the second tag then fits in the grown blob
            {{C, E}, blob(2, 64, {kFps, kAwb1}), {kFps, kAwb1, C, E}, 6, 64, false},
            {{C, E}, blob(4, 8, {kFps}), {kFps, C, E}, 4, 48, false},
            {{C, E}, blob(2, 8, {kFps, kAwb1}), {kFps, kAwb1, C, E}, 6, 48, false},
            {{E}, blob(2, 8, {kFps}), {kFps, E}, 2, 48, false},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        // Given the cached items and one queued blob, when it is merged, then the queue holds
        // the one blob, merged, as the request now claims, with this room
        const auto& [cached, sent, expected, entryRoom, dataRoom, logs] = rows[i];
        SCOPED_TRACE(i);
        Peer::reset();
        cache(cached);
        hidl_vec<CaptureRequest> requests;
        std::vector<Bytes> out = merge({sent}, requests);
        ASSERT_EQ(out.size(), 1u);
        EXPECT_TRUE(valid(out[0]));
        EXPECT_EQ(items(out[0]), expected);
        EXPECT_EQ(std::pair(entryCapacity(out[0]), dataCapacity(out[0])),
                  std::pair(entryRoom, dataRoom));
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
                  logs ? Log{cacheLine(kInfo, "updating 0xd0000 metadata \n")} : Log{});
    }
}

TEST_F(MetadataMergeTest, MalformedBlobGoesBackUnchangedInItsPlaceWithAnError) {
    cache({u8(kAwb, {2}), kCropItem});
    const Bytes good = blob(2, 16, {kAwb1});
    const Bytes withCrop = blob(2, 24, {kAwb1, i32(kCrop, {0, 9})});
    auto edit = [](Bytes b, size_t at, uint32_t value) {
        memcpy(&b[at], &value, 4);
        return b;
    };
    Bytes longer = good;
    longer.resize(good.size() + 8);
    const std::pair<const char*, Bytes> rows[] = {
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
    for (const auto& [why, sent] : rows) {
        SCOPED_TRACE(why);
        // Given a malformed blob between two sound ones, the others are merged and it keeps
        // its bytes, place and size
        hidl_vec<CaptureRequest> requests;
        std::vector<Bytes> out = merge({good, sent, good}, requests);
        ASSERT_EQ(out.size(), 3u);
        EXPECT_EQ(out[1], sent);
        EXPECT_EQ(requests[1].fmqSettingsSize, sent.size());
        EXPECT_EQ(items(out[0]), (Items{kAwb1, kCropItem}));
        EXPECT_EQ(out[2], out[0]);
        EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
                  Log{cacheLine(kError,
                                "request 2: settings blob of " + std::to_string(sent.size()) +
                                        " bytes in the queue " + why + "; passed on unchanged\n")});
    }
}

TEST_F(MetadataMergeTest, BatchBlobsEachGetBothTagsInRequestOrderAsFromOneAppendPerEntry) {
    // Given both tags cached, two queued blobs, the second already holding one tag, and a lone
    // request given the same entries by one appendAlwaysMetadata call each
    cache({kExposureItem, kCropItem});
    const Bytes first = blob(1, 8, {kAwb1});
    hidl_vec<CaptureRequest> requests, lone = queuedRequests({first});
    std::vector<Bytes> out =
            merge({first, blob(4, 32, {u8(kAwb, {2}), i32(kExposure, {0})})}, requests);
    auto loneQueue = queueWith({first});
    cache()->appendAlwaysMetadata(loneQueue, lone[0], asEntry(kExposureItem));
    cache()->appendAlwaysMetadata(loneQueue, lone[0], asEntry(kCropItem));

    // Then each blob carries both tags, in request order, and the lone one the same bytes
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(items(out[0]), (Items{kAwb1, kExposureItem, kCropItem}));
    EXPECT_EQ(items(out[1]), (Items{u8(kAwb, {2}), kExposureItem, kCropItem}));
    EXPECT_EQ(blobsFor(*loneQueue, lone), std::vector<Bytes>{out[0]});
    EXPECT_EQ(LogCapture::linesWithTag(kCacheTag),
              Log{cacheLine(kInfo, "updating 0x10001 metadata \n")});
}

TEST_F(MetadataMergeTest, RequestsWithoutSettingsGetEveryCachedEntryOthersAreLeftAlone) {
    // Given entries of several types, one of a tag the library does not know, and no queue
    Item focal{ANDROID_LENS_FOCAL_LENGTH, TYPE_FLOAT, {0, 0, 0x90, 0x40}};
    cache({kExposureItem, u8(kAeMode, {1}), i32(0x300000, {9}), kCropItem, focal});
    hidl_vec<CaptureRequest> requests(4);
    requests[1].fmqSettingsSize = 100;
    requests[3].settings = hidl_vec<uint8_t>{1, 2, 3};
    const uint8_t* own = requests[3].settings.data();
    LogCapture::clear();
    cache()->applyMetaData("0", requests, nullptr);

    // Then each request without settings gets a new 1000-entry, 1000-byte block holding every
    // entry the library takes, in list order; the queued and the self-carried ones are as sent
    for (size_t i : {0, 2}) {
        const Bytes settings(requests[i].settings.begin(), requests[i].settings.end());
        EXPECT_EQ(settings.size(), calculate_camera_metadata_size(1000, 1000));
        EXPECT_TRUE(valid(settings));
        EXPECT_EQ(items(settings), (Items{kExposureItem, u8(kAeMode, {1}), kCropItem, focal}));
    }
    EXPECT_EQ(std::tuple(requests[1].fmqSettingsSize, requests[1].settings.size(),
                         requests[3].settings.data(), LogCapture::lines().size()),
              std::tuple(uint64_t{100}, size_t{0}, own, size_t{0}));
}

TEST_F(MetadataMergeTest, NoListNoBatchOrAQueueNotHoldingTheBatchChangesNothing) {
    // When a camera without a list, an empty batch, and a batch claiming two blobs where the
    // queue holds one, are merged with the next metadata allocation armed to fail
    auto c = cache({kCropItem});
    const Bytes settings = blob(2, 16, {kAwb1});
    auto queue = queueWith({settings});
    hidl_vec<CaptureRequest> requests = queuedRequests({settings, settings}), none;
    hostfault::arm(hostfault::kMetadataAllocate, 1);
    LogCapture::clear();
    c->applyMetaData("device@3.2/internal/4", requests, queue);
    c->applyMetaData("0", none, queue);
    c->applyMetaData("0", requests, queue);

    // Then nothing changed, no block was asked for, no camera made, only the mismatch logged
    EXPECT_EQ(allocate_camera_metadata(1, 1), nullptr);
    EXPECT_EQ(requests[1].fmqSettingsSize, settings.size());
    EXPECT_EQ(drain(*queue), settings);
    EXPECT_FALSE(Peer::hasCamera("4"));
    EXPECT_EQ(LogCapture::lines(),
              Log{cacheLine(kError, "camera [0] requests claim " +
                                            std::to_string(2 * settings.size()) +
                                            " settings bytes, the queue holds " +
                                            std::to_string(settings.size()) +
                                            "; settings in the queue left unchanged\n")});

    // And appendAlwaysMetadata merges any tag into the queued settings, but needs a queue and
    // settings in it, no more than it holds
    CaptureRequest request{};
    request.fmqSettingsSize = settings.size();
    Bytes dirty = settings;
    std::fill(dirty.end() - 16, dirty.end(), 0xAB);  // the unused data area, last in the blob
    queue = queueWith({dirty});
    c->appendAlwaysMetadata(queue, request, asEntry(i32(kMarker, {1, 2, 3})));
    const Bytes merged = drain(*queue);
    EXPECT_EQ(items(merged), (Items{kAwb1, i32(kMarker, {1, 2, 3})}));
    EXPECT_EQ(Bytes(merged.end() - 4, merged.end()), Bytes(4, 0));  // no stale alignment tail
    queue = queueWith({merged});
    LogCapture::clear();
    c->appendAlwaysMetadata(nullptr, request, asEntry(kCropItem));
    for (uint64_t size : {uint64_t{0}, uint64_t{1} << 62}) {
        request.fmqSettingsSize = size;
        c->appendAlwaysMetadata(queue, request, asEntry(kCropItem));
    }
    EXPECT_EQ(drain(*queue), merged);
    EXPECT_TRUE(LogCapture::lines().empty());
}

namespace {

// One batch: three queued requests (one holding the crop in exact room, one with room to spare,
// one with no room), one without settings and one with its own.
struct MergeBatch {
    MergeBatch() {
        mRequests.resize(5);
        for (size_t i = 0; i < 5; ++i) mRequests[i].frameNumber = i;
        for (size_t i : {0, 2, 4}) mRequests[i].fmqSettingsSize = mBlobs[i / 2].size();
        mRequests[3].settings = mOwn;
    }

    // What the session finds for each request when it reads the settings as usual (the
    // settings-less one: its entry count); "LOST", "OUT OF ORDER", "BROKEN" or "EXTRA BYTES"
    // when a blob did not survive.
    Strings outcome() {
        Strings out;
        for (size_t i = 0; i < mRequests.size(); ++i) {
            const CaptureRequest& r = mRequests[i];
            Bytes found(r.settings.begin(), r.settings.end());
            if (i % 2 == 1) {
                out.push_back(i == 3 ? (found == mOwn ? "own" : "OWN CHANGED")
                                     : std::to_string(items(found).size()));
                continue;
            }
            const std::string where = r.fmqSettingsSize != 0 ? "queue:" : "settings:";
            if (r.fmqSettingsSize != 0) {
                found.resize(r.fmqSettingsSize);
                if (!mQueue->read(found.data(), found.size())) return {"LOST"};
            }
            if (!valid(found)) return {"BROKEN " + std::to_string(i)};
            const Items got = items(found);
            if (!(got[0] == i32(kMarker, {static_cast<int32_t>(i)}))) return {"OUT OF ORDER"};
            const bool crop = std::count(got.begin(), got.end(), kCropItem) != 0;
            const bool exposure = std::count(got.begin(), got.end(), kExposureItem) != 0;
            out.push_back(where + (found == mBlobs[i / 2] ? "unchanged"
                                   : crop && exposure     ? "merged"
                                   : crop                 ? "crop only"
                                                          : "exposure only"));
        }
        if (mQueue->availableToRead() != 0) out.push_back("EXTRA BYTES");
        return out;
    }

    std::vector<Bytes> mBlobs = {blob(2, 16, {i32(kMarker, {0}), i32(kCrop, {0, 0, 640, 360})}),
                                 blob(8, 64, {i32(kMarker, {2})}), blob(1, 0, {i32(kMarker, {4})})};
    Bytes mOwn = blob(1, 0, {i32(kMarker, {3})});
    std::shared_ptr<RequestMetadataQueue> mQueue = queueWith(mBlobs);
    hidl_vec<CaptureRequest> mRequests;
};

}  // namespace

TEST_F(MetadataMergeTest, EverySingleFaultKeepsEachQueuedBlobOnceWholeAndInOrder) {
    // Given the camera's entries, and the batch merged without a fault
    auto c = cache({kCropItem, kExposureItem, u8(kAeMode, {1})});
    const std::string m = "queue:merged", n = "3", u = "queue:unchanged", s = "settings:merged";
    auto row = [](std::string r0, std::string r1, std::string r2, std::string r4) {
        return Strings{r0, r1, r2, "own", r4};
    };

    // What the requests end with when the k-th call at a point fails: the batch's blobs are
    // read at once, so a failed read leaves them all as sent; a failed write hands that
    // request its merged settings; a failed allocation (request 0's growth, request 1's new
    // settings, request 4's growth for the crop, then for the exposure) drops that entry
    const std::pair<hostfault::Point, std::vector<Strings>> sweeps[] = {
            {hostfault::kQueueRead, {row(u, n, u, u)}},
            {hostfault::kQueueWrite, {row(s, n, m, m), row(m, n, s, m), row(m, n, m, s)}},
            {hostfault::kMetadataAllocate,
             {row("queue:crop only", n, m, m), row(m, "0", m, m),
              row(m, n, m, "queue:exposure only")}},
    };
    for (const auto& [point, expected] : sweeps) {
        for (size_t k = 0; k <= expected.size(); ++k) {
            SCOPED_TRACE("point " + std::to_string(point) + " failing after " + std::to_string(k));
            MergeBatch batch;
            hostfault::arm(point, 1, static_cast<int>(k));
            LogCapture::clear();
            c->applyMetaData("0", batch.mRequests, batch.mQueue);
            hostfault::disarmAll();

            // Then one past the last fault point everything is merged; only a failed write
            // is logged as an error
            const bool failed = k < expected.size();
            EXPECT_EQ(batch.outcome(), failed ? expected[k] : row(m, n, m, m));
            Log errors;
            for (const LogLine& l : LogCapture::linesWithTag(kCacheTag))
                if (l.priority == kError) errors.push_back(l);
            EXPECT_EQ(errors, failed && point == hostfault::kQueueWrite
                                      ? Log{cacheLine(kError, "request " + std::to_string(2 * k) +
                                                                      ": settings could not be "
                                                                      "written back to the queue; "
                                                                      "moved to the request\n")}
                                      : Log{});
        }
    }

    // Bytes behind the batch's blobs leave the queue alone: going round the queue would put
    // the merged blobs behind them
    MergeBatch crowded;
    crowded.mQueue->write(crowded.mOwn.data(), crowded.mOwn.size());
    c->applyMetaData("0", crowded.mRequests, crowded.mQueue);
    Strings untouched = row(u, n, u, u);
    untouched.push_back("EXTRA BYTES");
    EXPECT_EQ(crowded.outcome(), untouched);
}
