// A transceiver module as its memory describes it. Nothing here knows where the bytes came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Optics {

enum class Standard : uint8_t { Sff8472, Sff8636, Cmis };

// A number from one of the standards' tables. A reserved one has a name that says so.
struct Code {
   uint8_t number = 0;
   std::string name{};

   bool operator==( const Code & ) const = default;
};

enum class Quantity : uint8_t {
   Temperature,      // degrees Celsius
   SupplyVoltage,    // V
   TxBias,           // mA
   TxPower,          // mW
   RxPower,          // mW
   LaserTemperature, // degrees Celsius
   TecCurrent,       // mA in SFF-8472, percent of the most in CMIS
   SecondVoltage,    // V
};

// Of one monitor, in its unit; nothing where the module has none or it wasn't read.
struct Thresholds {
   std::optional<double> highAlarm{}, lowAlarm{}, highWarning{}, lowWarning{};

   bool operator==( const Thresholds & ) const = default;
};

// What the module itself says of the thresholds. In SFF-8636 and CMIS a flag stays until it is
// read.
struct ThresholdFlags {
   std::optional<bool> highAlarm{}, lowAlarm{}, highWarning{}, lowWarning{};

   bool operator==( const ThresholdFlags & ) const = default;
};

// A monitor that the module has.
struct Monitor {
   Quantity quantity{};
   unsigned lane = 0; // from 1; 0 is the module
   std::string unit{};
   std::optional<double> value{}; // nothing while it isn't known, a finding says why
   Thresholds thresholds{};
   ThresholdFlags flags{};
};

// What a lane tells beside its monitors; nothing where the module doesn't tell it. An SFP has one
// lane. In CMIS a lane that the fibre lacks has no monitors, and tells the host's side alone.
struct Lane {
   unsigned number = 1;
   std::optional<bool> rxLos{}, txLos{}; // no light; no signal from the host
   std::optional<bool> txFault{};
   std::optional<bool> rxLossOfLock{}, txLossOfLock{}; // of the clock recovery
   std::optional<bool> txEqualizerFault{};
   std::optional<bool> txDisabled{}, rxDisabled{};
   std::optional<bool> txOutputValid{}, rxOutputValid{};
   std::optional<Code> dataPathState{};   // CMIS
   std::optional<Code> configuration{};   // CMIS: how the last change went
   std::optional<unsigned> application{}; // CMIS: of the active set; 0 is none
};

// CMIS: one way to use the module.
struct Application {
   unsigned number = 1;
   Code host{}, media{};
   unsigned hostLanes = 0, mediaLanes = 0;
   uint8_t hostStarts = 0; // bit n: may start at lane n + 1
   std::optional<uint8_t> mediaStarts{};
};

struct Length {
   std::string medium; // "OM3", "single mode", "copper", "cable"
   double metres = 0;
   bool orMore = false; // the byte is 255
};

struct Checksum {
   std::string name; // "CC_BASE"
   uint8_t found = 0, computed = 0;
   std::string covers{}; // "the options, the serial number and the date"

   bool isRight() const { return found == computed; }
};

// Texts have no padding, and what is no printable ASCII in them is escaped: "\xff".
struct Module {
   Standard standard{};
   std::string revision{}; // of the standard: "8472 12.4", "CMIS 5.2"
   Code identifier{};
   std::string vendor{}, oui{}, partNumber{}, vendorRevision{}, serial{};
   std::string dateCode{};    // as it stands there
   std::string date{}, lot{}; // "2024-02-02"; empty if the code is no date
   std::string clei{};
   std::optional<Code> connector{}, encoding{}, extendedCompliance{}, technology{}, mediaType{},
      rateIdentifier{};
   std::vector<std::string> compliance{}; // what the bits of the compliance codes stand for
   std::vector<std::string> options{};    // what the module can do
   std::optional<double> bitRate{};       // nominal, in MBd
   std::optional<double> wavelength{}, wavelengthTolerance{}; // nm
   std::vector<Length> lengths{};
   struct Attenuation {
      double gigahertz;
      double decibel;
   };
   std::vector<Attenuation> attenuations{}; // of a copper cable
   std::optional<unsigned> powerClass{};
   std::optional<double> maximumPower{};                             // W
   std::optional<double> maximumTemperature{}, minimumTemperature{}; // of the case
   std::string firmware{}, hardware{};                               // "1.2"

   bool hasDiagnostics = false; // it has monitors
   bool isExternallyCalibrated = false;
   std::optional<bool> rxPowerIsAverage{}; // otherwise OMA
   bool isFlat = true;                     // no pages above the first
   std::optional<bool> isReady{};          // its data are valid
   std::optional<bool> interrupts{};
   std::optional<Code> state{}; // CMIS: of the module
   std::optional<Code> faultCause{};
   std::optional<bool> isLowPower{};

   std::vector<Monitor> monitors{}; // of the module, then lane by lane of each quantity
   std::vector<Lane> lanes{};
   std::vector<Application> applications{};
   std::vector<std::string> flags{}; // set flags that belong to no monitor and no lane
   std::vector<Checksum> checksums{};
   // What is wrong or missing in the memory, a sentence each: "A2h was not read".
   std::vector<std::string> findings{};
};

} // namespace Optics
