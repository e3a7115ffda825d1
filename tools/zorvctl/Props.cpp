// The --props file, rewritten after every change of a persist.* property.
#include "Props.h"

#include <stdio.h>
#include <string.h>

#include <fstream>
#include <map>

#include <cutils/properties.h>

namespace zorvctl {

namespace {

constexpr const char* kPersistPrefix = "persist.";

bool persistent(const std::string& name) {
    return name.compare(0, strlen(kPersistPrefix), kPersistPrefix) == 0;
}

void collect(const char* key, const char* value, void* cookie) {
    if (persistent(key)) (*static_cast<std::map<std::string, std::string>*>(cookie))[key] = value;
}

}  // namespace

std::map<std::string, std::string> persistentProperties() {
    std::map<std::string, std::string> properties;
    property_list(collect, &properties);
    return properties;
}

namespace {

// The name of a NAME=VALUE line; empty for blank lines, comments and other text.
std::string nameOf(const std::string& line) {
    size_t eq = line.find('=');
    return line.empty() || line[0] == '#' || eq == std::string::npos ? "" : line.substr(0, eq);
}

void error(const std::string& message) {
    fflush(stdout);
    fprintf(stderr, "zorvctl: %s\n", message.c_str());
}

}  // namespace

bool PropsFile::load() {
    std::ifstream in(mPath);
    for (std::string line; std::getline(in, line);) {
        mLines.push_back(line);
        std::string name = nameOf(line);
        if (line.empty() || line[0] == '#') continue;
        if (name.empty() || property_set(name.c_str(), line.substr(name.size() + 1).c_str()) != 0) {
            error(mPath + ":" + std::to_string(mLines.size()) + ": not a property NAME=VALUE");
            return false;
        }
    }
    mSaved = persistentProperties();
    return true;
}

bool PropsFile::save() {
    std::map<std::string, std::string> properties = persistentProperties();
    if (properties == mSaved) return true;
    const std::map<std::string, std::string> now = properties;
    for (std::string& line : mLines) {
        auto it = properties.find(nameOf(line));
        if (it == properties.end()) continue;
        line = it->first + "=" + it->second;
        properties.erase(it);
    }
    for (const auto& [name, value] : properties) mLines.push_back(name + "=" + value);

    std::string temporary = mPath + ".tmp";
    std::ofstream file(temporary, std::ios::trunc);
    for (const std::string& line : mLines) file << line << '\n';
    file.close();
    if (!file || rename(temporary.c_str(), mPath.c_str()) != 0) {
        error("cannot write " + mPath);
        return false;
    }
    mSaved = now;
    return true;
}

}  // namespace zorvctl
