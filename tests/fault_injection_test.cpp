// Injected platform faults: failed property writes, metadata allocations, queue reads and
// writes, and listener calls, with what each leaves behind.
#include <stdio.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hostfault/FaultInjection.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/ProviderPeer.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;
using CaptureRequest = CameraControlCache::CaptureRequest;
using Bytes = std::vector<uint8_t>;
using Strings = std::vector<std::string>;

namespace {

constexpr const char* kTalkerTracking = "vendor.talkertracking.flag";
constexpr const char* kMaxProperty = "persist.tessaview.vc.max";
constexpr const char* kEnable = "vendor.tessaview.vc.enable";
constexpr const char* kMultistream = "persist.vendor.multistream.enable";
const std::string kDead = "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '";

constexpr uint32_t kExposureCompensation = 0x10001;  // int32 x1, always applied
constexpr uint32_t kAeMode = 0x10003;                // byte, never merged into queued settings
constexpr uint32_t kCropRegion = 0xD0000;            // int32 x4, always applied
constexpr uint32_t kJpegOrientation = 0x70003;       // int32: marks each blob with its request

Strings preset(const std::string& n) {
    const std::string p = "persist.camera.preset." + n;
    return {prop(p + ".l"), prop(p + ".t"), prop(p + ".r"), prop(p + ".b")};
}

SceneControl ptz() {
    std::lock_guard lock(FDSession::mLock);
    return FDSession::getInstance()->mPTZControl;
}

std::vector<LogLine> providerErrors() {
    std::vector<LogLine> out;
    for (const LogLine& l : LogCapture::linesWithTag(kProviderTag)) {
        if (l.priority == kError) out.push_back(l);
    }
    return out;
}

// A settings blob of the given room: the marker, and the crop region when given.
Bytes settingsBlob(size_t entries, size_t data, int32_t marker, std::vector<int32_t> crop = {}) {
    Bytes bytes(calculate_camera_metadata_size(entries, data));
    camera_metadata_t* m = place_camera_metadata(bytes.data(), bytes.size(), entries, data);
    EXPECT_EQ(add_camera_metadata_entry(m, kJpegOrientation, &marker, 1), 0);
    if (!crop.empty()) {
        EXPECT_EQ(add_camera_metadata_entry(m, kCropRegion, crop.data(), 4), 0);
    }
    return bytes;
}

std::vector<int32_t> ints(const Bytes& blob, uint32_t tag) {
    camera_metadata_ro_entry_t e;
    if (find_camera_metadata_ro_entry(reinterpret_cast<const camera_metadata_t*>(blob.data()), tag,
                                      &e) != 0) {
        return {};
    }
    return std::vector<int32_t>(e.data.i32, e.data.i32 + e.count);
}

bool sound(const Bytes& blob) {
    const size_t size = blob.size();
    const auto* m = reinterpret_cast<const camera_metadata_t*>(blob.data());
    return size >= 48 && validate_camera_metadata_structure(m, &size) == 0 &&
           get_camera_metadata_size(m) == size;
}

class FaultInjectionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        provider->setListener(listener);
        LogCapture::clear();
    }
    void TearDown() override { hostfault::disarmAll(); }

    int32_t trackingMode() {
        return static_cast<int32_t>(static_cast<TrackingMode>(provider->getTrackingMode("0")));
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener("listener");
};

// One batch for the merge: three requests with settings in the queue (one holding the crop
// region in exact room, one with room to spare, one with no room), one without settings and
// one with its own. The camera caches both always-applied tags and an AE mode.
class MergeBatch {
  public:
    MergeBatch() {
        mBlobs = {settingsBlob(2, 16, 0, {0, 0, 640, 360}), settingsBlob(8, 64, 2),
                  settingsBlob(1, 0, 4)};
        mOwn = settingsBlob(1, 0, 3);
        mQueue = std::make_shared<RequestMetadataQueue>(1 << 16);
        mRequests.resize(5);
        for (size_t i = 0; i < mRequests.size(); ++i) mRequests[i].frameNumber = i;
        for (size_t i : {0, 2, 4}) {
            const Bytes& blob = mBlobs[i / 2];
            EXPECT_TRUE(mQueue->write(blob.data(), blob.size()));
            mRequests[i].fmqSettingsSize = blob.size();
        }
        mRequests[3].settings = mOwn;
    }

