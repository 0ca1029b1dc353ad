#include "boardfiles/Board.h"

#include "support/ChangedBoard.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::filesystem::path scripted = SCRIPTED_BOARD;

class BoardCheckTest : public ::testing::Test {
 protected:
   void change( const std::string &file, const std::string &pointer, const std::string &json ) {
      board_.change( file, pointer, json );
   }
   std::vector<std::string> check() const { return board_.check(); }
   std::string at( const std::string &rest ) const { return ( folder_.path() / rest ).string(); }

   const ChangedBoard board_{ scripted, "libScriptedPlugin.drivers.json" };
   const TestSupport::PrivateFolder &folder_ = board_.folder();
};

TEST_F( BoardCheckTest, FindsNothingWrongWithAGoodBoard ) {
   Findings findings;
   const auto board = loadBoard( scripted, scripted / "libScriptedPlugin.drivers.json", findings );
   EXPECT_THAT( textsWithPointers( findings ), IsEmpty() );
   ASSERT_TRUE( board );
   ASSERT_EQ( board->objects.size(), 12u );
   EXPECT_EQ( board->objects[0].kind, Kind::TempSensor );
   EXPECT_EQ( board->objects[0].critical, 70.5f );
   EXPECT_THAT( board->objects[0].text, HasSubstr( R"("did": 1,)" ) );
   EXPECT_EQ( board->objects[10].text, "Raw" );
   EXPECT_EQ( board->objects[10].value, 80 );
}

TEST_F( BoardCheckTest, FindsNothingWrongWithTheBoardThatIsShipped ) {
   Findings findings;
   loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   EXPECT_THAT( textsWithPointers( findings ), IsEmpty() );
}

// A look-up by label gives it a driver.
TEST_F( BoardCheckTest, ALabelledDeviceNeedsADriverOrAnAddress ) {
   change( "objects.json", "/10/label", "\"Chip1\"" );
   EXPECT_THAT( check(), IsEmpty() );
   change( "topology.json", "/0/accelerators/0/busses/0/devices/1/address", "" );
   EXPECT_THAT(
      check(),
      ElementsAre( HasSubstr(
         "/10/label: raw: the topology device \"Chip1\" needs an \"address\" or a driver" ) ) );
}

TEST_F( BoardCheckTest, TellsAllFindingsOfBothFilesAtOnce ) {
   change( "topology.json", "/0/pci", "-1" );
   change( "topology.json", "/0/accelerators/0/busses/0/devices/1/did", "\"x\"" );
   change( "objects.json", "/0/alert", "\"hot\"" );
   change( "objects.json", "/0/device/address", "{}" );
   change( "objects.json", "/2/device/driverArgs/fanId", "6" );
   EXPECT_THAT(
      check(),
      ElementsAre(
         HasSubstr( "topology.json:/0/pci: -1 is below 0" ),
         HasSubstr(
            "topology.json:/0/accelerators/0/busses/0/devices/1/did: \"x\" is not a whole" ),
         HasSubstr( "objects.json:/0/alert: temp: \"hot\" is not a number" ),
         HasSubstr( "objects.json:/0/device/address: temp: \"address\" is missing" ),
         HasSubstr( "objects.json:/0/device/did: temp: the topology has no device 1" ),
         HasSubstr( "/1/device/uid: psu: the topology has no component 7" ),
         HasSubstr( "/2/device/driverArgs/fanId: fan: 6 is more than 5" ),
         HasSubstr( "/9/device/did: proxy: the topology has no device 1" ) ) );
}

TEST_F( BoardCheckTest, NumbersTheElementsAsTheyStandAlsoAfterABadOne ) {
   change( "topology.json", "/0/accelerators/0/busses/0/devices/0", "5" );
   change( "topology.json", "/0/accelerators/0/busses/0/devices/1/label", "5" );
   const auto findings = check();
   EXPECT_THAT( findings, Contains( HasSubstr( "/busses/0/devices/0: 5 is not an object" ) ) );
   EXPECT_THAT( findings, Contains( HasSubstr( "/busses/0/devices/1/label: 5 is not a text" ) ) );
}

TEST_F( BoardCheckTest, TellsTheLineOfATextThatDoesNotParse ) {
   folder_.write( "objects.json", "[\n   {,\n]" );
   EXPECT_THAT( check(),
                ElementsAre( at( "objects.json:2:5: Missing a name for object member." ) ) );
}

