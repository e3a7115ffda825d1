// The service: a JSON endpoint per command of the command table, a state snapshot for the
// panel, the event stream and the panel's files. Calls run one at a time on the one Context.
//
//   POST /api/<command>   {"<usage name>": value, ...} or {"args": [words]}; "cache add" is
//                         /api/cache/add. Answers {"events": [...], "result": value}.
//   POST /api/run         {"line": "moveCamera 0 ZOOM_IN 100"} or {"words": [...]}
//   GET  /api/commands    the command table
//   GET  /api/state       ?camera=ID: crops, presets, mode, properties, tables, cache entries
//   GET  /api/events      Server-Sent Events: every event of every call, numbered
// Errors answer 4xx with {"error": "..."}: 400 bad input, 404 unknown method, 409 a command
// that failed, 413 a body over 64 KiB.
#include "Server.h"

#include <pthread.h>
#include <signal.h>
#include <stdio.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <httplib.h>

#include "Events.h"
#include "WebFiles.h"

namespace zorvctl {

namespace {

constexpr size_t kMaxBody = 64 * 1024;
constexpr size_t kKeptEvents = 16384;  // for stream readers that lag behind
constexpr int kThreads = 32;           // each stream reader holds one

struct ApiError : std::runtime_error {
    ApiError(int status, const std::string& message)
        : std::runtime_error(message), status(status) {}
    int status;
};

// The numbered events of the stream.
class EventLog {
  public:
    void add(const Event& event) {
        std::lock_guard lock(mLock);
        Json fields = event.fields;
        fields["seq"] = ++mSeq;
        mEvents.emplace_back(mSeq, fields.dump(-1, ' ', false, Json::error_handler_t::replace));
        if (mEvents.size() > kKeptEvents) mEvents.pop_front();
        mChanged.notify_all();
    }

    // The events after seq as stream text, waiting up to a while for one; false once closed.
    bool next(uint64_t& seq, std::string& text) {
        std::unique_lock lock(mLock);
        mChanged.wait_for(lock, std::chrono::seconds(10), [&] { return mClosed || mSeq > seq; });
        if (mClosed) return false;
        for (const auto& [n, data] : mEvents) {
            if (n > seq) text += "id: " + std::to_string(n) + "\ndata: " + data + "\n\n";
        }
        seq = mSeq;
        return true;
    }

    uint64_t last() {
        std::lock_guard lock(mLock);
        return mSeq;
    }

    void close() {
        std::lock_guard lock(mLock);
        mClosed = true;
        mChanged.notify_all();
    }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<std::pair<uint64_t, std::string>> mEvents;
    uint64_t mSeq = 0;
    bool mClosed = false;
};

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), ::tolower);
    return text;
}

// A JSON value as one command word: arrays as comma-separated lists (a crop [l,t,r,b]).
std::string word(const Json& value, const std::string& name) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number() || value.is_boolean()) return value.dump();
    if (value.is_array()) {
        std::string words;
        for (const Json& item : value) words += (words.empty() ? "" : ",") + word(item, name);
        return words;
    }
    throw ApiError(400, name + ": not a string, number, boolean or list");
}

// The words of a command from JSON arguments named by its usage (any case; CAMERA also as
// cameraId): NAME gives a word, NAME... a word for each item of a list, name=V gives "name=V".
std::vector<std::string> commandWords(const Command& command, Json args) {
    std::vector<std::string> words = splitWords(command.name);
    if (args.contains("args")) {
        for (const Json& item : args["args"]) words.push_back(word(item, "args"));
        return words;
    }
    std::string names;
    for (const std::string& usage : splitWords(command.usage)) {
        std::string name;
        for (char c : usage.substr(0, usage.find('='))) {
            if (c != '[' && c != ']' && c != '.') name += c;
        }
        names += (names.empty() ? "" : ", ") + lower(name);
        std::string key;
        for (const auto& item : args.items()) {
            std::string k = lower(item.key());
            if (k == lower(name) || k == lower(name) + "id") key = item.key();
        }
        if (key.empty()) {
            if (usage[0] != '[') throw ApiError(400, command.name + (": missing " + lower(name)));
            continue;
        }
        std::string prefix = usage.find('=') != std::string::npos ? lower(name) + "=" : "";
        bool many = usage.find("...") != std::string::npos && args[key].is_array();
        for (const Json& item : many ? args[key] : Json::array({args[key]})) {
            words.push_back(prefix + word(item, lower(name)));
        }
        args.erase(key);
    }
    if (!args.empty()) {
        throw ApiError(400, std::string(command.name) + ": unknown argument \"" +
                                    args.items().begin().key() + "\" (takes " +
                                    (names.empty() ? "none" : names) + ")");
    }
    return words;
}

