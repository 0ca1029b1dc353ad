#include "boardfiles/ArgumentCheck.h"

#include "boardfiles/Nearest.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <limits>
#include <set>

namespace BoardFiles {
namespace {

// The number that a driver will read from an argument: a JSON number, or its decimal text.
template <class Number>
std::optional<double> numberIn( const Json &value ) {
   if ( const auto number = value.toNumber() ) {
      const bool fits = std::is_floating_point_v<Number> ||
                        ( value.isInteger() && *number >= std::numeric_limits<int>::min() &&
                          *number <= std::numeric_limits<int>::max() );
      return fits ? number : std::nullopt;
   }
   const auto text = value.toText();
   Number number{};
   if ( !text )
      return {};
   const auto [end, failure] = std::from_chars( text->data(), text->data() + text->size(), number );
   if ( failure != std::errc() || end != text->data() + text->size() )
      return {};
   return static_cast<double>( number );
}

// What is wrong with an argument's value; empty when nothing is.
std::string fault( const Json &value, const ArgumentRule &rule ) {
   if ( rule.type == "integer" || rule.type == "number" ) {
      const auto number =
         rule.type == "integer" ? numberIn<int>( value ) : numberIn<double>( value );
      if ( !number || !std::isfinite( *number ) )
         return fmt::format( "must be {}, or its decimal text",
                             rule.type == "integer" ? "a 32-bit integer" : "a number" );
      if ( number < rule.minimum )
         return fmt::format( "{} is less than {}", *number, *rule.minimum );
      if ( rule.maximum && number > rule.maximum )
         return fmt::format( "{} is more than {}", *number, *rule.maximum );
   } else if ( rule.type == "boolean" ) {
      const auto text = value.toText();
      if ( value.type() != Json::Type::Bool && text != "true" && text != "false" )
         return "must be true or false";
   } else if ( rule.type == "text" ) {
      const auto text = value.toText();
      if ( !text )
         return "must be a text";
      if ( !rule.choices.empty() &&
           std::find( rule.choices.begin(), rule.choices.end(), *text ) == rule.choices.end() )
         return fmt::format( "\"{}\" is none of {}{}", *text, fmt::join( rule.choices, ", " ),
                             didYouMean( *text, rule.choices ) );
      for ( const std::string &part : rule.holds )
         if ( text->find( part ) == std::string_view::npos )
            return fmt::format( "does not have \"{}\" in it", part );
   }
   return {};
}

class ArgumentCheck {
 public:
   ArgumentCheck( const DeviceDocument &device, Findings &findings )
      : device_( device ), findings_( findings ) {}

   // An argument that was checked against one set of rules is not checked again against another.
   void check( const ArgumentRules &rules, const ArgumentRules &unless ) {
      for ( const auto &[name, rule] : rules ) {
         if ( unless.contains( name ) )
            continue;
         const Json *value = find( name );
         if ( !value && rule.required )
            report( findings_, device_.place,
                    fmt::format( "driver argument \"{}\" is missing", name ) );
         if ( !value ) {
            absent_.push_back( name );
            continue;
         }
         known_.insert( name );
         if ( const std::string reason = fault( *value, rule ); !reason.empty() )
            report( findings_, value->place(), reason );
      }
   }

   void checkNumbered( const ArgumentRules &names ) {
      for ( unsigned number = 1;; ++number ) {
         std::vector<std::string> missing;
         for ( const auto &[name, rule] : names ) {
            const std::string key = fmt::format( "{}{}", name, number );
            const Json *value = find( key );
            if ( !value ) {
               missing.push_back( key );
               absent_.push_back( key );
            } else if ( const std::string reason = fault( *value, rule ); !reason.empty() ) {
               report( findings_, value->place(), reason );
            }
            known_.insert( key );
         }
         if ( number > 1 && missing.size() == names.size() )
            return;
         for ( const std::string &key : missing )
            report( findings_, device_.place,
                    fmt::format( "driver argument \"{}\" is missing", key ) );
         if ( missing.size() == names.size() )
            return;
      }
   }

   void refuseOthers() {
      if ( !device_.driverArgs )
         return;
      for ( const Json::Member &argument : device_.driverArgs->members() ) {
         if ( !known_.contains( argument.key ) )
            report( findings_, argument.place,
                    fmt::format( "\"{}\" is not an argument of this driver{}", argument.key,
                                 didYouMean( argument.key, absent_ ) ) );
      }
   }

   // The rules of the case that the argument "by" names.
   const ArgumentRules &caseOf( const KindRule &kind ) {
      static const ArgumentRules none;
      if ( kind.by.empty() )
         return none;
      ArgumentRule rule{ .type = "text", .required = true };
      for ( const auto &[name, rules] : kind.cases )
         rule.choices.push_back( name );
      check( { { kind.by, rule } }, {} );
      const Json *named = find( kind.by );
      const auto text = named ? named->toText() : std::nullopt;
      const auto found = text ? kind.cases.find( *text ) : kind.cases.end();
      return found == kind.cases.end() ? none : found->second;
   }

 private:
   const Json *find( const std::string &name ) const { return device_.argument( name ); }
   const DeviceDocument &device_;
   Findings &findings_;
   std::set<std::string> known_;
   std::vector<std::string> absent_; // known to the driver, and not there
};

} // namespace

void checkArguments( const DeviceDocument &device, const DriverRule &driver, const KindRule &kind,
                     Findings &findings ) {
   ArgumentCheck check( device, findings );
   const ArgumentRules &ofCase = check.caseOf( kind );
   check.check( ofCase, {} );
   check.check( kind.args, {} );
   ArgumentRules checked = kind.args;
   checked.insert( ofCase.begin(), ofCase.end() );
   if ( !kind.by.empty() )
      checked[kind.by] = {};
   check.check( driver.args, checked );
   for ( const auto &names : kind.numbered )
      check.checkNumbered( names );
   // Where the case is not known, neither is which arguments belong to it.
   if ( kind.by.empty() || !ofCase.empty() )
      check.refuseOthers();
}

} // namespace BoardFiles
