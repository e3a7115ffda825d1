// Virtual cameras: capability, name list, maximum, availability switch with its tracking rule,
// the info records, and the provider lock around each method.
#include <stdint.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include <android/log.h>
#include <gtest/gtest.h>

#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"
#include "support/ProviderPeer.h"
#include "support/RecordingListener.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraInfoEntry;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::setMaxVirtualCamProperty;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::
        setVirtualCameraEnabledProperty;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

constexpr const char* kListenerTag = "listener";
constexpr const char* kMultistream = "persist.vendor.multistream.enable";
constexpr const char* kEnable = "vendor.tessaview.vc.enable";
constexpr const char* kTalkerTracking = "vendor.talkertracking.flag";
constexpr const char* kMax = "persist.tessaview.vc.max";

// A listener event placed in the log, so one timeline shows log lines and callbacks in order.
LogLine event(const std::string& text) {
    return {kListenerTag, kInfo, text};
}
LogLine info(const std::string& text) {
    return providerLine(kInfo, text);
}
LogLine debug(const std::string& text) {
    return providerLine(kDebug, text);
}

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

bool same(const CameraInfo& a, const CameraInfo& b) {
    return a.text1 == b.text1 && a.text2 == b.text2 && a.entries == b.entries &&
           a.block == b.block && a.value1 == b.value1 && a.value2 == b.value2 &&
           a.value3 == b.value3;
}

class VirtualCameraTest : public ::testing::Test {
  protected:
    void SetUp() override {
        listener->onEvent([](const std::string& e) {
            __android_log_print(ANDROID_LOG_INFO, kListenerTag, "%s", e.c_str());
        });
        provider->setListener(listener);
        LogCapture::clear();
    }

    // The names of getVirtualCameraList; `calls` counts the result callbacks.
    std::vector<std::string> list(const hidl_string& id, int* calls = nullptr) {
        std::vector<std::string> names;
        EXPECT_TRUE(provider->getVirtualCameraList(id,
                                                   [&](const hidl_vec<hidl_string>& v) {
                                                       if (calls != nullptr) ++*calls;
                                                       for (const hidl_string& s : v)
                                                           names.push_back(s);
                                                   })
                            .isOk());
        return names;
    }
    std::vector<CameraInfo> infos(int* calls = nullptr) {
        std::vector<CameraInfo> out;
        EXPECT_TRUE(provider->getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& v) {
                                if (calls != nullptr) ++*calls;
                                out = v;
                            })
                            .isOk());
        return out;
    }
    VirtualCameraCapability capability(const hidl_string& id) {
        return provider->getVirtualCameraCapability(id);
    }
    uint32_t max(const hidl_string& id) { return provider->getMaxVirtualCameras(id); }
    bool available(const hidl_string& id) { return provider->getVirtualCameraAvailability(id); }
    int32_t trackingMode() {
        return static_cast<int32_t>(static_cast<TrackingMode>(provider->getTrackingMode("0")));
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(VirtualCameraTest, GettersBeforeAnySetAnswerNotFoundAndCreateNoEntry) {
    // Asked twice about a camera never set: a getter creates nothing
    for (int round = 0; round < 2; ++round) {
        LogCapture::clear();
        int listCalls = 0, infoCalls = 0;
        EXPECT_TRUE(list("0", &listCalls).empty());
        EXPECT_EQ(capability("0"), VirtualCameraCapability::NOT_SUPPORTED);
        EXPECT_EQ(max("0"), 0u);
        EXPECT_TRUE(infos(&infoCalls).empty());
        EXPECT_FALSE(available("0"));
        EXPECT_EQ(listCalls, 1);
        EXPECT_EQ(infoCalls, 1);
        EXPECT_EQ(LogCapture::lines(),
                  (std::vector<LogLine>{
                          debug("getVirtualCameraList: camera: 0"),
                          info("getVirtualCameraList: did not find virtual cameras for camera: 0 "
                               "returning INTERNAL_ERROR"),
                          debug("getVirtualCameraCapability: camera: 0"),
                          info("getVirtualCameraCapability: did not find virtual camera: 0 "
                               "returning not supported"),
                          info("getMaxVirtualCameras: camera: 0"),
                          info("getMaxVirtualCameras: did not find max virtual camers for camera: "
                               "0 returning 0"),
                          info("getVirtualCameraInfo: "),
                          debug("getVirtualCameraAvailability: camera: 0"),
                          info("getVirtualCameraAvailability: did not find availability for "
                               "camera: 0 returning false"),
                  }));
    }
    EXPECT_TRUE(listener->events().empty());
}

TEST_F(VirtualCameraTest, SetListLogsEachStepThenNotifies) {
    provider->setVirtualCameraList("device/0", {"front", "back"});

    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      info("setVirtualCameraList: camera: device/0 adding 2 virtual cameras "),
                      info("setVirtualCameraList:    virtual camera: front"),
                      info("setVirtualCameraList:    virtual camera: back"),
                      info("setVirtualCameraList: camera: device/0 done with enumeration "),
                      info("setVirtualCameraList: camera: device/0 clearing the map "),
                      info("setVirtualCameraList: camera: device/0 transformed the virtual "
                           "camera names size: 2"),
                      info("setVirtualCameraList: camera: device/0 now has 2 virtual cameras"),
                      info("setVirtualCameraList: Calling the listeners"),
                      event("onVirtualCameraListChange device/0 2"),
              }));
    EXPECT_EQ(list("device/0"), (std::vector<std::string>{"front", "back"}));
}

