#include "OrbisGeneric/Drivers/PsuSlot.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/Layout.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

REVEAL( IndexOfSupplysBay, Component::LogicalDevice::Slot::index_ );

namespace {

using Drivers::PsuSlot;

class PsuSlotTest : public PluginFixture {
 protected:
   PsuSlotTest() { driver.ham_ = &ham; }
   ~PsuSlotTest() override { free( fdl ); }

   using Arguments = std::map<std::string, std::string>;

   std::unique_ptr<Component::LogicalDevice::Slot> slot( Arguments more ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "psuId", "1" } };
      args.driverArgs.merge( more );
      return std::unique_ptr<Component::LogicalDevice::Slot>( driver.newSlot( args ) );
   }
   std::unique_ptr<Component::LogicalDevice::Slot> known( const char *type ) {
      return slot( { { "identificationType", type },
                     { "model_1", "PWR-A" },
                     { "psuFdl_1", "a {serialNum}" },
                     { "model_2", "PWR-B" },
                     { "psuFdl_2", "b {serialNum}" } } );
   }
   static Bytes counted( const std::string &text ) {
      Bytes bytes = { static_cast<uint8_t>( text.size() ) };
      bytes.insert( bytes.end(), text.begin(), text.end() );
      return bytes;
   }
   void expectPmbusSupply( const std::string &model, const std::string &serial ) {
      ham.expectBatch( { read8( 0x9A ).answers( { static_cast<uint8_t>( model.size() ) } ),
                         read8( 0x9E ).answers( { static_cast<uint8_t>( serial.size() ) } ) } );
      ham.expectBatch(
         { read( 0x9A, static_cast<unsigned>( model.size() + 1 ) ).answers( counted( model ) ),
           read( 0x9E, static_cast<unsigned>( serial.size() + 1 ) )
              .answers( counted( serial ) ) } );
   }
   // An IPMI product info area at byte 8 * offset.
   void expectIpmiSupply( uint8_t offset, const std::string &model, const std::string &serial ) {
      const std::string maker = "ACME", part = "P-1", version = "02";
      unsigned at = offset * 8u + 3;
      ham.expectBatch( { read8( 4 ).answers( { offset } ) } );
      for ( const auto &[text, kept] : { std::pair{ maker, false },
                                         { model, true },
                                         { part, false },
                                         { version, false },
                                         { serial, true } } ) {
         ham.expectBatch(
            { read8( at % 256 ).answers( { static_cast<uint8_t>( 0xC0 | text.size() ) } ) } );
         if ( kept )
            ham.expectBatch( { read( ( at + 1 ) % 256, static_cast<unsigned>( text.size() ) )
                                  .answers( Bytes( text.begin(), text.end() ) ) } );
         at += 1 + static_cast<unsigned>( text.size() );
      }
   }
   // The description line that the slot returns now, or an empty text and its status.
   std::string present( Component::LogicalDevice::Slot &s ) {
      free( fdl );
      fdl = nullptr;
      status = s.record_.ops->get_presence( &s.record_, &fdl );
      EXPECT_EQ( status == PL_STATUS_OK, fdl != nullptr );
      return fdl ? fdl : "";
   }
   ScriptedHam ham;
   PsuSlot driver;
   char *fdl = nullptr;
   pl_status status = PL_STATUS_OK;
};

TEST_F( PsuSlotTest, IdentifiesAPmbusSupplyByLengthThenBlock ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( "PWR-B", "SN42" );
   EXPECT_EQ( present( *bay ), "b SN42" );
   EXPECT_TRUE( TestHost::traced( 7, "getPresence" ) );
   EXPECT_TRUE( TestHost::traced( 7, "readSerialAndModelPmbus" ) );
   EXPECT_TRUE( TestHost::traced( 0, "PSU serialNum = 'SN42'" ) );
   EXPECT_TRUE( TestHost::traced( 0, "PSU modelName = 'PWR-B'" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating new PsuSlot for Psu id 1" ) );
   EXPECT_FALSE( TestHost::traced( 0, "Invalid identification type: 'pmbus'" ) );
}

TEST_F( PsuSlotTest, BayIdsAreZeroBased ) {
   for ( const auto &[id, index] : { std::pair{ "1", 0 }, { "2", 1 } } ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "psuId", id } };
      std::unique_ptr<Component::LogicalDevice::Slot> bay( driver.newSlot( args ) );
      EXPECT_EQ( ( *bay ).*revealed( IndexOfSupplysBay() ), index );
   }
}

