#include "simulator/board/ChipKinds.h"

#include "simulator/chips/EMC2305.h"
#include "simulator/chips/FruImage.h"
#include "simulator/chips/LM75.h"
#include "simulator/chips/PCA9506.h"
#include "simulator/chips/PCA9548.h"
#include "simulator/chips/PmbusSupply.h"
#include "simulator/chips/SystemCpld.h"
#include "simulator/chips/XcvrCpld.h"
#include "simulator/chips/modules/CmisModule.h"
#include "simulator/chips/modules/QsfpModule.h"
#include "simulator/chips/modules/SfpModule.h"

#include <algorithm>
#include <stdexcept>

namespace Simulator {

const std::vector<ChipKind> &chipKinds() {
   static const std::vector<ChipKind> kinds{
      lm75Kind(),        pca9548Kind(),  emc2305Kind(),   pca9506Kind(),
      pmbusSupplyKind(), fru24C02Kind(), sfpModuleKind(), qsfpModuleKind(),
      cmisModuleKind(),  qsfpCpldKind(), sfpCpldKind(),   systemCpldKind(),
   };
   return kinds;
}

std::unique_ptr<Chip> makeChip( const BoardFiles::SimulatedChip &entry,
                                const Surroundings &around ) {
   const auto &kinds = chipKinds();
   const auto kind = std::find_if(
      kinds.begin(), kinds.end(), [&]( const ChipKind &each ) { return each.name == entry.kind; } );
   if ( kind == kinds.end() )
      throw BoardFiles::BoardError( entry.place, "there is no kind of chip " + entry.kind );
   try {
      auto chip = kind->make( { entry.name, entry.did, entry.settings, around } );
      chip->presentIs( entry.present );
      return chip;
   } catch ( const std::length_error &error ) {
      throw BoardFiles::BoardError( entry.place, error.what() );
   }
}

} // namespace Simulator
