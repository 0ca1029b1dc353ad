#pragma once

#include "smbus/Clock.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Simulator {

// The state machines of a CMIS module and of the lanes of its data paths (CMIS 5.2, "Module State
// Machine" and "Data Path State Machine"). Time alone moves them on; nobody has to look.
class CmisStates {
 public:
   using Time = Bus::Clock::Time;
   static constexpr unsigned lanes = 8;

   enum Module : uint8_t { LowPower = 1, PoweringUp = 2, Ready = 3, PoweringDown = 4 };
   enum Lane : uint8_t {
      Deactivated = 1,
      Initializing = 2,
      Deinitializing = 3,
      Activated = 4,
      TurningOn = 5,
      TurningOff = 6,
      Initialized = 7
   };
   // What the host and the cage want.
   struct Wishes {
      bool lowPower = false;
      uint8_t used = 0xFF; // lane 1 has bit 0
      uint8_t light = 0xFF;
   };

   // How long the states that end by themselves take.
   static constexpr Time management = std::chrono::seconds( 2 );
   static constexpr Time poweringUp = std::chrono::milliseconds( 400 );
   static constexpr Time poweringDown = std::chrono::milliseconds( 90 );
   static constexpr Time initializing = std::chrono::milliseconds( 800 );
   static constexpr Time deinitializing = std::chrono::milliseconds( 40 );
   static constexpr Time turningOn = std::chrono::milliseconds( 80 );
   static constexpr Time turningOff = std::chrono::milliseconds( 40 );

   // All lanes work, as after hours.
   CmisStates();
   // Power, or the end of a reset; afterwards it comes up by itself.
   void startsAt( Time );
   void wishesAre( const Wishes &, Time now );
   void initializeAnew( uint8_t lanes, Time now );
   void advance( Time now );

   Module module() const { return static_cast<Module>( module_.state ); }
   Lane lane( unsigned number ) const { return static_cast<Lane>( lanes_[number].state ); }
   // Those that have reached a state where they stay, since this was asked last.
   bool takeModuleChanged();
   uint8_t takeLanesChanged();

 private:
   struct Machine {
      uint8_t state;
      Time since;
   };
   struct Step {
      Time at;
      uint8_t state;
   };
   std::optional<Step> nextOfModule() const;
   std::optional<Step> nextOfLane( unsigned number ) const;
   bool takeStep( Time now ); // the first of those that are due
   void change( Machine &, const Step & );

   Machine module_{ Ready, {} };
   std::array<Machine, lanes> lanes_{};
   Wishes wishes_;
   uint8_t anew_ = 0; // lanes that have to be deactivated first
   Time lastChange_{ 0 };
   bool moduleChanged_ = false;
   uint8_t lanesChanged_ = 0;
};

} // namespace Simulator
