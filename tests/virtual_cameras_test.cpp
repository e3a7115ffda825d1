// Virtual cameras: capability, name list, maximum, availability switch with its tracking rule,
// the info records, and the provider lock around each method.
#include <stdint.h>

#include <chrono>
#include <future>

#include <android/log.h>

#include "support/ProviderTest.h"

using namespace testing_support;

namespace {

constexpr const char* kListenerTag = "listener";
using Cap = VirtualCameraCapability;

CameraInfo record(const std::string& tag, uint8_t seed) {
    CameraInfo info;
    info.text1 = tag + "-one";
    info.text2 = tag + "-two";
    info.entries = {CameraInfoEntry{seed, -1, INT64_MIN}, CameraInfoEntry{2, seed, 1LL << 40}};
    for (uint8_t i = 0; i < 16; ++i) info.block[i] = static_cast<uint8_t>(seed + i);
    info.value1 = 0xFFFFFFFFu;
    info.value2 = 0x0123456789ABCDEFull + seed;
    info.value3 = seed;
    return info;
}

// One call and what it leaves: the provider's log lines ("D ", "I " or "E " and the text) and
// the listener's callbacks ("L " and the event), in order, then "= " and the answer.
struct Step {
    std::function<std::string()> call;
    std::vector<std::string> timeline;
};

class VirtualCameraTest : public ::testing::Test {
  protected:
    void SetUp() override {
        listener->onEvent([](const std::string& e) {
            __android_log_print(ANDROID_LOG_INFO, kListenerTag, "%s", e.c_str());
        });
        provider->setListener(listener);
        LogCapture::clear();
    }

    void run(const std::vector<Step>& steps) {
        for (size_t i = 0; i < steps.size(); ++i) {
            SCOPED_TRACE("step " + std::to_string(i));
            LogCapture::clear();
            const std::string answer = steps[i].call();
            std::vector<std::string> timeline;
            for (const LogLine& l : LogCapture::lines()) {
                const char* p = l.tag == kListenerTag  ? "L "
                                : l.priority == kDebug ? "D "
                                : l.priority == kInfo  ? "I "
                                                       : "E ";
                timeline.push_back(p + l.text);
            }
            timeline.push_back("= " + answer);
            EXPECT_EQ(timeline, steps[i].timeline);
        }
    }

