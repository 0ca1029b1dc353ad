#include "host/session/ReadGroups.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using BoardFiles::ChipPlace;
using BoardFiles::Kind;
using BoardFiles::ObjectDescription;

const ChipPlace supplyPlace{ "scd(4):1:4", "", 0x58 };
const ChipPlace sameAddressBehindAMux{ "scd(4):1:4", "0x70=1", 0x58 };
const ChipPlace sameAddressOnAnotherBus{ "scd(4):1:5", "", 0x58 };
const ChipPlace inletsPlace{ "scd(4):1:5", "", 0x2E };
const ChipPlace outletsPlace{ "scd(4):1:5", "", 0x2C };

bool areTogether( const std::vector<ObjectDescription> &objects ) {
   const auto groups = readGroups( objects );
   return groups.front() == groups.back();
}

TEST( ReadGroupsTest, ObjectsOfOneChipAreReadTogetherWhateverTheirDriverObjects ) {
   EXPECT_TRUE( areTogether( { { .kind = Kind::Psu, .did = 21, .chips = { supplyPlace } },
                               { .kind = Kind::Slot, .did = 20, .chips = { supplyPlace } } } ) );
   for ( const ChipPlace &other : { sameAddressBehindAMux, sameAddressOnAnotherBus, inletsPlace } )
      EXPECT_FALSE( areTogether( { { .kind = Kind::Psu, .did = 21, .chips = { supplyPlace } },
                                   { .kind = Kind::Slot, .did = 20, .chips = { other } } } ) );
}

TEST( ReadGroupsTest, ACompositeIsReadWithAllOfItsChips ) {
   const ObjectDescription fan1{ .kind = Kind::Fan,
                                 .did = 201,
                                 .chips = { inletsPlace, outletsPlace } };
   const ObjectDescription fan2{ .kind = Kind::Fan,
                                 .did = 202,
                                 .chips = { inletsPlace, outletsPlace } };
   const ObjectDescription inlet{ .kind = Kind::Fan, .did = 40, .chips = { inletsPlace } };
   const ObjectDescription outlet{ .kind = Kind::Fan, .did = 41, .chips = { outletsPlace } };
   EXPECT_TRUE( areTogether( { fan1, fan2 } ) );
   EXPECT_FALSE( areTogether( { inlet, outlet } ) );
   EXPECT_TRUE( areTogether( { inlet, fan1, outlet } ) ); // it joins what was apart before
}

TEST( ReadGroupsTest, ObjectsOfOneDriverObjectAreReadTogether ) {
   EXPECT_TRUE(
      areTogether( { { .kind = Kind::Fan, .did = 1 }, { .kind = Kind::Psu, .did = 1 } } ) );
   EXPECT_FALSE( areTogether( { { .kind = Kind::System }, { .kind = Kind::System } } ) );
}

TEST( ReadGroupsTest, WhatHasNoValuesIsReadApartFromWhatHas ) {
   const ObjectDescription led{ .kind = Kind::Led, .did = 42, .chips = { inletsPlace } };
   const ObjectDescription fanSlot{ .kind = Kind::Slot, .did = 42, .chips = { inletsPlace } };
   const ObjectDescription eeprom{ .kind = Kind::Smbus, .did = 501, .chips = { supplyPlace } };
   EXPECT_FALSE( areTogether( { led, fanSlot } ) );
   EXPECT_TRUE( areTogether( { led, fanSlot, eeprom } ) );
}

} // namespace
} // namespace Host
