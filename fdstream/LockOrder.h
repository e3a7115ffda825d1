// Ranked recursive mutexes: the lock order of the service, checked per thread where enabled.
#ifndef FDSTREAM_LOCKORDER_H
#define FDSTREAM_LOCKORDER_H

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include <mutex>

// The three locks of the service, as ranks. A thread may take a lock while it holds locks of
// lower or equal order only, and holds at most one lock of each rank. So the provider lock comes
// first, the session lock may be taken inside it, never the reverse; the cache lock is a leaf:
// it may be taken inside either, and nothing is taken while it is held. Calling out (a listener,
// an engine) always takes the provider or session lock first, so that too is caught while the
// cache lock is held. Two providers' locks held by one thread (a listener of one calling
// another) would deadlock against the reverse call, so they count as one rank taken twice.
// Re-entering a held lock is checked the same way: it would be the same inversion on a path
// where the outer lock is not already held.
//
// With ZORV_LOCK_ORDER_CHECKS defined (the host build defines it for every build type but
// Release) each lock records, per thread, which ranks are held and aborts with a message on the
// first request that breaks the order. Without it the lock and unlock bodies are those of the
// std::recursive_mutex inside: the device build carries no check and no cost. The switch changes
// only those bodies, never the type: RankedRecursiveMutex<rank> holds exactly one
// std::recursive_mutex either way, so two libraries that share FDSession::mLock agree on its
// layout however each was built. Its lock, try_lock and unlock are hidden, so each library runs
// its own: a library built without the checks is not checked, and the locks and unlocks each
// records pair up.
//
// This header lives beside FDSession.h because the session's lock is declared there and the
// session library builds against that directory; the provider and the cache include it from
// the same place.

namespace vendor::zorv::zorvprovider {

enum class LockRank {
    kProvider,  // ZorvCameraProvider::mLock
    kSession,   // FDSession::mLock
    kCache,     // CameraControlCache::mLock
};

namespace lockorder {

#if defined(ZORV_LOCK_ORDER_CHECKS)
constexpr bool kEnabled = true;
#else
constexpr bool kEnabled = false;
#endif

struct RankRule {
    const char* name;
    int order;  // a lock may be taken while holding only locks of order <= its own
    bool leaf;  // nothing is taken while it is held
};

inline const RankRule& ruleOf(LockRank rank) {
    static const RankRule kRules[] = {
            {"provider lock (ZorvCameraProvider::mLock)", 1, false},
            {"session lock (FDSession::mLock)", 2, false},
            {"cache lock (CameraControlCache::mLock)", 3, true},
    };
    return kRules[static_cast<int>(rank)];
}

// The distinct locks a thread holds, each with its recursion depth. One instance per thread
// for the whole process: the function is inline with default visibility, so every library
// resolves it to one definition.
struct HeldLocks {
    static constexpr size_t kMax = 8;
    struct Held {
        const void* mutex;
        LockRank rank;
        unsigned depth;
    };
    Held held[kMax];
    size_t count;
};

inline HeldLocks& heldLocks() {
    thread_local HeldLocks locks{};
    return locks;
}

[[noreturn]] inline void fail(const char* requested, const char* held, const char* why) {
    fprintf(stderr, "lock order violation: %s requested while this thread holds %s%s\n", requested,
            held, why);
    abort();
}

inline void checkRequest(const void* mutex, LockRank rank) {
    const RankRule& wanted = ruleOf(rank);
    const HeldLocks& locks = heldLocks();
    for (size_t i = 0; i < locks.count; ++i) {
        const HeldLocks::Held& h = locks.held[i];
        if (h.mutex == mutex) continue;
        const RankRule& held = ruleOf(h.rank);
        if (held.leaf) fail(wanted.name, held.name, ", which is a leaf");
        if (h.rank == rank) fail(wanted.name, held.name, " of another instance");
        if (held.order > wanted.order) fail(wanted.name, held.name, ", which must come after it");
    }
}

inline void acquired(const void* mutex, LockRank rank) {
    HeldLocks& locks = heldLocks();
    for (size_t i = 0; i < locks.count; ++i) {
        if (locks.held[i].mutex == mutex) {
            ++locks.held[i].depth;
            return;
        }
    }
    if (locks.count == HeldLocks::kMax) fail(ruleOf(rank).name, "too many other locks", "");
    locks.held[locks.count++] = {mutex, rank, 1};
}

inline void released(const void* mutex, LockRank rank) {
    HeldLocks& locks = heldLocks();
    for (size_t i = 0; i < locks.count; ++i) {
        if (locks.held[i].mutex != mutex) continue;
        if (--locks.held[i].depth == 0) locks.held[i] = locks.held[--locks.count];
        return;
    }
    fprintf(stderr, "lock order violation: %s released by a thread that does not hold it\n",
            ruleOf(rank).name);
    abort();
}

}  // namespace lockorder

// A std::recursive_mutex that checks the lock order of its rank on every lock and try_lock
// where the checks are enabled.
template <LockRank kRank>
class RankedRecursiveMutex {
  public:
    RankedRecursiveMutex() = default;
    RankedRecursiveMutex(const RankedRecursiveMutex&) = delete;
    RankedRecursiveMutex& operator=(const RankedRecursiveMutex&) = delete;

    __attribute__((visibility("hidden"))) void lock() {
        if constexpr (lockorder::kEnabled) lockorder::checkRequest(this, kRank);
        mMutex.lock();
        if constexpr (lockorder::kEnabled) lockorder::acquired(this, kRank);
    }
    __attribute__((visibility("hidden"))) bool try_lock() {
        if constexpr (lockorder::kEnabled) lockorder::checkRequest(this, kRank);
        if (!mMutex.try_lock()) return false;
        if constexpr (lockorder::kEnabled) lockorder::acquired(this, kRank);
        return true;
    }
    __attribute__((visibility("hidden"))) void unlock() {
        if constexpr (lockorder::kEnabled) lockorder::released(this, kRank);
        mMutex.unlock();
    }

  private:
    std::recursive_mutex mMutex;
};

static_assert(sizeof(RankedRecursiveMutex<LockRank::kSession>) == sizeof(std::recursive_mutex),
              "the session lock's layout must not depend on the lock-order switch");

}  // namespace vendor::zorv::zorvprovider

#endif  // FDSTREAM_LOCKORDER_H