    static void cacheEntries() {
        auto cache = CameraControlCache::Instance();
        cache->setCameraMetaarray("0", kCropRegion, {1, 2, 3, 4});
        cache->setCameraMetadata("0", kExposureCompensation, -2);
        uint8_t mode = 1;
        cache->addMetaData("0", {kAeMode, ACAMERA_TYPE_BYTE, 1, {&mode}});
    }

    void apply() { CameraControlCache::Instance()->applyMetaData("0", mRequests, mQueue); }
    // Bytes queued behind the batch's blobs, as another batch's would be.
    void queueBehind(const Bytes& bytes) { mQueue->write(bytes.data(), bytes.size()); }

    // What the device session finds for each request when it reads the settings as usual:
    // where a queued blob now is and how much of the merge it got; "LOST", "OUT OF ORDER",
    // "BROKEN" or "EXTRA BYTES" when a blob did not survive.
    Strings outcome() {
        Strings out;
        for (size_t i = 0; i < mRequests.size(); ++i) {
            const CaptureRequest& r = mRequests[i];
            if (i == 3) {
                out.push_back(Bytes(r.settings.begin(), r.settings.end()) == mOwn ? "own"
                                                                                  : "OWN CHANGED");
                continue;
            }
            if (i == 1) {
                out.push_back(r.settings.size() == 0 ? "none" : describeNew(r));
                continue;
            }
            Bytes blob;
            std::string where;
            if (r.fmqSettingsSize != 0) {
                blob.resize(r.fmqSettingsSize);
                if (!mQueue->read(blob.data(), blob.size())) return {"LOST " + std::to_string(i)};
                where = "queue";
            } else if (r.settings.size() != 0) {
                blob.assign(r.settings.begin(), r.settings.end());
                where = "settings";
            } else {
                return {"LOST " + std::to_string(i)};
            }
            if (!sound(blob)) return {"BROKEN " + std::to_string(i)};
            if (ints(blob, kJpegOrientation) != std::vector<int32_t>{static_cast<int32_t>(i)}) {
                return {"OUT OF ORDER " + std::to_string(i)};
            }
            out.push_back(where + ":" + merged(blob, mBlobs[i / 2]));
        }
        if (mQueue->availableToRead() != 0) out.push_back("EXTRA BYTES");
        return out;
    }

  private:
    static std::string merged(const Bytes& blob, const Bytes& sent) {
        if (blob == sent) return "unchanged";
        const bool crop = ints(blob, kCropRegion) == std::vector<int32_t>{1, 2, 3, 4};
        const bool exposure = ints(blob, kExposureCompensation) == std::vector<int32_t>{-2};
        if (ints(blob, kAeMode).size() != 0) return "AE MODE MERGED";
        return crop && exposure ? "merged" : crop ? "crop only" : exposure ? "exposure only" : "?";
    }
    static std::string describeNew(const CaptureRequest& r) {
        const Bytes settings(r.settings.begin(), r.settings.end());
        if (!sound(settings)) return "NEW BROKEN";
        return "new with " +
               std::to_string(get_camera_metadata_entry_count(
                       reinterpret_cast<const camera_metadata_t*>(settings.data()))) +
               " entries";
    }

    std::vector<Bytes> mBlobs;
    Bytes mOwn;
    std::shared_ptr<RequestMetadataQueue> mQueue;
    hidl_vec<CaptureRequest> mRequests;
};

}  // namespace

