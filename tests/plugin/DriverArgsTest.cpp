#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/PluginFixture.h"

#include <locale>
#include <rapidjson/document.h>

namespace {

class DriverArgsTest : public PluginFixture {
 protected:
   // A document with these additional members.
   static const char *document( const std::string &members ) {
      return json( "{'did':7,'driver':'D','address':{'address':72}" + members + "}" );
   }
   std::string textOf( const std::string &value ) {
      Drivers::DriverArgs record;
      EXPECT_TRUE( record.parseJSON( document( ",'driverArgs':{'k':" + value + "}" ) ) );
      return record.driverArgs.at( "k" );
   }

   Drivers::DriverArgs args;
};

TEST_F( DriverArgsTest, AFreshRecordIsEmpty ) {
   EXPECT_EQ( args.driver, "" );
   EXPECT_EQ( args.uid, 0u );
   EXPECT_EQ( args.did, 0u );
   EXPECT_EQ( args.jsonText, nullptr );
   EXPECT_FALSE( args.isMultiDevice );
}

TEST_F( DriverArgsTest, TakesTheValuesOfTheDocument ) {
   const char *text = document( ",'uid':3,'driverArgs':{'a':1}" );
   ASSERT_TRUE( args.parseJSON( text ) );
   EXPECT_EQ( args.did, 7u );
   EXPECT_EQ( args.driver, "D" );
   EXPECT_EQ( args.uid, 3u );
   EXPECT_EQ( args.address.address, 72u );
   EXPECT_EQ( args.driverArgs.at( "a" ), "1" );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_EQ( args.jsonText, text ); // borrowed, not copied
}

TEST_F( DriverArgsTest, WithoutAUidThereIsNoComponent ) {
   ASSERT_TRUE( args.parseJSON( document( "" ) ) );
   EXPECT_EQ( args.uid, 4294967295u );
}

TEST_F( DriverArgsTest, EveryArgumentIsText ) {
   EXPECT_EQ( textOf( "500" ), "500" );
   EXPECT_EQ( textOf( "-1" ), "-1" );
   EXPECT_EQ( textOf( "3000000000" ), "3000000000" );
   EXPECT_EQ( textOf( "4294967295" ), "4294967295" );
   EXPECT_EQ( textOf( "'x'" ), "x" );
   EXPECT_EQ( textOf( "true" ), "true" );
   EXPECT_EQ( textOf( "false" ), "false" );
}

TEST_F( DriverArgsTest, AFractionHasSixSignificantDigits ) {
   EXPECT_EQ( textOf( "0.25" ), "0.25" );
   EXPECT_EQ( textOf( "100.0" ), "100" );
   EXPECT_EQ( textOf( "1234567.0" ), "1.23457e+06" );
}

// The numbers of a locale that writes 1234,5.
struct Commas : std::numpunct<char> {
   char do_decimal_point() const override { return ','; }
};

TEST_F( DriverArgsTest, AFractionHasADecimalPointInEveryLocaleOfTheHost ) {
   const std::locale before =
      std::locale::global( std::locale( std::locale::classic(), new Commas ) );
   const bool parsed = args.parseJSON( document( ",'driverArgs':{'a':0.25}" ) );
   std::locale::global( before );
   ASSERT_TRUE( parsed );
   EXPECT_EQ( args.driverArgs["a"], "0.25" );
}

TEST_F( DriverArgsTest, AValueWithoutATextIsEmpty ) {
   for ( const char *value : { "5000000000", "-5000000000", "null", "[1]", "{}" } )
      EXPECT_EQ( textOf( value ), "" ) << value;
}

TEST_F( DriverArgsTest, TheLaterOfTwoEqualArgumentNamesWins ) {
   ASSERT_TRUE( args.parseJSON( document( ",'driverArgs':{'a':1,'a':2}" ) ) );
   EXPECT_EQ( args.driverArgs.at( "a" ), "2" );
}

TEST_F( DriverArgsTest, AMultiDeviceHasSubDevices ) {
   ASSERT_TRUE( args.parseJSON(
      document( ",'isMultiDevice':true,'multiDeviceArgs':{'in':'{}','out':'x'}" ) ) );
   EXPECT_TRUE( args.isMultiDevice );
   EXPECT_EQ( args.multiDeviceArgs,
              ( std::map<std::string, std::string>{ { "in", "{}" }, { "out", "x" } } ) );
}

TEST_F( DriverArgsTest, OtherDevicesIgnoreSubDevices ) {
   ASSERT_TRUE(
      args.parseJSON( document( ",'isMultiDevice':false,'multiDeviceArgs':{'in':'{}'}" ) ) );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_TRUE( args.multiDeviceArgs.empty() );
}

TEST_F( DriverArgsTest, ASyntaxErrorIsTracedAndFillsNothing ) {
   EXPECT_FALSE( args.parseJSON( "{" ) );
   EXPECT_TRUE( TestHost::traced(
      0, "failed to load device from json: Missing a name for object member. offset 1" ) );
   EXPECT_EQ( args.jsonText, nullptr );
   EXPECT_FALSE( args.parseJSON( "" ) );
   EXPECT_TRUE(
      TestHost::traced( 0, "failed to load device from json: The document is empty. offset 0" ) );
}

TEST_F( DriverArgsTest, ARecordFromAnObjectHasNoText ) {
   rapidjson::Document parsed;
   parsed.Parse( document( "" ) );
   const auto record = Drivers::DriverArgs::fromJSON( parsed );
   EXPECT_EQ( record->did, 7u );
   EXPECT_EQ( record->jsonText, nullptr );
}

TEST_F( DriverArgsTest, ADocumentThatBreaksTheRulesStopsTheProcess ) {
   for ( const auto &[text, condition] : std::vector<std::pair<const char *, const char *>>{
            { "1", "json.IsObject()" },
            { "{'driver':'D','address':{'address':1}}", "json.HasMember( \"did\" )" },
            { "{'did':1,'address':{'address':1}}", "json.HasMember( \"driver\" )" },
            { "{'did':1,'driver':'D'}", "json.HasMember( \"address\" )" },
            { "{'did':1,'driver':'D','address':1}", "value.IsObject()" },
            { "{'did':1,'driver':'D','address':{'address':1},'isMultiDevice':1}", "IsBool()" },
            { "{'did':1,'driver':'D','address':{'address':1},'isMultiDevice':true}",
              "json.HasMember( \"multiDeviceArgs\" )" },
            { "{'did':1,'driver':'D','address':{'address':1},'driverArgs':[]}",
              "json[\"driverArgs\"].IsObject()" },
            { "{'did':1,'driver':'D','address':{'address':1},'isMultiDevice':true,"
              "'multiDeviceArgs':[]}",
              "json[\"multiDeviceArgs\"].IsObject()" },
            // Assertions of the JSON library.
            { "{'did':'1','driver':'D','address':{'address':1}}", "kUintFlag" },
            { "{'did':1,'uid':'1','driver':'D','address':{'address':1}}", "kUintFlag" },
            { "{'did':1,'driver':'D','address':{'address':1},'isMultiDevice':true,"
              "'multiDeviceArgs':{'a':1}}",
              "IsString()" },
         } )
      EXPECT_DEATH( args.parseJSON( json( text ) ),
                    ::testing::AllOf( ::testing::HasSubstr( "Assertion `" ),
                                      ::testing::HasSubstr( condition ) ) )
         << text;
}

TEST_F( DriverArgsTest, ARecordThatIsFilledAgainIsNoLongerAMultiDevice ) {
   args.isMultiDevice = true;
   ASSERT_TRUE( args.parseJSON( document( "" ) ) );
   EXPECT_FALSE( args.isMultiDevice );
}

class InsertDriverArgTest : public PluginFixture {
 protected:
   static std::string inserted( const std::string &text, const char *key, const char *value ) {
      char *out = nullptr;
      EXPECT_TRUE( Drivers::insertDriverArg( json( text ), &out, key, value ) );
      return out;
   }
};

TEST_F( InsertDriverArgTest, WritesTheDocumentCompactlyWithTheNewArgument ) {
   EXPECT_EQ( inserted( "{ 'did' : 1, 'driverArgs' : {}, 'x' : 1.5 }", "a", "b" ),
              json( "{'did':1,'driverArgs':{'a':'b'},'x':1.5}" ) );
}

TEST_F( InsertDriverArgTest, ANewArgumentWinsOverOneWithTheSameName ) {
   const std::string text =
      inserted( "{'did':1,'driver':'D','address':{'address':1},'driverArgs':{'a':'1'}}", "a", "2" );
   EXPECT_NE( text.find( json( "{'a':'1','a':'2'}" ) ), std::string::npos );
   Drivers::DriverArgs args;
   ASSERT_TRUE( args.parseJSON( text.c_str() ) );
   EXPECT_EQ( args.driverArgs.at( "a" ), "2" );
}

TEST_F( InsertDriverArgTest, ASyntaxErrorKeepsTheOutput ) {
   char word[] = "untouched";
   char *out = word;
   EXPECT_FALSE( Drivers::insertDriverArg( "{", &out, "a", "b" ) );
   EXPECT_EQ( out, word );
   EXPECT_TRUE( TestHost::traced(
      0, "failed to parse psu devArgs: Missing a name for object member. offset 1" ) );
}

TEST_F( InsertDriverArgTest, ADocumentWithoutArgumentsStopsTheProcess ) {
   char *out;
   EXPECT_DEATH( Drivers::insertDriverArg( "{}", &out, "a", "b" ),
                 "Assertion `document.HasMember\\( \"driverArgs\" \\)' failed" );
   EXPECT_DEATH( Drivers::insertDriverArg( json( "{'driverArgs':1}" ), &out, "a", "b" ),
                 "Assertion `document\\[\"driverArgs\"\\].IsObject\\(\\)' failed" );
}

} // namespace
