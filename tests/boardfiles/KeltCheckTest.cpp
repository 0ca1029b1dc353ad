#include "support/ChangedBoard.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace BoardFilesTest {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A small board with drivers of the Kelt plug-in.
class KeltCheckTest : public ::testing::Test {
 protected:
   const ChangedBoard board_{ KELT_BOARD, BOARDS "/libOrbisDriversKelt.drivers.json" };
};

TEST_F( KeltCheckTest, FindsNothingWrongWithEveryDriverInUse ) {
   EXPECT_THAT( board_.check(), IsEmpty() );
}

TEST_F( KeltCheckTest, TakesATransceiverWithoutPollAfterADocumentThatPolls ) {
   board_.change( "objects.json", "/9/device/driverArgs/id", "1" );
   board_.change( "objects.json", "/11/device/driverArgs/xcvrPoll", "null" );
   EXPECT_THAT( board_.check(), IsEmpty() );
}

TEST_F( KeltCheckTest, RefusesATransceiverWhoseCpldIsMadeByADocumentThatDoesNotPoll ) {
   board_.change( "objects.json", "/11/device/driverArgs/xcvrPoll", "" );
   board_.change( "objects.json", "/12/device/driverArgs/xcvrPoll", "true" ); // too late
   const auto findings = board_.check();
   for ( const char *where : { "objects.json:/11/device: sfp48: ", "/12/device: qsfp38: " } )
      EXPECT_THAT( findings, Contains( ::testing::AllOf(
                                HasSubstr( where ), HasSubstr( "21 can't make a xcvr" ),
                                HasSubstr( "which make it, allow led, gpio only" ) ) ) );
}

class KeltMutationTest : public KeltCheckTest, public ::testing::WithParamInterface<Mutation> {};

TEST_P( KeltMutationTest, IsFoundInItsPlace ) {
   board_.change( GetParam().file, GetParam().pointer, GetParam().json );
   EXPECT_THAT( board_.check(), Contains( HasSubstr( GetParam().finding ) ) );
}

Mutation argument( const char *name, const char *pointer, const char *json, const char *finding ) {
   return { name, "objects.json", pointer, json, finding };
}

// What would end the plug-in by an assertion, an exception or a division by zero.
INSTANTIATE_TEST_SUITE_P(
   Supplies, KeltMutationTest,
   ::testing::Values(
      argument( "FanIdMissing", "/2/device/driverArgs/fanId", "", "\"fanId\" is missing" ),
      argument( "FanIdBelow", "/2/device/driverArgs/fanId", "0", "psu-fan: 0 is less than 1" ),
      argument( "FanIdAbove", "/2/device/driverArgs/fanId", "3", "psu-fan: 3 is more than 2" ),
      argument( "FanIdNoNumber", "/2/device/driverArgs/fanId", "\"two\"", "must be a 32-bit" ),
      argument( "MaxFanRpmMissing", "/2/device/driverArgs/maxFanRpm", "", "\"maxFanRpm\" is" ),
      argument( "MaxFanRpmZero", "/2/device/driverArgs/maxFanRpm", "0", "0 is less than 1" ),
      argument( "MaxFanRpmEmpty", "/2/device/driverArgs/maxFanRpm", "\"\"", "must be a 32-bit" ),
      argument( "PecNoBoolean", "/2/device/driverArgs/pec", "\"True\"", "must be true or false" ),
      argument( "SensorIdMissing", "/3/device/driverArgs/sensorId", "", "\"sensorId\" is missing" ),
      argument( "SensorIdBelow", "/3/device/driverArgs/sensorId", "0", "psu-temp: 0 is less" ),
      argument( "SensorIdAbove", "/3/device/driverArgs/sensorId", "\"3\"", "3 is more than 2" ),
      argument( "ReadingsTakeNoArguments", "/1/device/driverArgs", R"({ "fanId": 1 })",
                "/fanId: psu: \"fanId\" is not an argument" ),
      argument( "PsuIdMissing", "/4/device/driverArgs/psuId", "", "\"psuId\" is missing" ),
      argument( "PsuIdAbove", "/4/device/driverArgs/psuId", "3", "psu-slot: 3 is more than 2" ),
      argument( "IdentificationUnknown", "/4/device/driverArgs/identificationType", "\"IPMI\"",
                "\"IPMI\" is none of pmbus, ipmi" ),
      argument( "TemplateMissing", "/4/device/driverArgs/psuFdl_2", "", "\"psuFdl_2\" is missing" ),
      argument( "ModelMissing", "/4/device/driverArgs/model_1", "", "\"model_1\" is missing" ),
      argument( "ModelBehindAGap", "/4/device/driverArgs/model_4", "\"X\"",
                "/model_4: psu-slot: \"model_4\" is not an argument" ),
      argument( "TemplateWithoutSerial", "/4/device/driverArgs/psuFdl_1", "\"PWR {serial}\"",
                "/psuFdl_1: psu-slot: does not have \"{serialNum}\" in it" ),
      argument( "ReadingsAndSlotOnOneDid", "/4/device/did", "11",
                "already has the driver \"Pmbus\"" ) ),
   []( const auto &mutation ) { return std::string( mutation.param.name ); } );

