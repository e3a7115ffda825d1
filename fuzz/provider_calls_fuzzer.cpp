// Fuzzes the provider's interface: a byte stream of calls with arbitrary arguments, checked
// against a model of the virtual camera tables.
#include <stdint.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <android/log.h>
#include <cutils/properties.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <utils/Errors.h>

#include "CameraControlCache.h"
#include "ZorvCameraProvider.h"

using ::android::sp;
using ::android::status_t;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfoEntry;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProviderCallback;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

namespace {

#define CHECK(cond) \
    if (!(cond)) __builtin_trap()

constexpr size_t kListeners = 4;
constexpr int kMaxRegistrations = 8;  // per input, so the fan-outs stay short
constexpr size_t kMaxNames = 300;
constexpr size_t kMaxInfos = 64;
constexpr size_t kMaxValues = 4096;

// A listener that fails as it is told and, if reentrant, reads the provider back from its
// callbacks, as a client may.
class Listener : public IZorvCameraProviderCallback {
  public:
    Listener(ZorvCameraProvider* provider, bool reentrant)
        : mProvider(provider), mReentrant(reentrant) {}
    status_t failure = ::android::OK;

    Return<void> cameraDeviceTrackingChange(const hidl_string&, TrackingMode) override {
        return answer();
    }
    Return<void> onCameraSceneJsonApplied(const hidl_string&) override { return answer(); }
    Return<void> onCameraCropApplied(const SceneControl&) override { return answer(); }
    Return<void> onVirtualCameraCapabilityChange(const hidl_string&,
                                                 VirtualCameraCapability) override {
        return answer();
    }
    Return<void> onMaxVirtualCamerasChange(const hidl_string&, uint32_t) override {
        return answer();
    }
    Return<void> onVirtualCameraListChange(const hidl_string&,
                                           const hidl_vec<hidl_string>&) override {
        return answer();
    }
    Return<void> onVirtualCameraInfos(const hidl_vec<CameraInfo>&) override { return answer(); }
    Return<void> onVirtualCameraAvailablityChange(const hidl_string&, bool) override {
        return answer();
    }

  private:
    Return<void> answer() {
        if (mReentrant && !mInside) {
            mInside = true;
            mProvider->getCurrentCameraCropArea(
                    [](const SceneControl& s) { CHECK(s.frameWidth >= 1 && s.frameHeight >= 1); });
            mProvider->getVirtualCameraInfo([](const hidl_vec<CameraInfo>&) {});
            mInside = false;
        }
        if (failure != ::android::OK) return ::android::hardware::Status::fromStatusT(failure);
        return Void();
    }

