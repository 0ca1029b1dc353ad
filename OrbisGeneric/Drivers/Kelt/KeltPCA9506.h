// The PCA9506 of the fan board: presence and airflow of five fan modules, a two-colour LED for each
// module, and two power control lines.
#pragma once

#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/Components/Slot.h"
#include "OrbisGeneric/Drivers/GPIOExpander.h"
#include "OrbisGeneric/Drivers/Helpers.h"

namespace Drivers {

class KeltPCA9506 : public GPIOExpander {
 public:
   class FanLed;
   class FanSlot;

   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   void init() override;
   using GPIOExpander::init;
   // "id" (1 to 5).
   Component::LogicalDevice::Led *newLed( const DriverArgs &args ) override;
   // "fanId" (1 to 5), "presenceBitOffset", "fanFdl", "rpmF2B", "rpmB2F", "modelName".
   Component::LogicalDevice::Slot *newSlot( const DriverArgs &args ) override;

   // Sets both power control lines high in one transaction.
   pl_status poweroff();
};

// Active low: a pin of 0 lights its colour. Blinks red, in software.
class KeltPCA9506::FanLed : public Component::LogicalDevice::Led {
 public:
   FanLed( KeltPCA9506 *expander, uint8_t fan );

   bool handleBlinkTimer( bool on ) override;
   pl_status setLightSetting( pl_led_status status ) override;
   // These changes are pending until save() of the expander.
   void setLedOff() { setPins( true, true ); }
   void setLedGreen() { setPins( true, false ); }
   void setLedRed() { setPins( false, true ); }
   void setLedAmber() { setPins( false, false ); }

 private:
   void setPins( bool a, bool b );

   KeltPCA9506 *expander_;
   uint8_t fan_; // from 0
   bool blinking_ = false;
   int pinA;
   int pinB;
};

class KeltPCA9506::FanSlot : public Component::LogicalDevice::Slot {
 public:
   FanSlot( KeltPCA9506 *expander, int fanId, DriverSpecificArgs slotArgs, const char *text );
   ~FanSlot() override;

   // PL_STATUS_OK and the description line of the module. The line is made again when the airflow
   // of the module changes. 1 when there is no module, 6 when there is no memory for the line.
   pl_status getPresence( char **fdl ) override;

 private:
   static pl_status copyForHost( const char *text, char **fdl );

   KeltPCA9506 *expander_;
   int fanId_; // from 1, as the board's drawing and these traces have it; other ids are from 0
   FormatFdl fdl_;
   int presencePin;
   int airflowPin;
   char *cachedFdl_ = nullptr; // malloc'd
   bool cachedAirflow_ = false;
};

} // namespace Drivers
