// Virtual cameras: capability, name list, maximum, availability switch with its tracking rule,
// and the info records.
#include <stdint.h>

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

LogLine switchLine(const std::string& id, int available) {
    return info("setVirtualCameraAvailability: camera: " + id +
                " setting virtual camera availability to " + std::to_string(available));
}

LogLine enableLine(int available) {
    return info("setVirtualCameraEnabledProperty: setting property vendor.tessaview.vc.enable to " +
                std::to_string(available));
}

const LogLine kMultistreamLine =
        info("setVirtualCameraAvailability: multistream feature flag "
             "enabled!!!");

// The lines of a setTrackingMode call from a session in another mode, in order.
std::vector<LogLine> trackingChange(const std::string& id, int mode) {
    return {debug("ZorvCameraProvider setTrackingMode " + std::to_string(mode) + " \n"),
            debug("Tracking changed to " + std::to_string(mode) + " "),
            event("cameraDeviceTrackingChange " + id + " " + std::to_string(mode)),
            info("setTrackingModeProperty: setting talker tracking to " + std::to_string(mode))};
}

std::vector<LogLine> join(std::initializer_list<std::vector<LogLine>> parts) {
    std::vector<LogLine> all;
    for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
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
        int n = 0;
        EXPECT_TRUE(provider->getVirtualCameraList(id,
                                                   [&](const hidl_vec<hidl_string>& v) {
                                                       ++n;
                                                       for (const hidl_string& s : v)
                                                           names.push_back(s);
                                                   })
                            .isOk());
        if (calls != nullptr) *calls = n;
        return names;
    }
    // The records of getVirtualCameraInfo; `calls` counts the result callbacks.
    std::vector<CameraInfo> infos(int* calls = nullptr) {
        std::vector<CameraInfo> out;
        int n = 0;
        EXPECT_TRUE(provider->getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& v) {
                                ++n;
                                out = v;
                            })
                            .isOk());
        if (calls != nullptr) *calls = n;
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
    // Whether another thread is kept out of the provider right now.
    bool providerLocked() {
        return !std::async(std::launch::async, [&] {
                    auto& lock = ZorvCameraProviderTestPeer::lock(*provider);
                    if (!lock.try_lock()) return false;
                    lock.unlock();
                    return true;
                }).get();
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(VirtualCameraTest, GettersBeforeAnySetAnswerNotFoundAndCreateNoEntry) {
    for (int round = 0; round < 2; ++round) {
        LogCapture::clear();

        // When each getter is asked about a camera never set (twice: a getter creates nothing)
        int listCalls = 0, infoCalls = 0;
        std::vector<std::string> names = list("0", &listCalls);
        VirtualCameraCapability cap = capability("0");
        uint32_t maximum = max("0");
        std::vector<CameraInfo> records = infos(&infoCalls);
        bool on = available("0");

        // Then every answer and every log line is the not-found one
        EXPECT_EQ(listCalls, 1);
        EXPECT_TRUE(names.empty());
        EXPECT_EQ(cap, VirtualCameraCapability::NOT_SUPPORTED);
        EXPECT_EQ(maximum, 0u);
        EXPECT_EQ(infoCalls, 1);
        EXPECT_TRUE(records.empty());
        EXPECT_FALSE(on);
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

TEST_F(VirtualCameraTest, SetListLogsEachStepThenNotifiesUnderTheLock) {
    // Given a listener that checks, during its call, whether another thread could get in
    bool lockedOut = false;
    listener->onEvent([&](const std::string& e) {
        __android_log_print(ANDROID_LOG_INFO, kListenerTag, "%s", e.c_str());
        lockedOut = providerLocked();
    });

    // When a list of two names is set
    provider->setVirtualCameraList("device/0", {"front", "back"});

    // Then the enumeration comes first, the listener last, with the provider lock held
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
    EXPECT_TRUE(lockedOut);
    EXPECT_EQ(list("device/0"), (std::vector<std::string>{"front", "back"}));
}

TEST_F(VirtualCameraTest, ListIsReplacedWholeAndEmptyListIsStored) {
    // Given a camera with three names, a duplicate and an empty one among them
    provider->setVirtualCameraList("0", {"a", "a", ""});
    EXPECT_EQ(list("0"), (std::vector<std::string>{"a", "a", ""}));

    // When a shorter list and then an empty one are set
    provider->setVirtualCameraList("0", {"d"});
    std::vector<std::string> afterShorter = list("0");
    provider->setVirtualCameraList("0", {});
    LogCapture::clear();
    int calls = 0;
    std::vector<std::string> afterEmpty = list("0", &calls);

    // Then nothing of an earlier list stays, and the empty list is a found entry
    EXPECT_EQ(afterShorter, (std::vector<std::string>{"d"}));
    EXPECT_TRUE(afterEmpty.empty());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      debug("getVirtualCameraList: camera: 0"),
                      info("getVirtualCameraList: found virtual cameras for camera: 0 0"),
              }));
}

