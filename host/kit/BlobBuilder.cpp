// Camera metadata settings blobs for tests, fuzzers and benchmarks.
#include "kit/BlobBuilder.h"

#include <string.h>

#include <system/camera_metadata.h>

namespace kit {

namespace {
const camera_metadata_t* meta(const Bytes& b) {
    return reinterpret_cast<const camera_metadata_t*>(b.data());
}
}  // namespace

std::ostream& operator<<(std::ostream& os, const Item& item) {
    os << "{0x" << std::hex << item.tag << std::dec << " t" << int{item.type} << " [";
    for (uint8_t b : item.bytes) os << int{b} << " ";
    return os << "]}";
}

Item i32(uint32_t tag, const std::vector<int32_t>& values) {
    Bytes bytes(values.size() * 4);
    if (!values.empty()) memcpy(bytes.data(), values.data(), bytes.size());
    return {tag, TYPE_INT32, bytes};
}

Item u8(uint32_t tag, const Bytes& values) {
    return {tag, TYPE_BYTE, values};
}

ACameraMetadata_entry asEntry(const Item& item) {
    ACameraMetadata_entry e{
            item.tag,
            item.type,
            static_cast<uint32_t>(item.bytes.size() / camera_metadata_type_size[item.type]),
            {nullptr}};
    e.data.u8 = const_cast<uint8_t*>(item.bytes.data());
    return e;
}

Bytes blob(size_t entryCapacity, size_t dataCapacity, const std::vector<Item>& items) {
    Bytes bytes(calculate_camera_metadata_size(entryCapacity, dataCapacity));
    camera_metadata_t* m =
            place_camera_metadata(bytes.data(), bytes.size(), entryCapacity, dataCapacity);
    if (m == nullptr) return {};
    for (const Item& item : items) {
        const size_t count = item.bytes.size() / camera_metadata_type_size[item.type];
        add_camera_metadata_entry(m, item.tag, item.bytes.data(), count);
    }
    return bytes;
}

Bytes blob(const std::vector<Item>& items) {
    size_t data = 0;  // payloads of up to 4 bytes are held in their entry
    for (const Item& item : items) {
        if (item.bytes.size() > 4) data += (item.bytes.size() + 7) & ~size_t{7};
    }
    return blob(items.size(), data, items);
}

std::vector<Item> items(const Bytes& b) {
    std::vector<Item> out;
    if (b.size() < 48) return out;
    for (size_t i = 0; i < get_camera_metadata_entry_count(meta(b)); ++i) {
        camera_metadata_ro_entry_t e;
        if (get_camera_metadata_ro_entry(meta(b), i, &e) != 0) break;
        const size_t size = e.count * camera_metadata_type_size[e.type];
        out.push_back({e.tag, e.type, Bytes(e.data.u8, e.data.u8 + size)});
    }
    return out;
}

bool valid(const Bytes& b) {
    const size_t size = b.size();
    return size >= 48 && validate_camera_metadata_structure(meta(b), &size) == 0 &&
           get_camera_metadata_size(meta(b)) == size;
}

size_t entryCapacity(const Bytes& b) {
    return get_camera_metadata_entry_capacity(meta(b));
}

size_t dataCapacity(const Bytes& b) {
    return get_camera_metadata_data_capacity(meta(b));
}

std::shared_ptr<RequestMetadataQueue> queueWith(const std::vector<Bytes>& blobs) {
    auto queue = std::make_shared<RequestMetadataQueue>(1 << 16);
    for (const Bytes& b : blobs) queue->write(b.data(), b.size());
    return queue;
}

::android::hardware::hidl_vec<CaptureRequest> queuedRequests(const std::vector<Bytes>& blobs) {
    ::android::hardware::hidl_vec<CaptureRequest> requests(blobs.size());
    for (size_t i = 0; i < blobs.size(); ++i) {
        requests[i].frameNumber = static_cast<uint32_t>(i + 1);
        requests[i].fmqSettingsSize = blobs[i].size();
    }
    return requests;
}

Bytes drain(RequestMetadataQueue& queue) {
    Bytes bytes(queue.availableToRead());
    if (!queue.read(bytes.data(), bytes.size())) bytes.clear();
    return bytes;
}

}  // namespace kit
