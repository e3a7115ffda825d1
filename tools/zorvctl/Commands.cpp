// The command table: one command per interface method, plus the tool's own commands.
#include "Commands.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>

#include <cutils/properties.h>

#include "FDSession.h"
#include "Requests.h"
#include "State.h"
#include "Svg.h"

namespace zorvctl {

namespace {

using ::android::hardware::camera::device::V3_2::CaptureRequest;
using ::android::hardware::camera::device::V3_2::Stream;
using ::android::hardware::camera::device::V3_2::StreamConfiguration;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;

std::vector<std::string> usageWords(const Command& command) {
    return splitWords(command.usage);
}

size_t requiredCount(const std::vector<std::string>& usage) {
    size_t n = 0;
    for (const std::string& word : usage) n += word[0] != '[';
    return n;
}

bool variadic(const std::vector<std::string>& usage) {
    return !usage.empty() && usage.back().find("...") != std::string::npos;
}

// A usage word without its brackets and dots: the argument's name.
std::string plainName(const std::string& word) {
    std::string name;
    for (char c : word) {
        if (c != '[' && c != ']' && c != '.') name += c;
    }
    return name;
}

std::string shown(const Command& command) {
    return std::string(command.name) + (*command.usage ? " " : "") + command.usage;
}

sp<PrintingListener> listenerNamed(Context& c, const std::string& name) {
    sp<PrintingListener>& listener = c.listeners[name];
    if (listener == nullptr) {
        listener = new PrintingListener(name, [&c](const SceneControl& scene) {
            c.lastAnnounced = scene;
            c.announced = true;
            if (scene.crops.size() > 0) c.announcedCrops.push_back(scene.crops[0]);
        });
    }
    return listener;
}

const sp<IFDSession>& lastSession(const Context& c) {
    if (c.sessions.empty() || c.sessions.back() == nullptr) {
        throw CommandError("no session interface: run getFDSessionInterface first");
    }
    return c.sessions.back();
}

Stream parseStream(const std::string& text) {
    // ID:WxH or ID:WxH:FORMAT
    size_t colon = text.find(':');
    size_t x = text.find('x', colon == std::string::npos ? 0 : colon);
    if (colon == std::string::npos || x == std::string::npos) {
        throw UsageError(quote(text) + " is not a stream ID:WIDTHxHEIGHT[:FORMAT]");
    }
    size_t colon2 = text.find(':', x);
    Stream stream{};
    stream.id = static_cast<int32_t>(parseInteger(text.substr(0, colon), INT32_MIN, INT32_MAX));
    stream.width = static_cast<uint32_t>(
            parseInteger(text.substr(colon + 1, x - colon - 1), 0, UINT32_MAX));
    stream.height =
            static_cast<uint32_t>(parseInteger(text.substr(x + 1, colon2 - x - 1), 0, UINT32_MAX));
    // The platform's implementation-defined pixel format unless one is given.
    stream.format = colon2 == std::string::npos
                            ? 0x22
                            : static_cast<int32_t>(
                                      parseInteger(text.substr(colon2 + 1), INT32_MIN, INT32_MAX));
    return stream;
}

void printProperty(const char* key, const char* value, void*) {
    out(std::string(key) + "=" + value);
}

// Prints a call's true or false answer; false means the call was refused.
void answer(Context& c, bool accepted) {
    c.refused = !accepted;
    out(std::string("=> ") + boolName(accepted));
}

void help(Context&, const Args& args);

const char* const kUnits[] = {
        "Units, levels and modes:",
        "  Crops are L,T,R,B in the 1280 x 720 PTZ space, right and bottom exclusive. The camera's",
        "  full frame is 5440 x 3060, 4.25 times that; only scene texts use it.",
        "  DIRECTION: 1 PAN_LEFT, 2 PAN_RIGHT, 3 TILT_UP, 4 TILT_DOWN (shift by STEP, stopping at",
        "  the edges), 5 ZOOM_IN, 6 ZOOM_OUT (narrow or widen by STEP on each side, keeping 16:9),",
        "  7 APPLY_ZOOM_LIMIT (STEP unused); any other number re-applies the crop unchanged.",
        "  STEP: units of the 1280 x 720 space, clamped to 1..256.",
        "  LEVEL (setZoomInLimit): the narrowest crop width a zoom-in reaches: 1 1280, 2 640,",
        "  3 416, 4 320, 5 256; any other level 320, the width at start.",
        "  MODE (setTrackingMode): 0 off, manual moves work, switching to 0 returns to the",
        "  full frame; 1 and 2 track with the setScene scene in force; 3 runs as 2 and is",
        "  reported as 3; 4 and 5 track. Every mode but 0 refuses moves.",
        "  NUMBER (presets): savePreset stores 0..99 (others store nothing) in the properties",
        "  persist.camera.preset.NUMBER.l/.t/.r/.b; gotoPreset answers false for one not stored.",
        "  CAPABILITY: 0 not supported; other numbers are stored as given.",
        "A call that was accepted but changed nothing that \"status\" shows, and told no listener",
        "anything, adds \"zorvctl: note: COMMAND changed nothing\" on stderr.",
};

// clang-format off
const Command kCommands[] = {
    {"Listeners", "setListener", "LISTENER",
     "registers the named listener (created on first use); registering twice doubles its "
     "callbacks",
     [](Context& c, const Args& a) {
         check(c.provider->setListener(listenerNamed(c, a.str(0))));
         ++c.registrations[a.str(0)];
     }},
    {"Listeners", "clearListener", "LISTENER", "removes every registration of the listener",
     [](Context& c, const Args& a) {
         check(c.provider->clearListener(listenerNamed(c, a.str(0))));
         c.registrations[a.str(0)] = 0;
     }},

    {"Framing", "moveCamera", "CAMERA DIRECTION STEP",
     "moves the crop; DIRECTION is PAN_LEFT PAN_RIGHT TILT_UP TILT_DOWN ZOOM_IN ZOOM_OUT "
     "APPLY_ZOOM_LIMIT or a number; => true if moved",
     [](Context& c, const Args& a) {
         answer(c, result(c.provider->moveCamera(a.str(0), a.parse(1, parseDirection), a.i32(2))));
     }},
    {"Framing", "setZoomInLimit", "CAMERA LEVEL",
     "sets the narrowest zoom (1..5) and re-applies the crop",
     [](Context& c, const Args& a) {
         check(c.provider->setZoomInLimit(a.str(0), a.u32(1)));
         c.zoomLevel = a.u32(1);
     }},
    {"Framing", "savePreset", "CAMERA NUMBER", "saves the PTZ crop as preset NUMBER (0..99)",
     [](Context& c, const Args& a) { check(c.provider->savePreset(a.str(0), a.i32(1))); }},
    {"Framing", "gotoPreset", "CAMERA NUMBER", "recalls preset NUMBER; => true if applied",
     [](Context& c, const Args& a) {
         answer(c, result(c.provider->gotoPreset(a.str(0), a.i32(1))));
     }},
    {"Framing", "setScene", "[CROP...] [frame=WxH] [transition=N] [duration=N] [extra=N]",
     "sets the scene used by tracking modes 1 and 2; CROP is L,T,R,B; frame defaults to "
     "1280x720; => status",
     [](Context& c, const Args& a) {
         SceneControl scene = parseScene(a.rest(0));
         out(std::string("=> ") + statusName(result(c.provider->setScene(scene))));
     }},
    {"Framing", "setSceneJson", "TEXT",
     "relays a scene text to the listeners (quote it; \\n is a line feed); => status",
     [](Context& c, const Args& a) {
         out(std::string("=> ") + statusName(result(c.provider->setSceneJson(a.str(0)))));
     }},
    {"Framing", "getCurrentCameraCropArea", "", "=> the crop in force",
     [](Context& c, const Args&) {
         std::string reply;
         check(c.provider->getCurrentCameraCropArea(
                 [&reply](const SceneControl& scene) { reply = formatScene(scene); }));
         out("=> " + reply);
     }},

    {"Tracking", "setTrackingMode", "CAMERA MODE", "sets the tracking mode (0 off, 1..5)",
     [](Context& c, const Args& a) {
         check(c.provider->setTrackingMode(a.str(0), static_cast<TrackingMode>(a.i32(1))));
     }},
    {"Tracking", "getTrackingMode", "CAMERA", "=> the tracking mode",
     [](Context& c, const Args& a) {
         out("=> " + std::to_string(static_cast<int32_t>(result(c.provider->getTrackingMode(
                             a.str(0))))));
     }},
    {"Tracking", "setTracking",
     "RECT [action=N] [xVelocity=F] [yVelocity=F] [wVelocity=F]",
     "gives the tracker a track control; RECT is L,T,R,B; => status",
     [](Context& c, const Args& a) {
         TrackControl track = parseTrack(a.rest(0));
         out(std::string("=> ") + statusName(result(c.provider->setTracking(track))));
     }},

    {"Virtual cameras", "setVirtualCameraCapability", "CAMERA CAPABILITY",
     "stores a capability (0 not supported, 1 supported, any number)",
     [](Context& c, const Args& a) {
         check(c.provider->setVirtualCameraCapability(
                 a.str(0), static_cast<VirtualCameraCapability>(a.i32(1))));
     }},
    {"Virtual cameras", "getVirtualCameraCapability", "CAMERA", "=> the capability",
     [](Context& c, const Args& a) {
         out("=> " + std::to_string(static_cast<int32_t>(
                             result(c.provider->getVirtualCameraCapability(a.str(0))))));
     }},
    {"Virtual cameras", "setVirtualCameraList", "CAMERA [NAME...]",
     "stores the camera's virtual camera names",
     [](Context& c, const Args& a) {
         std::vector<hidl_string> names;
         for (const std::string& name : a.rest(1)) names.push_back(name);
         check(c.provider->setVirtualCameraList(a.str(0), names));
     }},
    {"Virtual cameras", "getVirtualCameraList", "CAMERA", "=> the names",
     [](Context& c, const Args& a) {
         std::string reply;
         check(c.provider->getVirtualCameraList(
                 a.str(0), [&reply](const hidl_vec<hidl_string>& names) {
                     reply = formatStrings(names);
                 }));
         out("=> " + reply);
     }},
    {"Virtual cameras", "setMaxVirtualCameras", "CAMERA MAX", "stores the maximum",
     [](Context& c, const Args& a) { check(c.provider->setMaxVirtualCameras(a.str(0), a.u32(1))); }},
    {"Virtual cameras", "getMaxVirtualCameras", "CAMERA", "=> the maximum",
     [](Context& c, const Args& a) {
         out("=> " + std::to_string(result(c.provider->getMaxVirtualCameras(a.str(0)))));
     }},
    {"Virtual cameras", "setVirtualCameraAvailability", "CAMERA BOOL",
     "switches virtual cameras on or off (true/false, 1/0, on/off)",
     [](Context& c, const Args& a) {
         check(c.provider->setVirtualCameraAvailability(a.str(0), a.flag(1)));
     }},
    {"Virtual cameras", "getVirtualCameraAvailability", "CAMERA", "=> the switch",
     [](Context& c, const Args& a) {
         out(std::string("=> ") +
             boolName(result(c.provider->getVirtualCameraAvailability(a.str(0)))));
     }},
    {"Virtual cameras", "setVirtualCameraInfo", "[RECORD...]",
     "replaces the info records; RECORD is text1=S,text2=S,entries=K:F:V;K:F:V,block=HEX,"
     "value1=N,value2=N,value3=N (fields optional)",
     [](Context& c, const Args& a) {
         std::vector<CameraInfo> infos;
         for (size_t i = 0; i < a.size(); ++i) infos.push_back(a.parse(i, parseCameraInfo));
         check(c.provider->setVirtualCameraInfo(infos));
     }},
    {"Virtual cameras", "getVirtualCameraInfo", "", "=> the info records",
     [](Context& c, const Args&) {
         std::string reply;
         check(c.provider->getVirtualCameraInfo(
                 [&reply](const hidl_vec<CameraInfo>& infos) { reply = formatInfos(infos); }));
         out("=> " + reply);
     }},

    {"Metadata", "setMetaData", "CAMERA TAG VALUE",
     "caches one int32 for TAG (a number or a name such as android.control.aeExposureCompensation)",
     [](Context& c, const Args& a) {
         check(c.provider->setMetaData(a.str(0), a.parse(1, parseTag), a.i32(2)));
     }},
    {"Metadata", "setMetaArray", "CAMERA TAG [VALUE...]", "caches an int32 array for TAG",
     [](Context& c, const Args& a) {
         std::vector<int32_t> values;
         for (size_t i = 2; i < a.size(); ++i) values.push_back(a.i32(i));
         check(c.provider->setMetaArray(a.str(0), a.parse(1, parseTag), values));
     }},
    {"Metadata", "cache add", "CAMERA TAG TYPE VALUE...",
     "CameraControlCache::addMetaData; TYPE is byte int32 float int64 double rational (N/D)",
     cacheAdd},
    {"Metadata", "cache remove", "CAMERA TAG", "CameraControlCache::removeMetaData", cacheRemove},
    {"Metadata", "cache removeCamera", "CAMERA", "CameraControlCache::removeCamera",
     cacheRemoveCamera},
    {"Metadata", "request", "CAMERA KIND...",
     "runs a batch of capture requests through the request queue and "
     "CameraControlCache::applyMetaData, then prints each request's settings as the device reads "
     "them; KIND is queue (settings in the queue), own (settings in the request) or empty, "
     "optionally followed by ,TAG=V:V... entries to put in its settings",
     request},

    {"Session", "getFDSessionInterface", "", "=> status and the session interface",
     [](Context& c, const Args&) {
         Status status = Status::OK;
         sp<IFDSession> session;
         check(c.provider->getFDSessionInterface(
                 [&](Status s, const sp<IFDSession>& i) { status = s, session = i; }));
         c.sessions.push_back(session);
         out(std::string("=> ") + statusName(status) + " " +
             (session == nullptr ? "null" : "session=" + std::to_string(c.sessions.size())));
     }},
    {"Session", "fd setCallback", "", "IFDSession::setCallback with a printing callback; => result",
     [](Context& c, const Args&) {
         sp<PrintingSessionCallback> callback = new PrintingSessionCallback();
         out("=> " + std::to_string(result(lastSession(c)->setCallback(callback))));
     }},
    {"Session", "fd configure", "[STREAM...]",
     "IFDSession::configure; STREAM is ID:WIDTHxHEIGHT[:FORMAT]; => result",
     [](Context& c, const Args& a) {
         StreamConfiguration configuration{};
         std::vector<Stream> streams;
         for (size_t i = 0; i < a.size(); ++i) streams.push_back(a.parse(i, parseStream));
         configuration.streams = streams;
         out("=> " + std::to_string(result(lastSession(c)->configure(configuration))));
     }},
    {"Session", "fd processCaptureRequest", "[FRAME]",
     "IFDSession::processCaptureRequest without settings; => result",
     [](Context& c, const Args& a) {
         CaptureRequest request{};
         request.frameNumber = a.size() > 0 ? a.u32(0) : c.nextFrame++;
         out("=> " + std::to_string(result(lastSession(c)->processCaptureRequest(request))));
     }},
    {"Session", "engine attach", "", "attaches a printing framing engine to the session",
     [](Context& c, const Args&) {
         FDSession::getInstance()->attachEngine(&c.engine);
         c.engineAttached = true;
     }},
    {"Session", "engine detach", "", "detaches it",
     [](Context& c, const Args&) {
         FDSession::getInstance()->attachEngine(nullptr);
         c.engineAttached = false;
     }},

    {"Camera provider", "setCallback", "", "ICameraProvider::setCallback (null); => status",
     [](Context& c, const Args&) {
         out(std::string("=> ") + statusName(result(c.provider->setCallback(nullptr))));
     }},
    {"Camera provider", "getVendorTags", "", "=> status and the tag sections",
     [](Context& c, const Args&) {
         std::string reply;
         check(c.provider->getVendorTags([&reply](Status s, const auto& sections) {
             reply = std::string(statusName(s)) + " sections=" + std::to_string(sections.size());
         }));
         out("=> " + reply);
     }},
    {"Camera provider", "getCameraIdList", "", "=> status and the camera ids",
     [](Context& c, const Args&) {
         std::string reply;
         check(c.provider->getCameraIdList([&reply](Status s, const hidl_vec<hidl_string>& ids) {
             reply = std::string(statusName(s)) + " " + formatStrings(ids);
         }));
         out("=> " + reply);
     }},
    {"Camera provider", "isSetTorchModeSupported", "", "=> status and the answer",
     [](Context& c, const Args&) {
         std::string reply;
         check(c.provider->isSetTorchModeSupported([&reply](Status s, bool supported) {
             reply = std::string(statusName(s)) + " " + boolName(supported);
         }));
         out("=> " + reply);
     }},
    {"Camera provider", "getCameraDeviceInterface_V1_x", "NAME", "=> status and the device",
     [](Context& c, const Args& a) {
         std::string reply;
         check(c.provider->getCameraDeviceInterface_V1_x(
                 a.str(0), [&reply](Status s, const auto& device) {
                     reply = std::string(statusName(s)) + (device ? " device" : " null");
                 }));
         out("=> " + reply);
     }},
    {"Camera provider", "getCameraDeviceInterface_V3_x", "NAME", "=> status and the device",
     [](Context& c, const Args& a) {
         std::string reply;
         check(c.provider->getCameraDeviceInterface_V3_x(
                 a.str(0), [&reply](Status s, const auto& device) {
                     reply = std::string(statusName(s)) + (device ? " device" : " null");
                 }));
         out("=> " + reply);
     }},

    {"Tool", "prop get", "NAME", "=> the system property's value",
     [](Context&, const Args& a) {
         char value[PROPERTY_VALUE_MAX];
         property_get(a.str(0).c_str(), value, "");
         out("=> " + quote(value));
     }},
    {"Tool", "prop set", "NAME VALUE", "sets a system property; => 0 or -1",
     [](Context&, const Args& a) {
         out("=> " + std::to_string(property_set(a.str(0).c_str(), a.str(1).c_str())));
     }},
    {"Tool", "prop list", "", "prints NAME=VALUE for every property set in this run",
     [](Context&, const Args&) { property_list(printProperty, nullptr); }},
    {"Tool", "status", "", "shows everything zorvctl can observe, one \"=> what: value\" line each",
     [](Context& c, const Args&) {
         for (const std::string& line : observe(c)) out("=> " + line);
     }},
    {"Tool", "complete", "LINE...",
     "=> what the last word of LINE completes to (a blank at its end: the next word)",
     [](Context& c, const Args& a) {
         std::string line;
         for (const std::string& word : a.rest(0)) line += (line.empty() ? "" : " ") + word;
         std::string reply;
         for (const std::string& word : completions(c, line)) reply += " " + word;
         out("=>" + reply);
     }},
    {"Tool", "svg", "FILE", "writes the picture of the framing now", 
     [](Context& c, const Args& a) { writeSvg(c, a.str(0)); }},
    {"Tool", "fold", "BOOL", "shows scene texts as their header line only (on), or in full (off)",
     [](Context&, const Args& a) { setFoldTexts(a.flag(0)); }},
    {"Tool", "help", "[COMMAND...]", "lists the commands, or explains one", help},
    {"Tool", "quit", "", "ends the session", [](Context& c, const Args&) { c.quit = true; }},
};
// clang-format on

const Command* find(const std::vector<std::string>& words, size_t& nameWords) {
    for (const Command& command : kCommands) {
        bool two = strchr(command.name, ' ') != nullptr;
        if (words.size() >= (two ? 2u : 1u) &&
            command.name == (two ? words[0] + " " + words[1] : words[0])) {
            nameWords = two ? 2 : 1;
            return &command;
        }
    }
    return nullptr;
}

// Commands named for a change (set, save, goto, move, clear, add, remove), except the session's,
// whose effects lie in its stream-handling half, out of zorvctl's sight.
bool changesState(const Command& command) {
    static const char* const kVerbs[] = {"set", "save", "goto", "move", "clear", "add", "remove"};
    const char* last = strrchr(command.name, ' ');
    last = last != nullptr ? last + 1 : command.name;
    for (const char* verb : kVerbs) {
        if (strncmp(last, verb, strlen(verb)) == 0) return strcmp(command.section, "Session") != 0;
    }
    return false;
}

// The values a usage word's argument takes, where they are few enough to list.
std::vector<std::string> valuesOf(const Context& c, const std::string& argument) {
    std::vector<std::string> values;
    if (argument == "COMMAND") {
        for (const Command& command : kCommands) values.push_back(splitWords(command.name)[0]);
    } else if (argument == "DIRECTION") {
        values = directionNames();
    } else if (argument == "TAG") {
        values = tagNames();
    } else if (argument == "BOOL") {
        values = {"true", "false"};
    } else if (argument == "CAMERA") {
        values.assign(c.cameras.begin(), c.cameras.end());
    } else if (argument == "LISTENER") {
        for (const auto& [name, listener] : c.listeners) values.push_back(name);
    }
    return values;
}

void help(Context&, const Args& a) {
    if (a.size() > 0) {
        size_t nameWords = 0;
        const Command* command = find(a.rest(0), nameWords);
        if (command == nullptr) throw CommandError("no command " + quote(a.rest(0)[0]));
        out("usage: " + shown(*command));
        out("  " + std::string(command->help));
        return;
    }
    const char* section = "";
    for (const Command& command : kCommands) {
        if (strcmp(section, command.section) != 0) {
            section = command.section;
            out(std::string(section) + ":");
        }
        out("  " + shown(command));
        out("      " + std::string(command.help));
    }
    out("Words are separated by blanks; \"double quotes\" group words; # starts a comment.");
    out("Numbers are decimal or 0x hex. CAMERA is any camera id, e.g. 0.");
    out("Output: \"> \" echoes a command, \"=> \" gives its result, \"cb NAME METHOD ARGS\" is a");
    out("listener callback, \"engine OP ARGS\" a framing engine call, \"|\" lines are the lines "
        "of");
    out("a text announced by the line before, \"req\" lines are decoded requests, \"log P/TAG:\"");
    out("lines are library log lines (with --log).");
    for (const char* line : kUnits) out(line);
}

}  // namespace

Args::Args(const Command& command, std::vector<std::string> words)
    : mUsage(usageWords(command)), mWords(std::move(words)) {}

std::vector<std::string> Args::rest(size_t from) const {
    return from < mWords.size() ? std::vector<std::string>(mWords.begin() + from, mWords.end())
                                : std::vector<std::string>();
}

int32_t Args::i32(size_t i) const {
    return static_cast<int32_t>(
            parse(i, [](const std::string& w) { return parseInteger(w, INT32_MIN, INT32_MAX); }));
}

uint32_t Args::u32(size_t i) const {
    return static_cast<uint32_t>(
            parse(i, [](const std::string& w) { return parseInteger(w, 0, UINT32_MAX); }));
}

bool Args::flag(size_t i) const {
    return parse(i, parseBool);
}

std::string Args::name(size_t i) const {
    if (mUsage.empty()) return "argument";
    return plainName(mUsage[std::min(i, mUsage.size() - 1)]);
}

const Command* findCommand(const std::string& name) {
    size_t nameWords = 0;
    const Command* command = find(splitWords(name), nameWords);
    return command != nullptr && command->name == name ? command : nullptr;
}

std::vector<const Command*> allCommands() {
    std::vector<const Command*> commands;
    for (const Command& command : kCommands) commands.push_back(&command);
    return commands;
}

void runCommand(Context& context, const std::vector<std::string>& words) {
    size_t nameWords = 0;
    const Command* command = find(words, nameWords);
    if (command == nullptr) {
        std::string name = words[0];
        if (words.size() > 1 &&
            (name == "prop" || name == "cache" || name == "fd" || name == "engine")) {
            name += " " + words[1];
        }
        throw UsageError("unknown command " + quote(name) + " (\"help\" lists the commands)");
    }
    std::vector<std::string> usage = usageWords(*command);
    std::vector<std::string> rest(words.begin() + nameWords, words.end());
    try {
        if (rest.size() < requiredCount(usage)) {
            throw UsageError("missing " + plainName(usage[rest.size()]));
        }
        if (!variadic(usage) && rest.size() > usage.size()) {
            throw UsageError("too many arguments");
        }
        if (!usage.empty() && usage[0] == "CAMERA") context.cameras.insert(rest[0]);
        // A call meant to change something that changed nothing observable and told no listener
        // anything gets a note; a refused call says so itself.
        bool watched = changesState(*command);
        std::vector<std::string> before = watched ? observe(context) : std::vector<std::string>();
        uint64_t callbacks = callbackCount();
        context.refused = false;
        command->run(context, Args(*command, rest));
        if (watched && !context.refused && callbacks == callbackCount() &&
            observe(context) == before) {
            emit(noteEvent(std::string(command->name) + " changed nothing"));
        }
    } catch (const UsageError& e) {
        throw UsageError(std::string(command->name) + ": " + e.what() +
                         "\nusage: " + shown(*command));
    }
}

std::vector<std::string> completions(const Context& c, const std::string& line) {
    std::vector<std::string> words;
    try {
        words = splitWords(line);
    } catch (const UsageError&) {
        return {};  // inside a quoted word
    }
    std::string prefix;
    if (!words.empty() && !line.empty() && !isspace(static_cast<unsigned char>(line.back()))) {
        prefix = words.back();
        words.pop_back();
    }
    std::vector<std::string> values;
    size_t nameWords = 0;
    const Command* command = find(words, nameWords);
    if (command != nullptr) {
        std::vector<std::string> usage = usageWords(*command);
        size_t position = words.size() - nameWords;
        if (variadic(usage) && position >= usage.size()) position = usage.size() - 1;
        if (position < usage.size()) values = valuesOf(c, plainName(usage[position]));
    } else if (words.empty()) {
        values = valuesOf(c, "COMMAND");
    } else if (words.size() == 1) {
        // The second word of a two-word name.
        for (const Command& command : kCommands) {
            std::vector<std::string> name = splitWords(command.name);
            if (name.size() == 2 && name[0] == words[0]) values.push_back(name[1]);
        }
    }
    std::vector<std::string> matches;
    for (const std::string& value : values) {
        if (strncasecmp(value.c_str(), prefix.c_str(), prefix.size()) == 0 &&
            (matches.empty() || matches.back() != value)) {
            matches.push_back(value);
        }
    }
    return matches;
}

void check(::android::hardware::Return<void> ret) {
    if (!ret.isOk()) throw CommandError("transport error: " + ret.description());
}

}  // namespace zorvctl
