// How far our readings and the kernel's agree, a row a kind of chip.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace RealTest {

// Counts words that agree, and those that differ for a reason that is listed; fails the test for
// all others, and for a listed difference that isn't there. In the end the row is added to the
// table.
class Agreement {
 public:
   explicit Agreement( std::string chips ) : chips_( std::move( chips ) ) {}
   ~Agreement();
   Agreement( const Agreement & ) = delete;
   Agreement &operator=( const Agreement & ) = delete;

   // `what` names the word. A reason that isn't empty is why ours has to differ, and `listed` what
   // it is then.
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
