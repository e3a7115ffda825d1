// What zorvctl can observe of the provider, the session and the cache, for "status" and for
// the note on a call that changed nothing.
#ifndef TOOLS_ZORVCTL_STATE_H
#define TOOLS_ZORVCTL_STATE_H

#include <map>
#include <string>
#include <vector>

#include "Commands.h"

namespace zorvctl {

// The presets stored in the persist.camera.preset.* properties, by number (0..99).
std::map<int, Crop> storedPresets();

// The observable state as lines "what: value", read through the interface's getters, the
// properties and the cache, with the library's log silenced meanwhile.
std::vector<std::string> observe(const Context& context);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_STATE_H
