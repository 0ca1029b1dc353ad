// Checks the fields of a class: their order in every ABI, and their offsets in the 32-bit ABI.
// Hosts and drivers that are compiled separately rely on them.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

struct Field {
   const char *name;
   size_t offset;
   size_t in32Bit;
};

// The offset of a field of the class or of a base class. No object is made, so the class may be
// abstract.
template <class Class, class Base, class Type>
size_t offsetOf( Type Base::*field ) {
   alignas( Class ) static std::byte storage[sizeof( Class )];
   auto *object = reinterpret_cast<Class *>( storage );
   return static_cast<size_t>( reinterpret_cast<std::byte *>( &( object->*field ) ) - storage );
}

// A field of Class and its offset in the 32-bit ABI.
#define FIELD( Class, field, in32Bit )                                                             \
   Field { #Class "::" #field, offsetOf < Class>( &Class::field ), in32Bit }

// Checks the fields, which are given in their order.
inline void expectLayout( const std::vector<Field> &fields ) {
   const Field *before = nullptr;
   for ( const Field &field : fields ) {
      if ( before ) {
         EXPECT_LT( before->offset, field.offset ) << field.name;
      }
      if ( sizeof( void * ) == 4 ) {
         EXPECT_EQ( field.offset, field.in32Bit ) << field.name;
      }
      before = &field;
   }
}

// Gives a test access to a field that is not public: REVEAL( Name, Class::field ) at namespace
// scope, then REVEALED( Class, Name, in32Bit ) in the list of fields.
template <class Name, auto field>
struct Reveal {
   friend constexpr auto revealed( Name ) { return field; }
};
#define REVEAL( Name, field )                                                                      \
   struct Name {                                                                                   \
      friend constexpr auto revealed( Name );                                                      \
   };                                                                                              \
   template struct Reveal<Name, &field>
#define REVEALED( Class, Name, in32Bit )                                                           \
   Field { #Name, offsetOf < Class>( revealed( Name() ) ), in32Bit }
