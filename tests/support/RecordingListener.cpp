// Recording listener: callbacks as text lines, copies of their arguments, injected failures.
#include "support/RecordingListener.h"

#include <sstream>

namespace testing_support {

using ::android::hardware::Status;
using ::android::hardware::Void;

namespace {
std::mutex sAllLock;  // guards sAll
std::vector<std::string>& sAll = *new std::vector<std::string>;
}  // namespace

std::string describe(const SceneControl& scene) {
    std::ostringstream os;
    os << "crops=[";
    for (size_t i = 0; i < scene.crops.size(); ++i) {
        const auto& c = scene.crops[i];
        os << (i ? " " : "") << "{" << c.left << "," << c.top << "," << c.right << "," << c.bottom
           << "}";
    }
    os << "] frame=" << scene.frameWidth << "x" << scene.frameHeight
       << " transition=" << scene.transition << " duration=" << scene.duration
       << " extra=" << scene.extra;
    return os.str();
}

std::vector<std::string> allListenerEvents() {
    std::lock_guard<std::mutex> lock(sAllLock);
    return sAll;
}

void clearAllListenerEvents() {
    std::lock_guard<std::mutex> lock(sAllLock);
    sAll.clear();
}

std::vector<std::string> RecordingListener::events() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mEvents;
}
std::vector<SceneControl> RecordingListener::crops() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mCrops;
}
std::vector<std::string> RecordingListener::jsons() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mJsons;
}
std::vector<RecordingListener::hidl_vec<CameraInfo>> RecordingListener::infos() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mInfos;
}
std::vector<RecordingListener::hidl_vec<RecordingListener::hidl_string>> RecordingListener::lists()
        const {
    std::lock_guard<std::mutex> lock(mLock);
    return mLists;
}

void RecordingListener::clear() {
    std::lock_guard<std::mutex> lock(mLock);
    mEvents.clear();
    mCrops.clear();
    mJsons.clear();
    mInfos.clear();
    mLists.clear();
}

RecordingListener::Return<void> RecordingListener::record(const std::string& event) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
    }
    {
        std::lock_guard<std::mutex> lock(sAllLock);
        sAll.push_back(mName + ": " + event);
    }
    if (mHook) mHook(event);
    ::android::status_t failure = mFailure;
    if (failure != ::android::OK) return Status::fromStatusT(failure);
    return Void();
}

RecordingListener::Return<void> RecordingListener::cameraDeviceTrackingChange(
        const hidl_string& cameraId, TrackingMode mode) {
    return record("cameraDeviceTrackingChange " + std::string(cameraId) + " " +
                  std::to_string(static_cast<int32_t>(mode)));
}

RecordingListener::Return<void> RecordingListener::onCameraSceneJsonApplied(
        const hidl_string& json) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mJsons.push_back(json);
    }
    return record("onCameraSceneJsonApplied " + std::to_string(json.size()) + " bytes");
}

RecordingListener::Return<void> RecordingListener::onCameraCropApplied(const SceneControl& scene) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mCrops.push_back(scene);
    }
    return record("onCameraCropApplied " + describe(scene));
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraCapabilityChange(
        const hidl_string& cameraId, VirtualCameraCapability capability) {
    return record("onVirtualCameraCapabilityChange " + std::string(cameraId) + " " +
                  std::to_string(static_cast<int32_t>(capability)));
}

RecordingListener::Return<void> RecordingListener::onMaxVirtualCamerasChange(
        const hidl_string& cameraId, uint32_t maxVirtualCameras) {
    return record("onMaxVirtualCamerasChange " + std::string(cameraId) + " " +
                  std::to_string(maxVirtualCameras));
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraListChange(
        const hidl_string& cameraId, const hidl_vec<hidl_string>& names) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mLists.push_back(names);
    }
    return record("onVirtualCameraListChange " + std::string(cameraId) + " " +
                  std::to_string(names.size()));
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraInfos(
        const hidl_vec<CameraInfo>& infos) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mInfos.push_back(infos);
    }
    return record("onVirtualCameraInfos " + std::to_string(infos.size()));
}

RecordingListener::Return<void> RecordingListener::onVirtualCameraAvailablityChange(
        const hidl_string& cameraId, bool available) {
    return record("onVirtualCameraAvailablityChange " + std::string(cameraId) + " " +
                  std::to_string(available));
}

}  // namespace testing_support
