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
#include "LineEditor.h"
#include "Props.h"
#include "Server.h"
#include "Svg.h"

namespace {

using namespace zorvctl;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

constexpr const char* kUsage =
        "usage: zorvctl [--lib PATH] [--log] [--fold] [--props FILE] [--svg FILE] [--json]\n"
        "               [--connect [HOST:PORT]] [-f SCRIPT | -c COMMAND]... [COMMAND ARGS...]\n"
        "       zorvctl [--lib PATH] [--log] [--props FILE] serve [--port N]\n"
        "Runs the commands of each -f script (- for standard input) and -c option in order, then\n"
        "the command given by the remaining arguments; with none of these, reads commands from\n"
        "standard input, with line editing, history and Tab completion at a terminal.\n"
        "  --lib PATH    the provider library to load (default: the one built with zorvctl)\n"
        "  --log         print the library's log lines as \"log P/TAG: text\"\n"
        "  --fold        print scene texts as their header line only, without the \"|\" lines\n"
        "  --props FILE  load system properties (NAME=VALUE lines) at start; write the persist.*\n"
        "                ones back after every change, keeping the file's other lines\n"
        "  --svg FILE    write a picture of the framing at exit\n"
        "  --json        print each event as one JSON object a line\n"
        "  --connect [HOST:PORT]  run the commands on \"zorvctl serve\" (127.0.0.1:8734);\n"
        "                \"watch\" then prints the events the service reports\n"
        "  serve         keep one provider and serve it on 127.0.0.1 (port 8734, 0 for any):\n"
        "                a JSON API, an event stream and a web panel at http://127.0.0.1:PORT/\n"
        "Exit status: 0, 1 when a command failed (scripts and arguments stop at the first\n"
        "failure; standard input goes on to its end), 2 for bad options, files or library.\n"
        "\"zorvctl help\" lists the commands with the units, levels and modes.\n";

constexpr const char* kFactory = "HIDL_FETCH_IZorvCameraProvider";
// The instance name the device's service host registers the provider under.
constexpr const char* kInstance = "zorv/0";

PropsFile* sProps = nullptr;  // the --props file, written after every command

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
    bool ok = true;
    try {
        remote ? remote->run(words, context.quit) : runCommand(context, words);
    } catch (const std::exception& e) {
        error(where + ": " + e.what());
        ok = false;
    }
    // A failed command may have changed a property too.
    return (sProps == nullptr || sProps->save()) && ok;
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

// Runs the lines read(line) gives until it gives none; in a script every failure stops it.
template <typename Read>
bool runLines(Context& context, Read read, const std::string& name, bool stopOnError, bool echo) {
    std::string line;
    bool ok = true;
    for (int number = 1; !context.quit && read(line); ++number) {
        if (!runLine(context, line, name + ":" + std::to_string(number), echo)) {
            ok = false;
            if (stopOnError) return false;
        }
        fflush(stdout);
    }
    return ok;
}

bool runStream(Context& context, std::istream& in, const std::string& name, bool stopOnError) {
    return runLines(
            context, [&in](std::string& line) { return !!std::getline(in, line); }, name,
            stopOnError, true);
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
        } else if (option == "--fold") {
            setFoldTexts(true);
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
    PropsFile propsFile(props);
    if (!props.empty()) {
        if (!propsFile.load()) return 2;
        sProps = &propsFile;
    }

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
    // The passthrough service host's way: open the library, look up the factory, call it. With
    // --connect the commands run on the service's provider instead.
    sp<IZorvCameraProvider> provider;
    if (remote == nullptr) {
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
        provider = fetch(kInstance);
        if (provider == nullptr) {
            error(std::string(kFactory) + " returned no provider");
            return 2;
        }
    }

    int status = 0;
    {
        Context context;
        context.provider = std::move(provider);
        if (port >= 0) status = serve(context, port);
        int commandNumber = 0;
        for (const Source& source : sources) {
            bool ok = true;
            if (source.kind == Source::kScript) {
                std::ifstream file(source.text);
                if (source.text != "-" && !file) {
                    error("cannot read " + source.text);
                    status = 2;
                    break;
                }
                ok = source.text == "-" ? runStream(context, std::cin, "stdin", true)
                                        : runStream(context, file, source.text, true);
            } else if (source.kind == Source::kCommand) {
                ok = runLine(context, source.text, "-c " + std::to_string(++commandNumber), true);
            } else {
                ok = runWords(context, source.words, "arguments");
            }
            if (!ok) status = 1;
            if (!ok || context.quit) break;
        }
        if (sources.empty() && port < 0 && isatty(STDIN_FILENO)) {
            LineEditor editor(context);
            runLines(
                    context, [&editor](std::string& line) { return editor.read(line); }, "stdin",
                    false, false);
            fputc('\n', stdout);
        } else if (sources.empty() && port < 0 && !runStream(context, std::cin, "stdin", false)) {
            status = 1;
        }

        if (!svg.empty() && !runWords(context, {"svg", svg}, "--svg")) status = status ? status : 2;
        if (context.engineAttached) FDSession::getInstance()->attachEngine(nullptr);
    }
    fflush(stdout);
    return status;
}
