#include "Peers.h"

#include "ProgramOutput.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <sys/ioctl.h>
#include <unistd.h>

extern "C" {
#include <i2c/smbus.h>
}

#include <cmath>
#include <cstdlib>
#include <fmt/format.h>

namespace RealTest {

namespace {

// A word of the bus has the degrees in its low byte.
double celsiusOf( long word ) {
   if ( word < 0 )
      return NAN;
   return static_cast<int16_t>( ( word & 0xFF ) << 8 | word >> 8 ) / 256.;
}

class Holder final : public Peer {
 public:
   explicit Holder( const Thermometers &thermometers )
      : Peer( thermometers ), fd_( open( fmt::format( "/dev/i2c-{}", thermometers.adapter ).c_str(),
                                         O_RDWR | O_CLOEXEC ) ) {}
   ~Holder() override { close( fd_ ); }

   void read( std::span<double> celsius ) override {
      for ( size_t i = 0; i < celsius.size(); ++i ) {
         const unsigned long address = thermometers_.addresses[thermometers_.chip( i )];
         // By force, since the kernel's driver holds the address.
         celsius[i] = ioctl( fd_, I2C_SLAVE_FORCE, address ) == 0
                         ? celsiusOf( i2c_smbus_read_word_data( fd_, 0 ) )
                         : NAN;
      }
   }

 private:
   const int fd_;
};

class I2cGet final : public Peer {
 public:
   using Peer::Peer;

   void read( std::span<double> celsius ) override {
      for ( size_t i = 0; i < celsius.size(); ++i ) {
         const std::string word = outputOf(
            { "/usr/sbin/i2cget", "-f", "-y", std::to_string( thermometers_.adapter ),
              std::to_string( thermometers_.addresses[thermometers_.chip( i )] ), "0", "w" } );
         celsius[i] = celsiusOf( word.empty() ? -1 : std::strtol( word.c_str(), nullptr, 16 ) );
      }
   }
};

class Hwmon final : public Peer {
 public:
   using Peer::Peer;

   void read( std::span<double> celsius ) override {
      for ( size_t i = 0; i < celsius.size(); ++i ) {
         char text[32] = {};
         const int fd = open( thermometers_.inputs[thermometers_.chip( i )].c_str(), O_RDONLY );
         celsius[i] =
            ::read( fd, text, sizeof text - 1 ) > 0 ? std::strtod( text, nullptr ) / 1000. : NAN;
         close( fd );
      }
   }
};

class Sensors final : public Peer {
 public:
   using Peer::Peer;

   void read( std::span<double> celsius ) override {
      std::vector<std::string> command{ "/usr/sbin/sensors", "-u" };
      for ( size_t i = 0; i < celsius.size(); ++i )
         command.push_back( fmt::format( "lm75-i2c-{}-{:x}", thermometers_.adapter,
                                         thermometers_.addresses[thermometers_.chip( i )] ) );
      const std::string text = outputOf( command );
      const std::string label = "temp1_input:";
      size_t at = 0;
      for ( double &value : celsius ) {
         at = text.find( label, at );
         value = at == text.npos ? NAN : std::strtod( text.c_str() + at + label.size(), nullptr );
         at += at != text.npos;
      }
   }
};

} // namespace

std::unique_ptr<Peer> makeHolder( const Thermometers &thermometers ) {
   return std::make_unique<Holder>( thermometers );
}
std::unique_ptr<Peer> makeI2cGet( const Thermometers &thermometers ) {
   return std::make_unique<I2cGet>( thermometers );
}
std::unique_ptr<Peer> makeHwmon( const Thermometers &thermometers ) {
   return std::make_unique<Hwmon>( thermometers );
}
std::unique_ptr<Peer> makeSensors( const Thermometers &thermometers ) {
   return std::make_unique<Sensors>( thermometers );
}

} // namespace RealTest
