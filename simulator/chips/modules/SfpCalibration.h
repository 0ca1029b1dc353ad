#pragma once

#include "simulator/chips/modules/Fields.h"

namespace Simulator {

// What an SFP's words are multiplied with to get the units of SFF-8472: nothing if the module does
// so itself, or slopes, offsets and a polynomial that stand in its memory ("Calibration constants
// for external calibration option").
class SfpCalibration {
 public:
   enum class Kind { Internal, External };

   explicit SfpCalibration( Kind kind ) : isExternal_( kind == Kind::External ) {}

   // The word in the memory for a word in these units.
   uint16_t celsius( uint16_t ) const;
   uint16_t volts( uint16_t ) const;
   uint16_t bias( uint16_t ) const;
   uint16_t txPower( uint16_t ) const;
   uint16_t rxPower( uint16_t ) const;

   void putConstants( WholeMemory & ) const; // bytes 56 to 91

 private:
   struct Line {
      double slope;
      int offset;
   };
   uint16_t raw( double value, const Line &line, long least, long most ) const;

   bool isExternal_;
};

} // namespace Simulator