TEST_F(VirtualCameraTest, ListIsReplacedWholeNamesAreCutAtNulAndEmptyListIsStored) {
    // Duplicates and empty names are kept; a name is stored up to its NUL but notified whole
    const hidl_string withNul("ab\0cd", 5);
    provider->setVirtualCameraList("0", {"a", "a", "", withNul});
    EXPECT_EQ(list("0"), (std::vector<std::string>{"a", "a", "", "ab"}));
    ASSERT_EQ(listener->lists().size(), 1u);
    EXPECT_EQ(std::string(listener->lists()[0][3]), std::string("ab\0cd", 5));
    EXPECT_TRUE(LogCapture::contains(info("setVirtualCameraList:    virtual camera: ab")));

    // A shorter list leaves nothing of the longer one; an empty list is a found entry
    provider->setVirtualCameraList("0", {"d"});
    EXPECT_EQ(list("0"), (std::vector<std::string>{"d"}));
    provider->setVirtualCameraList("0", {});
    LogCapture::clear();
    int calls = 0;
    EXPECT_TRUE(list("0", &calls).empty());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      debug("getVirtualCameraList: camera: 0"),
                      info("getVirtualCameraList: found virtual cameras for camera: 0 0"),
              }));
}

TEST_F(VirtualCameraTest, CamerasAndTablesAreIndependentButMaxPropertyIsDeviceWide) {
    // Given facts set for differently spelled ids, each in one table only
    provider->setVirtualCameraCapability("cam", VirtualCameraCapability::SUPPORTED);
    provider->setVirtualCameraList("Cam", {"x"});
    provider->setMaxVirtualCameras("device/cam", 3);
    provider->setMaxVirtualCameras(hidl_string("cam\0b", 5), 7);

    // Then each id is its own camera in each table
    EXPECT_EQ(capability("cam"), VirtualCameraCapability::SUPPORTED);
    EXPECT_EQ(capability("Cam"), VirtualCameraCapability::NOT_SUPPORTED);
    EXPECT_EQ(capability("device/cam"), VirtualCameraCapability::NOT_SUPPORTED);
    EXPECT_EQ(list("Cam"), (std::vector<std::string>{"x"}));
    EXPECT_TRUE(list("cam").empty());
    EXPECT_EQ(max("device/cam"), 3u);
    EXPECT_EQ(max(hidl_string("cam\0b", 5)), 7u);
    EXPECT_EQ(max("cam"), 0u);
    EXPECT_EQ(max("Cam"), 0u);
    // and the property holds the last maximum, whatever its camera
    EXPECT_EQ(prop(kMax), "7");
    // an id with a NUL is its own key, but prints up to the NUL
    EXPECT_TRUE(LogCapture::contains(
            info("getMaxVirtualCameras: Found max virtual camers for camera: cam max: 7")));
}

TEST_F(VirtualCameraTest, LargestAndZeroMaximumRoundTrip) {
    for (uint32_t value : {4294967295u, 0u}) {
        provider->setMaxVirtualCameras("0", value);
        EXPECT_EQ(prop(kMax), std::to_string(value));
        EXPECT_EQ(max("0"), value);
    }
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      info("setMaxVirtualCameras: camera: 0 setting max virtual cameras to "
                           "4294967295"),
                      event("onMaxVirtualCamerasChange 0 4294967295"),
                      info("getMaxVirtualCameras: camera: 0"),
                      info("getMaxVirtualCameras: Found max virtual camers for camera: 0 max: -1"),
                      info("setMaxVirtualCameras: camera: 0 setting max virtual cameras to 0"),
                      event("onMaxVirtualCamerasChange 0 0"),
                      info("getMaxVirtualCameras: camera: 0"),
                      info("getMaxVirtualCameras: Found max virtual camers for camera: 0 max: 0"),
              }));
}

