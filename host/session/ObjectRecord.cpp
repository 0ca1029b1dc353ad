#include "host/session/ObjectRecord.h"

#include <algorithm>

namespace Host {
namespace {

// Whether this was read without a fault. Such a state becomes stale.
bool wasGood( State state ) {
   return state == State::Ok || state == State::Absent || state == State::Unmanaged;
}

// A presence has no value as long as its state says it.
void makeStale( Reading &reading ) {
   if ( reading.state != State::Ok )
      reading.value = reading.state == State::Unmanaged;
   reading.state = State::Stale;
}

// An object without a single good value is not ok itself: it has the worst of their states, and the
// first fault in that state. A setting says nothing of it.
template <class IsSetting>
void judgeByValues( ObjectReport &object, const IsSetting &isSetting ) {
   const Reading *worst = nullptr;
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      const Reading &reading = object.values[i].reading;
      if ( isSetting( i ) )
         continue;
      if ( wasGood( reading.state ) )
         return;
      const bool isBad = reading.state != State::Unsupported;
      if ( isBad &&
           ( !worst || ( worst->state == State::Stale && reading.state == State::Unreadable ) ) )
         worst = &reading;
   }
   if ( !worst )
      return;
   object.state = worst->state;
   object.fault = worst->fault;
}

} // namespace

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

void ObjectRecord::absent( Time now ) {
   state_ = State::Absent;
   fault_ = {};
   at_ = now;
   values_.clear();
}

void ObjectRecord::readAll( const std::vector<Reading> &readings, Time at ) {
   values_.clear();
   for ( const Reading &reading : readings )
      read( reading, at );
}

void ObjectRecord::read( const Reading &reading, Time at ) { put( { reading, at, false } ); }

void ObjectRecord::missed( const Reading &reading, Time at ) {
   Value value{ reading, at, false };
   if ( const Value *last = findValue( reading.name );
        last && !std::holds_alternative<std::monostate>( last->reading.value ) ) {
      value.reading.value = last->reading.value;
      value.at = last->at;
   }
   put( value );
}

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

const ObjectRecord::Value *ObjectRecord::findValue( const std::string &name ) const {
   const auto known = std::find_if( values_.begin(), values_.end(), [&name]( const Value &one ) {
      return one.reading.name == name;
   } );
   return known == values_.end() ? nullptr : &*known;
}

const Reading *ObjectRecord::find( const std::string &name ) const {
   const Value *known = findValue( name );
   return known ? &known->reading : nullptr;
}

ObjectReport ObjectRecord::report( const BoardFiles::ObjectDescription &description,
                                   Clock::duration staleAfter, Time now ) const {
   const auto age = [now]( Time at ) { return std::chrono::duration<double>( now - at ).count(); };
   const auto isOld = [&]( State state, Time at ) {
      return wasGood( state ) && now - at > staleAfter;
   };
   ObjectReport report{ .name = description.name,
                        .type = std::string( nameOf( description.kind ) ),
                        .state = isOld( state_, at_ ) ? State::Stale : state_,
                        .fault = fault_,
                        .age = age( at_ ) };
   for ( const Value &value : values_ ) {
      report.values.push_back( { value.reading, age( value.at ) } );
      if ( !value.isSetting && isOld( value.reading.state, value.at ) )
         makeStale( report.values.back().reading );
   }
   if ( report.state == State::Ok )
      judgeByValues( report, [this]( size_t i ) { return values_[i].isSetting; } );
   return report;
}

} // namespace Host
