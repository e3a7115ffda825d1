// The callback printers: one event per callback, in arrival order.
#include "Printer.h"

namespace zorvctl {

using ::android::hardware::Void;

void out(const std::string& line) {
    emit(lineEvent(line));
}

Return<void> PrintingListener::print(const std::string& method, const std::string& args) {
    emit(callbackEvent(mName, method, args));
    return Void();
}

Return<void> PrintingListener::cameraDeviceTrackingChange(const hidl_string& cameraId,
                                                          TrackingMode mode) {
    return print("cameraDeviceTrackingChange", "camera=" + quote(cameraId) + " mode=" +
                                                       std::to_string(static_cast<int32_t>(mode)));
}

Return<void> PrintingListener::onCameraSceneJsonApplied(const hidl_string& json) {
    std::string text = json;
    emit(callbackEvent(mName, "onCameraSceneJsonApplied", "", &text));
    return Void();
}

Return<void> PrintingListener::onCameraCropApplied(const SceneControl& scene) {
    mOnCrop(scene);
    return print("onCameraCropApplied", formatScene(scene));
}

Return<void> PrintingListener::onVirtualCameraCapabilityChange(const hidl_string& cameraId,
                                                               VirtualCameraCapability capability) {
    return print("onVirtualCameraCapabilityChange",
                 "camera=" + quote(cameraId) +
                         " capability=" + std::to_string(static_cast<int32_t>(capability)));
}

Return<void> PrintingListener::onMaxVirtualCamerasChange(const hidl_string& cameraId,
                                                         uint32_t maxVirtualCameras) {
    return print("onMaxVirtualCamerasChange",
                 "camera=" + quote(cameraId) + " max=" + std::to_string(maxVirtualCameras));
}

Return<void> PrintingListener::onVirtualCameraListChange(const hidl_string& cameraId,
                                                         const hidl_vec<hidl_string>& names) {
    return print("onVirtualCameraListChange",
                 "camera=" + quote(cameraId) + " names=" + formatStrings(names));
}

Return<void> PrintingListener::onVirtualCameraInfos(const hidl_vec<CameraInfo>& infos) {
    return print("onVirtualCameraInfos", "infos=" + formatInfos(infos));
}

Return<void> PrintingListener::onVirtualCameraAvailablityChange(const hidl_string& cameraId,
                                                                bool available) {
    return print("onVirtualCameraAvailablityChange",
                 "camera=" + quote(cameraId) + " available=" + boolName(available));
}

void PrintingEngine::onSceneControl(const SceneControl& scene) {
    emit(engineEvent("onSceneControl", formatScene(scene)));
}

void PrintingEngine::onPTZControl(const SceneControl& scene) {
    emit(engineEvent("onPTZControl", formatScene(scene)));
}

void PrintingEngine::onTrackControl(const TrackControl& track) {
    emit(engineEvent("onTrackControl", formatTrack(track)));
}

void PrintingEngine::onTrackingModeChanged(int32_t mode) {
    emit(engineEvent("onTrackingModeChanged", "mode=" + std::to_string(mode)));
}

Return<void> PrintingSessionCallback::onFrameProcessed(uint32_t frameNumber, int32_t status) {
    emit(callbackEvent(
            "fd", "onFrameProcessed",
            "frame=" + std::to_string(frameNumber) + " status=" + std::to_string(status)));
    return Void();
}

}  // namespace zorvctl
