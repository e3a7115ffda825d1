// A provider listener that records every callback in order and can be told to fail.
#ifndef TESTS_SUPPORT_RECORDINGLISTENER_H
#define TESTS_SUPPORT_RECORDINGLISTENER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <utils/Errors.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProviderCallback.h>

namespace testing_support {

using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProviderCallback;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;

// "l=100 t=56 r=1180 b=664" for each crop, then the frame and the other numbers.
std::string describe(const SceneControl& scene);

class RecordingListener : public IZorvCameraProviderCallback {
  public:
    using hidl_string = ::android::hardware::hidl_string;
    template <typename T>
    using hidl_vec = ::android::hardware::hidl_vec<T>;
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    using TrackingMode = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
    using VirtualCameraCapability =
            ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;

    explicit RecordingListener(std::string name = "listener") : mName(std::move(name)) {}

    // From now on every callback is recorded and then fails with this transport error
    // (DEAD_OBJECT for a listener whose process died); OK restores success.
    void failWith(::android::status_t error) { mFailure = error; }
    // Runs inside every callback, after recording (e.g. to call back into the provider).
    void onEvent(std::function<void(const std::string& event)> hook) { mHook = std::move(hook); }

    // One line per callback: "<method> <arguments>".
    std::vector<std::string> events() const;
    std::vector<SceneControl> crops() const;
    std::vector<std::string> jsons() const;
    std::vector<hidl_vec<CameraInfo>> infos() const;
    std::vector<hidl_vec<hidl_string>> lists() const;
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
    Return<void> record(const std::string& event);

    const std::string mName;
    mutable std::mutex mLock;  // guards the recordings below
    std::vector<std::string> mEvents;
    std::vector<SceneControl> mCrops;
    std::vector<std::string> mJsons;
    std::vector<hidl_vec<CameraInfo>> mInfos;
    std::vector<hidl_vec<hidl_string>> mLists;
    std::atomic<::android::status_t> mFailure{::android::OK};
    std::function<void(const std::string&)> mHook;
};

// Every listener's events, across listeners, in call order: "<name>: <event>".
std::vector<std::string> allListenerEvents();
void clearAllListenerEvents();

}  // namespace testing_support

#endif  // TESTS_SUPPORT_RECORDINGLISTENER_H
