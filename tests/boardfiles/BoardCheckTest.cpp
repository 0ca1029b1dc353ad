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

std::vector<std::string> textsOf( const Findings &findings ) {
   std::vector<std::string> texts;
   for ( const Finding &finding : findings )
      texts.push_back( toText( finding ) );
   return texts;
}

class BoardCheckTest : public ::testing::Test {
 protected:
   void change( const std::string &file, const std::string &pointer, const std::string &json ) {
      board_.change( file, pointer, json );
   }
   std::vector<std::string> check() const { return board_.check(); }
   std::string at( const std::string &rest ) const { return ( folder_.path() / rest ).string(); }

   const ChangedBoard board_{ scripted, "libScriptedPlugin.drivers.json" };
   const TempFolder &folder_ = board_.folder();
};

TEST_F( BoardCheckTest, FindsNothingWrongWithAGoodBoard ) {
   Findings findings;
   const auto board = loadBoard( scripted, scripted / "libScriptedPlugin.drivers.json", findings );
   EXPECT_THAT( textsOf( findings ), IsEmpty() );
   ASSERT_TRUE( board );
   ASSERT_EQ( board->objects.size(), 12u );
   EXPECT_EQ( board->objects[0].kind, Kind::TempSensor );
   EXPECT_EQ( board->objects[0].critical, 70.5f );
   EXPECT_THAT( board->objects[0].text, HasSubstr( R"("did":1)" ) );
   EXPECT_EQ( board->objects[10].text, "Raw" );
   EXPECT_EQ( board->objects[10].value, 80 );
}

TEST_F( BoardCheckTest, FindsNothingWrongWithTheBoardThatIsShipped ) {
   Findings findings;
   loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   EXPECT_THAT( textsOf( findings ), IsEmpty() );
}

