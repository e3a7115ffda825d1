// Many threads at once over every interface method and the cache's pipeline operations, with
// re-entrant, dying and short-lived listeners and a framing engine attached.
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <system/camera_metadata.h>

#include "CameraControlCache.h"
#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/ProviderPeer.h"
#include "support/RecordingEngine.h"
#include "support/RecordingListener.h"
#include "support/TypePrinters.h"
#include "support/Watchdog.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;
using CaptureRequest = CameraControlCache::CaptureRequest;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr int kThreads = 8;
constexpr int kOpsPerThread = 1200;
constexpr std::chrono::seconds kBound{60};
// Notifications each dying listener takes before its process dies.
constexpr int kFirstDeathAfter = 40;
constexpr int kSecondDeathAfter = 300;
const char* const kCameras[] = {"0", "device@3.2/internal/0", "1", "device@3.2/internal/1"};

constexpr uint32_t kExposureCompensation = 0x10001;  // int32 x1, always applied
constexpr uint32_t kAeMode = 0x10003;                // byte
constexpr uint32_t kCropRegion = 0xD0000;            // int32 x4, always applied
constexpr uint32_t kJpegOrientation = 0x70003;       // int32: marks each blob with its request

enum Op {
    kSetCallback,
    kGetVendorTags,
    kGetCameraIdList,
    kIsSetTorchModeSupported,
    kGetCameraDeviceInterfaceV1,
    kGetCameraDeviceInterfaceV3,
    kGetFDSessionInterface,
    kSetSceneJson,
    kSetScene,
    kSetTracking,
    kGetTrackingMode,
    kSetTrackingMode,
    kMoveCamera,
    kSavePreset,
    kGotoPreset,
    kSetOrClearListener,
    kGetCurrentCameraCropArea,
    kSetMetaData,
    kSetMetaArray,
    kSetZoomInLimit,
    kSetVirtualCameraAvailability,
    kGetVirtualCameraAvailability,
    kGetVirtualCameraCapability,
    kSetVirtualCameraCapability,
    kGetVirtualCameraList,
    kSetVirtualCameraList,
    kSetMaxVirtualCameras,
    kGetMaxVirtualCameras,
    kSetVirtualCameraInfo,
    kGetVirtualCameraInfo,
    kAddMetaData,
    kRemoveMetaData,
    kRemoveCamera,
    kApplyMetaData,
    kOpCount
};

// What went wrong in the clients, reported after they have all finished.
class Problems {
  public:
    void add(const std::string& what) {
        std::lock_guard<std::mutex> lock(mLock);
        mWhat.push_back(what);
    }
    std::vector<std::string> all() {
        std::lock_guard<std::mutex> lock(mLock);
        return mWhat;
    }

  private:
    std::mutex mLock;  // guards mWhat
    std::vector<std::string> mWhat;
};

// A settings blob marked with its request: the marker, and sometimes a crop region, in a block
// with little room, so that merging sometimes has to grow it.
Bytes queuedBlob(int32_t marker, bool withCrop) {
    camera_metadata_t* m = allocate_camera_metadata(withCrop ? 2 : 1, withCrop ? 20 : 4);
    add_camera_metadata_entry(m, kJpegOrientation, &marker, 1);
    const int32_t crop[] = {0, 0, 640, 360};
    if (withCrop) add_camera_metadata_entry(m, kCropRegion, crop, 4);
    const auto* bytes = reinterpret_cast<const uint8_t*>(m);
    Bytes out(bytes, bytes + get_camera_metadata_size(m));
    free_camera_metadata(m);
    return out;
}

bool sound(const uint8_t* bytes, size_t size) {
    return validate_camera_metadata_structure(reinterpret_cast<const camera_metadata_t*>(bytes),
                                              &size) == 0;
}

