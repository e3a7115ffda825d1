// Host stand-in for the NDK camera metadata entry record and its type codes.
#ifndef HOST_PLATFORM_CAMERA_NDKCAMERAMETADATA_H
#define HOST_PLATFORM_CAMERA_NDKCAMERAMETADATA_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The NDK header declares these only when __ANDROID_API__ >= 24, which the host toolchain
// never defines; here they are visible unconditionally.

enum {
    ACAMERA_TYPE_BYTE = 0,      // uint8_t
    ACAMERA_TYPE_INT32 = 1,     // int32_t
    ACAMERA_TYPE_FLOAT = 2,     // float
    ACAMERA_TYPE_INT64 = 3,     // int64_t
    ACAMERA_TYPE_DOUBLE = 4,    // double
    ACAMERA_TYPE_RATIONAL = 5,  // ACameraMetadata_rational
    ACAMERA_NUM_TYPES
};

typedef struct ACameraMetadata_rational {
    int32_t numerator;
    int32_t denominator;
} ACameraMetadata_rational;

// One metadata entry: count elements of the given type at data.
typedef struct ACameraMetadata_entry {
    uint32_t tag;
    uint8_t type;
    uint32_t count;
    union {
        uint8_t* u8;
        int32_t* i32;
        float* f;
        int64_t* i64;
        double* d;
        ACameraMetadata_rational* r;
    } data;
} ACameraMetadata_entry;

#ifdef __cplusplus
}
static_assert(sizeof(ACameraMetadata_rational) == 8, "rational is two int32");
static_assert(sizeof(ACameraMetadata_entry) == 24, "entry is 24 bytes on LP64");
static_assert(offsetof(ACameraMetadata_entry, tag) == 0 &&
                      offsetof(ACameraMetadata_entry, type) == 4 &&
                      offsetof(ACameraMetadata_entry, count) == 8 &&
                      offsetof(ACameraMetadata_entry, data) == 16,
              "entry field offsets");
#endif

#endif  // HOST_PLATFORM_CAMERA_NDKCAMERAMETADATA_H
