// The callback printers: one output line per callback, in arrival order.
#include "Printer.h"

#include <stdio.h>

#include <vector>

namespace zorvctl {

using ::android::hardware::Void;

void out(const std::string& line) {
    if (line.compare(0, 3, "cb ") == 0) ++gOutput.callbacks;
    fwrite(line.data(), 1, line.size(), stdout);
    fputc('\n', stdout);
}

void outText(const std::string& header, const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    out(header + " bytes=" + std::to_string(text.size()) +
        " lines=" + std::to_string(lines.size()));
    if (gOutput.foldTexts) return;
    for (const std::string& line : lines) out("|" + line);
}

Return<void> PrintingListener::print(const std::string& what) {
    out("cb " + mName + " " + what);
    return Void();
}

Return<void> PrintingListener::cameraDeviceTrackingChange(const hidl_string& cameraId,
                                                          TrackingMode mode) {
    return print("cameraDeviceTrackingChange camera=" + quote(cameraId) +
                 " mode=" + std::to_string(static_cast<int32_t>(mode)));
}

Return<void> PrintingListener::onCameraSceneJsonApplied(const hidl_string& json) {
    outText("cb " + mName + " onCameraSceneJsonApplied", json);
    return Void();
}

Return<void> PrintingListener::onCameraCropApplied(const SceneControl& scene) {
    mOnCrop(scene);
    return print("onCameraCropApplied " + formatScene(scene));
}

Return<void> PrintingListener::onVirtualCameraCapabilityChange(const hidl_string& cameraId,
                                                               VirtualCameraCapability capability) {
    return print("onVirtualCameraCapabilityChange camera=" + quote(cameraId) +
                 " capability=" + std::to_string(static_cast<int32_t>(capability)));
}

Return<void> PrintingListener::onMaxVirtualCamerasChange(const hidl_string& cameraId,
                                                         uint32_t maxVirtualCameras) {
    return print("onMaxVirtualCamerasChange camera=" + quote(cameraId) +
                 " max=" + std::to_string(maxVirtualCameras));
}

Return<void> PrintingListener::onVirtualCameraListChange(const hidl_string& cameraId,
                                                         const hidl_vec<hidl_string>& names) {
    return print("onVirtualCameraListChange camera=" + quote(cameraId) +
                 " names=" + formatStrings(names));
}

Return<void> PrintingListener::onVirtualCameraInfos(const hidl_vec<CameraInfo>& infos) {
    return print("onVirtualCameraInfos infos=" + formatInfos(infos));
}

Return<void> PrintingListener::onVirtualCameraAvailablityChange(const hidl_string& cameraId,
                                                                bool available) {
    return print("onVirtualCameraAvailablityChange camera=" + quote(cameraId) +
                 " available=" + boolName(available));
}

void PrintingEngine::onSceneControl(const SceneControl& scene) {
    out("engine onSceneControl " + formatScene(scene));
}

void PrintingEngine::onPTZControl(const SceneControl& scene) {
    out("engine onPTZControl " + formatScene(scene));
}

void PrintingEngine::onTrackControl(const TrackControl& track) {
    out("engine onTrackControl " + formatTrack(track));
}

void PrintingEngine::onTrackingModeChanged(int32_t mode) {
    out("engine onTrackingModeChanged mode=" + std::to_string(mode));
}

Return<void> PrintingSessionCallback::onFrameProcessed(uint32_t frameNumber, int32_t status) {
    out("cb fd onFrameProcessed frame=" + std::to_string(frameNumber) +
        " status=" + std::to_string(status));
    return Void();
}

}  // namespace zorvctl