TEST_F(VirtualCameraTest, NameWithNulIsStoredCutButNotifiedAsReceived) {
    const hidl_string withNul("ab\0cd", 5);

    provider->setVirtualCameraList("0", {withNul, "e"});

    ASSERT_EQ(listener->lists().size(), 1u);
    ASSERT_EQ(listener->lists()[0].size(), 2u);
    EXPECT_EQ(std::string(listener->lists()[0][0]), std::string("ab\0cd", 5));
    EXPECT_EQ(list("0"), (std::vector<std::string>{"ab", "e"}));
    EXPECT_TRUE(LogCapture::contains(info("setVirtualCameraList:    virtual camera: ab")));
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
    provider->setMaxVirtualCameras("0", 4294967295u);
    EXPECT_EQ(prop(kMax), "4294967295");
    EXPECT_EQ(max("0"), 4294967295u);

    provider->setMaxVirtualCameras("0", 0);
    EXPECT_EQ(prop(kMax), "0");
    EXPECT_EQ(max("0"), 0u);

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

    // When every setter is called twice with the same value
    for (int i = 0; i < 2; ++i) {
        provider->setVirtualCameraCapability("0", unnamed);
        provider->setVirtualCameraList("0", {"v"});
        provider->setMaxVirtualCameras("0", 2);
    }

    // Then each call notified, and the unnamed value comes back unchanged
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{
                      "onVirtualCameraCapabilityChange 0 42", "onVirtualCameraListChange 0 1",
                      "onMaxVirtualCamerasChange 0 2", "onVirtualCameraCapabilityChange 0 42",
                      "onVirtualCameraListChange 0 1", "onMaxVirtualCamerasChange 0 2"}));
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
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{enableLine(1), enableLine(0)}));
}

TEST_F(VirtualCameraTest, MultistreamOffSwitchNeverTouchesTracking) {
    // Given the multistream flag missing, later explicitly 0
    for (const char* flag : {"", "0"}) {
        if (*flag != '\0') setProp(kMultistream, flag);
        LogCapture::clear();

        // When A is made available twice and B unavailable
        provider->setVirtualCameraAvailability("A", true);
        provider->setVirtualCameraAvailability("A", true);
        provider->setVirtualCameraAvailability("B", false);

        // Then each call stores, writes the enable property and notifies; tracking stays off
        EXPECT_EQ(LogCapture::lines(),
                  (std::vector<LogLine>{switchLine("A", 1), enableLine(1),
                                        event("onVirtualCameraAvailablityChange A 1"),
                                        switchLine("A", 1), enableLine(1),
                                        event("onVirtualCameraAvailablityChange A 1"),
                                        switchLine("B", 0), enableLine(0),
                                        event("onVirtualCameraAvailablityChange B 0")}));
        EXPECT_EQ(prop(kEnable), "0");
        EXPECT_EQ(prop(kTalkerTracking), "0");
        EXPECT_EQ(trackingMode(), 0);
        EXPECT_TRUE(available("A"));
        EXPECT_FALSE(available("B"));
        EXPECT_TRUE(LogCapture::contains(
                info("getVirtualCameraAvailability: Found availability: B enable: 0")));
    }
}

