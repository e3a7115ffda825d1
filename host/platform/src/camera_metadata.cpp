// Camera metadata buffers: layout, allocation, entry add/find/update, append and validation.
#include <system/camera_metadata.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <hostfault/FaultInjection.h>

// The block is handled as raw bytes through memcpy: a buffer read from a queue may sit at
// any address, and the platform's layout is reproduced field by field.

namespace {

constexpr int OK = 0;
constexpr int ERROR = 1;
constexpr int NOT_FOUND = -2;  // -ENOENT

constexpr uint32_t kVersion = 1;
constexpr uint32_t kFlagSorted = 1;
constexpr size_t kDataAlignment = 8;
constexpr size_t kEntryAlignment = 4;

struct Header {
    uint32_t size;
    uint32_t version;
    uint32_t flags;
    uint32_t entry_count;
    uint32_t entry_capacity;
    uint32_t entries_start;
    uint32_t data_count;
    uint32_t data_capacity;
    uint32_t data_start;
    uint32_t padding;  // never written: it keeps whatever bytes the memory held
    uint64_t vendor_id;
};
static_assert(sizeof(Header) == 48, "header is 48 bytes");
static_assert(offsetof(Header, data_start) == 32 && offsetof(Header, vendor_id) == 40,
              "header field offsets");

struct Entry {
    uint32_t tag;
    uint32_t count;
    uint8_t value[4];  // the payload when it fits, otherwise the data offset
    uint8_t type;
    uint8_t reserved[3];

