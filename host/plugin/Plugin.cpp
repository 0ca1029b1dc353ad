#include "host/plugin/Plugin.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <stdexcept>

namespace Host {

bool isNull( const Record &record ) {
   return std::visit( []( const auto *pointer ) { return pointer == nullptr; }, record );
}

Plugin::Plugin( const std::string &path )
   : library_( ::dlopen( path.c_str(), RTLD_NOW | RTLD_LOCAL ) ) {
   if ( !library_ )
      throw std::runtime_error( ::dlerror() );
}

template <class Function>
Function *Plugin::symbol( const std::string &name ) const {
   if ( void *address = ::dlsym( library_, name.c_str() ) )
      return reinterpret_cast<Function *>( address );
   throw std::runtime_error( fmt::format( "the plug-in has no {}", name ) );
}

pl_status Plugin::init( BoardFiles::Kind kind, const char *topology ) const {
   return symbol<pl_status( const char * )>( fmt::format( "pl_{}_init", plugInTypeOf( kind ) ) )(
      topology );
}

Record Plugin::add( const BoardFiles::ObjectDescription &description ) const {
   const char *text = description.text.c_str();
   switch ( description.kind ) {
   case BoardFiles::Kind::Slot:
      return symbol<decltype( pl_slot_add )>( "pl_slot_add" )( text );
   case BoardFiles::Kind::Led:
      return symbol<decltype( pl_led_add )>( "pl_led_add" )( text );
   case BoardFiles::Kind::TempSensor:
      return symbol<decltype( pl_temp_sensor_add )>( "pl_temp_sensor_add" )(
         text, description.alert, description.critical );
   case BoardFiles::Kind::Fan:
      return symbol<decltype( pl_fan_add )>( "pl_fan_add" )( text );
   case BoardFiles::Kind::Xcvr:
      return symbol<decltype( pl_xcvr_add )>( "pl_xcvr_add" )( text );
   case BoardFiles::Kind::Psu:
      return symbol<decltype( pl_psu_add )>( "pl_psu_add" )( text );
   case BoardFiles::Kind::Gpio:
      return symbol<decltype( pl_gpio_add )>( "pl_gpio_add" )( text );
   case BoardFiles::Kind::Smbus:
   case BoardFiles::Kind::Module: // its first address
      return symbol<decltype( pl_smbus_add )>( "pl_smbus_add" )( text, description.value );
   case BoardFiles::Kind::System:
      return symbol<decltype( pl_system_add )>( "pl_system_add" )( text );
   }
   throw std::logic_error( "a kind without an add function" );
}

} // namespace Host