TEST_F( BoardCheckTest, TellsADataFileThatIsNotThereOrNotRight ) {
   folder_.write( "libScriptedPlugin.drivers.json", R"({ "hams": [], "drivers": { "X": {} } })" );
   EXPECT_THAT( check(),
                ElementsAre( HasSubstr( "drivers.json: \"faultTraces\" is missing" ),
                             HasSubstr( "drivers.json:/drivers/X: \"makes\" is missing" ) ) );
   folder_.remove( "libScriptedPlugin.drivers.json" );
   EXPECT_THAT( check(), ElementsAre( HasSubstr( "no such file" ) ) );
}

TEST_F( BoardCheckTest, GivesLineAndColumnOfEveryFinding ) {
   folder_.write( "objects.json", "[\n   { \"type\": \"system\", \"name\": \"s\" },\n"
                                  "   { \"type\": \"led\",\n     \"name\": 5 }\n]" );
   Findings findings;
   loadBoard( folder_.path(), folder_.path() / "libScriptedPlugin.drivers.json", findings );
   std::vector<std::string> texts;
   for ( const Finding &finding : findings )
      texts.push_back( toText( finding ) );
   EXPECT_THAT( texts, ElementsAre( at( "objects.json:3:4: \"device\" is missing" ),
                                    at( "objects.json:4:14: 5 is not a text" ) ) );
}

// The plug-in looks for a mux's chip through that chip, without end.
TEST_F( BoardCheckTest, RefusesAMuxWhoseChipIsBehindTheMuxItself ) {
   const std::string bus = "/0/accelerators/0/busses/0";
   change( "topology.json", bus + "/muxes/0/busses/0/devices/0/components", R"([ { "uid": 9 } ])" );
   EXPECT_THAT( check(), IsEmpty() );
   change( "topology.json", bus + "/devices/0/uid", "9" );
   EXPECT_THAT( check(), Contains( HasSubstr( "/muxes/0/did: the mux's chip, device 100, is "
                                              "reached through the mux itself" ) ) );
}

TEST_F( BoardCheckTest, RefusesTheObjectsOfATopologyWithoutABus ) {
   folder_.write( "topology.json", "[]" );
   EXPECT_THAT( check(), Contains( HasSubstr( "objects.json:/0/device/did" ) ) );
}

TEST_F( BoardCheckTest, WarnsOfAKeyThatNobodyReads ) {
   change( "topology.json", "/1/bus/devices/0/lable", "\"x\"" );
   Findings findings;
   EXPECT_TRUE(
      loadBoard( folder_.path(), folder_.path() / "libScriptedPlugin.drivers.json", findings ) );
   EXPECT_THAT( textsWithPointers( findings ),
                ElementsAre( HasSubstr( "/1/bus/devices/0/lable: warning: Raw: unknown key "
                                        "\"lable\" (did you mean \"label\"?); it is ignored" ) ) );
}

TEST_F( BoardCheckTest, GivesThePluginTheDocumentsAsTheyAreInTheFile ) {
   std::string text = folder_.read( "objects.json" );
   const std::string usual = R"("did": 1,)", odd = "\"did\"  :1 ,";
   text.replace( text.find( usual ), usual.size(), odd );
   folder_.write( "objects.json", text );
   Findings findings;
   const auto board =
      loadBoard( folder_.path(), folder_.path() / "libScriptedPlugin.drivers.json", findings );
   ASSERT_TRUE( board );
   EXPECT_THAT( board->objects[0].text, HasSubstr( odd ) );
   EXPECT_EQ( board->topology, folder_.read( "topology.json" ) );
}

class BoardMutationTest : public BoardCheckTest, public ::testing::WithParamInterface<Mutation> {};

TEST_P( BoardMutationTest, IsFoundInItsPlace ) {
   change( GetParam().file, GetParam().pointer, GetParam().json );
   EXPECT_THAT( check(), Contains( HasSubstr( GetParam().finding ) ) );
}

std::string mutationName( const ::testing::TestParamInfo<Mutation> &mutation ) {
   return mutation.param.name;
}

constexpr auto topology = "topology.json";
constexpr auto objects = "objects.json";