class Server {
  public:
    explicit Server(Context& context) : mContext(context) {}

    // Runs one command; its events (and the stream's copy) tell what happened.
    Json call(const std::vector<std::string>& words) {
        std::lock_guard lock(mCallLock);
        std::string line;
        for (const std::string& w : words) {
            line += (line.empty() ? "" : " ") + (w.find_first_of(" \"\t") == w.npos ? w : quote(w));
        }
        mEvents.add(lineEvent("> " + line));  // for the stream only: clients echo their own
        Capture capture;
        Json answer = Json::object();
        try {
            runCommand(mContext, words);
        } catch (const UsageError& e) {
            answer["status"] = 400, answer["error"] = e.what();
        } catch (const std::exception& e) {
            answer["status"] = 409, answer["error"] = e.what();
        }
        if (answer.contains("error")) mEvents.add(errorEvent(answer["error"]));
        if (mContext.quit) answer["quit"] = true;
        mContext.quit = false;
        answer["events"] = Json::array();
        answer["result"] = nullptr;
        for (const Event& event : capture.events()) {
            answer["events"].push_back(event.fields);
            if (event.kind() == "result") answer["result"] = event.fields["value"];
        }
        return answer;
    }

    Json state(const std::string& camera) {
        std::lock_guard lock(mCallLock);
        Capture capture(true);
        auto run = [&](std::vector<std::string> words) {
            size_t first = capture.events().size();
            try {
                runCommand(mContext, words);
            } catch (const std::exception&) {
            }
            return std::vector<Event>(capture.events().begin() + first, capture.events().end());
        };
        auto value = [&](std::vector<std::string> words) {
            for (const Event& e : run(words)) {
                if (e.kind() == "result") return e.fields["value"];
            }
            return Json();
        };
        Json s = Json::object();
        s["camera"] = camera;
        s["inForce"] = value({"getCurrentCameraCropArea"});
        s["lastAnnounced"] =
                mContext.announced ? parseArgs(formatScene(mContext.lastAnnounced)) : Json();
        s["trackingMode"] = value({"getTrackingMode", camera});
        s["properties"] = Json::object();
        s["presets"] = Json::object();
        for (const Event& e : run({"prop", "list"})) {
            std::string line = e.text();
            size_t eq = line.find('=');
            s["properties"][line.substr(0, eq)] = line.substr(eq + 1);
        }
        for (int n = 0; n <= 99; ++n) {
            Json crop = Json::array();
            for (const char* side : {"l", "t", "r", "b"}) {
                std::string key = "persist.camera.preset." + std::to_string(n) + "." + side;
                auto value = s["properties"].find(key);
                if (value != s["properties"].end()) {
                    crop.push_back(parseValue(value->get<std::string>()));
                }
            }
            if (crop.size() == 4) s["presets"][std::to_string(n)] = crop;
        }
        s["virtualCameras"] = {{"capability", value({"getVirtualCameraCapability", camera})},
                               {"list", value({"getVirtualCameraList", camera})},
                               {"max", value({"getMaxVirtualCameras", camera})},
                               {"availability", value({"getVirtualCameraAvailability", camera})},
                               {"infos", value({"getVirtualCameraInfo"})}};
        // The cache's entries for the camera, as a request without settings receives them.
        uint32_t frame = mContext.nextFrame;
        s["cache"] = Json::array();
        for (const Event& e : run({"request", camera, "empty"})) {
            if (e.kind() == "entry") s["cache"].push_back(e.text());
        }
        mContext.nextFrame = frame;
        s["seq"] = mEvents.last();
        return s;
    }

