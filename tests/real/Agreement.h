// How far our readings and the kernel's agree: one row for each kind of chip.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace RealTest {

// Counts the words that agree, and those that differ for a known reason. Fails the test for all
// other differences, and when a known difference does not occur. The destructor adds the row to the
// table.
class Agreement {
 public:
   explicit Agreement( std::string chips ) : chips_( std::move( chips ) ) {}
   ~Agreement();
   Agreement( const Agreement & ) = delete;
   Agreement &operator=( const Agreement & ) = delete;

   // `what` names the word. With a reason, our value must differ from the kernel's and be `listed`.
   template <typename Value>
   void compare( const std::string &what, Value ours, Value kernels, const std::string &reason = {},
                 Value listed = {} ) {
      ++words_;
      if ( reason.empty() ) {
         EXPECT_EQ( ours, kernels ) << what;
         agreed_ += ours == kernels;
      } else {
         EXPECT_EQ( ours, listed ) << what << ", " << reason;
         EXPECT_NE( ours, kernels ) << what << " agrees, although " << reason;
         ++differences_[reason];
      }
   }
   unsigned words() const { return words_; }

 private:
   const std::string chips_;
   unsigned words_ = 0;
   unsigned agreed_ = 0;
   std::map<std::string, unsigned> differences_; // by reason
};

} // namespace RealTest
