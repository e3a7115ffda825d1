// Camera metadata settings blobs for tests, fuzzers and benchmarks: built from items, read back.
#ifndef HOST_KIT_BLOBBUILDER_H
#define HOST_KIT_BLOBBUILDER_H

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <ostream>
#include <vector>

#include "CameraControlCache.h"

namespace kit {

using Bytes = std::vector<uint8_t>;
using RequestMetadataQueue =
        ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::RequestMetadataQueue;
using CaptureRequest = ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::
        CameraControlCache::CaptureRequest;

// One metadata entry: its tag, library type and payload bytes.
struct Item {
    uint32_t tag;
    uint8_t type;
    Bytes bytes;
    bool operator==(const Item& o) const {
        return tag == o.tag && type == o.type && bytes == o.bytes;
    }
};
std::ostream& operator<<(std::ostream& os, const Item& item);

Item i32(uint32_t tag, const std::vector<int32_t>& values);
Item u8(uint32_t tag, const Bytes& values);
// The item as a cache entry; its data points into the item.
ACameraMetadata_entry asEntry(const Item& item);

// A settings blob with the given room holding the items in order; items the metadata library
// refuses (unknown tag, no room) are left out.
Bytes blob(size_t entryCapacity, size_t dataCapacity, const std::vector<Item>& items);
// The same with no spare room, as a camera framework sends its settings.
Bytes blob(const std::vector<Item>& items);
// The blob's entries in order (none if the blob is shorter than a header).
std::vector<Item> items(const Bytes& blob);
// Validates and its header size is the blob's size.
bool valid(const Bytes& blob);
size_t entryCapacity(const Bytes& blob);
size_t dataCapacity(const Bytes& blob);

// A queue holding the blobs, and one request per blob claiming it (frame numbers from 1).
std::shared_ptr<RequestMetadataQueue> queueWith(const std::vector<Bytes>& blobs);
::android::hardware::hidl_vec<CaptureRequest> queuedRequests(const std::vector<Bytes>& blobs);
// Everything the queue holds.
Bytes drain(RequestMetadataQueue& queue);

}  // namespace kit

#endif  // HOST_KIT_BLOBBUILDER_H
