#include "screen/Sections.h"

#include "screen/Width.h"

#include <algorithm>
#include <cctype>

namespace Screen {
namespace {

constexpr size_t between = 2; // cells

std::string inSmallLetters( std::string text ) {
   std::transform( text.begin(), text.end(), text.begin(),
                   []( unsigned char one ) { return static_cast<char>( std::tolower( one ) ); } );
   return text;
}

bool has( const Item &item, const std::string &filter ) {
   if ( filter.empty() || inSmallLetters( item.id ).find( filter ) != std::string::npos )
      return true;
   // Words that are wrapped are found, too.
   std::string text;
   for ( const Line &line : item.lines ) {
      const std::string one = toText( line );
      text += one.substr( std::min( one.find_first_not_of( ' ' ), one.size() ) ) + " ";
   }
   return inSmallLetters( text ).find( filter ) != std::string::npos;
}

std::vector<Item> left( const std::vector<Item> &items, const std::string &filter ) {
   std::vector<Item> left;
   std::copy_if( items.begin(), items.end(), std::back_inserter( left ),
                 [&filter]( const Item &item ) { return has( item, filter ); } );
   return left;
}

void addItems( Page &page, const std::vector<Item> &items ) {
   for ( const Item &item : items ) {
      if ( !item.id.empty() )
         page.targets.push_back( { item.id, page.lines.size(), item.lines.size() } );
      page.lines.insert( page.lines.end(), item.lines.begin(), item.lines.end() );
   }
}

void addCells( Page &page, const std::vector<Item> &cells, size_t columns ) {
   size_t width = 1;
   for ( const Item &cell : cells )
      width = std::max( width, widthOf( cell.lines.front() ) );
   const size_t perLine = std::max<size_t>( 1, ( columns + between ) / ( width + between ) );
   for ( size_t i = 0; i < cells.size(); ++i ) {
      if ( i % perLine == 0 )
         page.lines.emplace_back();
      const size_t column = i % perLine * ( width + between );
      Line &line = page.lines.back();
      line = fill( line, column );
      const Line &cell = cells[i].lines.front();
      line.insert( line.end(), cell.begin(), cell.end() );
      page.targets.push_back( { cells[i].id, page.lines.size() - 1, 1, column, width } );
   }
}

} // namespace

std::string titleId( const std::string &title ) { return "section " + title; }

Page pageOf( const std::vector<Section> &sections, const std::set<std::string> &folded,
             const std::string &filter, size_t columns ) {
   const std::string wanted = inSmallLetters( filter );
   Page page;
   for ( const Section &section : sections ) {
      const auto items = left( section.items, wanted ), cells = left( section.cells, wanted ),
                 notes = left( section.notes, wanted );
      if ( !wanted.empty() && items.empty() && cells.empty() && notes.empty() )
         continue;
      const bool isFolded = wanted.empty() && folded.contains( section.title );
      page.targets.push_back(
         { .id = titleId( section.title ), .line = page.lines.size(), .isTitle = true } );
      Line title{ { ( isFolded ? "▸ " : "▾ " ) + section.title + "  ", Style::Strong } };
      title.insert( title.end(), section.summary.begin(), section.summary.end() );
      page.lines.push_back( title );
      if ( isFolded )
         continue;
      page.lines.insert( page.lines.end(), section.legend.begin(), section.legend.end() );
      addItems( page, items );
      addCells( page, cells, columns );
      addItems( page, notes );
   }
   return page;
}

} // namespace Screen