    uint32_t offset() const {
        uint32_t o;
        memcpy(&o, value, sizeof(o));
        return o;
    }
    void setOffset(uint32_t o) { memcpy(value, &o, sizeof(o)); }
};
static_assert(sizeof(Entry) == 16 && offsetof(Entry, type) == 12, "entry layout");

uint8_t* bytes(camera_metadata_t* m) {
    return reinterpret_cast<uint8_t*>(m);
}
const uint8_t* bytes(const camera_metadata_t* m) {
    return reinterpret_cast<const uint8_t*>(m);
}

constexpr size_t align(size_t v, size_t a) {
    return (v + a - 1) & ~(a - 1);
}

Header readHeader(const camera_metadata_t* m) {
    Header h;
    memcpy(&h, m, sizeof(h));
    return h;
}

// Writes every field but the padding.
void writeHeader(camera_metadata_t* m, const Header& h) {
    memcpy(bytes(m), &h, offsetof(Header, padding));
    memcpy(bytes(m) + offsetof(Header, vendor_id), &h.vendor_id, sizeof(h.vendor_id));
}

size_t entryPos(const Header& h, size_t index) {
    return h.entries_start + index * sizeof(Entry);
}

Entry readEntry(const camera_metadata_t* m, const Header& h, size_t index) {
    Entry e;
    memcpy(&e, bytes(m) + entryPos(h, index), sizeof(e));
    return e;
}

void writeEntry(camera_metadata_t* m, const Header& h, size_t index, const Entry& e) {
    memcpy(bytes(m) + entryPos(h, index), &e, sizeof(e));
}

uint8_t* dataAt(camera_metadata_t* m, const Header& h, size_t offset) {
    return bytes(m) + h.data_start + offset;
}

size_t payloadBytes(uint8_t type, size_t count) {
    return type < NUM_TYPES ? count * camera_metadata_type_size[type] : 0;
}

// Bytes an entry takes in the data area: none when its payload fits in the entry itself.
size_t dataBytes(uint8_t type, size_t count) {
    size_t payload = payloadBytes(type, count);
    return payload <= 4 ? 0 : align(payload, kDataAlignment);
}

void copyIn(uint8_t* dst, const void* src, size_t n) {
    if (n != 0) memcpy(dst, src, n);
}

// The header holds 32-bit sizes; larger blocks cannot be described.
bool fitsHeader(size_t entry_capacity, size_t data_capacity) {
    return entry_capacity <= UINT32_MAX && data_capacity <= UINT32_MAX &&
           calculate_camera_metadata_size(entry_capacity, data_capacity) <= UINT32_MAX;
}

camera_metadata_t* place(void* dst, size_t dst_size, size_t entry_capacity, size_t data_capacity) {
    if (dst == nullptr) return nullptr;
    size_t needed = calculate_camera_metadata_size(entry_capacity, data_capacity);
    if (needed > dst_size || !fitsHeader(entry_capacity, data_capacity)) return nullptr;
    auto* m = static_cast<camera_metadata_t*>(dst);
    Header h;
    h.size = static_cast<uint32_t>(needed);
    h.version = kVersion;
    h.flags = 0;
    h.entry_count = 0;
    h.entry_capacity = static_cast<uint32_t>(entry_capacity);
    h.entries_start = static_cast<uint32_t>(align(sizeof(Header), kEntryAlignment));
    h.data_count = 0;
    h.data_capacity = static_cast<uint32_t>(data_capacity);
    h.data_start = static_cast<uint32_t>(
            align(h.entries_start + entry_capacity * sizeof(Entry), kDataAlignment));
    h.padding = 0;
    h.vendor_id = CAMERA_METADATA_INVALID_VENDOR_ID;
    writeHeader(m, h);
    return m;
}

camera_metadata_t* allocate(size_t entry_capacity, size_t data_capacity) {
    if (!fitsHeader(entry_capacity, data_capacity)) return nullptr;
    size_t needed = calculate_camera_metadata_size(entry_capacity, data_capacity);
    void* buffer = calloc(1, needed);
    camera_metadata_t* m = place(buffer, needed, entry_capacity, data_capacity);
    if (m == nullptr) free(buffer);
    return m;
}

// Where the platform library would crash or corrupt memory, the stand-in stops the process and
// names the case, so that a product path reaching it shows up in host tests and fuzzers.
[[noreturn]] void undefinedOnPlatform(const char* call, const char* what) {
    fprintf(stderr, "camera_metadata: %s: %s (undefined behaviour on the platform)\n", call, what);
    abort();
}

const Header& checkedHeader(const camera_metadata_t* m, const char* call, Header& h) {
    if (m == nullptr) undefinedOnPlatform(call, "NULL metadata");
    h = readHeader(m);
    return h;
}

// The platform's bsearch over the tags: any matching entry of a sorted table.
bool binarySearch(const camera_metadata_t* m, const Header& h, uint32_t tag, size_t* index) {
    size_t lo = 0, hi = h.entry_count;
    while (lo < hi) {
        size_t mid = (lo + hi) / 2;
        uint32_t t = readEntry(m, h, mid).tag;
        if (tag < t) {
            hi = mid;
        } else if (tag > t) {
            lo = mid + 1;
        } else {
            *index = mid;
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" {

const size_t camera_metadata_type_size[NUM_TYPES] = {
        sizeof(uint8_t), sizeof(int32_t), sizeof(float),
        sizeof(int64_t), sizeof(double),  sizeof(camera_metadata_rational_t),
};

size_t calculate_camera_metadata_size(size_t entry_count, size_t data_count) {
    size_t size = align(sizeof(Header), kEntryAlignment) + entry_count * sizeof(Entry);
    size = align(size, kDataAlignment) + data_count;
    return align(size, kDataAlignment);  // so blocks can be stacked back to back
}

camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity) {
    if (hostfault::shouldFail(hostfault::kMetadataAllocate)) return nullptr;
    return allocate(entry_capacity, data_capacity);
}

camera_metadata_t* place_camera_metadata(void* dst, size_t dst_size, size_t entry_capacity,
                                         size_t data_capacity) {
    if (hostfault::shouldFail(hostfault::kMetadataAllocate)) return nullptr;
    return place(dst, dst_size, entry_capacity, data_capacity);
}

void free_camera_metadata(camera_metadata_t* metadata) {
    free(metadata);
}

size_t get_camera_metadata_size(const camera_metadata_t* metadata) {
    if (metadata == nullptr) return ERROR;
    return readHeader(metadata).size;
}

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata) {
    Header h;
    return checkedHeader(metadata, __func__, h).entry_count;
}

size_t get_camera_metadata_entry_capacity(const camera_metadata_t* metadata) {
    Header h;
    return checkedHeader(metadata, __func__, h).entry_capacity;
}

size_t get_camera_metadata_data_count(const camera_metadata_t* metadata) {
    Header h;
    return checkedHeader(metadata, __func__, h).data_count;
}

size_t get_camera_metadata_data_capacity(const camera_metadata_t* metadata) {
    Header h;
    return checkedHeader(metadata, __func__, h).data_capacity;
}

int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expected_size) {
    if (metadata == nullptr) return CAMERA_METADATA_VALIDATION_ERROR;
    const uintptr_t shift = align(reinterpret_cast<uintptr_t>(metadata), kDataAlignment) -
                            reinterpret_cast<uintptr_t>(metadata);
    if (expected_size != nullptr && *expected_size < sizeof(Header)) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    Header h = readHeader(metadata);
    if (expected_size != nullptr && h.size > *expected_size) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    if (h.entry_count > h.entry_capacity || h.data_count > h.data_capacity) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    // The platform adds the entry capacity without scaling it by the entry size; kept, since
    // blocks it accepts must be accepted here too.
    if (uint64_t{h.entries_start} + h.entry_capacity > h.data_start) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    if (uint64_t{h.data_start} + h.data_capacity > h.size) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }

