// The shared table of provider and cache calls, with the checks that hold in any interleaving.
#include "support/ProviderOps.h"

#include <memory>

#include <system/camera_metadata.h>

#include "CameraControlCache.h"

namespace testing_support {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfoEntry;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using CaptureRequest = CameraControlCache::CaptureRequest;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr uint32_t kExposureCompensation = 0x10001;  // int32 x1, always applied
constexpr uint32_t kAeMode = 0x10003;                // byte
constexpr uint32_t kCropRegion = 0xD0000;            // int32 x4, always applied
constexpr uint32_t kJpegOrientation = 0x70003;       // int32: marks each blob with its request

void check(OpContext& c, bool ok, const std::string& what) {
    if (!ok) c.problem(what);
}

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

// A batch of requests with settings in the queue, without settings and with their own, merged
// and read back as the device session would: every queued blob comes back whole, once, in
// request order. Each thread has its own queue, of which it is the only reader and writer.
void applyBatch(OpContext& c) {
    thread_local std::shared_ptr<RequestMetadataQueue> queue =
            std::make_shared<RequestMetadataQueue>(64 * 1024);
    thread_local uint32_t blobs = 0;
    hidl_vec<CaptureRequest> requests(c.in.index(4) + 1);
    std::vector<int32_t> markers(requests.size(), -1);
    std::vector<Bytes> own(requests.size());
    for (size_t i = 0; i < requests.size(); ++i) {
        requests[i].frameNumber = i;
        switch (c.in.index(3)) {
            case 0: {
                markers[i] = static_cast<int32_t>(blobs++ & 0xFFFFFF);
                const Bytes blob = queuedBlob(markers[i], c.in.index(2));
                queue->write(blob.data(), blob.size());
                requests[i].fmqSettingsSize = blob.size();
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
    CameraControlCache::Instance()->applyMetaData(c.in.cameraId(), requests, queue);
    for (size_t i = 0; i < requests.size(); ++i) {
        const CaptureRequest& r = requests[i];
        if (markers[i] >= 0) {
            Bytes blob(r.fmqSettingsSize);
            const bool read = r.fmqSettingsSize != 0 && queue->read(blob.data(), blob.size());
            check(c, read, "queued settings lost");
            check(c, !read || (sound(blob.data(), blob.size()) && markerOf(blob) == markers[i]),
                  "queued settings broken or out of order");
        } else if (!own[i].empty()) {
            check(c, Bytes(r.settings.begin(), r.settings.end()) == own[i], "own settings changed");
        } else {
            check(c, r.settings.size() == 0 || sound(r.settings.data(), r.settings.size()),
                  "new settings broken");
        }
    }
    check(c, queue->availableToRead() == 0, "extra bytes in the queue");
    Bytes rest(queue->availableToRead());
    queue->read(rest.data(), rest.size());
}

SceneControl pickScene(Choices& in) {
    // Edges wrap like the crop arithmetic, so that any picked values stay defined.
    auto plus = [](int32_t a, int32_t b) {
        return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
    };
    const int32_t l = in.pick(0, 600), t = in.pick(0, 300);
    hidl_vec<Crop> crops;
    if (in.index(5) != 0) crops = {Crop{l, t, plus(l, in.pick(1, 680)), plus(t, in.pick(1, 420))}};
    return {crops, in.pick(1280, 1280), in.pick(720, 720), in.pick(0, 2), in.pick(0, 500), 0};
}

hidl_vec<hidl_string> pickNames(Choices& in) {
    hidl_vec<hidl_string> names(in.index(4));
    for (hidl_string& n : names) n = in.index(2) ? std::string("vc\0", 3) + in.text(8) : in.text(8);
    return names;
}

hidl_vec<CameraInfo> pickInfos(Choices& in) {
    hidl_vec<CameraInfo> infos(in.index(3));
    for (CameraInfo& info : infos) {
        info.text1 = in.text(16);
        info.text2 = in.text(16);
        info.entries = {CameraInfoEntry{in.pick(0, 9), in.pick(0, 9), in.pick(0, 9)}};
        info.value1 = in.pick(0, 9);
    }
    return infos;
}

ACameraMetadata_entry pickEntry(Choices& in, uint8_t& mode, int32_t (&crop)[4]) {
    ACameraMetadata_entry entry{};
    const bool byte = in.index(2);
    entry.tag = byte ? kAeMode : kCropRegion;
    entry.type = byte ? ACAMERA_TYPE_BYTE : ACAMERA_TYPE_INT32;
    entry.count = byte ? 1 : 4;
    entry.data.u8 = byte ? &mode : reinterpret_cast<uint8_t*>(crop);
    return entry;
}

const std::vector<ProviderOp> kOps = {
        {"base provider methods",
         [](OpContext& c) {
             // They offer nothing, whatever is asked.
             ZorvCameraProvider& p = c.provider;
             p.setCallback(nullptr);
             p.getVendorTags([&c](auto, const auto& s) { check(c, s.size() == 0, "tags"); });
             p.getCameraIdList([&c](auto, const auto& ids) { check(c, ids.size() == 0, "ids"); });
             p.isSetTorchModeSupported([&c](auto, bool torch) { check(c, !torch, "torch"); });
             p.getCameraDeviceInterface_V1_x(
                     c.in.cameraId(), [&c](auto, const auto& d) { check(c, d == nullptr, "v1"); });
             p.getCameraDeviceInterface_V3_x(
                     c.in.cameraId(), [&c](auto, const auto& d) { check(c, d == nullptr, "v3"); });
         }},
        {"getFDSessionInterface",
         [](OpContext& c) {
             sp<IFDSession> session;
             c.provider.getFDSessionInterface([&](auto, const sp<IFDSession>& s) { session = s; });
             check(c, session != nullptr, "no session");
             // The session's handlers take its lock on this thread.
             if (session != nullptr) {
                 session->configure({}).isOk();
                 session->processCaptureRequest({}).isOk();
             }
         }},
        {"setSceneJson", [](OpContext& c) { c.provider.setSceneJson(c.in.text(64)); }},
        {"setScene", [](OpContext& c) { c.provider.setScene(pickScene(c.in)); }},
        {"setTracking",
         [](OpContext& c) {
             TrackControl track{};
             track.right = c.in.pick(0, 1280);
             track.bottom = c.in.pick(0, 720);
             track.xVelocity = c.in.pick(-100, 100) / 8.0;
             track.action = c.in.pick(0, 3);
             c.provider.setTracking(track);
         }},
        {"getTrackingMode", [](OpContext& c) { c.provider.getTrackingMode(c.in.cameraId()); }},
        {"setTrackingMode",
         [](OpContext& c) {
             // Off half of the time, so that moves get through.
             const int32_t mode = c.in.index(2) ? c.in.pick(0, 5) : 0;
             c.provider.setTrackingMode(c.in.cameraId(), static_cast<TrackingMode>(mode));
         }},
        {"moveCamera",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const bool off = c.provider.getTrackingMode(id) == TrackingMode::OFF;
             const bool moved = c.provider.moveCamera(
                     id, static_cast<CameraMoveDirection>(c.in.pick(0, 8)), c.in.pick(-5, 300));
             check(c, !c.alone || moved == off, "move refused or allowed against the mode");
         }},
        {"savePreset",
         [](OpContext& c) { c.provider.savePreset(c.in.cameraId(), c.in.pick(-1, 3)); }},
        {"gotoPreset",
         [](OpContext& c) { c.provider.gotoPreset(c.in.cameraId(), c.in.pick(-1, 3)); }},
        {"setListener/clearListener",
         [](OpContext& c) {
             if (c.listener == nullptr) return;
             if (c.registered) {
                 c.provider.clearListener(c.listener);
             } else {
                 c.provider.setListener(c.listener);
             }
             c.registered = !c.registered;
         }},
        {"getCurrentCameraCropArea",
         [](OpContext& c) {
             c.provider.getCurrentCameraCropArea([&c](const SceneControl& s) {
                 check(c, s.frameWidth >= 1 && s.frameHeight >= 1, "crop without a frame");
             });
         }},
        {"setMetaData",
         [](OpContext& c) {
             const uint32_t tag = c.in.index(2)
                                          ? kJpegOrientation
                                          : static_cast<uint32_t>(c.in.pick(kExposureCompensation,
                                                                            kExposureCompensation));
             c.provider.setMetaData(c.in.cameraId(), tag, c.in.pick(-3, 3));
         }},
        {"setMetaArray",
         [](OpContext& c) {
             std::vector<int32_t> values(c.in.index(7), c.in.pick(0, 9));
             c.provider.setMetaArray(c.in.cameraId(), kCropRegion, values);
         }},
        {"setZoomInLimit",
         [](OpContext& c) { c.provider.setZoomInLimit(c.in.cameraId(), c.in.pick(0, 6)); }},
        {"setVirtualCameraAvailability",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const bool available = c.in.index(2);
             c.provider.setVirtualCameraAvailability(id, available);
             check(c, !c.alone || c.provider.getVirtualCameraAvailability(id) == available,
                   "availability not stored");
         }},
        {"setVirtualCameraCapability",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const auto capability = static_cast<VirtualCameraCapability>(c.in.pick(0, 2));
             c.provider.setVirtualCameraCapability(id, capability);
             check(c, !c.alone || c.provider.getVirtualCameraCapability(id) == capability,
                   "capability not stored");
         }},
        {"setVirtualCameraList",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const hidl_vec<hidl_string> names = pickNames(c.in);
             c.provider.setVirtualCameraList(id, names);
             if (!c.alone) return;
             // A stored name is its text up to the first NUL.
             std::vector<std::string> expected, got;
             for (const hidl_string& n : names) expected.emplace_back(n.c_str());
             c.provider.getVirtualCameraList(id, [&](const hidl_vec<hidl_string>& stored) {
                 for (const hidl_string& n : stored) got.emplace_back(n);
             });
             check(c, got == expected, "names not stored");
         }},
        {"setMaxVirtualCameras",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const uint32_t max = static_cast<uint32_t>(c.in.pick(0, 4));
             c.provider.setMaxVirtualCameras(id, max);
             check(c, !c.alone || c.provider.getMaxVirtualCameras(id) == max, "maximum not stored");
         }},
        {"setVirtualCameraInfo",
         [](OpContext& c) {
             const hidl_vec<CameraInfo> infos = pickInfos(c.in);
             c.provider.setVirtualCameraInfo(infos);
             if (!c.alone) return;
             c.provider.getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& stored) {
                 check(c, stored == infos, "infos not stored");
             });
         }},
        {"virtual camera getters",
         [](OpContext& c) {
             ZorvCameraProvider& p = c.provider;
             p.getVirtualCameraAvailability(c.in.cameraId());
             p.getVirtualCameraCapability(c.in.cameraId());
             p.getVirtualCameraList(c.in.cameraId(), [](const auto&) {});
             p.getMaxVirtualCameras(c.in.cameraId());
             p.getVirtualCameraInfo([](const auto&) {});
         }},
        {"addMetaData",
         [](OpContext& c) {
             uint8_t mode = 1;
             int32_t crop[] = {c.in.pick(0, 9), 0, 1280, 720};
             CameraControlCache::Instance()->addMetaData(c.in.cameraId(),
                                                         pickEntry(c.in, mode, crop));
         }},
        {"removeMetaData",
         [](OpContext& c) {
             CameraControlCache::Instance()->removeMetaData(c.in.cameraId(), kCropRegion);
         }},
        {"removeCamera",
         [](OpContext& c) { CameraControlCache::Instance()->removeCamera(c.in.cameraId()); }},
        {"applyMetaData", applyBatch},
};

}  // namespace

const std::vector<ProviderOp>& providerOps() {
    return kOps;
}

}  // namespace testing_support
