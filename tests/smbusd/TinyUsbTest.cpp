// The requests of the kernel's driver i2c-tiny-usb, without USB/IP.
#include "TinyUsbFixture.h"

#include <gmock/gmock.h>

namespace SmbusdTest {

namespace {

using namespace std::string_literals;

class TinyUsbTest : public TinyUsbFixture {};

TEST_F( TinyUsbTest, ReadsARegisterAfterARepeatedStart ) {
   EXPECT_EQ( io( false, 0x48, begin, "\0"s ), "" );
   EXPECT_TRUE( acknowledged() );
   EXPECT_EQ( io( true, 0x48, end, "", 2 ), "\x18\x80" );
   EXPECT_TRUE( acknowledged() );
   EXPECT_THAT( observed, ::testing::ElementsAre( "read of 2 bytes from 0x48 register 0x00 " ) );
}

TEST_F( TinyUsbTest, WritesARegister ) {
   EXPECT_EQ( io( false, 0x48, begin | end, "\x03\x19\x80" ), "" );
   EXPECT_TRUE( acknowledged() );
   EXPECT_EQ( thermometer.tOs(), 25.5 );
}

TEST_F( TinyUsbTest, ReportsAMissingAcknowledge ) {
   EXPECT_EQ( io( true, 0x49, begin | end, "", 1 ), "\xFF" );
   EXPECT_FALSE( acknowledged() );
   io( false, 0x48, begin, "\0"s );
   EXPECT_TRUE( acknowledged() ); // it is not known yet
   io( true, 0x49, end, "", 1 );
   EXPECT_FALSE( acknowledged() ); // another address after a repeated start
   io( true, 0x48, begin | end, "", 1 );
   EXPECT_TRUE( acknowledged() );
   io( false, 0x31, begin | end, "\x01\x00\xEE"s );
   EXPECT_FALSE( acknowledged() ); // of the data byte
}

TEST_F( TinyUsbTest, UsesTheCommandWidthOfTheChip ) {
   EXPECT_EQ( io( false, 0x31, begin, "\x02\x10" ), "" );
   EXPECT_EQ( io( true, 0x31, end, "", 1 ), "\x02" );
   io( false, 0x31, begin | end, "\x01\x00\x08\x09"s );
   EXPECT_EQ( wide.written, "\x08\x09" );
}

TEST_F( TinyUsbTest, DropsMessagesThatWereNotEnded ) {
   io( false, 0x48, begin, "\x03" );
   EXPECT_EQ( io( true, 0x48, begin | end, "", 2 ), "\x18\x80" ); // still the temperature
}

TEST_F( TinyUsbTest, HasTheDescriptorsThatTheDriverExpects ) {
   const auto descriptor = device.answer( { 0x80, 6, 0x0100, 0, 64 } );
   ASSERT_TRUE( descriptor );
   EXPECT_EQ( descriptor->size(), 18u );
   EXPECT_EQ( descriptor->substr( 8, 4 ), "\x03\x04\x31\xC6" ); // 0403:c631
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0200, 0, 9 } )->size(),
              9u ); // cut to the requested length
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0200, 0, 255 } )->size(), 18u );
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0303, 0x0409, 255 } ),
              "\x16\x03s\0c\0d\0(\0004\0)\0:\0001\0:\0002\0"s );
   EXPECT_FALSE( device.answer( { 0x80, 6, 0x0600, 0, 10 } ) ); // for another speed: a stall
   // I2C messages and the SMBus protocols made of them, without quick commands and block reads.
   EXPECT_EQ( device.answer( { 0xC1, 1, 0, 0, 4 } ), "\x09\x00\xfe\x0e"s );
}

} // namespace

} // namespace SmbusdTest
