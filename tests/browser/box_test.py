"""The box is drawn as the board is: cages, slots, rotors, LEDs, and the way from a cause to its place."""

import unittest

from selenium.webdriver.common.by import By

from browser import DESKTOP, PHONE
from case import Case
from processes import within


class BoxTest(Case):
    def setUp(self):
        super().setUp()
        self.open()

    def place(self, name):
        return self.browser.find_element(By.CSS_SELECTOR, f'#box g.place[data-object="{name}"]')

    def becomes(self, name, attribute, value):
        within(30, lambda: self.place(name).get_attribute(attribute) == value,
               lambda: f"{name}: {attribute} is {self.place(name).get_attribute(attribute)}, not {value}")

    def label_has(self, name, words):
        within(30, lambda: words in self.place(name).get_attribute("aria-label"),
               lambda: self.place(name).get_attribute("aria-label"))

    def test_everything_of_the_drawing_is_there_to_scale(self):
        for side in self.board.get("/v1/panel")["sides"]:
            drawing = self.browser.find_element(By.CSS_SELECTOR, f'#box svg[data-side={side["name"]}]')
            drawn = {one.get_attribute("data-object") for one in drawing.find_elements(By.CSS_SELECTOR, "g.place")}
            self.assertEqual(drawn, {place["object"] for place in side["places"]})
            boxes = self.browser.execute_script("""
               return [ ...arguments[ 0 ].querySelectorAll( '.outline' ) ].map( one => one.getBoundingClientRect() )
                  .map( box => box.width / box.height )[ 0 ]""", drawing)
            self.assertAlmostEqual(boxes, side["width"] / side["height"], delta=0.02 * boxes)

    def test_a_cage_shows_its_module_light_lines_and_alarm(self):
        self.assertEqual(self.place("qsfp3").get_attribute("data-present"), "false")
        self.label_has("qsfp3", "absent, empty")
        self.becomes("qsfp1", "data-present", "true")
        light = min(monitor["dbm"] for monitor in self.board.get("/v1/modules/qsfp1")["module"]["monitors"]
                    if monitor["quantity"] == "rx power")
        self.assertAlmostEqual(float(self.place("qsfp1").get_attribute("data-light")), light, delta=0.3)
        for words, attribute in (("lpmode on", "data-lowpower"), ("reset on", "data-reset")):
            self.board.run("orbis-host", "xcvr", "qsfp1", *words.split(), "--board", self.board.board)
            self.becomes("qsfp1", attribute, "")
        self.label_has("qsfp1", "in reset, low power")
        for words, attribute in (("reset off", "data-reset"), ("lpmode off", "data-lowpower")):
            self.board.run("orbis-host", "xcvr", "qsfp1", *words.split(), "--board", self.board.board)
            self.becomes("qsfp1", attribute, None)
        self.board.sim("set sfp3-eeprom.lane1 attenuation 60")
        self.becomes("sfp3", "data-light", "none")
        self.becomes("sfp3", "data-alarm", "")
        self.label_has("sfp3", "no light")
        self.board.sim("set sfp3-eeprom.lane1 attenuation 0")
        self.becomes("sfp3", "data-alarm", None)
        self.board.sim("pull qsfp14")
        self.becomes("qsfp14", "data-present", "false")
        self.board.sim("insert qsfp14")
        self.becomes("qsfp14", "data-present", "true")

    def test_rotors_have_their_speed_and_the_way_of_the_air(self):
        for name in ("fan1-inlet", "psu1-fan2"):
            told = next(value["value"] for value in self.board.get(f"/v1/objects/{name}")["values"] if value["name"] == "speed")
            shown = float(self.place(name).get_attribute("data-rpm"))
            self.assertAlmostEqual(shown, told, delta=0.05 * told)
            self.assertEqual(self.place(name).get_attribute("data-direction"), "out")
        self.board.sim("pull fan5")
        self.becomes("fan5-slot", "data-present", "false")
        self.label_has("fan5-slot", "empty")
        self.board.sim("insert fan5")
        self.becomes("fan5-slot", "data-present", "true")

    def test_an_led_is_as_it_was_set(self):
        self.assertEqual(self.place("psu1-led").get_attribute("data-setting"), "never set")
        for setting in ("good", "bad", "beacon", "off"):
            self.board.run("orbis-host", "led", "psu1-led", setting, "--board", self.board.board)
            self.becomes("psu1-led", "data-setting", setting)

    def expect_goes_to(self, cause, place):
        within(30, lambda: self.browser.find_elements(By.CSS_SELECTOR, f'#causes li[data-cause="{cause}"]'), f"{cause} is shown")
        self.browser.find_element(By.CSS_SELECTOR, f'#causes li[data-cause="{cause}"] .title a').click()
        within(10, lambda: self.browser.execute_script("""
           const node = document.querySelector( arguments[ 0 ] ), box = node.getBoundingClientRect();
           return document.activeElement === node && box.left >= 0 && box.right <= innerWidth && box.top >= 0 && box.bottom <= innerHeight;
        """, place), f"a click on {cause} goes to {place}")

    def test_a_click_on_a_cause_goes_to_its_place(self):
        self.board.sim("set psu2 line 0")
        self.board.sim("stuck temp-front")
        for size in (DESKTOP, PHONE):
            with self.subTest(size=size):
                self.browser.size(*size)
                self.open()
                self.expect_goes_to("psu2 input lost", '#box g[data-object="psu2-slot"]')
                self.assertEqual(self.read()["object"]["name"], "psu2")
                self.expect_goes_to("bus scd(4):1:2 held behind 0x70=1", '#busses li[data-bus="scd(4):1:2"] a')
                self.assertEqual(self.read()["object"]["name"], "scd(4):1:2")
        self.browser.size(*DESKTOP)
        self.board.sim("clear temp-front")
        self.board.sim("set psu2 line 230")
        self.board.run("orbis-host", "smbus", "psu2-status", "clear-faults")
        self.board.becomes("clear", "psu2 input lost")


if __name__ == "__main__":
    unittest.main()
