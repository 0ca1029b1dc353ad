#pragma once

#include "simulator/chips/ChipKind.h"

#include <map>

namespace Simulator {

// A CPLD: registers of one byte, with addresses of two bytes, high byte first. The address is
// incremented after each byte. A register without a function only stores its value; after power-on
// that is zero, or the constructor's value. There is no packet error code.
class Cpld : public Chip {
 public:
   using Registers = std::map<uint16_t, uint8_t>;

   // powerOn: the values after power-on.
   Cpld( std::string name, Registers powerOn )
      : Chip( std::move( name ) ), powerOn_( std::move( powerOn ) ), registers_( powerOn_ ) {}

   void reset() override {
      registers_ = powerOn_;
      pointer_ = 0;
   }
   unsigned commandBytes() const override { return 2; }
   bool command( uint32_t address ) override {
      pointer_ = static_cast<uint16_t>( address );
      return true;
   }
   bool write( uint8_t byte ) override {
      store( pointer_++, byte );
      return true;
   }
   uint8_t read() override { return at( pointer_++ ); }

 protected:
   virtual void store( uint16_t address, uint8_t byte ) { registers_[address] = byte; }
   virtual uint8_t at( uint16_t address ) const { return stored( address ); }

   uint8_t stored( uint16_t address ) const {
      const auto found = registers_.find( address );
      return found == registers_.end() ? 0 : found->second;
   }

 private:
   const Registers powerOn_;
   Registers registers_;
   uint16_t pointer_ = 0;
};

// The key "registers" of a CPLD's entry, and what it says.
EntryKey registersKey();
Cpld::Registers registersIn( const ChipEntry & );

} // namespace Simulator
