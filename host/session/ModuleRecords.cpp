#include "host/session/ModuleRecords.h"

#include "host/session/ModuleReadings.h"
#include "optics/Decode.h"

#include <utility>

namespace Host {
namespace {

void copy( const Optics::Image &from, Optics::Image &to ) {
   for ( const Optics::Image::Run &run : from.runs() )
      to.put( run.region, run.first, run.bytes );
}

} // namespace

ModuleRecord *ModuleRecords::update( size_t object, Time now ) {
   const ModuleMemory memory = std::exchange( heard_[object], {} );
   ModuleRecord &record = records_[object];
   if ( memory.begins ) {
      record.image = {};
      record.at = now;
   }
   copy( memory.image, record.image );
   const auto standard = Optics::standardOf( record.image );
   if ( !standard ) {
      records_.erase( object );
      return nullptr;
   }
   record.module = Optics::decode( record.image, *standard );
   record.limits = limitsOf( record.module );
   return &record;
}

const ModuleRecord *ModuleRecords::complete( size_t object, Time now ) {
   ModuleRecord *record = update( object, now );
   if ( !record )
      return nullptr;
   record->at = now;
   // What it doesn't stand for yet is told to nobody.
   if ( record->module.isReady == false )
      return incomplete( object, *record );
   // Those of readings before this one are told with it, and then no more.
   record->flags = std::exchange( missed_[object], {} );
   return record;
}

const ModuleRecord *ModuleRecords::incomplete( size_t object, Time now ) {
   ModuleRecord *record = update( object, now );
   return record ? incomplete( object, *record ) : nullptr;
}

const ModuleRecord *ModuleRecords::incomplete( size_t object, ModuleRecord &record ) {
   for ( const std::string &flag : flagsOf( record.module ) )
      missed_[object].insert( flag );
   record.flags = missed_[object];
   return &record;
}

void ModuleRecords::gone( size_t object ) {
   heard_.erase( object );
   missed_.erase( object );
   records_.erase( object );
}

const ModuleRecord *ModuleRecords::find( size_t object ) const {
   const auto known = records_.find( object );
   return known == records_.end() ? nullptr : &known->second;
}

} // namespace Host
