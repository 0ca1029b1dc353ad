#include "OrbisGeneric/Drivers/DualFan.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Record.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"

#include <cmath>
#include <cstdlib>
#include <locale.h>

namespace Drivers {

namespace {

constexpr uint8_t forgivenFaults = 9;

// The text has a decimal point in every host, whatever its locale.
float fractionOf( const std::string &text ) {
   static const locale_t classic = newlocale( LC_ALL_MASK, "C", nullptr );
   return static_cast<float>( strtod_l( text.c_str(), nullptr, classic ) );
}

} // namespace

Component::MultiDevice *DualFan::create( const DriverArgs &, Ham::Ham * ) {
   PL_TRACE( 0, "Creating DualFan Device" );
   return new DualFan;
}

Component::LogicalDevice::Fan *DualFan::newFan( const DriverArgs &args ) {
   PL_TRACE( 5, "Creating new DualFan Fan" );
   auto fanIt = args.driverArgs.find( "fanId" );
   assert( fanIt != args.driverArgs.end() );
   auto rpmIt = args.driverArgs.find( "maxRpm" );
   assert( rpmIt != args.driverArgs.end() );
   auto diffIt = args.driverArgs.find( "maxDiff" );
   assert( diffIt != args.driverArgs.end() );
   const int fanId = std::stoi( fanIt->second );
   const int maxRpm = std::stoi( rpmIt->second );
   const float maxDiff = fractionOf( diffIt->second );
   PL_TRACE( 5, "new DualFan id=%d, rpm=%d, maxDiff=%f", fanId, maxRpm,
             static_cast<double>( maxDiff ) );
   assert( fanId >= 1 && fanId <= 5 );
   pl_fan *inlet = addFan( "inlet" );
   pl_fan *outlet = addFan( "outlet" );
   assert( inlet );
   assert( outlet );
   using Rotor = Component::LogicalDevice::Fan;
   using Component::LogicalDevice::objectOf;
   return new Fan( this, static_cast<uint8_t>( fanId - 1 ), maxRpm, maxDiff,
                   objectOf<Rotor>( inlet ), objectOf<Rotor>( outlet ) );
}

pl_status DualFan::getFanRpm( Fan *fan, int *rpm ) {
   int inlet = 0, outlet = 0;
   if ( pl_status status = fan->getInletRpm( &inlet ) )
      return status;
   if ( pl_status status = fan->getOutletRpm( &outlet ) )
      return status;
   const int mean = ( inlet + outlet ) / 2;
   // The product has single precision, the fraction's own: 9500 rpm and 0.1 are 950 rpm. It is cut
   // to whole rpm without a cast, since a large fraction gives more than an int can hold.
   const double tolerance = truncf( static_cast<float>( mean ) * fan->maxDiff );
   const bool good = inlet >= outlet && inlet <= mean + tolerance && outlet >= mean - tolerance;
   if ( !good && fan->faults_ >= forgivenFaults ) {
      if ( inlet < outlet )
         PL_TRACE( 0, "Fan %d failure: inlet speed < outlet speed %d %d", fan->id_, inlet, outlet );
      else // traces the allowed fraction, not the measured one
         PL_TRACE( 0, "Fan %d failure: excessive speed difference %f %d %d", fan->id_,
                   static_cast<double>( fan->maxDiff ), inlet, outlet );
      return PL_STATUS_DEVICE_FAULT;
   }
   fan->faults_ = good ? 0 : static_cast<uint8_t>( fan->faults_ + 1 );
   *rpm = mean;
   PL_TRACE( 5, "DualFan::getRpm id=%d inputRpm=%d, outputRpm=%d, rpm=%d", fan->id_, inlet, outlet,
             mean );
   return PL_STATUS_OK;
}

pl_status DualFan::setFanRpm( Fan *fan, int rpm ) {
   PL_TRACE( 5, "DualFan::setFanRpm id=%d, rpm=%d", fan->id_, rpm );
   if ( pl_status status = fan->setInletRpm( rpm ) ) {
      PL_TRACE( 0, "Error status %d setting inlet fan %d RPM", status, fan->id_ );
      return status;
   }
   if ( pl_status status = fan->setOutletRpm( rpm ) ) {
      PL_TRACE( 0, "Error status %d setting outlet fan %d RPM", status, fan->id_ );
      return status;
   }
   return PL_STATUS_OK;
}

} // namespace Drivers
