// The command table: what zorvctl keeps between commands, how a command's words are read.
#ifndef TOOLS_ZORVCTL_COMMANDS_H
#define TOOLS_ZORVCTL_COMMANDS_H

#include <stdint.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include <hidl/Status.h>
#include <utils/StrongPointer.h>

#include <vendor/zorv/zorvprovider/fdstream/1.0/IFDSession.h>
#include <vendor/zorv/zorvprovider/zorvprovider/2.4/IZorvCameraProvider.h>

#include "Format.h"
#include "Printer.h"

namespace zorvctl {

using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::IFDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProvider;

// Everything a session of commands works on; all of it is used from the main thread.
struct Context {
    sp<IZorvCameraProvider> provider;
    std::map<std::string, sp<PrintingListener>> listeners;  // by name, created on first use
    std::vector<sp<IFDSession>> sessions;  // every getFDSessionInterface answer; "fd" uses the last
    PrintingEngine engine;
    bool engineAttached = false;
    bool announced = false;  // whether lastAnnounced holds a crop seen by a listener
    SceneControl lastAnnounced;
    std::vector<Crop> announcedCrops;          // the first crop of every announcement, in order
    std::map<std::string, int> registrations;  // listener name: times registered through zorvctl
    std::set<std::string> cameras;             // every camera id a command has named
    uint32_t zoomLevel = 0;  // the last level given to setZoomInLimit; 0 before any
    bool refused = false;    // the last command's call answered false
    uint32_t nextFrame = 0;  // frame number of the next capture request
    bool quit = false;
};

struct Command;

// The words after a command's name. Reading one names it by the command's usage on failure.
class Args {
  public:
    Args(const Command& command, std::vector<std::string> words);

    size_t size() const { return mWords.size(); }
    const std::string& str(size_t i) const { return mWords[i]; }
    std::vector<std::string> rest(size_t from) const;
    int32_t i32(size_t i) const;
    uint32_t u32(size_t i) const;
    bool flag(size_t i) const;
    // Runs parse(word i), prefixing a UsageError with the argument's name.
    template <typename F>
    auto parse(size_t i, F parse) const -> decltype(parse(std::string())) {
        try {
            return parse(mWords[i]);
        } catch (const UsageError& e) {
            throw UsageError(name(i) + ": " + e.what());
        }
    }

  private:
    std::string name(size_t i) const;

    std::vector<std::string> mUsage;
    std::vector<std::string> mWords;
};

// A command: one or two words of name; usage words are NAME (required), [NAME] (optional),
// NAME... (one or more) and [NAME...] (any number).
struct Command {
    const char* section;
    const char* name;
    const char* usage;
    const char* help;
    void (*run)(Context& context, const Args& args);
};

// The command named by one or two words ("moveCamera", "cache add"), or null.
const Command* findCommand(const std::string& name);
// Every command, in the order help lists them.
std::vector<const Command*> allCommands();

// Runs one command. Throws UsageError (with the command's usage appended) for words that do
// not fit, CommandError for a command that failed.
void runCommand(Context& context, const std::vector<std::string>& words);

// The full words a word being typed may complete to, given the line up to the cursor: command
// names, then the values an argument takes where they are few (directions, tags, listeners).
std::vector<std::string> completions(const Context& context, const std::string& line);

// Checks a result that crossed the interface; a failed transport status fails the command.
template <typename T>
T result(::android::hardware::Return<T> ret) {
    if (!ret.isOk()) throw CommandError("transport error: " + ret.description());
    return ret;
}
void check(::android::hardware::Return<void> ret);

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_COMMANDS_H
