// What the tests ask of the Linux that they run on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace RealTest {

std::string readFile( const std::string &path ); // without the newline at its end
void writeFile( const std::string &path, const std::string &text );

// What a program prints, errors too. Fails the test when its exit code is another.
std::string run( const std::vector<std::string> &command, int exitCode = 0 );

void loadModule( const std::string &name, const std::vector<std::string> &parameters = {} );
// The number of the adapter whose name begins so. Fails the test when there is none.
unsigned adapterNamed( const std::string &beginning );

// What a kernel driver of i2c devices has bound to: 3-004a and its like.
std::vector<std::string> devicesOf( const std::string &driver );

// A kernel driver on one address of an adapter, as long as this object lives.
class KernelDriver {
 public:
   KernelDriver( unsigned adapter, const std::string &type, uint8_t address );
   ~KernelDriver();
   KernelDriver( const KernelDriver & ) = delete;
   KernelDriver &operator=( const KernelDriver & ) = delete;

   // A file of the device's, like eeprom; of its hwmon's, like temp1_input, as a number.
   std::string file( const std::string &name ) const { return readFile( device_ + "/" + name ); }
   long long hwmon( const std::string &name ) const;
   // The input whose label this is.
   long long labelled( const std::string &label ) const;

 private:
   const std::string adapter_;
   const std::string address_;
   const std::string device_;
   std::string hwmon_; // its folder
};

// A chip that the kernel's i2c-stub stands for, as the bench fills it.
class StubChip {
 public:
   // Whatever holds the address.
   StubChip( unsigned adapter, uint8_t address );
   ~StubChip();
   StubChip( const StubChip & ) = delete;
   StubChip &operator=( const StubChip & ) = delete;

   void byteIs( uint8_t reg, uint8_t value );
   void wordIs( uint8_t reg, uint16_t value ); // the low byte goes first

 private:
   int fd_;
};

} // namespace RealTest
