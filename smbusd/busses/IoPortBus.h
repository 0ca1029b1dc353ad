#pragma once

#include "smbus/RootBus.h"

#include <cstdint>
#include <string>

namespace Smbusd {

// The I/O ports can't be used; the text says why.
struct PortError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A range of the processor's I/O ports. The register is added to the base of the range; the address
// of the transfer is ignored. Two bytes are two ports, the lower one first, because the kernel
// reads and writes byte by byte.
class IoPortBus final : public Bus::RootBus {
 public:
   // The file is /dev/port; tests use another. The first transfer opens it. A range that claims its
   // ports is refused while another process has claimed some of them.
   IoPortBus( uint32_t base, uint32_t size, std::string file = "/dev/port", bool claims = true )
      : base_( base ), size_( size ), file_( std::move( file ) ), claims_( claims ) {}
   ~IoPortBus() override;
   IoPortBus( const IoPortBus & ) = delete;
   IoPortBus &operator=( const IoPortBus & ) = delete;

   void open(); // throws PortError

   // Reads and writes one or two bytes. Refuses everything else.
   Bus::Outcome transfer( const Bus::Transfer & ) override;

 private:
   Bus::Outcome execute( const Bus::Transfer & );

   const uint32_t base_;
   const uint32_t size_;
   const std::string file_;
   const bool claims_;
   int fd_ = -1;
   bool usable_ = false;
};

} // namespace Smbusd
