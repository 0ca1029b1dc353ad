#include "host/plugin/Messages.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

TEST( MessagesTest, CarryEveryCommandThrough ) {
   const auto load =
      std::get<LoadCommand>( *decodeCommand( encode( LoadCommand{ "p.so", "[\n\"°\"]" } ) ) );
   EXPECT_EQ( load.plugin, "p.so" );
   EXPECT_EQ( load.topology, "[\n\"°\"]" );
   EXPECT_EQ(
      std::get<InitCommand>( *decodeCommand( encode( InitCommand{ BoardFiles::Kind::Psu } ) ) )
         .kind,
      BoardFiles::Kind::Psu );
   EXPECT_EQ( std::get<ReadCommand>( *decodeCommand( encode( ReadCommand{ 130 } ) ) ).object,
              130u );
   const BoardFiles::ObjectDescription sensor{ .kind = BoardFiles::Kind::TempSensor,
                                               .name = "t",
                                               .text = "{}",
                                               .alert = -3.5f,
                                               .critical = 70.25f,
                                               .value = 255 };
   const auto add = std::get<AddCommand>( *decodeCommand( encode( AddCommand{ 7, sensor } ) ) );
   EXPECT_EQ( add.object, 7u );
   EXPECT_EQ( add.description.kind, BoardFiles::Kind::TempSensor );
   EXPECT_EQ( add.description.text, "{}" );
   EXPECT_EQ( add.description.alert, -3.5f );
   EXPECT_EQ( add.description.critical, 70.25f );
   EXPECT_EQ( add.description.value, 255 );
}

TEST( MessagesTest, CarryAnActionThrough ) {
   const Action action{ "block_write", { 1, 0, 255 } };
   const auto act = std::get<ActCommand>( *decodeCommand( encode( ActCommand{ 7, action } ) ) );
   EXPECT_EQ( act.object, 7u );
   EXPECT_EQ( act.action, action );
}

TEST( MessagesTest, CarryEveryEventThroughOnOneLine ) {
   EXPECT_EQ( std::get<Trace>( *decodeEvent( encode( Trace{ 0, "x", 129 } ) ) ).timerOf, 129u );
   const std::string trace = encode( Trace{ 3, "two\nlines" } );
   EXPECT_EQ( trace.find( '\n' ), trace.size() - 1 );
   EXPECT_EQ( std::get<Trace>( *decodeEvent( trace ) ).text, "two\nlines" );
   EXPECT_EQ( std::get<Trace>( *decodeEvent( trace ) ).level, 3 );
   EXPECT_EQ( std::get<Begun>( *decodeEvent( encode( Begun{ "x" } ) ) ).operation, "x" );
   EXPECT_FALSE( std::get<Done>( *decodeEvent( encode( Done{} ) ) ).fault );
   EXPECT_EQ( std::get<Done>( *decodeEvent( encode( Done{ Fault{ 4, "w" } } ) ) ).fault,
              ( Fault{ 4, "w" } ) );
   EXPECT_EQ( std::get<Done>( *decodeEvent( encode( Done{ Fault{} } ) ) ).fault, Fault{} );
}

TEST( MessagesTest, CarryEveryKindOfValueThrough ) {
   for ( const Scalar &value : { Scalar(), Scalar( true ), Scalar( int64_t{ -2 } ), Scalar( 24.0 ),
                                 Scalar( std::string( "x" ) ) } ) {
      const Event event = Reading{ "n", "V", State::Absent, value, { 1, "why" } };
      const auto reading = std::get<Reading>( *decodeEvent( encode( event ) ) );
      EXPECT_EQ( reading.value, value );
      EXPECT_EQ( reading.name, "n" );
      EXPECT_EQ( reading.unit, "V" );
      EXPECT_EQ( reading.state, State::Absent );
      EXPECT_EQ( reading.fault, ( Fault{ 1, "why" } ) );
   }
}

TEST( MessagesTest, AreNothingWhereALineIsNone ) {
   EXPECT_FALSE( decodeEvent( "{\"event\":\"tor" ) );
   EXPECT_FALSE( decodeEvent( "[]" ) );
   EXPECT_FALSE( decodeCommand( "{\"do\":\"dance\"}" ) );
}

} // namespace
} // namespace Host
