// The memory that a supply is identified by: what it holds, as the plug-in reads it, and what the
// simulated chip makes of product data. The first byte chooses.
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/PsuSlot.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "simulator/chips/FruImage.h"

#include <algorithm>
#include <stdexcept>

namespace {

// A memory of 256 bytes behind the plug-in's driver. What is read alone is the place of the product
// data, and then the type and length of its fields. Every type is text: another one ends the
// plug-in, which is wanted.
class Memory final : public Ham::Ham {
 public:
   explicit Memory( const Simulator::EepromImage &image ) : image_( image ) {}
   void prepare() override {}
   pl_status execute() override { return PL_STATUS_OK; }
   ResponseId addRead8( unsigned reg ) override { return reg; }
   ResponseId addRead( unsigned reg, unsigned ) override { return reg; }
   uint8_t get8( ResponseId reg ) override {
      return isFirst_ ? ( isFirst_ = false, at( reg ) ) : static_cast<uint8_t>( at( reg ) | 0xC0 );
   }
   std::string getBlock( ResponseId reg, unsigned length ) override {
      std::string block;
      for ( unsigned i = 0; i < length; ++i )
         block += static_cast<char>( at( reg + i ) );
      return block;
   }

 private:
   uint8_t at( unsigned reg ) const { return image_[reg % image_.size()]; }
   const Simulator::EepromImage image_;
   bool isFirst_ = true;
};

struct Identity {
   std::string serial, model;
};

Identity identify( const Simulator::EepromImage &image, bool byPmbus ) {
   Memory memory( image );
   Drivers::PsuSlot device;
   device.ham_ = &memory;
   Drivers::PsuSlot::Slot slot( &device, 0, { { "identificationType", "ipmi" } }, "" );
   Identity read;
   const pl_status status = byPmbus ? slot.readSerialAndModelPmbus( read.serial, read.model )
                                    : slot.readSerialAndModelIpmi( read.serial, read.model );
   Fuzz::expect( status == PL_STATUS_OK, "a memory that answers is read" );
   Fuzz::expect( read.serial.size() <= 255 && read.model.size() <= 255, "a field is short" );
   return read;
}

// Two fields of any bytes, as the driver finds them again.
void writeAndRead( std::string_view text ) {
   const std::string serial( text.substr( 0, text.size() / 2 ) );
   const std::string model( text.substr( text.size() / 2 ) );
   try {
      const Identity read =
         identify( Simulator::fruImage( { "maker", model, "part", "1", serial, "tag" } ), false );
      Fuzz::expect( read.serial == serial || read.serial == serial + " ",
                    "the serial number is read" );
      Fuzz::expect( model.find( read.model ) != std::string::npos, "the model is read" );
   } catch ( const std::length_error & ) {
      Fuzz::expect( serial.size() > 63 || model.size() > 63, "short fields fit" );
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   if ( size == 0 )
      return 0;
   if ( data[0] == 'w' ) {
      writeAndRead( Fuzz::textOf( data + 1, size - 1 ) );
      return 0;
   }
   Simulator::EepromImage image;
   image.fill( 0xFF );
   std::copy_n( data + 1, std::min( size - 1, image.size() ), image.begin() );
   identify( image, data[0] == 'p' );
   return 0;
}