int32_t markerOf(const Bytes& blob) {
    camera_metadata_ro_entry_t entry;
    if (find_camera_metadata_ro_entry(reinterpret_cast<const camera_metadata_t*>(blob.data()),
                                      kJpegOrientation, &entry) != 0 ||
        entry.count != 1) {
        return -1;
    }
    return entry.data.i32[0];
}

// One client thread: a fixed-seed random mix of operations, and its own request queue, of
// which it is the only reader and writer, as the synchronized queue demands.
class Client {
  public:
    Client(ZorvCameraProvider& provider, int index, std::atomic<int>* counts, Problems& problems)
        : mProvider(provider),
          mIndex(index),
          mRandom(1000 + index),
          mCounts(counts),
          mProblems(problems),
          mQueue(std::make_shared<RequestMetadataQueue>(64 * 1024)),
          mListener(new RecordingListener("client" + std::to_string(index))) {}

    void run() {
        for (int i = 0; i < kOpsPerThread; ++i) {
            const Op op = static_cast<Op>(pick(0, kOpCount - 1));
            ++mCounts[op];
            call(op);
        }
        if (mRegistered) mProvider.clearListener(mListener);
    }
    int merged() const { return mMerged; }

  private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(mRandom); }
    hidl_string camera() { return kCameras[pick(0, 3)]; }

    void call(Op op) {
        ZorvCameraProvider& p = mProvider;
        switch (op) {
            case kSetCallback:
                p.setCallback(nullptr);
                break;
            case kGetVendorTags:
                p.getVendorTags([](auto, const auto&) {});
                break;
            case kGetCameraIdList:
                p.getCameraIdList([](auto, const auto&) {});
                break;
            case kIsSetTorchModeSupported:
                p.isSetTorchModeSupported([](auto, bool) {});
                break;
            case kGetCameraDeviceInterfaceV1:
                p.getCameraDeviceInterface_V1_x(camera(), [](auto, const auto&) {});
                break;
            case kGetCameraDeviceInterfaceV3:
                p.getCameraDeviceInterface_V3_x(camera(), [](auto, const auto&) {});
                break;
            case kGetFDSessionInterface: {
                sp<IFDSession> session;
                p.getFDSessionInterface([&](auto, const sp<IFDSession>& s) { session = s; });
                // The session's handlers take its lock on this thread.
                session->configure({}).isOk();
                session->processCaptureRequest({}).isOk();
                break;
            }
            case kSetSceneJson:
                p.setSceneJson("{\"client\":" + std::to_string(mIndex) + "}");
                break;
            case kSetScene: {
                const int32_t l = pick(0, 600), t = pick(0, 300);
                hidl_vec<Crop> crops;
                if (pick(0, 4) != 0) crops = {Crop{l, t, l + pick(1, 680), t + pick(1, 420)}};
                p.setScene({crops, 1280, 720, pick(0, 2), pick(0, 500), 0});
                break;
            }
            case kSetTracking: {
                TrackControl track{};
                track.right = pick(0, 1280);
                track.bottom = pick(0, 720);
                track.xVelocity = pick(-100, 100) / 8.0;
                track.action = pick(0, 3);
                p.setTracking(track);
                break;
            }
            case kGetTrackingMode:
                p.getTrackingMode(camera());
                break;
            case kSetTrackingMode:
                // Off half of the time, so that moves get through.
                p.setTrackingMode(camera(), static_cast<TrackingMode>(pick(0, 1) * pick(0, 5)));
                break;
            case kMoveCamera:
                p.moveCamera(camera(), static_cast<CameraMoveDirection>(pick(0, 8)), pick(-5, 300));
                break;
            case kSavePreset:
                p.savePreset(camera(), pick(-1, 3));
                break;
            case kGotoPreset:
                p.gotoPreset(camera(), pick(-1, 3));
                break;
            case kSetOrClearListener:
                if (mRegistered) {
                    p.clearListener(mListener);
                } else {
                    p.setListener(mListener);
                }
                mRegistered = !mRegistered;
                break;
            case kGetCurrentCameraCropArea:
                p.getCurrentCameraCropArea([](const auto&) {});
                break;
            case kSetMetaData:
                p.setMetaData(camera(), pick(0, 1) ? kExposureCompensation : kJpegOrientation,
                              pick(-3, 3));
                break;
            case kSetMetaArray: {
                std::vector<int32_t> values(pick(0, 6), mIndex);
                p.setMetaArray(camera(), kCropRegion, values);
                break;
            }
            case kSetZoomInLimit:
                p.setZoomInLimit(camera(), pick(0, 6));
                break;
            case kSetVirtualCameraAvailability:
                p.setVirtualCameraAvailability(camera(), pick(0, 1));
                break;
            case kGetVirtualCameraAvailability:
                p.getVirtualCameraAvailability(camera());
                break;
            case kGetVirtualCameraCapability:
                p.getVirtualCameraCapability(camera());
                break;
            case kSetVirtualCameraCapability:
                p.setVirtualCameraCapability(camera(),
                                             static_cast<VirtualCameraCapability>(pick(0, 2)));
                break;
            case kGetVirtualCameraList:
                p.getVirtualCameraList(camera(), [](const auto&) {});
                break;
            case kSetVirtualCameraList: {
                hidl_vec<hidl_string> names(pick(0, 3));
                for (size_t i = 0; i < names.size(); ++i) {
                    names[i] = std::string("vc\0", 3) + std::to_string(i);  // cut at the NUL
                }
                p.setVirtualCameraList(camera(), names);
                break;
            }
            case kSetMaxVirtualCameras:
                p.setMaxVirtualCameras(camera(), pick(0, 4));
                break;
            case kGetMaxVirtualCameras:
                p.getMaxVirtualCameras(camera());
                break;
            case kSetVirtualCameraInfo: {
                hidl_vec<CameraInfo> infos(pick(0, 2));
                for (CameraInfo& info : infos) {
                    info.text1 = "client" + std::to_string(mIndex);
                    info.entries = {{1, 2, 3}};
                }
                p.setVirtualCameraInfo(infos);
                break;
            }
            case kGetVirtualCameraInfo:
                p.getVirtualCameraInfo([](const auto&) {});
                break;
            case kAddMetaData: {
                uint8_t mode = 1;
                int32_t crop[] = {mIndex, 0, 1280, 720};
                ACameraMetadata_entry entry{};
                entry.tag = pick(0, 1) ? kAeMode : kCropRegion;
                entry.type = entry.tag == kAeMode ? ACAMERA_TYPE_BYTE : ACAMERA_TYPE_INT32;
                entry.count = entry.tag == kAeMode ? 1 : 4;
                entry.data.u8 = entry.tag == kAeMode ? &mode : reinterpret_cast<uint8_t*>(crop);
                CameraControlCache::Instance()->addMetaData(camera(), entry);
                break;
            }
            case kRemoveMetaData:
                CameraControlCache::Instance()->removeMetaData(camera(), kCropRegion);
                break;
            case kRemoveCamera:
                CameraControlCache::Instance()->removeCamera(camera());
                break;
            case kApplyMetaData:
                applyBatch();
                break;
            case kOpCount:
                break;
        }
    }

    // A batch of requests with settings in the queue, without settings and with their own,
    // merged and then read back as the device session would: every queued blob must come back
    // whole, once, in request order.
    void applyBatch() {
        hidl_vec<CaptureRequest> requests(pick(1, 4));
        std::vector<int32_t> markers(requests.size(), -1);
        std::vector<Bytes> own(requests.size());
        std::vector<Bytes> sent(requests.size());
        for (size_t i = 0; i < requests.size(); ++i) {
            requests[i].frameNumber = i;
            switch (pick(0, 2)) {
                case 0: {
                    markers[i] = mIndex * 1000000 + mBlobs++;
                    sent[i] = queuedBlob(markers[i], pick(0, 1));
                    mQueue->write(sent[i].data(), sent[i].size());
                    requests[i].fmqSettingsSize = sent[i].size();
                    break;
                }
                case 1:
                    own[i] = queuedBlob(-2, false);
                    requests[i].settings = own[i];
                    break;
                default:
                    break;  // no settings at all
            }
        }

        CameraControlCache::Instance()->applyMetaData(kCameras[pick(0, 3)], requests, mQueue);

        for (size_t i = 0; i < requests.size(); ++i) {
            const CaptureRequest& r = requests[i];
            const std::string where =
                    "client " + std::to_string(mIndex) + " request " + std::to_string(i) + ": ";
            if (markers[i] >= 0) {
                Bytes blob(r.fmqSettingsSize);
                if (r.fmqSettingsSize == 0 || !mQueue->read(blob.data(), blob.size())) {
                    mProblems.add(where + "queued settings lost");
                } else if (!sound(blob.data(), blob.size()) || markerOf(blob) != markers[i]) {
                    mProblems.add(where + "queued settings broken or out of order");
                } else if (blob != sent[i]) {
                    ++mMerged;
                }
            } else if (!own[i].empty()) {
                if (Bytes(r.settings.begin(), r.settings.end()) != own[i]) {
                    mProblems.add(where + "own settings changed");
                }
            } else if (r.settings.size() != 0 && !sound(r.settings.data(), r.settings.size())) {
                mProblems.add(where + "new settings broken");
            }
        }
        if (mQueue->availableToRead() != 0) {
            mProblems.add("client " + std::to_string(mIndex) + ": extra bytes in the queue");
            Bytes rest(mQueue->availableToRead());
            mQueue->read(rest.data(), rest.size());
        }
    }

    ZorvCameraProvider& mProvider;
    const int mIndex;
    std::mt19937 mRandom;
    std::atomic<int>* mCounts;
    Problems& mProblems;
    std::shared_ptr<RequestMetadataQueue> mQueue;
    sp<RecordingListener> mListener;  // registered and removed again by this client
    bool mRegistered = false;
    int mBlobs = 0;
    int mMerged = 0;  // queued blobs that came back changed by the merge
};

