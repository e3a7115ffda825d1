// Virtual camera registry: capability, name list and maximum per camera.
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
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::setMaxVirtualCamProperty;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

constexpr const char* kListenerTag = "listener";

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

class VirtualCameraRegistryTest : public ::testing::Test {
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
    VirtualCameraCapability capability(const hidl_string& id) {
        return provider->getVirtualCameraCapability(id);
    }
    uint32_t max(const hidl_string& id) { return provider->getMaxVirtualCameras(id); }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    sp<RecordingListener> listener = new RecordingListener();
};

}  // namespace

TEST_F(VirtualCameraRegistryTest, GettersBeforeAnySetAnswerNotFoundAndCreateNoEntry) {
    for (int round = 0; round < 2; ++round) {
        LogCapture::clear();

        // When each getter is asked about a camera never set (twice: a getter creates nothing)
        int calls = 0;
        std::vector<std::string> names = list("0", &calls);
        VirtualCameraCapability cap = capability("0");
        uint32_t maximum = max("0");

        // Then every answer and every log line is the not-found one
        EXPECT_EQ(calls, 1);
        EXPECT_TRUE(names.empty());
        EXPECT_EQ(cap, VirtualCameraCapability::NOT_SUPPORTED);
        EXPECT_EQ(maximum, 0u);
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
                  }));
    }
    EXPECT_TRUE(listener->events().empty());
}

TEST_F(VirtualCameraRegistryTest, SetListLogsEachStepThenNotifiesUnderTheLock) {
    // Given a listener that checks, during its call, whether another thread could get in
    bool lockedOut = false;
    listener->onEvent([&](const std::string& e) {
        __android_log_print(ANDROID_LOG_INFO, kListenerTag, "%s", e.c_str());
        lockedOut = !std::async(std::launch::async, [&] {
                         auto& lock = ZorvCameraProviderTestPeer::lock(*provider);
                         if (!lock.try_lock()) return false;
                         lock.unlock();
                         return true;
                     }).get();
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

TEST_F(VirtualCameraRegistryTest, ListIsReplacedWholeAndEmptyListIsStored) {
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

TEST_F(VirtualCameraRegistryTest, NameWithNulIsStoredCutButNotifiedAsReceived) {
    const hidl_string withNul("ab\0cd", 5);

    provider->setVirtualCameraList("0", {withNul, "e"});

    ASSERT_EQ(listener->lists().size(), 1u);
    ASSERT_EQ(listener->lists()[0].size(), 2u);
    EXPECT_EQ(std::string(listener->lists()[0][0]), std::string("ab\0cd", 5));
    EXPECT_EQ(list("0"), (std::vector<std::string>{"ab", "e"}));
    EXPECT_TRUE(LogCapture::contains(info("setVirtualCameraList:    virtual camera: ab")));
}

TEST_F(VirtualCameraRegistryTest, CamerasAndTablesAreIndependentButMaxPropertyIsDeviceWide) {
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
    EXPECT_EQ(prop("persist.tessaview.vc.max"), "7");
    // an id with a NUL is its own key, but prints up to the NUL
    EXPECT_TRUE(LogCapture::contains(
            info("getMaxVirtualCameras: Found max virtual camers for camera: cam max: 7")));
}

TEST_F(VirtualCameraRegistryTest, LargestAndZeroMaximumRoundTrip) {
    provider->setMaxVirtualCameras("0", 4294967295u);
    EXPECT_EQ(prop("persist.tessaview.vc.max"), "4294967295");
    EXPECT_EQ(max("0"), 4294967295u);

    provider->setMaxVirtualCameras("0", 0);
    EXPECT_EQ(prop("persist.tessaview.vc.max"), "0");
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

TEST_F(VirtualCameraRegistryTest, MaxPropertyFunctionWritesUnsignedTextSilently) {
    setMaxVirtualCamProperty(-1);
    EXPECT_EQ(prop("persist.tessaview.vc.max"), "4294967295");
    setMaxVirtualCamProperty(12);
    EXPECT_EQ(prop("persist.tessaview.vc.max"), "12");
    EXPECT_TRUE(LogCapture::lines().empty());
}

TEST_F(VirtualCameraRegistryTest, UnnamedCapabilityIsKeptAndRepeatedSetsNotifyEachTime) {
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
