#include "host/session/ReadGroups.h"

#include <algorithm>
#include <map>
#include <optional>

namespace Host {
namespace {

class JoinedNumbers {
 public:
   explicit JoinedNumbers( size_t count ) : group_( count ) {
      for ( size_t i = 0; i < count; ++i )
         group_[i] = i;
   }

   // Joins the object with the one that was given for this key before.
   template <class Key>
   void join( std::map<Key, size_t> &known, const Key &key, size_t object ) {
      const size_t first = known.emplace( key, object ).first->second;
      std::replace( group_.begin(), group_.end(), size_t{ group_[object] },
                    size_t{ group_[first] } );
   }

   std::vector<size_t> numbers() && { return std::move( group_ ); }

 private:
   std::vector<size_t> group_;
};

} // namespace

std::vector<size_t> readGroups( const std::vector<BoardFiles::ObjectDescription> &objects ) {
   JoinedNumbers groups( objects.size() );
   std::map<uint32_t, size_t> ofDid;
   std::map<BoardFiles::ChipPlace, size_t> ofChip;
   std::map<bool, size_t> withoutValues;
   for ( size_t i = 0; i < objects.size(); ++i ) {
      const BoardFiles::ObjectDescription &object = objects[i];
      if ( !object.hasValues() ) {
         groups.join( withoutValues, true, i );
         continue;
      }
      if ( object.did )
         groups.join( ofDid, *object.did, i );
      for ( const BoardFiles::ChipPlace &chip : object.chips )
         groups.join( ofChip, chip, i );
   }
   return std::move( groups ).numbers();
}

} // namespace Host