TEST_F( PsuSlotTest, IdentifiesAnIpmiSupplyByItsProductArea ) {
   auto bay = known( "ipmi" );
   expectIpmiSupply( 1, "PWR-A", "SN7" );
   EXPECT_EQ( present( *bay ), "a SN7" );
}

TEST_F( PsuSlotTest, AnIpmiAreaAtByte256WrapsToRegister3 ) {
   auto bay = known( "ipmi" );
   expectIpmiSupply( 0x20, "PWR-A", "SN7" );
   EXPECT_EQ( present( *bay ), "a SN7" );
}

TEST_F( PsuSlotTest, ABlockLengthOf255IsReadWithALengthOfZero ) {
   auto bay = known( "pmbus" );
   ham.expectBatch( { read8( 0x9A ).answers( { 0xFF } ), read8( 0x9E ).answers( { 4 } ) } );
   ham.expectBatch( { read( 0x9A, 0 ), read( 0x9E, 5 ).answers( counted( "SN42" ) ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 1 );
}

TEST_F( PsuSlotTest, AnEmptyModelOrSerialMeansNoSupply ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( "", "SN42" );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 1 );
   EXPECT_TRUE( TestHost::traced( 7, "Failed to read PSU info 'SN42' ''" ) );
   expectPmbusSupply( "PWR-A", "" );
   EXPECT_EQ( present( *bay ), "" );
   expectPmbusSupply( " \t ", "SN42" );
   EXPECT_EQ( present( *bay ), "" );
}

TEST_F( PsuSlotTest, TheSameSupplyGetsACopyOfTheCachedLine ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
   char *first = fdl;
   fdl = nullptr;
   TestHost::traces.clear();
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
   EXPECT_NE( fdl, first );
   EXPECT_TRUE( TestHost::traced( 7, "Using cached fdl" ) );
   EXPECT_TRUE( TestHost::tracedAt( 0 ).empty() );
   free( first );
}

TEST_F( PsuSlotTest, ASwapIsNoticedByItsSerial ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
   expectPmbusSupply( "PWR-A", "SN43" );
   EXPECT_EQ( present( *bay ), "a SN43" );
}

TEST_F( PsuSlotTest, EveryFailureClearsTheCache ) {
   auto bay = known( "pmbus" );
   for ( int failing : { 0, 1, 2 } ) {
      expectPmbusSupply( "PWR-A", "SN42" );
      EXPECT_EQ( present( *bay ), "a SN42" );
      if ( failing == 0 ) {
         ham.expectBatch( { read8( 0x9A ).fails( 6 ), read8( 0x9E ) } );
      } else if ( failing == 1 ) {
         ham.expectBatch( { read8( 0x9A ).answers( { 5 } ), read8( 0x9E ).answers( { 4 } ) } );
         ham.expectBatch( { read( 0x9A, 6 ), read( 0x9E, 5 ).fails( 6 ) } );
      } else {
         expectPmbusSupply( "PWR-X", "SN42" );
      }
      EXPECT_EQ( present( *bay ), "" );
      EXPECT_EQ( status, 1 );
      TestHost::traces.clear();
      expectPmbusSupply( "PWR-A", "SN42" );
      EXPECT_EQ( present( *bay ), "a SN42" );
      EXPECT_FALSE( TestHost::traced( 7, "Using cached fdl" ) );
   }
}

TEST_F( PsuSlotTest, ASupplyOfAnUnknownModelIsUnmanaged ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( "PWR-X", "SN42" );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 1 );
   EXPECT_TRUE( TestHost::traced( 0, "Unknown modelName. PSU is unmanaged" ) );
}

TEST_F( PsuSlotTest, TheModelIsTrimmedAndTheSerialIsNot ) {
   auto bay = known( "pmbus" );
   expectPmbusSupply( " PWR-A  ", "SN42  " );
   EXPECT_EQ( present( *bay ), "a SN42  " );
   auto ipmi = known( "ipmi" );
   expectIpmiSupply( 1, "PWR-A  ", "SN7 " );
   EXPECT_EQ( present( *ipmi ), "a SN7 " );
}

