#include "host/plugin/ObjectCalls.h"

#include "health/pmbus/Registers.h"
#include "host/plugin/Operation.h"

#include <algorithm>
#include <array>
#include <fmt/ranges.h>
#include <span>

namespace Host {
namespace {

std::string hex( uint8_t byte ) { return fmt::format( "{:#04x}", byte ); }
std::string hex( uint16_t word ) { return fmt::format( "{:#06x}", word ); }
std::string hex( std::span<const uint8_t> bytes ) {
   return fmt::format( "{:02x}", fmt::join( bytes, " " ) );
}

class ActionVisitor {
 public:
   ActionVisitor( const Action &action, Reading &result ) : action_( action ), result_( result ) {}

   void operator()( pl_fan *fan ) {
      call( *fan->ops, fan, "set_rpm", &pl_fan_ops::set_rpm, number<int>( 0 ) );
   }
   void operator()( pl_led *led ) {
      call( *led->ops, led, "set_light_setting", &pl_led_ops::set_light_setting,
            number<pl_led_status>( 0 ) );
   }
   void operator()( pl_gpio *gpio ) {
      unsigned value = 0;
      call( *gpio->ops, gpio, "bit_set", &pl_gpio_ops::bit_set );
      call( *gpio->ops, gpio, "bit_clear", &pl_gpio_ops::bit_clear );
      if ( call( *gpio->ops, gpio, "bit_read", &pl_gpio_ops::bit_read, &value ) )
         result_.value = scalar( value );
   }
   void operator()( pl_xcvr *cage ) {
      if ( cage->ops->kind == PL_XCVR_SFP ) {
         call( cage->ops->sfp, cage, "set_tx_disable", &pl_sfp_ops::set_tx_disable,
               number<int>( 0 ) );
      } else {
         call( cage->ops->qsfp, cage, "set_reset", &pl_qsfp_ops::set_reset, number<int>( 0 ) );
         call( cage->ops->qsfp, cage, "set_lp_mode", &pl_qsfp_ops::set_lp_mode, number<int>( 0 ) );
      }
   }
   void operator()( pl_system *system ) {
      call( *system->ops, system, "powercycle", &pl_system_ops::powercycle );
      call( *system->ops, system, "poweroff", &pl_system_ops::poweroff );
      if ( action_.operation == "get_reload_cause" &&
           provides( *system->ops, &pl_system_ops::get_reload_cause ) ) {
         called_ = true;
         readReloadCause( system, result_ );
      }
   }
   void operator()( pl_smbus *proxy ) {
      writes( proxy );
      reads( proxy );
      blocks( proxy );
   }
   void operator()( pl_slot * ) {}
   void operator()( pl_temp_sensor * ) {}
   void operator()( pl_psu * ) {}

   bool wasCalled() const { return called_; }

 private:
   void writes( pl_smbus *proxy ) {
      call( *proxy->ops, proxy, clearFaults, &pl_smbus_ops::send_byte,
            uint8_t{ Health::Pmbus::ClearFaults } );
      call( *proxy->ops, proxy, "quick_command", &pl_smbus_ops::quick_command, number<int>( 0 ) );
      call( *proxy->ops, proxy, "send_byte", &pl_smbus_ops::send_byte, byte( 0 ) );
      call( *proxy->ops, proxy, "write_byte", &pl_smbus_ops::write_byte, byte( 0 ), byte( 1 ) );
      call( *proxy->ops, proxy, "write_word", &pl_smbus_ops::write_word, byte( 0 ), word( 1 ) );
   }
   void reads( pl_smbus *proxy ) {
      uint8_t aByte = 0;
      uint16_t aWord = 0;
      if ( call( *proxy->ops, proxy, "receive_byte", &pl_smbus_ops::receive_byte, &aByte ) ||
           call( *proxy->ops, proxy, "read_byte", &pl_smbus_ops::read_byte, byte( 0 ), &aByte ) )
         result_.value = hex( aByte );
      if ( call( *proxy->ops, proxy, "read_word", &pl_smbus_ops::read_word, byte( 0 ), &aWord ) ||
           call( *proxy->ops, proxy, "process_call", &pl_smbus_ops::process_call, byte( 0 ),
                 word( 1 ), &aWord ) )
         result_.value = hex( aWord );
   }
   void blocks( pl_smbus *proxy ) {
      std::vector<uint8_t> block;
      for ( size_t i = 1; i < action_.arguments.size(); ++i )
         block.push_back( byte( i ) );
      const auto size = static_cast<unsigned>( block.size() );
      call( *proxy->ops, proxy, "block_write", &pl_smbus_ops::block_write, byte( 0 ), block.data(),
            size );
      call( *proxy->ops, proxy, "i2c_block_write", &pl_smbus_ops::i2c_block_write, byte( 0 ),
            block.data(), size );
      std::array<uint8_t, 256> answer{};
      unsigned length = 0;
      uint8_t shortLength = 0;
      if ( call( *proxy->ops, proxy, "block_read", &pl_smbus_ops::block_read, byte( 0 ),
                 answer.data(), &length ) )
         result_.value =
            hex( std::span( answer ).first( std::min<size_t>( length, answer.size() ) ) );
      if ( call( *proxy->ops, proxy, "i2c_block_read", &pl_smbus_ops::i2c_block_read, byte( 0 ),
                 answer.data(), number<unsigned>( 1 ) ) )
         result_.value = hex( std::span( answer ).first( number<unsigned>( 1 ) ) );
      if ( call( *proxy->ops, proxy, "block_process_call", &pl_smbus_ops::block_process_call,
                 byte( 0 ), block.data(), static_cast<uint8_t>( size ), answer.data(),
                 &shortLength ) )
         result_.value = hex( std::span( answer ).first( shortLength ) );
   }

   template <class Number>
   Number number( size_t index ) const {
      return index < action_.arguments.size() ? static_cast<Number>( action_.arguments[index] )
                                              : Number{};
   }
   uint8_t byte( size_t index ) const { return number<uint8_t>( index ); }
   uint16_t word( size_t index ) const { return number<uint16_t>( index ); }

   // Calls `operation` if it is the action's. Returns whether it was called and succeeded.
   template <class Object, class Ops, class... Parameters, class... Arguments>
   bool call( const Ops &ops, Object *object, std::string_view name,
              pl_status ( *Ops::*operation )( Object *, Parameters... ), Arguments... arguments ) {
      if ( name != action_.operation || !provides( ops, operation ) )
         return false;
      called_ = true;
      const int status = ( ops.*operation )( object, arguments... );
      applyStatus( result_, status );
      if ( status == PL_STATUS_UNSUPPORTED )
         result_.state = State::Unsupported;
      return status == PL_STATUS_OK;
   }

   const Action &action_;
   Reading &result_;
   bool called_ = false;
};

} // namespace

void act( const Record &record, const Action &action, const ReadingSink &sink ) {
   runOperation( sink, action.operation.c_str(), "", [&]( Reading &reading ) {
      ActionVisitor actor( action, reading );
      std::visit( actor, record );
      if ( !actor.wasCalled() )
         reading.state = State::Unsupported;
   } );
}

} // namespace Host
