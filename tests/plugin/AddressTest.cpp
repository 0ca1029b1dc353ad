// The bus address of a device, from the "address" object of its document.
#include "OrbisGeneric/Topology.h"
#include "support/PluginFixture.h"

#include <cstring>
#include <rapidjson/document.h>

namespace {

class AddressTest : public PluginFixture {
 protected:
   static AhamAddress fill( const std::string &object ) {
      rapidjson::Document document;
      document.Parse( json( object ) );
      AhamAddress address;
      memset( &address, 0xFF, sizeof( address ) );
      Topology::fillAddressFromJSON( document, address );
      return address;
   }
};

TEST_F( AddressTest, OnlyTheAddressSizeHasADefaultOfOne ) {
   const AhamAddress address = fill( "{'address':72}" );
   EXPECT_EQ( address.offset, 0u );
   EXPECT_EQ( address.address, 72u );
   EXPECT_EQ( address.addrSize, 1u );
   EXPECT_EQ( address.bus + address.accel + address.spare + address.busTimeout +
                 address.extraDelay + address.writeDelay + address.readDelay,
              0u );
}

TEST_F( AddressTest, CutsEachValueToTheWidthOfItsField ) {
   EXPECT_EQ( fill( "{'address':427}" ).address, 0x2Bu ); // 0x1AB
   EXPECT_EQ( fill( "{'address':1,'busTimeout':9}" ).busTimeout, 1u );
   EXPECT_EQ( fill( "{'address':1,'writeDelay':6}" ).writeDelay, 2u );
   EXPECT_EQ( fill( "{'address':1,'readDelay':7}" ).readDelay, 3u );
   EXPECT_EQ( fill( "{'address':1,'extraDelay':3}" ).extraDelay, 1u );
   EXPECT_EQ( fill( "{'address':1,'extraDelay':6}" ).extraDelay, 0u );
   EXPECT_EQ( fill( "{'address':1,'accel':130}" ).accel, 2u );
}

TEST_F( AddressTest, PacksItsFieldsFromTheLowestBitUpward ) {
   const AhamAddress address = fill( "{'address':1,'accel':1,'busTimeout':1,'addrSize':2,"
                                     "'extraDelay':1,'writeDelay':1,'readDelay':1}" );
   uint32_t words[2];
   memcpy( words, &address, sizeof( words ) );
   EXPECT_EQ( words[0], 0u );
   EXPECT_EQ( words[1], 1u | 1u << 14 | 1u << 22 | 2u << 25 | 1u << 27 | 1u << 28 | 1u << 30 );
}

TEST_F( AddressTest, AnAddressSizeIsOneOrTwo ) {
   EXPECT_EQ( fill( "{'address':1,'addrSize':2}" ).addrSize, 2u );
   EXPECT_EQ( fill( "{'address':1,'addrSize':5}" ).addrSize, 1u );
   const auto complaint = ::testing::HasSubstr(
      "Assertion `addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4' failed" );
   EXPECT_DEATH( fill( "{'address':1,'addrSize':4}" ), complaint );
   EXPECT_DEATH( fill( "{'address':1,'addrSize':0}" ), complaint );
   EXPECT_DEATH( fill( "{'address':1,'addrSize':3}" ), complaint );
}

TEST_F( AddressTest, IsAnObjectWithAnAddress ) {
   EXPECT_DEATH( fill( "1" ), ::testing::HasSubstr( "Assertion `value.IsObject()'" ) );
   EXPECT_DEATH( fill( "{}" ),
                 ::testing::HasSubstr( R"(Assertion `value.HasMember( "address" )')" ) );
}

} // namespace