TEST_F( BoardCheckTest, TellsAllFindingsOfBothFilesAtOnce ) {
   change( "topology.json", "/0/pci", "-1" );
   change( "topology.json", "/0/accelerators/0/busses/0/devices/1/did", "\"x\"" );
   change( "objects.json", "/0/alert", "\"hot\"" );
   change( "objects.json", "/0/device/address", "{}" );
   change( "objects.json", "/2/device/driverArgs/fanId", "6" );
   EXPECT_THAT(
      check(), ElementsAre(
                  HasSubstr( "topology.json:/0/pci: -1 does not fit \"minimum\": 0" ),
                  HasSubstr( "topology.json:/0/accelerators/0/busses/0/devices/1/did: \"x\" does" ),
                  HasSubstr( "objects.json:/0/alert: temp: \"hot\" does not fit \"type\"" ),
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
   EXPECT_THAT( findings, Contains( HasSubstr( "/busses/0/devices/0: 5 does not fit" ) ) );
   EXPECT_THAT( findings, Contains( HasSubstr( "/busses/0/devices/1/label: 5 does not fit" ) ) );
}

TEST_F( BoardCheckTest, TellsTheLineOfATextThatDoesNotParse ) {
   folder_.write( "objects.json", "[\n   {,\n]" );
   EXPECT_THAT( check(),
                ElementsAre( at( "objects.json:2:5: Missing a name for object member." ) ) );
}

TEST_F( BoardCheckTest, TellsADataFileThatIsNotThereOrNotRight ) {
   folder_.write( "libScriptedPlugin.drivers.json", R"({ "hams": [], "drivers": { "X": {} } })" );
   EXPECT_THAT( check(), ElementsAre( HasSubstr( "drivers.json:/drivers/X: \"makes\" is missing" ),
                                      HasSubstr( "drivers.json: \"faultTraces\" is missing" ) ) );
   folder_.remove( "libScriptedPlugin.drivers.json" );
   EXPECT_THAT( check(), ElementsAre( HasSubstr( "No such file or directory" ) ) );
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
      Mutation{ "NoList", topology, "", "{}", "topology.json: must be a list" },
      Mutation{ "NoObject", topology, "/0", "5", ":/0: 5 does not fit \"type\"" },
      Mutation{ "NoType", topology, "/0/type", "", ":/0: \"type\" is missing" },
      Mutation{ "UnknownType", topology, "/0/type", "\"scd\"", ":/0/type: \"scd\" does not fit" },
      Mutation{ "NoHam", topology, "/1/ham", "", ":/1: \"ham\" is missing" },
      Mutation{ "UnknownHam", topology, "/1/ham", "\"X\"", ":/1/ham: the plug-in has no access" },
      Mutation{ "NoPci", topology, "/0/pci", "", ":/0: \"pci\" is missing" },
      Mutation{ "PciOver32Bits", topology, "/0/pci", "4294967296", ":/0/pci: 4294967296 does" },
      Mutation{ "AcceleratorsNoList", topology, "/0/accelerators", "{}",
                ":/0/accelerators: an obj" },
      Mutation{ "AcceleratorTwice", topology, "/0/accelerators/1/id", "1",
                ":/0/accelerators/1/id: accelerator id 1 stands twice" },
      Mutation{ "AcceleratorWithoutId", topology, "/0/accelerators/1/id", "", "\"id\" is missing" },
      Mutation{ "BusTwice", topology, "/0/accelerators/0/busses/1/id", "2",
                ":/0/accelerators/0/busses/1/id: bus id 2 stands twice" },
      Mutation{ "BusBehindMuxTwice", topology, "/0/accelerators/0/busses/0/muxes/0/busses/1/id",
                "1", "/muxes/0/busses/1/id: bus id 1 stands twice" },
      Mutation{ "BusIdNegative", topology, "/1/bus/id", "-1", ":/1/bus/id: -1 does not fit" },
      Mutation{ "BusIdNoIntOfItsSize", topology, "/1/bus/id", "2147483648",
                ":/1/bus/id: 2147483648" },
      Mutation{ "BusIdWithPoint", topology, "/1/bus/id", "1.0", ":/1/bus/id: 1.0 does not fit" },
      Mutation{ "NoBus", topology, "/1/bus", "", ":/1: \"bus\" is missing" },
      Mutation{ "SimulatedNoBool", topology, "/1/simulated", "1", ":/1/simulated: 1 does not fit" },
      Mutation{ "DeviceNoObject", topology, "/1/bus/devices/0", "\"Raw\"", "/devices/0: \"Raw\"" },
      Mutation{ "DeviceWithoutDid", topology, "/1/bus/devices/0/did", "", "\"did\" is missing" },
      Mutation{ "DidTwice", topology, "/1/bus/devices/0/did", "3", "did 3 stands twice" },
      Mutation{ "LabelTwice", topology, "/1/bus/devices/0/label", "\"Chip1\"",
                "/devices/0/label: label \"Chip1\" stands twice" },
      Mutation{ "LabelNoText", topology, "/1/bus/devices/0/label", "5", "/label: 5 does not fit" },
      Mutation{ "UidTwice", topology, "/1/bus/devices/0/components", "[ { \"uid\": 7 } ]",
                "uid 7 stands twice" },
      Mutation{ "ComponentNoObject", topology, "/1/bus/devices/0/components", "[ 7 ]", ": 7 does" },
      Mutation{ "InlineWithoutAddress", topology, "/1/bus/devices/0/address", "",
                "/1/bus/devices/0: \"address\" is missing" },
      Mutation{ "InlineAddressEmpty", topology, "/1/bus/devices/0/address", "{}",
                "/devices/0/address: \"address\" is missing" },
      Mutation{ "InlineAddrSize", topology, "/1/bus/devices/0/address/addrSize", "4", ": 4 does" },
      Mutation{ "InlineArgsNoObject", topology, "/1/bus/devices/0/driverArgs", "[]", ": a list" },
      Mutation{ "InlineDriverUnknown", topology, "/1/bus/devices/0/driver", "\"chip\"",
                "/devices/0/driver: Raw: there is no driver \"chip\"" },
      Mutation{ "InlineUidUnknown", topology, "/1/bus/devices/0/uid", "8",
                "/devices/0/uid: Raw: the topology has no component 8" },
      Mutation{ "InlineUidOfAnotherChip", topology, "/1/bus/devices/0/uid", "7",
                "/devices/0/address/address: Raw: 80 is unlike the topology, which says 72" },
      Mutation{ "InlineComposite", topology, "/1/bus/devices/0/isMultiDevice", "true",
                "/isMultiDevice: Raw: must be false for driver \"Chip\"" },
      Mutation{ "MuxWithoutDid", topology, "/0/accelerators/0/busses/0/muxes/0/did", "",
                "/muxes/0: \"did\" is missing" },
      Mutation{ "MuxChipElsewhere", topology, "/0/accelerators/0/busses/0/muxes/0/did", "4",
                "/muxes/0/did: no device 4 on the bus of this mux" },
      Mutation{ "MuxChipWithoutDriver", topology, "/0/accelerators/0/busses/0/muxes/0/did", "1",
                "/muxes/0/did: device 1 carries no driver" },
      Mutation{ "MuxChipNoMux", topology, "/0/accelerators/0/busses/0/devices/0/driver", "\"Chip\"",
                "/muxes/0/did: driver \"Chip\" of device 100 drives no muxes" } ),
   mutationName );

INSTANTIATE_TEST_SUITE_P(
   Objects, BoardMutationTest,
   ::testing::Values(
      Mutation{ "NoList", objects, "", "5", "objects.json: must be a list" },
      Mutation{ "UnknownType", objects, "/0/type", "\"relay\"", ":/0/type: temp: \"relay\"" },
      Mutation{ "NoName", objects, "/0/name", "", ":/0: \"name\" is missing" },
      Mutation{ "NameTwice", objects, "/1/name", "\"temp\"", ":/1/name: temp: another object" },
      Mutation{ "NameWithBlank", objects, "/1/name", "\"a b\"", ":/1/name: a b: \"a b\" does not" },
      Mutation{ "UnknownKey", objects, "/0/alarm", "1", ":/0/alarm: temp: is not a key" },
      Mutation{ "NoThreshold", objects, "/0/critical", "", ":/0: temp: \"critical\" is missing" },
      Mutation{ "NoDevice", objects, "/1/device", "", ":/1: psu: \"device\" is missing" },
      Mutation{ "DeviceNoObject", objects, "/1/device", "[]", ":/1/device: psu: a list does not" },
      Mutation{ "NoDid", objects, "/1/device/did", "", ":/1/device: psu: \"did\" is missing" },
      Mutation{ "DidNegative", objects, "/1/device/did", "-1",
                "/device/did: psu: -1 does not fit" },
      Mutation{ "DidOver32Bits", objects, "/1/device/did", "4294967297", "psu: 4294967297 does" },
      Mutation{ "DidUnknown", objects, "/1/device/did", "77",
                "psu: the topology has no device 77" },
      Mutation{ "UidUnknown", objects, "/1/device/uid", "8",
                "psu: the topology has no component 8" },
      Mutation{ "UidNoNumber", objects, "/1/device/uid", "\"7\"", "/uid: psu: \"7\" does not fit" },
      Mutation{ "NoDriver", objects, "/1/device/driver", "", "psu: \"driver\" is missing" },
      Mutation{ "DriverUnknown", objects, "/1/device/driver", "\"X\"", "there is no driver \"X\"" },
      Mutation{ "DriverOtherCase", objects, "/1/device/driver", "\"chip\"", "no driver \"chip\"" },
      Mutation{ "KindNotMade", objects, "/1/device/driver", "\"Mux\"", "\"Mux\" can't make a psu" },
      Mutation{ "TwoDriversOnOneDid", objects, "/9/device",
                R"({ "did": 100, "driver": "Chip", "address": { "address": 112 } })",
                ":/9/device/driver: proxy: device 100 is driven by \"Mux\" already, in" },
      Mutation{ "FalselyComposite", objects, "/1/device/isMultiDevice", "true",
                "psu: must be false for driver \"Chip\"" },
      Mutation{ "CompositeUntold", objects, "/8/device/isMultiDevice", "",
                ":/8/device/isMultiDevice: pair: must be true for driver \"Pair\"" },
      Mutation{ "CompositeNoBool", objects, "/8/device/isMultiDevice", "1",
                "pair: 1 does not fit" },
      Mutation{ "CompositeNoParts", objects, "/8/device/multiDeviceArgs", "",
                ":/8/device: pair: \"multiDeviceArgs\" is missing" },
      Mutation{ "CompositeDidOfAnother", objects, "/8/device/did", "4",
                ":/8/device/driver: pair: device 4 is driven by \"Chip\" already" },
      Mutation{ "PartMissing", objects, "/8/device/multiDeviceArgs/inlet", "",
                "/multiDeviceArgs: pair: \"inlet\" is missing" },
      Mutation{ "PartNoText", objects, "/8/device/multiDeviceArgs/inlet", "{}", "pair: an object" },
      Mutation{ "PartUnknown", objects, "/8/device/multiDeviceArgs/middle", "\"{}\"",
                "/multiDeviceArgs/middle: pair: is no part of this composite" },
      Mutation{ "PartDoesNotParse", objects, "/8/device/multiDeviceArgs/inlet",
                "\"{ \\\"did\\\": }\"",
                ":/8/device/multiDeviceArgs/inlet:1:10: pair: Invalid value." },
      Mutation{ "PartIncomplete", objects, "/8/device/multiDeviceArgs/inlet", "\"{}\"",
                "/multiDeviceArgs/inlet: pair: \"did\" is missing" },
      Mutation{ "PartKeyTwice", objects, "/8/device/multiDeviceArgs/inlet",
                "\"{ \\\"did\\\": 1, \\\"did\\\": 2 }\"", "inlet/did: pair: \"did\" stands twice" },
      Mutation{
         "PartOutOfRange", objects, "/8/device/multiDeviceArgs/inlet",
         R"("{ \"did\": 3, \"driver\": \"Chip\", \"address\": { \"address\": 73 }, \"driverArgs\": { \"fanId\": 9 } }")",
         "/multiDeviceArgs/inlet/driverArgs/fanId: pair: 9 is more than 5" },
      Mutation{ "AddressUnlikeTopology", objects, "/1/device/address/address", "73",
                "/device/address/address: psu: 73 is unlike the topology, which says 72" },
      Mutation{ "AddressOver7Bits", objects, "/1/device/address/address", "128", "psu: 128 does" },
      Mutation{ "AddressOver32Bits", objects, "/1/device/address/address", "4294967368",
                "psu: 4294967368 does not fit" },
      Mutation{ "AddressEmpty", objects, "/1/device/address", "{}", "psu: \"address\" is missing" },
      Mutation{ "AddrSizeZero", objects, "/1/device/address/addrSize", "0", "psu: 0 does not fit" },
      Mutation{ "AddrSizeFour", objects, "/1/device/address/addrSize", "4", "psu: 4 does not fit" },
      Mutation{ "AddrSizeWithPoint", objects, "/1/device/address/addrSize", "1.0",
                "psu: 1.0 does" },
      Mutation{ "ArgsNoObject", objects, "/1/device/driverArgs", "null", "psu: null does not fit" },
      Mutation{ "LabelUnknown", objects, "/10/label", "\"Nobody\"", "no label \"Nobody\"" },
      Mutation{ "LabelOfNoDriver", objects, "/10/label", "\"Chip1\"",
                "\"Chip1\" carries no driver" },
      Mutation{ "LabelLikeADocument", objects, "/10/label", "\"{}\"", "raw: \"{}\" does not fit" },
      Mutation{ "LabelWithoutValue", objects, "/10/value", "", "\"value\" is missing beside" },
      Mutation{ "ValueOver8Bits", objects, "/10/value", "256", "/value: raw: 256 does not fit" },
      Mutation{ "ValueWithoutLabel", objects, "/9/value", "1", "/9/value: proxy: has a meaning" },
      Mutation{ "NeitherDeviceNorLabel", objects, "/9/device", "", "proxy: must have either" },
      Mutation{ "SystemWithDevice", objects, "/11/device", "{}",
                "/11/device: system: is not a key" } ),
   mutationName );

} // namespace
} // namespace BoardFilesTest
