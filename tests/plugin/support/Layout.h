// Where a class has its fields: their order in every ABI, and in the 32-bit one their offsets, on
// which hosts and drivers compiled apart from the plug-in rely.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

struct Field {
   const char *name;
   size_t offset;
   size_t in32Bit;
};

// Of a field that the class, or a base of it, has. The object needn't be made for that, so that the
// class may be an abstract one.
template <class Class, class Base, class Type>
size_t offsetOf( Type Base::*field ) {
   alignas( Class ) static std::byte storage[sizeof( Class )];
   auto *object = reinterpret_cast<Class *>( storage );
   return static_cast<size_t>( reinterpret_cast<std::byte *>( &( object->*field ) ) - storage );
}

// #field of Class, and its offset in the 32-bit ABI.
#define FIELD( Class, field, in32Bit )                                                             \
   Field { #Class "::" #field, offsetOf < Class>( &Class::field ), in32Bit }

// The fields in their order.
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

// Lets a test see a field that is not public: REVEAL( Name, Class::field ) at namespace scope, then
// REVEALED( Class, Name, in32Bit ) as one of the fields.
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