TEST_F(FaultInjectionTest, FailedTalkerTrackingWriteLeavesThePropertyBehindTheMode) {
    // Given tracking notified once, and the next property write failing
    provider->setTrackingMode("0", TrackingMode::OFF);
    hostfault::arm(hostfault::kPropertySet);
    LogCapture::clear();
    listener->clear();

    // When tracking is switched on
    provider->setTrackingMode("0", TrackingMode::MODE_2);

    // Then the session runs it and listeners hear it; the write is logged as made, but the
    // property still says off
    EXPECT_EQ(trackingMode(), 2);
    EXPECT_EQ(listener->events(), Strings{"cameraDeviceTrackingChange 0 2"});
    EXPECT_TRUE(LogCapture::contains(
            providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 2")));
    EXPECT_EQ(prop(kTalkerTracking), "0");

    // And asking for the same mode again does not repair it: nothing changed, nothing is written
    provider->setTrackingMode("0", TrackingMode::MODE_2);
    EXPECT_EQ(prop(kTalkerTracking), "0");
    EXPECT_EQ(listener->events().size(), 1u);

    // Only the next change brings property and mode together again
    provider->setTrackingMode("0", TrackingMode::MODE_1);
    EXPECT_EQ(prop(kTalkerTracking), "1");
}

TEST_F(FaultInjectionTest, FailedPresetWritesLeaveAPartOrAMixOfTwoPresets) {
    // Given preset 1 saved at the full frame, then a zoom-in
    provider->savePreset("0", 1);
    provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100);
    const Crop zoomed{100, 56, 1180, 664};
    ASSERT_EQ(ptz().crops[0], zoomed);

    // When saving preset 1 again fails at its right and bottom edges, and preset 2 at its left
    hostfault::arm(hostfault::kPropertySet, 2, /*skip=*/2);
    LogCapture::clear();
    provider->savePreset("0", 1);
    hostfault::arm(hostfault::kPropertySet, 1);
    provider->savePreset("0", 2);

    // Then both saves are logged as complete
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "SavePreset 1 "),
                      providerLine(kDebug, "SavePreset : 1, position  100, 1180, 56, 664   \n"),
                      providerLine(kDebug, "SavePreset 2 "),
                      providerLine(kDebug, "SavePreset : 2, position  100, 1180, 56, 664   \n"),
              }));
    // And preset 1 mixes the new left and top with the old right and bottom, preset 2 lacks its
    // left edge
    EXPECT_EQ(preset("1"), (Strings{"100", "56", "1280", "720"}));
    EXPECT_EQ(preset("2"), (Strings{"", "56", "1180", "664"}));

    // So recalling preset 2 is refused and changes nothing, while preset 1 recalls a rectangle
    // that was never saved
    listener->clear();
    EXPECT_FALSE(provider->gotoPreset("0", 2));
    EXPECT_EQ(ptz().crops[0], zoomed);
    EXPECT_TRUE(listener->events().empty());
    EXPECT_TRUE(provider->gotoPreset("0", 1));
    EXPECT_EQ(ptz().crops[0], (Crop{100, 56, 1280, 720}));
}

