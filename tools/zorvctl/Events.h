// What zorvctl reports: one event per output line (a scene text is one event of several lines),
// rendered as text, as one JSON object a line (--json), or streamed by the server.
#ifndef TOOLS_ZORVCTL_EVENTS_H
#define TOOLS_ZORVCTL_EVENTS_H

#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace zorvctl {

using Json = nlohmann::ordered_json;

// kind: "echo" (a command read), "result" (=>), "cb" (listener callback), "engine" (framing
// engine call), "req" (a decoded request), "entry" (one of its settings), "log" (library log
// line), "error" and "note" (on stderr), "line" (anything else: help, property lists).
// fields holds "kind", "text" (the line after its kind's prefix) and what the text says, taken
// apart: "value" of a result, "listener", "method" and "args" of a callback, "operation" and
// "args" of an engine call, "priority", "tag" and "message" of a log line; "body" holds a
// scene text, printed as "|" lines after the event's line.
struct Event {
    Json fields;

    std::string kind() const { return fields.value("kind", ""); }
    std::string text() const { return fields.value("text", ""); }
};

// The event one output line of a command makes.
Event lineEvent(const std::string& line);
Event callbackEvent(const std::string& listener, const std::string& method, const std::string& args,
                    const std::string* body = nullptr);
Event engineEvent(const std::string& operation, const std::string& args);
Event errorEvent(const std::string& message);
// A call that was accepted but changed nothing (on stderr, like an error).
Event noteEvent(const std::string& message);

// The lines of an event as zorvctl prints them.
std::vector<std::string> render(const Event& event);

// The values of a printed argument list, e.g. "crops=[{0,0,1280,720}] frame=1280x720" gives
// {"crops":[[0,0,1280,720]],"frame":"1280x720"}; words without a name go to "words".
Json parseArgs(const std::string& text);
// One printed value: true/false, a number, "quoted", [list], {L,T,R,B} or {name=value,...}.
Json parseValue(const std::string& text);

// Where events go: each thread's capture while one is open, then the stream if one is set;
// otherwise stdout (errors to stderr) as text, or as JSON lines with setJsonOutput(true).
void emit(const Event& event);
void setJsonOutput(bool json);
// With fold set, a scene text prints as its header line only, without its "|" lines.
void setFoldTexts(bool fold);
// The listener callbacks emitted so far, from every thread.
uint64_t callbackCount();
// The stream gets every event not captured quietly, from any thread.
void setEventStream(std::function<void(const Event&)> stream);

// Collects the events the current thread emits while it lives.
class Capture {
  public:
    // quiet: the events go nowhere else.
    explicit Capture(bool quiet = false);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    const std::vector<Event>& events() const { return mEvents; }

  private:
    friend void emit(const Event& event);
    std::vector<Event> mEvents;
    bool mQuiet;
    Capture* mOuter;
};

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_EVENTS_H