    // Because of that quirk the table may run past the block; never read beyond what is known
    // to be there (the platform would read out of bounds).
    const uint64_t readable = expected_size != nullptr ? *expected_size : h.size;
    for (size_t i = 0; i < h.entry_count; ++i) {
        if (h.entries_start % kEntryAlignment != 0) return CAMERA_METADATA_VALIDATION_ERROR;
        if (entryPos(h, i + 1) > readable) return CAMERA_METADATA_VALIDATION_ERROR;
        Entry e = readEntry(metadata, h, i);
        if (e.type >= NUM_TYPES) return CAMERA_METADATA_VALIDATION_ERROR;
        if ((e.tag >> 16) < VENDOR_SECTION && get_camera_metadata_tag_type(e.tag) != e.type) {
            return CAMERA_METADATA_VALIDATION_ERROR;
        }
        size_t size = dataBytes(e.type, e.count);
        if (size != 0) {
            if ((uint64_t{h.data_start} + e.offset()) % kDataAlignment != 0 ||
                uint64_t{e.offset()} + size > h.data_capacity) {
                return CAMERA_METADATA_VALIDATION_ERROR;
            }
        } else if (e.count == 0 && e.offset() != 0) {
            return CAMERA_METADATA_VALIDATION_ERROR;
        }
    }
    return shift == 0 ? OK : CAMERA_METADATA_VALIDATION_SHIFTED;
}

int append_camera_metadata(camera_metadata_t* dst, const camera_metadata_t* src) {
    if (dst == nullptr || src == nullptr) return ERROR;
    Header d = readHeader(dst);
    const Header s = readHeader(src);
    if (uint64_t{d.entry_count} + s.entry_count > d.entry_capacity) return ERROR;
    if (uint64_t{d.data_count} + s.data_count > d.data_capacity) return ERROR;
    if (d.vendor_id != CAMERA_METADATA_INVALID_VENDOR_ID &&
        s.vendor_id != CAMERA_METADATA_INVALID_VENDOR_ID && d.vendor_id != s.vendor_id) {
        return ERROR;
    }

    memmove(bytes(dst) + entryPos(d, d.entry_count), bytes(src) + s.entries_start,
            s.entry_count * sizeof(Entry));
    memmove(dataAt(dst, d, d.data_count), bytes(src) + s.data_start, s.data_count);
    if (d.data_count != 0) {
        for (size_t i = d.entry_count; i < d.entry_count + s.entry_count; ++i) {
            Entry e = readEntry(dst, d, i);
            if (dataBytes(e.type, e.count) == 0) continue;
            e.setOffset(e.offset() + d.data_count);
            writeEntry(dst, d, i, e);
        }
    }
    if (d.entry_count == 0) {
        d.flags |= s.flags & kFlagSorted;
    } else if (s.entry_count != 0) {
        d.flags &= ~kFlagSorted;
    }
    d.entry_count += s.entry_count;
    d.data_count += s.data_count;
    if (d.vendor_id == CAMERA_METADATA_INVALID_VENDOR_ID) d.vendor_id = s.vendor_id;
    writeHeader(dst, d);
    return OK;
}

int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count) {
    int type = get_camera_metadata_tag_type(tag);
    if (type < 0) return ERROR;
    if (dst == nullptr) return ERROR;
    Header h = readHeader(dst);
    if (h.entry_count == h.entry_capacity) return ERROR;
    if (data_count != 0 && data == nullptr) return ERROR;
    if (data_count > UINT32_MAX) return ERROR;  // the entry's count field is 32 bits
    size_t size = dataBytes(type, data_count);
    if (size + h.data_count > h.data_capacity) return ERROR;

    Entry e = {};
    e.tag = tag;
    e.type = static_cast<uint8_t>(type);
    e.count = static_cast<uint32_t>(data_count);
    size_t payload = payloadBytes(e.type, data_count);
    if (size == 0) {
        copyIn(e.value, data, payload);
    } else {
        // Only the payload is written; the alignment tail keeps its bytes.
        e.setOffset(h.data_count);
        copyIn(dataAt(dst, h, h.data_count), data, payload);
        h.data_count += size;
    }
    writeEntry(dst, h, h.entry_count, e);
    h.entry_count++;
    h.flags &= ~kFlagSorted;
    writeHeader(dst, h);
    return OK;
}

