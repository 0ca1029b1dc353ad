// A simulated bus as the USB device that the kernel's driver i2c-tiny-usb knows. The test is the
// kernel: it speaks USB/IP over a socket, with the driver's requests.
#include "ManualClock.h"
#include "PrivateFolder.h"
#include "simulator/board/SimulatedBoard.h"
#include "simulator/chips/Cpld.h"
#include "simulator/chips/LM75.h"
#include "smbusd/export/ExportedAdapter.h"
#include "smbusd/export/TinyUsb.h"
#include "smbusd/export/VhciPort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace Smbusd;
using namespace Smbusd::Export;
using namespace std::string_literals;
using ::testing::HasSubstr;

// A register of a two-byte command, as the CPLDs have them.
class WideChip final : public Chip {
 public:
   WideChip() : Chip( "wide" ) {}
   void reset() override {}
   unsigned commandBytes() const override { return 2; }
   bool command( uint32_t reg ) override {
      register_ = reg;
      return true;
   }
   bool write( uint8_t byte ) override {
      written += static_cast<char>( byte );
      return byte != 0xEE; // which it doesn't take
   }
   uint8_t read() override { return static_cast<uint8_t>( register_ >> 8 ); }
   std::string written;

 private:
   uint32_t register_ = 0;
};

class TinyUsbTest : public ::testing::Test {
 protected:
   TinyUsbTest() {
      thermometer.temperatureIs( 24.5 );
      segment.attach( 0x48, thermometer );
      segment.attach( 0x31, wide );
   }
   // The driver's request for one message: direction, flags of the message, address, and whether it
   // begins and ends.
   ControlAnswer io( bool read, uint8_t address, unsigned ends, const std::string &data,
                     uint16_t count = 0 ) {
      return device.answer( { static_cast<uint8_t>( read ? 0xC1 : 0x41 ),
                              static_cast<uint8_t>( 4 + ends ), static_cast<uint16_t>( read ),
                              address, static_cast<uint16_t>( read ? count : data.size() ),
                              data } );
   }
   bool acknowledged() { return device.answer( { 0xC1, 3, 0, 0, 1 } ) == "\x01"; }

   ManualClock clock;
   LM75 thermometer{ "temp-front", clock };
   WideChip wide;
   BusSegment segment;
   std::mutex mutex;
   std::vector<std::string> observed;
   SimulatedBus bus{ segment, mutex, [this]( const Transfer &transfer, const auto &result ) {
                       observed.push_back( describe( transfer ) + " " + result.outcome.error );
                    } };
   TinyUsb device{ bus, "scd(4):1:2" };
   static constexpr unsigned begin = 1, end = 2;
};

TEST_F( TinyUsbTest, ReadsARegisterBehindARepeatedStart ) {
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

TEST_F( TinyUsbTest, TellsThatNobodyAcknowledges ) {
   EXPECT_EQ( io( true, 0x49, begin | end, "", 1 ), "\xFF" );
   EXPECT_FALSE( acknowledged() );
   io( false, 0x48, begin, "\0"s );
   EXPECT_TRUE( acknowledged() ); // which isn't known yet
   io( true, 0x49, end, "", 1 );
   EXPECT_FALSE( acknowledged() ); // of another address behind a repeated start
   io( true, 0x48, begin | end, "", 1 );
   EXPECT_TRUE( acknowledged() );
   io( false, 0x31, begin | end, "\x01\x00\xEE"s );
   EXPECT_FALSE( acknowledged() ); // of the data byte
}

TEST_F( TinyUsbTest, TakesAsManyBytesForTheCommandAsTheChipDoes ) {
   EXPECT_EQ( io( false, 0x31, begin, "\x02\x10" ), "" );
   EXPECT_EQ( io( true, 0x31, end, "", 1 ), "\x02" );
   io( false, 0x31, begin | end, "\x01\x00\x08\x09"s );
   EXPECT_EQ( wide.written, "\x08\x09" );
}

TEST_F( TinyUsbTest, ForgetsWhatWasBegunAndNeverEnded ) {
   io( false, 0x48, begin, "\x03" );
   EXPECT_EQ( io( true, 0x48, begin | end, "", 2 ), "\x18\x80" ); // the temperature still
}

TEST_F( TinyUsbTest, IsTheDeviceThatTheDriverLooksFor ) {
   const auto descriptor = device.answer( { 0x80, 6, 0x0100, 0, 64 } );
   ASSERT_TRUE( descriptor );
   EXPECT_EQ( descriptor->size(), 18u );
   EXPECT_EQ( descriptor->substr( 8, 4 ), "\x03\x04\x31\xC6" );         // 0403:c631
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0200, 0, 9 } )->size(), 9u ); // cut to what is asked
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0200, 0, 255 } )->size(), 18u );
   EXPECT_EQ( device.answer( { 0x80, 6, 0x0303, 0x0409, 255 } ),
              "\x16\x03s\0c\0d\0(\0004\0)\0:\0001\0:\0002\0"s );
   EXPECT_FALSE( device.answer( { 0x80, 6, 0x0600, 0, 10 } ) ); // of another speed: a stall
   // I2C messages and all that is made of them, but quick commands and blocks that the chip counts.
   EXPECT_EQ( device.answer( { 0xC1, 1, 0, 0, 4 } ), "\x09\x00\xfe\x0e"s );
}

