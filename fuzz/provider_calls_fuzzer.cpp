// Fuzzes the provider's interface: a byte stream of calls from the shared operation table with
// arbitrary arguments, each setter read back, with listeners that fail as told or read back.
#include <stdint.h>

#include <mutex>
#include <string>
#include <vector>

#include <android/log.h>
#include <cutils/properties.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <utils/Errors.h>

#include "CameraControlCache.h"
#include "ZorvCameraProvider.h"
#include "kit/RecordingListener.h"
#include "support/ProviderOps.h"

using ::android::sp;
using ::android::status_t;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::CameraControlCache;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using namespace kit;
using namespace testing_support;

namespace {

constexpr size_t kListeners = 4;
constexpr int kMaxRegistrations = 8;  // per input, so the fan-outs stay short

// Arguments from the input: often in the range an operation means, sometimes any value.
class FuzzChoices : public Choices {
  public:
    explicit FuzzChoices(FuzzedDataProvider& in) : mIn(in) {}
    int32_t pick(int32_t low, int32_t high) override {
        return mIn.ConsumeBool() ? mIn.ConsumeIntegral<int32_t>()
                                 : mIn.ConsumeIntegralInRange<int32_t>(low, high);
    }
    size_t index(size_t n) override { return mIn.ConsumeIntegralInRange<size_t>(0, n - 1); }
    // Ids with odd bytes: NUL, slashes, nothing at all, or any bytes; a few common ones so that
    // calls meet each other's table entries.
    std::string cameraId() override {
        const std::string ids[] = {"0", "device@3.2/internal/0", "", std::string("a\0b", 3)};
        return mIn.ConsumeBool() ? mIn.PickValueInArray(ids) : mIn.ConsumeRandomLengthString(40);
    }
    std::string text(size_t maxLength) override { return mIn.ConsumeRandomLengthString(maxLength); }

  private:
    FuzzedDataProvider& mIn;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    FuzzChoices choices(in);
    // A provider and listeners per input; the session, the cache and the properties are
    // process-wide and carry over, as they do in the service.
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    OpContext c{*provider, choices, [](const std::string&) { __builtin_trap(); }, nullptr};
    c.alone = true;
    // The first listener reads the provider back from its callbacks, as a client may.
    std::vector<sp<RecordingListener>> listeners;
    for (size_t i = 0; i < kListeners; ++i) listeners.push_back(new RecordingListener());
    listeners[0]->onEvent([&provider](const std::string&) {
        provider->getCurrentCameraCropArea([](const SceneControl& s) {
            if (s.frameWidth < 1 || s.frameHeight < 1) __builtin_trap();
        });
        provider->getVirtualCameraInfo([](const auto&) {});
    });
    int registrations = 0;
    const auto& ops = providerOps();
    while (in.remaining_bytes() > 0) {
        const size_t op = in.ConsumeIntegralInRange<size_t>(0, ops.size() + 3);
        if (op < ops.size()) {
            ops[op].run(c);
        } else if (op == ops.size()) {
            // Fan-outs stay short: a bounded number of registrations per input.
            if (registrations++ < kMaxRegistrations) {
                provider->setListener(
                        listeners[in.ConsumeIntegralInRange<size_t>(0, kListeners - 1)]);
            }
        } else if (op == ops.size() + 1) {
            const status_t failures[] = {::android::OK, ::android::DEAD_OBJECT,
                                         ::android::FAILED_TRANSACTION, ::android::UNKNOWN_ERROR};
            listeners[in.ConsumeIntegralInRange<size_t>(0, kListeners - 1)]->failWith(
                    in.PickValueInArray(failures));
        } else {
            property_set(op == ops.size() + 2 ? "persist.camera.cpp.flipmask"
                                              : "persist.vendor.multistream.enable",
                         in.ConsumeBool() ? "1" : "0");
        }
    }
    for (const auto& l : listeners) provider->clearListener(l);

    provider.clear();
    // The cache would otherwise grow with every id the inputs make up.
    std::lock_guard lock(CameraControlCache::mLock);
    CameraControlCache::sInstance.reset();
    return 0;
}