// A listener whose process dies after `events` notifications.
sp<RecordingListener> dyingListener(const std::string& name, int events) {
    sp<RecordingListener> listener = new RecordingListener(name);
    auto heard = std::make_shared<int>(0);  // only touched in fan-outs, which hold mLock
    RecordingListener* raw = listener.get();
    listener->onEvent([raw, heard, events](const std::string&) {
        if (++*heard == events) raw->failWith(::android::DEAD_OBJECT);
    });
    return listener;
}

bool announcedInTurn(const SceneControl& a, const SceneControl& b) {
    return a.frameWidth != b.frameWidth || a.frameHeight != b.frameHeight || a.crops.size() == 0 ||
           b.crops.size() == 0 || a.crops.size() != b.crops.size() || a.crops[0] != b.crops[0];
}

}  // namespace

TEST(StressConcurrencyTest, EveryMethodFromManyThreadsWithListenersThatCallBackAndDie) {
    // Given the framing engine attached, the multistream flag on (so that the availability
    // switch nests the session lock inside the provider lock), two plain listeners, two that
    // die mid-run and one that calls back into the provider from every callback
    setProp("persist.vendor.multistream.enable", "1");
    RecordingEngine engine;
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    ZorvCameraProvider* p = provider.get();
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
    sp<RecordingListener> dying = dyingListener("dying", kFirstDeathAfter);
    sp<RecordingListener> dyingLater = dyingListener("dyingLater", kSecondDeathAfter);
    sp<RecordingListener> reentrant = new RecordingListener("reentrant");
    std::atomic<int> callbacksIntoProvider{0};
    reentrant->onEvent([p, &callbacksIntoProvider](const std::string& event) {
        thread_local bool inside = false;  // its own nested notifications do not recurse
        if (inside) return;
        inside = true;
        ++callbacksIntoProvider;
        p->getCurrentCameraCropArea([](const auto&) {});
        p->getTrackingMode("0");
        p->getVirtualCameraList("0", [](const auto&) {});
        if (event.rfind("onMaxVirtualCamerasChange", 0) == 0) {
            p->setVirtualCameraCapability("reentrant", VirtualCameraCapability::SUPPORTED);
        }
        inside = false;
    });
    for (const auto& l : {first, second, dying, dyingLater, reentrant}) provider->setListener(l);
    std::atomic<int> counts[kOpCount] = {};
    Problems problems;
    int merged = 0;

    // When eight clients run their random mixes at once
    const auto start = std::chrono::steady_clock::now();
    {
        Watchdog watchdog(kBound, "stress clients");
        std::vector<std::unique_ptr<Client>> clients;
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            clients.emplace_back(new Client(*provider, t, counts, problems));
            threads.emplace_back([c = clients.back().get()] { c->run(); });
        }
        for (std::thread& t : threads) t.join();
        for (const auto& c : clients) merged += c->merged();
    }
    const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    provider->setVirtualCameraInfo({});  // one more notification after the run
    printf("stress: %d threads x %d operations in %.2f s; %zu notifications per listener, "
           "%d callbacks into the provider, %zu engine calls, %d queued blobs merged\n",
           kThreads, kOpsPerThread, seconds, first->events().size(), callbacksIntoProvider.load(),
           engine.calls().size(), merged);

    // Then every operation ran, and every queued blob came back whole, once and in order
    for (int op = 0; op < kOpCount; ++op) EXPECT_GT(counts[op].load(), 0) << "operation " << op;
    EXPECT_EQ(problems.all(), std::vector<std::string>{});
    EXPECT_GT(merged, 0);

    // And the two plain listeners heard the same notifications in the same order, crops only
    // when they changed, the last one being the crop in the provider
    EXPECT_EQ(first->events(), second->events());
    const std::vector<SceneControl> crops = first->crops();
    ASSERT_FALSE(crops.empty());
    for (size_t i = 1; i < crops.size(); ++i) {
        EXPECT_TRUE(announcedInTurn(crops[i - 1], crops[i])) << i;
    }
    EXPECT_EQ(crops.back(), ZorvCameraProviderTestPeer::lastCrop(*provider));

    // And each dying listener was called up to its death, logged once and dropped; the
    // clients' own listeners are gone too, and no other provider error was logged
    EXPECT_EQ(dying->events().size(), static_cast<size_t>(kFirstDeathAfter));
    EXPECT_EQ(dyingLater->events().size(), static_cast<size_t>(kSecondDeathAfter));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 3u);
    std::vector<LogLine> errors;
    for (const LogLine& l : LogCapture::linesWithTag(kProviderTag)) {
        if (l.priority == kError) errors.push_back(l);
    }
    ASSERT_EQ(errors.size(), 2u);
    for (const LogLine& l : errors) {
        EXPECT_NE(l.text.find("callback: Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '"),
                  std::string::npos)
                << l;
    }

    // And the engine heard every kind of change, and never mode 3, which runs as 2
    std::set<std::string> operations;
    for (const RecordingEngine::Call& c : engine.calls()) {
        operations.insert(c.operation);
        if (c.operation == "onTrackingModeChanged") {
            EXPECT_NE(c.mode, 3);
        }
    }
    EXPECT_EQ(operations, (std::set<std::string>{"onPTZControl", "onSceneControl", "onTrackControl",
                                                 "onTrackingModeChanged"}));

    // And the provider still works: with tracking off a move lands in the session
    provider->setTrackingMode("0", TrackingMode::OFF);
    EXPECT_TRUE(provider->moveCamera("0", CameraMoveDirection::ZOOM_IN, 10));
}