    ZorvCameraProvider* mProvider;
    const bool mReentrant;
    bool mInside = false;
};

// Ids with odd bytes: NUL, slashes, nothing at all, or any bytes; a few common ones so that
// calls meet each other's table entries.
std::string pickId(FuzzedDataProvider& in) {
    const std::string ids[] = {"0", "device@3.2/internal/0", "", std::string("a\0b", 3)};
    return in.ConsumeBool() ? in.PickValueInArray(ids) : in.ConsumeRandomLengthString(40);
}

hidl_vec<hidl_string> pickNames(FuzzedDataProvider& in) {
    hidl_vec<hidl_string> names(in.ConsumeIntegralInRange<size_t>(0, kMaxNames));
    for (hidl_string& n : names) n = in.ConsumeRandomLengthString(64);
    return names;
}

hidl_vec<CameraInfo> pickInfos(FuzzedDataProvider& in) {
    hidl_vec<CameraInfo> infos(in.ConsumeIntegralInRange<size_t>(0, kMaxInfos));
    for (CameraInfo& info : infos) {
        info.text1 = in.ConsumeRandomLengthString(32);
        info.text2 = in.ConsumeRandomLengthString(32);
        std::vector<CameraInfoEntry> entries(in.ConsumeIntegralInRange<size_t>(0, 8));
        for (CameraInfoEntry& e : entries) {
            e = {in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(),
                 in.ConsumeIntegral<int64_t>()};
        }
        info.entries = entries;
        info.value1 = in.ConsumeIntegral<uint32_t>();
        info.value2 = in.ConsumeIntegral<uint64_t>();
    }
    return infos;
}

SceneControl pickScene(FuzzedDataProvider& in) {
    SceneControl scene{};
    std::vector<Crop> crops(in.ConsumeIntegralInRange<size_t>(0, 4));
    for (Crop& c : crops) {
        c = {in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(),
             in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>()};
    }
    scene.crops = crops;
    scene.frameWidth = in.ConsumeIntegral<int32_t>();
    scene.frameHeight = in.ConsumeIntegral<int32_t>();
    scene.transition = in.ConsumeIntegral<int32_t>();
    scene.duration = in.ConsumeIntegral<int32_t>();
    return scene;
}

// The virtual camera tables as the calls so far must have left them.
struct Model {
    std::map<std::string, VirtualCameraCapability> capabilities;
    std::map<std::string, std::vector<std::string>> lists;
    std::map<std::string, uint32_t> maxima;
    std::map<std::string, bool> availability;
    hidl_vec<CameraInfo> infos;
};

// Names are kept up to their first NUL.
std::vector<std::string> stored(const hidl_vec<hidl_string>& names) {
    std::vector<std::string> out;
    for (const hidl_string& n : names) out.emplace_back(n.c_str());
    return out;
}

void call(ZorvCameraProvider& p, FuzzedDataProvider& in, Model& model,
          std::vector<sp<Listener>>& listeners, int& registrations) {
    switch (in.ConsumeIntegralInRange<int>(0, 31)) {
        case 0:
            p.setCallback(nullptr);
            break;
        case 1:
            p.getCameraIdList(
                    [](auto, const hidl_vec<hidl_string>& ids) { CHECK(ids.size() == 0); });
            p.getCameraDeviceInterface_V3_x(pickId(in),
                                            [](auto, const auto& d) { CHECK(d == nullptr); });
            break;
        case 2:
            p.getFDSessionInterface([](auto, const auto& s) { CHECK(s != nullptr); });
            break;
        case 3:
            p.setSceneJson(in.ConsumeRandomLengthString(2048));
            break;
        case 4:
            p.setScene(pickScene(in));
            break;
        case 5: {
            TrackControl track{};
            track.left = in.ConsumeIntegral<int32_t>();
            track.right = in.ConsumeIntegral<int32_t>();
            track.xVelocity = in.ConsumeFloatingPoint<double>();
            track.action = in.ConsumeIntegral<int32_t>();
            p.setTracking(track);
            break;
        }
        case 6:
            p.setTrackingMode(pickId(in),
                              static_cast<TrackingMode>(
                                      in.ConsumeBool() ? in.ConsumeIntegral<int32_t>()
                                                       : in.ConsumeIntegralInRange<int32_t>(0, 5)));
            break;
        case 7: {
            // A move goes through exactly when tracking is off.
            const hidl_string id = pickId(in);
            const bool off = p.getTrackingMode(id) == TrackingMode::OFF;
            const bool moved = p.moveCamera(
                    id, static_cast<CameraMoveDirection>(in.ConsumeIntegral<int32_t>()),
                    in.ConsumeIntegral<int32_t>());
            CHECK(moved == off);
            break;
        }
        case 8:
            p.savePreset(pickId(in), in.ConsumeIntegralInRange<int32_t>(-2, 101));
            break;
        case 9:
            p.gotoPreset(pickId(in), in.ConsumeBool() ? in.ConsumeIntegral<int32_t>()
                                                      : in.ConsumeIntegralInRange<int32_t>(0, 3));
            break;
        case 10:
            if (registrations < kMaxRegistrations) {
                ++registrations;
                p.setListener(listeners[in.ConsumeIntegralInRange<size_t>(0, kListeners - 1)]);
            }
            break;
        case 11:
            p.clearListener(
                    in.ConsumeBool()
                            ? nullptr
                            : listeners[in.ConsumeIntegralInRange<size_t>(0, kListeners - 1)]);
            break;
        case 12: {
            const status_t failures[] = {::android::OK, ::android::DEAD_OBJECT,
                                         ::android::FAILED_TRANSACTION, ::android::UNKNOWN_ERROR};
            listeners[in.ConsumeIntegralInRange<size_t>(0, kListeners - 1)]->failure =
                    in.PickValueInArray(failures);
            break;
        }
        case 13:
            p.getCurrentCameraCropArea(
                    [](const SceneControl& s) { CHECK(s.frameWidth >= 1 && s.frameHeight >= 1); });
            break;
        case 14:
            p.setMetaData(pickId(in), in.ConsumeIntegral<uint32_t>(),
                          in.ConsumeIntegral<int32_t>());
            break;
        case 15: {
            std::vector<int32_t> values(in.ConsumeIntegralInRange<size_t>(0, kMaxValues));
            for (int32_t& v : values) v = in.ConsumeIntegral<int32_t>();
            p.setMetaArray(pickId(in), in.ConsumeBool() ? 0xD0000 : in.ConsumeIntegral<uint32_t>(),
                           values);
            break;
        }
        case 16:
            p.setZoomInLimit(pickId(in), in.ConsumeIntegral<uint32_t>());
            break;
        case 17: {
            const std::string id = pickId(in);
            const bool available = in.ConsumeBool();
            p.setVirtualCameraAvailability(id, available);
            model.availability[id] = available;
            break;
        }
        case 18: {
            const std::string id = pickId(in);
            auto it = model.availability.find(id);
            CHECK(p.getVirtualCameraAvailability(id) ==
                  (it != model.availability.end() && it->second));
            break;
        }
        case 19: {
            const std::string id = pickId(in);
            const auto capability =
                    static_cast<VirtualCameraCapability>(in.ConsumeIntegral<int32_t>());
            p.setVirtualCameraCapability(id, capability);
            model.capabilities[id] = capability;
            break;
        }
        case 20: {
            const std::string id = pickId(in);
            auto it = model.capabilities.find(id);
            CHECK(p.getVirtualCameraCapability(id) ==
                  (it == model.capabilities.end() ? VirtualCameraCapability::NOT_SUPPORTED
                                                  : it->second));
            break;
        }
        case 21: {
            const std::string id = pickId(in);
            const hidl_vec<hidl_string> names = pickNames(in);
            p.setVirtualCameraList(id, names);
            model.lists[id] = stored(names);
            break;
        }
        case 22: {
            const std::string id = pickId(in);
            std::vector<std::string> got;
            int answers = 0;
            p.getVirtualCameraList(id, [&](const hidl_vec<hidl_string>& names) {
                ++answers;
                for (const hidl_string& n : names) got.emplace_back(n);
            });
            auto it = model.lists.find(id);
            CHECK(answers == 1);
            CHECK(got == (it == model.lists.end() ? std::vector<std::string>{} : it->second));
            break;
        }
        case 23: {
            const std::string id = pickId(in);
            const uint32_t max = in.ConsumeIntegral<uint32_t>();
            p.setMaxVirtualCameras(id, max);
            model.maxima[id] = max;
            break;
        }
        case 24: {
            const std::string id = pickId(in);
            auto it = model.maxima.find(id);
            CHECK(p.getMaxVirtualCameras(id) == (it == model.maxima.end() ? 0u : it->second));
            break;
        }
        case 25:
            model.infos = pickInfos(in);
            p.setVirtualCameraInfo(model.infos);
            break;
        case 26: {
            int answers = 0;
            p.getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& infos) {
                ++answers;
                CHECK(infos == model.infos);
            });
            CHECK(answers == 1);
            break;
        }
        case 27:
            property_set("persist.camera.cpp.flipmask", in.ConsumeBool() ? "1" : "0");
            break;
        case 28:
            property_set("persist.vendor.multistream.enable", in.ConsumeBool() ? "1" : "0");
            break;
        case 29:
            p.getTrackingMode(pickId(in));
            break;
        case 30:
            p.getVendorTags([](auto, const auto& sections) { CHECK(sections.size() == 0); });
            p.isSetTorchModeSupported([](auto, bool supported) { CHECK(!supported); });
            break;
        default:
            p.getCameraDeviceInterface_V1_x(pickId(in),
                                            [](auto, const auto& d) { CHECK(d == nullptr); });
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    // A provider and listeners per input; the session, the cache and the properties are
    // process-wide and carry over, as they do in the service.
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    std::vector<sp<Listener>> listeners;
    for (size_t i = 0; i < kListeners; ++i)
        listeners.push_back(new Listener(provider.get(), i == 0));
    Model model;
    int registrations = 0;
    while (in.remaining_bytes() > 0) call(*provider, in, model, listeners, registrations);

    provider.clear();
    // The cache would otherwise grow with every id the inputs make up.
    std::lock_guard lock(CameraControlCache::mLock);
    CameraControlCache::sInstance.reset();
    return 0;
}
