// Host stand-in for bionic's property limits, which cutils/properties.h includes.
#ifndef HOST_PLATFORM_SYS_SYSTEM_PROPERTIES_H
#define HOST_PLATFORM_SYS_SYSTEM_PROPERTIES_H

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92

#endif  // HOST_PLATFORM_SYS_SYSTEM_PROPERTIES_H
