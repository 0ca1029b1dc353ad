#include "boardfiles/ArgumentCheck.h"

#include "boardfiles/Json.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>

namespace BoardFiles {
namespace {

using rapidjson::Value;

// The number that a driver will read from an argument: a JSON number, or its decimal text.
template <class Number>
std::optional<double> numberIn( const Value &value ) {
   if ( value.IsInt() || ( std::is_floating_point_v<Number> && value.IsNumber() ) )
      return value.GetDouble();
   const auto text = Json::toText( &value );
   Number number{};
   if ( !text )
      return {};
   const auto [end, failure] = std::from_chars( text->data(), text->data() + text->size(), number );
   if ( failure != std::errc() || end != text->data() + text->size() )
      return {};
   return static_cast<double>( number );
}

// What is wrong with an argument's value; empty when nothing is.
std::string fault( const Value &value, const ArgumentRule &rule ) {
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
      const auto text = Json::toText( &value );
      if ( !value.IsBool() && text != "true" && text != "false" )
         return "must be true or false";
   } else if ( rule.type == "text" ) {
      const auto text = Json::toText( &value );
      if ( !text )
         return "must be a text";
      if ( !rule.choices.empty() &&
           std::find( rule.choices.begin(), rule.choices.end(), *text ) == rule.choices.end() )
         return fmt::format( "\"{}\" is none of {}", *text, fmt::join( rule.choices, ", " ) );
      for ( const std::string &part : rule.holds )
         if ( text->find( part ) == std::string_view::npos )
            return fmt::format( "\"{}\" is missing in it", part );
   }
   return {};
}

class ArgumentCheck {
 public:
   ArgumentCheck( const Value *args, const Place &device, Findings &findings )
      : args_( args ), device_( device ), findings_( findings ) {}

   // An argument that was judged by one set of rules is not judged again by another.
   void take( const ArgumentRules &rules, const ArgumentRules &unless ) {
      for ( const auto &[name, rule] : rules ) {
         if ( unless.contains( name ) )
            continue;
         const Value *value = Json::find( args_, name.c_str() );
         if ( !value && rule.required )
            report( findings_, device_, fmt::format( "driver argument \"{}\" is missing", name ) );
         if ( !value )
            continue;
         known_.insert( name );
         if ( const std::string reason = fault( *value, rule ); !reason.empty() )
            report( findings_, at( name ), reason );
      }
   }

   void takeNumbered( const ArgumentRules &names ) {
      for ( unsigned number = 1;; ++number ) {
         std::vector<std::string> missing;
         for ( const auto &[name, rule] : names ) {
            const std::string key = fmt::format( "{}{}", name, number );
            const Value *value = Json::find( args_, key.c_str() );
            if ( !value )
               missing.push_back( key );
            else if ( const std::string reason = fault( *value, rule ); !reason.empty() )
               report( findings_, at( key ), reason );
            known_.insert( key );
         }
         if ( number > 1 && missing.size() == names.size() )
            return;
         for ( const std::string &key : missing )
            report( findings_, device_, fmt::format( "driver argument \"{}\" is missing", key ) );
         if ( missing.size() == names.size() )
            return;
      }
   }

   void refuseOthers() {
      for ( const auto &[name, value] : Json::members( args_ ) )
         if ( !known_.contains( name.GetString() ) )
            report( findings_, at( name.GetString() ), "is no argument of this driver" );
   }

   // The rules of the case that the argument "by" names.
   const ArgumentRules &caseOf( const KindRule &kind ) {
      static const ArgumentRules none;
      if ( kind.by.empty() )
         return none;
      ArgumentRule rule{ .type = "text", .required = true };
      for ( const auto &[name, rules] : kind.cases )
         rule.choices.push_back( name );
      take( { { kind.by, rule } }, {} );
      const auto text = Json::toText( Json::find( args_, kind.by.c_str() ) );
      const auto found = text ? kind.cases.find( *text ) : kind.cases.end();
      return found == kind.cases.end() ? none : found->second;
   }

 private:
   Place at( const std::string &name ) const { return device_ / "driverArgs" / name; }

   const Value *args_;
   const Place &device_;
   Findings &findings_;
   std::set<std::string> known_;
};

} // namespace

void checkArguments( const Value *driverArgs, const DriverRule &driver, const KindRule &kind,
                     const Place &device, Findings &findings ) {
   ArgumentCheck check( driverArgs, device, findings );
   const ArgumentRules &ofCase = check.caseOf( kind );
   check.take( ofCase, {} );
   check.take( kind.args, {} );
   ArgumentRules judged = kind.args;
   judged.insert( ofCase.begin(), ofCase.end() );
   if ( !kind.by.empty() )
      judged[kind.by] = {};
   check.take( driver.args, judged );
   for ( const auto &names : kind.numbered )
      check.takeNumbered( names );
   // Where the case is not known, neither is which arguments belong to it.
   if ( kind.by.empty() || !ofCase.empty() )
      check.refuseOthers();
}

} // namespace BoardFiles
