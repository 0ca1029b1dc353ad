#include "simulator/chips/modules/CmisModule.h"

#include "simulator/chips/modules/ModuleKeys.h"

namespace Simulator {

namespace {

// Module control.
constexpr uint8_t lowPowerByPin = 0x40, lowPowerBySoftware = 0x10, softwareReset = 0x08;
constexpr uint8_t moduleStateChanged = 0x01;
constexpr uint8_t interruptDeasserted = 0x01;
constexpr uint8_t firstApplication = 0x10; // application 1, a data path from lane 1 on
constexpr unsigned accepted = 1, invalidApplication = 3; // configuration status

// High alarm in bit 0, as it is in this memory, instead of in bit 3.
unsigned mirrored( unsigned flags ) {
   return ( flags & 8 ) >> 3 | ( flags & 4 ) >> 1 | ( flags & 2 ) << 1 | ( flags & 1 ) << 3;
}

// Two lanes share a byte; the first one has its lower half.
void putNibble( UpperPage &page, unsigned at, unsigned lane, unsigned nibble ) {
   uint8_t &byte = page[at + lane / 2];
   byte =
      static_cast<uint8_t>( lane % 2 ? ( byte & 0x0F ) | nibble << 4 : ( byte & 0xF0 ) | nibble );
}

} // namespace

CmisModule::CmisModule( std::string name, const Bus::Clock &clock, const CmisProduct &product,
                        const ModuleIdentity &identity, unsigned cableMetres, uint64_t seed )
   : ModuleChip( std::move( name ), clock, product.optics, seed ), product_( product ),
     identification_( cmisIdentification( product, identity, cableMetres ) ),
     advertising_( cmisAdvertising( product ) ), thresholds_( cmisThresholds( product ) ) {
   restarted();
   states_ = {};
}

void CmisModule::restarted() {
   lower_ = cmisLower( product_ );
   lower_[Control] = lowPowerByPin;
   laneControl_ = {};
   laneStatus_ = {};
   for ( unsigned lane = 0; lane < CmisStates::lanes; ++lane ) {
      laneControl_[Staged + lane] = firstApplication;
      laneStatus_[ActiveSet + lane] = firstApplication;
      putNibble( laneStatus_, ConfigStatus, lane, accepted );
   }
   bank_ = 0;
   page_ = Identification;
   states_.startsAt( startedAt() );
   updateWishes();
}

void CmisModule::updateWishes() {
   const uint8_t control = lower_[Control];
   CmisStates::Wishes wishes;
   wishes.lowPower =
      control & lowPowerBySoftware || ( control & lowPowerByPin && orders().lowPower );
   wishes.used = static_cast<uint8_t>( ~laneControl_[Deinit] );
   for ( unsigned lane = 0; lane < CmisStates::lanes; ++lane )
      if ( laneStatus_[ActiveSet + lane] >> 4 == 0 )
         wishes.used &= static_cast<uint8_t>( ~( 1u << lane ) );
   wishes.light = static_cast<uint8_t>( ~laneControl_[TxDisable] );
   states_.wishesAre( wishes, now() );
   model().fullPowerIs( !wishes.lowPower && !orders().reset );
}

bool CmisModule::emits( unsigned lane ) const {
   if ( lane >= optics().lanes || !isManaged() )
      return false;
   states_.advance( now() );
   return states_.lane( lane ) == CmisStates::Activated;
}

void CmisModule::latch( const Sample &words ) {
   if ( !isManaged() )
      return;
   states_.advance( now() );
   if ( states_.takeModuleChanged() )
      lower_[ModuleFlags] |= moduleStateChanged;
   laneStatus_[LaneFlags] |= states_.takeLanesChanged();
   lower_[MonitorFlags] |=
      static_cast<uint8_t>( mirrored( flagsOf( words.celsius, thresholds_, 128, true ) ) |
                            mirrored( flagsOf( words.volts, thresholds_, 136 ) ) << 4 );
   if ( states_.module() == CmisStates::Ready )
      for ( unsigned lane = 0; lane < optics().lanes; ++lane )
         latchLane( lane, words );
}

void CmisModule::latchLimits( unsigned at, unsigned lane, unsigned flags ) {
   for ( unsigned i = 0; i < 4; ++i )
      if ( flags & 8u >> i )
         laneStatus_[at + i] |= static_cast<uint8_t>( 1u << lane );
}

void CmisModule::latchLane( unsigned lane, const Sample &words ) {
   const auto bit = static_cast<uint8_t>( 1u << lane );
   latchLimits( RxPowerFlags, lane, flagsOf( words.rxPower[lane], thresholds_, 192 ) );
   if ( isDark( words.rxPower[lane] ) ) {
      laneStatus_[RxLos] |= bit;
      laneStatus_[RxLossOfLock] |= bit;
   }
   if ( !emits( lane ) ) // its words are not valid
      return;
   latchLimits( TxPowerFlags, lane, flagsOf( words.txPower[lane], thresholds_, 176 ) );
   latchLimits( BiasFlags, lane, flagsOf( words.bias[lane], thresholds_, 184 ) );
   if ( isDead( words.txPower[lane] ) )
      laneStatus_[TxFailure] |= bit;
}

bool CmisModule::hasLaneFlags() const {
   for ( unsigned at = LaneFlags; at < LaneFlagsEnd; ++at )
      if ( laneStatus_[at] & ~laneControl_[LaneMasks + at - LaneFlags] )
         return true;
   return false;
}

bool CmisModule::raisesInterrupt() {
   if ( !isManaged() )
      return false;
   for ( unsigned at = ModuleFlags; at < ModuleFlagsEnd; ++at )
      if ( lower_[at] & ~lower_[Masks + at - ModuleFlags] )
         return true;
   return hasLaneFlags();
}

bool CmisModule::isChecksum( uint8_t address ) const {
   const uint8_t page = shownPage( page_ );
   return ( page == Identification && address == 222 ) ||
          ( ( page == Advertising || page == Thresholds ) && address == 255 );
}

uint8_t CmisModule::at( uint8_t address ) {
   return address < 128 ? lower( address ) : upper( address );
}

uint8_t CmisModule::lower( uint8_t address ) {
   const auto byteOf = [address]( unsigned word ) {
      return static_cast<uint8_t>( word >> ( address % 2 ? 0 : 8 ) );
   };
   if ( address >= Temperature && address < MonitorsEnd )
      return !hasPages()        ? uint8_t{ 0 }
             : address < Supply ? byteOf( sample().celsius )
                                : byteOf( sample().volts );
   if ( address >= ModuleFlags && address < ModuleFlagsEnd ) {
      latchSample();
      return std::exchange( lower_[address], uint8_t{ 0 } );
   }
   switch ( address ) {
   case State:
      latchSample();
      return static_cast<uint8_t>( ( hasPages() ? states_.module() : CmisStates::Ready ) << 1 |
                                   ( raisesInterrupt() ? 0 : interruptDeasserted ) );
   case Summary: {
      latchSample();
      const auto isSet = [this]( unsigned at ) { return laneStatus_[at] != 0; };
      for ( unsigned at = LaneFlags; at < LaneFlagsEnd; ++at )
         if ( isSet( at ) )
            return 1; // page 11h
      return 0;
   }
   case BankSelect:
      return bank_;
   case PageSelect:
      return toldPage( page_ );
   default:
      return lower_[address];
   }
}

uint8_t CmisModule::upper( uint8_t address ) {
   switch ( shownPage( page_ ) ) {
   case Identification:
      return identification_[address];
   case Advertising:
      return advertising_[address];
   case Thresholds:
      return thresholds_[address];
   case LaneControl:
      return laneControl_[address];
   case LaneStatus:
      return laneStatus( address );
   default:
      return 0;
   }
}

uint8_t CmisModule::laneMonitor( uint8_t address ) {
   const Sample &words = sample();
   const unsigned lane = ( address - TxPower ) % 16 / 2;
   const unsigned word = address < Bias      ? words.txPower[lane]
                         : address < RxPower ? words.bias[lane]
                                             : words.rxPower[lane];
   return static_cast<uint8_t>( word >> ( address % 2 ? 0 : 8 ) );
}

uint8_t CmisModule::laneStatus( uint8_t address ) {
   if ( address >= TxPower && address < LaneMonitorsEnd )
      return laneMonitor( address );
   latchSample();
   if ( address >= LaneFlags && address < LaneFlagsEnd )
      return std::exchange( laneStatus_[address], uint8_t{ 0 } );
   if ( address < RxValid ) {
      const unsigned first = 2u * ( address - States );
      return static_cast<uint8_t>( states_.lane( first ) | states_.lane( first + 1 ) << 4 );
   }
   if ( address > TxValid )
      return laneStatus_[address];
   unsigned valid = 0;
   for ( unsigned lane = 0; lane < optics().lanes; ++lane )
      if ( address == TxValid ? emits( lane )
                              : states_.module() == CmisStates::Ready && !loses( lane ) )
         valid |= 1u << lane;
   return static_cast<uint8_t>( valid );
}

void CmisModule::choosePage( uint8_t page ) {
   const bool isBanked = page == LaneControl || page == LaneStatus;
   const bool exists =
      page == Identification ||
      ( hasPages() && ( page == Advertising || page == Thresholds || ( isBanked && bank_ == 0 ) ) );
   page_ = exists ? page : uint8_t{ Identification };
}

void CmisModule::store( uint8_t address, uint8_t byte ) {
   if ( address < 128 )
      storeLower( address, byte );
   else if ( page_ == LaneControl )
      storeLaneControl( address, byte );
}

void CmisModule::storeLower( uint8_t address, uint8_t byte ) {
   if ( address == PageSelect )
      choosePage( byte );
   else if ( address == BankSelect )
      bank_ = byte;
   else if ( address == Control )
      storeControl( byte );
   else if ( address >= Masks && address < MasksEnd )
      lower_[address] = byte;
}

void CmisModule::storeControl( uint8_t byte ) {
   if ( byte & softwareReset )
      return restart();
   lower_[Control] = byte;
   updateWishes();
}

void CmisModule::storeLaneControl( uint8_t address, uint8_t byte ) {
   if ( address == ApplyInit )
      return applyStaged( byte );
   if ( address == ApplyNow || address >= LaneControlsEnd )
      return;
   laneControl_[address] = byte;
   updateWishes();
}

// The data paths of these lanes go down, and come up again as it is staged.
void CmisModule::applyStaged( uint8_t lanes ) {
   uint8_t good = 0;
   for ( unsigned lane = 0; lane < CmisStates::lanes; ++lane ) {
      if ( !( lanes >> lane & 1 ) )
         continue;
      const uint8_t staged = laneControl_[Staged + lane];
      const bool exists = staged >> 4 <= product_.applications.size();
      putNibble( laneStatus_, ConfigStatus, lane, exists ? accepted : invalidApplication );
      if ( !exists )
         continue;
      laneStatus_[ActiveSet + lane] = staged;
      good |= static_cast<uint8_t>( 1u << lane );
   }
   states_.initializeAnew( good, now() );
   updateWishes();
}

ChipKind cmisModuleKind() {
   return { .name = "CmisModule",
            .description = "A QSFP-DD module with CMIS, or a copper cable.",
            .settings = moduleKeys( mediaOf( cmisProducts() ), 2 ),
            .settable = settableOfModules,
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               auto module = std::make_unique<CmisModule>(
                  entry.name(), entry.around.clock,
                  productOf( cmisProducts(), entry.text( "media" ) ), identityIn( entry ),
                  lengthIn( entry ), moduleSeed( entry ) );
               setUp( *module, entry );
               return module;
            } };
}

} // namespace Simulator
