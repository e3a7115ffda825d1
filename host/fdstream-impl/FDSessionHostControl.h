// Controls of the host stand-in for the session's stream-handling half, used by tests and tools.
#ifndef HOST_FDSTREAM_IMPL_FDSESSIONHOSTCONTROL_H
#define HOST_FDSTREAM_IMPL_FDSESSIONHOSTCONTROL_H

#include <stdint.h>

namespace fdstream_host {

// What the next handler calls return (0 by default).
void setHandlerResults(int32_t setCallbackResult, int32_t configureResult,
                       int32_t captureRequestResult);

struct HandlerCounts {
    int setCallback;
    int configure;
    int captureRequest;
    int threadsStarted;  // "CaptureRequestMonitor" threads that began to run
};
HandlerCounts handlerCounts();

}  // namespace fdstream_host

#endif  // HOST_FDSTREAM_IMPL_FDSESSIONHOSTCONTROL_H
