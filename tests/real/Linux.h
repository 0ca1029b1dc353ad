// The Linux on which the tests run.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace RealTest {

std::string readFile( const std::string &path ); // without the newline at its end
void writeFile( const std::string &path, const std::string &text );

// The output and errors of a program. Fails the test when the exit code differs.
std::string run( const std::vector<std::string> &command, int exitCode = 0 );

// How often the threads of a process have waited for something so far.
unsigned long waitsOf( pid_t process );

void loadModule( const std::string &name, const std::vector<std::string> &parameters = {} );
// The number of the adapter whose name starts with this. Fails the test when there is none.
unsigned adapterNamed( const std::string &beginning );

// The i2c devices to which a kernel driver is bound, such as 3-004a.
std::vector<std::string> devicesOf( const std::string &driver );

// Binds a kernel driver to an address of an adapter until the destructor.
class KernelDriver {
 public:
   KernelDriver( unsigned adapter, const std::string &type, uint8_t address );
   ~KernelDriver();
   KernelDriver( const KernelDriver & ) = delete;
   KernelDriver &operator=( const KernelDriver & ) = delete;

   // A file of the device, such as eeprom; a number in a file of its hwmon, such as temp1_input.
   std::string file( const std::string &name ) const { return readFile( device_ + "/" + name ); }
   long long hwmon( const std::string &name ) const;
   std::string hwmonFile( const std::string &name ) const { return hwmon_ + "/" + name; }
   // The input with this label.
   long long labelled( const std::string &label ) const;

 private:
   const std::string adapter_;
   const std::string address_;
   const std::string device_;
   std::string hwmon_; // its folder
};

// A chip of the kernel's i2c-stub.
class StubChip {
 public:
   // Works even if a driver holds the address.
   StubChip( unsigned adapter, uint8_t address );
   ~StubChip();
   StubChip( const StubChip & ) = delete;
   StubChip &operator=( const StubChip & ) = delete;

   void byteIs( uint8_t reg, uint8_t value );
   void wordIs( uint8_t reg, uint16_t value ); // low byte first

 private:
   int fd_;
};

} // namespace RealTest