INSTANTIATE_TEST_SUITE_P(
   Fans, KeltMutationTest,
   ::testing::Values(
      argument( "RotorIdAbove", "/5/device/driverArgs/fanId", "6", "rotor: 6 is more than 5" ),
      argument( "RotorMaxRpmMissing", "/5/device/driverArgs/maxRpm", "", "\"maxRpm\" is missing" ),
      argument( "RotorMaxRpmZero", "/5/device/driverArgs/maxRpm", "0", "rotor: 0 is less than 1" ),
      argument( "RotorWithoutChannel", "/5/device/driverArgs/registerOffset", "",
                "\"registerOffset\" is missing" ),
      argument( "RotorChannelAbove", "/5/device/driverArgs/registerOffset", "5", "5 is more" ),
      argument( "FanIdAbove", "/6/device/driverArgs/fanId", "6", "fan: 6 is more than 5" ),
      argument( "FanMaxRpmNoNumber", "/6/device/driverArgs/maxRpm", "1e4", "must be a 32-bit" ),
      argument( "MaxDiffMissing", "/6/device/driverArgs/maxDiff", "", "\"maxDiff\" is missing" ),
      argument( "MaxDiffNegative", "/6/device/driverArgs/maxDiff", "-0.5", "-0.5 is less than 0" ),
      argument( "InletMissing", "/6/device/multiDeviceArgs/inlet", "", "\"inlet\" is missing" ),
      argument( "OutletNoDocument", "/6/device/multiDeviceArgs/outlet", "\"[]\"",
                "/multiDeviceArgs/outlet: fan: " ),
      argument(
         "OutletOutOfRange", "/6/device/multiDeviceArgs/outlet",
         R"("{ \"did\": 13, \"driver\": \"EMC2305\", \"address\": { \"address\": 45 }, \"driverArgs\": { \"fanId\": 1, \"maxRpm\": 0, \"registerOffset\": 0 } }")",
         "/multiDeviceArgs/outlet/driverArgs/maxRpm: fan: 0 is less than 1" ),
      argument( "CompositeUntold", "/6/device/isMultiDevice", "", "must be true for driver" ),
      argument( "SlotFanIdAbove", "/7/device/driverArgs/fanId", "6", "fan-slot: 6 is more than 5" ),
      argument( "OffsetMissing", "/7/device/driverArgs/presenceBitOffset", "",
                "\"presenceBitOffset\" is missing" ),
      argument( "OffsetBehindTheLastPin", "/7/device/driverArgs/presenceBitOffset", "25",
                "25 is more than 24" ),
      argument( "TemplateMissing", "/7/device/driverArgs/fanFdl", "", "\"fanFdl\" is missing" ),
      argument( "TemplateWithoutAirflow", "/7/device/driverArgs/fanFdl", "\"{maxRpm} {modelName}\"",
                "does not have \"{airflowDirection}\" in it" ),
      argument( "TemplateWithoutRpm", "/7/device/driverArgs/fanFdl",
                "\"{airflowDirection} {modelName}\"", "does not have \"{maxRpm}\" in it" ),
      argument( "TemplateWithoutModel", "/7/device/driverArgs/fanFdl",
                "\"{airflowDirection} {maxRpm}\"", "does not have \"{modelName}\" in it" ),
      argument( "RpmMissing", "/7/device/driverArgs/rpmF2B", "", "\"rpmF2B\" is missing" ),
      argument( "OtherRpmMissing", "/7/device/driverArgs/rpmB2F", "", "\"rpmB2F\" is missing" ),
      argument( "ModelMissing", "/7/device/driverArgs/modelName", "", "\"modelName\" is missing" ),
      argument( "LedIdMissing", "/8/device/driverArgs/id", "", "\"id\" is missing" ),
      argument( "LedIdBelow", "/8/device/driverArgs/id", "0", "fan-led: 0 is less than 1" ),
      argument( "LedIdAbove", "/8/device/driverArgs/id", "6", "fan-led: 6 is more than 5" ) ),
   []( const auto &mutation ) { return std::string( mutation.param.name ); } );

