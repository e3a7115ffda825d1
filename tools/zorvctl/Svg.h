// The picture of the framing: the full frame, the crop in force, the last announced crop, presets.
#ifndef TOOLS_ZORVCTL_SVG_H
#define TOOLS_ZORVCTL_SVG_H

#include <string>

#include "Commands.h"

namespace zorvctl {

// Writes the picture to path; throws CommandError when the file cannot be written.
void writeSvg(Context& context, const std::string& path);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_SVG_H
