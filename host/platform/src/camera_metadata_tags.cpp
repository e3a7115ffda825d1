// Tag tables of the camera metadata stand-in: section names, the type of every tag, tag names.
#include <system/camera_metadata.h>

#include <string.h>

#include <algorithm>
#include <iterator>

namespace {

const char* const kSectionNames[ANDROID_SECTION_COUNT] = {
        "android.colorCorrection",
        "android.control",
        "android.demosaic",
        "android.edge",
        "android.flash",
        "android.flash.info",
        "android.hotPixel",
        "android.jpeg",
        "android.lens",
        "android.lens.info",
        "android.noiseReduction",
        "android.quirks",
        "android.request",
        "android.scaler",
        "android.sensor",
        "android.sensor.info",
        "android.shading",
        "android.statistics",
        "android.statistics.info",
        "android.tonemap",
        "android.led",
        "android.info",
        "android.blackLevel",
        "android.sync",
        "android.reprocess",
        "android.depth",
        "android.logicalMultiCamera",
        "android.distortionCorrection",
        "android.heic",
        "android.heicInfo",
};

// One letter per tag of a section, in index order; the length is the section's tag count.
// The letters stand for the types in enum order.
constexpr char kTypeLetters[] = "BIFLDR";
constexpr const char* kSectionTypes[ANDROID_SECTION_COUNT] = {
        "BRFBB",
        "BIBBIIBBIBBBIBBBBBBBIIRBBBBBIBIBBIBIBBBIIBB",
        "B",
        "BBB",
        "BLBBBB",
        "BL",
        "BB",
        "DBLIBBIIII",
        "FFFFBBFFFBFFBF",
        "FFFBFFIB",
        "BBB",
        "BBBBB",
        "IIIBIBIIIBBIBIIIIII",
        "IILIFLILIIILLBII",
        "LLIBBRRRRRRRIIIILFRDFFFIIILIFII",
        "IIBLLFIIBBI",
        "BBB",
        "BBBBIIIBIIBFFRBIBBLFF",
        "BIIIIIBBB",
        "FFFBIBFB",
        "BB",
        "BBB",
        "B",
        "LI",
        "FI",
        "IILLBIILL",
        "BBB",
        "BB",
        "ILL",
        "BB",
};

struct TagName {
    uint32_t tag;
    const char* name;
};

// Names of the tags that carry a constant, sorted by tag: the constant's name after its
// section prefix, in lower camel case.
const TagName kTagNames[] = {
        {ANDROID_COLOR_CORRECTION_MODE, "mode"},
        {ANDROID_COLOR_CORRECTION_TRANSFORM, "transform"},
        {ANDROID_COLOR_CORRECTION_GAINS, "gains"},
        {ANDROID_COLOR_CORRECTION_ABERRATION_MODE, "aberrationMode"},
        {ANDROID_CONTROL_AE_ANTIBANDING_MODE, "aeAntibandingMode"},
        {ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, "aeExposureCompensation"},
        {ANDROID_CONTROL_AE_LOCK, "aeLock"},
        {ANDROID_CONTROL_AE_MODE, "aeMode"},
        {ANDROID_CONTROL_AE_REGIONS, "aeRegions"},
        {ANDROID_CONTROL_AE_TARGET_FPS_RANGE, "aeTargetFpsRange"},
        {ANDROID_CONTROL_AE_PRECAPTURE_TRIGGER, "aePrecaptureTrigger"},
        {ANDROID_CONTROL_AF_MODE, "afMode"},
        {ANDROID_CONTROL_AF_REGIONS, "afRegions"},
        {ANDROID_CONTROL_AF_TRIGGER, "afTrigger"},
        {ANDROID_CONTROL_AWB_LOCK, "awbLock"},
        {ANDROID_CONTROL_AWB_MODE, "awbMode"},
        {ANDROID_CONTROL_AWB_REGIONS, "awbRegions"},
        {ANDROID_CONTROL_CAPTURE_INTENT, "captureIntent"},
        {ANDROID_CONTROL_EFFECT_MODE, "effectMode"},
        {ANDROID_CONTROL_MODE, "mode"},
        {ANDROID_CONTROL_SCENE_MODE, "sceneMode"},
        {ANDROID_CONTROL_VIDEO_STABILIZATION_MODE, "videoStabilizationMode"},
        {ANDROID_CONTROL_AE_AVAILABLE_TARGET_FPS_RANGES, "aeAvailableTargetFpsRanges"},
        {ANDROID_CONTROL_AE_COMPENSATION_RANGE, "aeCompensationRange"},
        {ANDROID_CONTROL_AE_COMPENSATION_STEP, "aeCompensationStep"},
        {ANDROID_CONTROL_AVAILABLE_EFFECTS, "availableEffects"},
        {ANDROID_CONTROL_MAX_REGIONS, "maxRegions"},
        {ANDROID_CONTROL_AE_STATE, "aeState"},
        {ANDROID_CONTROL_AF_STATE, "afState"},
        {ANDROID_CONTROL_AWB_STATE, "awbState"},
        {ANDROID_CONTROL_AVAILABLE_MODES, "availableModes"},
        {ANDROID_CONTROL_ENABLE_ZSL, "enableZsl"},
        {ANDROID_EDGE_MODE, "mode"},
        {ANDROID_EDGE_STRENGTH, "strength"},
        {ANDROID_FLASH_FIRING_POWER, "firingPower"},
        {ANDROID_FLASH_FIRING_TIME, "firingTime"},
        {ANDROID_FLASH_MODE, "mode"},
        {ANDROID_FLASH_STATE, "state"},
        {ANDROID_JPEG_GPS_COORDINATES, "gpsCoordinates"},
        {ANDROID_JPEG_GPS_PROCESSING_METHOD, "gpsProcessingMethod"},
        {ANDROID_JPEG_GPS_TIMESTAMP, "gpsTimestamp"},
        {ANDROID_JPEG_ORIENTATION, "orientation"},
        {ANDROID_JPEG_QUALITY, "quality"},
        {ANDROID_JPEG_THUMBNAIL_SIZE, "thumbnailSize"},
        {ANDROID_JPEG_MAX_SIZE, "maxSize"},
        {ANDROID_LENS_APERTURE, "aperture"},
        {ANDROID_LENS_FOCAL_LENGTH, "focalLength"},
        {ANDROID_LENS_FOCUS_DISTANCE, "focusDistance"},
        {ANDROID_LENS_OPTICAL_STABILIZATION_MODE, "opticalStabilizationMode"},
        {ANDROID_LENS_FACING, "facing"},
        {ANDROID_LENS_FOCUS_RANGE, "focusRange"},
        {ANDROID_LENS_STATE, "state"},
        {ANDROID_NOISE_REDUCTION_MODE, "mode"},
        {ANDROID_NOISE_REDUCTION_STRENGTH, "strength"},
        {ANDROID_REQUEST_FRAME_COUNT, "frameCount"},
        {ANDROID_REQUEST_ID, "id"},
        {ANDROID_REQUEST_METADATA_MODE, "metadataMode"},
        {ANDROID_REQUEST_TYPE, "type"},
        {ANDROID_REQUEST_PIPELINE_DEPTH, "pipelineDepth"},
        {ANDROID_REQUEST_PARTIAL_RESULT_COUNT, "partialResultCount"},
        {ANDROID_REQUEST_AVAILABLE_CAPABILITIES, "availableCapabilities"},
        {ANDROID_REQUEST_AVAILABLE_REQUEST_KEYS, "availableRequestKeys"},
        {ANDROID_SCALER_CROP_REGION, "cropRegion"},
        {ANDROID_SCALER_AVAILABLE_FORMATS, "availableFormats"},
        {ANDROID_SCALER_AVAILABLE_MAX_DIGITAL_ZOOM, "availableMaxDigitalZoom"},
        {ANDROID_SCALER_AVAILABLE_STREAM_CONFIGURATIONS, "availableStreamConfigurations"},
        {ANDROID_SCALER_CROPPING_TYPE, "croppingType"},
        {ANDROID_SENSOR_EXPOSURE_TIME, "exposureTime"},
        {ANDROID_SENSOR_FRAME_DURATION, "frameDuration"},
        {ANDROID_SENSOR_SENSITIVITY, "sensitivity"},
        {ANDROID_SENSOR_ORIENTATION, "orientation"},
        {ANDROID_SENSOR_TIMESTAMP, "timestamp"},
        {ANDROID_SENSOR_NOISE_PROFILE, "noiseProfile"},
        {ANDROID_SENSOR_ROLLING_SHUTTER_SKEW, "rollingShutterSkew"},
        {ANDROID_SENSOR_INFO_ACTIVE_ARRAY_SIZE, "activeArraySize"},
        {ANDROID_SENSOR_INFO_PIXEL_ARRAY_SIZE, "pixelArraySize"},
        {ANDROID_STATISTICS_FACE_DETECT_MODE, "faceDetectMode"},
        {ANDROID_STATISTICS_FACE_RECTANGLES, "faceRectangles"},
        {ANDROID_STATISTICS_FACE_SCORES, "faceScores"},
        {ANDROID_STATISTICS_SCENE_FLICKER, "sceneFlicker"},
};

// Section lengths and letter values, worked out at compile time: the platform answers a type
// lookup from a table, and validation asks once per entry of every buffer.
struct TypeTable {
    size_t sectionLength[ANDROID_SECTION_COUNT] = {};
    int8_t typeOfLetter[256] = {};
    constexpr TypeTable() {
        for (size_t i = 0; i < ANDROID_SECTION_COUNT; ++i) {
            while (kSectionTypes[i][sectionLength[i]] != '\0') ++sectionLength[i];
        }
        for (int8_t& t : typeOfLetter) t = -1;
        for (size_t i = 0; kTypeLetters[i] != '\0'; ++i) {
            typeOfLetter[static_cast<unsigned char>(kTypeLetters[i])] = static_cast<int8_t>(i);
        }
    }
};
constexpr TypeTable kTypeTable;

}  // namespace

extern "C" {

const char* get_camera_metadata_section_name(uint32_t tag) {
    uint32_t section = tag >> 16;
    return section < ANDROID_SECTION_COUNT ? kSectionNames[section] : nullptr;
}

int get_camera_metadata_tag_type(uint32_t tag) {
    uint32_t section = tag >> 16;
    if (section >= ANDROID_SECTION_COUNT) return -1;  // includes the vendor sections
    uint32_t index = tag & 0xFFFF;
    if (index >= kTypeTable.sectionLength[section]) return -1;
    return kTypeTable.typeOfLetter[static_cast<unsigned char>(kSectionTypes[section][index])];
}

const char* get_camera_metadata_tag_name(uint32_t tag) {
    auto it = std::lower_bound(std::begin(kTagNames), std::end(kTagNames), tag,
                               [](const TagName& t, uint32_t v) { return t.tag < v; });
    return it != std::end(kTagNames) && it->tag == tag ? it->name : nullptr;
}

}  // extern "C"
