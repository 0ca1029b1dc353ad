#include "host/plugin/Messages.h"

#include "host/plugin/Child.pb.h"
#include "host/plugin/FrameBuffer.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Host {
namespace {

// The one message in the bytes that were sent.
std::string unframed( const std::string &sent ) {
   FrameBuffer buffer;
   buffer.append( sent );
   const std::string message = buffer.next().value();
   EXPECT_FALSE( buffer.hasRest() );
   return message;
}
std::optional<Command> sent( const Command &command ) {
   return decodeCommand( unframed( encode( command ) ) );
}
std::optional<Event> sent( const Event &event ) {
   return decodeEvent( unframed( encode( event ) ) );
}

TEST( MessagesTest, CarryEveryCommandThrough ) {
   const auto load = std::get<LoadCommand>(
      *sent( LoadCommand{ "p.so", "[\n\"°\"]", { -1, { "Failed ", "Done" } } } ) );
   EXPECT_EQ( load.traces.level, -1 );
   EXPECT_EQ( load.traces.beginnings, ( std::vector<std::string>{ "Failed ", "Done" } ) );
   EXPECT_EQ( load.plugin, "p.so" );
   EXPECT_EQ( load.topology, "[\n\"°\"]" );
   EXPECT_EQ( std::get<InitCommand>( *sent( InitCommand{ BoardFiles::Kind::Psu } ) ).kind,
              BoardFiles::Kind::Psu );
   const std::vector<size_t> objects = { 130, 0, 7 };
   EXPECT_EQ( std::get<ReadCommand>( *sent( ReadCommand{ objects } ) ).objects, objects );
   EXPECT_TRUE( std::get<ReadCommand>( *sent( ReadCommand{} ) ).objects.empty() );
   const BoardFiles::ObjectDescription sensor{ .kind = BoardFiles::Kind::TempSensor,
                                               .name = "t",
                                               .text = "{}",
                                               .alert = -3.5f,
                                               .critical = 70.25f,
                                               .value = 255,
                                               .reads = "pmbus" };
   const auto add = std::get<AddCommand>( *sent( AddCommand{ 7, sensor } ) );
   EXPECT_EQ( add.object, 7u );
   EXPECT_EQ( add.description.kind, BoardFiles::Kind::TempSensor );
   EXPECT_EQ( add.description.text, "{}" );
   EXPECT_EQ( add.description.alert, -3.5f );
   EXPECT_EQ( add.description.critical, 70.25f );
   EXPECT_EQ( add.description.value, 255 );
   EXPECT_EQ( add.description.reads, "pmbus" );
}

TEST( MessagesTest, CarryAModuleAndItsMemoryThrough ) {
   const BoardFiles::ObjectDescription module{ .kind = BoardFiles::Kind::Module,
                                               .name = "sfp1-module",
                                               .second = "Sfp1Diagnostics" };
   const auto add = std::get<AddCommand>( *sent( AddCommand{ 9, module } ) );
   EXPECT_EQ( add.description.kind, BoardFiles::Kind::Module );
   EXPECT_EQ( add.description.second, "Sfp1Diagnostics" );
   const std::vector<size_t> fresh{ 7 };
   EXPECT_EQ( std::get<ReadCommand>( *sent( ReadCommand{ { 7, 8 }, fresh } ) ).fresh, fresh );

   ModuleMemory memory{ .begins = true };
   const std::vector<uint8_t> bytes{ 0, 1, 255 };
   memory.image.put( {}, 0, bytes );
   memory.image.put( {}, 125, bytes );
   memory.image.put( { 0x51, true, 3, 0x11 }, 128, bytes );
   memory.image.put( { 0x51, true, 3, 0x11 }, 253, bytes );
   const auto read = std::get<ModuleMemory>( *sent( Event( memory ) ) );
   EXPECT_TRUE( read.begins );
   EXPECT_EQ( read.image.regions(), memory.image.regions() );
}

TEST( MessagesTest, RefuseAMemoryThatNoModuleHas ) {
   HostChild::Event message;
   auto &piece = *message.mutable_module_memory()->add_pieces();
   piece.set_address( 0x50 );
   piece.set_first( 127 );
   piece.set_bytes( "ab" );
   EXPECT_FALSE( decodeEvent( message.SerializeAsString() ) );
   piece.set_first( 126 );
   EXPECT_TRUE( decodeEvent( message.SerializeAsString() ) );
   piece.set_address( 256 );
   EXPECT_FALSE( decodeEvent( message.SerializeAsString() ) );
}

TEST( MessagesTest, CarryAnActionThrough ) {
   const Action action{ "block_write", { 1, 0, 255 } };
   const auto act = std::get<ActCommand>( *sent( ActCommand{ 7, action } ) );
   EXPECT_EQ( act.object, 7u );
   EXPECT_EQ( act.action, action );
}

TEST( MessagesTest, CarryEveryEventThrough ) {
   const auto trace = std::get<Trace>( *sent( Trace{ 3, "two\nlines", 129 } ) );
   EXPECT_EQ( trace.level, 3 );
   EXPECT_EQ( trace.text, "two\nlines" );
   EXPECT_EQ( trace.timerOwner, 129u );
   EXPECT_EQ( std::get<Trace>( *sent( Trace{ -1, "", {} } ) ).timerOwner, std::nullopt );
   EXPECT_FALSE( std::get<Done>( *sent( Done{} ) ).fault );
   EXPECT_EQ( std::get<Done>( *sent( Done{ Fault{ 4, "w" } } ) ).fault, ( Fault{ 4, "w" } ) );
   EXPECT_EQ( std::get<Done>( *sent( Done{ Fault{} } ) ).fault, Fault{} );
   EXPECT_EQ( std::get<Done>( *sent( Done{ Fault{ 0, "" } } ) ).fault, ( Fault{ 0, "" } ) );
}

TEST( MessagesTest, CarryTheLimitsOfASupplyThrough ) {
   const Health::Pmbus::Registers registers{ { 0x20, 0x17 }, { 0x40, 0x1A66 } };
   EXPECT_EQ( std::get<SupplyLimits>( *sent( SupplyLimits{ registers } ) ).registers, registers );
   HostChild::Event event;
   auto &more = *event.mutable_supply_limits()->mutable_registers();
   more[0xFF] = 0xFFFF;
   EXPECT_TRUE( decodeEvent( event.SerializeAsString() ) );
   more[0x100] = 0; // no command has this number
   EXPECT_FALSE( decodeEvent( event.SerializeAsString() ) );
   more.erase( 0x100 );
   more[0x40] = 0x10000; // more than a word
   EXPECT_FALSE( decodeEvent( event.SerializeAsString() ) );
}

TEST( MessagesTest, CarryBytesThroughThatAreNotUtf8 ) {
   const std::string text( "\xff\0\xc3(", 4 );
   EXPECT_EQ( std::get<Trace>( *sent( Trace{ 0, text, {} } ) ).text, text );
   EXPECT_EQ( std::get<Reading>( *sent( Reading{ .value = text } ) ).value, Scalar( text ) );
}

TEST( MessagesTest, CarryEveryKindOfValueThrough ) {
   for ( const Scalar &value : { Scalar(), Scalar( true ), Scalar( int64_t{ -2 } ), Scalar( 24.0 ),
                                 Scalar( std::string( "x" ) ) } ) {
      const Event event = Reading{ "n", "V", State::Absent, value, { 1, "why" } };
      const auto reading = std::get<Reading>( *sent( event ) );
      EXPECT_EQ( reading.value, value );
      EXPECT_EQ( reading.name, "n" );
      EXPECT_EQ( reading.unit, "V" );
      EXPECT_EQ( reading.state, State::Absent );
      EXPECT_EQ( reading.fault, ( Fault{ 1, "why" } ) );
   }
}

TEST( MessagesTest, AreRefusedWhereTheyMakeNoSense ) {
   const std::string whole = unframed( encode( Event( Trace{ 3, "text", {} } ) ) );
   EXPECT_FALSE( decodeEvent( whole.substr( 0, whole.size() - 1 ) ) );
   EXPECT_FALSE( decodeEvent( "" ) );
   EXPECT_FALSE( decodeEvent( "{\"event\":\"done\"}" ) );
   HostChild::Event event;
   event.mutable_reading()->set_state( "good" ); // no such state
   EXPECT_FALSE( decodeEvent( event.SerializeAsString() ) );
   EXPECT_FALSE( decodeCommand( "" ) );
   HostChild::Command command;
   command.mutable_init()->set_kind( "lamp" ); // no such kind
   EXPECT_FALSE( decodeCommand( command.SerializeAsString() ) );
   command.mutable_add()->set_kind( "led" );
   EXPECT_TRUE( decodeCommand( command.SerializeAsString() ) );
   command.mutable_add()->set_value( 256 ); // more than a byte
   EXPECT_FALSE( decodeCommand( command.SerializeAsString() ) );
}

TEST( FrameBufferTest, CutsMessagesOutOfPiecesOfAnyLength ) {
   const std::string bytes = encode( Event( Trace{ 0, "first", {} } ) ) +
                             encode( Event( Trace{ 0, std::string( 300, 'x' ), {} } ) );
   FrameBuffer buffer;
   std::vector<size_t> lengths;
   for ( const char byte : bytes ) {
      buffer.append( { &byte, 1 } );
      while ( const auto message = buffer.next() )
         lengths.push_back( std::get<Trace>( *decodeEvent( *message ) ).text.size() );
   }
   EXPECT_EQ( lengths, ( std::vector<size_t>{ 5, 300 } ) );
   EXPECT_FALSE( buffer.hasRest() );
   buffer.append( "\x05" );
   EXPECT_FALSE( buffer.next() );
   EXPECT_TRUE( buffer.hasRest() );
}

TEST( FrameBufferTest, RefusesWhatIsNotALengthOrTooLong ) {
   for ( const char *bytes :
         { "\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", "\xff\xff\xff\xff\x0f" } ) {
      FrameBuffer buffer;
      buffer.append( bytes );
      EXPECT_THROW( buffer.next(), std::runtime_error );
   }
}

} // namespace
} // namespace Host
