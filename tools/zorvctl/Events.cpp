// Events: built from what zorvctl prints, taken apart into values, written where they belong.
#include "Events.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <mutex>

#include "Format.h"

namespace zorvctl {

namespace {

std::mutex gLock;  // one writer at a time: events come from any thread
bool gJson = false;
std::atomic<bool> gFold = false;
std::atomic<uint64_t> gCallbacks = 0;
std::function<void(const Event&)> gStream;
thread_local Capture* tCapture = nullptr;

// Splits at top-level separators: blanks always, commas too with `commas`; brackets, braces
// and quoted strings stay whole.
std::vector<std::string> splitTop(const std::string& text, bool commas) {
    std::vector<std::string> parts;
    std::string part;
    int depth = 0;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (quoted) {
            if (c == '\\' && i + 1 < text.size()) {
                part += c;  // an escaped character stays with its backslash
                c = text[++i];
            } else {
                quoted = c != '"';
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if (c == ']' || c == '}') {
            --depth;
        } else if (depth == 0 && (c == ' ' || (commas && c == ','))) {
            if (!part.empty()) parts.push_back(part);
            part.clear();
            continue;
        }
        part += c;
    }
    if (!part.empty()) parts.push_back(part);
    return parts;
}

// The name of a name=value word, or "" when the word is a plain value.
std::string nameOf(const std::string& word) {
    size_t i = 0;
    while (i < word.size() && (isalnum(static_cast<unsigned char>(word[i])) || word[i] == '_')) ++i;
    return i > 0 && i < word.size() && word[i] == '=' ? word.substr(0, i) : "";
}

std::string unquote(const std::string& text) {
    std::string out;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] != '\\' || i + 2 >= text.size()) {
            out += text[i];
        } else if (text[++i] == 'n') {
            out += '\n';
        } else if (text[i] == 'x' && i + 2 < text.size() - 1) {
            out += static_cast<char>(strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

const char* prefixOf(const std::string& kind) {
    static const std::pair<const char*, const char*> kPrefixes[] = {
            {"echo", "> "},        {"result", "=> "}, {"cb", "cb "},   {"engine", "engine "},
            {"req", "req "},       {"entry", "  "},   {"log", "log "}, {"note", "zorvctl: note: "},
            {"error", "zorvctl: "}};
    for (const auto& [k, prefix] : kPrefixes) {
        if (kind == k) return prefix;
    }
    return "";
}

// name=value words separated by blanks (or commas); words without a name go to "words".
Json parseNamed(const std::string& text, bool commas) {
    Json args = Json::object();
    for (const std::string& word : splitTop(text, commas)) {
        std::string name = nameOf(word);
        if (name.empty()) {
            args["words"].push_back(parseValue(word));
        } else {
            args[name] = parseValue(word.substr(name.size() + 1));
        }
    }
    return args;
}

Event make(const char* kind, const std::string& text) {
    return Event{Json{{"kind", kind}, {"text", text}}};
}

bool startsWith(const std::string& text, const char* prefix) {
    return text.compare(0, strlen(prefix), prefix) == 0;
}

}  // namespace

Json parseValue(const std::string& t) {
    if (t.size() >= 2 && t.front() == '"' && t.back() == '"') return unquote(t);
    if (t.size() >= 2 && (t.front() == '[' || t.front() == '{') &&
        t.back() == (t.front() == '[' ? ']' : '}')) {
        std::vector<std::string> items = splitTop(t.substr(1, t.size() - 2), true);
        bool named = t.front() == '{' && !items.empty();
        for (const std::string& item : items) named = named && !nameOf(item).empty();
        if (named) return parseNamed(t.substr(1, t.size() - 2), true);
        Json list = Json::array();
        for (const std::string& item : items) list.push_back(parseValue(item));
        return list;
    }
    if (t == "true" || t == "false") return t == "true";
    size_t digits = t.find_first_not_of('-');
    bool leadingZero = digits != std::string::npos && t[digits] == '0' && t.size() > digits + 1 &&
                       isdigit(static_cast<unsigned char>(t[digits + 1]));  // hex bytes
    if (!t.empty() && !leadingZero && (isdigit(static_cast<unsigned char>(t[0])) || t[0] == '-')) {
        try {
            bool real = t.find_first_of(".eE") != std::string::npos && !startsWith(t, "0x");
            if (real) {
                char* end = nullptr;
                double value = strtod(t.c_str(), &end);
                if (*end == '\0') return value;
            } else {
                return parseInteger(t, INT64_MIN, INT64_MAX);
            }
        } catch (const UsageError&) {
        }
    }
    return t;
}

Json parseArgs(const std::string& text) {
    return parseNamed(text, false);
}

Event lineEvent(const std::string& line) {
    if (startsWith(line, "> ")) return make("echo", line.substr(2));
    if (startsWith(line, "=> ")) {
        Event e = make("result", line.substr(3));
        std::vector<std::string> words = splitTop(e.text(), false);
        e.fields["value"] = words.size() == 1 && nameOf(words[0]).empty() ? parseValue(words[0])
                                                                          : parseArgs(e.text());
        return e;
    }
    for (const char* kind : {"req", "entry"}) {
        if (startsWith(line, prefixOf(kind))) {
            Event e = make(kind, line.substr(strlen(prefixOf(kind))));
            e.fields["args"] = parseArgs(e.text());
            return e;
        }
    }
    size_t colon = line.find(": ");
    if (startsWith(line, "log ") && line.size() > 6 && line[5] == '/' &&
        colon != std::string::npos) {
        Event e = make("log", line.substr(4));
        e.fields["priority"] = line.substr(4, 1);
        e.fields["tag"] = line.substr(6, colon - 6);
        e.fields["message"] = line.substr(colon + 2);
        return e;
    }
    return make("line", line);
}

Event callbackEvent(const std::string& listener, const std::string& method, const std::string& args,
                    const std::string* body) {
    bool plain = !listener.empty() && listener.find_first_of(" \t\"\\") == std::string::npos;
    std::string text = (plain ? listener : quote(listener)) + " " + method;
    std::string shown = args;
    if (body != nullptr) {
        size_t lines = 0;
        for (size_t start = 0; start < body->size(); ++lines) {
            size_t end = body->find('\n', start);
            start = end == std::string::npos ? body->size() : end + 1;
        }
        shown = "bytes=" + std::to_string(body->size()) + " lines=" + std::to_string(lines);
    }
    Event e = make("cb", text + (shown.empty() ? "" : " " + shown));
    e.fields["listener"] = listener;
    e.fields["method"] = method;
    e.fields["args"] = parseArgs(shown);
    if (body != nullptr) e.fields["body"] = *body;
    return e;
}

Event engineEvent(const std::string& operation, const std::string& args) {
    Event e = make("engine", operation + " " + args);
    e.fields["operation"] = operation;
    e.fields["args"] = parseArgs(args);
    return e;
}

Event errorEvent(const std::string& message) {
    return make("error", message);
}

Event noteEvent(const std::string& message) {
    return make("note", message);
}

std::vector<std::string> render(const Event& event) {
    std::vector<std::string> lines = {prefixOf(event.kind()) + event.text()};
    std::string body = gFold ? "" : event.fields.value("body", "");
    for (size_t start = 0; start < body.size();) {
        size_t end = body.find('\n', start);
        if (end == std::string::npos) end = body.size();
        lines.push_back("|" + body.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

void emit(const Event& event) {
    if (event.kind() == "cb") ++gCallbacks;
    if (tCapture != nullptr) {
        tCapture->mEvents.push_back(event);
        if (tCapture->mQuiet) return;
    }
    std::lock_guard lock(gLock);
    if (gStream) return gStream(event);
    if (gJson) {
        std::string line = event.fields.dump(-1, ' ', false, Json::error_handler_t::replace);
        fprintf(stdout, "%s\n", line.c_str());
        return;
    }
    bool error = event.kind() == "error" || event.kind() == "note";
    if (error) fflush(stdout);
    for (const std::string& line : render(event)) {
        fwrite(line.data(), 1, line.size(), error ? stderr : stdout);
        fputc('\n', error ? stderr : stdout);
    }
}

void setJsonOutput(bool json) {
    gJson = json;
}

void setFoldTexts(bool fold) {
    gFold = fold;
}

uint64_t callbackCount() {
    return gCallbacks;
}

void setEventStream(std::function<void(const Event&)> stream) {
    std::lock_guard lock(gLock);
    gStream = std::move(stream);
}

Capture::Capture(bool quiet) : mQuiet(quiet), mOuter(tCapture) {
    tCapture = this;
}

Capture::~Capture() {
    tCapture = mOuter;
}

}  // namespace zorvctl
