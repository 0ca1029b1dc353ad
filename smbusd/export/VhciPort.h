#pragma once

#include "smbusd/export/UsbIp.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace Smbusd::Export {

// A bus that can't be exported; the text says why.
struct ExportError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A port of the kernel's virtual USB host controller, and a device plugged into it.
class VhciPort {
 public:
   // The controller's folder in sysfs. Plugs a full-speed device into its first free port. Throws
   // ExportError: no such module, no right, or no port free.
   explicit VhciPort( const std::string &controller = "/sys/devices/platform/vhci_hcd.0" );

   // Its end unplugs the device.
   UsbIpConnection &connection() { return *connection_; }

 private:
   void write( const std::string &file, const std::string &text ) const;

   const std::string controller_;
   std::unique_ptr<UsbIpConnection> connection_;
};

} // namespace Smbusd::Export
