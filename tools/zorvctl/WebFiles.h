// The web panel's files (tools/zorvctl/web), compiled into zorvctl.
#ifndef TOOLS_ZORVCTL_WEBFILES_H
#define TOOLS_ZORVCTL_WEBFILES_H

namespace zorvctl {

struct WebFile {
    const char* path;  // "/index.html"
    const char* content;
};
// Ends with {nullptr, nullptr}.
extern const WebFile kWebFiles[];

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_WEBFILES_H
