#include "host/plugin/ObjectCalls.h"

#include "host/plugin/Operation.h"

#include <memory>

namespace Host {
namespace {

class ReadingVisitor {
 public:
   explicit ReadingVisitor( const ReadingSink &sink ) : sink_( sink ) {}

   template <class Operation>
   void readOne( const char *name, const char *unit, const Operation &operation ) const {
      runOperation( sink_, name, unit, operation );
   }

   // The usual kind of operation: it returns a status, and writes its output on success.
   template <class Object, class Ops, class Output>
   void readOne( const char *name, const char *unit, Object *object, const Ops &ops,
                 pl_status ( *Ops::*operation )( Object *, Output * ) ) const {
      readOne( name, unit, [&]( Reading &reading ) {
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
         applyStatus( reading, status );
      } );
   }

   void operator()( pl_temp_sensor *sensor ) const {
      readOne( "temperature", "°C", sensor, *sensor->ops, &pl_temp_sensor_ops::get_temperature );
   }
   void operator()( pl_fan *fan ) const {
      readOne( "speed", "rpm", fan, *fan->ops, &pl_fan_ops::get_rpm );
   }
   void operator()( pl_gpio *gpio ) const {
      readOne( "bit", "", gpio, *gpio->ops, &pl_gpio_ops::bit_read );
   }
   void operator()( pl_psu *psu ) const {
      readOne( "power_ok", "", psu, *psu->ops, &pl_psu_ops::get_power_ok );
      readOne( "input_current", "A", psu, *psu->ops, &pl_psu_ops::get_input_current );
      readOne( "output_current", "A", psu, *psu->ops, &pl_psu_ops::get_output_current );
      readOne( "input_voltage", "V", psu, *psu->ops, &pl_psu_ops::get_input_voltage );
      readOne( "output_voltage", "V", psu, *psu->ops, &pl_psu_ops::get_output_voltage );
      readOne( "input_power", "W", psu, *psu->ops, &pl_psu_ops::get_input_power );
      readOne( "output_power", "W", psu, *psu->ops, &pl_psu_ops::get_output_power );
   }
   void operator()( pl_slot *slot ) const {
      readOne( presenceName, "", [&]( Reading &reading ) {
         char *description = nullptr;
         const int status = slot->ops->get_presence( slot, &description );
         const std::unique_ptr<char, decltype( &std::free )> owner( description, &std::free );
         reading.value = std::string( description ? description : "" );
         applyStatus( reading, status );
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
      readOne( "reload_cause", "",
               [&]( Reading &reading ) { readReloadCause( system, reading ); } );
   }
   void operator()( pl_led * ) const {}
   void operator()( pl_smbus * ) const {}

 private:
   void presence( pl_xcvr *cage, int ( *isThere )( pl_xcvr * ) ) const {
      readOne( presenceName, "", [&]( Reading &reading ) {
         const bool present = isThere( cage );
         reading.state = present ? State::Ok : State::Absent;
         if ( present )
            reading.value = true;
      } );
   }
   void sfp( pl_xcvr *cage, const pl_sfp_ops &ops ) const {
      presence( cage, ops.get_presence );
      readOne( "tx_fault", "", cage, ops, &pl_sfp_ops::get_tx_fault );
      readOne( "rx_los", "", cage, ops, &pl_sfp_ops::get_rx_los );
      readOne( "tx_disable", "", cage, ops, &pl_sfp_ops::get_tx_disable );
   }
   void qsfp( pl_xcvr *cage, const pl_qsfp_ops &ops ) const {
      presence( cage, ops.get_presence );
      readOne( "mod_sel", "", cage, ops, &pl_qsfp_ops::get_mod_sel );
      readOne( "lp_mode", "", cage, ops, &pl_qsfp_ops::get_lp_mode );
      readOne( "reset", "", cage, ops, &pl_qsfp_ops::get_reset );
      readOne( "interrupt", "", cage, ops, &pl_qsfp_ops::get_interrupt );
   }

   const ReadingSink &sink_;
};

} // namespace

void read( const Record &record, const ReadingSink &sink ) {
   std::visit( ReadingVisitor( sink ), record );
}

} // namespace Host