TEST_F(VirtualCameraTest, MultistreamOnAvailableSetsModeFiveEveryCallUnavailableOneOnlyOnce) {
    setProp(kMultistream, "1");

    // When A is made available
    provider->setVirtualCameraAvailability("A", true);

    // Then tracking goes to 5 and is announced before the enable property and the switch
    EXPECT_EQ(LogCapture::lines(),
              join({{switchLine("A", 1), kMultistreamLine},
                    trackingChange("A", 5),
                    {enableLine(1), event("onVirtualCameraAvailablityChange A 1")}}));
    EXPECT_EQ(trackingMode(), 5);
    EXPECT_EQ(prop(kTalkerTracking), "5");
    EXPECT_EQ(prop(kEnable), "1");

    // When A is made available again
    LogCapture::clear();
    provider->setVirtualCameraAvailability("A", true);

    // Then mode 5 is asked for again; already in force, it is not announced again
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{switchLine("A", 1), kMultistreamLine,
                                    debug("ZorvCameraProvider setTrackingMode 5 \n"), enableLine(1),
                                    event("onVirtualCameraAvailablityChange A 1")}));

    // When A is made unavailable twice in a row
    LogCapture::clear();
    provider->setVirtualCameraAvailability("A", false);
    provider->setVirtualCameraAvailability("A", false);

    // Then only the first call, which found the property at 1, sets tracking mode 1
    EXPECT_EQ(LogCapture::lines(),
              join({{switchLine("A", 0), kMultistreamLine},
                    trackingChange("A", 1),
                    {enableLine(0), event("onVirtualCameraAvailablityChange A 0")},
                    {switchLine("A", 0), kMultistreamLine, enableLine(0),
                     event("onVirtualCameraAvailablityChange A 0")}}));
    EXPECT_EQ(trackingMode(), 1);
    EXPECT_EQ(prop(kTalkerTracking), "1");
    EXPECT_EQ(prop(kEnable), "0");
}

TEST_F(VirtualCameraTest, MultistreamOnEnablePropertyIsDeviceWide) {
    // Given the flag on and camera A available
    setProp(kMultistream, "1");
    provider->setVirtualCameraAvailability("A", true);
    LogCapture::clear();

    // When another camera, B, is made unavailable
    provider->setVirtualCameraAvailability("B", false);

    // Then B's call saw A's enable value and set mode 1 for B; A is still available
    EXPECT_EQ(LogCapture::lines(),
              join({{switchLine("B", 0), kMultistreamLine},
                    trackingChange("B", 1),
                    {enableLine(0), event("onVirtualCameraAvailablityChange B 0")}}));
    EXPECT_EQ(prop(kEnable), "0");
    EXPECT_TRUE(available("A"));
    EXPECT_FALSE(available("B"));
    EXPECT_TRUE(LogCapture::contains(
            info("getVirtualCameraAvailability: Found availability: A enable: 1")));
}

TEST_F(VirtualCameraTest, InfoRecordsRoundTripMemberForMemberAndAreCopiedDeep) {
    // Given two records with every member set
    hidl_vec<CameraInfo> sent = {record("first", 7), record("second", 200)};
    const std::vector<CameraInfo> expected = {record("first", 7), record("second", 200)};

    // When they are set and the caller then changes its own copy
    provider->setVirtualCameraInfo(sent);
    sent[0].text1 = "changed";
    sent[0].entries[1].value = 0;
    sent[0].block[3] = 0;
    sent[1].value2 = 0;
    std::vector<CameraInfo> got = infos();

    // Then the listener got them as sent and the provider answers with its own copies
    ASSERT_EQ(listener->infos().size(), 1u);
    EXPECT_TRUE(std::vector<CameraInfo>(listener->infos()[0]) == expected);
    ASSERT_EQ(got.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(got[i].text1, expected[i].text1);
        EXPECT_EQ(got[i].text2, expected[i].text2);
        EXPECT_TRUE(got[i].entries == expected[i].entries);
        EXPECT_TRUE(got[i].block == expected[i].block);
        EXPECT_EQ(got[i].value1, expected[i].value1);
        EXPECT_EQ(got[i].value2, expected[i].value2);
        EXPECT_EQ(got[i].value3, expected[i].value3);
    }
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{info("setVirtualCameraInfo: info size 2"),
                                                         event("onVirtualCameraInfos 2"),
                                                         info("getVirtualCameraInfo: ")}));
}

TEST_F(VirtualCameraTest, InfoListIsReplacedWholeAndAnsweredUnderTheLock) {
    // Given two records stored
    provider->setVirtualCameraInfo({record("a", 1), record("b", 2)});

    // When one record, then none, are set
    provider->setVirtualCameraInfo({record("c", 3)});
    std::vector<CameraInfo> afterOne = infos();
    provider->setVirtualCameraInfo({});
    bool lockedOut = false;
    int calls = 0;
    provider->getVirtualCameraInfo([&](const hidl_vec<CameraInfo>& v) {
        ++calls;
        EXPECT_EQ(v.size(), 0u);
        lockedOut = providerLocked();
    });

    // Then nothing of an earlier list remains, and the answer came with the lock held
    EXPECT_TRUE(afterOne == std::vector<CameraInfo>{record("c", 3)});
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(lockedOut);
    EXPECT_EQ(listener->events(),
              (std::vector<std::string>{"onVirtualCameraInfos 2", "onVirtualCameraInfos 1",
                                        "onVirtualCameraInfos 0"}));
}
