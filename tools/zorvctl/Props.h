// The --props file: system properties set at start, the persist.* ones written back after every
// change, as a device keeps them over a reboot.
#ifndef TOOLS_ZORVCTL_PROPS_H
#define TOOLS_ZORVCTL_PROPS_H

#include <map>
#include <string>
#include <vector>

namespace zorvctl {

// The persist.* system properties, by name.
std::map<std::string, std::string> persistentProperties();

class PropsFile {
  public:
    explicit PropsFile(std::string path) : mPath(std::move(path)) {}

    // Sets the properties of the file's NAME=VALUE lines (blank lines and # comments skipped);
    // a missing file is an empty one. False, with a message, for a line that is neither.
    bool load();
    // Writes the file again if a persist.* property changed since the last load or save: its
    // other lines stay as they are, persist.* lines get their values, new ones are appended.
    // The file is replaced as a whole, so an interruption leaves the old or the new one.
    bool save();

  private:
    std::string mPath;
    std::vector<std::string> mLines;            // the file's lines as last read or written
    std::map<std::string, std::string> mSaved;  // the persist.* properties then
};

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_PROPS_H
