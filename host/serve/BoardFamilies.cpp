#include "host/serve/BoardFamilies.h"

#include <algorithm>
#include <array>
#include <deque>
#include <fmt/format.h>

namespace Host {
namespace {

using Metrics::Description;
using Metrics::Type;

constexpr size_t metrics = static_cast<size_t>( Metric::Count );
constexpr size_t tellings = static_cast<size_t>( Told::Count );

// In the order of Metric.
constexpr std::array<Description, metrics> ofBoard{ {
   { "orbis_build", Type::Info, "", "The version of the program." },
   { "orbis_board", Type::Info, "", "The board: its folder." },
   { "process_cpu_seconds", Type::Counter, "seconds",
     "Processor time of serve, without the plug-in's process." },
   { "process_resident_memory_bytes", Type::Gauge, "bytes", "Memory of serve." },
   { "process_start_time_seconds", Type::Gauge, "seconds", "When serve started, in Unix time." },
   { "process_open_fds", Type::Gauge, "", "Descriptors that serve has open." },
   { "process_max_fds", Type::Gauge, "", "How many descriptors serve may have open." },
   { "orbis_plug_in_up", Type::Gauge, "", "Whether the plug-in can be used: 0 or 1." },
   { "orbis_plug_in_starts", Type::Counter, "",
     "Starts of the process with the plug-in: one more than it has ended." },
   { "orbis_rounds", Type::Counter, "", "Rounds in which all was read that was due." },
   { "orbis_round_duration_seconds", Type::Gauge, "seconds",
     "How long the last whole round of readings took." },
   { "orbis_http_requests", Type::Counter, "", "Answers to HTTP requests, by their status code." },
   { "orbis_board_level", Type::Gauge, "",
     "How bad the board is: 0 ok, 1 warning, 2 critical, 3 not known." },
   { "orbis_causes", Type::Gauge, "", "How many causes of faults are open, by their level." },
   { "orbis_cause_since_timestamp_seconds", Type::Gauge, "seconds",
     "Each open cause with the Unix time since when it is open." },
   { "orbis_cause_acknowledged", Type::Gauge, "",
     "Whether a person has seen the open cause: 0 or 1." },
   { "orbis_cause_hidden", Type::Gauge, "",
     "Whether another cause hides the open cause, so that nobody knows if it is still there: 0 or "
     "1." },
   { "orbis_object_cause", Type::Info, "",
     "The cause that explains what is wrong with an object." },
   { "orbis_events", Type::Counter, "", "Events since serve started, by kind and level." },
   { "orbis_rule_good_members", Type::Gauge, "", "Members of a rule that are good." },
   { "orbis_rule_unknown_members", Type::Gauge, "",
     "Members of a rule of which nobody knows whether they are good." },
   { "orbis_rule_wanted_members", Type::Gauge, "",
     "With fewer good members than these there is a warning." },
   { "orbis_rule_needed_members", Type::Gauge, "",
     "With fewer good members than these it is critical." },
   { "orbis_object_state", Type::Gauge, "",
     "State of an object: 0 ok, 1 stale, 2 unreadable, 3 absent, 4 unmanaged, 5 unsupported." },
   { "orbis_object_level", Type::Gauge, "",
     "How bad an object is: 0 ok, 1 warning, 2 critical, 3 not known." },
   { "orbis_object_age_seconds", Type::Gauge, "seconds",
     "Time since an object was read; where it can't be read, since the last attempt." },
   { "orbis_present", Type::Gauge, "", "Whether there is a module in a slot or a cage: 0 or 1." },
   { "orbis_value_state", Type::Gauge, "",
     "State of a value where it isn't that of its object, by the same numbers." },
   { "orbis_value_age_seconds", Type::Gauge, "seconds",
     "Time since such a value was read; without a value, since the last attempt." },
   { "orbis_value_level", Type::Gauge, "",
     "How bad a value is, only while it is beyond one of its limits: 1 warning, 2 critical." },
   { "orbis_signal", Type::Gauge, "", "A bit, or a number without a unit." },
   { "orbis_slot", Type::Info, "", "What is in a slot, as the driver describes it." },
   { "orbis_module", Type::Info, "", "What the module in a cage says that it is." },
   { "orbis_bus_transfers", Type::Counter, "", "Transfers on a root bus." },
   { "orbis_bus_failed_transfers", Type::Counter, "", "Transfers that failed." },
   { "orbis_bus_bytes", Type::Counter, "bytes",
     "Bytes on the wires, with addresses and packet error codes." },
   { "orbis_bus_wire_seconds", Type::Counter, "seconds",
     "How long the bits take at the clock of the bus." },
   { "orbis_bus_busy_seconds", Type::Counter, "seconds", "How long the transfers took." },
   { "orbis_bus_errors", Type::Counter, "", "Transfers that failed, by the reason." },
   { "orbis_bus_failed_transactions", Type::Counter, "", "Transactions that failed." },
   { "orbis_bus_transaction_seconds", Type::Histogram, "seconds",
     "Time of a transaction from the request to the answer, known to an eighth." },
   { "orbis_bus_held", Type::Gauge, "",
     "Whether a line of the bus is held, or its transfers run out of time: 0 or 1." },
   { "orbis_bus_accounts_age_seconds", Type::Gauge, "seconds",
     "Time since the server told the figures of the busses." },
} };

static_assert( !ofBoard.back().name.empty() );

constexpr std::array<BaseUnit, 8> units{ {
   { "°C", 1, "temperature", "celsius", "Temperature" },
   { "rpm", 1, "speed", "rpm", "Turns of a rotor in a minute" },
   { "%", 100, "drive", "ratio", "How far a fan or a cooler is driven, of the most" },
   { "V", 1, "voltage", "volts", "Voltage" },
   { "A", 1, "current", "amperes", "Current" },
   { "W", 1, "power", "watts", "Power" },
   { "mA", 1000, "laser_current", "amperes", "Current of a laser or its cooler" },
   { "mW", 1000, "light_power", "watts", "Power of light" },
} };

struct Telling {
   std::string_view infix, help;
};
// In the order of Told.
constexpr std::array<Telling, tellings> ofNumbers{ {
   { "", "" },
   { "_limit", ": each limit of the value. Without a lane it is that of all lanes" },
   { "_lowest", ": the lowest since serve started or the module was plugged" },
   { "_highest", ": the highest since serve started or the module was plugged" },
} };

std::vector<Description> describeAll() {
   static std::deque<std::string> texts; // stay where they are
   std::vector<Description> all( ofBoard.begin(), ofBoard.end() );
   for ( const Telling &telling : ofNumbers )
      for ( const BaseUnit &unit : units ) {
         const std::string &name = texts.emplace_back(
            fmt::format( "orbis_{}{}_{}", unit.name, telling.infix, unit.base ) );
         const std::string &help =
            texts.emplace_back( fmt::format( "{}{}.", unit.what, telling.help ) );
         all.push_back( { name, Type::Gauge, unit.base, help } );
      }
   return all;
}

} // namespace

const BaseUnit *baseUnitOf( std::string_view unit ) {
   const auto found = std::find_if( units.begin(), units.end(),
                                    [unit]( const BaseUnit &one ) { return one.unit == unit; } );
   return found == units.end() ? nullptr : &*found;
}

const std::vector<Description> &BoardFamilies::descriptions() {
   static const std::vector<Description> all = describeAll();
   return all;
}

BoardFamilies::BoardFamilies( Metrics::Format format ) : format_( format ) {
   families_.reserve( descriptions().size() );
   for ( const Description &description : descriptions() )
      families_.emplace_back( description, format );
}

Metrics::Family &BoardFamilies::of( const BaseUnit &unit, Told told ) {
   const auto number = static_cast<size_t>( &unit - units.data() );
   return families_[metrics + static_cast<size_t>( told ) * units.size() + number];
}

} // namespace Host
