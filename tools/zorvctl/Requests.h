// Camera metadata and capture requests: the cache's pipeline operations and request batches.
#ifndef TOOLS_ZORVCTL_REQUESTS_H
#define TOOLS_ZORVCTL_REQUESTS_H

#include <stdint.h>

#include <string>

#include "Commands.h"

namespace zorvctl {

// A metadata tag: a number, or a name such as android.control.aeExposureCompensation.
uint32_t parseTag(const std::string& text);

void cacheAdd(Context& context, const Args& args);
void cacheRemove(Context& context, const Args& args);
void cacheRemoveCamera(Context& context, const Args& args);
void request(Context& context, const Args& args);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_REQUESTS_H
