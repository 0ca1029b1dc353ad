// A simulated bus as the USB device of the kernel's driver i2c-tiny-usb, with an LM75 at 0x48 and a
// chip with wide commands at 0x31.
#pragma once

#include "ManualClock.h"
#include "simulator/bus/SimulatedBus.h"
#include "simulator/chips/LM75.h"
#include "smbusd/export/TinyUsb.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

namespace SmbusdTest {

// A chip with commands of two bytes, like the CPLDs.
class WideChip final : public Simulator::Chip {
 public:
   WideChip() : Chip( "wide" ) {}
   void reset() override {}
   unsigned commandBytes() const override { return 2; }
   bool command( uint32_t reg ) override {
      register_ = reg;
      return true;
   }
   bool write( uint8_t byte ) override {
      written += static_cast<char>( byte );
      return byte != 0xEE; // nacks this byte
   }
   uint8_t read() override { return static_cast<uint8_t>( register_ >> 8 ); }
   std::string written;

 private:
   uint32_t register_ = 0;
};

class TinyUsbFixture : public ::testing::Test {
 protected:
   TinyUsbFixture() {
      thermometer.temperatureIs( 24.5 );
      segment.attach( 0x48, thermometer );
      segment.attach( 0x31, wide );
   }
   // The driver's request for one I2C message. `ends`: whether it has a start and a stop.
   Smbusd::Export::ControlAnswer io( bool read, uint8_t address, unsigned ends,
                                     const std::string &data, uint16_t count = 0 ) {
      return device.answer( { static_cast<uint8_t>( read ? 0xC1 : 0x41 ),
                              static_cast<uint8_t>( 4 + ends ), static_cast<uint16_t>( read ),
                              address, static_cast<uint16_t>( read ? count : data.size() ),
                              data } );
   }
   bool acknowledged() { return device.answer( { 0xC1, 3, 0, 0, 1 } ) == "\x01"; }

   TestSupport::ManualClock clock;
   Simulator::LM75 thermometer{ "temp-front", clock };
   WideChip wide;
   Simulator::BusSegment segment;
   std::mutex mutex;
   std::vector<std::string> observed;
   Simulator::SimulatedBus bus{ segment, mutex,
                                [this]( const Bus::Transfer &transfer, const auto &result ) {
                                   observed.push_back( describe( transfer ) + " " +
                                                       result.outcome.error );
                                } };
   Smbusd::Export::TinyUsb device{ bus, "scd(4):1:2" };
   static constexpr unsigned begin = 1, end = 2;
};

} // namespace SmbusdTest