TEST_F(FaultInjectionTest, FailedVirtualCameraPropertyWritesKeepTablesAndNotifications) {
    // Given a maximum written once
    provider->setMaxVirtualCameras("0", 2);
    listener->clear();

    // When the next maximum's property write fails
    hostfault::arm(hostfault::kPropertySet);
    provider->setMaxVirtualCameras("0", 4);

    // Then the table and the listeners have it, the property keeps the old text
    EXPECT_EQ(provider->getMaxVirtualCameras("0"), 4u);
    EXPECT_EQ(listener->events(), Strings{"onMaxVirtualCamerasChange 0 4"});
    EXPECT_EQ(prop(kMaxProperty), "2");

    // Given the multistream flag, when switching virtual cameras on fails to write the enable
    // property (the tracking property before it is written)
    setProp(kMultistream, "1");
    hostfault::arm(hostfault::kPropertySet, 1, /*skip=*/1);
    listener->clear();
    provider->setVirtualCameraAvailability("0", true);

    // Then the switch, tracking mode 5 and both notifications happen, the enable property
    // stays unset
    EXPECT_TRUE(provider->getVirtualCameraAvailability("0"));
    EXPECT_EQ(trackingMode(), 5);
    EXPECT_EQ(prop(kTalkerTracking), "5");
    EXPECT_EQ(prop(kEnable), "");
    EXPECT_EQ(listener->events(),
              (Strings{"cameraDeviceTrackingChange 0 5", "onVirtualCameraAvailablityChange 0 1"}));

    // And switching them off again finds them never enabled: tracking stays at 5
    provider->setVirtualCameraAvailability("0", false);
    EXPECT_FALSE(provider->getVirtualCameraAvailability("0"));
    EXPECT_EQ(trackingMode(), 5);
    EXPECT_EQ(prop(kEnable), "0");
    EXPECT_TRUE(providerErrors().empty());
}

TEST_F(FaultInjectionTest, EverySingleMergeFaultKeepsEachQueuedBlobOnceAndInOrder) {
    // Given the camera's entries, and the batch merged without a fault
    MergeBatch::cacheEntries();
    const std::string m = "queue:merged", n = "new with 3 entries";
    auto row = [](const std::string& r0, const std::string& r1, const std::string& r2,
                  const std::string& r4) {
        return Strings{r0, r1, r2, "own", r4};
    };
    const Strings merged = row(m, n, m, m);
    MergeBatch reference;
    reference.apply();
    ASSERT_EQ(reference.outcome(), merged);

    // What the requests end with when the k-th call at a point fails, for each k: the batch's
    // blobs are read at once, so a failed read leaves them all as they came; a failed write
    // hands that request its merged settings; a failed allocation (in call order: request 0's
    // scratch block and enlargement, request 1's new settings, request 2's two scratch blocks,
    // request 4's scratch block and enlargement, then its second scratch block) drops the
    // entry being merged
    struct Sweep {
        hostfault::Point point;
        const char* name;
        std::vector<Strings> expected;
    };
    const Sweep sweeps[] = {
            {hostfault::kQueueRead,
             "read",
             {row("queue:unchanged", n, "queue:unchanged", "queue:unchanged")}},
            {hostfault::kQueueWrite,
             "write",
             {row("settings:merged", n, m, m), row(m, n, "settings:merged", m),
              row(m, n, m, "settings:merged")}},
            {hostfault::kMetadataAllocate,
             "allocation",
             {row("queue:crop only", n, m, m), row("queue:crop only", n, m, m),
              row(m, "none", m, m), row(m, n, "queue:exposure only", m),
              row(m, n, "queue:crop only", m), row(m, n, m, "queue:exposure only"),
              row(m, n, m, "queue:exposure only"), row(m, n, m, "queue:crop only")}},
    };
    for (const Sweep& s : sweeps) {
        // One past the last fault point the fault goes unspent and everything is merged
        for (size_t k = 0; k <= s.expected.size(); ++k) {
            SCOPED_TRACE(std::string(s.name) + " failing after " + std::to_string(k) + " calls");
            // Given the batch, when it is merged with one call at the point failing
            MergeBatch batch;
            hostfault::arm(s.point, 1, static_cast<int>(k));
            LogCapture::clear();
            batch.apply();
            hostfault::disarmAll();

            // Then every queued blob is found once, whole and in request order, in the queue
            // with fmqSettingsSize its size or in the request's settings, as expected
            EXPECT_EQ(batch.outcome(), k < s.expected.size() ? s.expected[k] : merged);
            // And only a failed write is logged as an error
            int errors = 0;
            for (const LogLine& l : LogCapture::linesWithTag(kCacheTag))
                errors += l.priority == kError;
            EXPECT_EQ(errors, s.point == hostfault::kQueueWrite && k < s.expected.size() ? 1 : 0);
        }
    }

    // Bytes behind the batch's blobs leave the queue alone: going round the queue would put
    // the merged blobs behind them
    MergeBatch crowded;
    crowded.queueBehind(settingsBlob(1, 0, 9));
    crowded.apply();
    Strings untouched = row("queue:unchanged", n, "queue:unchanged", "queue:unchanged");
    untouched.push_back("EXTRA BYTES");
    EXPECT_EQ(crowded.outcome(), untouched);
}

