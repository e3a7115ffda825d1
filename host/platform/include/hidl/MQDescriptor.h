// Host stand-in for the fast message queue descriptor header: the queue flavours only.
#ifndef HOST_PLATFORM_HIDL_MQDESCRIPTOR_H
#define HOST_PLATFORM_HIDL_MQDESCRIPTOR_H

#include <stdint.h>

namespace android {
namespace hardware {

enum MQFlavor : uint32_t {
    // One reader and one writer; a write never overruns unread data.
    kSynchronizedReadWrite = 0x01,
    // Writers may overrun readers; not provided on the host.
    kUnsynchronizedWrite = 0x02,
};

}  // namespace hardware
}  // namespace android

#endif  // HOST_PLATFORM_HIDL_MQDESCRIPTOR_H
