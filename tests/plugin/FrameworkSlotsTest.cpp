// The virtual tables of the framework's classes. Code that is compiled separately relies on the
// slot of each operation.
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Components/PollDevice.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/TopologyVisitor.h"
#include "support/NotedObjects.h"
#include "support/PluginFixture.h"
#include "support/VirtualSlot.h"

namespace {

namespace Logical = Component::LogicalDevice;
using Noted::called;
using Noted::note;
using Args = Drivers::DriverArgs;

template <class Base>
struct NotedDevice : Base {
   void init() override { note( "init" ); }
   Logical::TempSensor *newTempSensor( const Args & ) override { return made( "newTempSensor" ); }
   Logical::Slot *newSlot( const Args & ) override { return made( "newSlot" ); }
   Logical::SfpXcvr *newSfpXcvr( unsigned, const Args & ) override { return made( "newSfpXcvr" ); }
   Logical::QsfpXcvr *newQsfpXcvr( unsigned, const Args & ) override {
      return made( "newQsfpXcvr" );
   }
   Logical::Led *newLed( const Args & ) override { return made( "newLed" ); }
   Logical::Fan *newFan( const Args & ) override { return made( "newFan" ); }
   Logical::Mux *newMux( const Args &, unsigned ) override { return made( "newMux" ); }
   Logical::Psu *newPsu( const Args & ) override { return made( "newPsu" ); }
   Logical::SmbusProxy *newSmbusProxy( const Args & ) override { return made( "newSmbusProxy" ); }
   static std::nullptr_t made( const char *what ) {
      note( what );
      return nullptr;
   }
};

struct NotedPollDevice : NotedDevice<Component::PollHardwareDevice> {
   Logical::Gpio *newGpio( const Args & ) override { return made( "newGpio" ); }
   void pollCallback() override { note( "pollCallback" ); }
};

class FrameworkSlotsTest : public PluginFixture {
 protected:
   static void expectDeviceBase( void *device ) {
      const Args args;
      const char *const names[] = { "init",        "newTempSensor", "newSlot", "newSfpXcvr",
                                    "newQsfpXcvr", "newLed",        "newFan",  "newMux",
                                    "newPsu",      "newSmbusProxy" };
      for ( size_t slot = 0; slot < std::size( names ); ++slot ) {
         callSlot<void *, const Args *, const Args *>( device, slot, &args, &args );
         EXPECT_EQ( called, names[slot] ) << "slot " << slot;
      }
   }
};

TEST_F( FrameworkSlotsTest, PolledDevice ) {
   NotedPollDevice device;
   expectDeviceBase( &device );
   EXPECT_TRUE( areDestructors<NotedPollDevice>( 10, 11 ) );
   callSlot<void *, const Args *>( &device, 12, nullptr );
   EXPECT_EQ( called, "newGpio" );
   callSlot<void>( &device, 13 );
   EXPECT_EQ( called, "pollCallback" );
}

TEST_F( FrameworkSlotsTest, MultiDevice ) {
   NotedDevice<Component::MultiDevice> device;
   expectDeviceBase( &device );
   EXPECT_TRUE( areDestructors<NotedDevice<Component::MultiDevice>>( 10, 11 ) );
}

TEST_F( FrameworkSlotsTest, ExceptionTextIsInTheSlotOfStdException ) {
   NotImplementedException exception( "newFan" );
   EXPECT_STREQ( callSlot<const char *>( &exception, 2 ), "Not implemented newFan" );
}

struct NotedVisitor : Topology::TopologyVisitor {
   bool visit( Topology::Component const * ) override { return seen( "Component" ); }
   bool visit( Topology::Device const * ) override { return seen( "Device" ); }
   bool visit( Topology::Mux const * ) override { return seen( "Mux" ); }
   bool visit( Topology::Bus const * ) override { return seen( "Bus" ); }
   bool visit( Topology::Accelerator const * ) override { return seen( "Accelerator" ); }
   bool visit( Topology::SCD const * ) override { return seen( "SCD" ); }
   bool visit( Topology::I2C const * ) override { return seen( "I2C" ); }
   bool visit( Topology::IOPort const * ) override { return seen( "IOPort" ); }
   bool visit( Topology::Celestica const * ) override { return seen( "Celestica" ); }
   bool visit( Topology::Topology const * ) override { return seen( "Topology" ); }
   static bool seen( const char *what ) { return note( what ) != PL_STATUS_OK; }
};

TEST_F( FrameworkSlotsTest, VisitorWithoutDestructor ) {
   NotedVisitor visitor;
   const char *const names[] = { "Component", "Device", "Mux",    "Bus",       "Accelerator",
                                 "SCD",       "I2C",    "IOPort", "Celestica", "Topology" };
   for ( size_t slot = 0; slot < std::size( names ); ++slot ) {
      EXPECT_TRUE( ( callSlot<bool, const void *>( &visitor, slot, nullptr ) ) );
      EXPECT_EQ( called, names[slot] ) << "slot " << slot;
   }
}

template <class Node>
void expectNode( const char *name ) {
   EXPECT_TRUE( areDestructors<Node>( 0, 1 ) ) << name;
   Node node;
   NotedVisitor visitor;
   EXPECT_TRUE( ( callSlot<bool, Topology::TopologyVisitor *>( &node, 2, &visitor ) ) );
   EXPECT_EQ( called, name );
}

TEST_F( FrameworkSlotsTest, EveryTopologyNode ) {
   expectNode<Topology::Component>( "Component" );
   expectNode<Topology::Device>( "Device" );
   expectNode<Topology::Mux>( "Mux" );
   expectNode<Topology::Bus>( "Bus" );
   expectNode<Topology::Accelerator>( "Accelerator" );
   expectNode<Topology::SCD>( "SCD" );
   expectNode<Topology::Celestica>( "Celestica" );
   expectNode<Topology::Topology>( "Topology" );
   const auto bus = std::make_shared<Topology::Bus>();
   NotedVisitor visitor;
   Topology::I2C i2c;
   i2c.bus = bus;
   callSlot<bool, Topology::TopologyVisitor *>( &i2c, 2, &visitor );
   EXPECT_EQ( called, "I2C" );
   Topology::IOPort port;
   port.bus = bus;
   callSlot<bool, Topology::TopologyVisitor *>( &port, 2, &visitor );
   EXPECT_EQ( called, "IOPort" );
}

struct NotedHam : Ham::OrbisSmbusHam {
   using Data = void const *;
   void init() override { note( "init" ); }
   void prepare() override { note( "prepare" ); }
   pl_status execute() override { return note( "execute" ); }
   ResponseId addRecvByte() override { return note( "addRecvByte" ); }
   ResponseId addRead8( unsigned ) override { return note( "addRead8" ); }
   ResponseId addRead16( unsigned ) override { return note( "addRead16" ); }
   ResponseId addRead32( unsigned ) override { return note( "addRead32" ); }
   ResponseId addRead( unsigned, unsigned ) override { return note( "addRead" ); }
   ResponseId addReadBlock( unsigned ) override { return note( "addReadBlock" ); }
   ResponseId addSendByte( uint8_t, bool ) override { return note( "addSendByte" ); }
   ResponseId addWrite8( unsigned, uint8_t, bool ) override { return note( "addWrite8" ); }
   ResponseId addWrite16( unsigned, uint16_t, bool ) override { return note( "addWrite16" ); }
   ResponseId addWrite32( unsigned, uint32_t, bool ) override { return note( "addWrite32" ); }
   ResponseId addWrite( unsigned, Data, unsigned, bool ) override { return note( "addWrite" ); }
   ResponseId addWriteBlock( unsigned, Data, unsigned, bool ) override {
      return note( "addWriteBlock" );
   }
   ResponseId addProcessCall( unsigned, uint16_t ) override { return note( "addProcessCall" ); }
   uint8_t get8( ResponseId ) override { return note( "get8" ), 8; }
   uint16_t get16( ResponseId ) override { return note( "get16" ), 0x1616; }
   uint32_t get32( ResponseId ) override { return note( "get32" ), 0x32323232; }
   std::string getBlock( ResponseId id, unsigned len ) override {
      note( "getBlock" );
      return fmt::format( "{} {}", id, len );
   }
   void setAddress( uint8_t ) override { note( "setAddress" ); }
   uint8_t getAddress() const override { return note( "getAddress" ), 7; }
};

TEST_F( FrameworkSlotsTest, AccessMethodWithoutDestructor ) {
   NotedHam ham;
   const char *const names[] = { "init",         "prepare",     "execute",       "addRecvByte",
                                 "addRead8",     "addRead16",   "addRead32",     "addRead",
                                 "addReadBlock", "addSendByte", "addWrite8",     "addWrite16",
                                 "addWrite32",   "addWrite",    "addWriteBlock", "addProcessCall" };
   for ( size_t slot = 0; slot < std::size( names ); ++slot ) {
      callSlot<unsigned, unsigned, unsigned, unsigned, bool>( &ham, slot, 0, 0, 0, false );
      EXPECT_EQ( called, names[slot] ) << "slot " << slot;
   }
   EXPECT_EQ( ( callSlot<uint8_t, unsigned>( &ham, 16, 0 ) ), 8 );
   EXPECT_EQ( ( callSlot<uint16_t, unsigned>( &ham, 17, 0 ) ), 0x1616 );
   EXPECT_EQ( ( callSlot<uint32_t, unsigned>( &ham, 18, 0 ) ), 0x32323232u );
   EXPECT_EQ( ( callSlot<std::string, unsigned, unsigned>( &ham, 19, 1, 2 ) ), "1 2" );
   callSlot<void, uint8_t>( &ham, 20, 0 );
   EXPECT_EQ( called, "setAddress" );
   EXPECT_EQ( callSlot<uint8_t>( &ham, 21 ), 7 );
}

} // namespace
