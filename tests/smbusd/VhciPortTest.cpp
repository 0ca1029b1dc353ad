// Plugging the device into the kernel's virtual USB controller, and finding its adapter. The
// folders of sysfs are the test's own.
#include "smbusd/export/VhciPort.h"
#include "PrivateFolder.h"
#include "smbusd/export/ExportedAdapter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace SmbusdTest {

namespace {

using namespace Smbusd;
using namespace Smbusd::Export;
using ::testing::HasSubstr;

TEST( ExportedAdapterFinderTest, FindsTheAdapterBySerialNumber ) {
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
   EXPECT_FALSE( findExported( "i2c:0", places ) ); // no driver is bound yet
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

TEST_F( VhciPortTest, UsesTheFirstFreePort ) {
   const std::string words = plug( "hs  0000 006 002 00000001 000005 1-1\n"
                                   "hs  0001 004 000 00000000 000000 0-0\n"
                                   "hs  0002 004 000 00000000 000000 0-0\n" );
   EXPECT_THAT( words, ::testing::MatchesRegex( "1 [0-9]+ 2 2" ) );
}

TEST_F( VhciPortTest, ReportsThatNoPortIsFreeOrNoControllerExists ) {
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
