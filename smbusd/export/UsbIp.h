// The device's side of a USB/IP connection. The kernel's vhci-hcd uses it to talk to a USB device
// that is a program (Documentation/usb/usbip_protocol.rst of the kernel). Only control transfers:
// the devices here have no other endpoint.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Smbusd::Export {

// A control transfer (USB 2.0, chapter 9.3).
struct ControlRequest {
   uint8_t requestType = 0;
   uint8_t request = 0;
   uint16_t value = 0;
   uint16_t index = 0;
   uint16_t length = 0;
   std::string data = {}; // from the host, if it sends any

   bool toHost() const { return requestType & 0x80; }
   bool isVendors() const { return ( requestType & 0x60 ) == 0x40; }
};

// The data that the device returns; nothing: a stall.
using ControlAnswer = std::optional<std::string>;

// Owns a connected stream socket.
class UsbIpConnection {
 public:
   explicit UsbIpConnection( int fd ) : fd_( fd ) {}
   ~UsbIpConnection();
   UsbIpConnection( const UsbIpConnection & ) = delete;
   UsbIpConnection &operator=( const UsbIpConnection & ) = delete;

   // The next transfer; nothing when the connection ends. If the kernel cancels a transfer, the
   // reply says that it is already complete: each one is answered before the next is read.
   std::optional<ControlRequest> receive();
   // Answers the last request. Returns false when the connection has ended.
   bool answer( const ControlAnswer & );
   // For another thread: ends the connection, and so receive().
   void end();

 private:
   const int fd_;
   uint32_t sequence_ = 0; // of the last request
   bool toHost_ = false;
   size_t sent_ = 0; // bytes that came with it
};

} // namespace Smbusd::Export
