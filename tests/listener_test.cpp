// Listener registry and the fan-out rule shared by every notification.
#include <gtest/gtest.h>

#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/ProviderPeer.h"
#include "support/RecordingListener.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::VirtualCameraCapability;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

std::string address(const sp<RecordingListener>& l) {
    char text[16];
    snprintf(text, sizeof(text), "0x%08x",
             static_cast<uint32_t>(reinterpret_cast<uintptr_t>(
                     static_cast<IZorvCameraProviderCallback*>(l.get()))));
    return text;
}

class ListenerTest : public ::testing::Test {
  protected:
    void SetUp() override { LogCapture::clear(); }
    void notify() {
        ZorvCameraProviderTestPeer::notify(*provider, "onVirtualCameraCapabilityChange",
                                           [](const sp<IZorvCameraProviderCallback>& l) {
                                               return l->onVirtualCameraCapabilityChange(
                                                       "0", VirtualCameraCapability::SUPPORTED);
                                           });
    }
    std::vector<LogLine> errorLines() {
        std::vector<LogLine> out;
        for (const LogLine& l : LogCapture::linesWithTag(kProviderTag)) {
            if (l.priority == kError) out.push_back(l);
        }
        return out;
    }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
};

}  // namespace

TEST_F(ListenerTest, ListenerRegisteredTwiceIsCalledTwiceAndClearedWithOneCall) {
    sp<RecordingListener> l = new RecordingListener();

    provider->setListener(l);
    provider->setListener(l);
    notify();
    EXPECT_EQ(l->events().size(), 2u);

    LogCapture::clear();
    provider->clearListener(l);
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 0u);
    EXPECT_EQ(LogCapture::lines(), (std::vector<LogLine>{
                                           providerLine(kDebug, "Removing listener " + address(l)),
                                           providerLine(kDebug, "Removing listener " + address(l)),
                                   }));
}

TEST_F(ListenerTest, RegistrationIsLoggedAndNullOrUnknownListenersChangeNothing) {
    sp<RecordingListener> known = new RecordingListener();
    sp<RecordingListener> unknown = new RecordingListener();

    provider->setListener(known);
    provider->setListener(nullptr);
    provider->clearListener(unknown);
    provider->clearListener(nullptr);

    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 1u);
    EXPECT_EQ(LogCapture::lines(),
              (std::vector<LogLine>{
                      providerLine(kDebug, "Adding listener " + address(known)),
                      providerLine(kError, "setListener: ignoring null listener"),
              }));
}

TEST_F(ListenerTest, DeadListenerIsDroppedOthersStillNotifiedInOrder) {
    // Given three listeners of which the second has died
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
    sp<RecordingListener> third = new RecordingListener("third");
    provider->setListener(first);
    provider->setListener(second);
    provider->setListener(third);
    second->failWith(::android::DEAD_OBJECT);
    clearAllListenerEvents();

    // When two notifications go out
    notify();
    notify();

    // Then the dead one was called once, logged and dropped; the others got both, in order
    const std::string event = "onVirtualCameraCapabilityChange 0 1";
    EXPECT_EQ(allListenerEvents(),
              (std::vector<std::string>{"first: " + event, "second: " + event, "third: " + event,
                                        "first: " + event, "third: " + event}));
    EXPECT_EQ(errorLines(), (std::vector<LogLine>{providerLine(
                                    kError,
                                    "Error from onVirtualCameraCapabilityChange callback: "
                                    "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '")}));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 2u);
}

TEST_F(ListenerTest, ListenerFailingOtherwiseIsLoggedAndKept) {
    sp<RecordingListener> flaky = new RecordingListener("flaky");
    provider->setListener(flaky);
    flaky->failWith(::android::FAILED_TRANSACTION);

    notify();
    notify();

    EXPECT_EQ(flaky->events().size(), 2u);
    EXPECT_EQ(errorLines().size(), 2u);
    EXPECT_EQ(errorLines()[0],
              providerLine(kError,
                           "Error from onVirtualCameraCapabilityChange callback: "
                           "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '"));
    EXPECT_EQ(ZorvCameraProviderTestPeer::listenerCount(*provider), 1u);
}

TEST_F(ListenerTest, ListenerMayChangeRegistrationFromItsCallback) {
    // Given a listener that removes itself and adds another from inside its callback
    sp<RecordingListener> self = new RecordingListener("self");
    sp<RecordingListener> late = new RecordingListener("late");
    self->onEvent([&](const std::string&) {
        provider->clearListener(self);
        provider->setListener(late);
    });
    provider->setListener(self);
    clearAllListenerEvents();

    // When two notifications go out
    notify();
    notify();

    // Then the change takes effect from the next notification on
    const std::string event = "onVirtualCameraCapabilityChange 0 1";
    EXPECT_EQ(allListenerEvents(), (std::vector<std::string>{"self: " + event, "late: " + event}));
}
