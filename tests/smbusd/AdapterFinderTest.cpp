#include "smbusd/busses/linux/AdapterFinder.h"
#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace SmbusdTest {

namespace {

using namespace BoardFiles;

namespace fs = std::filesystem;
using namespace Smbusd::Linux;

// Two adapters of a PCI card (one of them with a multiplexer), and one in the interface of a USB
// device.
class AdapterFinderTest : public ::testing::Test {
 protected:
   AdapterFinderTest() {
      fs::create_directories( folder.file( "sys/bus/i2c/devices" ) );
      put( "devices/pci/04.0", 3, "card bus 0" );
      put( "devices/pci/04.0", 5, "card bus 1" );
      put( "devices/pci/04.0/i2c-3", 6, "i2c-3-mux (chan_id 0)" );
      put( "devices/usb1/1-1/1-1:1.0", 4, "tiny" );
      put( "devices/usb1/1-2/1-2:1.0", 7, "tiny" );
      fs::create_directories( folder.file( "sys/devices/empty" ) );
      // The entry of i2c-dev, below the adapter.
      fs::create_directories( folder.file( "sys/devices/usb1/1-1/1-1:1.0/i2c-4/i2c-dev/i2c-4" ) );
   }
   void put( const std::string &device, unsigned number, const std::string &name ) {
      const std::string adapter = "sys/" + device + "/i2c-" + std::to_string( number );
      fs::create_directories( folder.file( adapter ) );
      folder.write( adapter + "/name", name + "\n" );
      fs::create_directory_symlink(
         folder.file( adapter ),
         folder.file( "sys/bus/i2c/devices/i2c-" + std::to_string( number ) ) );
   }
   std::string path( const std::string &device ) { return folder.file( "sys/devices/" + device ); }
   std::string failure( const WantedAdapter &wanted ) {
      try {
         return "number " + std::to_string( findAdapter( wanted, places ) );
      } catch ( const AdapterError &error ) {
         return error.what();
      }
   }
   TestSupport::PrivateFolder folder;
   const Places places{ folder.file( "sys" ), "/dev" };
};

TEST_F( AdapterFinderTest, FindsByNumber ) {
   EXPECT_EQ( findAdapter( AdapterNumber{ 5 }, places ), 5u );
   EXPECT_EQ( failure( AdapterNumber{ 9 } ), "there is no adapter with number 9" );
}

TEST_F( AdapterFinderTest, FindsByTheCompleteName ) {
   EXPECT_EQ( findAdapter( AdapterName{ "card bus 1" }, places ), 5u );
   EXPECT_EQ( failure( AdapterName{ "card bus" } ), "there is no adapter named \"card bus\"" );
   EXPECT_EQ( failure( AdapterName{ "tiny" } ), "2 adapters named \"tiny\": numbers 4, 7" );
}

TEST_F( AdapterFinderTest, FindsByThePathOfTheAdapterOrOfItsDevice ) {
   EXPECT_EQ( findAdapter( AdapterPath{ path( "pci/04.0/i2c-5" ) }, places ), 5u );
   EXPECT_EQ( findAdapter( AdapterPath{ path( "usb1/1-1/1-1:1.0" ) }, places ), 4u );
   EXPECT_EQ( findAdapter( AdapterPath{ path( "usb1/1-2" ) }, places ), 7u );
   EXPECT_EQ( findAdapter( AdapterPath{ folder.file( "sys/bus/i2c/devices/i2c-6" ) }, places ),
              6u );
}

TEST_F( AdapterFinderTest, ExplainsWhyAPathHasNoAdapter ) {
   EXPECT_EQ( failure( AdapterPath{ path( "pci/04.0" ) } ),
              "2 adapters in " + path( "pci/04.0" ) +
                 ": numbers 3, 5" ); // not the channels of their multiplexers
   EXPECT_EQ( failure( AdapterPath{ path( "empty" ) } ),
              "there is no adapter in " + path( "empty" ) );
   EXPECT_EQ( failure( AdapterPath{ path( "gone" ) } ),
              path( "gone" ) + ": No such file or directory" );
}

TEST_F( AdapterFinderTest, DescribesAnAdapter ) {
   EXPECT_EQ( describeAdapter( 5, places ), "/dev/i2c-5 (card bus 1)" );
}

} // namespace

} // namespace SmbusdTest
