// The camera-control service object: one class, its sources split by concern.
#ifndef PROVIDER_ZORVCAMERAPROVIDER_H
#define PROVIDER_ZORVCAMERAPROVIDER_H

#include <stdint.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProvider.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProviderCallback.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

#include "LockOrder.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation {

// The one service object of the process. Framing state (scene, PTZ crop, track control,
// tracking mode) lives in the process-wide FDSession under FDSession::mLock; the state here
// is guarded by mLock, which is taken first whenever both are held. Listener calls are made
// with mLock held.
class ZorvCameraProvider : public IZorvCameraProvider {
  public:
    template <typename T>
    using sp = ::android::sp<T>;
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    template <typename T>
    using hidl_vec = ::android::hardware::hidl_vec<T>;
    using hidl_string = ::android::hardware::hidl_string;
    using Status = ::android::hardware::camera::common::V1_0::Status;
    using ICameraProviderCallback =
            ::android::hardware::camera::provider::V2_4::ICameraProviderCallback;

    ZorvCameraProvider();
    ~ZorvCameraProvider() override;

    // ICameraProvider: no camera devices are offered through the base interface.
    Return<Status> setCallback(const sp<ICameraProviderCallback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;

    // IZorvCameraProvider, in interface order.
    Return<void> getFDSessionInterface(getFDSessionInterface_cb _hidl_cb) override;
    Return<Status> setSceneJson(const hidl_string& json) override;
    Return<Status> setScene(const SceneControl& scene) override;
    Return<Status> setTracking(const TrackControl& track) override;
    Return<TrackingMode> getTrackingMode(const hidl_string& cameraId) override;
    Return<void> setTrackingMode(const hidl_string& cameraId, TrackingMode mode) override;
    Return<bool> moveCamera(const hidl_string& cameraId, CameraMoveDirection direction,
                            int32_t step) override;
    Return<void> savePreset(const hidl_string& cameraId, int32_t preset) override;
    Return<bool> gotoPreset(const hidl_string& cameraId, int32_t preset) override;
    Return<void> setListener(const sp<IZorvCameraProviderCallback>& listener) override;
    Return<void> getCurrentCameraCropArea(getCurrentCameraCropArea_cb _hidl_cb) override;
    Return<void> setMetaData(const hidl_string& cameraId, uint32_t tag, int32_t value) override;
    Return<void> setMetaArray(const hidl_string& cameraId, uint32_t tag,
                              const hidl_vec<int32_t>& values) override;
    Return<void> setZoomInLimit(const hidl_string& cameraId, uint32_t level) override;
    Return<void> setVirtualCameraAvailability(const hidl_string& cameraId, bool available) override;
    Return<bool> getVirtualCameraAvailability(const hidl_string& cameraId) override;
    Return<VirtualCameraCapability> getVirtualCameraCapability(
            const hidl_string& cameraId) override;
    Return<void> setVirtualCameraCapability(const hidl_string& cameraId,
                                            VirtualCameraCapability capability) override;
    Return<void> getVirtualCameraList(const hidl_string& cameraId,
                                      getVirtualCameraList_cb _hidl_cb) override;
    Return<void> setVirtualCameraList(const hidl_string& cameraId,
                                      const hidl_vec<hidl_string>& names) override;
    Return<void> setMaxVirtualCameras(const hidl_string& cameraId,
                                      uint32_t maxVirtualCameras) override;
    Return<uint32_t> getMaxVirtualCameras(const hidl_string& cameraId) override;
    Return<void> setVirtualCameraInfo(const hidl_vec<CameraInfo>& infos) override;
    Return<void> getVirtualCameraInfo(getVirtualCameraInfo_cb _hidl_cb) override;
    Return<void> clearListener(const sp<IZorvCameraProviderCallback>& listener) override;

    // Mirrors a tracking mode (0 to 5) in "vendor.talkertracking.flag".
    void setTrackingModeProperty(TrackingMode mode);
    // Track controls are not announced to listeners.
    void notifyCameraTrackControl(const TrackControl& track);
    // The camera-move worker behind moveCamera, also used by setZoomInLimit.
    bool moveCamera_l(const hidl_string& cameraId, CameraMoveDirection direction, int32_t step);
    // Computes the moved crop from the session's PTZ control into `scene`.
    void updatePTZPosition(CameraMoveDirection direction, int32_t step, SceneControl& scene);
    // `serial`: as in notifyListeners, for the text that follows a crop announcement.
    void notifyCameraSceneJson(const hidl_string& json, const uint64_t* serial = nullptr);
    void notifyCameraCropArea(const SceneControl& scene, bool withJson);
    // Scene text of the first crop, in the 5440 x 3060 frame; pure functions.
    static void buildSceneJson(const SceneControl& scene, hidl_string& json);
    static void buildTrackJson(const TrackControl& track, hidl_string& json);

  private:
    using Listener = sp<IZorvCameraProviderCallback>;
    struct ListenerEntry {
        Listener listener;
        uint64_t id;  // registration number; the list is in increasing order of it
    };

    // The one fan-out of every notification: calls `call` on each listener in registration
    // order under mLock, logs "Error from <callback> callback: %s" on a failed call and drops
    // a listener whose process has died. With `serial`, the counter of announcements of one
    // state: a listener that makes a newer announcement of it from its callback (which bumps
    // the counter) has told every listener, so this walk stops; returns false then.
    bool notifyListeners(const char* callback,
                         const std::function<Return<void>(const Listener&)>& call,
                         const uint64_t* serial = nullptr);

    RankedRecursiveMutex<LockRank::kProvider> mLock;  // guards every member below
    SceneControl mLastCrop;  // the crop last announced, as received (unmirrored)
    std::vector<ListenerEntry> mListeners;
    uint64_t mNextListenerId = 0;
    uint64_t mCropSerial = 0;      // crop announcements so far
    uint64_t mTrackingSerial = 0;  // tracking-mode notifications so far
    uint32_t mZoomInLimit;         // smallest crop width a zoom-in may reach, in PTZ coordinates
    std::map<std::string, std::vector<std::string>> mVirtualCameraLists;
    std::map<std::string, int32_t> mMaxVirtualCameras;
    std::map<std::string, VirtualCameraCapability> mVirtualCameraCapabilities;
    std::map<std::string, bool> mVirtualCameraAvailability;
    std::vector<CameraInfo> mVirtualCameraInfos;

    // Set once the first tracking-mode notification of the process went out. Process-wide and
    // so shared by every provider, whose locks are their own: atomic.
    static std::atomic<bool> sTrackingNotified;

    friend class ZorvCameraProviderTestPeer;
};

// Writes "persist.tessaview.vc.max" as the unsigned text of the value.
void setMaxVirtualCamProperty(int maxVirtualCameras);
// Writes "vendor.tessaview.vc.enable" as 1 or 0.
void setVirtualCameraEnabledProperty(bool available);

extern "C" IZorvCameraProvider* HIDL_FETCH_IZorvCameraProvider(const char* name);

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation

#endif  // PROVIDER_ZORVCAMERAPROVIDER_H
