// The drivers and access methods of the board, by the names in topology and device documents. This
// is the only list of them.
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Drivers/DualFan.h"
#include "OrbisGeneric/Drivers/Dummy.h"
#include "OrbisGeneric/Drivers/EMC2305.h"
#include "OrbisGeneric/Drivers/GenericSmbusMux.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"
#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"
#include "OrbisGeneric/Drivers/LM75.h"
#include "OrbisGeneric/Drivers/Pmbus.h"
#include "OrbisGeneric/Drivers/PsuSlot.h"
#include "OrbisGeneric/Drivers/SmbusProxyDriver.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"

namespace Drivers {

std::map<std::string, DriverFactory> drivers = {
   { "Dummy", Dummy::create },
   { "SmbusProxyDriver", SmbusProxyDriver::create },
   { "PCA9548", GenericSmbusMux::create },
   { "LM75", LM75::create },
   { "Pmbus", Pmbus::create },
   { "KeltQCPLD", KeltQCPLD::create },
   { "KeltSCPLD", KeltSCPLD::create },
   { "PsuSlot", PsuSlot::create },
   { "KeltPCA9506", KeltPCA9506::create },
   { "EMC2305", EMC2305::create },
   { "DualFan", DualFan::create },
};

} // namespace Drivers

namespace Ham {

std::map<std::string, HamFactory> hams = {
   { "OrbisSmbus", OrbisSmbusHam::create },
};

} // namespace Ham