int get_camera_metadata_entry(camera_metadata_t* src, size_t index,
                              camera_metadata_entry_t* entry) {
    if (src == nullptr || entry == nullptr) return ERROR;
    Header h = readHeader(src);
    if (index >= h.entry_count) return ERROR;
    Entry e = readEntry(src, h, index);
    entry->index = index;
    entry->tag = e.tag;
    entry->type = e.type;
    entry->count = e.count;
    entry->data.u8 = payloadBytes(e.type, e.count) > 4
                             ? dataAt(src, h, e.offset())
                             : bytes(src) + entryPos(h, index) + offsetof(Entry, value);
    return OK;
}

int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry) {
    static_assert(sizeof(camera_metadata_ro_entry_t) == sizeof(camera_metadata_entry_t),
                  "ro entry mirrors the entry");
    camera_metadata_entry_t e;
    int res = get_camera_metadata_entry(const_cast<camera_metadata_t*>(src), index,
                                        entry ? &e : nullptr);
    if (res == OK) memcpy(entry, &e, sizeof(e));
    return res;
}

int find_camera_metadata_entry(camera_metadata_t* src, uint32_t tag,
                               camera_metadata_entry_t* entry) {
    if (src == nullptr) return ERROR;
    Header h = readHeader(src);
    size_t index = 0;
    if (h.flags & kFlagSorted) {
        if (!binarySearch(src, h, tag, &index)) return NOT_FOUND;
    } else {
        while (index < h.entry_count && readEntry(src, h, index).tag != tag) ++index;
        if (index == h.entry_count) return NOT_FOUND;
    }
    return get_camera_metadata_entry(src, index, entry);
}

int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry) {
    camera_metadata_entry_t e;
    int res = find_camera_metadata_entry(const_cast<camera_metadata_t*>(src), tag,
                                         entry ? &e : nullptr);
    if (res == OK) memcpy(entry, &e, sizeof(e));
    return res;
}

int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, const void* data,
                                 size_t data_count, camera_metadata_entry_t* updated_entry) {
    if (dst == nullptr) return ERROR;
    Header h = readHeader(dst);
    if (index >= h.entry_count) return ERROR;
    if (data_count != 0 && data == nullptr) undefinedOnPlatform(__func__, "NULL values");
    // The platform would truncate the count; refuse instead.
    if (data_count > UINT32_MAX) return ERROR;
    Entry e = readEntry(dst, h, index);
    if (e.type >= NUM_TYPES) undefinedOnPlatform(__func__, "entry of unknown type");

    const size_t newBytes = dataBytes(e.type, data_count);
    const size_t oldBytes = dataBytes(e.type, e.count);
    const size_t payload = payloadBytes(e.type, data_count);
    if (newBytes != oldBytes) {
        // Unsigned wrap as on the platform: a shrink never fails for room.
        if (h.data_capacity < h.data_count + newBytes - oldBytes) return ERROR;
        if (oldBytes != 0) {
            const uint32_t cut = e.offset();
            if (uint64_t{cut} + oldBytes > h.data_count) {
                undefinedOnPlatform(__func__, "resized entry's data lies past the used data");
            }
            uint8_t* start = dataAt(dst, h, cut);
            memmove(start, start + oldBytes, h.data_count - cut - oldBytes);
            h.data_count -= oldBytes;
            for (size_t i = 0; i < h.entry_count; ++i) {
                Entry other = readEntry(dst, h, i);
                if (dataBytes(other.type, other.count) == 0 || other.offset() <= cut) continue;
                other.setOffset(other.offset() - oldBytes);
                writeEntry(dst, h, i, other);
            }
        }
        if (newBytes != 0) {
            e.setOffset(h.data_count);
            copyIn(dataAt(dst, h, h.data_count), data, payload);
            h.data_count += newBytes;
        }
    } else if (newBytes != 0) {
        if (uint64_t{e.offset()} + newBytes > h.data_capacity) {
            undefinedOnPlatform(__func__, "entry's data lies past the data area");
        }
        copyIn(dataAt(dst, h, e.offset()), data, payload);
    }
    // Going inline writes only the payload bytes: from an out-of-line value to no values the
    // old offset stays in place (a debuggable platform build asserts here, a release one not).
    if (newBytes == 0) copyIn(e.value, data, payload);
    e.count = static_cast<uint32_t>(data_count);
    writeEntry(dst, h, index, e);
    writeHeader(dst, h);
    if (updated_entry != nullptr) get_camera_metadata_entry(dst, index, updated_entry);
    return OK;
}

}  // extern "C"
