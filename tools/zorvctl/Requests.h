// Camera metadata and capture requests: the cache's pipeline operations and request batches.
#ifndef TOOLS_ZORVCTL_REQUESTS_H
#define TOOLS_ZORVCTL_REQUESTS_H

#include <stdint.h>

#include <set>
#include <string>
#include <vector>

#include "Commands.h"

namespace zorvctl {

// A metadata tag: a number, or a name such as android.control.aeExposureCompensation.
uint32_t parseTag(const std::string& text);
// Every known tag name, for completion.
std::vector<std::string> tagNames();
// The cache's entries for the cameras' short ids, one line "cache "ID": ENTRY; ENTRY" each,
// read by merging them into a request without settings.
std::vector<std::string> cacheEntries(const std::set<std::string>& cameras);

void cacheAdd(Context& context, const Args& args);
void cacheRemove(Context& context, const Args& args);
void cacheRemoveCamera(Context& context, const Args& args);
void request(Context& context, const Args& args);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_REQUESTS_H
