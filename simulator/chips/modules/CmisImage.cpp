#include "simulator/chips/modules/CmisImage.h"

#include <cmath>

namespace Simulator {

namespace {

constexpr uint8_t qsfpDd = 0x18;
constexpr uint8_t multiMode = 1, singleMode = 2, passiveCable = 3;
constexpr uint8_t lcPlug = 0x07, mpo12 = 0x0C, mpo16 = 0x28, noSeparable = 0x23;
constexpr uint8_t vcsel = 0x00, eml1310 = 0x06, copperCable = 0x0A;

// Limits as they are usual for these parts.
constexpr Optics fourFibres{ .lanes = 4,
                             .bias = 62,
                             .txPower = 1.55,
                             .rxPower = 1.12,
                             .biasLimits = { 110, 20, 100, 25 },
                             .txLimits = { 3.162, 0.398, 2.512, 0.513 },
                             .rxLimits = { 3.162, 0.158, 2.512, 0.257 },
                             .heat = 21 };
constexpr Optics fourWavelengths{ .lanes = 4,
                                  .bias = 71,
                                  .txPower = 1.71,
                                  .rxPower = 0.94,
                                  .biasLimits = { 127, 20, 115, 28 },
                                  .txLimits = { 3.548, 0.372, 2.818, 0.479 },
                                  .rxLimits = { 3.548, 0.138, 2.818, 0.195 },
                                  .heat = 22 };
constexpr Optics eightFibres{ .lanes = 8,
                              .bias = 8.2,
                              .txPower = 1.04,
                              .rxPower = 0.87,
                              .biasLimits = { 14.5, 3, 13, 4 },
                              .txLimits = { 2.512, 0.151, 1.995, 0.224 },
                              .rxLimits = { 2.512, 0.0977, 1.995, 0.1445 },
                              .heat = 19 };

template <unsigned Scale>
uint16_t scaledBiasWord( double milliamperes ) {
   return biasWord( milliamperes / Scale );
}

} // namespace

const std::vector<CmisProduct> &cmisProducts() {
   static const std::vector<CmisProduct> products{
      { .media = "400GBASE-DR4",
        .optics = fourFibres,
        .mediaType = singleMode,
        .applications = { { 0x11, 0x1C, 0x84, 0x01, 0x01 }, { 0x0D, 0x14, 0x21, 0x55, 0x0F } },
        .powerClass = 5,
        .watts = 9.5,
        .connector = mpo12,
        .technology = eml1310,
        .singleModeLength = 0x05, // 0.5 km
        .wavelength = 1310,
        .biasScale = 2 },
      { .media = "400GBASE-FR4",
        .optics = fourWavelengths,
        .mediaType = singleMode,
        .applications = { { 0x11, 0x1D, 0x84, 0x01, 0x01 } },
        .powerClass = 6,
        .watts = 11,
        .connector = lcPlug,
        .technology = eml1310,
        .singleModeLength = 0x42, // 2 km
        .wavelength = 1301,
        .biasScale = 4 },
      { .media = "400GBASE-SR8",
        .optics = eightFibres,
        .mediaType = multiMode,
        .applications = { { 0x11, 0x10, 0x88, 0x01, 0x01 }, { 0x0F, 0x0E, 0x44, 0x11, 0x11 } },
        .powerClass = 5,
        .watts = 9,
        .connector = mpo16,
        .technology = vcsel,
        .om3 = 35,
        .om4 = 50,
        .wavelength = 850 },
      { .media = "400GBASE-CR8",
        .optics = { .heat = 1 },
        .mediaType = passiveCable,
        .applications = { { 0x1D, 0x01, 0x88, 0x01, 0x01 } },
        .powerClass = 1,
        .watts = 0.5,
        .connector = noSeparable,
        .technology = copperCable },
   };
   return products;
}

LowerMemory cmisLower( const CmisProduct &product ) {
   constexpr unsigned mostApplications = 8;
   LowerMemory lower;
   lower[0] = qsfpDd;
   lower[1] = 0x52; // the revision
   lower[2] = product.optics.lanes > 0 ? 0x00 : 0x80;
   lower[39] = 2; // active firmware 2.7
   lower[40] = 7;
   lower[85] = product.mediaType;
   for ( unsigned i = 0; i < mostApplications; ++i ) {
      const unsigned at = 86 + 4 * i;
      if ( i >= product.applications.size() ) {
         lower[at] = 0xFF; // unused
         continue;
      }
      const CmisProduct::Application &application = product.applications[i];
      lower[at] = application.host;
      lower[at + 1] = application.media;
      lower[at + 2] = application.laneCounts;
      lower[at + 3] = application.hostStarts;
   }
   return lower;
}

UpperPage cmisIdentification( const CmisProduct &product, const ModuleIdentity &identity,
                              unsigned cableMetres ) {
   UpperPage page;
   page[128] = qsfpDd;
   page.putText( 129, 16, identity.vendor );
   page.putText( 148, 16, identity.partNumber );
   page.putText( 164, 2, identity.revision );
   page.putText( 166, 16, identity.serial );
   page.putText( 182, 8, identity.date );
   page.putText( 190, 10, "" );
   page[200] = static_cast<uint8_t>( ( product.powerClass - 1 ) << 5 );
   page[201] = static_cast<uint8_t>( product.watts * 4 ); // in 0.25 W
   page[203] = product.connector;
   if ( product.technology == copperCable ) {
      page[202] = static_cast<uint8_t>( 0x40 | cableMetres );
      constexpr uint8_t attenuations[] = { 6, 8, 12, 19 }; // dB at 5, 7, 12.9 and 25.8 GHz
      for ( unsigned i = 0; i < std::size( attenuations ); ++i )
         page[204 + i] = attenuations[i];
   } else {
      page[210] = static_cast<uint8_t>( 0xFF << product.optics.lanes ); // lanes that aren't there
   }
   page[212] = product.technology;
   page[222] = page.sum( 128, 221 );
   return page;
}

UpperPage cmisAdvertising( const CmisProduct &product ) {
   UpperPage page;
   page[130] = 1; // hardware 1.3
   page[131] = 3;
   page[132] = product.singleModeLength;
   page[134] = product.om4;
   page[135] = product.om3;
   page.putWord( 138, product.wavelength * 20 ); // in 0.05 nm
   page.putWord( 140, 1300 );                    // 6.5 nm, in 0.005 nm
   page[144] = 0x36;                             // data path down below 50 ms, up below 1 s
   page[146] = 70;                               // degrees Celsius of the case
   page[150] = 156;                              // 3.12 V, in 20 mV
   page[151] = 0x10;                             // received power is an average
   page[155] = 0x02;                             // TX disable
   page[157] = 0x01;                             // flags: TX failure
   page[158] = 0x06;                             // flags: RX loss of lock and of signal
   page[159] = 0x03;                             // monitors: supply, temperature
   page[160] = static_cast<uint8_t>( std::lround( std::log2( product.biasScale ) ) << 3 | 0x07 );
   page[167] = 0x45; // module down below 100 ms, up below 500 ms
   page[168] = 0x34; // light off below 50 ms, on below 100 ms
   for ( unsigned i = 0; i < product.applications.size(); ++i )
      page[176 + i] = product.applications[i].mediaStarts;
   page[255] = page.sum( 130, 254 );
   return page;
}

UpperPage cmisThresholds( const CmisProduct &product ) {
   UpperPage page;
   page.putLimits( 128, moduleCelsiusLimits, celsiusWord );
   page.putLimits( 136, moduleVoltsLimits, voltsWord );
   page.putLimits( 176, product.optics.txLimits, powerWord );
   page.putLimits( 184, product.optics.biasLimits,
                   product.biasScale == 1   ? scaledBiasWord<1>
                   : product.biasScale == 2 ? scaledBiasWord<2>
                                            : scaledBiasWord<4> );
   page.putLimits( 192, product.optics.rxLimits, powerWord );
   page[255] = page.sum( 128, 254 );
   return page;
}

} // namespace Simulator