// What would end the plug-in by an assertion, or be taken for something else by it.
INSTANTIATE_TEST_SUITE_P(
   Topology, BoardMutationTest,
   ::testing::Values(
      Mutation{ "NoList", topology, "", "{}", "topology.json: an object is not a list" },
      Mutation{ "NoObject", topology, "/0", "5", ":/0: 5 is not an object" },
      Mutation{ "NoType", topology, "/0/type", "", ":/0: \"type\" is missing" },
      Mutation{ "UnknownType", topology, "/0/type", "\"scd\"",
                ":/0/type: \"scd\" is none of \"SCD\", " },
      Mutation{ "NoHam", topology, "/1/ham", "", ":/1: \"ham\" is missing" },
      Mutation{ "UnknownHam", topology, "/1/ham", "\"X\"", ":/1/ham: the plug-in has no access" },
      Mutation{ "NoPci", topology, "/0/pci", "", ":/0: \"pci\" is missing" },
      Mutation{ "PciOver32Bits", topology, "/0/pci", "4294967296", ":/0/pci: 4294967296 is above" },
      Mutation{ "AcceleratorsNoList", topology, "/0/accelerators", "{}",
                ":/0/accelerators: an obj" },
      Mutation{ "AcceleratorTwice", topology, "/0/accelerators/1/id", "1",
                ":/0/accelerators/1/id: accelerator id 1 is there twice" },
      Mutation{ "AcceleratorWithoutId", topology, "/0/accelerators/1/id", "", "\"id\" is missing" },
      Mutation{ "BusTwice", topology, "/0/accelerators/0/busses/1/id", "2",
                ":/0/accelerators/0/busses/1/id: bus id 2 is there twice" },
      Mutation{ "BusBehindMuxTwice", topology, "/0/accelerators/0/busses/0/muxes/0/busses/1/id",
                "1", "/muxes/0/busses/1/id: bus id 1 is there twice" },
      Mutation{ "BusIdNegative", topology, "/1/bus/id", "-1", ":/1/bus/id: -1 is below 0" },
      Mutation{ "BusIdNoIntOfItsSize", topology, "/1/bus/id", "2147483648",
                ":/1/bus/id: 2147483648" },
      Mutation{ "BusIdWithPoint", topology, "/1/bus/id", "1.0",
                ":/1/bus/id: 1.0 is not a whole number" },
      Mutation{ "NoBus", topology, "/1/bus", "", ":/1: \"bus\" is missing" },
      Mutation{ "SimulatedNoBool", topology, "/1/simulated", "1",
                ":/1/simulated: 1 is not true or false" },
      Mutation{ "DeviceNoObject", topology, "/1/bus/devices/0", "\"Raw\"", "/devices/0: \"Raw\"" },
      Mutation{ "DeviceWithoutDid", topology, "/1/bus/devices/0/did", "", "\"did\" is missing" },
      Mutation{ "DidTwice", topology, "/1/bus/devices/0/did", "3", "did 3 is there twice" },
      Mutation{ "LabelTwice", topology, "/1/bus/devices/0/label", "\"Chip1\"",
                "/devices/0/label: Chip1: label \"Chip1\" is there twice" },
      Mutation{ "LabelNoText", topology, "/1/bus/devices/0/label", "5", "/label: 5 is not a text" },
      Mutation{ "UidTwice", topology, "/1/bus/devices/0/components", "[ { \"uid\": 7 } ]",
                "uid 7 is there twice" },
      Mutation{ "ComponentNoObject", topology, "/1/bus/devices/0/components", "[ 7 ]",
                ": 7 is not an object" },
      Mutation{ "InlineWithoutAddress", topology, "/1/bus/devices/0/address", "",
                "/1/bus/devices/0: Raw: \"address\" is missing" },
      Mutation{ "InlineAddressEmpty", topology, "/1/bus/devices/0/address", "{}",
                "/devices/0/address: Raw: \"address\" is missing" },
      Mutation{ "InlineAddrSize", topology, "/1/bus/devices/0/address/addrSize", "4",
                ": 4 is above 2" },
      Mutation{ "InlineArgsNoObject", topology, "/1/bus/devices/0/driverArgs", "[]", ": a list" },
      Mutation{ "InlineDriverUnknown", topology, "/1/bus/devices/0/driver", "\"chip\"",
                "/devices/0/driver: Raw: there is no driver \"chip\"" },
      Mutation{ "InlineUidUnknown", topology, "/1/bus/devices/0/uid", "8",
                "/devices/0/uid: Raw: the topology has no component 8" },
      Mutation{ "InlineUidOfAnotherChip", topology, "/1/bus/devices/0/uid", "7",
                "/devices/0/address/address: Raw: 80 is not the address in the topology, 72" },
      Mutation{ "InlineComposite", topology, "/1/bus/devices/0/isMultiDevice", "true",
                "/isMultiDevice: Raw: \"isMultiDevice\" must be false for driver \"Chip\"" },
      Mutation{ "MuxWithoutDid", topology, "/0/accelerators/0/busses/0/muxes/0/did", "",
                "/muxes/0: \"did\" is missing" },
      Mutation{ "MuxChipElsewhere", topology, "/0/accelerators/0/busses/0/muxes/0/did", "4",
                "/muxes/0/did: the bus of this mux has no device 4" },
      Mutation{ "MuxChipWithoutDriver", topology, "/0/accelerators/0/busses/0/muxes/0/did", "1",
                "/muxes/0/did: device 1 has no driver" },
      Mutation{ "MuxChipNoMux", topology, "/0/accelerators/0/busses/0/devices/0/driver", "\"Chip\"",
                "/muxes/0/did: driver \"Chip\" of device 100 is not a mux driver" },
      Mutation{ "MuxChannelOfTwoBits", topology, "/0/accelerators/0/busses/0/muxes/0/busses/1/id",
                "3", "/muxes/0/busses/1/id: 3 selects no single channel" },
      Mutation{ "MuxChannelOfNone", topology, "/0/accelerators/0/busses/0/muxes/0/busses/1/id",
                "256", "/muxes/0/busses/1/id: 256 selects no single channel" },
      Mutation{ "RootBusOver7Bits", topology, "/1/bus/id", "128",
                "/1/bus/id: 128 is above 127, the highest that a request can carry" },
      Mutation{ "AcceleratorOver7Bits", topology, "/0/accelerators/1/id", "128",
                "/0/accelerators/1/id: 128 is above 127" } ),
   mutationName );

