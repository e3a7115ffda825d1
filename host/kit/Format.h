// Text forms of the interface's values, as callback lines, zorvctl and test failures print them.
#ifndef HOST_KIT_FORMAT_H
#define HOST_KIT_FORMAT_H

#include <string>

#include <hidl/HidlSupport.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

namespace kit {

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfo;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::SceneControl;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackControl;

// In double quotes, with \" \\ \n and \xNN escapes.
std::string quote(const std::string& text);
// {l,t,r,b}
std::string formatCrop(const Crop& crop);
// crops=[{l,t,r,b} ...] frame=WxH transition=N duration=N extra=N
std::string formatScene(const SceneControl& scene);
inline std::string describe(const SceneControl& scene) {
    return formatScene(scene);
}
// rect={l,t,r,b} action=N xVelocity=F yVelocity=F wVelocity=F
std::string formatTrack(const TrackControl& track);
// {text1="S",text2="S",entries=K:F:V;K:F:V,block=HEX,value1=N,value2=N,value3=N}
std::string formatCameraInfo(const CameraInfo& info);
// [INFO INFO ...]
std::string formatInfos(const hidl_vec<CameraInfo>& infos);
// ["NAME" "NAME" ...]
std::string formatStrings(const hidl_vec<hidl_string>& names);
const char* boolName(bool value);

}  // namespace kit

#endif  // HOST_KIT_FORMAT_H