    // getVirtualCameraList's answer, one "[...]" per result callback.
    std::string names(const hidl_string& id) {
        std::string out;
        provider->getVirtualCameraList(id, [&](const hidl_vec<hidl_string>& v) {
            out += "[";
            for (size_t i = 0; i < v.size(); ++i) out += (i ? ", " : "") + std::string(v[i]);
            out += "]";
        });
        return out;
    }
    std::string capability(const hidl_string& id) {
        return std::to_string(static_cast<int>(Cap(provider->getVirtualCameraCapability(id))));
    }
    std::string max(const hidl_string& id) {
        return std::to_string(uint32_t(provider->getMaxVirtualCameras(id)));
    }
    std::string available(const hidl_string& id) {
        return std::to_string(bool(provider->getVirtualCameraAvailability(id)));
    }
    std::string infoCount() {
        std::string out;
        provider->getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& v) {
            out += "[" + std::to_string(v.size()) + "]";
        });
        return out;
    }
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(VirtualCameraTest, TablesAnswerLogAndNotify) {
    const hidl_string withNul("ab\0cd", 5);
    const std::vector<Step> notFound = {
            {[&] { return names("0"); },
             {"D getVirtualCameraList: camera: 0",
              "I getVirtualCameraList: did not find virtual cameras for camera: 0 returning "
              "INTERNAL_ERROR",
              "= []"}},
            {[&] { return capability("0"); },
             {"D getVirtualCameraCapability: camera: 0",
              "I getVirtualCameraCapability: did not find virtual camera: 0 returning not "
              "supported",
              "= 0"}},
            {[&] { return max("0"); },
             {"I getMaxVirtualCameras: camera: 0",
              "I getMaxVirtualCameras: did not find max virtual camers for camera: 0 returning 0",
              "= 0"}},
            {[&] { return infoCount(); }, {"I getVirtualCameraInfo: ", "= [0]"}},
            {[&] { return available("0"); },
             {"D getVirtualCameraAvailability: camera: 0",
              "I getVirtualCameraAvailability: did not find availability for camera: 0 returning "
              "false",
              "= 0"}},
    };
    // Before any set, and again: a getter creates no entry
    run(notFound);
    run(notFound);
    run({
            {[&] {
                 provider->setVirtualCameraList("device/0", {"front", "back"});
                 return names("device/0");
             },
             {"I setVirtualCameraList: camera: device/0 adding 2 virtual cameras ",
              "I setVirtualCameraList:    virtual camera: front",
              "I setVirtualCameraList:    virtual camera: back",
              "I setVirtualCameraList: camera: device/0 done with enumeration ",
              "I setVirtualCameraList: camera: device/0 clearing the map ",
              "I setVirtualCameraList: camera: device/0 transformed the virtual camera names "
              "size: 2",
              "I setVirtualCameraList: camera: device/0 now has 2 virtual cameras",
              "I setVirtualCameraList: Calling the listeners",
              "L onVirtualCameraListChange device/0 2", "D getVirtualCameraList: camera: device/0",
              "I getVirtualCameraList: found virtual cameras for camera: device/0 2",
              "= [front, back]"}},
            // Duplicate and empty names are kept; a name is stored up to its NUL, notified whole
            {[&] {
                 provider->setVirtualCameraList("0", {"a", "a", "", withNul});
                 LogCapture::clear();
                 return names("0") + " " + std::to_string(listener->lists().back()[3].size());
             },
             {"D getVirtualCameraList: camera: 0",
              "I getVirtualCameraList: found virtual cameras for camera: 0 4", "= [a, a, , ab] 5"}},
            // A list is replaced whole; an empty list is a found entry
            {[&] {
                 provider->setVirtualCameraList("0", {"d"});
                 provider->setVirtualCameraList("0", {});
                 LogCapture::clear();
                 return names("0");
             },
             {"D getVirtualCameraList: camera: 0",
              "I getVirtualCameraList: found virtual cameras for camera: 0 0", "= []"}},
            // The largest maximum is kept and written unsigned, but logged through %d
            {[&] {
                 provider->setMaxVirtualCameras("0", 4294967295u);
                 return prop("persist.tessaview.vc.max") + " " + max("0");
             },
             {"I setMaxVirtualCameras: camera: 0 setting max virtual cameras to 4294967295",
              "L onMaxVirtualCamerasChange 0 4294967295", "I getMaxVirtualCameras: camera: 0",
              "I getMaxVirtualCameras: Found max virtual camers for camera: 0 max: -1",
              "= 4294967295 4294967295"}},
            {[&] {
                 provider->setMaxVirtualCameras("0", 0);
                 return prop("persist.tessaview.vc.max") + " " + max("0");
             },
             {"I setMaxVirtualCameras: camera: 0 setting max virtual cameras to 0",
              "L onMaxVirtualCamerasChange 0 0", "I getMaxVirtualCameras: camera: 0",
              "I getMaxVirtualCameras: Found max virtual camers for camera: 0 max: 0", "= 0 0"}},
            // A capability the enumeration does not name is kept; setting the same notifies again
            {[&] {
                 provider->setVirtualCameraCapability("0", Cap(42));
                 provider->setVirtualCameraCapability("0", Cap(42));
                 return capability("0");
             },
             {"I setVirtualCameraCapability: camera: 0 capability: 42",
              "L onVirtualCameraCapabilityChange 0 42",
              "I setVirtualCameraCapability: camera: 0 capability: 42",
              "L onVirtualCameraCapabilityChange 0 42", "D getVirtualCameraCapability: camera: 0",
              "I getVirtualCameraCapability: found virtual camera: 0 capability: 42", "= 42"}},
            // Ids are whole and case-sensitive keys, one table each; the maximum property is
            // device-wide; an id with a NUL prints up to it
            {[&] {
                 provider->setVirtualCameraCapability("cam", Cap::SUPPORTED);
                 provider->setVirtualCameraList("Cam", {"x"});
                 provider->setMaxVirtualCameras("device/cam", 3);
                 provider->setMaxVirtualCameras(hidl_string("cam\0b", 5), 7);
                 const std::string answer = capability("cam") + capability("Cam") +
                                            capability("device/cam") + names("Cam") + names("cam") +
                                            max("device/cam") + max("cam") + max("Cam") +
                                            prop("persist.tessaview.vc.max");
                 LogCapture::clear();
                 return answer + " " + max(hidl_string("cam\0b", 5));
             },
             {"I getMaxVirtualCameras: camera: cam",
              "I getMaxVirtualCameras: Found max virtual camers for camera: cam max: 7",
              "= 100[x][]3007 7"}},
    });
}

