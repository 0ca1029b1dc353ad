#include "simulator/chips/modules/QsfpModule.h"

#include "simulator/chips/modules/ModuleKeys.h"

namespace Simulator {

using namespace std::chrono_literals;

namespace {

constexpr auto qsfpAnswers = 400ms; // at most 2 s
constexpr auto qsfpReady = 2s;      // t_init, and the first samples

constexpr uint8_t flatMemory = 0x04, noInterrupt = 0x02, dataNotReady = 0x01; // status
constexpr uint8_t powerOverride = 0x01, powerSet = 0x02;

// Page 03h.
constexpr uint8_t firstLaneControl = 224, laneMasks = 242;

} // namespace

QsfpModule::QsfpModule( std::string name, const Bus::Clock &clock, const QsfpProduct &product,
                        const ModuleIdentity &identity, unsigned cableMetres, uint64_t seed )
   : ModuleChip( std::move( name ), clock, product.optics, seed ),
     identification_( qsfpIdentification( product, identity, cableMetres ) ),
     thresholds_( qsfpThresholds( product ) ), lowPower_( 100ms, 300ms ),
     txDisable_( product.optics.lanes, LaggingSwitch( 100ms, 400ms ) ) {
   restarted();
   isAnnounced_ = true;
}

bool QsfpModule::has( uint8_t page ) const {
   return page == Identification || ( hasPages() && ( page == UserMemory || page == Thresholds ) );
}

void QsfpModule::restarted() {
   lower_ = {};
   lower_[Identifier] = identification_[128];
   lower_[Revision] = 0x08; // SFF-8636, 2.8 to 2.10
   if ( hasPages() )
      lower_[ClockRecovery] = 0xFF;
   controls_ = {};
   page_ = Identification;
   isAnnounced_ = !hasPages(); // a cable has no interrupt
   for ( LaggingSwitch &lane : txDisable_ )
      lane.is( false );
   updatePower();
   lowPower_.is( lowPower_.told() );
}

void QsfpModule::updatePower() {
   const uint8_t bits = lower_[Power];
   const bool low = bits & powerOverride ? bool( bits & powerSet ) : orders().lowPower;
   lowPower_.told( low, now() );
   model().fullPowerIs( !low && !orders().reset );
}

bool QsfpModule::acknowledges( Time running ) const { return running >= qsfpAnswers; }

bool QsfpModule::isReady() const { return !orders().reset && running() >= qsfpReady; }
bool QsfpModule::isUp() const { return isReady() && !lowPower_.at( now() ); }

bool QsfpModule::emits( unsigned lane ) const {
   return lane < optics().lanes && isUp() && !txDisable_[lane].at( now() );
}

// Lanes 1 and 2 share a byte, lane 1 in its upper half.
void QsfpModule::latchNibble( unsigned address, unsigned lane, unsigned flags ) {
   lower_[address + lane / 2] |= static_cast<uint8_t>( lane % 2 ? flags : flags << 4 );
}

void QsfpModule::latch( const Sample &words ) {
   if ( !isReady() )
      return;
   lower_[TemperatureFlags] |=
      static_cast<uint8_t>( flagsOf( words.celsius, thresholds_, 128, true ) << 4 );
   lower_[SupplyFlags] |= static_cast<uint8_t>( flagsOf( words.volts, thresholds_, 144 ) << 4 );
   if ( isUp() )
      latchLanes( words );
}

void QsfpModule::latchLanes( const Sample &words ) {
   for ( unsigned lane = 0; lane < optics().lanes; ++lane ) {
      const auto bit = static_cast<uint8_t>( 1u << lane );
      latchNibble( RxPowerFlags, lane, flagsOf( words.rxPower[lane], thresholds_, 176 ) );
      if ( isDark( words.rxPower[lane] ) ) {
         lower_[Los] |= bit;
         lower_[LossOfLock] |= bit;
      }
      if ( !emits( lane ) ) // its words are not valid
         continue;
      latchNibble( BiasFlags, lane, flagsOf( words.bias[lane], thresholds_, 184 ) );
      latchNibble( TxPowerFlags, lane, flagsOf( words.txPower[lane], thresholds_, 192 ) );
      if ( isDead( words.txPower[lane] ) )
         lower_[TxFault] |= bit;
   }
}

uint8_t QsfpModule::mask( unsigned address ) const {
   if ( address >= RxPowerFlags )
      return controls_[laneMasks + address - RxPowerFlags];
   return address - Los + Masks < MasksEnd ? lower_[Masks + address - Los] : uint8_t{ 0 };
}

bool QsfpModule::raisesInterrupt() {
   if ( !isReady() )
      return false;
   bool raised = !isAnnounced_;
   for ( unsigned address = Los; address < FlagsEnd; ++address )
      raised |= ( lower_[address] & ~mask( address ) ) != 0;
   return raised;
}

bool QsfpModule::isChecksum( uint8_t address ) const {
   return shownPage( page_ ) == Identification && ( address == 191 || address == 223 );
}

uint8_t QsfpModule::at( uint8_t address ) {
   return address < 128 ? lower( address ) : upper( address );
}

uint8_t QsfpModule::monitorByte( uint8_t address ) {
   if ( !hasPages() || !isReady() )
      return 0;
   const Sample &words = sample();
   const auto byteOf = [address]( unsigned word ) {
      return static_cast<uint8_t>( word >> ( address % 2 ? 0 : 8 ) );
   };
   const auto laneFrom = [address]( unsigned first ) { return ( address - first ) / 2; };
   if ( address == Temperature || address == Temperature + 1 )
      return byteOf( words.celsius );
   if ( address == Supply || address == Supply + 1 )
      return byteOf( words.volts );
   if ( address >= TxPower )
      return byteOf( words.txPower[laneFrom( TxPower )] );
   if ( address >= Bias )
      return byteOf( words.bias[laneFrom( Bias )] );
   return address >= RxPower ? byteOf( words.rxPower[laneFrom( RxPower )] ) : uint8_t{ 0 };
}

uint8_t QsfpModule::lower( uint8_t address ) {
   if ( address >= Temperature && address < MonitorsEnd )
      return monitorByte( address );
   if ( address == PageSelect )
      return toldPage( page_ );
   if ( address < Status || address >= FlagsEnd )
      return lower_[address];
   latchSample();
   if ( address > Status )
      return std::exchange( lower_[address], uint8_t{ 0 } );
   const bool interrupts = raisesInterrupt();
   isAnnounced_ |= isReady();
   return static_cast<uint8_t>( ( hasPages() ? 0 : flatMemory ) | ( interrupts ? 0 : noInterrupt ) |
                                ( isReady() ? 0 : dataNotReady ) );
}

uint8_t QsfpModule::upper( uint8_t address ) const {
   switch ( shownPage( page_ ) ) {
   case Identification:
      return identification_[address];
   case UserMemory:
      return user_[address];
   case Thresholds:
      return address < firstLaneControl ? thresholds_[address] : controls_[address];
   default:
      return 0;
   }
}

void QsfpModule::store( uint8_t address, uint8_t byte ) {
   address < 128 ? storeLower( address, byte ) : storeUpper( address, byte );
}

void QsfpModule::storeLower( uint8_t address, uint8_t byte ) {
   if ( address == PageSelect ) {
      page_ = has( byte ) ? byte : uint8_t{ Identification };
      return;
   }
   if ( !hasPages() || address < FirstControl || address >= MasksEnd )
      return;
   lower_[address] = byte;
   if ( address == Power )
      updatePower();
   if ( address == TxDisable )
      for ( unsigned lane = 0; lane < txDisable_.size(); ++lane )
         txDisable_[lane].told( byte >> lane & 1, now() );
}

void QsfpModule::storeUpper( uint8_t address, uint8_t byte ) {
   if ( page_ == UserMemory )
      user_[address] = byte;
   else if ( page_ == Thresholds && address >= firstLaneControl )
      controls_[address] = byte;
}

ChipKind qsfpModuleKind() {
   return { .name = "QsfpModule",
            .description = "A QSFP+ or QSFP28 module, or a copper cable.",
            .settings = moduleKeys( mediaOf( qsfpProducts() ), 2 ),
            .settable = settableOfModules,
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               auto module = std::make_unique<QsfpModule>(
                  entry.name(), entry.around.clock,
                  productOf( qsfpProducts(), entry.text( "media" ) ), identityIn( entry ),
                  lengthIn( entry ), moduleSeed( entry ) );
               setUp( *module, entry );
               return module;
            } };
}

} // namespace Simulator
