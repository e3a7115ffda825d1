// zorvctl --connect: runs commands on a zorvctl service and reports their events here.
#ifndef TOOLS_ZORVCTL_CLIENT_H
#define TOOLS_ZORVCTL_CLIENT_H

#include <memory>
#include <string>
#include <vector>

namespace httplib {
class Client;
}

namespace zorvctl {

class Client {
  public:
    // address: HOST:PORT. Log events are reported only with showLog, as --log does locally.
    Client(const std::string& address, bool showLog);
    ~Client();

    // Runs one command on the service; throws CommandError with the service's message when it
    // fails. "watch" reports the events the service keeps (its last 16384), then each new one,
    // until the service ends.
    void run(const std::vector<std::string>& words, bool& quit);

  private:
    void watch();

    std::string mAddress;
    bool mShowLog;
    std::unique_ptr<httplib::Client> mHttp;
};

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_CLIENT_H
