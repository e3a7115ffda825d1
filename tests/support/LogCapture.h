// Captures every Android log line of the process (tag, priority, text) for assertions.
#ifndef TESTS_SUPPORT_LOGCAPTURE_H
#define TESTS_SUPPORT_LOGCAPTURE_H

#include <algorithm>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include <android/log.h>

namespace testing_support {

struct LogLine {
    std::string tag;
    int priority;
    std::string text;
    bool operator==(const LogLine& o) const {
        return tag == o.tag && priority == o.priority && text == o.text;
    }
};
inline std::ostream& operator<<(std::ostream& os, const LogLine& line) {
    return os << "{" << line.tag << ", " << line.priority << ", \"" << line.text << "\"}";
}

constexpr const char* kProviderTag = "vendor.zorv.zorvprovider.zorvprovider@2.4-impl";
constexpr const char* kCacheTag = "CameraControlCache";
constexpr int kDebug = 3, kInfo = 4, kError = 6;  // log priorities

// Every priority is captured, through liblog's logger hook installed before main().
class LogCapture {
  public:
    static std::vector<LogLine> lines() {
        std::lock_guard<std::mutex> lock(sLock);
        return sLines;
    }
    // Lines with this tag, in order.
    static std::vector<LogLine> linesWithTag(const std::string& tag) {
        std::vector<LogLine> out;
        for (const LogLine& l : lines()) {
            if (l.tag == tag) out.push_back(l);
        }
        return out;
    }
    static bool contains(const LogLine& line) {
        const std::vector<LogLine> all = lines();
        return std::find(all.begin(), all.end(), line) != all.end();
    }
    static void clear() {
        std::lock_guard<std::mutex> lock(sLock);
        sLines.clear();
    }

  private:
    static void capture(const __android_logger_data* data, const char* message) {
        std::lock_guard<std::mutex> lock(sLock);
        sLines.push_back({data->tag ? data->tag : "", data->priority, message ? message : ""});
    }
    static inline std::mutex sLock;                                          // guards sLines
    static inline std::vector<LogLine>& sLines = *new std::vector<LogLine>;  // outlives its users
    static inline const bool sInstalled = [] {
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        __android_log_set_logger(capture);
        return true;
    }();
};

// Shorthands for provider and cache lines.
inline LogLine providerLine(int priority, const std::string& text) {
    return {kProviderTag, priority, text};
}
inline LogLine cacheLine(int priority, const std::string& text) {
    return {kCacheTag, priority, text};
}

}  // namespace testing_support

#endif  // TESTS_SUPPORT_LOGCAPTURE_H
