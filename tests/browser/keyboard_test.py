"""Who has no mouse reaches all, is told what it is, and sees where the keyboard is."""

import unittest

import page
from board import break_four
from case import Case
from processes import within

KEYS = {"Tab": 9, "Enter": 13, "Escape": 27, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}
ARROWS = [name for name in KEYS if name.startswith("Arrow")]

# Each control has words of its own, since lists are made anew while the board changes.
CONTROLS = """
const nameOf = node => node.closest( 'g.place' ) ? `place ${ node.dataset.object }`
   : [ node.closest( '[id]' )?.id, node.closest( 'li' )?.dataset.cause ?? node.closest( 'li' )?.dataset.event ?? '',
      node.tagName, node.getAttribute( 'aria-label' ) ?? ( node.tagName === 'SELECT' ? '' : node.textContent ) ].join( ' ' );
// A place has no outline: its frame is drawn in another way.
const lookOf = node => {
   const style = getComputedStyle( node.querySelector( ':scope .frame' ) ?? node );
   return [ style.outlineStyle, style.outlineWidth, style.outlineColor, style.stroke, style.strokeWidth ].join( ' ' );
};
const isSeen = node => node.checkVisibility( { checkVisibilityCSS: true } );
"""
ALL = CONTROLS + """
return Object.fromEntries( [ ...document.querySelectorAll( 'a[href], button, input, select, [role=button]' ) ]
   .filter( isSeen ).map( node => [ nameOf( node ), lookOf( node ) ] ) );
"""
FOCUSED = CONTROLS + """
const node = document.activeElement;
return node && node !== document.body ? [ nameOf( node ), lookOf( node ) ] : null;
"""
PLACE = "return document.activeElement?.closest( 'g.place' )?.dataset.object ?? null"
RUNNING = """
return document.getAnimations().filter( one => one.playState === 'running' ).map( one => one.animationName ?? 'another' );
"""


class KeyboardTest(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        break_four(cls.board)

    def setUp(self):
        super().setUp()
        self.browser.prefers()
        self.open("/")
        within(10, lambda: len(self.read()["causes"]) == 4, "the page shows four causes")

    def press(self, key):
        text = {"text": "\r"} if key == "Enter" else {}
        for kind in ("keyDown", "keyUp"):
            self.browser.cdp("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=KEYS[key],
                             **(text if kind == "keyDown" else {}))

    def focus(self, place):
        self.browser.execute_script(
            "document.querySelector( `#box g.place[data-object='${ arguments[ 0 ] }']` ).focus()", place)

    def by_tab(self):
        """The names of all that Tab reaches, with how each looks then."""
        reached = {}
        for _ in range(600):
            self.press("Tab")
            found = self.browser.execute_script(FOCUSED)
            if found is None:
                continue  # past the end, and on from the start
            if reached and found[0] == next(iter(reached)):
                return reached
            reached.setdefault(*found)
        raise AssertionError(f"Tab has no end: {list(reached)[-10:]}")

    def expect_all_by_tab(self):
        before = self.browser.execute_script(ALL)
        reached = self.by_tab()
        self.browser.execute_script("document.activeElement.blur()")
        after = self.browser.execute_script(ALL)
        wanted = {name for name in before if name in after and not name.startswith("place ")}
        self.assertGreater(len(wanted), 20)
        self.assertEqual(wanted - set(reached), set(), "Tab doesn't reach these")
        unseen = [name for name, look in reached.items() if after.get(name) == look]
        self.assertEqual(unseen, [], "the focus isn't seen on these")
        return reached

    def test_tab_reaches_every_control_and_one_place_of_each_side_and_the_focus_is_seen(self):
        reached = self.expect_all_by_tab()
        sides = self.browser.execute_script("return document.querySelectorAll( '#box svg[data-side]' ).length")
        self.assertGreater(sides, 1)
        self.assertEqual(len([name for name in reached if name.startswith("place ")]), sides)

    def test_tab_reaches_every_control_of_an_open_object(self):
        page.open_object(self.browser, "psu2")
        within(10, lambda: self.browser.execute_script("return document.querySelector( '#object select' ) !== null"),
               "the history can be chosen")
        reached = self.expect_all_by_tab()
        self.assertTrue([name for name in reached if "Close psu2" in name])
        self.assertTrue([name for name in reached if "SELECT" in name])

    def test_the_arrow_keys_reach_every_place_of_a_side_and_the_focus_is_seen(self):
        places = self.read()["places"]
        plain = self.browser.execute_script(ALL)
        for side in {place["side"] for place in places.values()}:
            wanted = {name for name, place in places.items() if place["side"] == side}
            first = self.browser.execute_script(
                "return document.querySelector( `#box svg[data-side='${ arguments[ 0 ] }'] [tabindex='0']` ).dataset.object",
                side)
            reached, next_ones, unseen = {first}, [first], []
            while next_ones:
                here = next_ones.pop()
                for arrow in ARROWS:
                    self.focus(here)
                    self.press(arrow)
                    there, look = self.browser.execute_script(PLACE), self.browser.execute_script(FOCUSED)[1]
                    if there not in reached:
                        reached.add(there)
                        next_ones.append(there)
                        if look == plain[f"place {there}"]:
                            unseen.append(there)
            self.assertEqual(wanted - reached, set(), f"the arrow keys don't reach these of the {side}")
            self.assertEqual(unseen, [], f"the focus isn't seen on these of the {side}")

    def test_every_control_has_a_name_and_a_role(self):
        page.open_object(self.browser, "psu2")
        nodes = self.browser.cdp("Accessibility.getFullAXTree")["nodes"]
        controls = [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in nodes
                    if not node["ignored"] and any(one["name"] == "focusable" and one["value"]["value"]
                                                   for one in node.get("properties", []))]
        self.assertGreater(len(controls), 100)
        self.assertEqual([one for one in controls if not one[1].strip() or one[0] in ("generic", "none", "")], [])
        places = self.read()["places"]
        told = {name for role, name in controls if role == "button"}
        self.assertEqual({place["label"] for place in places.values() if place["label"].split(":")[0] not in
                          {name.split(":")[0] for name in told}}, set(), "these places are no buttons")

    def test_enter_opens_a_place_and_escape_gives_the_focus_back_to_it(self):
        for place in ("psu2-slot", "temp-cpu", "qsfp3"):
            self.focus(place)
            self.press("Enter")
            within(10, lambda name=place: (self.read()["object"] or {}).get("name") == name, f"{place} is open")
            self.assertIsNone(self.browser.execute_script(PLACE))
            self.press("Escape")
            within(10, lambda: self.read()["object"] is None, f"{place} is closed")
            self.assertEqual(self.browser.execute_script(PLACE), place)

    def test_rotors_turn_and_a_beacon_blinks_unless_less_motion_is_wished(self):
        self.board.run("orbis-host", "led", "fan1-led", "beacon", "--board", self.board.board)
        within(15, lambda: {"turn", "blink"} <= set(self.browser.execute_script(RUNNING)),
               lambda: f"rotors turn and the LED blinks: {self.browser.execute_script(RUNNING)}")
        self.browser.prefers(reduced_motion="reduce")
        within(5, lambda: not self.browser.execute_script(RUNNING),
               lambda: f"nothing moves: {self.browser.execute_script(RUNNING)}")
        self.assertEqual(self.browser.execute_script(
            "return document.querySelector( '#box [data-object=fan1-led]' ).dataset.setting"), "beacon")


if __name__ == "__main__":
    unittest.main()
