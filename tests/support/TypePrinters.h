// Readable GoogleTest output for the interface's crop records (found by argument lookup).
#ifndef TESTS_SUPPORT_TYPEPRINTERS_H
#define TESTS_SUPPORT_TYPEPRINTERS_H

#include <ostream>

#include "kit/Format.h"

namespace vendor::zorv::zorvprovider::zorvprovider::V2_4 {

inline void PrintTo(const Crop& c, std::ostream* os) {
    *os << ::kit::formatCrop(c);
}

inline void PrintTo(const SceneControl& s, std::ostream* os) {
    *os << ::kit::formatScene(s);
}

}  // namespace vendor::zorv::zorvprovider::zorvprovider::V2_4

#endif  // TESTS_SUPPORT_TYPEPRINTERS_H
