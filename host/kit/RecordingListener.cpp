// Recording listener: callbacks as text lines, copies of their arguments, injected failures.
#include "kit/RecordingListener.h"

namespace kit {

using ::android::hardware::Status;
using ::android::hardware::Void;

namespace {
std::mutex sAllLock;  // guards sAll
std::vector<std::string>& sAll = *new std::vector<std::string>;
}  // namespace

std::vector<std::string> allListenerEvents() {
    std::lock_guard<std::mutex> lock(sAllLock);
    return sAll;
}

void clearAllListenerEvents() {
    std::lock_guard<std::mutex> lock(sAllLock);
    sAll.clear();
}

void RecordingListener::clear() {
    std::lock_guard<std::mutex> lock(mLock);
    mEvents.clear();
    mCrops.clear();
    mJsons.clear();
    mInfos.clear();
    mLists.clear();
}

std::string RecordingListener::arg(const char* name, const std::string& full,
                                   const std::string& brief) const {
    return mMode == Mode::kPrint ? name + ("=" + full) : brief;
}

RecordingListener::Return<void> RecordingListener::record(const Callback& call) {
    if (mMode == Mode::kRecord) {
        keep(mEvents, std::string(call));
        std::lock_guard<std::mutex> lock(sAllLock);
        sAll.push_back(mName + ": " + std::string(call));
    }
    if (mHook) mHook(call);
    ::android::status_t failure = mFailure;
    if (failure != ::android::OK) return Status::fromStatusT(failure);
    return Void();
}

RecordingListener::Return<void> RecordingListener::cameraDeviceTrackingChange(
        const hidl_string& cameraId, TrackingMode mode) {
    const std::string number = std::to_string(static_cast<int32_t>(mode));
    return record({"cameraDeviceTrackingChange",
                   arg("camera", quote(cameraId), cameraId) + " " + arg("mode", number, number)});
}

RecordingListener::Return<void> RecordingListener::onCameraSceneJsonApplied(
        const hidl_string& json) {
    keep(mJsons, std::string(json));
    return record({"onCameraSceneJsonApplied",
                   mMode == Mode::kPrint ? "" : std::to_string(json.size()) + " bytes", nullptr,
                   &json});
}

RecordingListener::Return<void> RecordingListener::onCameraCropApplied(const SceneControl& scene) {
    keep(mCrops, scene);
    return record({"onCameraCropApplied", formatScene(scene), &scene});
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraCapabilityChange(
        const hidl_string& cameraId, VirtualCameraCapability capability) {
    const std::string number = std::to_string(static_cast<int32_t>(capability));
    return record(
            {"onVirtualCameraCapabilityChange",
             arg("camera", quote(cameraId), cameraId) + " " + arg("capability", number, number)});
}

RecordingListener::Return<void> RecordingListener::onMaxVirtualCamerasChange(
        const hidl_string& cameraId, uint32_t maxVirtualCameras) {
    const std::string number = std::to_string(maxVirtualCameras);
    return record({"onMaxVirtualCamerasChange",
                   arg("camera", quote(cameraId), cameraId) + " " + arg("max", number, number)});
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraListChange(
        const hidl_string& cameraId, const hidl_vec<hidl_string>& names) {
    keep(mLists, names);
    return record({"onVirtualCameraListChange",
                   arg("camera", quote(cameraId), cameraId) + " " +
                           arg("names", formatStrings(names), std::to_string(names.size()))});
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraInfos(
        const hidl_vec<CameraInfo>& infos) {
    keep(mInfos, infos);
    return record({"onVirtualCameraInfos",
                   arg("infos", formatInfos(infos), std::to_string(infos.size()))});
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraAvailablityChange(
        const hidl_string& cameraId, bool available) {
    return record({"onVirtualCameraAvailablityChange",
                   arg("camera", quote(cameraId), cameraId) + " " +
                           arg("available", boolName(available), std::to_string(available))});
}

}  // namespace kit
