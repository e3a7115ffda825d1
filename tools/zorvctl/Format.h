// Text forms of the interface types: how zorvctl reads them from command words and prints them.
#ifndef TOOLS_ZORVCTL_FORMAT_H
#define TOOLS_ZORVCTL_FORMAT_H

#include <stdint.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <hidl/HidlSupport.h>

#include <android/hardware/camera/common/1.0/types.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

#include "kit/Format.h"

namespace zorvctl {

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;

// A command that cannot run as written; the caller adds the command's usage.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// A command that was well formed but failed.
struct CommandError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Words of a command line: blanks separate, double quotes group (with \" \\ \n escapes),
// a # outside quotes at the start of a word ends the line.
std::vector<std::string> splitWords(const std::string& line);

// Decimal or 0x-prefixed hexadecimal, optionally negative, within [min, max].
int64_t parseInteger(const std::string& text, int64_t min, int64_t max);
double parseReal(const std::string& text);
bool parseBool(const std::string& text);
// PAN_LEFT .. APPLY_ZOOM_LIMIT, in value order from 1.
std::vector<std::string> directionNames();
// PAN_LEFT .. APPLY_ZOOM_LIMIT, or any int32.
CameraMoveDirection parseDirection(const std::string& text);
// "L,T,R,B", optionally in braces.
Crop parseCrop(const std::string& text);
// Crops, then frame=WxH transition=N duration=N extra=N in any order; frame defaults to 1280x720.
SceneControl parseScene(const std::vector<std::string>& words);
// A rectangle, then action=N xVelocity=F yVelocity=F wVelocity=F in any order.
TrackControl parseTrack(const std::vector<std::string>& words);
// text1=S,text2=S,entries=K:F:V;K:F:V,block=HEX,value1=N,value2=N,value3=N, optionally in braces.
CameraInfo parseCameraInfo(const std::string& text);

// The values print in the kit's forms (parseCameraInfo reads what formatCameraInfo prints).
using kit::boolName;
using kit::formatCameraInfo;
using kit::formatCrop;
using kit::formatInfos;
using kit::formatScene;
using kit::formatStrings;
using kit::formatTrack;
using kit::quote;
const char* statusName(Status status);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_FORMAT_H
