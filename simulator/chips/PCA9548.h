#pragma once

#include "simulator/chips/ChipKind.h"

#include <optional>

namespace Simulator {

// PCA9548 switch with eight channels. Its only register, the control byte, has one bit for each
// channel. Any number of channels can be selected; after power-on none is. Of several bytes it
// keeps the last, and the channels change only at the stop (NXP PCA9548A datasheet, "Control
// register"). There is no packet error code: if one is sent, it becomes the control byte.
class PCA9548 final : public Chip {
 public:
   // With a reset pin that somebody drives, or without.
   explicit PCA9548( std::string name, bool hasResetPin = false )
      : Chip( std::move( name ) ), hasResetPin_( hasResetPin ) {}

   bool hasResetPin() const { return hasResetPin_; }

   bool selects( unsigned channel ) const { return control_ >> channel & 1; }

   void reset() override {
      control_ = 0;
      written_.reset();
   }
   bool command( uint32_t byte ) override { return write( static_cast<uint8_t>( byte ) ); }
   bool write( uint8_t byte ) override {
      written_ = byte;
      return true;
   }
   uint8_t read() override { return written_.value_or( control_ ); }
   void stopped() override {
      control_ = written_.value_or( control_ );
      written_.reset();
   }

 private:
   const bool hasResetPin_;
   uint8_t control_ = 0;
   std::optional<uint8_t> written_; // since the start
};

ChipKind pca9548Kind();

} // namespace Simulator
