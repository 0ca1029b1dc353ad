#include "Images.h"

#include <algorithm>
#include <numeric>

namespace OpticsTest {

using namespace Optics;

namespace {

void putSum( Bytes &file, size_t first, size_t last, size_t place ) {
   if ( place < file.size() )
      file[place] = static_cast<uint8_t>( std::accumulate( &file[first], &file[last] + 1, 0u ) );
}

} // namespace

void put( Bytes &file, size_t place, const Bytes &bytes ) {
   std::copy( bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>( place ) );
}

void putText( Bytes &file, size_t place, size_t size, const std::string &text ) {
   for ( size_t i = 0; i < size; ++i )
      file.at( place + i ) = static_cast<uint8_t>( i < text.size() ? text[i] : ' ' );
}

void sign( Bytes &file, Standard standard ) {
   switch ( standard ) {
   case Standard::Sff8472:
      putSum( file, 0, 62, 63 );
      putSum( file, 64, 94, 95 );
      putSum( file, a2 + 0, a2 + 94, a2 + 95 );
      break;
   case Standard::Sff8636:
      putSum( file, 128, 190, 191 );
      putSum( file, 192, 222, 223 );
      break;
   case Standard::Cmis:
      putSum( file, 128, 221, 222 );
      putSum( file, page01OfCmis + 130, page01OfCmis + 254, page01OfCmis + 255 );
      putSum( file, page02OfCmis + 128, page02OfCmis + 254, page02OfCmis + 255 );
      break;
   }
}

Bytes sfp() {
   Bytes file( 512, 0 );
   put( file, 0, { 0x03, 0x04, 0x07, 0x20, 0, 0, 0, 0, 0, 0, 0, 0x06, 103, 0, 10, 100 } );
   putText( file, 20, 16, "ACME OPTICS" );
   put( file, 37, { 0x00, 0x1B, 0x21 } );
   putText( file, 40, 16, "ACME-10G-LR" );
   putText( file, 56, 4, "A1" );
   put( file, 60, { 0x05, 0x1E } ); // 1310 nm
   put( file, 64, { 0x00, 0x1A } ); // tx disable, tx fault, loss of signal
   putText( file, 68, 16, "SN0000123" );
   putText( file, 84, 8, "240202A7" );
   put( file, 92, { 0x68, 0xF0, 0x08 } );
   put( file, a2,
        { 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00,     // 75, -5, 70, 0 degrees
          0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A, 0x76,     // 3.63, 2.97, 3.465, 3.135 V
          0x9C, 0x40, 0x03, 0xE8, 0x88, 0xB8, 0x07, 0xD0,     // 80, 2, 70, 4 mA
          0x31, 0x2D, 0x04, 0xEB, 0x27, 0x10, 0x06, 0x32,     // 1.2589, 0.1259, 1, 0.1586 mW
          0x31, 0x2E, 0x00, 0x64, 0x27, 0x11, 0x00, 0x9E } ); // 1.259, 0.01, 1.0001, 0.0158 mW
   put( file, a2 + 68, { 0x3F, 0x80 } );
   for ( const size_t slope : { 76u, 80u, 84u, 88u } )
      put( file, a2 + slope, { 0x01, 0x00 } );
   put( file, a2 + 96,
        { 0x19, 0x80, 0x80, 0xE8, 0x0D, 0xAC, 0x13, 0x88, 0x0F, 0xA0 } ); // 25.5, 3.3, 7, 0.5, 0.4
   sign( file, Standard::Sff8472 );
   return file;
}

Bytes qsfp() {
   Bytes file( 640, 0 );
   put( file, 0, { 0x11, 0x08, 0x02 } );
   put( file, 22, { 0x19, 0x80 } );                                     // 25.5
   put( file, 26, { 0x80, 0xE8 } );                                     // 3.3
   put( file, 34, { 0x0F, 0xA0, 0x0F, 0xA1, 0x0F, 0xA2, 0x0F, 0xA3 } ); // 0.4 to 0.4003
   put( file, 42, { 0x0D, 0xAC, 0x0D, 0xAD, 0x0D, 0xAE, 0x0D, 0xAF } ); // 7 to 7.006
   put( file, 50, { 0x13, 0x88, 0x13, 0x89, 0x13, 0x8A, 0x13, 0x8B } ); // 0.5 to 0.5003
   put( file, 128, { 0x11, 0x8C, 0x07, 0x80 } ); // 2.5 W, clock recoveries, LC
   put( file, 139, { 0x05, 0xFF, 0x00, 10 } );
   put( file, 147, { 0x44 } ); // 1310 nm DFB, cooled
   putText( file, 148, 16, "ACME OPTICS" );
   put( file, 165, { 0x00, 0x1B, 0x21 } );
   putText( file, 168, 16, "ACME-100G-LR4" );
   putText( file, 184, 2, "B2" );
   put( file, 186, { 0x66, 0x58, 0x04, 0x4C, 75 } ); // 1310 nm, 5.5 nm, 75 degrees
   put( file, 192, { 0x03, 0x0F, 0xFF, 0xFA } );
   putText( file, 196, 16, "SN0000456" );
   putText( file, 212, 8, "231231B2" );
   put( file, 220, { 0x3C, 0x10, 103 } );
   put( file, page02OfQsfp + 128, { 'C', 'L', 'E', 'I', '0', '1', '2', '3', '4', '5' } );
   put( file, page03OfQsfp + 128, { 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00 } );
   put( file, page03OfQsfp + 144, { 0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A, 0x76 } );
   put( file, page03OfQsfp + 176, { 0x31, 0x2E, 0x00, 0x64, 0x27, 0x11, 0x00, 0x9E,     // rx power
                                    0x9C, 0x40, 0x03, 0xE8, 0x88, 0xB8, 0x07, 0xD0,     // bias
                                    0x31, 0x2D, 0x04, 0xEB, 0x27, 0x10, 0x06, 0x32 } ); // tx power
   sign( file, Standard::Sff8636 );
   return file;
}

Bytes qsfpDd() {
   Bytes file( 768, 0 );
   put( file, 0, { 0x18, 0x52, 0x00, 0x07 } );
   put( file, 14, { 0x19, 0x80, 0x80, 0xE8 } );
   put( file, 39, { 1, 7 } );
   put( file, 85, { 0x02, 0x11, 0x1C, 0x84, 0x01, 0x0D, 0x14, 0x21, 0x55, 0xFF } );
   put( file, 128, { 0x18 } );
   putText( file, 129, 16, "ACME OPTICS" );
   put( file, 145, { 0x00, 0x1B, 0x21 } );
   putText( file, 148, 16, "ACME-400G-DR4" );
   putText( file, 164, 2, "C3" );
   putText( file, 166, 16, "SN0000789" );
   putText( file, 182, 8, "240229C3" );
   putText( file, 190, 10, "CLEI543210" );
   put( file, 200, { 0xA0, 48, 0x00, 0x0C } ); // class 6, 12 W, MPO
   put( file, 210, { 0xF0 } );                 // four lanes of fibre
   put( file, 212, { 0x06 } );                 // 1310 nm EML

   put( file, page01OfCmis + 130, { 2, 9, 0x05, 0, 0, 0, 0, 0, 0x66, 0x58, 0x04, 0x4C } );
   put( file, page01OfCmis + 145, { 0x82, 70, 0xFB } ); // cooled, Aux2 TEC; 70, -5 degrees
   put( file, page01OfCmis + 151, { 0x10 } );
   put( file, page01OfCmis + 155, { 0x02, 0x02, 0x0F, 0x06, 0x0B, 0x0F } ); // bias counts 2 * 2 uA
   put( file, page01OfCmis + 176, { 0x01, 0x0F } );
   put( file, 20, { 0x20, 0x00 } ); // TEC 25.0008 %

   put( file, page02OfCmis + 128,
        { 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00, 0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A,
          0x76 } );
   put( file, page02OfCmis + 176, { 0x31, 0x2D, 0x04, 0xEB, 0x27, 0x10, 0x06, 0x32,     // tx power
                                    0x9C, 0x40, 0x03, 0xE8, 0x88, 0xB8, 0x07, 0xD0,     // bias
                                    0x31, 0x2E, 0x00, 0x64, 0x27, 0x11, 0x00, 0x9E } ); // rx power

   put( file, page11OfCmis + 128, { 0x44, 0x44, 0x44, 0x44, 0xFF, 0x0F } );
   put( file, page11OfCmis + 154, { 0x13, 0x88, 0x13, 0x89, 0x13, 0x8A, 0x13, 0x8B } );
   put( file, page11OfCmis + 170, { 0x0D, 0xAC, 0x0D, 0xAD, 0x0D, 0xAE, 0x0D, 0xAF } );
   put( file, page11OfCmis + 186, { 0x0F, 0xA0, 0x0F, 0xA1, 0x0F, 0xA2, 0x0F, 0xA3 } );
   put( file, page11OfCmis + 202, { 0x11, 0x11, 0x11, 0x11 } );
   put( file, page11OfCmis + 206, { 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10 } );
   sign( file, Standard::Cmis );
   return file;
}

Module decoded( Bytes file ) {
   const Standard standard = standardOf( imageOfFile( file, {} ) ).value();
   sign( file, standard );
   return decode( imageOfFile( file, standard ), standard );
}

const Monitor *monitorOf( const Module &module, Quantity quantity, unsigned lane ) {
   for ( const Monitor &monitor : module.monitors )
      if ( monitor.quantity == quantity && monitor.lane == lane )
         return &monitor;
   return nullptr;
}

std::optional<double> valueOf( const Module &module, Quantity quantity, unsigned lane ) {
   const Monitor *monitor = monitorOf( module, quantity, lane );
   return monitor ? monitor->value : std::nullopt;
}

} // namespace OpticsTest
