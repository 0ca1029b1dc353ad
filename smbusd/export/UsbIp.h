// The device's side of a USB/IP connection, over which the kernel's vhci-hcd talks to a device that
// is a program (Documentation/usb/usbip_protocol.rst of the kernel). Control transfers alone: the
// devices here have no other endpoint.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Smbusd::Export {

// A control transfer, as USB 2.0 chapter 9.3 has it.
struct ControlRequest {
   uint8_t requestType = 0;
   uint8_t request = 0;
   uint16_t value = 0;
   uint16_t index = 0;
   uint16_t length = 0;
   std::string data = {}; // from the host, where it sends any

   bool toHost() const { return requestType & 0x80; }
   bool isVendors() const { return ( requestType & 0x60 ) == 0x40; }
};

// What the device sends back; nothing: it stalls.
using ControlAnswer = std::optional<std::string>;

// Frames of a connected stream socket, which it closes in the end.
class UsbIpConnection {
 public:
   explicit UsbIpConnection( int fd ) : fd_( fd ) {}
   ~UsbIpConnection();
   UsbIpConnection( const UsbIpConnection & ) = delete;
   UsbIpConnection &operator=( const UsbIpConnection & ) = delete;

   // The next transfer; nothing when the connection ends. What the kernel takes back meanwhile is
   // told to be done already: each transfer is answered before the next is read.
   std::optional<ControlRequest> receive();
   // To the request received last. False when the connection has ended.
   bool answer( const ControlAnswer & );
   // From another thread: the connection ends, and receive() with it.
   void end();

 private:
   const int fd_;
   uint32_t sequence_ = 0; // of the request received last
   bool toHost_ = false;
   size_t sent_ = 0; // bytes that came with it
};

} // namespace Smbusd::Export