// The kernel's end of a connection.
class UsbIpTest : public TinyUsbTest {
 protected:
   UsbIpTest() {
      int ends[2];
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ), 0 );
      kernel = ends[0];
      serving = std::thread( [this, fd = ends[1]] {
         UsbIpConnection connection( fd );
         while ( const auto request = connection.receive() )
            connection.answer( device.answer( *request ) );
      } );
   }
   ~UsbIpTest() override {
      close( kernel );
      serving.join(); // it ends with the connection
   }
   static std::string words( std::initializer_list<uint32_t> all ) {
      std::string bytes;
      for ( const uint32_t word : all )
         for ( int shift = 24; shift >= 0; shift -= 8 )
            bytes += static_cast<char>( word >> shift );
      return bytes;
   }
   std::string ask( const std::string &bytes, size_t count ) {
      EXPECT_EQ( send( kernel, bytes.data(), bytes.size(), 0 ), ssize_t( bytes.size() ) );
      std::string answer( count, '?' );
      EXPECT_EQ( recv( kernel, answer.data(), count, MSG_WAITALL ), ssize_t( count ) );
      return answer;
   }
   int kernel = -1;
   std::thread serving;
};

TEST_F( UsbIpTest, AnswersASubmittedTransfer ) {
   // Command, sequence, device, direction in, endpoint; flags, 4 bytes wanted, three of no use;
   // setup.
   const std::string submit = words( { 1, 7, 1, 1, 0, 0, 4, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\xC1\x01\0\0\0\0\x04\0"s, 52 ),
              words( { 3, 7, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0 } ) + "\x09\x00\xfe\x0e"s );
}

TEST_F( UsbIpTest, TakesTheDataThatComesWithATransfer ) {
   const std::string submit = words( { 1, 8, 1, 0, 0, 0, 3, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\x41\x07\0\0\x48\0\x03\0"s + "\x03\x19\x80", 48 ),
              words( { 3, 8, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0 } ) );
   EXPECT_EQ( thermometer.tOs(), 25.5 );
}

TEST_F( UsbIpTest, StallsWhatTheDeviceDoesntKnowAndUnlinksWhatIsDone ) {
   const std::string submit = words( { 1, 9, 1, 1, 0, 0, 10, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\x80\x06\0\x06\0\0\x0A\0"s, 48 ),
              words( { 3, 9, 0, 0, 0, 0xFFFFFFE0, 0, 0, 0, 0, 0, 0 } ) ); // -EPIPE
   EXPECT_EQ( ask( words( { 2, 10, 1, 0, 0, 9, 0, 0, 0, 0, 0, 0 } ), 48 ),
              words( { 4, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 } ) );
}

TEST( ExportedAdapterFinderTest, FindsTheAdapterOfTheDeviceWithItsSerialNumber ) {
   namespace fs = std::filesystem;
   const TestSupport::PrivateFolder folder;
   const Linux::Places places{ folder.file( "sys" ), folder.file( "dev" ) };
   EXPECT_FALSE( findExported( "i2c:0", places ) ); // no USB at all
   const auto plug = [&]( const std::string &device, const std::string &serial ) {
      fs::create_directories( folder.file( "sys/bus/usb/devices/" + device ) );
      folder.write( "sys/bus/usb/devices/" + device + "/serial", serial + "\n" );
   };
   plug( "1-1", "scd(4):1:2" );
   plug( "1-2", "i2c:0" );
   EXPECT_FALSE( findExported( "i2c:0", places ) ); // no driver has taken it yet
   fs::create_directories( folder.file( "sys/bus/usb/devices/1-1/1-1:1.0/i2c-3" ) );
   fs::create_directories( folder.file( "sys/bus/usb/devices/1-2/1-2:1.0/i2c-4" ) );
   EXPECT_EQ( findExported( "i2c:0", places ), 4u );
   EXPECT_EQ( findExported( "scd(4):1:2", places ), 3u );
   EXPECT_FALSE( findExported( "i2c:1", places ) );
}

// A controller's folder with its status file.
class VhciPortTest : public ::testing::Test {
 protected:
   std::string plug( const std::string &status ) {
      folder.write( "status", "hub port sta spd dev      sockfd local_busid\n" + status );
      folder.write( "attach", "" );
      try {
         const VhciPort port( folder.file( "" ) );
         std::ifstream attached( folder.file( "attach" ) );
         std::string words;
         std::getline( attached, words );
         return words;
      } catch ( const ExportError &error ) {
         return error.what();
      }
   }
   TestSupport::PrivateFolder folder;
};

TEST_F( VhciPortTest, TakesTheFirstPortThatIsFree ) {
   const std::string words = plug( "hs  0000 006 002 00000001 000005 1-1\n"
                                   "hs  0001 004 000 00000000 000000 0-0\n"
                                   "hs  0002 004 000 00000000 000000 0-0\n" );
   EXPECT_THAT( words, ::testing::MatchesRegex( "1 [0-9]+ 2 2" ) );
}

TEST_F( VhciPortTest, SaysThatNoneIsFreeOrThereIsNoController ) {
   EXPECT_THAT( plug( "ss  0008 004 000 00000000 000000 0-0\n" ),
                HasSubstr( ": no port is free" ) );
   try {
      const VhciPort port( folder.file( "none" ) );
      ADD_FAILURE() << "there is none";
   } catch ( const ExportError &error ) {
      EXPECT_EQ( error.what(), folder.file( "none/status" ) +
                                  ": No such file or directory; is the module vhci-hcd loaded?" );
   }
}

} // namespace

} // namespace SmbusdTest