INSTANTIATE_TEST_SUITE_P(
   Objects, BoardMutationTest,
   ::testing::Values(
      Mutation{ "NoList", objects, "", "5", "objects.json: 5 is not a list" },
      Mutation{ "UnknownType", objects, "/0/type", "\"relay\"", ":/0/type: temp: \"relay\"" },
      Mutation{ "NoName", objects, "/0/name", "", ":/0: \"name\" is missing" },
      Mutation{ "ReadsWhatNobodyKnows", objects, "/10/reads", "\"sensors\"",
                ":/10/reads: raw: \"sensors\"" },
      Mutation{ "ReadsOfAnotherKind", objects, "/0/reads", "\"pmbus\"", ":/0/reads: temp: " },
      Mutation{ "NoObjects", objects, "", "[]", "objects.json: an empty list" },
      Mutation{ "AlertAboveCritical", objects, "/0/alert", "71",
                ":/0: temp: \"alert\" (71) is above \"critical\" (70.5)" },
      Mutation{ "NameTwice", objects, "/1/name", "\"temp\"", ":/1/name: temp: another object" },
      Mutation{ "NameWithBlank", objects, "/1/name", "\"a b\"", ":/1/name: a b: \"a b\" does not" },
      Mutation{ "UnknownKey", objects, "/0/alarm", "1",
                ":/0/alarm: temp: unknown key \"alarm\" (did you mean \"alert\"?)" },
      Mutation{ "NoThreshold", objects, "/0/critical", "", ":/0: temp: \"critical\" is missing" },
      Mutation{ "NoDevice", objects, "/1/device", "", ":/1: psu: \"device\" is missing" },
      Mutation{ "DeviceNoObject", objects, "/1/device", "[]",
                ":/1/device: psu: a list is not an object" },
      Mutation{ "NoDid", objects, "/1/device/did", "", ":/1/device: psu: \"did\" is missing" },
      Mutation{ "DidNegative", objects, "/1/device/did", "-1", "/device/did: psu: -1 is below 0" },
      Mutation{ "DidOver32Bits", objects, "/1/device/did", "4294967297",
                "psu: 4294967297 is above" },
      Mutation{ "DidUnknown", objects, "/1/device/did", "77",
                "psu: the topology has no device 77" },
      Mutation{ "UidUnknown", objects, "/1/device/uid", "8",
                "psu: the topology has no component 8" },
      Mutation{ "UidNoNumber", objects, "/1/device/uid", "\"7\"",
                "/uid: psu: \"7\" is not a whole number" },
      Mutation{ "NoDriver", objects, "/1/device/driver", "", "psu: \"driver\" is missing" },
      Mutation{ "DriverUnknown", objects, "/1/device/driver", "\"X\"", "there is no driver \"X\"" },
      Mutation{ "DriverOtherCase", objects, "/1/device/driver", "\"chip\"", "no driver \"chip\"" },
      Mutation{ "KindNotMade", objects, "/1/device/driver", "\"Mux\"", "\"Mux\" can't make a psu" },
      Mutation{ "TwoDriversOnOneDid", objects, "/9/device",
                R"({ "did": 100, "driver": "Chip", "address": { "address": 112 } })",
                ":/9/device/driver: proxy: device 100 already has the driver \"Mux\", by" },
      Mutation{ "FalselyComposite", objects, "/1/device/isMultiDevice", "true",
                "psu: \"isMultiDevice\" must be false for driver \"Chip\"" },
      Mutation{ "CompositeUntold", objects, "/8/device/isMultiDevice", "",
                ":/8/device: pair: \"isMultiDevice\" must be true for driver \"Pair\"" },
      Mutation{ "CompositeNoBool", objects, "/8/device/isMultiDevice", "1",
                "pair: 1 is not true or false" },
      Mutation{ "CompositeNoParts", objects, "/8/device/multiDeviceArgs", "",
                ":/8/device: pair: \"multiDeviceArgs\" is missing" },
      Mutation{ "CompositeDidOfAnother", objects, "/8/device/did", "4",
                ":/8/device/driver: pair: device 4 already has the driver \"Chip\"" },
      Mutation{ "PartMissing", objects, "/8/device/multiDeviceArgs/inlet", "",
                "/multiDeviceArgs: pair: \"inlet\" is missing" },
      Mutation{ "PartNoText", objects, "/8/device/multiDeviceArgs/inlet", "{}", "pair: an object" },
      Mutation{ "PartUnknown", objects, "/8/device/multiDeviceArgs/middle", "\"{}\"",
                "/multiDeviceArgs/middle: pair: \"middle\" is not a part of this composite" },
      Mutation{ "PartDoesNotParse", objects, "/8/device/multiDeviceArgs/inlet",
                "\"{ \\\"did\\\": }\"", ":/8/device/multiDeviceArgs/inlet: pair: Invalid value." },
      Mutation{ "PartIncomplete", objects, "/8/device/multiDeviceArgs/inlet", "\"{}\"",
                "/multiDeviceArgs/inlet: pair: \"did\" is missing" },
      Mutation{ "PartKeyTwice", objects, "/8/device/multiDeviceArgs/inlet",
                "\"{ \\\"did\\\": 1, \\\"did\\\": 2 }\"", "inlet/did: pair: \"did\" is twice" },
      Mutation{
         "PartOutOfRange", objects, "/8/device/multiDeviceArgs/inlet",
         R"("{ \"did\": 3, \"driver\": \"Chip\", \"address\": { \"address\": 73 }, \"driverArgs\": { \"fanId\": 9 } }")",
         "/multiDeviceArgs/inlet/driverArgs/fanId: pair: 9 is more than 5" },
      Mutation{ "AddressUnlikeTopology", objects, "/1/device/address/address", "73",
                "/device/address/address: psu: 73 is not the address in the topology, 72" },
      Mutation{ "AddressOver7Bits", objects, "/1/device/address/address", "128",
                "psu: 128 is above 127" },
      Mutation{ "AddressOver32Bits", objects, "/1/device/address/address", "4294967368",
                "psu: 4294967368 is above 127" },
      Mutation{ "AddressEmpty", objects, "/1/device/address", "{}", "psu: \"address\" is missing" },
      Mutation{ "AddrSizeZero", objects, "/1/device/address/addrSize", "0", "psu: 0 is below 1" },
      Mutation{ "AddrSizeFour", objects, "/1/device/address/addrSize", "4", "psu: 4 is above 2" },
      Mutation{ "AddrSizeWithPoint", objects, "/1/device/address/addrSize", "1.0",
                "psu: 1.0 is not a whole number" },
      Mutation{ "ArgsNoObject", objects, "/1/device/driverArgs", "null",
                "psu: null is not an object" },
      Mutation{ "LabelUnknown", objects, "/10/label", "\"Nobody\"", "no label \"Nobody\"" },
      Mutation{ "LabelLikeADocument", objects, "/10/label", "\"{}\"",
                "raw: \"{}\" does not have the form" },
      Mutation{ "LabelWithoutValue", objects, "/10/value", "", "\"value\" is missing beside" },
      Mutation{ "ValueOver8Bits", objects, "/10/value", "256", "/value: raw: 256 is above 255" },
      Mutation{ "ValueWithoutLabel", objects, "/9/value", "1",
                "/9/value: proxy: \"value\" has a meaning" },
      Mutation{ "NeitherDeviceNorLabel", objects, "/9/device", "", "proxy: must have either" },
      Mutation{ "SystemWithDevice", objects, "/11/device", "{}",
                "/11/device: system: unknown key \"device\"" } ),
   mutationName );

} // namespace
} // namespace BoardFilesTest
