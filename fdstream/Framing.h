// The PTZ space shared by the session and the provider, and the crop arithmetic done in it.
#ifndef FDSTREAM_FRAMING_H
#define FDSTREAM_FRAMING_H

#include <stdint.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

namespace vendor::zorv::zorvprovider {

// Crops and their frames are given in a 1280 x 720 space.
constexpr int32_t kPtzWidth = 1280;
constexpr int32_t kPtzHeight = 720;

// The smallest crop width a zoom-in may reach until a zoom-in limit is set.
constexpr uint32_t kDefaultZoomInLimit = 320;

// Crop arithmetic is 32-bit and wraps; it is done unsigned so that it stays defined.
inline int32_t wrapAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapSub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// The first crop of a framing, or its whole frame when it has none.
inline zorvprovider::V2_4::Crop cropOrFrame(const zorvprovider::V2_4::SceneControl& scene) {
    if (scene.crops.size() > 0) return scene.crops[0];
    return {0, 0, scene.frameWidth, scene.frameHeight};
}

}  // namespace vendor::zorv::zorvprovider

#endif  // FDSTREAM_FRAMING_H
