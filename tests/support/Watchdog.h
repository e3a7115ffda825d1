// Fails a test that hangs: aborts the process with a message if not destroyed in time.
#ifndef TESTS_SUPPORT_WATCHDOG_H
#define TESTS_SUPPORT_WATCHDOG_H

#include <stdio.h>
#include <stdlib.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

namespace testing_support {

// A deadlock would otherwise only show as the test runner's timeout, without a word on what
// was running; the abort names it.
class Watchdog {
  public:
    Watchdog(std::chrono::seconds bound, std::string what)
        : mThread([done = mDone.get_future(), bound, what = std::move(what)] {
              if (done.wait_for(bound) == std::future_status::ready) return;
              fprintf(stderr, "watchdog: %s still running after %lld s: deadlock?\n", what.c_str(),
                      static_cast<long long>(bound.count()));
              abort();
          }) {}
    ~Watchdog() {
        mDone.set_value();
        mThread.join();
    }

  private:
    std::promise<void> mDone;
    std::thread mThread;  // last: starts once mDone exists
};

}  // namespace testing_support

#endif  // TESTS_SUPPORT_WATCHDOG_H
