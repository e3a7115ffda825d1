// Service host: loads the provider library through its passthrough factory and serves it over
// hwbinder, so that clients in other processes can reach it.
#define LOG_TAG "vendor.zorv.zorvprovider.zorvprovider@2.4-service"

#include <stddef.h>

#include <hidl/LegacySupport.h>
#include <log/log.h>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProvider.h>

using android::status_t;
using android::hardware::defaultPassthroughServiceImplementation;
using vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProvider;

namespace {

// Fits the camera provider pattern "<type>/<number>" of the framework compatibility matrix, so
// the parent ICameraProvider registered under the same name is a well-formed camera provider.
constexpr const char* kInstance = "zorv/0";

// Binder threads, the main thread included. A listener fan-out holds the provider lock while it
// calls every listener, so one thread may wait on a listener and a second on the provider lock
// behind it; the other two keep the calls that take no provider lock (the frame-director session,
// the metadata cache, the crop and tracking queries) answered meanwhile. A nested call from a
// listener comes back on the thread that is calling it, so it needs no thread of its own.
constexpr size_t kMaxThreads = 4;

}  // namespace

int main() {
    ALOGI("Service is starting: %s", kInstance);
    // Registers the provider under every interface it extends and joins the pool; returns only
    // on failure.
    status_t status =
            defaultPassthroughServiceImplementation<IZorvCameraProvider>(kInstance, kMaxThreads);
    ALOGE("Service could not be registered: %d", status);
    return 1;
}
