// Host stand-in for the HIDL runtime's passthrough service helpers, declared as the platform
// declares them. The host has no hwbinder to register with, so reaching one aborts.
#ifndef HOST_PLATFORM_HIDL_LEGACYSUPPORT_H
#define HOST_PLATFORM_HIDL_LEGACYSUPPORT_H

#include <stddef.h>

#include <string>

#include <log/log.h>
#include <utils/Errors.h>

namespace android {
namespace hardware {

// On a device: loads the passthrough implementation of `name`, registers it with
// hwservicemanager, then serves it from a pool of `maxThreads` binder threads (the calling thread
// included). Returns only on failure.
template <class Interface>
__attribute__((warn_unused_result)) status_t defaultPassthroughServiceImplementation(
        const std::string& name, size_t maxThreads = 1) {
    LOG_ALWAYS_FATAL("%s/%s: no hwbinder on the host to serve it with %zu threads",
                     Interface::descriptor, name.c_str(), maxThreads);
    return UNKNOWN_ERROR;
}

template <class Interface>
__attribute__((warn_unused_result)) status_t defaultPassthroughServiceImplementation(
        size_t maxThreads = 1) {
    return defaultPassthroughServiceImplementation<Interface>("default", maxThreads);
}

}  // namespace hardware
}  // namespace android

#endif  // HOST_PLATFORM_HIDL_LEGACYSUPPORT_H
