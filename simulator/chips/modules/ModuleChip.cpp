#include "simulator/chips/modules/ModuleChip.h"

#include "simulator/chips/modules/Fields.h"

namespace Simulator {

namespace {

constexpr std::chrono::hours forHours( -24 ); // before the clock's start
constexpr double darkerThanAlarm = 0.7; // where the signal is lost, as a share of the low alarm
constexpr double failedShare = 0.1;     // of a new laser's power

} // namespace

ModuleChip::ModuleChip( std::string name, const Bus::Clock &clock, const Optics &optics,
                        uint64_t seed )
   : Chip( std::move( name ) ), clock_( clock ), model_( clock_, optics, seed ),
     start_( forHours ) {}

void ModuleChip::join( ModuleChip &one, ModuleChip &other, double lossDecibels ) {
   one.far_ = &other;
   other.far_ = &one;
   one.fibreRatio_ = other.fibreRatio_ = ratioOf( -lossDecibels );
}

double ModuleChip::light( unsigned lane ) const {
   return answers() && lane < optics().lanes ? txPower( lane ) : 0;
}

ModuleModel::Laser ModuleChip::laser( unsigned lane, double celsius ) const {
   return emits( lane ) ? model_.laser( lane, celsius ) : ModuleModel::Laser{ 0, 0 };
}

double ModuleChip::rxPower( unsigned lane ) const {
   return model_.received( lane,
                           far_ ? far_->light( lane ) * fibreRatio_ : model_.arriving( lane ) );
}

bool ModuleChip::isDark( uint16_t rxPower ) const {
   return rxPower < powerWord( optics().rxLimits.lowAlarm * darkerThanAlarm );
}

bool ModuleChip::isDead( uint16_t txPower ) const {
   return txPower < powerWord( optics().txPower * failedShare );
}

bool ModuleChip::loses( unsigned lane ) const { return isDark( powerWord( rxPower( lane ) ) ); }

void ModuleChip::latchNow() {
   if ( hasPages() && answers() )
      latch( freshSample() );
}

void ModuleChip::latchBothEnds() {
   latchNow();
   if ( far_ )
      far_->latchNow();
}

template <typename Change>
void ModuleChip::changing( Change change ) {
   latchBothEnds();
   change();
   latchBothEnds();
}

void ModuleChip::ordersAre( const Orders &orders ) {
   if ( orders == orders_ )
      return;
   changing( [&] {
      const bool released = orders_.reset && !orders.reset;
      orders_ = orders;
      if ( orders.reset || released )
         restart();
      ordersHaveChanged();
   } );
}

Pluggable::Signals ModuleChip::signals() {
   if ( !answers() )
      return {};
   const HeldClock::Hold hold( clock_ );
   latchNow();
   return { raisesInterrupt(), losesSignal(), isFaulty() };
}

void ModuleChip::restart() {
   start_ = now();
   pointers_ = {};
   sampled_ = latched_ = false;
   restarted();
}

void ModuleChip::reset() {
   if ( !model_.isCooling() )
      model_.unplugged();
   changing( [this] { restart(); } );
}

bool ModuleChip::addressedAt( uint8_t address, Direction direction ) {
   device_ = address & 1;
   return addressed( direction );
}

bool ModuleChip::addressed( Direction ) {
   sampled_ = latched_ = false;
   return !orders_.reset && now() >= faults().busyUntil && acknowledges( running() );
}

bool ModuleChip::command( uint32_t address ) {
   pointers_[device_] = static_cast<uint8_t>( address );
   return true;
}

bool ModuleChip::write( uint8_t byte ) {
   const uint8_t address = pointers_[device_]++;
   if ( choosesPage( address ) ) // nothing else changes
      store( address, byte );
   else
      changing( [&] { store( address, byte ); } );
   return true;
}

uint8_t ModuleChip::read() {
   const uint8_t address = pointers_[device_]++;
   const uint8_t byte = at( address );
   return faults().badChecksum && isChecksum( address ) ? static_cast<uint8_t>( ~byte ) : byte;
}

uint8_t ModuleChip::shownPage( uint8_t chosen ) const {
   return faults().stuckPage.value_or( faults().wrongPage.value_or( chosen ) );
}

const ModuleChip::Sample &ModuleChip::sample() {
   if ( !std::exchange( sampled_, true ) )
      sample_ = freshSample();
   return sample_;
}

void ModuleChip::latchSample() {
   if ( hasPages() && !std::exchange( latched_, true ) )
      latch( sample() );
}

ModuleChip::Sample ModuleChip::freshSample() const {
   const HeldClock::Hold hold( clock_ );
   const HeldClock::Hold farHold( far_ ? far_->clock_ : clock_ );
   const double celsius = model_.celsius();
   Sample fresh{ .celsius = celsiusWord( celsius ), .volts = voltsWord( model_.volts() ) };
   for ( unsigned lane = 0; lane < optics().lanes; ++lane ) {
      const ModuleModel::Laser now = laser( lane, celsius );
      fresh.bias[lane] = biasWord( now.bias / biasScale() );
      fresh.txPower[lane] = powerWord( now.power );
      fresh.rxPower[lane] = powerWord( rxPower( lane ) );
   }
   return fresh;
}

std::vector<Quantity> ModuleChip::quantities() {
   std::vector<Quantity> all{ { "ambient", "C", [this] { return model_.ambient(); },
                                [this]( double celsius ) { model_.ambientIs( celsius ); }, -40,
                                100 },
                              { "supply", "V", [this] { return model_.supply(); },
                                [this]( double volts ) { model_.supplyIs( volts ); }, 0, 6 },
                              { "temperature", "C", [this] { return model_.celsius(); } } };
   for ( unsigned lane = 0; lane < optics().lanes; ++lane )
      addLane( lane, all );
   for ( Quantity &quantity : all )
      if ( quantity.set )
         quantity.set = [this, set = quantity.set]( double value ) {
            changing( [&] { set( value ); } );
         };
   return all;
}

void ModuleChip::addLane( unsigned lane, std::vector<Quantity> &all ) {
   const std::string its = name() + ".lane" + std::to_string( lane + 1 ) + " ";
   all.push_back( { its + "age", "%", [=, this] { return model_.age( lane ) * 100; },
                    [=, this]( double percent ) { model_.ageIs( lane, percent / 100 ); }, 0,
                    100 } );
   all.push_back( { its + "attenuation", "dB", [=, this] { return model_.attenuation( lane ); },
                    [=, this]( double decibels ) { model_.attenuationIs( lane, decibels ); }, 0,
                    100 } );
   all.push_back( { its + "bias", "mA", [=, this] { return bias( lane ); } } );
   all.push_back( { its + "txPower", "mW", [=, this] { return txPower( lane ); } } );
   Quantity received{ its + "rxPower", "mW", [=, this] { return rxPower( lane ); } };
   if ( !far_ )
      received.set = [=, this]( double milliwatts ) { model_.arrivingIs( lane, milliwatts ); };
   received.most = 6.5;
   all.push_back( std::move( received ) );
}

} // namespace Simulator