TEST_F(VirtualCameraTest, AvailabilitySwitchDrivesTrackingOnlyWithMultistream) {
    struct Row {
        const char* flag;  // the multistream property; "" leaves it missing
        const char* id;
        bool available;
        int asks;           // the tracking mode asked for, -1 for none
        bool announced;     // the mode changed, so it is announced and written
        const char* after;  // tracking mode, talker-tracking property, enable property
    };
    const Row rows[] = {
            // Flag missing, then 0: the tracking mode is never touched, every call notifies
            {"", "A", true, -1, false, "0 0 1"},
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
        std::vector<std::string> t = {"I setVirtualCameraAvailability: camera: " + id +
                                      " setting virtual camera availability to " + on};
        if (r.flag == std::string("1")) {
            t.push_back("I setVirtualCameraAvailability: multistream feature flag enabled!!!");
        }
        if (r.asks >= 0) t.push_back("D ZorvCameraProvider setTrackingMode " + mode + " \n");
        if (r.announced) {
            t.insert(t.end(), {"D Tracking changed to " + mode + " ",
                               "L cameraDeviceTrackingChange " + id + " " + mode,
                               "I setTrackingModeProperty: setting talker tracking to " + mode});
        }
        t.insert(t.end(), {"I setVirtualCameraEnabledProperty: setting property "
                           "vendor.tessaview.vc.enable to " +
                                   on,
                           "L onVirtualCameraAvailablityChange " + id + " " + on,
                           std::string("= ") + r.after});
        steps.push_back({[this, r] {
                             if (*r.flag != '\0')
                                 setProp("persist.vendor.multistream.enable", r.flag);
                             provider->setVirtualCameraAvailability(r.id, r.available);
                             return std::to_string(static_cast<int>(
                                            TrackingMode(provider->getTrackingMode("0")))) +
                                    " " + prop("vendor.talkertracking.flag") + " " +
                                    prop("vendor.tessaview.vc.enable");
                         },
                         t});
    }
    // while each camera keeps its own switch
    steps.push_back({[&] {
                         const std::string a = available("A");
                         return a + available("B");
                     },
                     {"D getVirtualCameraAvailability: camera: A",
                      "I getVirtualCameraAvailability: Found availability: A enable: 1",
                      "D getVirtualCameraAvailability: camera: B",
                      "I getVirtualCameraAvailability: Found availability: B enable: 0", "= 10"}});
    run(steps);
}

TEST_F(VirtualCameraTest, InfoRecordsAreCopiedDeepReplacedWholeAndNotifiedAsSent) {
    // Given two records with every member set, stored, and the caller's copy changed after
    const std::vector<CameraInfo> two = {record("first", 7), record("second", 200)};
    hidl_vec<CameraInfo> sent = two;
    provider->setVirtualCameraInfo(sent);
    sent[0].text1 = "changed";
    sent[0].entries[1].value = 0;
    sent[0].block[3] = 0;
    sent[1].value2 = 0;

    // Then the listener got them as sent and the provider answers with its own copies, until
    // the next set replaces them whole
    std::vector<std::vector<CameraInfo>> answers;
    auto answer = [&] {
        provider->getVirtualCameraInfo(
                [&](const hidl_vec<CameraInfo>& v) { answers.push_back(v); });
    };
    answer();
    provider->setVirtualCameraInfo({record("c", 3)});
    answer();
    provider->setVirtualCameraInfo({});
    answer();
    EXPECT_TRUE(answers == (std::vector<std::vector<CameraInfo>>{two, {record("c", 3)}, {}}));
    EXPECT_TRUE(std::vector<CameraInfo>(listener->infos()[0]) == two);
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{"onVirtualCameraInfos 2", "onVirtualCameraInfos 1",
                                        "onVirtualCameraInfos 0"}));
    EXPECT_EQ(providerLines(),
              (std::vector<LogLine>{providerLine(kInfo, "setVirtualCameraInfo: info size 2"),
                                    providerLine(kInfo, "getVirtualCameraInfo: "),
                                    providerLine(kInfo, "setVirtualCameraInfo: info size 1"),
                                    providerLine(kInfo, "getVirtualCameraInfo: "),
                                    providerLine(kInfo, "setVirtualCameraInfo: info size 0"),
                                    providerLine(kInfo, "getVirtualCameraInfo: ")}));
}

// Which locks each method takes is in the lock table; the result callbacks run under it.
TEST_F(VirtualCameraTest, ResultCallbacksRunUnderTheProviderLock) {
    auto& lock = Peer::lock(*provider);
    std::string free;
    auto probe = [&](auto&&...) {
        free += std::async(std::launch::async, [&] {
                    if (!lock.try_lock()) return "0";
                    lock.unlock();
                    return "1";
                }).get();
    };
    provider->getVirtualCameraList("0", probe);
    provider->getVirtualCameraInfo(probe);
    probe();
    EXPECT_EQ(free, "001");
}
