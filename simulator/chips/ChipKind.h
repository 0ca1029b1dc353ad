// What simulation.json can say of one kind of chip, and how a chip is made of it. The schema of
// simulation.json is written from these descriptions.
#pragma once

#include "boardfiles/Json.h"
#include "simulator/chips/Chip.h"
#include "smbus/Clock.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Simulator {

// A key of a chip's entry, or an element of a list.
struct EntryKey {
   enum class Type { Number, Integer, Text, Choice, List, Object };

   std::string key{}; // empty for the element of a list
   std::string description{};
   Type type = Type::Number;
   double least = 0; // of a number
   double most = 0;
   unsigned maxLength = 0; // of a text, in bytes
   unsigned minItems = 0;  // of a list
   unsigned maxItems = 0;  // 0: any number
   std::vector<std::string> choices{};
   std::vector<EntryKey> parts{}; // the one element of a list, the keys of an object
   bool required = true;

   EntryKey optional() const {
      EntryKey changed = *this;
      changed.required = false;
      return changed;
   }
};

EntryKey number( std::string key, std::string description, double least, double most );
EntryKey integer( std::string key, std::string description, double least, double most );
EntryKey text( std::string key, std::string description, unsigned maxLength );
EntryKey choice( std::string key, std::string description, std::vector<std::string> choices );
EntryKey list( std::string key, std::string description, EntryKey element, unsigned minItems = 0,
               unsigned maxItems = 0 );
EntryKey object( std::string key, std::string description, std::vector<EntryKey> keys );

// What a chip finds on the board; all of it outlives the chip.
struct Surroundings {
   const Bus::Clock &clock;
   uint64_t seed = 0;
   uint8_t address = 0;
   std::function<void()> powerCycle{};
   std::function<void()> powerOff{};
};

// An entry of simulation.json that its schema has let pass, and the chip's surroundings.
class ChipEntry {
 public:
   ChipEntry( std::string name, uint32_t did, const BoardFiles::Json &settings,
              const Surroundings &surroundings )
      : around( surroundings ), name_( std::move( name ) ), did_( did ), settings_( settings ) {}

   const std::string &name() const { return name_; }
   uint32_t did() const { return did_; }
   const BoardFiles::Json *find( std::string_view key ) const { return settings_.find( key ); }
   double number( std::string_view key ) const { return *settings_.numberOf( key ); }
   double number( std::string_view key, double otherwise ) const {
      return settings_.numberOf( key ).value_or( otherwise );
   }
   std::string text( std::string_view key ) const { return *settings_.textOf( key ); }
   std::string text( std::string_view key, std::string otherwise ) const {
      return settings_.textOf( key ).value_or( std::move( otherwise ) );
   }
   std::vector<unsigned> numbers( std::string_view key ) const; // of a list; none without it

   const Surroundings &around;

 private:
   const std::string name_;
   const uint32_t did_;
   const BoardFiles::Json &settings_;
};

struct ChipKind {
   std::string name{}; // "chip" in simulation.json
   std::string description{};
   std::vector<EntryKey> settings{};
   // Regular expressions for the names of the quantities that can be set.
   std::vector<std::string> settable{};
   bool isMultiplexer = false;
   // Throws std::length_error for texts that the chip has no room for.
   std::function<std::unique_ptr<Chip>( const ChipEntry & )> make{};
};

} // namespace Simulator
