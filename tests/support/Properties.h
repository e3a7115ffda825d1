// System property helpers for tests.
#ifndef TESTS_SUPPORT_PROPERTIES_H
#define TESTS_SUPPORT_PROPERTIES_H

#include <string>

#include <cutils/properties.h>

namespace testing_support {

// The property's text, or "" when it was never set.
inline std::string prop(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

inline void setProp(const std::string& name, const std::string& value) {
    property_set(name.c_str(), value.c_str());
}

}  // namespace testing_support

#endif  // TESTS_SUPPORT_PROPERTIES_H
