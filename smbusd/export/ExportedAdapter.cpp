#include "smbusd/export/ExportedAdapter.h"

#include <filesystem>
#include <fstream>

namespace Smbusd::Export {

namespace fs = std::filesystem;

ExportedAdapter::ExportedAdapter( std::unique_ptr<Simulator::SimulatedBus> bus,
                                  const std::string &name )
   : bus_( std::move( bus ) ), name_( name ), device_( *bus_, name ),
     thread_( [this] { serve(); } ) {}

ExportedAdapter::~ExportedAdapter() {
   port_.connection().end();
   thread_.join();
}

void ExportedAdapter::serve() {
   UsbIpConnection &kernel = port_.connection();
   while ( const auto request = kernel.receive() ) {
      if ( !kernel.answer( device_.answer( *request ) ) )
         return;
   }
}

std::optional<unsigned> ExportedAdapter::adapter( std::chrono::milliseconds patience ) const {
   const auto end = std::chrono::steady_clock::now() + patience;
   for ( ;; ) {
      if ( const auto number = findExported( name_, {} ) )
         return number;
      if ( std::chrono::steady_clock::now() >= end )
         return {};
      std::this_thread::sleep_for( std::chrono::milliseconds( 20 ) );
   }
}

std::optional<unsigned> findExported( const std::string &name, const Linux::Places &places ) {
   std::error_code ignored;
   for ( const auto &device : fs::directory_iterator( places.sys + "/bus/usb/devices", ignored ) ) {
      std::ifstream file( device.path() / "serial" );
      std::string serial;
      if ( !std::getline( file, serial ) || serial != name )
         continue;
      try {
         return Linux::findAdapter( BoardFiles::AdapterPath{ device.path() }, places );
      } catch ( const Linux::AdapterError & ) {
         return {}; // plugged in, but not an adapter yet
      }
   }
   return {};
}

} // namespace Smbusd::Export
