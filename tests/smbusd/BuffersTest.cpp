#include "smbusd/server/Buffers.h"

#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using Smbusd::Buffers;
using Smbusd::BuffersFull;

constexpr size_t own = Buffers::ownBytes;

std::string complaint( Buffers::Part &part, size_t bytes ) {
   try {
      part.holds( bytes );
      return "none";
   } catch ( const BuffersFull &full ) {
      return full.what();
   }
}

TEST( BuffersTest, WhatAConnectionHasForItselfIsNotCounted ) {
   Buffers buffers( 0 );
   Buffers::Part part( buffers );
   part.holds( own );
   EXPECT_EQ( buffers.used(), 0u );
}

TEST( BuffersTest, ALargerPartCountsFromItsFirstByte ) {
   Buffers buffers( 10 * own );
   Buffers::Part one( buffers ), other( buffers );
   one.holds( own + 1 );
   EXPECT_EQ( buffers.used(), own + 1 );
   other.holds( 3 * own );
   EXPECT_EQ( buffers.used(), 4 * own + 1 );
   one.holds( 2 * own );
   EXPECT_EQ( buffers.used(), 5 * own );
   other.holds( own );
   EXPECT_EQ( buffers.used(), 2 * own );
}

TEST( BuffersTest, TheLastByteFitsAndTheNextDoesNot ) {
   Buffers buffers( 10 * own );
   Buffers::Part one( buffers ), other( buffers );
   one.holds( 8 * own );
   EXPECT_EQ( complaint( other, 2 * own ), "none" );
   EXPECT_EQ( complaint( other, 2 * own + 1 ),
              "a frame needs 262145 bytes, but 1310720 of the 1310720 for large frames are in use; "
              "send less at once, or try again later" );
   EXPECT_EQ( buffers.used(), 10 * own ); // it holds what it held
}

TEST( BuffersTest, APartIsGivenBackAtItsEnd ) {
   Buffers buffers( 10 * own );
   { Buffers::Part( buffers ).holds( 10 * own ); }
   EXPECT_EQ( buffers.used(), 0u );
}

} // namespace

} // namespace SmbusdTest