    int run(int port) {
        setEventStream([this](const Event& event) { mEvents.add(event); });
        mHttp.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
        mHttp.set_payload_max_length(kMaxBody);
        mHttp.Post(R"(/api/(\w+)(?:/(\w+))?)", [this](const auto& req, auto& res) {
            answer(res, [&] {
                Json args = req.body.empty() ? Json::object() : Json::parse(req.body);
                if (!args.is_object()) throw ApiError(400, "the body is not a JSON object");
                if (req.matches[1] == "run" && req.matches[2].length() == 0) {
                    if (args.contains("line"))
                        return call(splitWords(args["line"].get<std::string>()));
                    std::vector<std::string> words;
                    for (const Json& w : args.value("words", Json::array())) {
                        words.push_back(word(w, "words"));
                    }
                    if (words.empty()) throw ApiError(400, "run: give \"line\" or \"words\"");
                    return call(words);
                }
                std::string name = req.matches[1].str() +
                                   (req.matches[2].length() ? " " + req.matches[2].str() : "");
                const Command* command = findCommand(name);
                if (command == nullptr) throw ApiError(404, "unknown method \"" + name + "\"");
                return call(commandWords(*command, args));
            });
        });
        mHttp.Get("/api/state", [this](const auto& req, auto& res) {
            answer(res, [&] {
                return state(req.has_param("camera") ? req.get_param_value("camera") : "0");
            });
        });
        mHttp.Get("/api/commands", [](const auto&, auto& res) {
            Json list = Json::array();
            for (const Command* c : allCommands()) {
                list.push_back({{"name", c->name}, {"usage", c->usage}, {"help", c->help}});
            }
            res.set_content(list.dump(), "application/json");
        });
        mHttp.Get("/api/events", [this](const httplib::Request& req, httplib::Response& res) {
            uint64_t seq = mEvents.last();
            if (req.has_header("Last-Event-ID")) {
                seq = strtoull(req.get_header_value("Last-Event-ID").c_str(), nullptr, 10);
            }
            res.set_header("Cache-Control", "no-cache");
            res.set_chunked_content_provider(
                    "text/event-stream", [this, seq](size_t, httplib::DataSink& sink) mutable {
                        std::string text;
                        if (!mEvents.next(seq, text)) {
                            sink.done();  // the service stops: the stream ends cleanly
                            return true;
                        }
                        if (text.empty()) text = ": idle\n\n";  // finds readers that left
                        return sink.write(text.data(), text.size());
                    });
        });
        mHttp.Get(R"(/|/[\w.]+)", [](const httplib::Request& req, httplib::Response& res) {
            std::string path = req.path == "/" ? "/index.html" : req.path;
            for (const WebFile* f = kWebFiles; f->path != nullptr; ++f) {
                if (path != f->path) continue;
                std::string ext = path.substr(path.rfind('.') + 1);
                res.set_content(f->content, ext == "js"    ? "text/javascript"
                                            : ext == "css" ? "text/css"
                                                           : "text/html; charset=utf-8");
                return;
            }
            res.status = 404;
        });
        mHttp.set_error_handler([](const httplib::Request&, httplib::Response& res) {
            if (!res.body.empty()) return;
            std::string message =
                    res.status == 413 ? "the body is over " + std::to_string(kMaxBody) + " bytes"
                                      : "HTTP status " + std::to_string(res.status);
            res.set_content(Json{{"error", message}}.dump(), "application/json");
        });

        // SIGINT and SIGTERM end the service, through a thread of their own.
        sigset_t signals = blockStopSignals();
        std::thread stopper([&] {
            int signal = 0;
            sigwait(&signals, &signal);
            mEvents.close();
            mHttp.stop();
        });
        int bound = port == 0 ? mHttp.bind_to_any_port("127.0.0.1")
                              : (mHttp.bind_to_port("127.0.0.1", port) ? port : -1);
        bool ok = bound > 0;
        if (ok) {
            printf("serving http://127.0.0.1:%d\n", bound);
            fflush(stdout);
            ok = mHttp.listen_after_bind();
        } else {
            emit(errorEvent("cannot listen on 127.0.0.1:" + std::to_string(port)));
        }
        pthread_kill(stopper.native_handle(), SIGTERM);  // the stopper is waiting when not stopped
        stopper.join();
        setEventStream(nullptr);
        return ok ? 0 : 2;
    }

  private:
    // Answers with what produce gives, or its error.
    template <typename F>
    void answer(httplib::Response& res, F produce) {
        Json body;
        try {
            body = produce();
            res.status = body.value("status", 200);
            body.erase("status");
        } catch (const Json::parse_error& e) {
            res.status = 400, body = {{"error", std::string("malformed JSON: ") + e.what()}};
        } catch (const ApiError& e) {
            res.status = e.status, body = {{"error", e.what()}};
        } catch (const std::exception& e) {
            res.status = 400, body = {{"error", e.what()}};
        }
        res.set_content(body.dump(-1, ' ', false, Json::error_handler_t::replace),
                        "application/json");
    }

    Context& mContext;
    std::mutex mCallLock;  // the Context serves one call at a time
    EventLog mEvents;
    httplib::Server mHttp;
};

}  // namespace

sigset_t blockStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

int serve(Context& context, int port) {
    Server server(context);
    return server.run(port);
}

}  // namespace zorvctl
