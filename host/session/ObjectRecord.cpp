#include "host/session/ObjectRecord.h"

#include <algorithm>

namespace Host {

void ObjectRecord::good( Time now ) {
   state_ = State::Ok;
   fault_ = {};
   at_ = now;
}

void ObjectRecord::failed( const Fault &fault, Time now ) {
   state_ = State::Unreadable;
   fault_ = fault;
   at_ = now;
   for ( Value &value : values_ ) {
      if ( value.isSetting )
         continue;
      value.reading.state = State::Unreadable;
      value.reading.value = {};
      value.reading.fault = fault;
      value.at = now;
   }
}

void ObjectRecord::read( const Reading &reading, Time at ) { put( { reading, at, false } ); }

void ObjectRecord::keep( const Reading &reading, Time at ) { put( { reading, at, true } ); }

void ObjectRecord::put( const Value &value ) {
   const auto known = std::find_if( values_.begin(), values_.end(), [&]( const Value &one ) {
      return one.reading.name == value.reading.name;
   } );
   if ( known == values_.end() )
      values_.push_back( value );
   else
      *known = value;
}

const Reading *ObjectRecord::find( const std::string &name ) const {
   const auto known = std::find_if( values_.begin(), values_.end(), [&name]( const Value &one ) {
      return one.reading.name == name;
   } );
   return known == values_.end() ? nullptr : &known->reading;
}

ObjectReport ObjectRecord::report( const BoardFiles::ObjectDescription &description,
                                   Clock::duration staleAfter, Time now ) const {
   const auto age = [now]( Time at ) { return std::chrono::duration<double>( now - at ).count(); };
   const auto stateAt = [&]( State state, Time at ) {
      return state == State::Ok && now - at > staleAfter ? State::Stale : state;
   };
   ObjectReport report{ .name = description.name,
                        .type = std::string( nameOf( description.kind ) ),
                        .state = stateAt( state_, at_ ),
                        .fault = fault_,
                        .age = age( at_ ) };
   for ( const Value &value : values_ ) {
      report.values.push_back( { value.reading, age( value.at ) } );
      if ( !value.isSetting )
         report.values.back().reading.state = stateAt( value.reading.state, value.at );
   }
   return report;
}

} // namespace Host
