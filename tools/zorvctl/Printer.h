// The callback printers: provider listeners, the framing engine and the session callback.
#ifndef TOOLS_ZORVCTL_PRINTER_H
#define TOOLS_ZORVCTL_PRINTER_H

#include <stdint.h>

#include <functional>
#include <string>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSessionCallback.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProviderCallback.h>

#include "Events.h"
#include "Format.h"
#include "FramingEngine.h"

namespace zorvctl {

using ::android::hardware::Return;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;

// Reports one line of output as its event (in order with everything else zorvctl reports).
void out(const std::string& line);

// A registered listener: every callback prints "cb <name> <method> <arguments>" (a name with
// a blank quoted); a scene text prints "bytes=N lines=M", then each of its M lines behind a "|"
// (a text that does not end in a line feed still counts its last line).
class PrintingListener
    : public ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProviderCallback {
  public:
    // onCrop sees every announced crop (for the picture of the last one).
    PrintingListener(std::string name, std::function<void(const SceneControl&)> onCrop)
        : mName(std::move(name)), mOnCrop(std::move(onCrop)) {}

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
    Return<void> print(const std::string& method, const std::string& args);

    const std::string mName;
    const std::function<void(const SceneControl&)> mOnCrop;
};

// The framing engine zorvctl can attach to the session: prints "engine <operation> <argument>".
class PrintingEngine final
    : public ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FramingEngine {
  public:
    void onSceneControl(const SceneControl& scene) override;
    void onPTZControl(const SceneControl& scene) override;
    void onTrackControl(const TrackControl& track) override;
    void onTrackingModeChanged(int32_t mode) override;
};

// The session callback given by "fd setCallback": prints "cb fd onFrameProcessed ...".
class PrintingSessionCallback
    : public ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSessionCallback {
  public:
    Return<void> onFrameProcessed(uint32_t frameNumber, int32_t status) override;
};

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_PRINTER_H
