#include "boardfiles/ObjectsFile.h"

#include "boardfiles/Nearest.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <map>
#include <set>

namespace BoardFiles {

namespace {

BoardObject objectIn( const Json &json, Findings &findings ) {
   const auto placeOf = [&json]( const char *key ) {
      const Json *value = json.find( key );
      return value ? value->place() : json.place();
   };
   BoardObject object{ .name = json.textOf( "name" ).value_or( "" ), .place = json.place() };
   if ( const auto type = json.textOf( "type" ) )
      object.kind = kindOf( *type );
   if ( const Json *device = json.find( "device" ) )
      object.device = deviceDocument( *device );
   object.label = json.textOf( "label" );
   object.labelPlace = placeOf( "label" );
   if ( const auto value = json.unsignedOf( "value" ) )
      object.value = static_cast<uint8_t>( *value );
   object.valuePlace = placeOf( "value" );
   object.reads = json.textOf( "reads" ).value_or( "" );
   for ( const Json &label : json.elementsOf( "module" ) ) {
      object.module.emplace_back( label.toText().value_or( "" ) );
      object.modulePlaces.push_back( label.place() );
   }
   object.alert = json.numberOf( "alert" );
   object.critical = json.numberOf( "critical" );
   object.health = healthKeysIn( json, object.kind, findings );
   return object;
}

void check( const BoardObject &object, Findings &findings ) {
   if ( object.alert && object.critical && *object.alert > *object.critical )
      report( findings, object.place,
              fmt::format( "\"alert\" ({}) is above \"critical\" ({})", *object.alert,
                           *object.critical ) );
   if ( const auto own = object.health.limits.find( "temperature" );
        object.alert && own != object.health.limits.end() &&
        ( own->second.highWarning || own->second.highCritical ) )
      report( findings, object.place,
              "the high limits of a temperature are \"alert\" and \"critical\", not "
              "\"high_warning\" and \"high_critical\"" );
   if ( !object.module.empty() && object.kind != Kind::Xcvr )
      report( findings, object.modulePlaces.front(),
              "\"module\" has a meaning for objects of type \"xcvr\" only" );
   if ( object.kind == Kind::Xcvr && object.module.empty() && !object.health.limits.empty() )
      report( findings, object.place,
              "\"limits\" of a cage are those of its \"module\", which is missing" );
   if ( object.kind != Kind::Smbus )
      return;
   if ( object.device.has_value() == object.label.has_value() )
      report( findings, object.place, "must have either \"device\" or \"label\"" );
   else if ( object.label && !object.value )
      report( findings, object.place, "\"value\" is missing beside \"label\"" );
   else if ( !object.label && object.value )
      report( findings, object.valuePlace, "\"value\" has a meaning beside \"label\" only" );
}

// What objects and rules say of other objects.
class Relations {
 public:
   Relations( const ObjectsFile &file, Findings &findings ) : file_( file ), findings_( findings ) {
      for ( const BoardObject &object : file.objects ) {
         objects_[object.name] = &object;
         names_.push_back( object.name );
      }
   }

   void check() {
      for ( const BoardObject &object : file_.objects ) {
         const HealthKeys &health = object.health;
         if ( health.in && exists( *health.in, health.inPlace ) && isOnItself( object ) )
            report( findings_, health.inPlace,
                    fmt::format( "\"{}\" is on \"{}\" itself", *health.in, object.name ) );
         if ( health.follows && exists( health.follows->fan, health.follows->fanPlace ) &&
              objects_[health.follows->fan]->kind != Kind::Fan )
            report( findings_, health.follows->fanPlace,
                    fmt::format( "\"{}\" is no fan", health.follows->fan ) );
      }
      for ( const BoardRule &rule : file_.rules )
         check( rule );
   }

 private:
   bool exists( const std::string &name, const Place &place ) {
      if ( objects_.contains( name ) )
         return true;
      report( findings_, place,
              fmt::format( "no object is named \"{}\"{}", name, didYouMean( name, names_ ) ) );
      return false;
   }

   bool isOnItself( const BoardObject &object ) const {
      const BoardObject *on = &object;
      for ( size_t step = 0; step <= file_.objects.size(); ++step ) {
         const auto next = on->health.in ? objects_.find( *on->health.in ) : objects_.end();
         if ( next == objects_.end() )
            return false;
         on = next->second;
         if ( on == &object )
            return true;
      }
      return false; // one of those that it is on is on itself, and told so
   }

   void check( const BoardRule &rule ) {
      for ( size_t i = 0; i < rule.members.size(); ++i )
         exists( rule.members[i], rule.memberPlaces[i] );
      if ( rule.same.empty() && rule.wanted == 0 )
         report( findings_, rule.place, "has neither \"wanted\" nor \"same\"" );
      if ( !rule.same.empty() && rule.wanted > 0 )
         report( findings_, rule.place, "has both \"wanted\" and \"same\": make two rules of it" );
      if ( rule.wanted > rule.members.size() )
         report( findings_, rule.place,
                 fmt::format( "\"wanted\" is {}, but it has {} members", rule.wanted,
                              rule.members.size() ) );
      if ( rule.needed > rule.wanted )
         report(
            findings_, rule.place,
            fmt::format( "\"needed\" ({}) is above \"wanted\" ({})", rule.needed, rule.wanted ) );
   }

   const ObjectsFile &file_;
   Findings &findings_;
   std::map<std::string, const BoardObject *> objects_;
   std::vector<std::string> names_;
};

} // namespace

std::string moduleNameOf( const std::string &cage ) { return cage + "-module"; }

std::optional<ObjectsFile> readObjects( const std::filesystem::path &path, Findings &findings ) {
   static const Schema schema( objectsSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   schema.check( *json, findings );
   ObjectsFile file;
   std::set<std::string> names;
   for ( const Json &element : json->elements() ) {
      const std::string name = element.textOf( "name" ).value_or( "" );
      if ( !name.empty() && !names.insert( name ).second )
         report( findings, element.find( "name" )->place(), "another object has this name" );
      if ( element.textOf( "type" ) == "rule" ) {
         file.rules.push_back( ruleIn( element ) );
         continue;
      }
      file.objects.push_back( objectIn( element, findings ) );
      check( file.objects.back(), findings );
   }
   for ( const BoardObject &object : file.objects )
      if ( !object.module.empty() && !names.insert( moduleNameOf( object.name ) ).second )
         report( findings, object.modulePlaces.front(),
                 fmt::format( "another object has the name \"{}\", which the module gets",
                              moduleNameOf( object.name ) ) );
   Relations( file, findings ).check();
   return file;
}

} // namespace BoardFiles
