// zorvctl: loads the provider library as the platform's service host does and runs commands.
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <android/log.h>
#include <cutils/properties.h>

#include "Client.h"
#include "Commands.h"
#include "FDSession.h"
#include "Server.h"
#include "Svg.h"

namespace {

using namespace zorvctl;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

constexpr const char* kUsage =
        "usage: zorvctl [--lib PATH] [--log] [--props FILE] [--svg FILE] [--json]\n"
        "               [--connect [HOST:PORT]] [-f SCRIPT | -c COMMAND]... [COMMAND ARGS...]\n"
        "       zorvctl [--lib PATH] [--log] [--props FILE] serve [--port N]\n"
        "Runs the commands of each -f script and -c option in order, then the command given by\n"
        "the remaining arguments; with none of these, reads commands from standard input.\n"
        "  --lib PATH    the provider library to load (default: the one built with zorvctl)\n"
        "  --log         print the library's log lines as \"log P/TAG: text\"\n"
        "  --props FILE  load system properties (NAME=VALUE lines) at start; save the persist.*\n"
        "                ones there at exit\n"
        "  --svg FILE    write a picture of the framing at exit\n"
        "  --json        print each event as one JSON object a line\n"
        "  --connect [HOST:PORT]  run the commands on \"zorvctl serve\" (127.0.0.1:8734);\n"
        "                \"watch\" then prints the events the service reports\n"
        "  serve         keep one provider and serve it on 127.0.0.1 (port 8734, 0 for any):\n"
        "                a JSON API, an event stream and a web panel at http://127.0.0.1:PORT/\n"
        "Exit status: 0, 1 when a command failed (scripts and arguments stop at the first\n"
        "failure; standard input goes on), 2 for bad options, files or library.\n"
        "\"zorvctl help\" lists the commands.\n";

constexpr const char* kFactory = "HIDL_FETCH_IZorvCameraProvider";
constexpr const char* kPersistPrefix = "persist.";

struct Source {
    enum Kind { kScript, kCommand, kWords } kind;
    std::string text;                // script path or command line
    std::vector<std::string> words;  // kWords: a command from the arguments
};

void printLog(const __android_logger_data* data, const char* message) {
    static const char kLetters[] = "??VDIWEFS";
    int p = data->priority;
    std::string text = message != nullptr ? message : "";
    while (!text.empty() && text.back() == '\n') text.pop_back();
    for (size_t i; (i = text.find('\n')) != std::string::npos;) text.replace(i, 1, "\\n");
    out(std::string("log ") + (p >= 0 && p <= 8 ? kLetters[p] : '?') + "/" +
        (data->tag != nullptr ? data->tag : "") + ": " + text);
}

void dropLog(const __android_logger_data*, const char*) {}

void error(const std::string& message) {
    emit(errorEvent(message));
}

std::unique_ptr<Client> remote;  // with --connect: where commands run

// Runs one command; false when it failed. `where` names it in messages.
bool runWords(Context& context, const std::vector<std::string>& words, const std::string& where) {
    try {
        remote ? remote->run(words, context.quit) : runCommand(context, words);
        return true;
    } catch (const std::exception& e) {
        error(where + ": " + e.what());
        return false;
    }
}

// Runs one line of text, echoed first unless typed at a terminal; blank lines and comments
// do nothing.
bool runLine(Context& context, const std::string& line, const std::string& where, bool echo) {
    std::vector<std::string> words;
    try {
        words = splitWords(line);
    } catch (const UsageError& e) {
        error(where + ": " + e.what());
        return false;
    }
    if (words.empty()) return true;
    if (echo) out("> " + line.substr(line.find_first_not_of(" \t")));
    return runWords(context, words, where);
}

// Runs the lines of a stream; in a script every failure stops it.
bool runStream(Context& context, std::istream& in, const std::string& name, bool stopOnError,
               bool prompt) {
    std::string line;
    bool ok = true;
    for (int number = 1; !context.quit; ++number) {
        if (prompt) {
            fputs("zorvctl> ", stdout);
            fflush(stdout);
        }
        if (!std::getline(in, line)) break;
        if (!runLine(context, line, name + ":" + std::to_string(number), !prompt)) {
            ok = false;
            if (stopOnError) return false;
        }
        fflush(stdout);
    }
    return ok;
}

bool loadProperties(const std::string& path) {
    std::ifstream in(path);
    if (!in) return true;  // a first run starts without properties
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (line.empty() || line[0] == '#') continue;
        size_t eq = line.find('=');
        if (eq == std::string::npos || eq == 0 ||
            property_set(line.substr(0, eq).c_str(), line.substr(eq + 1).c_str()) != 0) {
            error(path + ":" + std::to_string(number) + ": not a property NAME=VALUE");
            return false;
        }
    }
    return true;
}

void collectPersistent(const char* key, const char* value, void* cookie) {
    if (strncmp(key, kPersistPrefix, strlen(kPersistPrefix)) == 0) {
        *static_cast<std::string*>(cookie) += std::string(key) + "=" + value + "\n";
    }
}

