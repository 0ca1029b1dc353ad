#include "screen/Page.h"

#include <gtest/gtest.h>

namespace Screen {
namespace {

// Twenty lines "0", "1" ..., of which each second can be selected; the 10th has two places.
Page numbered() {
   Page page;
   for ( size_t i = 0; i < 20; ++i ) {
      page.lines.push_back( { { std::to_string( i ) } } );
      if ( i % 2 == 0 )
         page.targets.push_back( { .id = "t" + std::to_string( i ), .line = i } );
      if ( i == 10 )
         page.targets.push_back( { .id = "right", .line = i, .column = 5 } );
   }
   page.targets.front().isTitle = page.targets[4].isTitle = true;
   return page;
}

class PageTest : public ::testing::Test {
 protected:
   std::string shown() { return toText( view.draw( page, 8, 5 ) ); }
   std::string after( Key key ) {
      view.press( key, page, 5 );
      return view.selected();
   }

   Page page = numbered();
   PageView view;
};

TEST_F( PageTest, BeginsAtTheTopWithTheFirstSelected ) {
   EXPECT_EQ( shown(), "0\n1\n2\n3\n4\n" );
   EXPECT_EQ( view.selected(), "t0" );
   EXPECT_EQ( view.position( page, 5 ), "1-5 of 20" );
   EXPECT_EQ( view.position( page, 20 ), "" );
}

TEST_F( PageTest, GoesFromLineToLineAndKeepsTheSelectionInSight ) {
   EXPECT_EQ( after( Key::Up ), "t0" );
   for ( const char *next : { "t2", "t4", "t6" } )
      EXPECT_EQ( after( Key::Down ), next );
   EXPECT_EQ( shown(), "2\n3\n4\n5\n6\n" );
   EXPECT_EQ( after( Key::Up ), "t4" );
}

TEST_F( PageTest, GoesByPagesAndToTheEnds ) {
   EXPECT_EQ( after( Key::PageDown ), "t4" );
   EXPECT_EQ( shown(), "4\n5\n6\n7\n8\n" );
   EXPECT_EQ( after( Key::PageUp ), "t0" );
   EXPECT_EQ( shown(), "0\n1\n2\n3\n4\n" );
   EXPECT_EQ( after( Key::End ), "t18" );
   EXPECT_EQ( shown(), "15\n16\n17\n18\n19\n" );
   EXPECT_EQ( after( Key::Home ), "t0" );
   EXPECT_EQ( after( Key::Tab ), "t8" );
   EXPECT_EQ( after( Key::Tab ), "t0" ); // round
}

TEST_F( PageTest, GoesAlongALineOnlyWhereThereIsSomething ) {
   EXPECT_FALSE( view.press( Key::Left, page, 5 ) );
   view.select( "t10" );
   EXPECT_EQ( after( Key::Right ), "right" );
   EXPECT_FALSE( view.press( Key::Right, page, 5 ) );
   EXPECT_EQ( after( Key::Left ), "t10" );
}

TEST_F( PageTest, StaysOnWhatIsSelectedWhileThePageChanges ) {
   view.select( "t4" );
   shown();
   page.lines.insert( page.lines.begin(), { { "new" } } );
   for ( Target &target : page.targets )
      ++target.line;
   shown();
   EXPECT_EQ( view.selected(), "t4" );
   page.targets.erase( page.targets.begin() + 2 ); // it is gone: what is in its place
   shown();
   EXPECT_EQ( view.selected(), "t6" );
}

TEST_F( PageTest, MarksWhatIsSelected ) {
   view.select( "right" );
   const Picture picture = view.draw( page, 8, 20 );
   std::string marked;
   for ( const Line &line : picture )
      for ( const Span &span : line )
         marked += span.isSelected ? "<" + span.text + ">" : "";
   EXPECT_EQ( marked, "<   >" );
   EXPECT_EQ( toText( picture[10] ), "10" );
}

TEST_F( PageTest, APageWithoutTargetsScrolls ) {
   page.targets.clear();
   after( Key::Down );
   EXPECT_EQ( shown(), "1\n2\n3\n4\n5\n" );
   after( Key::PageDown );
   EXPECT_EQ( shown(), "5\n6\n7\n8\n9\n" );
   after( Key::End );
   after( Key::Down );
   EXPECT_EQ( shown(), "15\n16\n17\n18\n19\n" );
   after( Key::PageUp );
   after( Key::Up );
   EXPECT_EQ( shown(), "10\n11\n12\n13\n14\n" );
   after( Key::Home );
   EXPECT_EQ( shown(), "0\n1\n2\n3\n4\n" );
}

TEST_F( PageTest, AWindowOfOneLineAndAnEmptyPageAreNoHarm ) {
   EXPECT_EQ( toText( view.draw( page, 1, 1 ) ), "0\n" );
   after( Key::PageDown );
   page = {};
   EXPECT_FALSE( view.press( Key::Enter, page, 1 ) );
   EXPECT_EQ( toText( view.draw( page, 1, 1 ) ), "\n" );
}

} // namespace
} // namespace Screen
