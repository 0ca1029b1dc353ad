"""Four faults at once, each on a bus of its own: all of it is seen at one look."""

import unittest

import page
from board import FOUR, break_four
from browser import DESKTOP
from case import Case
from processes import within

# Where the middle of what is asked for is, and whether a person sees it there.
SEEN = """
return [ ...document.querySelectorAll( arguments[ 0 ] ) ].map( node => {
   const box = node.getBoundingClientRect();
   const top = document.elementFromPoint( box.x + box.width / 2, box.y + box.height / 2 );
   return { box: [ box.left, box.top, box.right, box.bottom ].map( Math.round ), words: node.textContent.trim(),
      isInside: box.width > 0 && box.height > 0 && box.left >= 0 && box.top >= 0 && box.right <= innerWidth && box.bottom <= innerHeight,
      isOnTop: top !== null && ( node.contains( top ) || ( top.contains( node ) && top.closest( arguments[ 1 ] ) !== null ) ),
      top: top && `${ top.tagName } ${ top.getAttribute( 'class' ) ?? top.id }` };
} );
"""


class FourAtOnceTest(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.browser.size(*DESKTOP)
        page.open_page(cls.browser, cls.board.url)
        break_four(cls.board)
        within(10, lambda: len(page.read(cls.browser)["causes"]) == 4 and page.read(cls.browser)["held"],
               lambda: f"the page shows four causes and the segment: {page.read(cls.browser)['causes']}")

    def expect_seen(self, what, around, words):
        """That all of it is in view, and that nothing of another part of the page covers it."""
        found = self.browser.execute_script(SEEN, what, around)
        self.assertTrue(found, f"there is no {words} ({what})")
        for one in found:
            self.assertTrue(one["isInside"], f"{words} is out of view: {one}")
            self.assertTrue(one["isOnTop"], f"{words} is covered: {one}")

    def test_the_whole_page_is_seen_without_scrolling(self):
        self.picture("four-at-once")
        size = self.browser.execute_script(
            "const d = document.scrollingElement; return [ d.scrollWidth, d.scrollHeight, innerWidth, innerHeight ]")
        self.assertLessEqual(size[0], size[2])
        self.assertLessEqual(size[1], size[3])

    def test_each_cause_tells_its_words(self):
        told = {one["cause"]: one["words"] for one in self.board.causes()}
        self.assertEqual(set(told), set(FOUR.values()))
        shown = {one["cause"]: one["words"] for one in self.read()["causes"]}
        self.assertEqual(shown, told)
        for cause in told:
            for part in (".title", ".words"):
                self.expect_seen(f'#causes li[data-cause="{cause}"] {part}', "#causes", f"{part} of {cause}")

    def test_each_cause_has_its_number_on_the_box(self):
        numbers = {one["cause"]: one["number"] for one in self.read()["causes"]}
        places = {"psu2 input lost": ["psu2-slot"], "temp-cpu temperature limit": ["temp-cpu"],
                  "fan4-outlet speed limit": ["fan4-outlet"],
                  "bus scd(4):1:2 held behind 0x70=1": ["temp-front", "temp-rear", "temp-asic"]}
        for cause, names in places.items():
            for name in names:
                place = f'#box g.place[data-object="{name}"]'
                marks = self.read()["places"][name]["marks"].split()
                self.assertIn(numbers[cause], marks, f"{name} has no mark of {cause}")
                self.expect_seen(place, "#box", f"the place of {name}")
        # The numbers themselves are drawn over the places.
        self.expect_seen("#box .badge circle", "#box", "a number on the box")
        drawn = {word for one in self.browser.execute_script(SEEN, "#box .badge", "#box") for word in one["words"].split()}
        self.assertEqual(drawn, set(numbers.values()))

    def test_the_stuck_segment_is_on_the_map_of_the_buses(self):
        self.assertEqual(self.read()["held"], [["scd(4):1:2", "0x70=1"]])
        self.expect_seen('#busses li[data-bus="scd(4):1:2"] [data-path="0x70=1"]', "#busses", "the held segment")
        self.expect_seen('#busses li[data-bus="scd(4):1:2"] .state', "#busses", "the words of the held bus")

    def test_the_first_line_counts_the_causes(self):
        self.assertIn("4 causes", self.read()["status"])
        self.expect_seen("#status", "header", "the first line")


if __name__ == "__main__":
    unittest.main()