TEST_F( PsuSlotTest, ModelsAreNumberedWithoutAGap ) {
   auto bay = slot( { { "identificationType", "pmbus" },
                      { "model_1", "PWR-A" },
                      { "psuFdl_1", "a {serialNum}" },
                      { "model_3", "PWR-C" },
                      { "psuFdl_3", "c {serialNum}" } } );
   expectPmbusSupply( "PWR-C", "SN42" );
   EXPECT_EQ( present( *bay ), "" );
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
}

TEST_F( PsuSlotTest, TheLaterTemplateOfAModelWins ) {
   auto bay = slot( { { "identificationType", "pmbus" },
                      { "model_1", "M" },
                      { "psuFdl_1", "early {serialNum}" },
                      { "model_2", "M" },
                      { "psuFdl_2", "late {serialNum}" } } );
   expectPmbusSupply( "M", "S" );
   EXPECT_EQ( present( *bay ), "late S" );
}

TEST_F( PsuSlotTest, ATextThatCantBeCopiedReturns6 ) {
   auto bay = known( "pmbus" );
   TestHost::copiesTexts = false;
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: PsuSlot::Slot strdup failed" ) );
   TestHost::copiesTexts = true;
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
   TestHost::copiesTexts = false;
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "" ); // the cached text
   EXPECT_EQ( status, 6 );
}

TEST_F( PsuSlotTest, AnUnknownIdentificationTypeMeansPmbus ) {
   auto bay = known( "smoke" );
   EXPECT_TRUE( TestHost::traced( 0, "Invalid identification type: 'smoke'" ) );
   expectPmbusSupply( "PWR-A", "SN42" );
   EXPECT_EQ( present( *bay ), "a SN42" );
   slot( {} );
   EXPECT_TRUE( TestHost::traced( 0, "Invalid identification type: ''" ) );
}

TEST_F( PsuSlotTest, EachFailingIpmiReadIsTraced ) {
   auto bay = known( "ipmi" );
   ham.expectBatch( { read8( 4 ).fails( 6 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_TRUE( TestHost::traced( 0, "Error reading product info offset" ) );
   ham.expectBatch( { read8( 4 ).answers( { 1 } ) } );
   ham.expectBatch( { read8( 11 ).fails( 6 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_TRUE( TestHost::traced( 0, "Error reading type/length byte" ) );
   ham.expectBatch( { read8( 4 ).answers( { 1 } ) } );
   ham.expectBatch( { read8( 11 ).answers( { 0xC0 } ) } );
   ham.expectBatch( { read8( 12 ).answers( { 0xC5 } ) } );
   ham.expectBatch( { read( 13, 5 ).fails( 6 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_TRUE( TestHost::traced( 0, "Error reading product info field" ) );
   EXPECT_EQ( status, 1 );
}

TEST_F( PsuSlotTest, AFieldThatIsNotAsciiStopsTheProcess ) {
   auto bay = known( "ipmi" );
   EXPECT_DEATH(
      {
         ham.expectBatch( { read8( 4 ).answers( { 1 } ) } );
         ham.expectBatch( { read8( 11 ).answers( { 0x84 } ) } );
         bay->getPresence( &fdl );
      },
      ::testing::AllOf( ::testing::HasSubstr( "OrbisGeneric/Drivers/PsuSlot.cpp" ),
                        ::testing::HasSubstr( "Assertion `type == 3 && \"Expected type code 3 "
                                              "(8-bit ASCII)\"' failed" ) ) );
}

TEST_F( PsuSlotTest, ASlotNeedsABayNumberAndATemplateForEveryModel ) {
   Drivers::DriverArgs args;
   EXPECT_EQ( driver.newSlot( args ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "Error: expected 'psuId' in slot driverArgs" ) );
   args.driverArgs = { { "psuId", "3" } };
   EXPECT_DEATH( driver.newSlot( args ), "Assertion `psuId == 1 \\|\\| psuId == 2' failed" );
   EXPECT_DEATH(
      slot( { { "model_1", "M" } } ),
      ::testing::HasSubstr( "Assertion `slotArgs_.find( psuFdlKey ) != slotArgs_.end()' failed" ) );
}

TEST_F( PsuSlotTest, ItsCreationIsTracedWithTheTextOfThePmbusDriver ) {
   Drivers::DriverArgs args;
   std::unique_ptr<Component::HardwareDevice> device( PsuSlot::create( args, nullptr ) );
   EXPECT_TRUE( TestHost::traced( 0, "Creating Pmbus Device" ) );
}

} // namespace
