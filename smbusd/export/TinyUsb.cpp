#include "smbusd/export/TinyUsb.h"

#include <linux/i2c.h>
#include <linux/usb/ch9.h>

namespace Smbusd::Export {

namespace {

enum Request : uint8_t { Echo = 0, GetFunctions = 1, SetDelay = 2, GetStatus = 3, Io = 4 };
constexpr uint8_t begin = 1, end = 2; // added to Io
enum Status : uint8_t { AddressAcknowledged = 1, NotAcknowledged = 2 };

// Without quick commands, which the driver can't send. It also can't read blocks with a count from
// the chip.
constexpr uint32_t functions =
   I2C_FUNC_I2C | ( I2C_FUNC_SMBUS_EMUL & ~static_cast<uint32_t>( I2C_FUNC_SMBUS_QUICK ) );

std::string bytes( std::initializer_list<int> values ) { return { values.begin(), values.end() }; }

const std::string deviceDescriptor = bytes( {
   18, USB_DT_DEVICE, 0x10, 0x01,  // USB 1.1
   USB_CLASS_VENDOR_SPEC, 0, 0, 8, // bytes in a packet
   0x03, 0x04, 0x31, 0xC6,         // 0403:c631, i2c-tiny-usb
   0x00, 0x01,                     // release
   1, 2, 3,                        // the strings
   1,                              // configuration
} );

const std::string configurationDescriptor = bytes( {
   9, USB_DT_CONFIG, 18, 0, 1, 1, 0, 0x80, 5,                    // bus-powered, 10 mA
   9, USB_DT_INTERFACE, 0, 0, 0, USB_CLASS_VENDOR_SPEC, 0, 0, 0, // no endpoint except the first
} );

std::string stringDescriptor( const std::string &text ) {
   std::string made = bytes( { static_cast<int>( 2 + 2 * text.size() ), USB_DT_STRING } );
   for ( const char letter : text )
      made += bytes( { letter, 0 } );
   return made;
}

} // namespace

ControlAnswer TinyUsb::answer( const ControlRequest &request ) {
   ControlAnswer answer = standard( request );
   if ( request.isVendors() )
      answer = message( request );
   if ( answer && answer->size() > request.length )
      answer->resize( request.length );
   return answer;
}

ControlAnswer TinyUsb::standard( const ControlRequest &request ) const {
   switch ( request.request ) {
   case USB_REQ_GET_DESCRIPTOR:
      return descriptor( static_cast<uint8_t>( request.value >> 8 ),
                         static_cast<uint8_t>( request.value ) );
   case USB_REQ_GET_STATUS:
      return bytes( { 0, 0 } );
   case USB_REQ_GET_CONFIGURATION:
      return bytes( { 1 } );
   case USB_REQ_SET_CONFIGURATION:
   case USB_REQ_SET_INTERFACE:
      return "";
   default:
      return {};
   }
}

ControlAnswer TinyUsb::descriptor( uint8_t type, uint8_t index ) const {
   if ( type == USB_DT_DEVICE )
      return deviceDescriptor;
   if ( type == USB_DT_CONFIG )
      return configurationDescriptor;
   if ( type != USB_DT_STRING || index > 3 )
      return {};
   const std::string strings[] = { "", "Orbis", "simulated bus", serial_ };
   return index == 0 ? bytes( { 4, USB_DT_STRING, 0x09, 0x04 } ) // English
                     : stringDescriptor( strings[index] );
}

ControlAnswer TinyUsb::message( const ControlRequest &request ) {
   switch ( request.request ) {
   case Echo:
      return bytes( { request.value & 0xFF, request.value >> 8 } );
   case GetFunctions:
      return bytes(
         { functions & 0xFF, functions >> 8 & 0xFF, functions >> 16 & 0xFF, functions >> 24 } );
   case SetDelay:
      return "";
   case GetStatus:
      return bytes( { acknowledged_ ? AddressAcknowledged : NotAcknowledged } );
   }
   if ( ( request.request & ~( begin | end ) ) != Io )
      return {};
   if ( request.request & begin )
      waiting_.clear();
   const bool read = request.value & I2C_M_RD;
   waiting_.push_back(
      { .address = static_cast<uint8_t>( request.index ),
        .direction = read ? Simulator::Direction::Read : Simulator::Direction::Write,
        .bytes = read ? std::string( request.length, '\xFF' ) : request.data } );
   acknowledged_ = true;
   if ( !read && !( request.request & end ) )
      return "";
   acknowledged_ = bus_.exchange( waiting_ );
   const std::string data = waiting_.back().bytes;
   waiting_.clear();
   return read ? data : "";
}

} // namespace Smbusd::Export
