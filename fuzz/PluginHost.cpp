#include "fuzz/PluginHost.h"

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/LibraryInit.h"
#include "OrbisGeneric/Topology.h"
#include "PlatformLibrary/PLSocket.h"
#include "boardfiles/DeviceCheck.h"
#include "fuzz/Findings.h"

#include <exception>

// What the plug-in makes is never deleted by design, and each input makes all anew.
extern "C" int __lsan_is_turned_off() { return 1; }

// Timers never expire here, and traces are not kept.
struct pl_timer {};
static pl_timer timer;

void pl_trace( int, const char *, ... ) {}
pl_timer_handle pl_timer_add( void ( * )( void * ), void * ) { return &timer; }
int pl_timer_set( pl_timer_handle, unsigned int ) { return 0; }
int pl_timer_cancel( pl_timer_handle ) { return 0; }
void pl_timer_delete( pl_timer_handle ) {}
void pl_fd_watcher_delete( pl_fd_watcher_handle ) {}

namespace PlatformLibrary {

PLSocket::PLSocket() = default;
PLSocket::~PLSocket() = default;
int PLSocket::setup() { return 0; }

// Each byte of each chip is the same.
int PLSocket::sendRequestWait( Smbus::TransactionRequest *request,
                               Smbus::TransactionResponse **response ) {
   *response = new Smbus::TransactionResponse;
   for ( const Smbus::Request &each : request->request() )
      ( *response )->add_response()->set_data( std::string( each.length(), '\xC1' ) );
   return 0;
}

} // namespace PlatformLibrary

namespace Fuzz {

namespace {

using BoardFiles::Kind;

// The plug-in never deletes its objects, so what earlier inputs made stays in memory.
void forget() {
   Topology::_topology.reset();
   Topology::_topology_index.clear();
   Topology::_topology_label_records.clear();
   Topology::_topology_json.clear();
   Component::DeviceBase::devices.clear();
   using Component::LogicalDevice::Led;
   Led::blinkTimer_ = nullptr;
   Led::blinkStatus_ = false;
   Led::notifyList_.clear();
}

bool add( const BoardFiles::BoardObject &object ) {
   const std::string &text = object.device ? object.device->text : object.label.value_or( "" );
   switch ( *object.kind ) {
   case Kind::TempSensor:
      return pl_temp_sensor_add( text.c_str(), static_cast<float>( object.alert.value_or( 0 ) ),
                                 static_cast<float>( object.critical.value_or( 0 ) ) );
   case Kind::Fan:
      return pl_fan_add( text.c_str() );
   case Kind::Psu:
      return pl_psu_add( text.c_str() );
   case Kind::Slot:
      return pl_slot_add( text.c_str() );
   case Kind::Led:
      return pl_led_add( text.c_str() );
   case Kind::Gpio:
      return pl_gpio_add( text.c_str() );
   case Kind::Xcvr:
      return pl_xcvr_add( text.c_str() );
   case Kind::Smbus:
      return pl_smbus_add( text.c_str(), object.value.value_or( 0 ) );
   case Kind::System:
      return pl_system_add( text.c_str() );
   default:
      return true;
   }
}

} // namespace

bool accepts( const BoardFiles::TopologyFile &topology, const BoardFiles::ObjectsFile &objects,
              BoardFiles::Findings findings ) {
   static const auto table = [&findings] {
      return BoardFiles::readDriverTable( "boards/libOrbisDriversKelt.drivers.json", findings )
         .value();
   }();
   BoardFiles::DeviceCheck check( table, topology, findings );
   for ( const BoardFiles::BoardObject &object : objects.objects )
      check.check( object );
   checkFindings( findings );
   return !hasErrors( findings );
}

void addAll( const BoardFiles::TopologyFile &topology, const BoardFiles::ObjectsFile &objects ) {
   forget();
   expect( orbisLibraryInit( "fuzz", topology.text.c_str(), 1 ) == PL_STATUS_OK,
           "the plug-in loads a topology that check accepts" );
   for ( const BoardFiles::BoardObject &object : objects.objects )
      expect( add( object ), "the plug-in makes each object that check accepts" );
}

} // namespace Fuzz
