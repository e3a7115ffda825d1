// The callback printers: provider listeners, the framing engine and the session callback.
#ifndef TOOLS_ZORVCTL_PRINTER_H
#define TOOLS_ZORVCTL_PRINTER_H

#include <stdint.h>

#include <functional>
#include <string>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSessionCallback.h>

#include "Events.h"
#include "Format.h"
#include "FramingEngine.h"
#include "kit/RecordingListener.h"

namespace zorvctl {

using ::android::hardware::Return;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;

// Reports one line of output as its event (in order with everything else zorvctl reports).
void out(const std::string& line);

// A registered listener: every callback prints "cb <name> <method> <arguments>" (a name with
// a blank quoted); a scene text prints "bytes=N lines=M", then each of its M lines behind a "|"
// (a text that does not end in a line feed still counts its last line).
class PrintingListener : public kit::RecordingListener {
  public:
    // onCrop sees every announced crop (for the picture of the last one).
    PrintingListener(const std::string& name, std::function<void(const SceneControl&)> onCrop);
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