TEST_F(VirtualCameraTest, UnnamedCapabilityIsKeptAndRepeatedSetsNotifyEachTime) {
    const auto unnamed = static_cast<VirtualCameraCapability>(42);
    for (int i = 0; i < 2; ++i) {
        provider->setVirtualCameraCapability("0", unnamed);
        provider->setVirtualCameraList("0", {"v"});
        provider->setMaxVirtualCameras("0", 2);
        provider->setVirtualCameraAvailability("0", true);
    }
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{
                      "onVirtualCameraCapabilityChange 0 42", "onVirtualCameraListChange 0 1",
                      "onMaxVirtualCamerasChange 0 2", "onVirtualCameraAvailablityChange 0 1",
                      "onVirtualCameraCapabilityChange 0 42", "onVirtualCameraListChange 0 1",
                      "onMaxVirtualCamerasChange 0 2", "onVirtualCameraAvailablityChange 0 1"}));
    EXPECT_EQ(LogCapture::count(info("setVirtualCameraCapability: camera: 0 capability: 42")), 2);
    LogCapture::clear();
    EXPECT_EQ(capability("0"), unnamed);
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      debug("getVirtualCameraCapability: camera: 0"),
                      info("getVirtualCameraCapability: found virtual camera: 0 capability: 42"),
              }));
}

TEST_F(VirtualCameraTest, PropertyFunctionsWriteUnsignedMaximumSilentlyAndEnableAsOneOrZero) {
    setMaxVirtualCamProperty(-1);
    EXPECT_EQ(prop(kMax), "4294967295");
    setMaxVirtualCamProperty(12);
    EXPECT_EQ(prop(kMax), "12");
    setVirtualCameraEnabledProperty(true);
    EXPECT_EQ(prop(kEnable), "1");
    setVirtualCameraEnabledProperty(false);
    EXPECT_EQ(prop(kEnable), "0");
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{
                                           info("setVirtualCameraEnabledProperty: setting property "
                                                "vendor.tessaview.vc.enable to 1"),
                                           info("setVirtualCameraEnabledProperty: setting property "
                                                "vendor.tessaview.vc.enable to 0"),
                                   }));
}

TEST_F(VirtualCameraTest, AvailabilitySwitchDrivesTrackingOnlyWithMultistream) {
    // Each step: the multistream flag ("" leaves it missing), the call, the tracking mode it
    // asks for (-1: none; 0 asked for again while in force is only logged), the mode after.
    struct Step {
        const char* flag;
        const char* id;
        bool available;
        int32_t asks;
        bool announced;
        int32_t modeAfter;
    };
    const Step steps[] = {
            // Flag missing, then 0: the tracking mode is never touched
            {"", "A", true, -1, false, 0},
            {"", "A", true, -1, false, 0},
            {"", "B", false, -1, false, 0},
            {"0", "A", true, -1, false, 0},
            {"0", "B", false, -1, false, 0},
            // Flag on: available asks for 5 every time, announced only when it changes
            {"1", "A", true, 5, true, 5},
            {"1", "A", true, 5, false, 5},
            // unavailable asks for 1 only when the enable property was 1 before the call
            {"1", "A", false, 1, true, 1},
            {"1", "A", false, -1, false, 1},
            // the enable property is device-wide: B's call sees A's value
            {"1", "A", true, 5, true, 5},
            {"1", "B", false, 1, true, 1},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(std::string(step.flag) + " " + step.id + " " + std::to_string(step.available));
        if (*step.flag != '\0') setProp(kMultistream, step.flag);
        LogCapture::clear();

        provider->setVirtualCameraAvailability(step.id, step.available);

        const std::string id = step.id;
        const std::string on = std::to_string(step.available);
        std::vector<LogLine> lines = {info("setVirtualCameraAvailability: camera: " + id +
                                           " setting virtual camera availability to " + on)};
        if (std::string(step.flag) == "1") {
            lines.push_back(
                    info("setVirtualCameraAvailability: multistream feature flag "
                         "enabled!!!"));
        }
        if (step.asks >= 0) {
            const std::string mode = std::to_string(step.asks);
            lines.push_back(debug("ZorvCameraProvider setTrackingMode " + mode + " \n"));
            if (step.announced) {
                lines.push_back(debug("Tracking changed to " + mode + " "));
                lines.push_back(event("cameraDeviceTrackingChange " + id + " " + mode));
                lines.push_back(
                        info("setTrackingModeProperty: setting talker tracking to " + mode));
            }
        }
        lines.push_back(
                info("setVirtualCameraEnabledProperty: setting property "
                     "vendor.tessaview.vc.enable to " +
                     on));
        lines.push_back(event("onVirtualCameraAvailablityChange " + id + " " + on));
        EXPECT_EQ(LogCapture::lines(), lines);
        EXPECT_EQ(trackingMode(), step.modeAfter);
        EXPECT_EQ(prop(kTalkerTracking), std::to_string(step.modeAfter));
        EXPECT_EQ(prop(kEnable), on);
    }
    // Each camera keeps its own switch, whatever the device-wide property says
    LogCapture::clear();
    EXPECT_TRUE(available("A"));
    EXPECT_FALSE(available("B"));
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      debug("getVirtualCameraAvailability: camera: A"),
                      info("getVirtualCameraAvailability: Found availability: A enable: 1"),
                      debug("getVirtualCameraAvailability: camera: B"),
                      info("getVirtualCameraAvailability: Found availability: B enable: 0"),
              }));
}

