#include "host/plugin/SupplyReader.h"

#include "health/pmbus/Limits.h"
#include "host/plugin/Operation.h"

namespace Host {
namespace {

namespace Pmbus = Health::Pmbus;

// A supply does not acknowledge a command that it doesn't have, and a bus loses an acknowledge now
// and then. Where one in 50 is lost, a register is missed once in 125,000 reads.
constexpr unsigned triesOfARegister = 3;

bool isByte( uint8_t command ) {
   return command == Pmbus::VoutMode ||
          ( command > Pmbus::StatusWord && command <= Pmbus::StatusFans12 );
}

} // namespace

std::optional<SupplyLimits> SupplyReader::read( const ReadingSink &sink ) {
   runOperation( sink, statusRegistersName, "",
                 [this]( Reading &reading ) { readStatus( reading ); } );
   if ( !wantsLimits_ || !isGood_ )
      return {};
   sink.begun( "limits" );
   auto limits = readLimits();
   wantsLimits_ = !limits;
   return limits;
}

void SupplyReader::readStatus( Reading &reading ) {
   isGood_ = false;
   if ( !provides( *proxy_->ops, &pl_smbus_ops::read_word ) ||
        !provides( *proxy_->ops, &pl_smbus_ops::read_byte ) ) {
      reading.state = State::Unsupported;
      return;
   }
   uint16_t word = 0;
   if ( const int status = proxy_->ops->read_word( proxy_, Pmbus::StatusWord, &word ) ) {
      applyStatus( reading, status );
      wantsLimits_ = true;
      return;
   }
   isGood_ = true;
   Pmbus::Registers registers{ { Pmbus::StatusWord, word } };
   for ( const uint8_t command : Pmbus::registersBehind( word ) )
      if ( const auto value = readRegister( command ) )
         registers[command] = *value;
   reading.value = Pmbus::toText( registers );
}

// Nothing when the supply does not even give its status any more: then the limits that are missing
// may be those that it has.
std::optional<SupplyLimits> SupplyReader::readLimits() const {
   SupplyLimits limits;
   std::vector<uint8_t> commands = Pmbus::limitCommands();
   commands.insert( commands.begin(), Pmbus::VoutMode );
   for ( const uint8_t command : commands ) {
      if ( const auto value = readRegister( command ) )
         limits.registers[command] = *value;
      else if ( !readRegister( Pmbus::StatusWord ) )
         return {};
   }
   return limits;
}

std::optional<uint16_t> SupplyReader::readRegister( uint8_t command ) const {
   for ( unsigned tries = 0; tries < triesOfARegister; ++tries ) {
      uint8_t byte = 0;
      uint16_t word = 0;
      if ( !isByte( command ) ) {
         if ( proxy_->ops->read_word( proxy_, command, &word ) == PL_STATUS_OK )
            return word;
      } else if ( proxy_->ops->read_byte( proxy_, command, &byte ) == PL_STATUS_OK ) {
         return byte;
      }
   }
   return {};
}

} // namespace Host
