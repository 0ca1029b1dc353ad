#pragma once

#include "simulator/chips/ChipKind.h"

#include <array>
#include <optional>

namespace Simulator {

// PCA9506 expander of 40 pins in five banks of eight (NXP PCA9505/06 datasheet, "Command register",
// "Register definitions"). If bit 7 of the command is set, each byte is followed by the next bank,
// and the fifth bank by the first. The pins have no internal pull-ups. Commands without a register
// are not acknowledged. There is no packet error code: if one is sent, it is written to the next
// bank.
class PCA9506 final : public Chip {
 public:
   static constexpr unsigned pins = 40;

   explicit PCA9506( std::string name ) : Chip( std::move( name ) ) {
      pulls_.fill( true );
      reset();
   }

   // The controls: what the board connects to the pins. An undriven pin has the level of its pull
   // resistor; by default that is a pull-up.
   void pullIs( unsigned pin, bool up ) { pulls_[pin] = up; }
   void drivenIs( unsigned pin, std::optional<bool> level ) { driven_[pin] = level; }
   bool level( unsigned pin ) const;
   // Calls the action at the end of each transfer after which all these pins are driven high.
   void onHigh( std::vector<unsigned> together, std::function<void()> action );

   void reset() override;
   std::vector<Quantity> quantities() override;
   bool addressed( Direction ) override;
   bool command( uint32_t ) override;
   bool write( uint8_t ) override;
   uint8_t read() override;
   void stopped() override;

 private:
   static constexpr unsigned banks = 5;
   enum Group : uint8_t { Input, Output, Polarity, Configuration, Mask, Groups };

   bool drives( unsigned pin ) const;
   bool outputBit( unsigned pin ) const { return registers_[Output][pin / 8] >> pin % 8 & 1; }
   uint8_t inputs( unsigned bank ) const;
   void advance();

   std::array<bool, pins> pulls_{};
   std::array<std::optional<bool>, pins> driven_{};
   std::array<std::array<uint8_t, banks>, Groups> registers_{}; // the entry of Input is unused
   uint8_t command_ = 0;
   bool written_ = false; // since the start
   std::vector<unsigned> watched_;
   std::function<void()> action_;
};

ChipKind pca9506Kind();

} // namespace Simulator
