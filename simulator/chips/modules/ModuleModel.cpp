#include "simulator/chips/modules/ModuleModel.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr std::chrono::seconds ofModuleHeat( 90 );
constexpr double heatResolution = 0.01; // degrees
constexpr double biasShareADegree = 0.006;
constexpr double mostBias = 1.8; // of the laser driver, as a share of a new laser's
constexpr double differenceOfLanes = 0.04;

} // namespace

double ratioOf( double decibels ) { return std::pow( 10, decibels / 10 ); }

ModuleModel::ModuleModel( const Bus::Clock &clock, const Optics &optics, uint64_t seed )
   : clock_( clock ), optics_( optics ), supply_( 3.3 + 0.04 * randomShare( seed, 1 ) ),
     heat_( clock, ofModuleHeat, heatResolution ),
     celsiusDrift_( 0.6, std::chrono::seconds( 40 ), seed ^ uint64_t{ 1 } << 56 ),
     voltsDrift_( 0.004, std::chrono::seconds( 15 ), seed ^ uint64_t{ 2 } << 56 ) {
   heat_.valueIs( optics.heat );
   for ( uint64_t i = 0; i < lanes_.size(); ++i ) {
      const auto differing = [&]( double usual, uint64_t what ) {
         return usual * ( 1 + differenceOfLanes * randomShare( seed, 10 * i + what ) );
      };
      Lane &lane = lanes_[i];
      lane.bias = differing( optics.bias, 2 );
      lane.txPower = differing( optics.txPower, 3 );
      lane.arriving = differing( optics.rxPower, 4 );
      lane.txDrift = Drift( 0.01, std::chrono::seconds( 25 ), seed ^ ( 16 + i ) << 56 );
      lane.rxDrift = Drift( 0.03, std::chrono::seconds( 20 ), seed ^ ( 32 + i ) << 56 );
   }
}

double ModuleModel::celsius() const {
   return ambient_ + heat_.value() + celsiusDrift_.at( clock_.now() );
}

double ModuleModel::volts() const { return supply_ + voltsDrift_.at( clock_.now() ); }

ModuleModel::Laser ModuleModel::laser( unsigned lane, double celsius ) const {
   const Lane &its = lanes_[lane];
   const double warm = 1 + biasShareADegree * ( celsius - 45 );
   const double needed = its.bias * warm / std::max( 1 - its.age, 1e-6 );
   const double most = optics_.bias * mostBias;
   return { std::clamp( needed, 0.0, most ),
            its.txPower * std::min( 1.0, most / needed ) * ( 1 + its.txDrift.at( clock_.now() ) ) };
}

double ModuleModel::arriving( unsigned lane ) const {
   return lanes_[lane].arriving * ( 1 + lanes_[lane].rxDrift.at( clock_.now() ) );
}

double ModuleModel::received( unsigned lane, double milliwatts ) const {
   const double attenuation = lanes_[lane].attenuation;
   return attenuation == 0 ? milliwatts : milliwatts * ratioOf( -attenuation );
}

} // namespace Simulator
