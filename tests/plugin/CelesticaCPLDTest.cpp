// Transceiver ports of both CPLDs, checked with the tables of the board.
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaXcvr.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Drivers::CelXcvrCPLD;
using Drivers::KeltQCPLD;
using Drivers::KeltSCPLD;

// The rows of the register tables, one for each group of ports.
struct Group {
   int firstPort, lastPort;
   unsigned registers[4];
};
const std::vector<Group> qcpldQsfp = { { 1, 8, { 0x250, 0x252, 0x254, 0x256 } },
                                       { 9, 16, { 0x251, 0x253, 0x255, 0x257 } },
                                       { 17, 24, { 0x2D0, 0x2D2, 0x2D4, 0x2D6 } },
                                       { 25, 32, { 0x2D1, 0x2D3, 0x2D5, 0x2D7 } } };
const std::vector<Group> scpldSfp = {
   { 1, 8, { 0x240, 0x250, 0x256, 0x259 } },   { 9, 16, { 0x241, 0x251, 0x257, 0x25A } },
   { 17, 18, { 0x242, 0x252, 0x258, 0x25B } }, { 19, 26, { 0x2C0, 0x2D0, 0x2D6, 0x2D9 } },
   { 27, 34, { 0x2C1, 0x2D1, 0x2D7, 0x2DA } }, { 35, 36, { 0x2C2, 0x2D2, 0x2D8, 0x2DB } },
   { 37, 44, { 0x3C0, 0x3D0, 0x3D4, 0x3D6 } }, { 45, 48, { 0x3C1, 0x3D1, 0x3D5, 0x3D7 } }
};
const std::vector<Group> scpldQsfp = { { 1, 6, { 0x360, 0x361, 0x362, 0x363 } } };
const std::vector<unsigned> qcpldLeds = { 0x203, 0x204, 0x283, 0x284, 0x285, 0x286, 0x394,
                                          0x395, 0x396, 0x397, 0x398, 0x399, 0x39A, 0x39B,
                                          0x39C, 0x39D, 0x39E, 0x39F, 0x3A0, 0x3A1, 0x3A2 };
const std::vector<unsigned> scpldLeds = { 0x383, 0x384, 0x385 };

template <typename Cpld>
class CpldTest : public PluginFixture {
 protected:
   // The batch of a poll. A register in `values` reads its value; all other registers read
   // `others`.
   std::vector<Transfer> poll( std::map<unsigned, uint8_t> values, uint8_t others ) {
      std::vector<Transfer> batch;
      for ( const auto &table : tables )
         for ( const auto &group : *table )
            for ( unsigned reg : group.registers )
               batch.push_back(
                  read8( reg ).answers( { values.count( reg ) ? values[reg] : others } ) );
      return batch;
   }
   void bringUp( std::map<unsigned, uint8_t> values = {}, uint8_t others = 0 ) {
      cpld.ham_ = &ham;
      ham.expectBatch( poll( std::move( values ), others ) );
      for ( unsigned reg : leds )
         ham.expectBatch( { write8( reg, 0xFF ) } );
      cpld.init();
      ham.verify();
   }
   void tick( std::vector<Transfer> batch ) {
      ham.expectBatch( std::move( batch ) );
      TestHost::timers.at( 0 )->expire();
   }
   ScriptedHam ham;
   Cpld cpld{ true };
   std::vector<const std::vector<Group> *> tables;
   std::vector<unsigned> leds;
   Drivers::DriverArgs args;
   int value = 77;
};

class KeltQCPLDTest : public CpldTest<KeltQCPLD> {
 protected:
   KeltQCPLDTest() {
      tables = { &qcpldQsfp };
      leds = qcpldLeds;
   }
   std::unique_ptr<Component::LogicalDevice::QsfpXcvr> port( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::QsfpXcvr>( cpld.newQsfpXcvr( id, args ) );
   }
};

class KeltSCPLDTest : public CpldTest<KeltSCPLD> {
 protected:
   KeltSCPLDTest() {
      tables = { &scpldQsfp, &scpldSfp };
      leds = scpldLeds;
   }
   std::unique_ptr<Component::LogicalDevice::SfpXcvr> sfp( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::SfpXcvr>( cpld.newSfpXcvr( id, args ) );
   }
   std::unique_ptr<Component::LogicalDevice::QsfpXcvr> qsfp( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::QsfpXcvr>( cpld.newQsfpXcvr( id, args ) );
   }
};

