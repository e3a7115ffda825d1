// The client side of the service: one POST /api/run per command, the event stream for watch.
#include "Client.h"

#include <stdio.h>

#include <httplib.h>

#include "Events.h"
#include "Format.h"

namespace zorvctl {

Client::Client(const std::string& address, bool showLog) : mAddress(address), mShowLog(showLog) {
    size_t colon = address.rfind(':');
    int port = static_cast<int>(parseInteger(address.substr(colon + 1), 1, 65535));
    mHttp = std::make_unique<httplib::Client>(address.substr(0, colon), port);
    mHttp->set_read_timeout(60, 0);
}

Client::~Client() = default;

void Client::run(const std::vector<std::string>& words, bool& quit) {
    if (words.size() == 1 && words[0] == "watch") return watch();
    std::string body = Json{{"words", words}}.dump(-1, ' ', false, Json::error_handler_t::replace);
    httplib::Result res = mHttp->Post("/api/run", body, "application/json");
    if (!res) {
        throw CommandError("cannot reach the service at " + mAddress + ": " +
                           httplib::to_string(res.error()));
    }
    Json answer = Json::parse(res->body, nullptr, false);
    if (answer.is_discarded()) throw CommandError("the service answered " + res->body);
    for (const Json& fields : answer.value("events", Json::array())) {
        Event event{fields};
        if (mShowLog || event.kind() != "log") emit(event);
    }
    quit = answer.value("quit", false);
    if (answer.contains("error")) throw CommandError(answer["error"].get<std::string>());
}

void Client::watch() {
    std::string pending;
    // From the oldest event the service keeps.
    httplib::Headers from = {{"Last-Event-ID", "0"}};
    httplib::Result res = mHttp->Get("/api/events", from, [&](const char* data, size_t size) {
        pending.append(data, size);
        for (size_t end; (end = pending.find("\n\n")) != std::string::npos;) {
            std::string message = pending.substr(0, end);
            pending.erase(0, end + 2);
            size_t data = message.find("data: ");
            if (data == std::string::npos) continue;
            Event event{Json::parse(message.substr(data + 6), nullptr, false)};
            if (!event.fields.is_object() || (!mShowLog && event.kind() == "log")) continue;
            emit(event);
            fflush(stdout);
        }
        return true;
    });
    if (!res) {
        throw CommandError("cannot reach the service at " + mAddress + ": " +
                           httplib::to_string(res.error()));
    }
}

}  // namespace zorvctl