// Keeps what a device keeps over a reboot: the persist.* properties.
bool saveProperties(const std::string& path) {
    std::string text;
    property_list(collectPersistent, &text);
    std::ofstream file(path, std::ios::trunc);
    file << text;
    file.close();
    if (!file) error("cannot write " + path);
    return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
    std::string lib = ZORVCTL_DEFAULT_LIB, props, svg, connect;
    bool log = false;
    int port = -1;  // serve
    std::vector<Source> sources;
    int i = 1;
    for (; i < argc && argv[i][0] == '-'; ++i) {
        std::string option = argv[i];
        bool hasValue = i + 1 < argc;
        if (option == "--log") {
            log = true;
        } else if (option == "-h" || option == "--help") {
            fputs(kUsage, stdout);
            return 0;
        } else if (option == "--json") {
            setJsonOutput(true);
        } else if (option == "--connect") {
            bool address = hasValue && strchr(argv[i + 1], ':') != nullptr;
            connect = address ? argv[++i] : "127.0.0.1:" + std::to_string(kDefaultPort);
        } else if (hasValue && option == "--lib") {
            lib = argv[++i];
        } else if (hasValue && option == "--props") {
            props = argv[++i];
        } else if (hasValue && option == "--svg") {
            svg = argv[++i];
        } else if (hasValue && option == "-f") {
            sources.push_back({Source::kScript, argv[++i], {}});
        } else if (hasValue && option == "-c") {
            sources.push_back({Source::kCommand, argv[++i], {}});
        } else {
            error("bad option " + option);
            fputs(kUsage, stderr);
            return 2;
        }
    }
    if (i < argc && strcmp(argv[i], "serve") == 0) {
        bool portGiven = i + 3 == argc && strcmp(argv[i + 1], "--port") == 0;
        if ((!portGiven && i + 1 != argc) || !sources.empty() || !connect.empty()) {
            error("serve takes only [--port N], after --lib, --log and --props");
            return 2;
        }
        try {
            port = portGiven ? static_cast<int>(parseInteger(argv[i + 2], 0, 65535)) : kDefaultPort;
        } catch (const UsageError& e) {
            error(std::string("--port: ") + e.what());
            return 2;
        }
        i = argc;
    }
    if (i < argc)
        sources.push_back({Source::kWords, "", std::vector<std::string>(argv + i, argv + argc)});

    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(log || port >= 0 ? printLog : dropLog);
    // Properties exist before the service starts, as on a booted device.
    if (!props.empty() && !loadProperties(props)) return 2;

    // With --connect the local provider stays unused: commands run on the service's.
    if (!connect.empty()) {
        if (!props.empty() || port >= 0) {
            error("--props and serve belong to the service, not to --connect");
            return 2;
        }
        try {
            remote = std::make_unique<Client>(connect, log);
        } catch (const UsageError& e) {
            error("--connect " + connect + ": " + e.what());
            return 2;
        }
    }
    if (port >= 0) blockStopSignals();
    // The passthrough service host's way: open the library, look up the factory, call it.
    void* handle = dlopen(lib.c_str(), RTLD_NOW);
    if (handle == nullptr) {
        error(std::string("cannot load the provider library: ") + dlerror());
        return 2;
    }
    using Factory = IZorvCameraProvider* (*)(const char*);
    Factory fetch = reinterpret_cast<Factory>(dlsym(handle, kFactory));
    if (fetch == nullptr) {
        error(std::string("no provider factory: ") + dlerror());
        return 2;
    }

    int status = 0;
    {
        Context context;
        context.provider = fetch("default");
        if (context.provider == nullptr) {
            error(std::string(kFactory) + " returned no provider");
            return 2;
        }
        if (port >= 0) status = serve(context, port);
        int commandNumber = 0;
        for (const Source& source : sources) {
            bool ok = true;
            if (source.kind == Source::kScript) {
                std::ifstream in(source.text);
                if (!in) {
                    error("cannot read " + source.text);
                    status = 2;
                    break;
                }
                ok = runStream(context, in, source.text, true, false);
            } else if (source.kind == Source::kCommand) {
                ok = runLine(context, source.text, "-c " + std::to_string(++commandNumber), true);
            } else {
                ok = runWords(context, source.words, "arguments");
            }
            if (!ok) status = 1;
            if (!ok || context.quit) break;
        }
        if (sources.empty() && port < 0) {
            bool terminal = isatty(STDIN_FILENO);
            runStream(context, std::cin, "stdin", false, terminal);
            if (terminal) fputc('\n', stdout);
        }

        if (!svg.empty() && !runWords(context, {"svg", svg}, "--svg")) status = status ? status : 2;
        if (context.engineAttached) FDSession::getInstance()->attachEngine(nullptr);
    }
    if (!props.empty() && !saveProperties(props)) status = status ? status : 2;
    fflush(stdout);
    return status;
}
