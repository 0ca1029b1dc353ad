#pragma once

#include "smbus/RootBus.h"

#include <cstdint>
#include <string>

namespace Smbusd {

// I/O ports that can't be used; the text says why.
struct PortError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A window of the processor's I/O ports. The register is the port above its base, and there is one
// device in it, whatever its address. Two bytes are two ports, the lower one first: the kernel goes
// byte by byte.
class IoPortBus final : public Bus::RootBus {
 public:
   // The file is /dev/port, or what stands for it. It is opened when it is first needed.
   IoPortBus( uint32_t base, uint32_t size, std::string file = "/dev/port" )
      : base_( base ), size_( size ), file_( std::move( file ) ) {}
   ~IoPortBus() override;
   IoPortBus( const IoPortBus & ) = delete;
   IoPortBus &operator=( const IoPortBus & ) = delete;

   void open(); // throws PortError

   // Reads and writes of one or two bytes. Everything else is refused.
   Bus::Outcome transfer( const Bus::Transfer & ) override;

 private:
   Bus::Outcome execute( const Bus::Transfer & );

   const uint32_t base_;
   const uint32_t size_;
   const std::string file_;
   int fd_ = -1;
};

} // namespace Smbusd
