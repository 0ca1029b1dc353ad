// A plug-in that follows the scripts of a test. The environment variable SCRIPT is a folder. Its
// file NAME.CALL is the script for one call of one object: NAME is the object's driver argument
// "script", CALL is "add" or an operation. The file "init" is for the init functions. A script is
// one line:
//    24.5              success, with this value
//    status 6 TEXT     trace TEXT at level 3, and return the status
//    null | hang | assert | throw TEXT | exit
//    until FILE        wait for this file in the folder, and succeed with the value 1
//    send HEX...       send these bytes to the parent in place of a message, and exit
// Without a script the call succeeds with the value 1. The file SCRIPT/calls lists all calls with
// their arguments: "fan.set_rpm 4200".
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pl.h>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

struct Outcome {
   int status = PL_STATUS_OK;
   double value = 1;
   bool null = false;
};

std::string folder() { return std::getenv( "SCRIPT" ); }

Outcome act( const std::string &what, const std::string &given = "" ) {
   std::ofstream( folder() + "/calls", std::ios::app ) << what << given << '\n';
   std::ifstream file( folder() + "/" + what );
   std::string verb, text;
   if ( !( file >> verb ) )
      return {};
   const bool chipAnswers = verb != "assert";
   assert( chipAnswers );
   if ( verb == "hang" )
      while ( true )
         ::pause();
   if ( verb == "until" ) {
      file >> text;
      while ( ::access( ( folder() + "/" + text ).c_str(), F_OK ) != 0 )
         ::usleep( 1000 );
      return {};
   }
   if ( verb == "exit" )
      std::_Exit( 3 );
   if ( verb == "send" ) {
      std::string bytes;
      for ( unsigned byte = 0; file >> std::hex >> byte; )
         bytes += static_cast<char>( byte );
      const int parent = 3;
      std::_Exit( ::write( parent, bytes.data(), bytes.size() ) == std::ssize( bytes ) ? 3 : 4 );
   }
   if ( verb == "null" )
      return { .null = true };
   int status = 0;
   if ( verb == "status" )
      file >> status;
   std::getline( file >> std::ws, text );
   if ( verb == "throw" )
      throw std::runtime_error( text );
   if ( verb != "status" )
      return { .value = std::stod( verb ) };
   pl_trace( 3, "%s", text.c_str() );
   return { .status = status };
}

struct Object {
   std::string name;
};

template <class Record>
const std::string &nameOf( Record *record ) {
   return static_cast<Object *>( record->priv )->name;
}

template <class Record, class Output>
pl_status get( Record *record, const char *what, Output *output ) {
   const Outcome outcome = act( nameOf( record ) + "." + what );
   if ( outcome.status == PL_STATUS_OK )
      *output = static_cast<Output>( outcome.value );
   return static_cast<pl_status>( outcome.status );
}

template <auto Name, class Record, class... Values>
pl_status setter( Record *record, Values... values ) {
   const std::string given = ( std::string() + ... + ( " " + std::to_string( values ) ) );
   return static_cast<pl_status>( act( nameOf( record ) + "." + Name, given ).status );
}

pl_status slotPresence( pl_slot *slot, char **description ) {
   int present = 0;
   const pl_status status = get( slot, "presence", &present );
   if ( status == PL_STATUS_OK )
      *description = ::strdup( "module 7" );
   return status;
}

int cagePresence( pl_xcvr *cage ) {
   int present = 0;
   get( cage, "presence", &present );
   return present;
}

template <auto Name, class Record, class Output>
pl_status getter( Record *record, Output *output ) {
   return get( record, Name, output );
}

constexpr char temperature[] = "temperature", speed[] = "speed", bit[] = "bit",
               txFault[] = "tx_fault", reset[] = "reset", powerOk[] = "power_ok",
               current[] = "input_current", voltage[] = "output_voltage", setRpm[] = "set_rpm",
               setLight[] = "set_light_setting", setReset[] = "set_reset", bitSet[] = "bit_set",
               bitClear[] = "bit_clear";

pl_status readByte( pl_smbus *proxy, uint8_t command, uint8_t *value ) {
   const Outcome outcome =
      act( nameOf( proxy ) + ".read_byte", " " + std::to_string( unsigned{ command } ) );
   *value = static_cast<uint8_t>( outcome.value );
   return static_cast<pl_status>( outcome.status );
}

