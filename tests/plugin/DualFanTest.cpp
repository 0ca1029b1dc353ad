#include "OrbisGeneric/Drivers/DualFan.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/PluginFixture.h"

#include <fmt/format.h>

#include <clocale>
#include <limits>

namespace {

using Drivers::DualFan;

struct Rotor : Component::LogicalDevice::Fan {
   pl_status getRpm( int *rpm ) override {
      if ( status == PL_STATUS_OK )
         *rpm = speed;
      return status;
   }
   pl_status setRpm( int rpm ) override {
      set.push_back( rpm );
      return status;
   }
   int speed = 0;
   pl_status status = PL_STATUS_OK;
   std::vector<int> set;
};

class DualFanTest : public PluginFixture {
 protected:
   pl_status reading( int inletRpm, int outletRpm ) {
      inlet.speed = inletRpm;
      outlet.speed = outletRpm;
      rpm = 77;
      return fan.getRpm( &rpm );
   }
   DualFan driver;
   Rotor inlet, outlet;
   DualFan::Fan fan{ &driver, 2, 20000, 0.1f, &inlet, &outlet };
   int rpm = 77;
};

TEST_F( DualFanTest, ReportsTheMeanOfTwoRotorsThatAgree ) {
   EXPECT_EQ( reading( 10000, 9000 ), PL_STATUS_OK ); // tolerance 950
   EXPECT_EQ( rpm, 9500 );
   EXPECT_TRUE(
      TestHost::traced( 5, "DualFan::getRpm id=2 inputRpm=10000, outputRpm=9000, rpm=9500" ) );
   EXPECT_EQ( fan.faults_, 0 );
   EXPECT_EQ( reading( 10450, 8550 ), PL_STATUS_OK ); // just inside
   EXPECT_EQ( fan.faults_, 0 );
   EXPECT_EQ( reading( 10452, 8548 ), PL_STATUS_OK ); // just outside, and ignored
   EXPECT_EQ( fan.faults_, 1 );
}

TEST_F( DualFanTest, AHugeAllowedDifferenceLetsEverySpeedPass ) {
   for ( float huge : { 1e10f, std::numeric_limits<float>::infinity() } ) {
      fan.maxDiff = huge;
      EXPECT_EQ( reading( 20000, 100 ), PL_STATUS_OK );
      EXPECT_EQ( fan.faults_, 0 );
   }
   fan.maxDiff = -1e10f;
   reading( 10000, 10000 );
   EXPECT_EQ( fan.faults_, 1 );
}

TEST_F( DualFanTest, IgnoresNineFaultyReadingsAndReportsTheTenth ) {
   for ( int i = 0; i < 9; ++i ) {
      EXPECT_EQ( reading( 12000, 8000 ), PL_STATUS_OK ) << i;
      EXPECT_EQ( rpm, 10000 );
   }
   for ( int i = 0; i < 3; ++i ) {
      EXPECT_EQ( reading( 12000, 8000 ), 2 );
      EXPECT_EQ( rpm, 77 );
      EXPECT_EQ( fan.faults_, 9 );
   }
   EXPECT_TRUE(
      TestHost::traced( 0, "Fan 2 failure: excessive speed difference 0.100000 12000 8000" ) );
}

TEST_F( DualFanTest, ASlowerInletIsAFaultAtAnyDifference ) {
   for ( int i = 0; i < 9; ++i )
      EXPECT_EQ( reading( 9000, 9100 ), PL_STATUS_OK );
   EXPECT_EQ( reading( 9000, 9100 ), 2 );
   EXPECT_TRUE( TestHost::traced( 0, "Fan 2 failure: inlet speed < outlet speed 9000 9100" ) );
}

TEST_F( DualFanTest, OneGoodReadingRestartsTheCount ) {
   for ( int i = 0; i < 12; ++i )
      reading( 12000, 8000 );
   EXPECT_EQ( reading( 9000, 9000 ), PL_STATUS_OK );
   for ( int i = 0; i < 9; ++i )
      EXPECT_EQ( reading( 12000, 8000 ), PL_STATUS_OK );
   EXPECT_EQ( reading( 12000, 8000 ), 2 );
}

TEST_F( DualFanTest, ReturnsTheStatusOfTheFirstRotorThatFails ) {
   outlet.status = PL_STATUS_SOCKET;
   EXPECT_EQ( reading( 9000, 9000 ), 4 );
   inlet.status = PL_STATUS_TRANSACTION;
   EXPECT_EQ( reading( 9000, 9000 ), 6 );
   EXPECT_EQ( rpm, 77 );
   EXPECT_EQ( fan.faults_, 0 );
}

TEST_F( DualFanTest, SetsBothRotorsToTheSameSpeed ) {
   EXPECT_EQ( fan.setRpm( 12345 ), PL_STATUS_OK );
   EXPECT_EQ( inlet.set, std::vector<int>{ 12345 } );
   EXPECT_EQ( outlet.set, std::vector<int>{ 12345 } );
   EXPECT_TRUE( TestHost::traced( 5, "DualFan::setFanRpm id=2, rpm=12345" ) );
}

TEST_F( DualFanTest, DoesNotSetTheOutletWhenTheInletFails ) {
   inlet.status = PL_STATUS_TRANSACTION;
   EXPECT_EQ( fan.setRpm( 1 ), 6 );
   EXPECT_TRUE( outlet.set.empty() );
   EXPECT_TRUE( TestHost::traced( 0, "Error status 6 setting inlet fan 2 RPM" ) );
   inlet.status = PL_STATUS_OK;
   outlet.status = PL_STATUS_SOCKET;
   EXPECT_EQ( fan.setRpm( 1 ), 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error status 4 setting outlet fan 2 RPM" ) );
}

class DualFanDocumentTest : public PluginFixture {
 protected:
   DualFanDocumentTest() {
      connect( i2cTopology( "{'did':1}" ) );
      FakeServer::answersWith( { std::string( 1, '\x2B' ) } );
   }
   // The document of a rotor, as a string in the document of the module.
   static std::string rotor( int fanId, int channel ) {
      return fmt::format(
         R"({{\'did\':1,\'driver\':\'EMC2305\',\'address\':{{\'address\':77}},)"
         R"(\'driverArgs\':{{\'fanId\':{},\'maxRpm\':23000,\'registerOffset\':{}}}}})",
         fanId, channel );
   }
   static const char *document( const std::string &driverArgs ) {
      return document( rotor( 1, 0 ), rotor( 2, 1 ), driverArgs );
   }
   static const char *document( const std::string &inlet, const std::string &outlet,
                                const std::string &driverArgs ) {
      return json( fmt::format( "{{'did':500,'driver':'DualFan','address':{{'address':0}},"
                                "'isMultiDevice':true,'multiDeviceArgs':{{'inlet':'{}',"
                                "'outlet':'{}'}},'driverArgs':{{{}}}}}",
                                inlet, outlet, driverArgs ) );
   }
};

TEST_F( DualFanDocumentTest, AMultiDeviceDocumentMakesACompositeOfItsTwoFans ) {
   pl_fan *fan = pl_fan_add( document( "'fanId':1,'maxRpm':23000,'maxDiff':0.25" ) );
   ASSERT_NE( fan, nullptr );
   auto *composite = dynamic_cast<DualFan *>( Component::DeviceBase::devices.at( 500 ) );
   ASSERT_NE( composite, nullptr );
   EXPECT_EQ( composite->fans_.size(), 2u );
   EXPECT_TRUE( TestHost::traced( 0, "Creating DualFan Device" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating new DualFan Fan" ) );
   EXPECT_TRUE( TestHost::traced( 5, "new DualFan id=1, rpm=23000, maxDiff=0.250000" ) );
   FakeServer::received.clear();
   EXPECT_EQ( fan->ops->set_rpm( fan, 23000 ), PL_STATUS_OK );
   ASSERT_EQ( FakeServer::received.size(), 2u );
   EXPECT_NE( FakeServer::inWords( FakeServer::received[0].request( 0 ) ).find( "reg 0x30 " ),
              std::string::npos );
   EXPECT_NE( FakeServer::inWords( FakeServer::received[1].request( 0 ) ).find( "reg 0x40 " ),
              std::string::npos );
}

TEST_F( DualFanDocumentTest, ItsIdIsZeroBased ) {
   pl_fan *fan = pl_fan_add( document( "'fanId':3,'maxRpm':23000,'maxDiff':0.25" ) );
   ASSERT_NE( fan, nullptr );
   FakeServer::answer = []( auto *, auto ** ) { return -1; };
   EXPECT_EQ( fan->ops->set_rpm( fan, 23000 ), 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error status 4 setting inlet fan 2 RPM" ) );
}

TEST_F( DualFanDocumentTest, ARotorThatCantBeMadeStopsTheProcess ) {
   const char *const arguments = "'fanId':1,'maxRpm':1,'maxDiff':1";
   EXPECT_DEATH( pl_fan_add( document( "{", rotor( 2, 1 ), arguments ) ),
                 "Assertion `inlet' failed" );
   EXPECT_DEATH( pl_fan_add( document( rotor( 1, 0 ), "{", arguments ) ),
                 "Assertion `outlet' failed" );
}

TEST_F( DualFanDocumentTest, MissingArgumentsAndIdsOutOfRangeStopTheProcess ) {
   EXPECT_DEATH( pl_fan_add( document( "'maxRpm':1,'maxDiff':1" ) ),
                 "Assertion `fanIt != args.driverArgs.end\\(\\)' failed" );
   EXPECT_DEATH( pl_fan_add( document( "'fanId':1,'maxDiff':1" ) ),
                 "Assertion `rpmIt != args.driverArgs.end\\(\\)' failed" );
   EXPECT_DEATH( pl_fan_add( document( "'fanId':1,'maxRpm':1" ) ),
                 "Assertion `diffIt != args.driverArgs.end\\(\\)' failed" );
   EXPECT_DEATH( pl_fan_add( document( "'fanId':6,'maxRpm':1,'maxDiff':1" ) ),
                 "fanId >= 1 && fanId <= 5" );
}

// Some hosts run with the locale of their users.
TEST_F( DualFanDocumentTest, TheAllowedDifferenceHasADecimalPointInEveryLocale ) {
   const char *commas = nullptr;
   for ( const char *locale : { "de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR" } )
      if ( !commas )
         commas = setlocale( LC_NUMERIC, locale );
   if ( !commas )
      GTEST_SKIP() << "no locale with a decimal comma is installed";
   pl_fan_add( document( "'fanId':1,'maxRpm':23000,'maxDiff':0.25" ) );
   setlocale( LC_NUMERIC, "C" ); // the trace has the host's comma
   EXPECT_TRUE( TestHost::traced( 5, "new DualFan id=1, rpm=23000, maxDiff=0,250000" ) );
}

} // namespace