TEST_F(FaultInjectionTest, ListenerDyingMidOperationMissesTheRestOfIt) {
    // Given a listener registered twice that dies at its first crop, between two that live
    sp<RecordingListener> last = new RecordingListener("last");
    sp<RecordingListener> dying = new RecordingListener("dying");
    provider->setListener(dying);
    provider->setListener(dying);
    provider->setListener(last);
    dying->failWith(::android::DEAD_OBJECT);
    clearAllListenerEvents();

    // When a move announces a crop and its text
    ASSERT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 100));

    // Then both entries were called and dropped during the crop, so the text skips them
    const std::string crop =
            "onCameraCropApplied crops=[{100,56,1180,664}] frame=1280x720 "
            "transition=0 duration=0 extra=0";
    const std::string text = "onCameraSceneJsonApplied 288 bytes";
    EXPECT_EQ(allListenerEvents(),
              (Strings{"listener: " + crop, "dying: " + crop, "dying: " + crop, "last: " + crop,
                       "listener: " + text, "last: " + text}));
    const LogLine deadCrop =
            providerLine(kError, "Error from onCameraCropApplied callback: " + kDead);
    EXPECT_EQ(providerErrors(), (std::vector<LogLine>{deadCrop, deadCrop}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 2u);

    // Given the multistream flag and a listener dying at the tracking change that the
    // availability switch makes inside its own notification, while another listener fails
    // with another transport error throughout
    setProp(kMultistream, "1");
    sp<RecordingListener> flaky = new RecordingListener("flaky");
    sp<RecordingListener> dyingLater = new RecordingListener("dyingLater");
    provider->setListener(flaky);
    provider->setListener(dyingLater);
    flaky->failWith(::android::FAILED_TRANSACTION);
    dyingLater->failWith(::android::DEAD_OBJECT);
    clearAllListenerEvents();
    LogCapture::clear();

    // When virtual cameras are switched on
    provider->setVirtualCameraAvailability("0", true);

    // Then the dead one heard only the tracking change; the failing one heard both, stays, and
    // the tracking property and the switch are in place all the same
    EXPECT_EQ(allListenerEvents(), (Strings{"listener: cameraDeviceTrackingChange 0 5",
                                            "last: cameraDeviceTrackingChange 0 5",
                                            "flaky: cameraDeviceTrackingChange 0 5",
                                            "dyingLater: cameraDeviceTrackingChange 0 5",
                                            "listener: onVirtualCameraAvailablityChange 0 1",
                                            "last: onVirtualCameraAvailablityChange 0 1",
                                            "flaky: onVirtualCameraAvailablityChange 0 1"}));
    const std::string failed = "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '";
    EXPECT_EQ(providerErrors(),
              (std::vector<LogLine>{
                      providerLine(kError,
                                   "Error from cameraDeviceTrackingChange callback: " + failed),
                      providerLine(kError,
                                   "Error from cameraDeviceTrackingChange callback: " + kDead),
                      providerLine(kError,
                                   "Error from onVirtualCameraAvailablityChange "
                                   "callback: " +
                                           failed)}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 3u);
    EXPECT_EQ(prop(kTalkerTracking), "5");
    EXPECT_EQ(prop(kEnable), "1");
    EXPECT_TRUE(provider->getVirtualCameraAvailability("0"));
}
