// The shared table of provider and cache calls, with the checks that hold in any interleaving.
#include "support/ProviderOps.h"

#include <system/camera_metadata.h>
#include "kit/BlobBuilder.h"

namespace testing_support {

using namespace ::vendor::zorv::zorvprovider::zorvprovider::V2_4;
using namespace kit;
using namespace ::android::hardware;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;

namespace {

constexpr int32_t kExposure = ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION;  // always applied
constexpr uint32_t kCrop = ANDROID_SCALER_CROP_REGION;
constexpr uint32_t kJpegOrientation = ANDROID_JPEG_ORIENTATION;  // marks a blob's request

bool marked(const Bytes& b, int32_t marker) {
    const std::vector<Item> all = items(b);
    return valid(b) && std::count(all.begin(), all.end(), i32(kJpegOrientation, {marker})) == 1;
}

// A batch of requests with settings in the queue, with their own and without, merged and read
// back as the device session would: every queued blob comes back whole, once, in request order.
void applyBatch(OpContext& c) {
    thread_local int32_t blobs = 0;
    hidl_vec<CameraControlCache::CaptureRequest> requests(c.in.index(4) + 1);
    std::vector<Bytes> sent(requests.size()), queued;
    std::vector<int32_t> markers(requests.size());  // -2: own settings, -3: none
    for (size_t i = 0; i < requests.size(); ++i) {
        const size_t kind = c.in.index(3);  // queued, own or no settings
        markers[i] = kind == 0 ? blobs++ & 0xFFFFFF : -1 - int32_t(kind);
        // In a block with little room, so that merging sometimes has to grow it.
        const Item mark = i32(kJpegOrientation, {markers[i]}), crop = i32(kCrop, {0, 0, 64, 36});
        sent[i] = kind == 0 && c.in.index(2) ? blob(2, 20, {mark, crop}) : blob(1, 4, {mark});
        if (kind == 0) queued.push_back(sent[i]), requests[i].fmqSettingsSize = sent[i].size();
        if (kind == 1) requests[i].settings = sent[i];
    }
    const std::shared_ptr<RequestMetadataQueue> queue = queueWith(queued);
    CameraControlCache::Instance()->applyMetaData(c.in.cameraId(), requests, queue);
    for (size_t i = 0; i < requests.size(); ++i) {
        Bytes got(requests[i].settings.begin(), requests[i].settings.end());
        bool ok = markers[i] == -2 ? got == sent[i] : got.empty() || valid(got);
        if (markers[i] >= 0) {
            got.assign(requests[i].fmqSettingsSize, 0);
            ok = queue->read(got.data(), got.size()) && marked(got, markers[i]);
        }
        if (!ok) c.problem("settings lost, changed, broken or out of order");
    }
    if (!drain(*queue).empty()) c.problem("extra bytes in the queue");
}

SceneControl pickScene(Choices& in) {
    // Edges wrap like the crop arithmetic, so that any picked values stay defined.
    auto plus = [](int32_t a, int32_t b) { return int32_t(uint32_t(a) + uint32_t(b)); };
    const int32_t l = in.pick(0, 600), t = in.pick(0, 300);
    hidl_vec<Crop> crops;
    if (in.index(5) != 0) crops = {Crop{l, t, plus(l, in.pick(1, 680)), plus(t, in.pick(1, 420))}};
    return {crops, in.pick(1280, 1280), in.pick(720, 720), in.pick(0, 2), in.pick(0, 500), 0};
}

const std::vector<ProviderOp> kOps = {
        {"base provider methods",
         [](OpContext& c) {
             // They offer nothing, whatever is asked.
             ZorvCameraProvider& p = c.provider;
             const hidl_string id = c.in.cameraId();
             bool none = true;
             p.setCallback(nullptr);
             p.getVendorTags([&](auto, const auto& s) { none &= s.size() == 0; });
             p.getCameraIdList([&](auto, const auto& ids) { none &= ids.size() == 0; });
             p.isSetTorchModeSupported([&](auto, bool torch) { none &= !torch; });
             p.getCameraDeviceInterface_V1_x(id,
                                             [&](auto, const auto& d) { none &= d == nullptr; });
             p.getCameraDeviceInterface_V3_x(id,
                                             [&](auto, const auto& d) { none &= d == nullptr; });
             if (!none) c.problem("a base provider method offers something");
         }},
        {"getFDSessionInterface",
         [](OpContext& c) {
             ::android::sp<::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession> s;
             c.provider.getFDSessionInterface([&](auto, const auto& got) { s = got; });
             if (s == nullptr) return c.problem("no session");
             s->configure({}).isOk();  // the session's handlers take its lock on this thread
             s->processCaptureRequest({}).isOk();
         }},
        {"setSceneJson", [](OpContext& c) { c.provider.setSceneJson(c.in.text(64)); }},
        {"setScene", [](OpContext& c) { c.provider.setScene(pickScene(c.in)); }},
        {"setTracking",
         [](OpContext& c) {
             TrackControl track{0, 0, c.in.pick(0, 1280), c.in.pick(0, 720), {}, 0, 0, 0, 0};
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
             if (c.alone && moved != off) c.problem("move refused or allowed against the mode");
         }},
        {"savePreset",
         [](OpContext& c) { c.provider.savePreset(c.in.cameraId(), c.in.pick(-1, 3)); }},
        {"gotoPreset",
         [](OpContext& c) { c.provider.gotoPreset(c.in.cameraId(), c.in.pick(-1, 3)); }},
        {"setListener/clearListener",
         [](OpContext& c) {
             if (c.listener == nullptr) return;
             c.registered ? c.provider.clearListener(c.listener)
                          : c.provider.setListener(c.listener);
             c.registered = !c.registered;
         }},
        {"getCurrentCameraCropArea",
         [](OpContext& c) {
             c.provider.getCurrentCameraCropArea([&c](const SceneControl& s) {
                 if (s.frameWidth < 1 || s.frameHeight < 1) c.problem("crop without a frame");
             });
         }},
        {"setMetaData",
         [](OpContext& c) {
             const uint32_t tag =
                     c.in.index(2) ? kJpegOrientation : c.in.pick(kExposure, kExposure);
             c.provider.setMetaData(c.in.cameraId(), tag, c.in.pick(-3, 3));
         }},
        {"setMetaArray",
         [](OpContext& c) {
             std::vector<int32_t> values(c.in.index(7), c.in.pick(0, 9));
             c.provider.setMetaArray(c.in.cameraId(), kCrop, values);
         }},
        {"setZoomInLimit",
         [](OpContext& c) { c.provider.setZoomInLimit(c.in.cameraId(), c.in.pick(0, 6)); }},
        {"setVirtualCameraAvailability",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const bool on = c.in.index(2);
             c.provider.setVirtualCameraAvailability(id, on);
             if (c.alone && c.provider.getVirtualCameraAvailability(id) != on) c.problem("on");
         }},
        {"setVirtualCameraCapability",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const auto cap = static_cast<VirtualCameraCapability>(c.in.pick(0, 2));
             c.provider.setVirtualCameraCapability(id, cap);
             if (c.alone && c.provider.getVirtualCameraCapability(id) != cap) c.problem("cap");
         }},
        {"setVirtualCameraList",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             hidl_vec<hidl_string> names(c.in.index(4)), expected(names.size()), stored;
             for (size_t i = 0; i < names.size(); ++i) {
                 names[i] = (c.in.index(2) ? std::string("vc\0", 3) : "") + c.in.text(8);
                 expected[i] = names[i].c_str();  // a stored name ends at its first NUL
             }
             c.provider.setVirtualCameraList(id, names);
             c.provider.getVirtualCameraList(id, [&](const auto& got) { stored = got; });
             if (c.alone && !(stored == expected)) c.problem("names not stored");
         }},
        {"setMaxVirtualCameras",
         [](OpContext& c) {
             const hidl_string id = c.in.cameraId();
             const uint32_t max = static_cast<uint32_t>(c.in.pick(0, 4));
             c.provider.setMaxVirtualCameras(id, max);
             if (c.alone && c.provider.getMaxVirtualCameras(id) != max) c.problem("max");
         }},
        {"setVirtualCameraInfo",
         [](OpContext& c) {
             hidl_vec<CameraInfo> infos(c.in.index(3)), stored;
             auto n = [&c] { return c.in.pick(0, 9); };
             for (CameraInfo& i : infos)
                 i = {c.in.text(16), c.in.text(16), {{n(), n(), n()}}, {}, 0, 0, 0};
             for (CameraInfo& i : infos) i.value1 = n();
             c.provider.setVirtualCameraInfo(infos);
             c.provider.getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& s) { stored = s; });
             if (c.alone && !(stored == infos)) c.problem("infos not stored");
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
             const Item item = c.in.index(2) ? u8(ANDROID_CONTROL_AE_MODE, {1})
                                             : i32(kCrop, {c.in.pick(0, 9), 0, 1280, 720});
             CameraControlCache::Instance()->addMetaData(c.in.cameraId(), asEntry(item));
         }},
        {"removeMetaData",
         [](OpContext& c) {
             CameraControlCache::Instance()->removeMetaData(c.in.cameraId(), kCrop);
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
