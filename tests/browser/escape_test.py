"""Whatever a module says of itself is shown as text, and is never a part of the page."""

import glob
import json
import os
import shutil
import unittest

import page
import processes
from board import KELT, Board
from case import Case
from processes import within

VENDOR, PART, SERIAL = "<svg onload=a()>", "</script><img/>", "'\"&lt;${1}"


class EscapeTest(Case):
    @classmethod
    def make_board(cls):
        folder = processes.private_folder()
        shutil.copytree(KELT, f"{folder}/kelt")
        for drivers in glob.glob(os.path.join(os.path.dirname(KELT), "*.drivers.json")):
            shutil.copy(drivers, folder)
        path = f"{folder}/kelt/simulation.json"
        with open(path, encoding="utf-8") as file:
            simulation = json.load(file)
        for chip in simulation["chips"]:
            if chip["name"] == "qsfp1-eeprom":
                chip.update(vendor=VENDOR, partNumber=PART, serial=SERIAL)
        with open(path, "w", encoding="utf-8") as file:
            json.dump(simulation, file)
        return Board(board=f"{folder}/kelt")

    def expect_text(self, *texts):
        shown = self.browser.execute_script("return document.querySelector( '#object' ).textContent")
        for text in texts:
            self.assertIn(text, shown)
        made = "return document.querySelectorAll( '#object img, #object script, #object svg[onload]' ).length"
        self.assertEqual(self.browser.execute_script(made), 0)
        self.assertFalse(self.browser.execute_script("return window.wasRun === true"))
        self.assertEqual(self.browser.complaints(), [])

    def test_what_a_module_says_is_shown_as_text(self):
        self.browser.cdp("Page.addScriptToEvaluateOnNewDocument", source="window.a = () => { window.wasRun = true; }")
        self.open()
        page.open_object(self.browser, "qsfp1-module")
        values = within(20, lambda: self.read()["object"]["values"], "its values are shown")
        self.assertEqual([values[name]["value"] for name in ("vendor", "part_number", "serial")], [VENDOR, PART, SERIAL])
        within(20, lambda: VENDOR in self.browser.execute_script(
            "return document.querySelector( '#object .module' ).textContent"), "the module is decoded")
        self.expect_text(VENDOR, PART, SERIAL)

    def test_an_address_that_names_no_object_is_shown_as_text(self):
        self.open("/#object/%3Cimg%20src=x%20onerror=a()%3E")
        within(10, lambda: "The board has no such object." in self.browser.execute_script(
            "return document.querySelector( '#object' ).textContent"), "it says so")
        self.expect_text("<img src=x onerror=a()>")
        self.open("/?again#object/%E0%A4%A")
        self.expect_text("%E0%A4%A")


if __name__ == "__main__":
    unittest.main()
