// The cutils property calls of the host layer read and write like the device's.
#include <gtest/gtest.h>

#include <cutils/properties.h>
#include <hostfault/FaultInjection.h>

#include "support/Properties.h"

using testing_support::prop;

TEST(PropertiesTest, IntegerReadsFollowTheDeviceParsingRules) {
    property_set("test.int.plain", "42");
    property_set("test.int.hex", "0x10");
    property_set("test.int.trailing", "12abc");
    property_set("test.int.text", "abc");
    property_set("test.int.big", "4294967296");

    EXPECT_EQ(property_get_int32("test.int.plain", -1), 42);
    EXPECT_EQ(property_get_int32("test.int.hex", -1), 16);
    EXPECT_EQ(property_get_int32("test.int.trailing", -1), 12);
    EXPECT_EQ(property_get_int32("test.int.text", -1), -1);
    EXPECT_EQ(property_get_int32("test.int.big", -1), -1);
    EXPECT_EQ(property_get_int32("test.int.missing", -7), -7);
}

TEST(PropertiesTest, WritesRefuseOversizedValuesAndInjectedFailures) {
    EXPECT_EQ(property_set("test.value", std::string(PROPERTY_VALUE_MAX - 1, 'x').c_str()), 0);
    EXPECT_EQ(property_set("test.value", std::string(PROPERTY_VALUE_MAX, 'y').c_str()), -1);
    EXPECT_EQ(prop("test.value"), std::string(PROPERTY_VALUE_MAX - 1, 'x'));

    hostfault::arm(hostfault::kPropertySet, 1, /*skip=*/1);
    EXPECT_EQ(property_set("test.fault", "1"), 0);
    EXPECT_EQ(property_set("test.fault", "2"), -1);
    EXPECT_EQ(property_set("test.fault", "3"), 0);
    EXPECT_EQ(prop("test.fault"), "3");
}
