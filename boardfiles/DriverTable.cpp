#include "boardfiles/DriverTable.h"

#include "boardfiles/Schema.h"

namespace BoardFiles {
namespace {

std::vector<std::string> textsOf( const Json &json, std::string_view key ) {
   std::vector<std::string> texts;
   for ( const Json &text : json.elementsOf( key ) )
      texts.emplace_back( *text.toText() );
   return texts;
}

std::string textOf( const Json &json, std::string_view key ) {
   return json.textOf( key ).value_or( "" );
}

bool flagOf( const Json &json, std::string_view key ) {
   const Json *flag = json.find( key );
   return flag && flag->isTrue();
}

std::span<const Json::Member> membersOf( const Json &json, std::string_view key ) {
   const Json *object = json.find( key );
   return object ? object->members() : std::span<const Json::Member>();
}

ArgumentRules argumentsIn( std::span<const Json::Member> members ) {
   ArgumentRules rules;
   for ( const auto &[name, rule, place] : members )
      rules[name] = { .type = textOf( rule, "type" ),
                      .required = flagOf( rule, "required" ),
                      .minimum = rule.numberOf( "minimum" ),
                      .maximum = rule.numberOf( "maximum" ),
                      .choices = textsOf( rule, "enum" ),
                      .holds = textsOf( rule, "holds" ) };
   return rules;
}

std::vector<Batch> batchesIn( std::span<const Json> lists ) {
   std::vector<Batch> batches;
   for ( const Json &list : lists ) {
      Batch &batch = batches.emplace_back();
      for ( const Json &transfer : list.elements() )
         batch.push_back( { .isSendByte = flagOf( transfer, "sendByte" ),
                            .read = transfer.unsignedOf( "read" ).value_or( 0 ),
                            .registerNumber = transfer.unsignedOf( "register" ).value_or( 0 ),
                            .registerArgument = textOf( transfer, "registerArgument" ),
                            .times = transfer.unsignedOf( "times" ).value_or( 1 ) } );
   }
   return batches;
}

TransfersRule transfersIn( const Json *json ) {
   if ( !json )
      return {};
   TransfersRule rule{ .batches = batchesIn( json->elementsOf( "batches" ) ),
                       .by = textOf( *json, "by" ),
                       .once = flagOf( *json, "once" ) };
   for ( const auto &[name, batches, place] : membersOf( *json, "cases" ) )
      rule.cases[name] = batchesIn( batches.elements() );
   return rule;
}

std::optional<PollRule> pollIn( const Json *json ) {
   if ( !json )
      return {};
   return PollRule{ textOf( *json, "argument" ), json->numberOf( "seconds" ).value_or( 1 ),
                    transfersIn( json->find( "transfers" ) ) };
}

KindRule kindRuleIn( const Json &json ) {
   KindRule rule{ .args = argumentsIn( membersOf( json, "args" ) ) };
   for ( const Json &group : json.elementsOf( "numbered" ) )
      rule.numbered.push_back( argumentsIn( group.members() ) );
   rule.by = textOf( json, "by" );
   rule.fullScale = textOf( json, "fullScale" );
   for ( const auto &[name, args, place] : membersOf( json, "cases" ) )
      rule.cases[name] = argumentsIn( args.members() );
   for ( const auto &[key, kind, place] : membersOf( json, "nested" ) )
      rule.nested[key] = *kind.toText();
   rule.transfers = transfersIn( json.find( "transfers" ) );
   for ( const auto &[word, transfers, place] : membersOf( json, "reads" ) )
      rule.reads[word] = transfersIn( &transfers );
   return rule;
}

DriverRule driverIn( const Json &json, const Json &table ) {
   DriverRule rule{ .isMultiDevice = flagOf( json, "isMultiDevice" ),
                    .args = argumentsIn( membersOf( json, "args" ) ) };
   for ( const auto &[kind, wants, place] : membersOf( json, "makes" ) )
      rule.makes[kind] = kindRuleIn( wants );
   if ( !rule.isMultiDevice )
      for ( const auto &[kind, wants, place] : membersOf( table, "everySingleDevice" ) )
         rule.makes.emplace( kind, kindRuleIn( wants ) );
   for ( const Json &variant : json.elementsOf( "variants" ) )
      rule.variants.push_back(
         { textOf( variant, "argument" ), variant.textOf( "is" ), textsOf( variant, "kinds" ) } );
   rule.poll = pollIn( json.find( "poll" ) );
   return rule;
}

PluginTraces tracesIn( const Json &json ) {
   static const Json none;
   const auto part = []( const Json &of, std::string_view key ) -> const Json & {
      const Json *found = of.find( key );
      return found ? *found : none;
   };
   const Json &slot = part( json, "slotTraces" );
   const Json &absent = part( slot, "absent" );
   const Json &poll = part( json, "pollTraces" );
   return { .faults = textsOf( json, "faultTraces" ),
            .absentHolds = textOf( absent, "holds" ),
            .absentEnds = textOf( absent, "ends" ),
            .absentFirst = textsOf( absent, "first" ),
            .unmanaged = textOf( slot, "unmanaged" ),
            .unreadable = textOf( slot, "unreadable" ),
            .pollFailed = textOf( poll, "failed" ),
            .pollDone = textOf( poll, "done" ) };
}

} // namespace

std::vector<std::string> PluginTraces::beginnings() const {
   std::vector<std::string> all = faults;
   for ( const std::string &one : { unmanaged, unreadable, pollFailed, pollDone } )
      if ( !one.empty() )
         all.push_back( one );
   return all;
}

std::optional<DriverTable> readDriverTable( const std::filesystem::path &path,
                                            Findings &findings ) {
   static const Schema schema( driversSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   const size_t before = findings.size();
   schema.check( *json, findings );
   if ( findings.size() != before )
      return {};
   DriverTable table{ .hams = textsOf( *json, "hams" ), .traces = tracesIn( *json ) };
   if ( const Json *server = json->find( "server" ) )
      table.server = { textOf( *server, "variable" ), textOf( *server, "socket" ) };
   for ( const Json &device : json->elementsOf( "system" ) )
      table.system.push_back( { textOf( device, "label" ), textOf( device, "driver" ) } );
   for ( const auto &[name, driver, place] : membersOf( *json, "drivers" ) )
      table.drivers[name] = driverIn( driver, *json );
   return table;
}

} // namespace BoardFiles