const pl_slot_ops slotOps{ sizeof slotOps, slotPresence };
const pl_led_ops ledOps{ sizeof ledOps, setter<setLight> };
const pl_temp_sensor_ops sensorOps{ sizeof sensorOps, nullptr, getter<temperature> };
const pl_fan_ops fanOps{ sizeof fanOps, nullptr, getter<speed>, setter<setRpm> };
const pl_gpio_ops gpioOps{ sizeof gpioOps, setter<bitSet>, setter<bitClear>, getter<bit> };
const pl_psu_ops psuOps{ .size = sizeof psuOps,
                         .unused = nullptr,
                         .get_power_ok = getter<powerOk>,
                         .get_input_current = getter<current>,
                         .get_output_current = nullptr,
                         .get_input_voltage = nullptr,
                         .get_output_voltage = getter<voltage>,
                         .get_input_power = nullptr,
                         .get_output_power = nullptr };
const pl_smbus_ops smbusOps = [] {
   pl_smbus_ops ops{};
   ops.size = sizeof ops;
   ops.read_byte = readByte;
   return ops;
}();

pl_xcvr_ops cageOps( bool qsfp ) {
   pl_xcvr_ops ops{};
   ops.size = sizeof ops;
   ops.kind = qsfp ? PL_XCVR_QSFP : PL_XCVR_SFP;
   if ( qsfp ) {
      ops.qsfp.size = sizeof ops.qsfp;
      ops.qsfp.get_presence = cagePresence;
      ops.qsfp.get_reset = getter<reset>;
      ops.qsfp.set_reset = setter<setReset>;
   } else {
      ops.sfp.size = sizeof ops.sfp;
      ops.sfp.get_presence = cagePresence;
      ops.sfp.get_tx_fault = getter<txFault>;
   }
   return ops;
}

std::string argument( const rapidjson::Document &json, const char *name ) {
   const rapidjson::Value *value =
      rapidjson::Pointer( ( std::string( "/driverArgs/" ) + name ).c_str() ).Get( json );
   return value ? value->GetString() : "";
}

// Never deleted, like the records of a real plug-in.
template <class Record, class Ops>
Record *add( const char *text, const Ops *ops ) {
   rapidjson::Document json;
   json.Parse( text );
   pl_trace( 0, "adding %s", argument( json, "script" ).c_str() );
   if ( act( argument( json, "script" ) + ".add" ).null )
      return nullptr;
   auto *object = new Object{ argument( json, "script" ) };
   return new Record{ nullptr, ops, object };
}

pl_status init() { return static_cast<pl_status>( act( "init" ).status ); }

pl_status cutPower( pl_system * ) { return static_cast<pl_status>( act( "poweroff" ).status ); }

pl_status reloadCause( pl_system *, char ( * )[100], long *, char ( * )[500] ) {
   return PL_STATUS_NOT_PROVIDED;
}

void tick( void *timer ) {
   act( "tick" );
   pl_timer_set( *static_cast<pl_timer_handle *>( timer ), 20 );
}

} // namespace

extern "C" {

pl_status pl_slot_init( const char * ) { return init(); }
// Also starts a timer that ticks from now on.
pl_status pl_led_init( const char * ) {
   static pl_timer_handle timer = pl_timer_add( tick, &timer );
   pl_timer_set( timer, 20 );
   return init();
}
pl_status pl_temp_sensor_init( const char * ) { return init(); }
pl_status pl_fan_init( const char * ) { return init(); }
pl_status pl_xcvr_init( const char * ) { return init(); }
pl_status pl_psu_init( const char * ) { return init(); }
pl_status pl_gpio_init( const char * ) { return init(); }
pl_status pl_smbus_init( const char * ) { return init(); }
pl_status pl_system_init( const char * ) { return init(); }

pl_slot *pl_slot_add( const char *json ) { return add<pl_slot>( json, &slotOps ); }
pl_led *pl_led_add( const char *json ) { return add<pl_led>( json, &ledOps ); }
pl_temp_sensor *pl_temp_sensor_add( const char *json, float, float ) {
   return add<pl_temp_sensor>( json, &sensorOps );
}
pl_fan *pl_fan_add( const char *json ) { return add<pl_fan>( json, &fanOps ); }
pl_psu *pl_psu_add( const char *json ) { return add<pl_psu>( json, &psuOps ); }
pl_gpio *pl_gpio_add( const char *json ) { return add<pl_gpio>( json, &gpioOps ); }
pl_xcvr *pl_xcvr_add( const char *json ) {
   static const pl_xcvr_ops sfp = cageOps( false ), qsfp = cageOps( true );
   return add<pl_xcvr>( json, std::strstr( json, "qsfp" ) ? &qsfp : &sfp );
}
pl_smbus *pl_smbus_add( const char *, uint8_t ) {
   static Object object{ "smbus" };
   return new pl_smbus{ nullptr, &smbusOps, &object };
}
pl_system *pl_system_add( const char * ) {
   static const pl_system_ops ops{ sizeof ops, cutPower, nullptr, reloadCause };
   return new pl_system{ nullptr, &ops };
}
}
