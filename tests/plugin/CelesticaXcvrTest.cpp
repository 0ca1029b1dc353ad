// The transceiver ports of both CPLDs, checked with the tables of the board.
#include "support/CelesticaFixture.h"

namespace {

using Drivers::CelXcvrCPLD;
using Drivers::KeltQCPLD;
using Drivers::KeltSCPLD;

class KeltQCPLDPortTest : public KeltQCPLDFixture {};
class KeltSCPLDPortTest : public KeltSCPLDFixture {};

// Every signal of every port: only its bit is set, then only its bit is clear.
template <typename Read>
void expectBitOf( const std::vector<PortGroup> &table, unsigned signal, bool activeLow,
                  Read read ) {
   for ( const auto &group : table )
      for ( int port = group.firstPort; port <= group.lastPort; ++port ) {
         const auto bit = static_cast<uint8_t>( 1 << ( port - group.firstPort ) );
         EXPECT_EQ( read( port, group.registers[signal], bit, 0x00 ), activeLow ? 0 : 1 )
            << "port " << port << " signal " << signal;
         EXPECT_EQ( read( port, group.registers[signal], static_cast<uint8_t>( ~bit ), 0xFF ),
                    activeLow ? 1 : 0 )
            << "port " << port << " signal " << signal;
      }
}

TEST_F( KeltQCPLDPortTest, ReadsEverySignalOfEveryPortFromItsBit ) {
   bringUp();
   const auto reading = [&]( auto get ) {
      return [this, get]( int id, unsigned reg, uint8_t byte, uint8_t others ) {
         tick( poll( { { reg, byte } }, others ) );
         value = 77;
         EXPECT_EQ( get( *port( static_cast<unsigned>( id ) ), &value ), 0 );
         return value;
      };
   };
   using Xcvr = Component::LogicalDevice::QsfpXcvr;
   expectBitOf( qcpldQsfp, 0, true, reading( []( Xcvr &x, int *v ) { return x.getReset( v ); } ) );
   expectBitOf( qcpldQsfp, 1, false,
                reading( []( Xcvr &x, int *v ) { return x.getLpMode( v ); } ) );
   expectBitOf( qcpldQsfp, 2, false, reading( []( Xcvr &x, int *v ) {
                   *v = x.getPresence();
                   return PL_STATUS_OK;
                } ) );
   expectBitOf( qcpldQsfp, 3, true,
                reading( []( Xcvr &x, int *v ) { return x.getInterrupt( v ); } ) );
}

TEST_F( KeltSCPLDPortTest, ReadsEverySignalOfEverySfpPortFromItsBit ) {
   bringUp();
   const auto reading = [&]( auto get ) {
      return [this, get]( int id, unsigned reg, uint8_t byte, uint8_t others ) {
         tick( poll( { { reg, byte } }, others ) );
         EXPECT_EQ( get( *sfp( static_cast<unsigned>( id ) ), &value ), 0 );
         return value;
      };
   };
   using Xcvr = Component::LogicalDevice::SfpXcvr;
   expectBitOf( scpldSfp, 0, false, reading( []( Xcvr &x, int *v ) { return x.getRxLos( v ); } ) );
   expectBitOf( scpldSfp, 1, false,
                reading( []( Xcvr &x, int *v ) { return x.getTxDisable( v ); } ) );
   expectBitOf( scpldSfp, 2, false,
                reading( []( Xcvr &x, int *v ) { return x.getTxFault( v ); } ) );
   expectBitOf( scpldSfp, 3, false, reading( []( Xcvr &x, int *v ) {
                   *v = x.getPresence();
                   return PL_STATUS_OK;
                } ) );
}

TEST_F( KeltSCPLDPortTest, ReadsEverySignalOfEveryQsfpPortFromItsBit ) {
   bringUp();
   const auto reading = [&]( auto get ) {
      return [this, get]( int id, unsigned reg, uint8_t byte, uint8_t others ) {
         tick( poll( { { reg, byte } }, others ) );
         EXPECT_EQ( get( *qsfp( static_cast<unsigned>( id ) ), &value ), 0 );
         return value;
      };
   };
   using Xcvr = Component::LogicalDevice::QsfpXcvr;
   expectBitOf( scpldQsfp, 0, true, reading( []( Xcvr &x, int *v ) { return x.getReset( v ); } ) );
   expectBitOf( scpldQsfp, 1, false,
                reading( []( Xcvr &x, int *v ) { return x.getLpMode( v ); } ) );
   expectBitOf( scpldQsfp, 2, false, reading( []( Xcvr &x, int *v ) {
                   *v = x.getPresence();
                   return PL_STATUS_OK;
                } ) );
   expectBitOf( scpldQsfp, 3, true,
                reading( []( Xcvr &x, int *v ) { return x.getInterrupt( v ); } ) );
}

TEST_F( KeltQCPLDPortTest, WritesTheBitOfEveryPortAndKeepsTheOtherCachedBits ) {
   bringUp( {}, 0xA5 );
   for ( const auto &group : qcpldQsfp )
      for ( int id = group.firstPort; id <= group.lastPort; ++id ) {
         const unsigned bit = 1u << ( id - group.firstPort );
         tick( poll( {}, 0xA5 ) );
         auto xcvr = port( static_cast<unsigned>( id ) );
         const auto clear = static_cast<uint8_t>( 0xA5 & ~bit ),
                    set = static_cast<uint8_t>( 0xA5 | bit );
         ham.expectBatch( { write8( group.registers[0], clear ) } ); // active low
         EXPECT_EQ( xcvr->setReset( 1 ), PL_STATUS_OK );
         EXPECT_EQ( xcvr->getReset( &value ), PL_STATUS_OK );
         EXPECT_EQ( value, 1 );
         ham.expectBatch( { write8( group.registers[0], set ) } );
         EXPECT_EQ( xcvr->setReset( 0 ), PL_STATUS_OK );
         ham.expectBatch( { write8( group.registers[1], set ) } );
         EXPECT_EQ( xcvr->setLpMode( 1 ), PL_STATUS_OK );
         ham.expectBatch( { write8( group.registers[1], clear ) } );
         EXPECT_EQ( xcvr->setLpMode( 0 ), PL_STATUS_OK );
      }
}

TEST_F( KeltSCPLDPortTest, WritesTheBitOfEveryPortAndKeepsTheOtherCachedBits ) {
   bringUp( {}, 0xA5 );
   for ( const auto &group : scpldSfp )
      for ( int id = group.firstPort; id <= group.lastPort; ++id ) {
         const unsigned bit = 1u << ( id - group.firstPort );
         tick( poll( {}, 0xA5 ) );
         auto xcvr = sfp( static_cast<unsigned>( id ) );
         ham.expectBatch( { write8( group.registers[1], static_cast<uint8_t>( 0xA5 | bit ) ) } );
         EXPECT_EQ( xcvr->setTxDisable( 5 ), PL_STATUS_OK ); // any value except 0 means 1
         ham.expectBatch( { write8( group.registers[1], static_cast<uint8_t>( 0xA5 & ~bit ) ) } );
         EXPECT_EQ( xcvr->setTxDisable( 0 ), PL_STATUS_OK );
      }
}

TEST_F( KeltQCPLDPortTest, ModuleSelectOnlyTraces ) {
   bringUp();
   auto xcvr = port( 2 );
   EXPECT_EQ( xcvr->getModSel( &value ), PL_STATUS_OK );
   EXPECT_EQ( xcvr->setModSel( 1 ), PL_STATUS_OK );
   EXPECT_EQ( value, 77 );
   EXPECT_TRUE( TestHost::traced( 5, "getQsfpModSel(): id=1" ) );
   EXPECT_TRUE( TestHost::traced( 5, "setQsfpModSel(): id=1" ) );
}

TEST_F( KeltQCPLDPortTest, EveryQsfpOperationTracesItsPort ) {
   bringUp();
   auto xcvr = port( 2 );
   TestHost::traces.clear();
   xcvr->getLpMode( &value );
   xcvr->getReset( &value );
   xcvr->getInterrupt( &value );
   ham.expectBatch( { write8( 0x252, 0x02 ) } );
   xcvr->setLpMode( 1 );
   ham.expectBatch( { write8( 0x250, 0x02 ) } );
   xcvr->setReset( 0 );
   EXPECT_EQ( TestHost::tracedAt( 5 ),
              ( std::vector<std::string>{ "getQsfpLpMode(): id=1", "getQsfpReset(): id=1",
                                          "getQsfpInterrupt(): id=1", "setQsfpLpMode(): id=1",
                                          "setQsfpReset(): id=1" } ) );
}

TEST_F( KeltQCPLDPortTest, PortsOutOfRangeStopTheProcess ) {
   EXPECT_DEATH( cpld.newQsfpXcvr( 0, args ), "Assertion `id >= 1 && id <= 32' failed" );
   EXPECT_DEATH( cpld.newQsfpXcvr( 33, args ), "Assertion `id >= 1 && id <= 32' failed" );
   EXPECT_TRUE( port( 32 )->xcvrId_ == 32 );
   EXPECT_TRUE( TestHost::traced( 0, "creating new QsfpXcvr for id 32" ) );
}

TEST_F( KeltSCPLDPortTest, PortsOutOfRangeStopTheProcess ) {
   EXPECT_DEATH( cpld.newSfpXcvr( 0, args ), "Assertion `id >= 1 && id <= 48' failed" );
   EXPECT_DEATH( cpld.newSfpXcvr( 49, args ), "Assertion `id >= 1 && id <= 48' failed" );
   EXPECT_DEATH( cpld.newQsfpXcvr( 7, args ), "Assertion `id >= 1 && id <= 6' failed" );
   EXPECT_EQ( sfp( 48 )->xcvrId_, 48u );
   EXPECT_EQ( dynamic_cast<CelXcvrCPLD::SfpXcvr &>( *sfp( 48 ) ).port_, 47 );
   qsfp( 6 );
   EXPECT_TRUE( TestHost::traced( 5, "creating new SfpXcvr for id 48" ) );
   EXPECT_TRUE( TestHost::traced( 5, "creating new QsfpXcvr for id 6" ) );
}

TEST( ComputeOffsetTest, FindsTheGroupAndTheBitOfAPort ) {
   const auto place = []( const CelXcvrCPLD::Limits &limits, uint32_t port ) {
      uint8_t index = 0, bit = 0;
      CelXcvrCPLD::computeOffsetAndBitpos( limits, port, index, bit );
      return std::pair<int, int>( index, bit );
   };
   using Place = std::pair<int, int>;
   EXPECT_EQ( place( KeltQCPLD::qsfpRegisterLimits, 8 ), Place( 1, 0 ) );
   EXPECT_EQ( place( KeltQCPLD::qsfpRegisterLimits, 31 ), Place( 3, 7 ) );
   EXPECT_EQ( place( KeltQCPLD::qsfpRegisterLimits, 32 ), Place( 4, 0 ) );
   EXPECT_EQ( place( KeltSCPLD::sfpRegisterLimits, 16 ), Place( 2, 0 ) );
   EXPECT_EQ( place( KeltSCPLD::sfpRegisterLimits, 17 ), Place( 2, 1 ) );
   EXPECT_EQ( place( KeltSCPLD::sfpRegisterLimits, 18 ), Place( 3, 0 ) );
   EXPECT_EQ( place( KeltSCPLD::sfpRegisterLimits, 48 ), Place( 8, 0 ) );
   EXPECT_EQ( place( {}, 5 ), Place( 0, 0 ) );
   EXPECT_EQ( place( { 8, 16 }, 20 ), Place( 2, 0 ) ); // after the last limit: no bit
}

TEST_F( KeltSCPLDPortTest, APortOfACpldThatIsNotPolledStopsTheProcess ) {
   Drivers::KeltSCPLD unpolled( false );
   const std::unique_ptr<Component::LogicalDevice::SfpXcvr> sfp1( unpolled.newSfpXcvr( 1, args ) );
   EXPECT_DEATH( sfp1->record_.ops->sfp.get_rx_los( &sfp1->record_, &value ),
                 "Assertion `poll_ && \"A transceiver needs a CPLD with xcvrPoll\"' failed" );
   EXPECT_DEATH( sfp1->getPresence(), "Assertion `poll_ && " );
   const std::unique_ptr<Component::LogicalDevice::QsfpXcvr> qsfp1(
      unpolled.newQsfpXcvr( 1, args ) );
   EXPECT_DEATH( qsfp1->setReset( 1 ), "Assertion `poll_ && " );
}

} // namespace
