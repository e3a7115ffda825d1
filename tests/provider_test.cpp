// The service entry, construction, the talker-tracking property and the base provider methods.
#include <dlfcn.h>

#include "support/ProviderTest.h"

using namespace testing_support;

TEST(ProviderEntryTest, FactoryGivesNewProvidersForAnyNameOfferingNoCameraDevices) {
    // Given the library loaded the way the service host loads it
    void* lib = dlopen(ZORV_IMPL_PATH, RTLD_NOW);
    ASSERT_NE(lib, nullptr) << dlerror();
    auto fetch = reinterpret_cast<IZorvCameraProvider* (*)(const char*)>(
            dlsym(lib, "HIDL_FETCH_IZorvCameraProvider"));
    // Then each call, under any name, gives a new provider
    sp<IZorvCameraProvider> a = fetch("default"), b = fetch(""), c = fetch("anything else");
    ASSERT_TRUE(a && b && c && a != b && b != c);
    c->interfaceDescriptor([&](const hidl_string& d) {
        EXPECT_EQ(d, "vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProvider");
    });
    // Each result callback, once: its status and whether it carried anything
    std::string out = std::to_string(int(Status(c->setCallback(nullptr))));
    auto add = [&](Status s, bool any) { out += " " + std::to_string(int(s)) + "-+"[any]; };
    c->getVendorTags([&](Status s, const auto& v) { add(s, v.size() > 0); });
    c->getCameraIdList([&](Status s, const auto& v) { add(s, v.size() > 0); });
    c->isSetTorchModeSupported([&](Status s, bool v) { add(s, v); });
    auto device = [&](Status s, const auto& d) { add(s, d != nullptr); };
    c->getCameraDeviceInterface_V1_x("device@1.0/internal/0", device);
    c->getCameraDeviceInterface_V3_x("device@3.2/internal/0", device);
    EXPECT_EQ(out, "0 0- 0- 0- 1- 1-");
}

TEST(ProviderEntryTest, TalkerTrackingPropertyIsZeroAtStartAndTakesOnlyZeroToFive) {
    // The first provider of a process (and with it the session) writes the fresh mode, 0;
    // the property then takes only modes 0 to 5
    setProp("vendor.talkertracking.flag", "4");
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    std::string written = prop("vendor.talkertracking.flag");
    for (int mode : {6, -1, 5}) {
        provider->setTrackingModeProperty(static_cast<TrackingMode>(mode));
        written += prop("vendor.talkertracking.flag");
    }
    EXPECT_EQ(written, "0005");
    const std::string set = "setTrackingModeProperty: ";
    EXPECT_EQ(providerLines(),
              (Lines{providerLine(kDebug, "PTZ Scene reset 0 0 1280 720"),
                     providerLine(kInfo, set + "setting talker tracking to 0"),
                     providerLine(kError, set + "ignoring invalid trackingMode 6"),
                     providerLine(kError, set + "ignoring invalid trackingMode -1"),
                     providerLine(kInfo, set + "setting talker tracking to 5")}));
}