TEST_F( KeltQCPLDTest, FillsItsCacheSwitchesTheErrorLedsOffAndPollsOnceASecond ) {
   bringUp();
   EXPECT_EQ( TestHost::timers.at( 0 )->milliseconds, 1000u );
   EXPECT_TRUE( TestHost::timers.at( 0 )->armed );
   tick( poll( {}, 0 ) );
   EXPECT_TRUE( TestHost::timers.at( 0 )->armed );
   EXPECT_TRUE( TestHost::traced( 5, "KeltQCPLD init function" ) );
   EXPECT_TRUE( TestHost::traced( 0, "CelXcvrCPLD::init()" ) );
   EXPECT_TRUE( TestHost::traced( 6, "Register cache updated for CelXcvrCPLD" ) );
}

TEST_F( KeltQCPLDTest, ATimerThatCantBeArmedStopsTheProcess ) {
   cpld.ham_ = &ham;
   ham.expectBatch( poll( {}, 0 ) );
   for ( unsigned reg : leds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   TestHost::armsTimers = false;
   EXPECT_DEATH( cpld.init(), "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.cpp.*Assertion "
                              "`pollStart\\(\\)' failed" );
   TestHost::armsTimers = true;
   cpld.init();
}

// Every signal of every port: only its bit is set, then only its bit is clear.
template <typename Read>
void expectBitOf( const std::vector<Group> &table, unsigned signal, bool activeLow, Read read ) {
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

TEST_F( KeltQCPLDTest, ReadsEverySignalOfEveryPortFromItsBit ) {
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

TEST_F( KeltSCPLDTest, ReadsEverySignalOfEverySfpPortFromItsBit ) {
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

TEST_F( KeltSCPLDTest, ReadsEverySignalOfEveryQsfpPortFromItsBit ) {
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

TEST_F( KeltQCPLDTest, WritesTheBitOfEveryPortAndKeepsTheOtherCachedBits ) {
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

TEST_F( KeltSCPLDTest, WritesTheBitOfEveryPortAndKeepsTheOtherCachedBits ) {
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

TEST_F( KeltQCPLDTest, AFailedWriteKeepsTheCache ) {
   bringUp();
   auto xcvr = port( 9 );
   ham.expectBatch( { write8( 0x253, 0x01 ).fails( 6 ) } );
   EXPECT_EQ( xcvr->setLpMode( 1 ), 6 );
   EXPECT_EQ( xcvr->getLpMode( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( KeltQCPLDTest, AFailedPollKeepsTheCacheAndIsRepeatedAtTheNextTick ) {
   bringUp( { { 0x255, 0x01 } } );
   auto xcvr = port( 9 );
   auto failing = poll( {}, 0 );
   failing.back() = failing.back().fails( 4 );
   tick( failing );
   EXPECT_TRUE( TestHost::traced( 0, "Failed to poll information for CelXcvrCPLD" ) );
   EXPECT_EQ( xcvr->getPresence(), 1 );
   tick( poll( {}, 0 ) );
   EXPECT_EQ( xcvr->getPresence(), 0 );
   ham.expectBatch( failing );
   EXPECT_FALSE( cpld.updateRegisterCache() );
   ham.expectBatch( poll( {}, 0 ) );
   EXPECT_TRUE( cpld.updateRegisterCache() );
}

TEST_F( KeltQCPLDTest, ARegisterThatWasNeverPolledReadsZero ) {
   cpld.ham_ = &ham;
   auto failing = poll( {}, 0 );
   failing[0] = failing[0].fails( 6 );
   ham.expectBatch( failing );
   for ( unsigned reg : qcpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   cpld.init();
   auto xcvr = port( 1 );
   EXPECT_EQ( xcvr->getPresence(), 0 );
   EXPECT_EQ( xcvr->getReset( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( xcvr->getInterrupt( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( xcvr->getLpMode( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( KeltQCPLDTest, ModuleSelectOnlyTraces ) {
   bringUp();
   auto xcvr = port( 2 );
   EXPECT_EQ( xcvr->getModSel( &value ), PL_STATUS_OK );
   EXPECT_EQ( xcvr->setModSel( 1 ), PL_STATUS_OK );
   EXPECT_EQ( value, 77 );
   EXPECT_TRUE( TestHost::traced( 5, "getQsfpModSel(): id=1" ) );
   EXPECT_TRUE( TestHost::traced( 5, "setQsfpModSel(): id=1" ) );
}

TEST_F( KeltQCPLDTest, EveryQsfpOperationTracesItsPort ) {
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

TEST_F( KeltQCPLDTest, WithoutThePollFlagOnlyTheErrorLedsAreWritten ) {
   KeltQCPLD quiet( false );
   quiet.ham_ = &ham;
   for ( unsigned reg : qcpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   quiet.init();
   EXPECT_FALSE( TestHost::timers.at( 1 )->armed );
   quiet.pollCallback(); // sends nothing
}

TEST_F( KeltSCPLDTest, AFailedErrorLedWriteIsTracedAndTheOtherLedsAreWritten ) {
   cpld.ham_ = &ham;
   ham.expectBatch( poll( {}, 0 ) );
   ham.expectBatch( { write8( 0x383, 0xFF ) } );
   ham.expectBatch( { write8( 0x384, 0xFF ).fails( 6 ) } );
   ham.expectBatch( { write8( 0x385, 0xFF ) } );
   cpld.init();
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(),
              "Failed to write QSFP Port Error LED Register: 132" ); // 0x84: the low byte
}

TEST_F( KeltQCPLDTest, PortsOutOfRangeStopTheProcess ) {
   EXPECT_DEATH( cpld.newQsfpXcvr( 0, args ), "Assertion `id >= 1 && id <= 32' failed" );
   EXPECT_DEATH( cpld.newQsfpXcvr( 33, args ), "Assertion `id >= 1 && id <= 32' failed" );
   EXPECT_TRUE( port( 32 )->xcvrId_ == 32 );
   EXPECT_TRUE( TestHost::traced( 0, "creating new QsfpXcvr for id 32" ) );
}

TEST_F( KeltSCPLDTest, PortsOutOfRangeStopTheProcess ) {
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

TEST_F( KeltQCPLDTest, ARegisterCanBeReadFromTheBusBeforeItsBitIsUsed ) {
   cpld.ham_ = &ham;
   ham.expectBatch( { read8( 0x111 ).answers( { 0x80 } ) } );
   EXPECT_EQ( cpld.getRegisterBit( 0x111, 7, &value, true ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   ham.expectBatch( { read8( 0x111 ).fails( 6 ) } );
   EXPECT_EQ( cpld.getRegisterBit( 0x111, 7, &value, true ), 6 );
   ham.expectBatch( { read8( 0x112 ).answers( { 0x80 } ) } );
   ham.expectBatch( { write8( 0x112, 0x81 ) } );
   EXPECT_EQ( cpld.setRegisterBit( 0x112, 0, 1, true ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x112 ).fails( 4 ) } );
   EXPECT_EQ( cpld.setRegisterBit( 0x112, 1, 1, true ), 4 );
}

class CpldFactoryTest : public PluginFixture {};

TEST_F( CpldFactoryTest, WithoutThePollFlagNeitherCacheNorTimerIsUsed ) {
   CelXcvrCPLD plain( false );
   plain.CelXcvrCPLD::init(); // without an access method
   EXPECT_TRUE( TestHost::traced( 0, "CelXcvrCPLD::init()" ) );
   EXPECT_FALSE( TestHost::timers.at( 0 )->armed );
}

TEST_F( CpldFactoryTest, TheTypeGpioMakesAPlainDevice ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "type", "gpio" } };
   for ( auto create : { KeltQCPLD::create, KeltSCPLD::create } ) {
      std::unique_ptr<Component::HardwareDevice> device( create( args, nullptr ) );
      EXPECT_EQ( dynamic_cast<CelXcvrCPLD *>( device.get() ), nullptr );
   }
   EXPECT_TRUE( TestHost::timers.empty() );
   EXPECT_TRUE( TestHost::traced( 5, "Creating KeltQCPLD device" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating KeltSCPLD device" ) );
}

TEST_F( CpldFactoryTest, AnyOtherTypeMakesACpld ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "type", "psu" } };
   for ( auto create : { KeltQCPLD::create, KeltSCPLD::create } ) {
      std::unique_ptr<Component::HardwareDevice> device( create( args, nullptr ) );
      EXPECT_NE( dynamic_cast<CelXcvrCPLD *>( device.get() ), nullptr );
   }
}

TEST_F( CpldFactoryTest, ThePollFlagCountsWithAnyValue ) {
   ScriptedHam ham;
   Drivers::DriverArgs args;
   args.driverArgs = { { "xcvrPoll", "false" } };
   std::unique_ptr<Component::HardwareDevice> device( KeltSCPLD::create( args, nullptr ) );
   device->ham_ = &ham;
   std::vector<Transfer> batch;
   for ( const auto *table : { &scpldQsfp, &scpldSfp } )
      for ( const auto &group : *table )
         for ( unsigned reg : group.registers )
            batch.push_back( read8( reg ).answers( { 0 } ) );
   ham.expectBatch( batch );
   for ( unsigned reg : scpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   device->init();
   EXPECT_TRUE( TestHost::traced( 5, "KeltSCPLD init function" ) );
}

} // namespace
