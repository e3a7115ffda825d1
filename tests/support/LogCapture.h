// Captures every Android log line of the process (tag, priority, text) for assertions.
#ifndef TESTS_SUPPORT_LOGCAPTURE_H
#define TESTS_SUPPORT_LOGCAPTURE_H

#include <ostream>
#include <string>
#include <vector>

namespace testing_support {

struct LogLine {
    std::string tag;
    int priority;
    std::string text;
    bool operator==(const LogLine& o) const {
        return tag == o.tag && priority == o.priority && text == o.text;
    }
};
std::ostream& operator<<(std::ostream& os, const LogLine& line);

constexpr const char* kProviderTag = "vendor.zorv.zorvprovider.zorvprovider@2.4-impl";
constexpr const char* kCacheTag = "CameraControlCache";
constexpr int kDebug = 3;
constexpr int kInfo = 4;
constexpr int kError = 6;

// Installed before main(); every priority is captured.
class LogCapture {
  public:
    static std::vector<LogLine> lines();
    // Lines with this tag, in order.
    static std::vector<LogLine> linesWithTag(const std::string& tag);
    static int count(const LogLine& line);
    static bool contains(const LogLine& line) { return count(line) > 0; }
    static void clear();
};

// Shorthands for provider and cache lines.
LogLine providerLine(int priority, const std::string& text);
LogLine cacheLine(int priority, const std::string& text);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_LOGCAPTURE_H
