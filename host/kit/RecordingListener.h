// A provider listener that records every callback in order, can be told to fail and runs a hook.
#ifndef HOST_KIT_RECORDINGLISTENER_H
#define HOST_KIT_RECORDINGLISTENER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <utils/Errors.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProviderCallback.h>

#include "kit/Format.h"

namespace kit {

using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProviderCallback;

// One callback as the hook sees it; as a string, its event line "<method> <arguments>".
struct Callback {
    std::string method;
    std::string args;
    const SceneControl* scene = nullptr;  // the one of onCameraCropApplied
    const hidl_string* text = nullptr;    // the one of onCameraSceneJsonApplied
    operator std::string() const { return method + " " + args; }
};

class RecordingListener : public IZorvCameraProviderCallback {
  public:
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    using TrackingMode = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
    using VirtualCameraCapability =
            ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;

    // kRecord keeps every callback, its arguments short: "cameraDeviceTrackingChange 0 1",
    // lists by their size, a scene text by its length. kPrint keeps nothing and names its
    // arguments in full for the hook to print: 'cameraDeviceTrackingChange camera="0" mode=1',
    // lists whole, a scene text left to the hook.
    enum class Mode { kRecord, kPrint };
    explicit RecordingListener(std::string name = "listener", Mode mode = Mode::kRecord)
        : mName(std::move(name)), mMode(mode) {}

    // From now on every callback is recorded and then fails with this transport error
    // (DEAD_OBJECT for a listener whose process died); OK restores success.
    void failWith(::android::status_t error) { mFailure = error; }
    // Runs inside every callback, after recording (e.g. to call back into the provider).
    void onEvent(std::function<void(const Callback& call)> hook) { mHook = std::move(hook); }

    // One line per callback: "<method> <arguments>".
    std::vector<std::string> events() const { return copy(mEvents); }
    std::vector<SceneControl> crops() const { return copy(mCrops); }
    std::vector<std::string> jsons() const { return copy(mJsons); }
    std::vector<hidl_vec<CameraInfo>> infos() const { return copy(mInfos); }
    std::vector<hidl_vec<hidl_string>> lists() const { return copy(mLists); }
    void clear();

    Return<void> cameraDeviceTrackingChange(const hidl_string& cameraId,
                                            TrackingMode mode) override;
    Return<void> onCameraSceneJsonApplied(const hidl_string& json) override;
    Return<void> onCameraCropApplied(const SceneControl& scene) override;
    Return<void> onVirtualCameraCapabilityChange(const hidl_string& cameraId,
                                                 VirtualCameraCapability capability) override;
    Return<void> onMaxVirtualCamerasChange(const hidl_string& cameraId,
                                           uint32_t maxVirtualCameras) override;
    Return<void> onVirtualCameraListChange(const hidl_string& cameraId,
                                           const hidl_vec<hidl_string>& names) override;
    Return<void> onVirtualCameraInfos(const hidl_vec<CameraInfo>& infos) override;
    Return<void> onVirtualCameraAvailablityChange(const hidl_string& cameraId,
                                                  bool available) override;

  private:
    // The argument in the mode's form: "name=<full>" or "<brief>".
    std::string arg(const char* name, const std::string& full, const std::string& brief) const;
    template <typename T>
    void keep(std::vector<T>& into, const T& value) {
        std::lock_guard<std::mutex> lock(mLock);
        if (mMode == Mode::kRecord) into.push_back(value);
    }
    template <typename T>
    std::vector<T> copy(const std::vector<T>& from) const {
        std::lock_guard<std::mutex> lock(mLock);
        return from;
    }
    Return<void> record(const Callback& call);

    const std::string mName;
    const Mode mMode;
    mutable std::mutex mLock;  // guards the recordings below
    std::vector<std::string> mEvents;
    std::vector<SceneControl> mCrops;
    std::vector<std::string> mJsons;
    std::vector<hidl_vec<CameraInfo>> mInfos;
    std::vector<hidl_vec<hidl_string>> mLists;
    std::atomic<::android::status_t> mFailure{::android::OK};
    std::function<void(const Callback&)> mHook;
};

// Every recording listener's events, across listeners, in call order: "<name>: <event>".
std::vector<std::string> allListenerEvents();
void clearAllListenerEvents();

}  // namespace kit

#endif  // HOST_KIT_RECORDINGLISTENER_H
