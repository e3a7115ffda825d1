// The callback printers: one event per callback, in arrival order.
#include "Printer.h"

namespace zorvctl {

using ::android::hardware::Void;

void out(const std::string& line) {
    emit(lineEvent(line));
}

PrintingListener::PrintingListener(const std::string& name,
                                   std::function<void(const SceneControl&)> onCrop)
    : RecordingListener(name, Mode::kPrint) {
    onEvent([name, onCrop](const kit::Callback& call) {
        if (call.scene != nullptr) onCrop(*call.scene);
        const std::string text = call.text != nullptr ? std::string(*call.text) : "";
        emit(callbackEvent(name, call.method, call.args, call.text != nullptr ? &text : nullptr));
    });
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
