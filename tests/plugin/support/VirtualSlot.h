// Virtual operations called as code compiled elsewhere calls them: by their number in the table.
#pragma once

#include <cstddef>
#include <new>

// Calls the operation in this slot of the object's virtual table. Each argument's type is the
// declared parameter's.
template <class Result, class... Arguments>
Result callSlot( void *object, size_t slot, Arguments... arguments ) {
   using Operation = Result ( * )( void *, Arguments... );
   const Operation *table = *static_cast<const Operation **>( object );
   return table[slot]( object, arguments... );
}

// Whether these two slots are a class's destructors: the first leaves the storage alone, the second
// gives it back.
template <class Base>
bool areDestructors( size_t complete, size_t deleting ) {
   static int destroyed;
   struct Counted : Base {
      ~Counted() override { ++destroyed; }
   };
   destroyed = 0;
   alignas( Counted ) static std::byte storage[sizeof( Counted )];
   callSlot<void>( new ( storage ) Counted, complete );
   const bool first = destroyed == 1;
   callSlot<void>( new Counted, deleting ); // what stays allocated is reported as a leak
   return first && destroyed == 2;
}
