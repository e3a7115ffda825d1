// Fails a test that hangs: aborts the process with a message if not destroyed in time.
#ifndef TESTS_SUPPORT_WATCHDOG_H
#define TESTS_SUPPORT_WATCHDOG_H

#include <stdio.h>
#include <stdlib.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace testing_support {

// A deadlock would otherwise only show as the test runner's timeout, without a word on what
// was running; the abort names it.
class Watchdog {
  public:
    Watchdog(std::chrono::seconds bound, std::string what)
        : mThread([this, bound, what = std::move(what)] {
              std::unique_lock<std::mutex> lock(mLock);
              if (mCond.wait_for(lock, bound, [this] { return mDone; })) return;
              fprintf(stderr, "watchdog: %s still running after %lld s: deadlock?\n", what.c_str(),
                      static_cast<long long>(bound.count()));
              abort();
          }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(mLock);
            mDone = true;
        }
        mCond.notify_one();
        mThread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    std::mutex mLock;  // guards mDone
    std::condition_variable mCond;
    bool mDone = false;
    std::thread mThread;  // last: starts once the members above exist
};

}  // namespace testing_support

#endif  // TESTS_SUPPORT_WATCHDOG_H
