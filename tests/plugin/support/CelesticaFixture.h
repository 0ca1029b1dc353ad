// Both transceiver CPLDs of the board, with the rows of their register tables.
#pragma once

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaXcvr.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

// The rows of the register tables, one for each group of ports.
struct PortGroup {
   int firstPort, lastPort;
   unsigned registers[4];
};
inline const std::vector<PortGroup> qcpldQsfp = { { 1, 8, { 0x250, 0x252, 0x254, 0x256 } },
                                                  { 9, 16, { 0x251, 0x253, 0x255, 0x257 } },
                                                  { 17, 24, { 0x2D0, 0x2D2, 0x2D4, 0x2D6 } },
                                                  { 25, 32, { 0x2D1, 0x2D3, 0x2D5, 0x2D7 } } };
inline const std::vector<PortGroup> scpldSfp = {
   { 1, 8, { 0x240, 0x250, 0x256, 0x259 } },   { 9, 16, { 0x241, 0x251, 0x257, 0x25A } },
   { 17, 18, { 0x242, 0x252, 0x258, 0x25B } }, { 19, 26, { 0x2C0, 0x2D0, 0x2D6, 0x2D9 } },
   { 27, 34, { 0x2C1, 0x2D1, 0x2D7, 0x2DA } }, { 35, 36, { 0x2C2, 0x2D2, 0x2D8, 0x2DB } },
   { 37, 44, { 0x3C0, 0x3D0, 0x3D4, 0x3D6 } }, { 45, 48, { 0x3C1, 0x3D1, 0x3D5, 0x3D7 } }
};
inline const std::vector<PortGroup> scpldQsfp = { { 1, 6, { 0x360, 0x361, 0x362, 0x363 } } };
inline const std::vector<unsigned> qcpldLeds = { 0x203, 0x204, 0x283, 0x284, 0x285, 0x286, 0x394,
                                                 0x395, 0x396, 0x397, 0x398, 0x399, 0x39A, 0x39B,
                                                 0x39C, 0x39D, 0x39E, 0x39F, 0x3A0, 0x3A1, 0x3A2 };
inline const std::vector<unsigned> scpldLeds = { 0x383, 0x384, 0x385 };

template <typename Cpld>
class CpldFixture : public PluginFixture {
 protected:
   // The batch of a poll. A register in `values` reads its value; all other registers read
   // `others`.
   std::vector<Transfer> poll( std::map<unsigned, uint8_t> values, uint8_t others ) {
      std::vector<Transfer> batch;
      for ( const auto &table : tables )
         for ( const auto &group : *table )
            for ( unsigned reg : group.registers )
               batch.push_back(
                  read8( reg ).answers( { values.count( reg ) ? values[reg] : others } ) );
      return batch;
   }
   void bringUp( std::map<unsigned, uint8_t> values = {}, uint8_t others = 0 ) {
      cpld.ham_ = &ham;
      ham.expectBatch( poll( std::move( values ), others ) );
      for ( unsigned reg : leds )
         ham.expectBatch( { write8( reg, 0xFF ) } );
      cpld.init();
      ham.verify();
   }
   void tick( std::vector<Transfer> batch ) {
      ham.expectBatch( std::move( batch ) );
      TestHost::timers.at( 0 )->expire();
   }
   ScriptedHam ham;
   Cpld cpld{ true };
   std::vector<const std::vector<PortGroup> *> tables;
   std::vector<unsigned> leds;
   Drivers::DriverArgs args;
   int value = 77;
};

class KeltQCPLDFixture : public CpldFixture<Drivers::KeltQCPLD> {
 protected:
   KeltQCPLDFixture() {
      tables = { &qcpldQsfp };
      leds = qcpldLeds;
   }
   std::unique_ptr<Component::LogicalDevice::QsfpXcvr> port( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::QsfpXcvr>( cpld.newQsfpXcvr( id, args ) );
   }
};

class KeltSCPLDFixture : public CpldFixture<Drivers::KeltSCPLD> {
 protected:
   KeltSCPLDFixture() {
      tables = { &scpldQsfp, &scpldSfp };
      leds = scpldLeds;
   }
   std::unique_ptr<Component::LogicalDevice::SfpXcvr> sfp( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::SfpXcvr>( cpld.newSfpXcvr( id, args ) );
   }
   std::unique_ptr<Component::LogicalDevice::QsfpXcvr> qsfp( unsigned id ) {
      return std::unique_ptr<Component::LogicalDevice::QsfpXcvr>( cpld.newQsfpXcvr( id, args ) );
   }
};