TEST_F(VirtualCameraTest, InfoRecordsAreCopiedDeepReplacedWholeAndNotifiedAsSent) {
    // Given two records with every member set, stored, and the caller's copy changed after
    hidl_vec<CameraInfo> sent = {record("first", 7), record("second", 200)};
    provider->setVirtualCameraInfo(sent);
    sent[0].text1 = "changed";
    sent[0].entries[1].value = 0;
    sent[0].block[3] = 0;
    sent[1].value2 = 0;

    // Then the listener got them as sent and the provider answers with its own copies
    const CameraInfo expected[] = {record("first", 7), record("second", 200)};
    std::vector<CameraInfo> got = infos();
    ASSERT_EQ(got.size(), 2u);
    ASSERT_EQ(listener->infos().size(), 1u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_TRUE(same(got[i], expected[i])) << i;
        EXPECT_TRUE(same(listener->infos()[0][i], expected[i])) << i;
    }
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{info("setVirtualCameraInfo: info size 2"),
                                                         event("onVirtualCameraInfos 2"),
                                                         info("getVirtualCameraInfo: ")}));

    // When one record, then none, are set, nothing of an earlier list remains
    provider->setVirtualCameraInfo({record("c", 3)});
    got = infos();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_TRUE(same(got[0], record("c", 3)));
    provider->setVirtualCameraInfo({});
    EXPECT_TRUE(infos().empty());
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{"onVirtualCameraInfos 2", "onVirtualCameraInfos 1",
                                        "onVirtualCameraInfos 0"}));
}

TEST_F(VirtualCameraTest, EveryMethodWaitsForTheProviderLockAndAnswersUnderIt) {
    auto& lock = ZorvCameraProviderTestPeer::lock(*provider);
    // Everything the methods change, as seen from the thread holding the lock.
    auto state = [&] {
        return std::to_string(static_cast<int>(capability("0"))) + " " +
               std::to_string(list("0").size()) + " " + std::to_string(max("0")) + " " +
               std::to_string(available("0")) + " " + std::to_string(infos().size()) + " " +
               prop(kMax) + " " + prop(kEnable) + " " + std::to_string(listener->events().size());
    };
    // Whether another thread could take the lock right now.
    auto lockFree = [&] {
        return std::async(std::launch::async,
                          [&] {
                              if (!lock.try_lock()) return false;
                              lock.unlock();
                              return true;
                          })
                .get();
    };
    bool freeDuringAnswer = false;
    const std::pair<const char*, std::function<void()>> calls[] = {
            {"setVirtualCameraCapability",
             [&] {
                 provider->setVirtualCameraCapability("0", VirtualCameraCapability::SUPPORTED);
             }},
            {"getVirtualCameraCapability", [&] { capability("0"); }},
            {"setVirtualCameraList", [&] { provider->setVirtualCameraList("0", {"a"}); }},
            {"getVirtualCameraList",
             [&] {
                 provider->getVirtualCameraList("0", [&](auto&) { freeDuringAnswer = lockFree(); });
             }},
            {"setMaxVirtualCameras", [&] { provider->setMaxVirtualCameras("0", 3); }},
            {"getMaxVirtualCameras", [&] { max("0"); }},
            {"setVirtualCameraAvailability",
             [&] { provider->setVirtualCameraAvailability("0", true); }},
            {"getVirtualCameraAvailability", [&] { available("0"); }},
            {"setVirtualCameraInfo", [&] { provider->setVirtualCameraInfo({record("a", 1)}); }},
            {"getVirtualCameraInfo",
             [&] {
                 provider->getVirtualCameraInfo([&](auto&) { freeDuringAnswer = lockFree(); });
             }},
    };
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        freeDuringAnswer = false;
        lock.lock();
        const std::string before = state();
        std::future<void> running = std::async(std::launch::async, call);
        EXPECT_EQ(running.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        EXPECT_EQ(state(), before);
        lock.unlock();
        running.get();
        // The result callbacks run with the lock still held
        EXPECT_FALSE(freeDuringAnswer);
    }
}
