// The service entry, construction, the talker-tracking property and the base provider methods.
#include <dlfcn.h>

#include <gtest/gtest.h>

#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/Properties.h"

using namespace testing_support;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::camera::common::V1_0::Status;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

TEST(ProviderEntryTest, FactoryLoadedByNameReturnsNewProviderForAnyName) {
    // Given the library loaded the way the service host loads it
    void* lib = dlopen(ZORV_IMPL_PATH, RTLD_NOW);
    ASSERT_NE(lib, nullptr) << dlerror();
    using Fetch = IZorvCameraProvider* (*)(const char*);
    auto fetch = reinterpret_cast<Fetch>(dlsym(lib, "HIDL_FETCH_IZorvCameraProvider"));
    ASSERT_NE(fetch, nullptr) << dlerror();

    // When it is asked for providers under any name
    sp<IZorvCameraProvider> a = fetch("default");
    sp<IZorvCameraProvider> b = fetch("");
    sp<IZorvCameraProvider> c = fetch("anything else");

    // Then each call gives a new provider
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    ASSERT_NE(c, nullptr);
    EXPECT_NE(a.get(), b.get());
    EXPECT_NE(b.get(), c.get());
    hidl_string descriptor;
    ASSERT_TRUE(a->interfaceDescriptor([&](const hidl_string& d) { descriptor = d; }).isOk());
    EXPECT_EQ(descriptor, "vendor.zorv.zorvprovider.zorvprovider@2.4::IZorvCameraProvider");
}

TEST(ProviderEntryTest, FreshServiceWritesTalkerTrackingZero) {
    // Given a process where the property holds something else
    setProp("vendor.talkertracking.flag", "4");

    // When the first provider is created (and with it the session)
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();

    // Then the property mirrors the fresh session's mode
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "0");
    EXPECT_TRUE(LogCapture::contains(
            providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 0")));
}

TEST(ProviderEntryTest, TrackingPropertyAcceptsOnlyZeroToFive) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    LogCapture::clear();

    provider->setTrackingModeProperty(static_cast<TrackingMode>(6));
    provider->setTrackingModeProperty(static_cast<TrackingMode>(-1));
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "0");

    provider->setTrackingModeProperty(TrackingMode::MODE_5);
    EXPECT_EQ(prop("vendor.talkertracking.flag"), "5");

    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kError,
                                   "setTrackingModeProperty: ignoring invalid trackingMode 6"),
                      providerLine(kError,
                                   "setTrackingModeProperty: ignoring invalid trackingMode -1"),
                      providerLine(kInfo, "setTrackingModeProperty: setting talker tracking to 5"),
              }));
}

TEST(ProviderEntryTest, BaseMethodsOfferNoCameraDevices) {
    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
    int calls = 0;
    Status status = Status::INTERNAL_ERROR;

    EXPECT_EQ(static_cast<Status>(provider->setCallback(nullptr)), Status::OK);

    ASSERT_TRUE(provider->getVendorTags([&](Status s, const auto& sections) {
                            ++calls;
                            status = s;
                            EXPECT_EQ(sections.size(), 0u);
                        })
                        .isOk());
    EXPECT_EQ(status, Status::OK);

    ASSERT_TRUE(provider->getCameraIdList([&](Status s, const auto& ids) {
                            ++calls;
                            status = s;
                            EXPECT_EQ(ids.size(), 0u);
                        })
                        .isOk());
    EXPECT_EQ(status, Status::OK);

    bool support = true;
    ASSERT_TRUE(provider->isSetTorchModeSupported([&](Status s, bool supported) {
                            ++calls;
                            status = s;
                            support = supported;
                        })
                        .isOk());
    EXPECT_EQ(status, Status::OK);
    EXPECT_FALSE(support);

    bool gotDevice = true;
    ASSERT_TRUE(provider->getCameraDeviceInterface_V1_x("device@1.0/internal/0",
                                                        [&](Status s, const auto& device) {
                                                            ++calls;
                                                            status = s;
                                                            gotDevice = device != nullptr;
                                                        })
                        .isOk());
    EXPECT_EQ(status, Status::ILLEGAL_ARGUMENT);
    EXPECT_FALSE(gotDevice);

    ASSERT_TRUE(provider->getCameraDeviceInterface_V3_x("device@3.2/internal/0",
                                                        [&](Status s, const auto& device) {
                                                            ++calls;
                                                            status = s;
                                                            gotDevice = device != nullptr;
                                                        })
                        .isOk());
    EXPECT_EQ(status, Status::ILLEGAL_ARGUMENT);
    EXPECT_FALSE(gotDevice);

    // Each result callback ran exactly once.
    EXPECT_EQ(calls, 5);
}
