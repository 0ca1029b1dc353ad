#include "boardfiles/DriverTable.h"

#include "boardfiles/Json.h"
#include "boardfiles/Schema.h"

namespace BoardFiles {
namespace {

using rapidjson::Value;

std::vector<std::string> textsOf( const Value *list ) {
   std::vector<std::string> texts;
   for ( const Value &text : Json::elements( list ) )
      texts.emplace_back( text.GetString(), text.GetStringLength() );
   return texts;
}

std::optional<double> numberOf( const Value *value ) {
   return value ? std::optional( value->GetDouble() ) : std::nullopt;
}

ArgumentRules argumentsOf( const Value *json ) {
   ArgumentRules rules;
   for ( const auto &[name, rule] : Json::members( json ) )
      rules[name.GetString()] = { .type = Json::find( &rule, "type" )->GetString(),
                                  .required = Json::isTrue( Json::find( &rule, "required" ) ),
                                  .minimum = numberOf( Json::find( &rule, "minimum" ) ),
                                  .maximum = numberOf( Json::find( &rule, "maximum" ) ),
                                  .choices = textsOf( Json::find( &rule, "enum" ) ),
                                  .holds = textsOf( Json::find( &rule, "holds" ) ) };
   return rules;
}

KindRule ruleOf( const Value &json ) {
   KindRule rule{ .args = argumentsOf( Json::find( &json, "args" ) ) };
   for ( const Value &group : Json::elements( Json::find( &json, "numbered" ) ) )
      rule.numbered.push_back( argumentsOf( &group ) );
   rule.by = Json::textOf( json, "by" );
   rule.fullScale = Json::textOf( json, "fullScale" );
   for ( const auto &[name, args] : Json::members( Json::find( &json, "cases" ) ) )
      rule.cases[name.GetString()] = argumentsOf( &args );
   for ( const auto &[key, kind] : Json::members( Json::find( &json, "nested" ) ) )
      rule.nested[key.GetString()] = kind.GetString();
   return rule;
}

Variant variantOf( const Value &json ) {
   Variant variant{ .argument = Json::textOf( json, "argument" ),
                    .kinds = textsOf( Json::find( &json, "kinds" ) ) };
   if ( const auto is = Json::toText( Json::find( &json, "is" ) ) )
      variant.is = *is;
   return variant;
}

DriverRule driverOf( const Value &json, const Value *everySingleDevice ) {
   DriverRule rule{ .isMultiDevice = Json::isTrue( Json::find( &json, "isMultiDevice" ) ),
                    .args = argumentsOf( Json::find( &json, "args" ) ) };
   for ( const auto &[kind, wants] : Json::members( Json::find( &json, "makes" ) ) )
      rule.makes[kind.GetString()] = ruleOf( wants );
   if ( !rule.isMultiDevice )
      for ( const auto &[kind, wants] : Json::members( everySingleDevice ) )
         rule.makes.emplace( kind.GetString(), ruleOf( wants ) );
   for ( const Value &variant : Json::elements( Json::find( &json, "variants" ) ) )
      rule.variants.push_back( variantOf( variant ) );
   return rule;
}

PluginTraces tracesOf( const Value &json ) {
   const Value none;
   const auto part = [&none]( const Value &of, const char *key ) -> const Value & {
      const Value *found = Json::find( &of, key );
      return found ? *found : none;
   };
   const Value &slot = part( json, "slotTraces" );
   const Value &absent = part( slot, "absent" );
   const Value &poll = part( json, "pollTraces" );
   return { .faults = textsOf( Json::find( &json, "faultTraces" ) ),
            .absentHolds = Json::textOf( absent, "holds" ),
            .absentEnds = Json::textOf( absent, "ends" ),
            .unmanaged = Json::textOf( slot, "unmanaged" ),
            .unreadable = Json::textOf( slot, "unreadable" ),
            .pollFailed = Json::textOf( poll, "failed" ),
            .pollDone = Json::textOf( poll, "done" ) };
}

} // namespace

std::optional<DriverTable> loadDriverTable( const std::filesystem::path &path,
                                            Findings &findings ) {
   const size_t before = findings.size();
   const auto file = Json::load( path, findings );
   if ( file )
      Schema( driversSchema, "plugin" ).check( file->document, file->root, findings );
   if ( findings.size() != before )
      return {};
   DriverTable table{ .hams = textsOf( Json::find( &file->document, "hams" ) ),
                      .traces = tracesOf( file->document ) };
   for ( const Value &device : Json::elements( Json::find( &file->document, "system" ) ) )
      table.system.push_back(
         { Json::textOf( device, "label" ), Json::textOf( device, "driver" ) } );
   for ( const auto &[name, driver] : Json::members( Json::find( &file->document, "drivers" ) ) )
      table.drivers[name.GetString()] =
         driverOf( driver, Json::find( &file->document, "everySingleDevice" ) );
   return table;
}

} // namespace BoardFiles
