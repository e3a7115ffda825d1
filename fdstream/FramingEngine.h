// The interface through which the session hands framing changes to the stream-processing side.
#ifndef FDSTREAM_FRAMINGENGINE_H
#define FDSTREAM_FRAMINGENGINE_H

#include <stdint.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation {

// Arguments are temporary copies, valid only during the call. The session calls
// onSceneControl, onPTZControl and onTrackingModeChanged with FDSession::mLock held,
// onTrackControl without it. The four operations are the whole virtual table, in this
// order; the engine's owner destroys it, never the session, once FDSession::attachEngine has
// replaced it (which waits for calls in flight on other threads).
class FramingEngine {
  public:
    virtual void onSceneControl(
            const ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl& scene) = 0;
    virtual void onPTZControl(
            const ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl& scene) = 0;
    virtual void onTrackControl(
            const ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl& track) = 0;
    virtual void onTrackingModeChanged(int32_t mode) = 0;

  protected:
    ~FramingEngine() = default;
};

}  // namespace vendor::zorv::zorvprovider::fdstream::V1_0::implementation

#endif  // FDSTREAM_FRAMINGENGINE_H
