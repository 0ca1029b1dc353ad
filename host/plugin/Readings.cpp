#include "host/plugin/Readings.h"

#include "host/plugin/Operation.h"

#include <memory>

namespace Host {
namespace {

class Reader {
 public:
   explicit Reader( const ReadingSink &sink ) : sink_( sink ) {}

   template <class Operation>
   void one( const char *name, const char *unit, const Operation &operation ) const {
      carryOut( sink_, name, unit, operation );
   }

   // An operation of the usual shape: a status, and an output that is written on success.
   template <class Object, class Ops, class Output>
   void one( const char *name, const char *unit, Object *object, const Ops &ops,
             pl_status ( *Ops::*operation )( Object *, Output * ) ) const {
      one( name, unit, [&]( Reading &reading ) {
         Output output{};
         if ( !provides( ops, operation ) ) {
            reading.state = State::Unsupported;
            return;
         }
         const int status = ( ops.*operation )( object, &output );
         if ( status == PL_STATUS_OK && !std::isfinite( static_cast<double>( output ) ) ) {
            reading.state = State::Unreadable;
            reading.fault.words = "the value is not a number";
            return;
         }
         reading.value = scalar( output );
         judge( reading, status );
      } );
   }

   void operator()( pl_temp_sensor *sensor ) const {
      one( "temperature", "°C", sensor, *sensor->ops, &pl_temp_sensor_ops::get_temperature );
   }
   void operator()( pl_fan *fan ) const {
      one( "speed", "rpm", fan, *fan->ops, &pl_fan_ops::get_rpm );
   }
   void operator()( pl_gpio *gpio ) const {
      one( "bit", "", gpio, *gpio->ops, &pl_gpio_ops::bit_read );
   }
   void operator()( pl_psu *psu ) const {
      one( "power_ok", "", psu, *psu->ops, &pl_psu_ops::get_power_ok );
      one( "input_current", "A", psu, *psu->ops, &pl_psu_ops::get_input_current );
      one( "output_current", "A", psu, *psu->ops, &pl_psu_ops::get_output_current );
      one( "input_voltage", "V", psu, *psu->ops, &pl_psu_ops::get_input_voltage );
      one( "output_voltage", "V", psu, *psu->ops, &pl_psu_ops::get_output_voltage );
      one( "input_power", "W", psu, *psu->ops, &pl_psu_ops::get_input_power );
      one( "output_power", "W", psu, *psu->ops, &pl_psu_ops::get_output_power );
   }
   void operator()( pl_slot *slot ) const {
      one( "presence", "", [&]( Reading &reading ) {
         char *description = nullptr;
         const int status = slot->ops->get_presence( slot, &description );
         const std::unique_ptr<char, decltype( &std::free )> owner( description, &std::free );
         reading.value = std::string( description ? description : "" );
         judge( reading, status );
         if ( status == PL_STATUS_NOT_MANAGED )
            reading.state = State::Absent;
      } );
   }
   void operator()( pl_xcvr *cage ) const {
      if ( cage->ops->kind == PL_XCVR_SFP )
         sfp( cage, cage->ops->sfp );
      else
         qsfp( cage, cage->ops->qsfp );
   }
   void operator()( pl_system *system ) const {
      one( "reload_cause", "", [&]( Reading &reading ) { readReloadCause( system, reading ); } );
   }
   void operator()( pl_led * ) const {}
   void operator()( pl_smbus * ) const {}

 private:
   void presence( pl_xcvr *cage, int ( *isThere )( pl_xcvr * ) ) const {
      one( "presence", "", [&]( Reading &reading ) {
         const bool present = isThere( cage );
         reading.state = present ? State::Ok : State::Absent;
         if ( present )
            reading.value = true;
      } );
   }
   void sfp( pl_xcvr *cage, const pl_sfp_ops &ops ) const {
      presence( cage, ops.get_presence );
      one( "tx_fault", "", cage, ops, &pl_sfp_ops::get_tx_fault );
      one( "rx_los", "", cage, ops, &pl_sfp_ops::get_rx_los );
      one( "tx_disable", "", cage, ops, &pl_sfp_ops::get_tx_disable );
   }
   void qsfp( pl_xcvr *cage, const pl_qsfp_ops &ops ) const {
      presence( cage, ops.get_presence );
      one( "mod_sel", "", cage, ops, &pl_qsfp_ops::get_mod_sel );
      one( "lp_mode", "", cage, ops, &pl_qsfp_ops::get_lp_mode );
      one( "reset", "", cage, ops, &pl_qsfp_ops::get_reset );
      one( "interrupt", "", cage, ops, &pl_qsfp_ops::get_interrupt );
   }

   const ReadingSink &sink_;
};

} // namespace

void read( const Record &record, const ReadingSink &sink ) { std::visit( Reader( sink ), record ); }

} // namespace Host
