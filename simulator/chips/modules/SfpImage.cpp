#include "simulator/chips/modules/SfpImage.h"

namespace Simulator {

namespace {

constexpr uint8_t sfpIdentifier = 0x03;
constexpr uint8_t tenGigabit = 103; // 100 MBd
constexpr uint8_t lcConnector = 0x07, copperPigtail = 0x21, rj45 = 0x22;

// Limits as they are usual for these parts.
constexpr Optics shortReach{ .lanes = 1,
                             .bias = 6,
                             .txPower = 0.56,
                             .rxPower = 0.48,
                             .biasLimits = { 10, 2, 9, 3 },
                             .txLimits = { 1, 0.148, 0.794, 0.186 },
                             .rxLimits = { 1.122, 0.0646, 1, 0.102 },
                             .heat = 9 };
constexpr Optics longReach{ .lanes = 1,
                            .bias = 32,
                            .txPower = 0.6,
                            .rxPower = 0.33,
                            .biasLimits = { 57, 8, 51, 12 },
                            .txLimits = { 1.41, 0.151, 1.12, 0.19 },
                            .rxLimits = { 1.41, 0.0363, 1.12, 0.0457 },
                            .heat = 11 };

} // namespace

const std::vector<SfpProduct> &sfpProducts() {
   static const std::vector<SfpProduct> products{
      { .media = "10GBASE-SR",
        .optics = shortReach,
        .connector = lcConnector,
        .compliance = { 3, 0x10 },
        .om1 = 3,
        .om2 = 8,
        .om3 = 30,
        .om4 = 40,
        .wavelength = 850 },
      { .media = "10GBASE-LR",
        .optics = longReach,
        .connector = lcConnector,
        .compliance = { 3, 0x20 },
        .kilometres = 10,
        .wavelength = 1310 },
      { .media = "10GBASE-CR",
        .optics = { .heat = 1 },
        .connector = copperPigtail,
        .compliance = { 8, 0x04 } }, // passive cable
      { .media = "10GBASE-T",
        .optics = { .heat = 20 },
        .connector = rj45,
        .extendedCompliance = 0x16 },
   };
   return products;
}

WholeMemory sfpSerialId( const SfpProduct &product, const ModuleIdentity &identity,
                         SfpCalibration::Kind calibration, unsigned cableMetres ) {
   const bool isCable = product.connector == copperPigtail;
   WholeMemory memory;
   memory[0] = sfpIdentifier;
   memory[1] = 0x04; // defined by its serial id
   memory[2] = product.connector;
   memory[product.compliance.at] = product.compliance.bits;
   memory[11] = isCable ? 0x00 : 0x06; // unspecified, or 64B/66B
   memory[12] = tenGigabit;
   memory[14] = product.kilometres;
   memory[15] = static_cast<uint8_t>( product.kilometres * 10 );
   memory[16] = product.om2;
   memory[17] = product.om1;
   memory[18] = isCable ? static_cast<uint8_t>( cableMetres ) : product.om4;
   memory[19] = product.om3;
   memory.putText( 20, 16, identity.vendor );
   memory[36] = product.extendedCompliance;
   memory.putText( 40, 16, identity.partNumber );
   memory.putText( 56, 4, identity.revision );
   memory.putWord( 60, isCable ? 0x0100 : product.wavelength ); // SFF-8431, appendix E
   memory[63] = memory.sum( 0, 62 );
   memory[65] = isCable ? 0x00 : 0x1A; // signals: TX disable, TX fault, loss of signal
   memory.putText( 68, 16, identity.serial );
   memory.putText( 84, 8, identity.date );
   if ( product.optics.lanes > 0 ) {
      // Diagnostics; received power is an average.
      memory[92] = calibration == SfpCalibration::Kind::Internal ? 0x68 : 0x58;
      memory[93] = 0xF0; // flags; TX disable, TX fault and loss of signal by software
      memory[94] = 0x08; // revision of SFF-8472
   }
   memory[95] = memory.sum( 64, 94 );
   return memory;
}

WholeMemory sfpDiagnostics( const SfpProduct &product, const SfpCalibration &calibration ) {
   WholeMemory memory;
   memory.putLimits( 0, moduleCelsiusLimits, celsiusWord );
   memory.putLimits( 8, moduleVoltsLimits, voltsWord );
   memory.putLimits( 16, product.optics.biasLimits, biasWord );
   memory.putLimits( 24, product.optics.txLimits, powerWord );
   memory.putLimits( 32, product.optics.rxLimits, powerWord );
   const auto convert = [&]( unsigned at, uint16_t ( SfpCalibration::*toRaw )( uint16_t ) const ) {
      for ( unsigned limit = at; limit < at + 8; limit += 2 )
         memory.putWord( limit,
                         ( calibration.*toRaw )( static_cast<uint16_t>( memory.word( limit ) ) ) );
   };
   convert( 0, &SfpCalibration::celsius );
   convert( 8, &SfpCalibration::volts );
   convert( 16, &SfpCalibration::bias );
   convert( 24, &SfpCalibration::txPower );
   convert( 32, &SfpCalibration::rxPower );
   calibration.putConstants( memory );
   memory[95] = memory.sum( 0, 94 );
   return memory;
}

} // namespace Simulator
