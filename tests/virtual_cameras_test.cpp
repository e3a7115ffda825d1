// Virtual cameras: capability, name list, maximum, availability switch with its tracking rule,
// the info records, and the provider lock around each method.
#include <stdint.h>
#include <future>

#include <android/log.h>

#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

constexpr const char* kListenerTag = "listener";
using Cap = VirtualCameraCapability;

CameraInfo record(const std::string& tag, uint8_t seed) {
    CameraInfo info{tag,        tag + "2", {{seed, -1, INT64_MIN}, {2, seed, 1LL << 40}}, {}, ~0u,
                    1ull << 63, seed};
    info.block[15] = seed;
    return info;
}

// The parts in order (a braced list is evaluated left to right).
std::string cat(std::initializer_list<std::string> parts) {
    std::string out;
    for (const std::string& p : parts) out += p;
    return out;
}

template <typename T>
std::string num(const ::android::hardware::Return<T>& r) {
    return std::to_string(static_cast<int64_t>(T(r)));
}

// One call and what it leaves: the provider's log lines ("D ", "I " or "E " and the text) and
// the listener's callbacks ("L " and the event), in order, then "= " and the answer.
using Step = std::pair<std::function<std::string()>, std::string>;

class VirtualCameraTest : public ::testing::Test {
  protected:
    void SetUp() override {
        listener->onEvent([](const std::string& e) {
            __android_log_print(ANDROID_LOG_INFO, kListenerTag, "%s", e.c_str());
        });
        provider->setListener(listener);
    }
    void run(const std::vector<Step>& steps) {
        for (size_t i = 0; i < steps.size(); ++i) {
            SCOPED_TRACE("step " + std::to_string(i));
            LogCapture::clear();
            const std::string answer = steps[i].first();
            std::string timeline;
            for (const LogLine& l : LogCapture::lines())
                timeline += (l.tag == kListenerTag ? 'L' : "DIWE"[l.priority - kDebug]) +
                            (" " + l.text + "|");
            EXPECT_EQ(timeline + "= " + answer, steps[i].second);
        }
    }
    // The getters' answers: the names quoted per result callback, the rest as numbers.
    std::string names(const hidl_string& id) {
        std::string out;
        provider->getVirtualCameraList(id, [&](const auto& v) { out += formatStrings(v); });
        return out;
    }
    auto cap(const hidl_string& id) { return num(provider->getVirtualCameraCapability(id)); }
    auto max(const hidl_string& id) { return num(provider->getMaxVirtualCameras(id)); }
    auto on(const hidl_string& id) { return num(provider->getVirtualCameraAvailability(id)); }
    // The records' count per result callback, "!" where they are not `want`, "?" where another
    // thread could take the provider lock meanwhile (the callback runs under it).
    std::string infos(const std::vector<CameraInfo>& want) {
        std::string out;
        provider->getVirtualCameraInfo([&](const auto& v) {
            auto& m = Peer::lock(*provider);
            bool free = std::async([&] { return m.try_lock() && (m.unlock(), true); }).get();
            out += "[" + std::to_string(v.size()) +
                   (want == std::vector<CameraInfo>(v) ? "" : "!") + (free ? "?]" : "]");
        });
        return out;
    }
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(VirtualCameraTest, TablesAnswerLogAndNotify) {
    const hidl_string withNul("ab\0cd", 5);
    const std::vector<CameraInfo> two = {record("first", 7), record("second", 200)};
    // Before any set, and again: a getter creates no entry
    const Step notFound = {
            [&] {
                return cat({names("0"), cap("0"), max("0"), infos({}), on("0")});
            },
            "D getVirtualCameraList: camera: 0|I getVirtualCameraList: did not find virtual "
            "cameras for camera: 0 returning INTERNAL_ERROR|D getVirtualCameraCapability: camera: "
            "0|I getVirtualCameraCapability: did not find virtual camera: 0 returning not "
            "supported|I getMaxVirtualCameras: camera: 0|I getMaxVirtualCameras: did not find max "
            "virtual camers for camera: 0 returning 0|I getVirtualCameraInfo: |D "
            "getVirtualCameraAvailability: camera: 0|I getVirtualCameraAvailability: did not find "
            "availability for camera: 0 returning false|= []00[0]0"};
    run({notFound, notFound});
    run({
            {[&] {
                 provider->setVirtualCameraList("device/0", {"front", "back"});
                 return names("device/0");
             },
             "I setVirtualCameraList: camera: device/0 adding 2 virtual cameras |I "
             "setVirtualCameraList:    virtual camera: front|I setVirtualCameraList:    virtual "
             "camera: back|I setVirtualCameraList: camera: device/0 done with enumeration |I "
             "setVirtualCameraList: camera: device/0 clearing the map |I setVirtualCameraList: "
             "camera: device/0 transformed the virtual camera names size: 2|I "
             "setVirtualCameraList: camera: device/0 now has 2 virtual cameras|I "
             "setVirtualCameraList: Calling the listeners|L onVirtualCameraListChange device/0 2|D "
             "getVirtualCameraList: camera: device/0|I getVirtualCameraList: found virtual cameras "
             "for camera: device/0 2|= [\"front\" \"back\"]"},
            // Duplicate and empty names are kept; a name is stored up to its NUL, notified
            // whole; a list is replaced whole; an empty list is a found entry
            {[&] {
                 provider->setVirtualCameraList("0", {"a", "a", "", withNul});
                 const std::string kept = std::to_string(listener->lists().back()[3].size());
                 const std::string a = names("0");
                 provider->setVirtualCameraList("0", {"d"});
                 provider->setVirtualCameraList("0", {});
                 LogCapture::clear();
                 return a + " " + kept + " " + names("0");
             },
             "D getVirtualCameraList: camera: 0|I getVirtualCameraList: found virtual cameras for "
             "camera: 0 0|= [\"a\" \"a\" \"\" \"ab\"] 5 []"},
            // The largest maximum is kept and written unsigned, but logged through %d; 0 is found
            {[&] {
                 provider->setMaxVirtualCameras("0", 0);
                 const std::string zero = max("0");
                 provider->setMaxVirtualCameras("0", 4294967295u);
                 const std::string m =
                         zero + " " + prop("persist.tessaview.vc.max") + " " + max("0");
                 // A capability the enumeration does not name is kept
                 provider->setVirtualCameraCapability("0", Cap(42));
                 return m + " " + cap("0");
             },
             "I setMaxVirtualCameras: camera: 0 setting max virtual cameras to 0|L "
             "onMaxVirtualCamerasChange 0 0|I getMaxVirtualCameras: camera: 0|I "
             "getMaxVirtualCameras: Found max virtual camers for camera: 0 max: 0|I "
             "setMaxVirtualCameras: camera: 0 setting max virtual cameras to 4294967295|L "
             "onMaxVirtualCamerasChange 0 4294967295|I getMaxVirtualCameras: camera: 0|I "
             "getMaxVirtualCameras: Found max virtual camers for camera: 0 max: -1|"
             "I setVirtualCameraCapability: camera: 0 capability: 42|L "
             "onVirtualCameraCapabilityChange 0 42|D getVirtualCameraCapability: camera: 0|I "
             "getVirtualCameraCapability: found virtual camera: 0 capability: 42|= 0 4294967295 "
             "4294967295 42"},
            // Ids are whole and case-sensitive keys, one table each; the maximum property is
            // device-wide; an id with a NUL prints up to it
            {[&] {
                 provider->setVirtualCameraCapability("cam", Cap::SUPPORTED);
                 provider->setVirtualCameraList("Cam", {"x"});
                 provider->setMaxVirtualCameras("device/cam", 3);
                 provider->setMaxVirtualCameras(hidl_string("cam\0b", 5), 7);
                 const std::string answer = cap("cam") + cap("Cam") + cap("device/cam") +
                                            names("Cam") + names("cam") + max("device/cam") +
                                            max("cam") + max("Cam") +
                                            prop("persist.tessaview.vc.max");
                 LogCapture::clear();
                 return answer + " " + max(hidl_string("cam\0b", 5));
             },
             "I getMaxVirtualCameras: camera: cam|I getMaxVirtualCameras: Found max virtual camers "
             "for camera: cam max: 7|= 100[\"x\"][]3007 7"},
            // Info records are copied deep (the caller's copy changes after), notified as sent
            // and replaced whole
            {[&] {
                 hidl_vec<CameraInfo> sent = two;
                 provider->setVirtualCameraInfo(sent);
                 sent[0].text1 = "changed";
                 sent[0].entries[1].value = sent[0].block[15] = sent[1].value2 = 0;
                 const std::string deep =
                         infos(two) +
                         std::to_string(std::vector<CameraInfo>(listener->infos()[0]) == two);
                 provider->setVirtualCameraInfo({record("c", 3)});
                 const std::string one = infos({record("c", 3)});
                 provider->setVirtualCameraInfo({});
                 return deep + one + infos({});
             },
             "I setVirtualCameraInfo: info size 2|L onVirtualCameraInfos 2|I getVirtualCameraInfo: "
             "|I setVirtualCameraInfo: info size 1|L onVirtualCameraInfos 1|I "
             "getVirtualCameraInfo: "
             "|I setVirtualCameraInfo: info size 0|L onVirtualCameraInfos 0|I "
             "getVirtualCameraInfo: |= [2]1[1][0]"},
    });
}

TEST_F(VirtualCameraTest, AvailabilitySwitchDrivesTrackingOnlyWithMultistream) {
    struct Row {
        // The multistream property ("" leaves it missing), the call, the tracking mode asked
        // for (-1 none), whether it changed (announced and written), then the tracking mode,
        // talker-tracking property and enable property
        const char *flag, *id;
        int available, asks, announced;
        const char* after;
    };
    const Row rows[] = {
            // Flag missing, then 0: the tracking mode is never touched, every call notifies
            {"", "A", true, -1, false, "0 0 1"},
            {"0", "B", false, -1, false, "0 0 0"},
            // Flag on: available asks for mode 5 every time, before the property and the
            // notification
            {"1", "A", true, 5, true, "5 5 1"},
            {"1", "A", true, 5, false, "5 5 1"},
            // unavailable asks for mode 1 only when the enable property was 1 before the call
            {"1", "A", false, 1, true, "1 1 0"},
            {"1", "A", false, -1, false, "1 1 0"},
            // the enable property is device-wide: B's call sees A's value
            {"1", "A", true, 5, true, "5 5 1"},
            {"1", "B", false, 1, true, "1 1 0"},
    };
    std::vector<Step> steps;
    for (const Row& r : rows) {
        const std::string id = r.id, on = std::to_string(r.available),
                          mode = std::to_string(r.asks);
        std::string t = "I setVirtualCameraAvailability: camera: " + id +
                        " setting virtual camera availability to " + on + "|";
        if (*r.flag == '1')
            t += "I setVirtualCameraAvailability: multistream feature flag enabled!!!|";
        if (r.asks >= 0) t += "D ZorvCameraProvider setTrackingMode " + mode + " \n|";
        if (r.announced)
            t += "D Tracking changed to " + mode + " |L cameraDeviceTrackingChange " + id + " " +
                 mode + "|I setTrackingModeProperty: setting talker tracking to " + mode + "|";
        t += "I setVirtualCameraEnabledProperty: setting property vendor.tessaview.vc.enable to " +
             on + "|L onVirtualCameraAvailablityChange " + id + " " + on + "|= " + r.after;
        steps.push_back({[this, r] {
                             if (*r.flag) setProp("persist.vendor.multistream.enable", r.flag);
                             provider->setVirtualCameraAvailability(r.id, r.available);
                             return cat({num(provider->getTrackingMode("0")), " ",
                                         prop("vendor.talkertracking.flag"), " ",
                                         prop("vendor.tessaview.vc.enable")});
                         },
                         t});
    }
    // while each camera keeps its own switch
    steps.push_back({[&] {
                         return cat({on("A"), on("B")});
                     },
                     "D getVirtualCameraAvailability: camera: A|I getVirtualCameraAvailability: "
                     "Found availability: A enable: 1|D getVirtualCameraAvailability: camera: B|I "
                     "getVirtualCameraAvailability: Found availability: B enable: 0|= 10"});
    run(steps);
}
