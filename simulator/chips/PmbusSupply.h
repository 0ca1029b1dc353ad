#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/SupplyLimits.h"
#include "simulator/chips/SupplyModel.h"

#include <map>

namespace Simulator {

// A power supply with PMBus 1.1 (PMBus Power System Management Protocol, Parts I and II). Words are
// sent low byte first. It does not acknowledge unknown commands, data for read-only commands, or a
// wrong packet error code, and reports each of these in STATUS_CML. After the data of a read comes
// the packet error code. Status bits are set when something happens and stay set until
// CLEAR_FAULTS; of a fault and its warning only the fault is.
class PmbusSupply final : public Chip {
 public:
   struct Identity {
      std::string manufacturer;
      std::string model;
      std::string revision;
      std::string serial;
   };

   // The address is set by its pins; the packet error code includes it.
   PmbusSupply( std::string name, uint8_t address, const Bus::Clock &, const SupplyModel::Rating &,
                Identity );

   SupplyModel &model() { return model_; }

   void reset() override;
   void powerLost() override;
   std::vector<Quantity> quantities() override;
   bool addressed( Direction ) override;
   bool command( uint32_t ) override;
   bool write( uint8_t ) override;
   uint8_t read() override;
   void stopped() override;

 private:
   struct Command {
      size_t size = 0; // of the data to write; 0 for a command without data
      std::string ( *read )( PmbusSupply & ) = nullptr;
      bool ( *write )( PmbusSupply &, const std::string &data ) = nullptr; // false: invalid data
   };
   static const std::map<uint8_t, Command> &commands(); // in PmbusCommands.cpp, with commandFan()

   enum Status { Vout, Iout, Input, Temperature, Cml, Fans, StatusCount };
   void latchStatus(); // sets the bits of what is wrong now
   void latchOutput();
   void latchInput();
   uint16_t statusWord();
   bool commandFan( unsigned fan, const std::string &data );

   const uint8_t address_;
   const Identity identity_;
   SupplyModel model_;
   const SupplyLimits limits_;
   std::array<uint8_t, StatusCount> status_{};
   std::array<uint16_t, 2> fanCommand_{}; // as it was written
   uint8_t operation_ = 0x80;

   const Command *command_ = nullptr; // since the start
   bool reading_ = false;
   bool refused_ = false;     // this write will not be executed
   bool pecReceived_ = false; // with the right value
   std::string data_;         // written, or to be read
   size_t position_ = 0;
   uint8_t pec_ = 0;
};

ChipKind pmbusSupplyKind();

} // namespace Simulator
