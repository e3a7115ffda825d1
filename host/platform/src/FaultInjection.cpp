// Fault injection counters shared by every host platform layer in the process.
#include <hostfault/FaultInjection.h>

#include <atomic>
#include <mutex>

namespace hostfault {
namespace {

struct Arm {
    int skip = 0;
    int count = 0;
};

std::mutex sLock;  // guards sArms
Arm sArms[kPointCount];
std::atomic<bool> sAnyArmed{false};

void refreshAnyArmed() {
    bool any = false;
    for (const Arm& a : sArms) any = any || a.count != 0;
    sAnyArmed = any;
}

}  // namespace

void arm(Point point, int count, int skip) {
    std::lock_guard<std::mutex> lock(sLock);
    sArms[point] = Arm{skip, count};
    refreshAnyArmed();
}

void disarm(Point point) {
    std::lock_guard<std::mutex> lock(sLock);
    sArms[point] = Arm{};
    refreshAnyArmed();
}

void disarmAll() {
    std::lock_guard<std::mutex> lock(sLock);
    for (Arm& a : sArms) a = Arm{};
    sAnyArmed = false;
}

bool shouldFail(Point point) {
    if (!sAnyArmed) return false;  // the common case costs one atomic load
    std::lock_guard<std::mutex> lock(sLock);
    Arm& a = sArms[point];
    if (a.count == 0) return false;
    if (a.skip > 0) {
        --a.skip;
        return false;
    }
    if (a.count > 0 && --a.count == 0) refreshAnyArmed();
    return true;
}

}  // namespace hostfault
