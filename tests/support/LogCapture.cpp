// Log capture through liblog's logger hook.
#include "support/LogCapture.h"

#include <stdio.h>
#include <stdlib.h>

#include <mutex>

#include <android/log.h>

namespace testing_support {
namespace {

std::mutex sLock;                                          // guards sLines
std::vector<LogLine>& sLines = *new std::vector<LogLine>;  // outlives every static user

void captureLogger(const __android_logger_data* data, const char* message) {
    {
        std::lock_guard<std::mutex> lock(sLock);
        sLines.push_back({data->tag ? data->tag : "", data->priority, message ? message : ""});
    }
    if (getenv("ZORV_TEST_LOG") != nullptr) {
        fprintf(stderr, "[%s %d] %s\n", data->tag ? data->tag : "", data->priority, message);
    }
}

const bool sInstalled = [] {
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(captureLogger);
    return true;
}();

}  // namespace

std::ostream& operator<<(std::ostream& os, const LogLine& line) {
    return os << "{" << line.tag << ", " << line.priority << ", \"" << line.text << "\"}";
}

std::vector<LogLine> LogCapture::lines() {
    std::lock_guard<std::mutex> lock(sLock);
    return sLines;
}

std::vector<LogLine> LogCapture::linesWithTag(const std::string& tag) {
    std::vector<LogLine> out;
    for (const LogLine& l : lines()) {
        if (l.tag == tag) out.push_back(l);
    }
    return out;
}

int LogCapture::count(const LogLine& line) {
    int n = 0;
    for (const LogLine& l : lines()) n += l == line;
    return n;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(sLock);
    sLines.clear();
}

LogLine providerLine(int priority, const std::string& text) {
    return {kProviderTag, priority, text};
}

LogLine cacheLine(int priority, const std::string& text) {
    return {kCacheTag, priority, text};
}

}  // namespace testing_support
