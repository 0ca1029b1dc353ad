#pragma once

#include "smbusd/export/UsbIp.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace Smbusd::Export {

// The bus can't be exported; the text says why.
struct ExportError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A port of the kernel's virtual USB host controller, and a device plugged into it.
class VhciPort {
 public:
   // Plugs a full-speed device into the first free port of this controller (its folder in sysfs).
   // Throws ExportError: the module is not loaded, no permission, or no free port.
   explicit VhciPort( const std::string &controller = "/sys/devices/platform/vhci_hcd.0" );

   // When the connection ends, the device is unplugged.
   UsbIpConnection &connection() { return *connection_; }

 private:
   void write( const std::string &file, const std::string &text ) const;

   const std::string controller_;
   std::unique_ptr<UsbIpConnection> connection_;
};

} // namespace Smbusd::Export
