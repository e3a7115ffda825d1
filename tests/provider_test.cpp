// The service entry, construction, the talker-tracking property and the base provider methods.
#include <dlfcn.h>

#include "support/ProviderTest.h"

using namespace testing_support;

TEST(ProviderEntryTest, FactoryLoadedByNameReturnsNewProviderForAnyName) {
    // Given the library loaded the way the service host loads it
    void* lib = dlopen(ZORV_IMPL_PATH, RTLD_NOW);
    ASSERT_NE(lib, nullptr) << dlerror();
    using Fetch = IZorvCameraProvider* (*)(const char*);
    auto fetch = reinterpret_cast<Fetch>(dlsym(lib, "HIDL_FETCH_IZorvCameraProvider"));
    ASSERT_NE(fetch, nullptr) << dlerror();

    // Then each call, under any name, gives a new provider
    sp<IZorvCameraProvider> previous;
    for (const char* name : {"default", "", "anything else"}) {
        sp<IZorvCameraProvider> provider = fetch(name);
        ASSERT_NE(provider, nullptr);
        EXPECT_NE(provider, previous);
        hidl_string descriptor;
        provider->interfaceDescriptor([&](const hidl_string& d) { descriptor = d; });
        EXPECT_EQ(descriptor, "vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProvider");
        previous = provider;
    }
}

TEST(ProviderEntryTest, TalkerTrackingPropertyIsZeroAtStartAndTakesOnlyZeroToFive) {
    // The first provider of a process (and with it the session) writes the fresh mode, 0
    setProp("vendor.talkertracking.flag", "4");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "0");
    EXPECT_EQ(providerLines(),
              (std::vector<LogLine>{
                      providerLine(kDebug, "PTZ Scene reset 0 0 1280 720"),
                      providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 0"),
              }));

    LogCapture::clear();
    for (int mode : {6, -1}) provider->setTrackingModeProperty(static_cast<TrackingMode>(mode));
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "0");
    provider->setTrackingModeProperty(TrackingMode::MODE_5);
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "5");
    EXPECT_EQ(providerLines(),
              (std::vector<LogLine>{
                      providerLine(kError,
                                   "setTrackingModeProperty: ignoring invalid trackingMode 6"),
                      providerLine(kError,
                                   "setTrackingModeProperty: ignoring invalid trackingMode -1"),
                      providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 5"),
              }));
}

TEST(ProviderEntryTest, BaseMethodsOfferNoCameraDevicesAndAnswerOnce) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    EXPECT_EQ(Status(provider->setCallback(nullptr)), Status::OK);

    // Each result callback, once: its status and whether it carried anything
    std::vector<std::string> answers;
    auto answer = [&](Status s, bool something) {
        answers.push_back(std::to_string(static_cast<int>(s)) + (something ? " data" : " none"));
    };
    provider->getVendorTags([&](Status s, const auto& v) { answer(s, v.size() > 0); });
    provider->getCameraIdList([&](Status s, const auto& v) { answer(s, v.size() > 0); });
    provider->isSetTorchModeSupported([&](Status s, bool v) { answer(s, v); });
    provider->getCameraDeviceInterface_V1_x(
            "device@1.0/internal/0", [&](Status s, const auto& d) { answer(s, d != nullptr); });
    provider->getCameraDeviceInterface_V3_x(
            "device@3.2/internal/0", [&](Status s, const auto& d) { answer(s, d != nullptr); });
    EXPECT_EQ(answers,
              (std::vector<std::string>{"0 none", "0 none", "0 none", "1 none", "1 none"}));
}
