// Readable GoogleTest output for the interface's crop records (found by argument lookup).
#ifndef TESTS_SUPPORT_TYPEPRINTERS_H
#define TESTS_SUPPORT_TYPEPRINTERS_H

#include <ostream>

#include <vendor/zorv/zorvprovider/zorvprovider/2.4/types.h>

#include "support/RecordingListener.h"

namespace vendor {
namespace zorv {
namespace zorvprovider {
namespace zorvprovider {
namespace V2_4 {

inline void PrintTo(const Crop& c, std::ostream* os) {
    *os << "{" << c.left << ", " << c.top << ", " << c.right << ", " << c.bottom << "}";
}

inline void PrintTo(const SceneControl& s, std::ostream* os) {
    *os << ::testing_support::describe(s);
}

}  // namespace V2_4
}  // namespace zorvprovider
}  // namespace zorvprovider
}  // namespace zorv
}  // namespace vendor

#endif  // TESTS_SUPPORT_TYPEPRINTERS_H
