// Fault injection points of the host platform layers, armed by tests.
#ifndef HOST_PLATFORM_HOSTFAULT_FAULTINJECTION_H
#define HOST_PLATFORM_HOSTFAULT_FAULTINJECTION_H

namespace hostfault {

enum Point {
    kPropertySet,       // property_set returns -1 and stores nothing
    kMetadataAllocate,  // allocate/place_camera_metadata return NULL
    kQueueRead,         // MessageQueue::read returns false, consumes nothing
    kQueueWrite,        // MessageQueue::write returns false, writes nothing
    kPointCount
};

// After `skip` more passing calls at `point`, the next `count` calls fail.
// A negative count fails every call until disarm().
void arm(Point point, int count = 1, int skip = 0);
void disarm(Point point);
void disarmAll();

// Called by the layers at each point: true when this call must fail.
bool shouldFail(Point point);

}  // namespace hostfault

#endif  // HOST_PLATFORM_HOSTFAULT_FAULTINJECTION_H
