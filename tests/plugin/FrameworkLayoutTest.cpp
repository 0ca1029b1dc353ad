// The fields of the topology, the argument records, the access methods and the device framework.
#include "OrbisGeneric/AhamAddress.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Components/PollDevice.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Helpers.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/Ham/SearchVisitor.h"
#include "PlatformLibrary/PLSocket.h"
#include "support/Layout.h"

#include <bit>
#include <cstdint>

REVEAL( FormatFdlActive, Drivers::FormatFdl::active_ );
REVEAL( FormatFdlText, Drivers::FormatFdl::text_ );
REVEAL( FormatFdlTemplate, Drivers::FormatFdl::template_ );
REVEAL( ExceptionMessage, NotImplementedException::message_ );

namespace {

// The two words of an empty address after this change. The second word is the high half.
template <class Change>
uint64_t wordsWith( Change change ) {
   AhamAddress address{};
   change( address );
   return std::bit_cast<uint64_t>( address );
}

TEST( FrameworkLayoutTest, BusAddressBitFieldsStartAtBitZeroOfTheSecondWord ) {
   EXPECT_EQ( wordsWith( []( auto &a ) { a.offset = 0xFFFFFFFF; } ), 0x00000000'FFFFFFFFu );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.address = 0x7F; } ), 0x0000007F'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.bus = 0x7F; } ), 0x00003F80'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.accel = 0x7F; } ), 0x001FC000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.spare = 1; } ), 0x00200000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.busTimeout = 7; } ), 0x01C00000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.addrSize = 3; } ), 0x06000000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.extraDelay = 1; } ), 0x08000000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.writeDelay = 3; } ), 0x30000000'00000000u );
   EXPECT_EQ( wordsWith( []( auto &a ) { a.readDelay = 3; } ), 0xC0000000'00000000u );
}

TEST( FrameworkLayoutTest, TopologyNodes ) {
   using namespace Topology;
   expectLayout( { FIELD( MediumNode, ham, 4 ) } );
   expectLayout( { FIELD( ::Topology::Topology, media, 4 ) } );
   expectLayout( { FIELD( SCD, ham, 4 ), FIELD( SCD, unused, 28 ), FIELD( SCD, pci, 32 ),
                   FIELD( SCD, accelerators, 36 ) } );
   expectLayout( { FIELD( Celestica, ham, 4 ), FIELD( Celestica, accelerators, 28 ) } );
   expectLayout( { FIELD( I2C, ham, 4 ), FIELD( I2C, bus, 28 ), FIELD( I2C, simulated, 36 ) } );
   expectLayout( { FIELD( IOPort, ham, 4 ), FIELD( IOPort, bus, 28 ) } );
   expectLayout( { FIELD( Accelerator, id, 4 ), FIELD( Accelerator, busses, 8 ) } );
   expectLayout( { FIELD( Bus, id, 4 ), FIELD( Bus, devices, 8 ), FIELD( Bus, muxes, 20 ) } );
   expectLayout( { FIELD( Mux, did, 4 ), FIELD( Mux, busses, 8 ) } );
   expectLayout(
      { FIELD( Device, did, 4 ), FIELD( Device, args, 8 ), FIELD( Device, components, 16 ) } );
   expectLayout( { FIELD( ::Topology::Component, uid, 4 ) } );
}

TEST( FrameworkLayoutTest, Visitors ) {
   using Topology::SearchDeviceVisitor;
   expectLayout( { FIELD( SearchDeviceVisitor, did, 4 ), FIELD( SearchDeviceVisitor, found, 8 ),
                   FIELD( SearchDeviceVisitor, device, 12 ) } );
   using Ham::SearchVisitor;
   expectLayout( { FIELD( SearchVisitor, uid, 4 ), FIELD( SearchVisitor, did, 8 ),
                   FIELD( SearchVisitor, found, 12 ), FIELD( SearchVisitor, device, 16 ),
                   FIELD( SearchVisitor, ham, 20 ) } );
   using Ham::OrbisSmbusVisitor;
   expectLayout( { FIELD( OrbisSmbusVisitor, args, 4 ), FIELD( OrbisSmbusVisitor, active, 8 ),
                   FIELD( OrbisSmbusVisitor, ham, 12 ),
                   FIELD( OrbisSmbusVisitor, lastBusId, 16 ) } );
}

TEST( FrameworkLayoutTest, ArgumentRecord ) {
   using Drivers::DriverArgs;
   expectLayout( { FIELD( DriverArgs, driver, 0 ), FIELD( DriverArgs, uid, 24 ),
                   FIELD( DriverArgs, did, 28 ), FIELD( DriverArgs, address, 32 ),
                   FIELD( DriverArgs, driverArgs, 40 ), FIELD( DriverArgs, jsonText, 64 ),
                   FIELD( DriverArgs, isMultiDevice, 68 ),
                   FIELD( DriverArgs, multiDeviceArgs, 72 ) } );
}

TEST( FrameworkLayoutTest, DescriptionLine ) {
   using Drivers::FormatFdl;
   expectLayout( { REVEALED( FormatFdl, FormatFdlActive, 0 ),
                   REVEALED( FormatFdl, FormatFdlText, 4 ),
                   REVEALED( FormatFdl, FormatFdlTemplate, 28 ) } );
}

TEST( FrameworkLayoutTest, AccessMethods ) {
   using BaseHam = Ham::Ham;
   using Ham::OrbisSmbusHam;
   expectLayout( { FIELD( BaseHam, retryCount, 4 ), FIELD( BaseHam, retryCountSet, 8 ) } );
   // protobuf decides the sizes of the messages.
   constexpr size_t request = 32, response = request + sizeof( Smbus::TransactionRequest ),
                    master = response + sizeof( Smbus::TransactionResponse );
   expectLayout(
      { FIELD( OrbisSmbusHam, retryCountSet, 8 ), FIELD( OrbisSmbusHam, prepareRequestCount_, 12 ),
        FIELD( OrbisSmbusHam, lastResponseId, 16 ), FIELD( OrbisSmbusHam, address, 20 ),
        FIELD( OrbisSmbusHam, pci, 28 ), FIELD( OrbisSmbusHam, request_, request ),
        FIELD( OrbisSmbusHam, response_, response ), FIELD( OrbisSmbusHam, masterType, master ),
        FIELD( OrbisSmbusHam, muxes_, master + 4 ) } );
}

TEST( FrameworkLayoutTest, DeviceFramework ) {
   using namespace Component;
   expectLayout( { FIELD( HardwareDevice, driverData_, 4 ), FIELD( HardwareDevice, ham_, 8 ) } );
   expectLayout( { FIELD( PollHardwareDevice, ham_, 8 ), FIELD( PollHardwareDevice, running, 12 ),
                   FIELD( PollHardwareDevice, timer, 16 ),
                   FIELD( PollHardwareDevice, pollInterval, 20 ) } );
   expectLayout( { FIELD( MultiDevice, driverData_, 4 ), FIELD( MultiDevice, slots_, 8 ),
                   FIELD( MultiDevice, leds_, 20 ), FIELD( MultiDevice, psus_, 32 ),
                   FIELD( MultiDevice, fans_, 44 ), FIELD( MultiDevice, deviceDriverArgs, 56 ) } );
   expectLayout( { REVEALED( NotImplementedException, ExceptionMessage, 4 ) } );
}

TEST( FrameworkLayoutTest, SocketMembersThatAFailedSetUpUses ) {
   using PlatformLibrary::PLSocket;
   expectLayout( { FIELD( PLSocket, fd, 0 ), FIELD( PLSocket, watcher, 4 ) } );
}

} // namespace
