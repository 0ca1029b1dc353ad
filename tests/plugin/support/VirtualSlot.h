// Calls virtual functions by their number in the table, as code that is compiled separately does.
#pragma once

#include <cstddef>
#include <new>

// Calls the operation in this slot of the object's virtual table. The types of the arguments must
// be the declared types of the parameters.
template <class Result, class... Arguments>
Result callSlot( void *object, size_t slot, Arguments... arguments ) {
   using Operation = Result ( * )( void *, Arguments... );
   const Operation *table = *static_cast<const Operation **>( object );
   return table[slot]( object, arguments... );
}

// Checks that these two slots are the destructors of a class. The second one also frees the memory.
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
   callSlot<void>( new Counted, deleting ); // the leak checker reports it when it is not freed
   return first && destroyed == 2;
}
