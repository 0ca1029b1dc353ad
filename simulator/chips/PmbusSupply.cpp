#include "simulator/chips/PmbusSupply.h"

#include "smbus/Pec.h"

namespace Simulator {

namespace {

// STATUS_CML.
constexpr uint8_t invalidCommand = 0x80;
constexpr uint8_t invalidData = 0x40;
constexpr uint8_t pecFailed = 0x20;
constexpr uint8_t otherCommunication = 0x02;

// STATUS_INPUT: the unit is off for insufficient input voltage.
constexpr uint8_t offForLowInput = 0x08;

// The bits of a warning and of a fault.
struct Bits {
   uint8_t warning, fault;
};

uint8_t above( double value, const SupplyLimits::Pair &limits, Bits bits ) {
   return value > limits.fault ? bits.fault : value > limits.warning ? bits.warning : uint8_t{ 0 };
}
uint8_t below( double value, const SupplyLimits::Pair &limits, Bits bits ) {
   return value < limits.fault ? bits.fault : value < limits.warning ? bits.warning : uint8_t{ 0 };
}

} // namespace

PmbusSupply::PmbusSupply( std::string name, uint8_t address, const Bus::Clock &clock,
                          const SupplyModel::Rating &rating, Identity identity )
   : Chip( std::move( name ) ), address_( address ), identity_( std::move( identity ) ),
     model_( clock, rating ), limits_( rating ) {}

void PmbusSupply::reset() {
   status_ = {};
   fanCommand_ = {};
   operation_ = 0x80;
   model_.enabledIs( true );
   model_.cutOffIs( false );
   model_.dutyIs( 0, 0 );
   model_.dutyIs( 1, 0 );
}

void PmbusSupply::powerLost() { model_.cutOffIs( true ); }

void PmbusSupply::latchStatus() {
   latchOutput();
   latchInput();
   status_[Temperature] |= above( model_.hotSpotCelsius(), limits_.celsius, { 0x40, 0x80 } );
   for ( unsigned fan = 0; fan < 2; ++fan ) {
      if ( model_.fanStalled( fan ) )
         status_[Fans] |= static_cast<uint8_t>( 0x80 >> fan );
   }
}

void PmbusSupply::latchOutput() {
   if ( model_.isOn() ) {
      status_[Vout] |= below( model_.outputVolts(), limits_.lowOutputVolts, { 0x20, 0x10 } );
      status_[Vout] |= above( model_.outputVolts(), limits_.highOutputVolts, { 0x40, 0x80 } );
   }
   status_[Iout] |= above( model_.outputAmperes(), limits_.amperes, { 0x20, 0x80 } );
   if ( model_.outputWatts() > limits_.outputWatts )
      status_[Iout] |= 0x01;
}

void PmbusSupply::latchInput() {
   status_[Input] |= below( model_.line(), limits_.lowLine, { 0x20, 0x10 | offForLowInput } );
   status_[Input] |= above( model_.line(), limits_.highLine, { 0x40, 0x80 } );
   if ( model_.inputWatts() > limits_.inputWatts )
      status_[Input] |= 0x01;
}

// OFF and POWER_GOOD# show the present state. The other bits are latched.
uint16_t PmbusSupply::statusWord() {
   const bool off = !model_.enabled() || !model_.lineGood();
   unsigned word = 0;
   word |= status_[Vout] ? 0x8000u : 0;
   word |= status_[Iout] ? 0x4000u : 0;
   word |= status_[Input] ? 0x2000u : 0;
   word |= model_.delivers() ? 0 : 0x0800u; // POWER_GOOD#
   word |= status_[Fans] ? 0x0400u : 0;
   word |= off ? 0x0040u : 0;
   word |= status_[Vout] & 0x80 ? 0x0020u : 0;  // VOUT_OV_FAULT
   word |= status_[Iout] & 0x80 ? 0x0010u : 0;  // IOUT_OC_FAULT
   word |= status_[Input] & 0x10 ? 0x0008u : 0; // VIN_UV_FAULT
   word |= status_[Temperature] ? 0x0004u : 0;
   word |= status_[Cml] ? 0x0002u : 0;
   const bool other = ( status_[Vout] & ~0x80 ) || ( status_[Iout] & ~0x80 ) || status_[Fans] ||
                      ( status_[Input] & ~( 0x10 | offForLowInput ) );
   word |= other ? 0x0001u : 0; // none of the above
   return static_cast<uint16_t>( word );
}

std::vector<Quantity> PmbusSupply::quantities() {
   std::vector<Quantity> all{
      { "line", "V", [this] { return model_.line(); },
        [this]( double volts ) { model_.lineIs( volts ); }, 0, 300 },
      { "load", "A", [this] { return model_.load(); },
        [this]( double amperes ) { model_.loadIs( amperes ); }, 0, 100 },
      { "ambient", "C", [this] { return model_.ambient(); },
        [this]( double celsius ) { model_.ambientIs( celsius ); }, -40, 100 },
      { "failed", "", [this] { return model_.failed(); },
        [this]( double on ) { model_.failedIs( on != 0 ); } },
      { "inputCurrent", "A", [this] { return model_.inputAmperes(); } },
      { "inputPower", "W", [this] { return model_.inputWatts(); } },
      { "outputVoltage", "V", [this] { return model_.outputVolts(); } },
      { "outputCurrent", "A", [this] { return model_.outputAmperes(); } },
      { "outputPower", "W", [this] { return model_.outputWatts(); } },
      { "inlet", "C", [this] { return model_.inletCelsius(); } },
      { "hotSpot", "C", [this] { return model_.hotSpotCelsius(); } },
   };
   for ( unsigned fan = 0; fan < 2; ++fan ) {
      if ( model_.rating().maxRpm[fan] == 0 )
         continue;
      const std::string fanName = name() + ".fan" + std::to_string( fan + 1 );
      all.push_back( { fanName + " rpm", "rpm", [=, this] { return model_.rpm( fan ); } } );
      all.push_back( { fanName + " drive", "%", [=, this] { return model_.duty( fan ); } } );
      all.push_back( { fanName + " stalled", "", [=, this] { return model_.fanStalled( fan ); },
                       [=, this]( double on ) { model_.fanStalledIs( fan, on != 0 ); } } );
   }
   // Between two changes everything moves one way only, so that nothing is missed in between.
   for ( Quantity &quantity : all )
      if ( quantity.set )
         quantity.set = [this, set = quantity.set]( double value ) {
            latchStatus();
            set( value );
            latchStatus();
         };
   return all;
}

bool PmbusSupply::addressed( Direction direction ) {
   const auto addressByte =
      static_cast<uint8_t>( address_ << 1 | static_cast<uint8_t>( direction ) );
   reading_ = direction == Direction::Read;
   if ( !reading_ || !command_ )
      pec_ = 0;
   pec_ = Bus::pecStep( pec_, addressByte );
   data_.clear();
   position_ = 0;
   pecReceived_ = false;
   refused_ = false;
   if ( !reading_ ) {
      command_ = nullptr;
   } else if ( command_ && command_->read ) {
      latchStatus();
      data_ = command_->read( *this );
   } else {
      status_[Cml] |= command_ ? invalidCommand : otherCommunication;
   }
   return true;
}

bool PmbusSupply::command( uint32_t code ) {
   const auto found = commands().find( static_cast<uint8_t>( code ) );
   if ( found == commands().end() ) {
      status_[Cml] |= invalidCommand;
      return false;
   }
   command_ = &found->second;
   pec_ = Bus::pecStep( pec_, static_cast<uint8_t>( code ) );
   return true;
}

bool PmbusSupply::write( uint8_t byte ) {
   if ( !command_ )
      return false;
   const auto refuse = [this]( uint8_t reason ) {
      status_[Cml] |= reason;
      refused_ = true;
      return false;
   };
   if ( !command_->write )
      return refuse( invalidCommand );
   if ( pecReceived_ )
      return refuse( otherCommunication ); // too many bytes
   if ( data_.size() == command_->size ) {
      pecReceived_ = byte == pec_;
      return pecReceived_ || refuse( pecFailed );
   }
   data_ += static_cast<char>( byte );
   pec_ = Bus::pecStep( pec_, byte );
   return true;
}

uint8_t PmbusSupply::read() {
   if ( position_ == data_.size() && !data_.empty() ) {
      ++position_;
      return pec_;
   }
   if ( position_ >= data_.size() )
      return 0xFF;
   const auto byte = static_cast<uint8_t>( data_[position_++] );
   pec_ = Bus::pecStep( pec_, byte );
   return byte;
}

void PmbusSupply::stopped() {
   const Command *command = std::exchange( command_, nullptr );
   if ( !command || reading_ || refused_ || !command->write )
      return;
   if ( data_.size() != command->size )
      status_[Cml] |=
         data_.empty() ? 0 : otherCommunication; // a command without data only sets the command
   else if ( !command->write( *this, data_ ) )
      status_[Cml] |= invalidData;
}

namespace {

std::unique_ptr<Chip> makeSupply( const ChipEntry &entry ) {
   SupplyModel::Rating rating;
   rating.nominalVolts = entry.number( "volts", rating.nominalVolts );
   rating.maxAmperes = entry.number( "maxAmperes", rating.maxAmperes );
   rating.efficiency = entry.number( "efficiency", rating.efficiency );
   const auto maxRpm = entry.find( "maxRpm" )->elements();
   for ( size_t fan = 0; fan < maxRpm.size(); ++fan )
      rating.maxRpm[fan] = *maxRpm[fan].toNumber();
   auto chip = std::make_unique<PmbusSupply>(
      entry.name(), entry.around.address, entry.around.clock, rating,
      PmbusSupply::Identity{ entry.text( "manufacturer" ), entry.text( "model" ),
                             entry.text( "revision" ), entry.text( "serial" ) } );
   chip->model().lineIs( entry.number( "line" ) );
   chip->model().loadIs( entry.number( "load" ) );
   chip->model().ambientIs( entry.number( "ambient" ) );
   chip->model().settle();
   return chip;
}

} // namespace

ChipKind pmbusSupplyKind() {
   return {
      .name = "PmbusSupply",
      .description = "A power supply with PMBus.",
      .settings = { text( "manufacturer", "MFR_ID.", 32 ), text( "model", "MFR_MODEL.", 32 ),
                    text( "revision", "MFR_REVISION.", 32 ), text( "serial", "MFR_SERIAL.", 32 ),
                    number( "line", "Volts of the mains.", 0, 300 ),
                    number( "load", "Amperes at the output.", 0, 100 ),
                    number( "ambient", "Degrees Celsius of the air that it takes in.", -40, 100 ),
                    number( "volts", "Nominal output; 12 without it.", 1, 60 ).optional(),
                    number( "maxAmperes", "What it can give; 70 without it.", 1, 100 ).optional(),
                    number( "efficiency", "Output by input power; 0.92 without it.", 0.1, 1 )
                       .optional(),
                    list( "maxRpm", "Of its one or two fans, at full drive.",
                          number( "", "Revolutions a minute.", 1, 100000 ), 1, 2 ) },
      .settable = { "line", "load", "ambient", "failed", ".+ stalled" },
      .make = makeSupply
   };
}

} // namespace Simulator
