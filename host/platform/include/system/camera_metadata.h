// Host stand-in for the platform's camera metadata buffer library, same buffer layout and calls.
#ifndef HOST_PLATFORM_SYSTEM_CAMERA_METADATA_H
#define HOST_PLATFORM_SYSTEM_CAMERA_METADATA_H

#include <stddef.h>
#include <stdint.h>

#include <system/camera_metadata_tags.h>

#ifdef __cplusplus
extern "C" {
#endif

// One contiguous block (header, entry table, data area) holding no pointers, so it can be
// copied byte for byte through a message queue. Accessed only through the calls below.
typedef struct camera_metadata camera_metadata_t;

enum {
    TYPE_BYTE = 0,      // uint8_t
    TYPE_INT32 = 1,     // int32_t
    TYPE_FLOAT = 2,     // float
    TYPE_INT64 = 3,     // int64_t
    TYPE_DOUBLE = 4,    // double
    TYPE_RATIONAL = 5,  // camera_metadata_rational_t
    NUM_TYPES
};

typedef struct camera_metadata_rational {
    int32_t numerator;
    int32_t denominator;
} camera_metadata_rational_t;

// Bytes per element of each type.
extern const size_t camera_metadata_type_size[NUM_TYPES];

#define CAMERA_METADATA_INVALID_VENDOR_ID UINT64_MAX

// A view of one entry: data points into the buffer (at the inline value or into the data area).
typedef struct camera_metadata_entry {
    size_t index;
    uint32_t tag;
    uint8_t type;
    size_t count;
    union {
        uint8_t* u8;
        int32_t* i32;
        float* f;
        int64_t* i64;
        double* d;
        camera_metadata_rational_t* r;
    } data;
} camera_metadata_entry_t;

typedef struct camera_metadata_ro_entry {
    size_t index;
    uint32_t tag;
    uint8_t type;
    size_t count;
    union {
        const uint8_t* u8;
        const int32_t* i32;
        const float* f;
        const int64_t* i64;
        const double* d;
        const camera_metadata_rational_t* r;
    } data;
} camera_metadata_ro_entry_t;

// Byte size of a block with room for the given entries and data bytes.
size_t calculate_camera_metadata_size(size_t entry_count, size_t data_count);

// calloc'd and placed; NULL on failure. Release with free_camera_metadata.
camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity);

// Lays an empty block out in dst (header fields only); NULL if dst is NULL or too small.
camera_metadata_t* place_camera_metadata(void* dst, size_t dst_size, size_t entry_capacity,
                                         size_t data_capacity);

void free_camera_metadata(camera_metadata_t* metadata);

// The block's total size from its header (1 for NULL).
size_t get_camera_metadata_size(const camera_metadata_t* metadata);

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata);
size_t get_camera_metadata_entry_capacity(const camera_metadata_t* metadata);
size_t get_camera_metadata_data_count(const camera_metadata_t* metadata);
size_t get_camera_metadata_data_capacity(const camera_metadata_t* metadata);

#define CAMERA_METADATA_VALIDATION_ERROR 1
#define CAMERA_METADATA_VALIDATION_SHIFTED 2

// 0 when sound; CAMERA_METADATA_VALIDATION_SHIFTED when sound but not 8-aligned;
// CAMERA_METADATA_VALIDATION_ERROR otherwise. expected_size may be NULL.
int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expected_size);

// Appends the used entries and data of src to dst. 0 on success, 1 on error.
int append_camera_metadata(camera_metadata_t* dst, const camera_metadata_t* src);

// Adds an entry of the tag's own type with data_count elements. 0 on success, 1 on error.
int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count);

// 0 and the entry on success, 1 on error, -2 (NOT_FOUND) when the tag is absent.
int find_camera_metadata_entry(camera_metadata_t* src, uint32_t tag,
                               camera_metadata_entry_t* entry);
int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry);

int get_camera_metadata_entry(camera_metadata_t* src, size_t index, camera_metadata_entry_t* entry);
int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry);

// Replaces the values of the entry at index, keeping its type. 0 on success, 1 on error.
// updated_entry, if not NULL, receives the entry as it now is.
int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, const void* data,
                                 size_t data_count, camera_metadata_entry_t* updated_entry);

// Names and types from the tag tables; NULL or -1 for tags the tables do not know.
const char* get_camera_metadata_section_name(uint32_t tag);
const char* get_camera_metadata_tag_name(uint32_t tag);
int get_camera_metadata_tag_type(uint32_t tag);

#ifdef __cplusplus
}
#endif

#endif  // HOST_PLATFORM_SYSTEM_CAMERA_METADATA_H
