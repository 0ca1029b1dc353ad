#include "simulator/chips/modules/QsfpImage.h"

namespace Simulator {

namespace {

constexpr uint8_t qsfpPlus = 0x0D, qsfp28 = 0x11;
constexpr uint8_t mpoConnector = 0x0C, lcPair = 0x07, noConnector = 0x23;
constexpr uint8_t class1 = 0x00, class3 = 0x80, class4 = 0xC0; // 1.5 W, 2.5 W, 3.5 W
constexpr uint8_t seeExtended = 0x80, fortyGigabitSr4 = 0x04;
constexpr uint8_t vcsel850 = 0x00, dfb1310 = 0x40, passiveCopper = 0xA0;

// Limits as they are usual for these parts.
constexpr Optics parallelShortReach{ .lanes = 4,
                                     .bias = 7.4,
                                     .txPower = 0.92,
                                     .rxPower = 0.78,
                                     .biasLimits = { 13, 2.5, 11.5, 3.5 },
                                     .txLimits = { 2.188, 0.0912, 1.738, 0.145 },
                                     .rxLimits = { 2.188, 0.0676, 1.738, 0.107 },
                                     .heat = 13 };
constexpr Optics fourColours{ .lanes = 4,
                              .bias = 44,
                              .txPower = 1.25,
                              .rxPower = 0.66,
                              .biasLimits = { 78, 12, 70, 16 },
                              .txLimits = { 3.548, 0.269, 2.818, 0.372 },
                              .rxLimits = { 3.548, 0.0525, 2.818, 0.0832 },
                              .heat = 17 };
constexpr Optics slowShortReach{ .lanes = 4,
                                 .bias = 6.4,
                                 .txPower = 0.71,
                                 .rxPower = 0.58,
                                 .biasLimits = { 11, 2, 10, 3 },
                                 .txLimits = { 1.738, 0.0871, 1.38, 0.138 },
                                 .rxLimits = { 1.738, 0.0646, 1.38, 0.1023 },
                                 .heat = 8 };

} // namespace

const std::vector<QsfpProduct> &qsfpProducts() {
   static const std::vector<QsfpProduct> products{
      { .media = "100GBASE-SR4",
        .optics = parallelShortReach,
        .identifier = qsfp28,
        .connector = mpoConnector,
        .powerClass = class3,
        .compliance = seeExtended,
        .extendedCompliance = 0x02,
        .laneRate = 0xFF,
        .fastRate = 103,
        .om3 = 35,
        .om4 = 50,
        .technology = vcsel850,
        .wavelength = 850,
        .hasClockRecovery = true },
      { .media = "100GBASE-LR4",
        .optics = fourColours,
        .identifier = qsfp28,
        .connector = lcPair,
        .powerClass = class4,
        .compliance = seeExtended,
        .extendedCompliance = 0x03,
        .laneRate = 0xFF,
        .fastRate = 103,
        .kilometres = 10,
        .technology = dfb1310,
        .wavelength = 1302,
        .hasClockRecovery = true },
      { .media = "40GBASE-SR4",
        .optics = slowShortReach,
        .identifier = qsfpPlus,
        .connector = mpoConnector,
        .powerClass = class1,
        .compliance = fortyGigabitSr4,
        .laneRate = 103,
        .om3 = 50,
        .om4 = 75,
        .technology = vcsel850,
        .wavelength = 850 },
      { .media = "100GBASE-CR4",
        .optics = { .heat = 1 },
        .identifier = qsfp28,
        .connector = noConnector,
        .powerClass = class1,
        .compliance = seeExtended,
        .extendedCompliance = 0x0B,
        .laneRate = 0xFF,
        .fastRate = 103,
        .technology = passiveCopper },
   };
   return products;
}

UpperPage qsfpIdentification( const QsfpProduct &product, const ModuleIdentity &identity,
                              unsigned cableMetres ) {
   const bool isCopper = product.technology == passiveCopper;
   UpperPage page;
   page[128] = product.identifier;
   page[129] = static_cast<uint8_t>( product.powerClass | ( product.hasClockRecovery ? 0x0C : 0 ) );
   page[130] = product.connector;
   page[131] = product.compliance;
   page[139] = 0x05; // 64B/66B
   page[140] = product.laneRate;
   page[142] = product.kilometres;
   page[143] = product.om3;
   page[146] = isCopper ? static_cast<uint8_t>( cableMetres ) : product.om4;
   page[147] = product.technology;
   page.putText( 148, 16, identity.vendor );
   page.putText( 168, 16, identity.partNumber );
   page.putText( 184, 2, identity.revision );
   if ( isCopper ) {
      page.putWord( 186, 0x0507 ); // dB at 2.5 and 5 GHz
      page.putWord( 188, 0x090D ); // at 7 and 12.9 GHz
   } else {
      page.putWord( 186, product.wavelength * 20 ); // in 0.05 nm
      page.putWord( 188, 2000 );                    // 10 nm, in 0.005 nm
   }
   page[190] = 70; // degrees Celsius, the maximum for the case
   page[191] = page.sum( 128, 190 );
   page[192] = product.extendedCompliance;
   page.putText( 196, 16, identity.serial );
   page.putText( 212, 8, identity.date );
   if ( !isCopper ) {
      page[194] = product.hasClockRecovery ? 0xF0 : 0x00;
      page[195] = 0x98; // page 02h; TX disable and TX fault
      page[220] = 0x3C; // monitors of temperature, supply, sent and received (average) power
   }
   page[222] = product.fastRate;
   page[223] = page.sum( 192, 222 );
   return page;
}

UpperPage qsfpThresholds( const QsfpProduct &product ) {
   UpperPage page;
   page.putLimits( 128, moduleCelsiusLimits, celsiusWord );
   page.putLimits( 144, moduleVoltsLimits, voltsWord );
   page.putLimits( 176, product.optics.rxLimits, powerWord );
   page.putLimits( 184, product.optics.biasLimits, biasWord );
   page.putLimits( 192, product.optics.txLimits, powerWord );
   return page;
}

} // namespace Simulator
