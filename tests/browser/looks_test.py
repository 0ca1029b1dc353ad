"""Light and dark, on a phone, a tablet and a desk: nothing is cut, nothing overlaps, all can be read."""

import unittest

import page
from board import TOKEN, break_four
from browser import DESKTOP, PHONE, TABLET
from case import Case
from processes import within

LEAST = 4.5  # the contrast of texts that WCAG 2 wants, level AA
WIDE = "const d = document.scrollingElement; return [ d.scrollWidth, innerWidth ]"

# Every text with its contrast against what is behind it, as WCAG 2 computes it.
TEXTS = """
const parts = [ 'header', '#causes', '#events', '#busses', '#object' ].map( part => document.querySelector( part ) );
const numbersOf = colour => {
   const [ r, g, b, alpha = 1 ] = colour.match( /[\\d.]+/g ).map( Number );
   return { rgb: [ r, g, b ], alpha };
};
const over = ( top, alpha, below ) => top.map( ( one, i ) => one * alpha + below[ i ] * ( 1 - alpha ) );
const behind = node => {
   if ( !node )
      return [ 255, 255, 255 ];
   const { rgb, alpha } = numbersOf( getComputedStyle( node ).backgroundColor );
   return alpha === 1 ? rgb : alpha === 0 ? behind( node.parentElement ) : over( rgb, alpha, behind( node.parentElement ) );
};
const opacityOf = node => node ? Number( getComputedStyle( node ).opacity ) * opacityOf( node.parentElement ) : 1;
const light = rgb => {
   const [ r, g, b ] = rgb.map( one => one / 255 ).map( one => one <= 0.04045 ? one / 12.92 : ( ( one + 0.055 ) / 1.055 ) ** 2.4 );
   return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const contrast = ( one, other ) => ( Math.max( light( one ), light( other ) ) + 0.05 ) / ( Math.min( light( one ), light( other ) ) + 0.05 );
const found = [];
for ( const part of parts ) {
   const walker = document.createTreeWalker( part, NodeFilter.SHOW_TEXT );
   while ( walker.nextNode() ) {
      const node = walker.currentNode.parentElement;
      const words = walker.currentNode.textContent.trim();
      if ( !words || node.closest( 'svg, datalist, option' ) || !node.checkVisibility( { checkVisibilityCSS: true } ) )
         continue;
      const style = getComputedStyle( node ), back = behind( node ), { rgb, alpha } = numbersOf( style.color );
      let isCut = false;
      for ( let around = node; around && around !== document.body; around = around.parentElement ) {
         const { overflowX } = getComputedStyle( around );
         isCut ||= [ 'hidden', 'clip' ].includes( overflowX ) && around.scrollWidth > around.clientWidth;
      }
      const range = document.createRange();
      range.selectNodeContents( walker.currentNode );
      const box = range.getBoundingClientRect();
      found.push( { part: part.id || part.tagName, words: words.slice( 0, 60 ), contrast: contrast( over( rgb, alpha * opacityOf( node ), back ), back ),
         isCut, left: box.left, right: box.right } );
   }
}
return found;
"""
# As the page marks itself; both in one script, so that the page can't take it away in between.
LOST = "const link = document.body.dataset.link; document.body.dataset.link = 'lost';"
BACK = "document.body.dataset.link = link;"
OVERLAPPING = """
const items = [ ...document.querySelectorAll( '#causes > li' ) ].map( li => [ li.dataset.cause, li.getBoundingClientRect() ] );
return items.flatMap( ( [ name, one ], i ) => items.slice( i + 1 )
   .filter( ( [ , other ] ) => one.top < other.bottom - 0.5 && other.top < one.bottom - 0.5 && one.left < other.right && other.left < one.right )
   .map( ( [ second ] ) => `${ name } and ${ second }` ) );
"""

# The words of two limits in one drawing, for example.
DRAWN_OVER = """
return [ ...document.querySelectorAll( '#object svg' ) ].flatMap( drawing => {
   const texts = [ ...drawing.querySelectorAll( 'text' ) ].map( text => [ text.textContent, text.getBoundingClientRect() ] );
   return texts.flatMap( ( [ words, one ], i ) => texts.slice( i + 1 )
      .filter( ( [ , other ] ) => one.left < other.right && other.left < one.right
         && Math.min( one.bottom, other.bottom ) - Math.max( one.top, other.top ) > 0.4 * Math.min( one.height, other.height ) )
      .map( ( [ second ] ) => `${ drawing.getAttribute( 'class' ) }: ${ words } and ${ second }` ) );
} );
"""


class LooksTest(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        page.open_page(cls.browser, cls.board.url)
        break_four(cls.board)
        cls.board.post("/v1/acknowledge", {"cause": "psu2 input lost"}, Authorization=f"Bearer {TOKEN}")
        page.open_object(cls.browser, "psu2")
        within(20, lambda: len(page.read(cls.browser)["causes"]) == 4 and page.read(cls.browser)["held"]
               and page.read(cls.browser)["events"] and cls.browser.execute_script("return document.querySelector( '.seen' )"),
               "the page shows four causes, one acknowledged, the segment and events")

    def each_look(self):
        """Goes through all widths, light and dark."""
        for name, size in (("phone", PHONE), ("tablet", TABLET), ("desk", DESKTOP)):
            for scheme in ("light", "dark"):
                self.browser.size(*size)
                self.browser.prefers(color_scheme=scheme)
                yield f"{name}-{scheme}"

    def test_no_page_is_wider_than_the_screen(self):
        for look in self.each_look():
            width, screen = self.browser.execute_script(WIDE)
            self.picture(f"looks-{look}")
            self.assertLessEqual(width, screen, look)

    def test_every_text_stands_out_from_what_is_behind_it(self):
        papers = set()
        for look in self.each_look():
            papers.add(self.browser.execute_script("return getComputedStyle( document.body ).backgroundColor"))
            texts = self.browser.execute_script(TEXTS)
            self.assertEqual({text["part"] for text in texts}, {"HEADER", "causes", "events", "busses", "object"}, look)
            self.assertEqual([text for text in texts if text["contrast"] < LEAST], [], look)
        self.assertEqual(len(papers), 2, "light and dark differ")

    def test_every_text_stands_out_while_the_connection_is_lost(self):
        for look in self.each_look():
            texts = self.browser.execute_script(LOST + TEXTS.replace("return found;", BACK + "return found;"))
            self.assertEqual([text for text in texts if text["contrast"] < LEAST], [], look)

    def test_no_text_is_cut(self):
        for look in self.each_look():
            texts = self.browser.execute_script(TEXTS)
            self.assertEqual([text for text in texts if text["isCut"]], [], look)
            self.assertEqual([text for text in texts if text["left"] < 0], [], look)

    def test_no_two_causes_overlap(self):
        for look in self.each_look():
            self.assertEqual(self.browser.execute_script(OVERLAPPING), [], look)

    def test_no_two_texts_of_a_drawing_overlap(self):
        within(10, lambda: self.browser.execute_script("return document.querySelector( '#object svg.history' )"),
               "the history is drawn")
        for look in self.each_look():
            self.assertEqual(self.browser.execute_script(DRAWN_OVER), [], look)


if __name__ == "__main__":
    unittest.main()
