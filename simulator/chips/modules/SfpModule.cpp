#include "simulator/chips/modules/SfpModule.h"

#include "simulator/chips/modules/ModuleKeys.h"

namespace Simulator {

using namespace std::chrono_literals;

namespace {

constexpr auto sfpStartUp = 300ms;  // until it answers and its laser is on
constexpr auto sfpFirstSample = 1s; // until its monitors are valid

// Status and control.
constexpr uint8_t txDisabledByPin = 0x80, softTxDisable = 0x40, softRateSelect = 0x08,
                  txFaultBit = 0x04, rxLosBit = 0x02, notReady = 0x01;

} // namespace

SfpModule::SfpModule( std::string name, const Bus::Clock &clock, const SfpProduct &product,
                      const ModuleIdentity &identity, SfpCalibration::Kind calibration,
                      unsigned cableMetres, uint64_t seed )
   : ModuleChip( std::move( name ), clock, product.optics, seed ), calibration_( calibration ),
     serialId_( sfpSerialId( product, identity, calibration, cableMetres ) ),
     diagnostics_( sfpDiagnostics( product, calibration_ ) ), txDisablePin_( 10us, 2ms ),
     softTxDisable_( 100ms, 100ms ) {}

void SfpModule::restarted() {
   model().fullPowerIs( true );
   txDisablePin_.is( orders().txDisable );
   softTxDisable_.is( false );
   softRateSelect_ = 0;
}

bool SfpModule::acknowledges( Time running ) const {
   return running >= sfpStartUp && ( device() == 0 || hasDiagnostics() );
}

bool SfpModule::emits( unsigned lane ) const {
   return lane < optics().lanes && running() >= sfpStartUp && !txDisablePin_.at( now() ) &&
          !softTxDisable_.at( now() );
}

bool SfpModule::losesSignal() const {
   return hasDiagnostics() && ( running() < sfpStartUp || loses( 0 ) );
}

bool SfpModule::isFaulty() const { return emits( 0 ) && isDead( powerWord( txPower( 0 ) ) ); }

bool SfpModule::measures() const { return running() >= sfpFirstSample; }

bool SfpModule::isChecksum( uint8_t address ) const {
   return address == 95 || ( device() == 0 && address == 63 );
}

uint16_t SfpModule::monitor( unsigned number ) {
   if ( !measures() )
      return 0;
   const Sample &words = sample();
   switch ( number ) {
   case 0:
      return calibration_.celsius( words.celsius );
   case 1:
      return calibration_.volts( words.volts );
   case 2:
      return calibration_.bias( words.bias[0] );
   case 3:
      return calibration_.txPower( words.txPower[0] );
   default:
      return calibration_.rxPower( words.rxPower[0] );
   }
}

uint8_t SfpModule::status() const {
   unsigned bits = softRateSelect_;
   bits |= orders().txDisable ? txDisabledByPin : 0u;
   bits |= softTxDisable_.told() ? softTxDisable : 0u;
   bits |= isFaulty() ? txFaultBit : 0u;
   bits |= losesSignal() ? rxLosBit : 0u;
   bits |= measures() ? 0u : notReady;
   return static_cast<uint8_t>( bits );
}

// The words of a laser that is off are not valid.
unsigned SfpModule::flags( unsigned number ) {
   const bool isOfLaser = number == 2 || number == 3;
   if ( !measures() || ( isOfLaser && !emits( 0 ) ) )
      return 0;
   return flagsOf( monitor( number ), diagnostics_, 8 * number, number == 0 );
}

// Two bits for each monitor: its alarms, or its warnings.
uint8_t SfpModule::flagByte( uint8_t address ) {
   const unsigned shift = address < WarningFlags ? 2 : 0;
   const bool isFirst = address == AlarmFlags || address == WarningFlags;
   if ( !isFirst )
      return static_cast<uint8_t>( ( flags( 4 ) >> shift & 3 ) << 6 );
   unsigned bits = 0;
   for ( unsigned number = 0; number < 4; ++number )
      bits |= ( flags( number ) >> shift & 3 ) << ( 6 - 2 * number );
   return static_cast<uint8_t>( bits );
}

uint8_t SfpModule::at( uint8_t address ) {
   if ( device() == 0 )
      return serialId_[address];
   if ( address >= Monitors && address < Monitors + 10 )
      return static_cast<uint8_t>( monitor( ( address - Monitors ) / 2 ) >>
                                   ( address % 2 ? 0 : 8 ) );
   switch ( address ) {
   case StatusControl:
      return status();
   case AlarmFlags:
   case AlarmFlags + 1:
   case WarningFlags:
   case WarningFlags + 1:
      return flagByte( address );
   default:
      return diagnostics_[address];
   }
}

void SfpModule::store( uint8_t address, uint8_t byte ) {
   if ( device() == 0 )
      return;
   if ( address == StatusControl ) {
      softTxDisable_.told( byte & softTxDisable, now() );
      softRateSelect_ = byte & softRateSelect;
   } else if ( address >= UserMemory && address < VendorMemory ) {
      diagnostics_[address] = byte;
   }
}

ChipKind sfpModuleKind() {
   ChipKind kind{ .name = "SfpModule",
                  .description = "An SFP+ module.",
                  .settings = moduleKeys( mediaOf( sfpProducts() ), 4 ),
                  .settable = settableOfModules };
   kind.settings.push_back( integer( "diagnostics",
                                     "The did of its second address; it has but one without it.", 0,
                                     4294967295.0 )
                               .optional() );
   kind.settings.push_back(
      choice( "calibration", "Of its monitors; internal without it.", { "internal", "external" } )
         .optional() );
   kind.make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
      const auto calibration = entry.text( "calibration", "internal" ) == "external"
                                  ? SfpCalibration::Kind::External
                                  : SfpCalibration::Kind::Internal;
      auto module = std::make_unique<SfpModule>(
         entry.name(), entry.around.clock, productOf( sfpProducts(), entry.text( "media" ) ),
         identityIn( entry ), calibration, lengthIn( entry ), moduleSeed( entry ) );
      setUp( *module, entry );
      return module;
   };
   return kind;
}

} // namespace Simulator
