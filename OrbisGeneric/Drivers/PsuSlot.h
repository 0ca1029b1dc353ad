// A power supply slot: identifies the supply and makes its description line.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Slot.h"
#include "OrbisGeneric/Drivers/Helpers.h"

namespace Drivers {

class PsuSlot : public Component::HardwareDevice {
 public:
   class Slot;

   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   // "psuId" (1 or 2; returns null without it), "identificationType" ("pmbus" or "ipmi"), and for
   // n = 1, 2, ... without a gap: "model_n" with its template "psuFdl_n".
   Component::LogicalDevice::Slot *newSlot( const DriverArgs &args ) override;
};

class PsuSlot::Slot : public Component::LogicalDevice::Slot {
 public:
   // index is from 0, text is the device-argument document. The slot keeps the pointer to text.
   Slot( PsuSlot *parent, uint8_t index, DriverSpecificArgs slotArgs, const char *text );
   ~Slot() override;

   // PL_STATUS_OK and the description line of a known supply; 6 when there is no memory for the
   // line; otherwise 1. The line is cached as long as the supply is the same. A failure to identify
   // the supply clears the cache.
   pl_status getPresence( char **fdl ) override;

   // Reads the PMBus commands MFR_SERIAL and MFR_MODEL. The serial keeps its spaces.
   pl_status readSerialAndModelPmbus( std::string &serial, std::string &model );
   // Reads the product info area of an IPMI FRU EEPROM. Positions are modulo 256: an area after the
   // first 256 bytes wraps to the start.
   pl_status readSerialAndModelIpmi( std::string &serial, std::string &model );

 private:
   static pl_status copyForHost( const char *text, char **fdl );
   void forget();

   PsuSlot *parent_;
   FormatFdl fdl_;
   std::string cachedSerial_;
   std::string cachedModel_;
   char *cachedFdl_ = nullptr; // malloc'd
   enum IdentificationType { Pmbus = 0, Ipmi = 1 } identificationType_ = Pmbus;
   std::map<std::string, std::string> templates_; // by model
};

} // namespace Drivers
