// zorvctl serve: one provider, with its session, cache and properties, shared over HTTP on
// 127.0.0.1 by command-line clients (--connect) and the web panel.
#ifndef TOOLS_ZORVCTL_SERVER_H
#define TOOLS_ZORVCTL_SERVER_H

#include <signal.h>

#include "Commands.h"

namespace zorvctl {

constexpr int kDefaultPort = 8734;

// Keeps SIGINT and SIGTERM for serve to wait for: called before the provider starts threads.
sigset_t blockStopSignals();

// Serves the context until SIGINT or SIGTERM; port 0 takes a free one. Prints
// "serving http://127.0.0.1:PORT" once it listens. Returns the exit status.
int serve(Context& context, int port);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_SERVER_H