INSTANTIATE_TEST_SUITE_P(
   Cplds, KeltMutationTest,
   ::testing::Values(
      argument( "QsfpIdAbove", "/9/device/driverArgs/id", "33", "qsfp32: 33 is more than 32" ),
      argument( "QsfpIdBelow", "/9/device/driverArgs/id", "0", "qsfp32: 0 is less than 1" ),
      argument( "QsfpIdMissing", "/9/device/driverArgs/id", "", "\"id\" is missing" ),
      argument( "TypeMissing", "/9/device/driverArgs/type", "", "\"type\" is missing" ),
      argument( "TypeNotMade", "/9/device/driverArgs/type", "\"sfp\"", "none of qsfp, qsfp+" ),
      argument( "SfpIdAbove", "/11/device/driverArgs/id", "49", "sfp48: 49 is more than 48" ),
      argument( "UplinkIdAbove", "/12/device/driverArgs/id", "7", "qsfp38: 7 is more than 6" ),
      argument( "StatusLedIdAbove", "/10/device/driverArgs/id", "3", "3 is more than 2" ),
      argument( "LedTypeUnknown", "/10/device/driverArgs/type", "\"fan\"", "none of psu, status" ),
      argument( "LedTypeMissing", "/10/device/driverArgs/type", "", "\"type\" is missing" ),
      argument( "LedOnAPlainDevice", "/9/device/driverArgs",
                R"({ "type": "gpio", "register": 1, "bitpos": 1 })",
                "/10/device: status-led: device 20 can't make a led" ),
      argument( "GpioTypeUnknown", "/13/device/driverArgs/type", "\"pin\"", "is none of gpio" ),
      argument( "RegisterMissing", "/13/device/driverArgs/register", "", "\"register\" is" ),
      argument( "BitposMissing", "/14/device/driverArgs/bitpos", "", "\"bitpos\" is missing" ),
      argument( "BitposNoNumber", "/14/device/driverArgs/bitpos", "\"0x1\"", "must be a 32-bit" ),
      argument( "BitposAbove", "/14/device/driverArgs/bitpos", "8", "gpio: 8 is more than 7" ) ),
   []( const auto &mutation ) { return std::string( mutation.param.name ); } );

constexpr auto device14 = "/0/accelerators/0/busses/0/devices/4";

INSTANTIATE_TEST_SUITE_P(
   System, KeltMutationTest,
   ::testing::Values( Mutation{ "NoCpld", "topology.json",
                                "/0/accelerators/0/busses/0/devices/9/label", "",
                                "objects.json:/16: system: the topology has no label \"Cpld\"" },
                      Mutation{ "NoExpander", "topology.json",
                                "/0/accelerators/0/busses/0/devices/4/label", "",
                                "objects.json:/16: system: the topology has no label \"Pca9506\"" },
                      Mutation{ "CpldWithoutAddress", "topology.json",
                                "/0/accelerators/0/busses/0/devices/9/address", "",
                                "\"Cpld\" needs an \"address\" or a driver" },
                      Mutation{ "ExpanderWithoutDriver", "topology.json", device14,
                                R"({ "did": 14, "label": "Pca9506" })",
                                "/devices/4: Pca9506 must have the driver \"KeltPCA9506\"" },
                      Mutation{ "ExpanderWithAnotherDriver", "topology.json",
                                "/0/accelerators/0/busses/0/devices/4/driver", "\"Dummy\"",
                                "/devices/4: Pca9506 must have the driver \"KeltPCA9506\"" } ),
   []( const auto &mutation ) { return std::string( mutation.param.name ); } );

TEST_F( KeltCheckTest, RefusesTwoCompositesOnOneDid ) {
   board_.change( "objects.json", "/5/device", R"({ "did": 900, "driver": "DualFan",
      "isMultiDevice": true, "address": { "address": 0 },
      "driverArgs": { "fanId": 2, "maxRpm": 18000, "maxDiff": 0.25 }, "multiDeviceArgs": {} })" );
   EXPECT_THAT( board_.check(),
                Contains( HasSubstr( "/6/device/did: fan: composite 900 is already made at" ) ) );
}

} // namespace
} // namespace BoardFilesTest
